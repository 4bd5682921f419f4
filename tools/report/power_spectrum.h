// Radially averaged power spectrum and anisotropy of halftone patterns.
//
// A square window of size × size values (size a power of two) has its mean
// removed and is transformed; its periodogram is P(u, v) = |F(u, v)|² / N with
// N = size², so that the mean of P over all frequencies is the window's
// variance. Periodograms of several windows are averaged (Bartlett's
// method), then grouped into annuli of equal radial frequency on paper: the
// power of an annulus is the mean of its periodogram values, the anisotropy
// the variance of those values over the squared mean. An isotropic pattern
// keeps the anisotropy near 1/K for K windows; a pattern with preferred
// directions (worms, grid structure) lifts it.
#pragma once

#include <complex>
#include <cstdint>
#include <span>
#include <vector>

namespace inkdot::tools {

// In-place discrete Fourier transform of a power-of-two length (radix 2).
void fft(std::span<std::complex<double>> data);

struct RadialSpectrum {
    std::vector<double> frequency;   // annulus centre
    std::vector<double> power;       // mean periodogram value in the annulus
    std::vector<double> anisotropy;  // variance / power², 0 where the annulus has one value
    std::vector<uint32_t> samples;   // periodogram values in the annulus
    uint32_t windows = 0;            // periodograms averaged
};

class SpectrumAccumulator {
public:
    // `size` a power of two (2 .. 4096). A unit step of u (columns) stands
    // for unitX cycles per unit length, of v (lines) for unitY: pixels that
    // are not square on paper get their spectrum in paper frequencies. The
    // annuli are min(unitX, unitY) wide.
    SpectrumAccumulator(uint32_t size, double unitX, double unitY);

    uint32_t size() const { return size_; }
    // Adds the periodogram of a window given as size × size values, row by row.
    void add(std::span<const double> window);
    RadialSpectrum result() const;

private:
    uint32_t size_;
    double unitX_, unitY_;
    uint32_t windows_ = 0;
    std::vector<double> sum_;                   // summed periodograms
    std::vector<std::complex<double>> work_;    // the transform of the current window
    std::vector<std::complex<double>> column_;
};

}  // namespace inkdot::tools
