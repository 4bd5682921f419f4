// TIFF through libtiff: strip images, contiguous samples, 8 or 16 bits,
// gray (min-is-black or min-is-white) or RGB, with an optional alpha sample.
#include <tiffio.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "image/image_reader.h"

namespace inkdot::tools {
namespace {

// libtiff reports through a process-wide handler; the last message of this
// thread is kept for the error text.
thread_local char lastTiffError[256];

void onTiffError(const char* module, const char* format, va_list args) {
    char text[200];
    std::vsnprintf(text, sizeof text, format, args);
    std::snprintf(lastTiffError, sizeof lastTiffError, "%s%s%s", module ? module : "", module ? ": " : "", text);
}

void onTiffWarning(const char*, const char*, va_list) {}

class TiffReader final : public ImageReader {
public:
    ~TiffReader() override {
        if (tiff_ != nullptr) TIFFClose(tiff_);
    }

    bool open(const std::string& path, std::string& error) {
        path_ = path;
        TIFFSetErrorHandler(onTiffError);
        TIFFSetWarningHandler(onTiffWarning);
        lastTiffError[0] = '\0';
        tiff_ = TIFFOpen(path.c_str(), "r");
        if (tiff_ == nullptr) {
            error = "cannot read " + path + ": " + lastTiffError;
            return false;
        }
        uint32_t w = 0, h = 0;
        uint16_t bits = 1, samplesPerPixel = 1, photometric = 0, planar = PLANARCONFIG_CONTIG;
        TIFFGetField(tiff_, TIFFTAG_IMAGEWIDTH, &w);
        TIFFGetField(tiff_, TIFFTAG_IMAGELENGTH, &h);
        TIFFGetFieldDefaulted(tiff_, TIFFTAG_BITSPERSAMPLE, &bits);
        TIFFGetFieldDefaulted(tiff_, TIFFTAG_SAMPLESPERPIXEL, &samplesPerPixel);
        TIFFGetFieldDefaulted(tiff_, TIFFTAG_PLANARCONFIG, &planar);
        if (!TIFFGetField(tiff_, TIFFTAG_PHOTOMETRIC, &photometric)) photometric = PHOTOMETRIC_MINISBLACK;
        uint16_t extraCount = 0;
        uint16_t* extraKinds = nullptr;
        TIFFGetFieldDefaulted(tiff_, TIFFTAG_EXTRASAMPLES, &extraCount, &extraKinds);

        if (TIFFIsTiled(tiff_)) return refuse("tiled TIFF images are not supported", error);
        if (bits != 8 && bits != 16) return refuse("only 8- and 16-bit TIFF samples are supported", error);
        if (planar != PLANARCONFIG_CONTIG) return refuse("separate sample planes are not supported", error);
        unsigned colours = 0;
        if (photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE) colours = 1;
        else if (photometric == PHOTOMETRIC_RGB) colours = 3;
        else return refuse("only gray and RGB TIFF images are supported", error);
        if (samplesPerPixel != colours && samplesPerPixel != colours + 1)
            return refuse("unexpected number of samples per pixel", error);
        if (!checkImageSize(path, w, h, error)) return false;

        uint32_t profileSize = 0;
        void* profile = nullptr;
        if (TIFFGetField(tiff_, TIFFTAG_ICCPROFILE, &profileSize, &profile) && profile != nullptr)
            iccProfile_.assign(static_cast<const uint8_t*>(profile), static_cast<const uint8_t*>(profile) + profileSize);
        width_ = w;
        height_ = h;
        samplesPerPixel_ = samplesPerPixel;
        sixteen_ = bits == 16;
        layout_.colourChannels = colours;
        layout_.alpha = samplesPerPixel == colours + 1;
        layout_.premultiplied = layout_.alpha && extraCount > 0 && extraKinds[0] == EXTRASAMPLE_ASSOCALPHA;
        layout_.invertGray = photometric == PHOTOMETRIC_MINISWHITE;
        layout_.maxValue = sixteen_ ? 65535 : 255;
        return true;
    }

protected:
    bool readSamples(std::vector<uint16_t>& samples, std::string& error) override {
        buffer_.resize(static_cast<size_t>(TIFFScanlineSize(tiff_)));
        lastTiffError[0] = '\0';
        if (buffer_.size() < samples.size() * (sixteen_ ? 2 : 1) ||
            TIFFReadScanline(tiff_, buffer_.data(), row_, 0) < 0) {
            error = path_ + ": cannot read row " + std::to_string(row_) + ": " + lastTiffError;
            return false;
        }
        ++row_;
        if (sixteen_) {
            // libtiff hands 16-bit samples over in host order.
            std::memcpy(samples.data(), buffer_.data(), samples.size() * sizeof(uint16_t));
        } else {
            for (size_t i = 0; i < samples.size(); ++i) samples[i] = buffer_[i];
        }
        return true;
    }

private:
    bool refuse(const char* why, std::string& error) {
        error = path_ + ": " + why;
        return false;
    }

    std::string path_;
    TIFF* tiff_ = nullptr;
    uint16_t samplesPerPixel_ = 1;
    bool sixteen_ = false;
    uint32_t row_ = 0;
    std::vector<uint8_t> buffer_;
};

}  // namespace

std::unique_ptr<ImageReader> openTiff(const std::string& path, std::string& error) {
    auto reader = std::make_unique<TiffReader>();
    if (!reader->open(path, error)) return nullptr;
    return reader;
}

}  // namespace inkdot::tools
