#include "image/image_reader.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace inkdot::tools {

namespace {

// A sample scaled to 0..255, rounded: (v × 255 + max / 2) / max.
inline uint32_t toEight(uint64_t v, uint64_t max) { return static_cast<uint32_t>((v * 255 + max / 2) / max); }

}  // namespace

void convertRow(const SampleLayout& layout, const uint16_t* samples, uint32_t width, uint8_t* out) {
    const unsigned colours = layout.colourChannels;
    if (!layout.alpha && !layout.invertGray && layout.maxValue == 255) {  // 8-bit samples as they are
        for (size_t i = 0; i < size_t{width} * colours; ++i) out[i] = static_cast<uint8_t>(samples[i]);
        return;
    }
    const unsigned step = colours + (layout.alpha ? 1 : 0);
    const uint64_t max = layout.maxValue;
    for (uint32_t x = 0; x < width; ++x, samples += step, out += colours) {
        const uint64_t a = layout.alpha ? samples[colours] : max;
        for (unsigned c = 0; c < colours; ++c) {
            uint64_t v = samples[c] > max ? max : samples[c];
            if (layout.invertGray) v = max - v;
            // Over white: straight colour is v·a + max·(max − a), premultiplied
            // colour is v·max + max·(max − a); both over max² full scale.
            const uint64_t over = (layout.premultiplied ? v * max : v * a) + max * (max - a);
            out[c] = static_cast<uint8_t>(toEight(over, max * max));
        }
    }
}

bool checkImageSize(const std::string& path, uint64_t width, uint64_t height, std::string& error) {
    if (width == 0 || height == 0) {
        error = path + ": the image is empty (" + std::to_string(width) + " x " + std::to_string(height) + " pixels)";
        return false;
    }
    if (width > kMaxImageSide || height > kMaxImageSide) {
        error = path + ": the image is too large (" + std::to_string(width) + " x " + std::to_string(height) +
                " pixels; at most " + std::to_string(kMaxImageSide) + " pixels a side are read)";
        return false;
    }
    return true;
}

bool ImageReader::readRow(uint8_t* out, std::string& error) {
    if (rowsRead_ >= height_) {
        error = "read past the last row";
        return false;
    }
    samples_.resize(size_t{width_} * (layout_.colourChannels + (layout_.alpha ? 1 : 0)));
    if (!readSamples(samples_, error)) return false;
    convertRow(layout_, samples_.data(), width_, out);
    ++rowsRead_;
    return true;
}

std::unique_ptr<ImageReader> openImage(const std::string& path, std::string& error) {
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) {
        error = "cannot open " + path + ": " + std::strerror(errno);
        return nullptr;
    }
    unsigned char magic[8] = {};
    const size_t got = std::fread(magic, 1, sizeof magic, f);
    std::fclose(f);
    static const unsigned char kPng[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    if (got == 8 && std::memcmp(magic, kPng, 8) == 0) return openPng(path, error);
    if (got >= 2 && magic[0] == 'P' && (magic[1] == '5' || magic[1] == '6')) return openPnm(path, error);
    if (got >= 4 && ((magic[0] == 'I' && magic[1] == 'I' && magic[2] == 42 && magic[3] == 0) ||
                     (magic[0] == 'M' && magic[1] == 'M' && magic[2] == 0 && magic[3] == 42)))
        return openTiff(path, error);
    error = path + " is not a PNG, PNM (P5/P6) or TIFF image";
    return nullptr;
}

void toJobInput(const uint8_t* row, unsigned channels, uint32_t width, bool mono, uint8_t* out) {
    for (uint32_t x = 0; x < width; ++x) {
        const uint8_t* p = row + size_t{x} * channels;
        if (mono) {
            out[x] = channels == 1 ? p[0] : static_cast<uint8_t>((299 * p[0] + 587 * p[1] + 114 * p[2] + 500) / 1000);
        } else {
            for (int c = 0; c < 3; ++c) out[size_t{x} * 3 + c] = channels == 1 ? p[0] : p[c];
        }
    }
}

}  // namespace inkdot::tools
