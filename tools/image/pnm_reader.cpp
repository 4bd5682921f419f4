// Binary PNM: P5 (gray) and P6 (RGB), maxval 1..65535; samples above 255
// full scale are two bytes, most significant first.
#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "image/image_reader.h"

namespace inkdot::tools {
namespace {

// Header numbers stop growing here: far above every limit, far below overflow.
constexpr uint64_t kSaturated = uint64_t{1} << 40;

class PnmReader final : public ImageReader {
public:
    ~PnmReader() override {
        if (file_ != nullptr) std::fclose(file_);
    }

    bool open(const std::string& path, std::string& error) {
        path_ = path;
        file_ = std::fopen(path.c_str(), "rb");
        if (file_ == nullptr) {
            error = "cannot open " + path + ": " + std::strerror(errno);
            return false;
        }
        const int p = std::fgetc(file_), kind = std::fgetc(file_);
        if (p != 'P' || (kind != '5' && kind != '6')) {
            error = path + " is not a binary PNM (P5 or P6) image";
            return false;
        }
        uint64_t w = 0, h = 0, maxValue = 0;
        if (!number(w) || !number(h) || !number(maxValue)) {
            error = path + ": damaged PNM header";
            return false;
        }
        if (!checkImageSize(path, w, h, error)) return false;
        if (maxValue == 0 || maxValue > 65535) {
            error = path + ": PNM header gives a maxval of " + std::to_string(maxValue) + ", outside 1..65535";
            return false;
        }
        std::fgetc(file_);  // the single blank that ends the header
        width_ = static_cast<uint32_t>(w);
        height_ = static_cast<uint32_t>(h);
        layout_.colourChannels = kind == '6' ? 3 : 1;
        layout_.maxValue = maxValue;
        bytesPerSample_ = maxValue > 255 ? 2 : 1;
        return true;
    }

protected:
    bool readSamples(std::vector<uint16_t>& samples, std::string& error) override {
        raw_.resize(samples.size() * bytesPerSample_);
        if (std::fread(raw_.data(), 1, raw_.size(), file_) != raw_.size()) {
            error = path_ + ": the image data ends early";
            return false;
        }
        for (size_t i = 0; i < samples.size(); ++i)
            samples[i] = bytesPerSample_ == 2 ? static_cast<uint16_t>(raw_[2 * i] << 8 | raw_[2 * i + 1]) : raw_[i];
        return true;
    }

private:
    // A decimal header field, skipping blanks and '#' comments. Digits beyond
    // any size the readers take are read and kept saturated, so that the
    // size check can say how large the claim was.
    bool number(uint64_t& out) {
        int c = std::fgetc(file_);
        while (c != EOF && (std::isspace(c) || c == '#')) {
            if (c == '#')
                while (c != EOF && c != '\n') c = std::fgetc(file_);
            c = std::fgetc(file_);
        }
        if (c == EOF || !std::isdigit(c)) return false;
        uint64_t v = 0;
        while (c != EOF && std::isdigit(c)) {
            v = std::min<uint64_t>(v * 10 + static_cast<unsigned>(c - '0'), kSaturated);
            c = std::fgetc(file_);
        }
        if (c != EOF) std::ungetc(c, file_);
        out = v;
        return true;
    }

    std::string path_;
    std::FILE* file_ = nullptr;
    unsigned bytesPerSample_ = 1;
    std::vector<uint8_t> raw_;
};

}  // namespace

std::unique_ptr<ImageReader> openPnm(const std::string& path, std::string& error) {
    auto reader = std::make_unique<PnmReader>();
    if (!reader->open(path, error)) return nullptr;
    return reader;
}

}  // namespace inkdot::tools
