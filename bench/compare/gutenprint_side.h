// Gutenprint, the inkjet driver library printer users run, as a black-box
// peer of inkdot's colour halftoning: its public dither calls
// (stp_dither_init, stp_dither_set_inks_simple, stp_dither_add_channel,
// stp_dither_internal) in-process, on pixels that already carry their four
// ink amounts, one or two bits a dot. The algorithm is its "DitherAlgorithm"
// parameter: EvenTone, HybridEvenTone, Adaptive, Ordered, VeryFast, Floyd.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace inkdot::compare {

class GutenprintDither {
public:
    GutenprintDither(const std::string& algorithm, unsigned bits, uint32_t width, uint32_t height);
    ~GutenprintDither();
    GutenprintDither(const GutenprintDither&) = delete;
    GutenprintDither& operator=(const GutenprintDither&) = delete;

    // Whether the library knows the algorithm and set up the dither.
    bool ok() const { return vars_ != nullptr; }

    // Dithers the image, four ink bytes a pixel (C, M, Y, K; 255 full ink),
    // line by line; only the dither calls are timed. Seconds, negative on failure.
    double timedRun(const std::vector<uint8_t>& cmyk);

    // Share of the output bits of every channel that the last run set.
    double bitShare() const { return bitShare_; }

private:
    void* vars_ = nullptr;
    void* image_ = nullptr;
    unsigned bits_;
    uint32_t width_;
    uint32_t height_;
    std::vector<std::vector<uint8_t>> channels_;  // K, C, M, Y output, one line of `bits_` bit planes
    std::vector<uint16_t> kcmy_;                  // the library's input: 16-bit K, C, M, Y a pixel
    double bitShare_ = 0;
};

// Whether the library starts, and the dither algorithms it offers.
bool gutenprintStarted();

}  // namespace inkdot::compare
