// Scratch directories and small writers for test images in every format the tools read.
#pragma once

#include <png.h>
#include <tiffio.h>
#include <stdlib.h>
#include <zlib.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace inkdot::test {

inline void writeBytes(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string readBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// A directory of its own for a test, removed with everything in it afterwards.
struct TempDir {
    std::filesystem::path path_;
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "inkdot-test-XXXXXX").string();
        path_ = ::mkdtemp(pattern.data());
    }
    ~TempDir() { std::filesystem::remove_all(path_); }
    std::string file(const std::string& name) const { return (path_ / name).string(); }
    const std::filesystem::path& path() const { return path_; }
    void write(const std::string& name, const std::string& bytes) const { writeBytes(file(name), bytes); }
};

// Samples row by row, 16-bit ones as values up to 65535; a non-empty `icc` goes into an iCCP chunk.
inline bool writeTestPng(const std::string& path, uint32_t w, uint32_t h, int colourType, int depth,
                         const std::vector<uint16_t>& samples, const std::vector<uint8_t>& icc = {}) {
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (f == nullptr) return false;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, f);
    png_set_IHDR(png, info, w, h, depth, colourType, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    if (!icc.empty()) png_set_iCCP(png, info, "test", PNG_COMPRESSION_TYPE_BASE, icc.data(), png_uint_32(icc.size()));
    png_write_info(png, info);
    const size_t perRow = samples.size() / h, bytes = depth == 16 ? 2 : 1;
    std::vector<uint8_t> row(perRow * bytes);
    for (uint32_t y = 0; y < h; ++y) {
        for (size_t i = 0; i < perRow; ++i) {
            const uint16_t v = samples[y * perRow + i];
            if (bytes == 2) row[2 * i] = uint8_t(v >> 8);
            row[bytes * i + bytes - 1] = uint8_t(v);
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
    uint16_t extraSample = 0;  // EXTRASAMPLE_* of the alpha sample, for 2 or 4 samples a pixel
    std::vector<uint8_t> icc;  // any bytes, written to the ICC tag when not empty
};

inline bool writeTestTiff(const std::string& path, uint32_t w, uint32_t h, const TiffParams& p,
                          const std::vector<uint16_t>& samples) {
    TIFF* tif = TIFFOpen(path.c_str(), "w");
    if (tif == nullptr) return false;
    TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, w);
    TIFFSetField(tif, TIFFTAG_IMAGELENGTH, h);
    TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, p.bits);
    TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, p.samplesPerPixel);
    TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, p.photometric);
    TIFFSetField(tif, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    if (p.samplesPerPixel == 2 || p.samplesPerPixel == 4) TIFFSetField(tif, TIFFTAG_EXTRASAMPLES, 1, &p.extraSample);
    if (!p.icc.empty()) TIFFSetField(tif, TIFFTAG_ICCPROFILE, uint32_t(p.icc.size()), p.icc.data());
    const size_t perRow = size_t{w} * p.samplesPerPixel;
    std::vector<uint8_t> row(perRow * (p.bits / 8));
    for (uint32_t y = 0; y < h; ++y) {
        for (size_t i = 0; i < perRow; ++i) {
            const uint16_t v = samples[y * perRow + i];
            if (p.bits == 16) std::memcpy(&row[2 * i], &v, 2);
            else row[i] = uint8_t(v);
        }
        TIFFWriteScanline(tif, row.data(), y, 0);
    }
    TIFFClose(tif);
    return true;
}

// A PNG that is only its claims: the signature, a header chunk for w × h
// (16-bit RGBA) and an empty data chunk, 57 bytes whatever size it claims.
inline std::string claimedPng(uint32_t w, uint32_t h, bool interlaced) {
    const auto be32 = [](uint32_t v) { return std::string{char(v >> 24), char(v >> 16), char(v >> 8), char(v)}; };
    std::string png("\x89PNG\r\n\x1a\n", 8);
    auto chunk = [&](const std::string& body) {  // type and data
        png += be32(uint32_t(body.size() - 4)) + body +
               be32(uint32_t(crc32(0, reinterpret_cast<const Bytef*>(body.data()), uInt(body.size()))));
    };
    // Depth, RGBA, deflate, filter, Adam7.
    chunk("IHDR" + be32(w) + be32(h) + std::string{16, 6, 0, 0, char(interlaced ? 1 : 0)});
    chunk("IDAT");
    return png;
}

}  // namespace inkdot::test
