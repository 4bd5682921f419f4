// Small writers for test images in every format the tools read.
#pragma once

#include <png.h>
#include <tiffio.h>
#include <zlib.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace inkdot::test {

// Samples row by row; 16-bit samples are given as values up to 65535. A
// non-empty `icc` goes into an iCCP chunk.
inline bool writeTestPng(const std::string& path, uint32_t w, uint32_t h, int colourType, int depth,
                         const std::vector<uint16_t>& samples, const std::vector<uint8_t>& icc = {}) {
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (f == nullptr) return false;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, f);
    png_set_IHDR(png, info, w, h, depth, colourType, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    if (!icc.empty())
        png_set_iCCP(png, info, "test profile", PNG_COMPRESSION_TYPE_BASE, icc.data(), static_cast<png_uint_32>(icc.size()));
    png_write_info(png, info);
    const size_t perRow = samples.size() / h;
    std::vector<uint8_t> row(perRow * (depth == 16 ? 2 : 1));
    for (uint32_t y = 0; y < h; ++y) {
        for (size_t i = 0; i < perRow; ++i) {
            const uint16_t v = samples[y * perRow + i];
            if (depth == 16) {
                row[2 * i] = static_cast<uint8_t>(v >> 8);
                row[2 * i + 1] = static_cast<uint8_t>(v);
            } else {
                row[i] = static_cast<uint8_t>(v);
            }
        }
        png_write_row(png, row.data());
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    std::fclose(f);
    return true;
}

struct TiffParams {
    uint16_t photometric = PHOTOMETRIC_RGB;
    uint16_t samplesPerPixel = 3;
    uint16_t bits = 8;
    uint16_t extraSample = 0;  // EXTRASAMPLE_* for the alpha sample, when samplesPerPixel has one
    bool tiled = false;
    std::vector<uint8_t> icc;  // any bytes, written to the ICC tag when not empty
};

inline bool writeTestTiff(const std::string& path, uint32_t w, uint32_t h, const TiffParams& params,
                          const std::vector<uint16_t>& samples) {
    TIFF* tif = TIFFOpen(path.c_str(), "w");
    if (tif == nullptr) return false;
    TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, w);
    TIFFSetField(tif, TIFFTAG_IMAGELENGTH, h);
    TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, params.bits);
    TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, params.samplesPerPixel);
    TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, params.photometric);
    TIFFSetField(tif, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    const bool alpha = params.samplesPerPixel == 2 || params.samplesPerPixel == 4;
    if (alpha) {
        uint16_t kinds[1] = {params.extraSample};
        TIFFSetField(tif, TIFFTAG_EXTRASAMPLES, 1, kinds);
    }
    if (!params.icc.empty())
        TIFFSetField(tif, TIFFTAG_ICCPROFILE, static_cast<uint32_t>(params.icc.size()), params.icc.data());
    const size_t perRow = size_t{w} * params.samplesPerPixel;
    if (params.tiled) {
        TIFFSetField(tif, TIFFTAG_TILEWIDTH, 16);
        TIFFSetField(tif, TIFFTAG_TILELENGTH, 16);
        std::vector<uint8_t> tile(16 * 16 * params.samplesPerPixel * (params.bits / 8), 0);
        TIFFWriteTile(tif, tile.data(), 0, 0, 0, 0);
    } else {
        TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, 2);
        std::vector<uint8_t> row(perRow * (params.bits / 8));
        for (uint32_t y = 0; y < h; ++y) {
            for (size_t i = 0; i < perRow; ++i) {
                const uint16_t v = samples[y * perRow + i];
                if (params.bits == 16) std::memcpy(&row[2 * i], &v, 2);
                else row[i] = static_cast<uint8_t>(v);
            }
            TIFFWriteScanline(tif, row.data(), y, 0);
        }
    }
    TIFFClose(tif);
    return true;
}

// A PNG that is only its claims: the signature, a header chunk for w × h
// (16-bit RGBA) and an empty data chunk, 57 bytes whatever size it claims.
inline std::string claimedPng(uint32_t w, uint32_t h, bool interlaced) {
    std::string png("\x89PNG\r\n\x1a\n", 8);
    auto chunk = [&png](const char* type, const std::string& data) {
        const auto be32 = [](uint32_t v) {
            return std::string{char(v >> 24), char(v >> 16), char(v >> 8), char(v)};
        };
        const std::string body = type + data;
        png += be32(static_cast<uint32_t>(data.size())) + body +
               be32(static_cast<uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(body.data()), body.size())));
    };
    std::string header;
    for (uint32_t v : {w, h})
        for (int shift = 24; shift >= 0; shift -= 8) header += char(v >> shift);
    header += std::string{16, 6, 0, 0, char(interlaced ? 1 : 0)};  // depth, RGBA, deflate, filter, Adam7
    chunk("IHDR", header);
    chunk("IDAT", "");
    return png;
}

inline void writeBytes(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string readBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace inkdot::test
