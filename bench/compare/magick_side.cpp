#include "magick_side.h"
#include "timing.h"

#include <magick/MagickCore.h>

#include <algorithm>
#include <cstring>
#include <set>

namespace inkdot::compare {
namespace {

Image* asImage(void* p) { return static_cast<Image*>(p); }

}  // namespace

MagickSession::MagickSession(const char* argv0, unsigned threads) {
    MagickCoreGenesis(argv0, MagickFalse);
    SetMagickResourceLimit(ThreadResource, threads);
}

MagickSession::~MagickSession() { MagickCoreTerminus(); }

MagickImage::MagickImage(const uint8_t* pixels, uint32_t width, uint32_t height, bool cmyk)
    : width_(width), height_(height), cmyk_(cmyk) {
    ExceptionInfo* exception = AcquireExceptionInfo();
    image_ = ConstituteImage(width, height, cmyk ? "CMYK" : "I", CharPixel, pixels, exception);
    if (cmyk) {
        // Every combination of no ink and full ink in the four channels.
        uint8_t corners[16 * 4];
        for (int i = 0; i < 16; ++i)
            for (int c = 0; c < 4; ++c) corners[i * 4 + c] = (i >> c) & 1 ? 255 : 0;
        palette_ = ConstituteImage(16, 1, "CMYK", CharPixel, corners, exception);
        if (palette_ == nullptr && image_ != nullptr) image_ = DestroyImage(asImage(image_));
    }
    DestroyExceptionInfo(exception);
}

MagickImage::~MagickImage() {
    if (result_ != nullptr) DestroyImage(asImage(result_));
    if (palette_ != nullptr) DestroyImage(asImage(palette_));
    if (image_ != nullptr) DestroyImage(asImage(image_));
}

double MagickImage::timedRun(MagickOp op) {
    if (result_ != nullptr) result_ = DestroyImage(asImage(result_));
    ExceptionInfo* exception = AcquireExceptionInfo();
    Image* work = CloneImage(asImage(image_), 0, 0, MagickTrue, exception);
    if (work == nullptr) {
        DestroyExceptionInfo(exception);
        return -1;
    }
    QuantizeInfo quantize;
    GetQuantizeInfo(&quantize);
    quantize.dither = MagickTrue;
    quantize.dither_method = FloydSteinbergDitherMethod;
    if (!cmyk_) {
        quantize.number_colors = 2;
        quantize.colorspace = GRAYColorspace;
    }

    const double start = now();
    MagickBooleanType done = MagickFalse;
    switch (op) {
        case MagickOp::orderedO8x8: done = OrderedPosterizeImage(work, "o8x8", exception); break;
        case MagickOp::floydSteinberg:
            done = cmyk_ ? RemapImage(&quantize, work, asImage(palette_)) : QuantizeImage(&quantize, work);
            break;
    }
    const double elapsed = now() - start;
    DestroyExceptionInfo(exception);
    result_ = work;
    return done == MagickTrue ? elapsed : -1;
}

std::vector<uint8_t> MagickImage::exported() const {
    if (result_ == nullptr) return {};
    std::vector<uint8_t> out(static_cast<size_t>(width_) * height_ * (cmyk_ ? 4 : 1));
    ExceptionInfo* exception = AcquireExceptionInfo();
    ExportImagePixels(asImage(result_), 0, 0, width_, height_, cmyk_ ? "CMYK" : "I", CharPixel, out.data(), exception);
    DestroyExceptionInfo(exception);
    return out;
}

double MagickImage::inkCoverage() const {
    const std::vector<uint8_t> out = exported();
    if (out.empty()) return 0;
    // Quantizing to two grays picks its own pair of levels, not always black and white.
    const uint8_t darkest = *std::min_element(out.begin(), out.end());
    size_t inked = 0;
    for (uint8_t v : out) inked += cmyk_ ? v >= 128 : v == darkest;
    return static_cast<double>(inked) / static_cast<double>(out.size());
}

unsigned MagickImage::distinctLevels() const {
    const std::vector<uint8_t> out = exported();
    const unsigned channels = cmyk_ ? 4 : 1;
    unsigned most = 0;
    for (unsigned c = 0; c < channels; ++c) {
        std::set<uint8_t> seen;
        for (size_t i = c; i < out.size(); i += channels) seen.insert(out[i]);
        most = std::max(most, static_cast<unsigned>(seen.size()));
    }
    return most;
}

}  // namespace inkdot::compare
