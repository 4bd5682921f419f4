// ImageMagick (MagickCore library calls, no process start-up) as the peer of
// inkdot's one-bit halftoning: ordered dither with the 8 x 8 map "o8x8" and
// Floyd-Steinberg error diffusion to two levels, on gray and on CMYK images.
#pragma once

#include <cstdint>
#include <vector>

namespace inkdot::compare {

// Starts MagickCore and limits it to `threads` worker threads; stops it when destroyed.
class MagickSession {
public:
    MagickSession(const char* argv0, unsigned threads);
    ~MagickSession();
    MagickSession(const MagickSession&) = delete;
    MagickSession& operator=(const MagickSession&) = delete;
};

enum class MagickOp {
    orderedO8x8,     // -ordered-dither o8x8
    floydSteinberg,  // gray: -dither FloydSteinberg -monochrome; CMYK: remap to the 16 bilevel inks
};

// One image held by MagickCore: gray (1 byte a pixel, 255 white) or CMYK
// (4 ink bytes a pixel, 255 full ink).
class MagickImage {
public:
    MagickImage(const uint8_t* pixels, uint32_t width, uint32_t height, bool cmyk);
    ~MagickImage();
    MagickImage(const MagickImage&) = delete;
    MagickImage& operator=(const MagickImage&) = delete;

    bool ok() const { return image_ != nullptr; }

    // Runs `op` on a fresh copy of the image; only the operation itself is
    // timed. Returns seconds, negative on failure; the result stays for
    // inkCoverage and distinctLevels.
    double timedRun(MagickOp op);

    // Fraction of pixel values (over all channels) that print after the
    // last run: the darker of two gray levels, CMYK values of 128 and up.
    double inkCoverage() const;
    // Largest number of different values found in one channel after the last run.
    unsigned distinctLevels() const;

private:
    std::vector<uint8_t> exported() const;

    void* image_ = nullptr;
    void* result_ = nullptr;
    void* palette_ = nullptr;  // the 16 bilevel CMYK inks, for remapping
    uint32_t width_;
    uint32_t height_;
    bool cmyk_;
};

}  // namespace inkdot::compare
