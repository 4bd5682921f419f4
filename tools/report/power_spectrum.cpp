#include "report/power_spectrum.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace inkdot::tools {

void fft(std::span<std::complex<double>> data) {
    const size_t n = data.size();
    // Bit-reversed order first, then butterflies of growing length.
    for (size_t i = 1, j = 0; i < n; ++i) {
        size_t bit = n >> 1;
        for (; j & bit; bit >>= 1) j ^= bit;
        j ^= bit;
        if (i < j) std::swap(data[i], data[j]);
    }
    for (size_t len = 2; len <= n; len <<= 1) {
        const double angle = -2.0 * std::numbers::pi / static_cast<double>(len);
        const std::complex<double> step(std::cos(angle), std::sin(angle));
        for (size_t start = 0; start < n; start += len) {
            std::complex<double> w(1.0, 0.0);
            for (size_t k = 0; k < len / 2; ++k) {
                const std::complex<double> a = data[start + k];
                const std::complex<double> b = data[start + k + len / 2] * w;
                data[start + k] = a + b;
                data[start + k + len / 2] = a - b;
                w *= step;
            }
        }
    }
}

SpectrumAccumulator::SpectrumAccumulator(uint32_t size, double unitX, double unitY)
    : size_(size), unitX_(unitX), unitY_(unitY), sum_(size_t{size} * size, 0.0), work_(size_t{size} * size),
      column_(size) {}

void SpectrumAccumulator::add(std::span<const double> window) {
    const size_t n = size_t{size_} * size_;
    double mean = 0.0;
    for (size_t i = 0; i < n; ++i) mean += window[i];
    mean /= static_cast<double>(n);
    for (size_t i = 0; i < n; ++i) work_[i] = window[i] - mean;
    for (uint32_t y = 0; y < size_; ++y) fft({work_.data() + size_t{y} * size_, size_});
    for (uint32_t x = 0; x < size_; ++x) {
        for (uint32_t y = 0; y < size_; ++y) column_[y] = work_[size_t{y} * size_ + x];
        fft(column_);
        for (uint32_t y = 0; y < size_; ++y) work_[size_t{y} * size_ + x] = column_[y];
    }
    for (size_t i = 0; i < n; ++i) sum_[i] += std::norm(work_[i]) / static_cast<double>(n);
    ++windows_;
}

RadialSpectrum SpectrumAccumulator::result() const {
    const double width = std::min(unitX_, unitY_);
    const auto signedIndex = [this](uint32_t i) {  // DFT index i stands for frequency i or i − size
        return i < size_ / 2 ? static_cast<double>(i) : static_cast<double>(i) - size_;
    };
    const double half = size_ / 2.0;
    const uint32_t annuli =
        static_cast<uint32_t>(std::lround(std::hypot(half * unitX_, half * unitY_) / width)) + 1;
    std::vector<double> sum(annuli, 0.0), squares(annuli, 0.0);
    std::vector<uint32_t> count(annuli, 0);
    const double k = windows_ == 0 ? 1.0 : static_cast<double>(windows_);
    for (uint32_t v = 0; v < size_; ++v) {
        for (uint32_t u = 0; u < size_; ++u) {
            const double f = std::hypot(signedIndex(u) * unitX_, signedIndex(v) * unitY_);
            const auto a = static_cast<uint32_t>(std::lround(f / width));
            const double p = sum_[size_t{v} * size_ + u] / k;
            sum[a] += p;
            squares[a] += p * p;
            ++count[a];
        }
    }
    RadialSpectrum out;
    out.windows = windows_;
    // Annulus 0 holds the removed mean only; it is left out.
    for (uint32_t a = 1; a < annuli; ++a) {
        if (count[a] == 0) continue;
        const double n = count[a];
        const double mean = sum[a] / n;
        // Sample variance (n − 1) of the annulus's values.
        const double variance = n > 1 ? std::max(0.0, (squares[a] - n * mean * mean) / (n - 1)) : 0.0;
        out.frequency.push_back(a * width);
        out.power.push_back(mean);
        out.anisotropy.push_back(mean > 0.0 ? variance / (mean * mean) : 0.0);
        out.samples.push_back(count[a]);
    }
    return out;
}

}  // namespace inkdot::tools
