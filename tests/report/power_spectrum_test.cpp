// The power spectrum: the transform against a plain DFT, the normalisation
// (mean power = variance), and stripes at their known frequency.
#include <gtest/gtest.h>

#include <complex>
#include <numbers>
#include <random>

#include "report/power_spectrum.h"

namespace inkdot::tools {
namespace {

TEST(Fft, AgreesWithThePlainTransform) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    std::vector<std::complex<double>> data(32), expected(32);
    for (auto& d : data) d = {value(random), value(random)};
    for (size_t k = 0; k < 32; ++k)
        for (size_t n = 0; n < 32; ++n) expected[k] += data[n] * std::polar(1.0, -2.0 * std::numbers::pi * double(k * n) / 32);
    fft(data);
    for (size_t k = 0; k < 32; ++k) EXPECT_LT(std::abs(data[k] - expected[k]), 1e-9) << k;
}

TEST(PowerSpectrum, MeanPowerIsTheVariance) {
    std::mt19937 random(11);
    std::bernoulli_distribution dot(0.2);
    std::vector<double> w(64 * 64);
    double mean = 0.0, variance = 0.0;
    for (double& v : w) mean += (v = dot(random) ? 1.0 : 0.0) / double(w.size());
    for (double v : w) variance += (v - mean) * (v - mean) / double(w.size());
    SpectrumAccumulator s(64, 1.0 / 64, 1.0 / 64);
    s.add(w);
    const RadialSpectrum r = s.result();
    double energy = 0.0, n = 1.0;  // the left-out annulus 0 holds one value (the mean, removed)
    for (size_t a = 0; a < r.power.size(); ++a) energy += r.power[a] * r.samples[a], n += r.samples[a];
    EXPECT_NEAR(energy / n, variance, 1e-9);
}

TEST(PowerSpectrum, StripesPutTheirPowerAtTheirFrequency) {
    // Columns on, on, off, off: a period of four pixels across, none down.
    // With columns half as wide as lines are high (1440 x 720) the period is
    // two line pitches on paper, twice the frequency per line pitch.
    std::vector<double> stripes(32 * 32);
    for (size_t i = 0; i < stripes.size(); ++i) stripes[i] = i % 4 < 2 ? 1.0 : 0.0;
    for (auto [columnPitch, frequency] : {std::pair{1.0, 0.25}, std::pair{2.0, 0.5}}) {
        SpectrumAccumulator s(32, columnPitch / 32, 1.0 / 32);
        s.add(stripes);
        const RadialSpectrum r = s.result();
        const size_t peak = size_t(std::max_element(r.power.begin(), r.power.end()) - r.power.begin());
        EXPECT_DOUBLE_EQ(r.frequency[peak], frequency);
        EXPECT_GT(r.anisotropy[peak], 5.0) << "all of it in two of the annulus's values: strongly directional";
    }
}

}  // namespace
}  // namespace inkdot::tools
