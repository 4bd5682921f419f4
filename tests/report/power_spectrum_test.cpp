// The power spectrum: the transform against a plain DFT, the normalisation
// (mean power = variance), and stripes at their known frequency.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <random>
#include <vector>

#include "report/power_spectrum.h"

namespace inkdot::tools {
namespace {

std::vector<double> window(uint32_t size, double (*value)(uint32_t x, uint32_t y)) {
    std::vector<double> w(size_t{size} * size);
    for (uint32_t y = 0; y < size; ++y)
        for (uint32_t x = 0; x < size; ++x) w[size_t{y} * size + x] = value(x, y);
    return w;
}

double powerMean(const RadialSpectrum& s) {
    double energy = 0.0, n = 0.0;
    for (size_t a = 0; a < s.power.size(); ++a) {
        energy += s.power[a] * s.samples[a];
        n += s.samples[a];
    }
    return energy / (n + 1);  // the left-out annulus 0 holds one value (the mean, removed)
}

TEST(Fft, AgreesWithThePlainTransform) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    std::vector<std::complex<double>> data(32);
    for (auto& d : data) d = {value(random), value(random)};
    std::vector<std::complex<double>> expected(data.size());
    for (size_t k = 0; k < data.size(); ++k)
        for (size_t n = 0; n < data.size(); ++n)
            expected[k] += data[n] * std::polar(1.0, -2.0 * std::numbers::pi * double(k * n) / double(data.size()));
    fft(data);
    for (size_t k = 0; k < data.size(); ++k) {
        EXPECT_NEAR(data[k].real(), expected[k].real(), 1e-9) << k;
        EXPECT_NEAR(data[k].imag(), expected[k].imag(), 1e-9) << k;
    }
}

TEST(PowerSpectrum, MeanPowerIsTheVariance) {
    std::mt19937 random(11);
    std::bernoulli_distribution dot(0.2);
    std::vector<double> w(64 * 64);
    for (double& v : w) v = dot(random) ? 1.0 : 0.0;
    double mean = 0.0, variance = 0.0;
    for (double v : w) mean += v / w.size();
    for (double v : w) variance += (v - mean) * (v - mean) / w.size();
    SpectrumAccumulator s(64, 1.0 / 64, 1.0 / 64);
    s.add(w);
    EXPECT_NEAR(powerMean(s.result()), variance, 1e-9);
}

TEST(PowerSpectrum, StripesPutTheirPowerAtTheirFrequency) {
    // Columns on, on, off, off: a period of four pixels across, none down.
    // With columns half as wide as lines are high (1440 x 720) the period is
    // two line pitches on paper, twice the frequency per line pitch.
    for (auto [columnPitch, frequency] : {std::pair{1.0, 0.25}, std::pair{2.0, 0.5}}) {
        SpectrumAccumulator s(32, columnPitch / 32, 1.0 / 32);
        s.add(window(32, [](uint32_t x, uint32_t) { return x % 4 < 2 ? 1.0 : 0.0; }));
        const RadialSpectrum r = s.result();
        size_t peak = 0;
        for (size_t a = 1; a < r.power.size(); ++a)
            if (r.power[a] > r.power[peak]) peak = a;
        EXPECT_DOUBLE_EQ(r.frequency[peak], frequency);
        // All of it in two of the annulus's values: strongly directional.
        EXPECT_GT(r.anisotropy[peak], 5.0);
    }
}

}  // namespace
}  // namespace inkdot::tools
