// Blue-noise matrices: a permutation of the ranks, dots spread evenly, little
// low-frequency power.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

#include "rescomp/blue_noise.h"

namespace inkdot::tools {
namespace {

// Mean power of the binary pattern "rank < level" at the lowest non-zero
// frequencies (radius up to a fifth of Nyquist) over the mean power of all
// non-zero frequencies. White noise gives about 1; blue noise far less.
double lowFrequencyShare(const std::vector<uint16_t>& ranks, unsigned w, unsigned h, unsigned level) {
    double low = 0, all = 0;
    int lowCount = 0, allCount = 0;
    for (unsigned v = 0; v < h; ++v)
        for (unsigned u = 0; u < w; ++u) {
            if (u == 0 && v == 0) continue;
            const double fu = (u <= w / 2 ? u : w - double(u)) / w;  // cycles per cell
            const double fv = (v <= h / 2 ? v : h - double(v)) / h;
            std::complex<double> sum = 0;
            for (unsigned y = 0; y < h; ++y)
                for (unsigned x = 0; x < w; ++x)
                    if (ranks[y * w + x] < level)
                        sum += std::polar(1.0, -2 * std::numbers::pi * (double(u) * x / w + double(v) * y / h));
            const double power = std::norm(sum);
            all += power;
            ++allCount;
            if (std::hypot(fu, fv) <= 0.1) {
                low += power;
                ++lowCount;
            }
        }
    return (low / lowCount) / (all / allCount);
}

// Smallest toroidal distance between two cells below `level`.
double closestPair(const std::vector<uint16_t>& ranks, unsigned w, unsigned h, unsigned level) {
    std::vector<std::pair<int, int>> dots;
    for (unsigned i = 0; i < ranks.size(); ++i)
        if (ranks[i] < level) dots.push_back({int(i % w), int(i / w)});
    double best = 1e9;
    for (size_t a = 0; a < dots.size(); ++a)
        for (size_t b = a + 1; b < dots.size(); ++b) {
            int dx = std::abs(dots[a].first - dots[b].first), dy = std::abs(dots[a].second - dots[b].second);
            dx = std::min<int>(dx, w - dx);
            dy = std::min<int>(dy, h - dy);
            best = std::min(best, std::hypot(double(dx), double(dy)));
        }
    return best;
}

std::vector<uint16_t> whiteNoise(unsigned cells, uint32_t seed) {
    std::vector<uint16_t> ranks(cells);
    for (unsigned i = 0; i < cells; ++i) ranks[i] = static_cast<uint16_t>(i);
    for (unsigned i = cells - 1; i > 0; --i) {  // Fisher-Yates with a small LCG
        seed = seed * 1664525u + 1013904223u;
        std::swap(ranks[i], ranks[(seed >> 8) % (i + 1)]);
    }
    return ranks;
}

TEST(BlueNoise, IsAPermutationOfTheRanks) {
    for (auto [w, h] : {std::pair{16u, 16u}, {32u, 8u}, {64u, 64u}, {1u, 5u}}) {
        std::vector<uint16_t> ranks = makeBlueNoise({w, h, 1.0, 1.5, 7});
        ASSERT_EQ(ranks.size(), size_t{w} * h);
        std::sort(ranks.begin(), ranks.end());
        for (unsigned i = 0; i < ranks.size(); ++i) ASSERT_EQ(ranks[i], i) << w << "x" << h;
    }
}

TEST(BlueNoise, SameSeedSameMatrix) {
    EXPECT_EQ(makeBlueNoise({32, 32, 1.0, 1.5, 3}), makeBlueNoise({32, 32, 1.0, 1.5, 3}));
    EXPECT_NE(makeBlueNoise({32, 32, 1.0, 1.5, 3}), makeBlueNoise({32, 32, 1.0, 1.5, 4}));
}

TEST(BlueNoise, HasLittleLowFrequencyPower) {
    const unsigned w = 32, h = 32;
    const std::vector<uint16_t> blue = makeBlueNoise({w, h, 1.0, 1.5, 11});
    const std::vector<uint16_t> white = whiteNoise(w * h, 11);
    for (unsigned level : {w * h / 8, w * h / 2, w * h * 7 / 8}) {
        const double blueShare = lowFrequencyShare(blue, w, h, level);
        EXPECT_LT(blueShare, 0.15) << "level " << level;
        EXPECT_GT(lowFrequencyShare(white, w, h, level), 3 * blueShare) << "the measure tells noise apart";
    }
}

TEST(BlueNoise, DotsKeepTheirDistance) {
    const unsigned w = 64, h = 64;
    const std::vector<uint16_t> blue = makeBlueNoise({w, h, 1.0, 1.5, 5});
    // One dot in ten: mean spacing about 3.2 cells; no two dots touch.
    EXPECT_GE(closestPair(blue, w, h, w * h / 10), 2.0);
    // White noise at the same density has touching dots.
    EXPECT_LE(closestPair(whiteNoise(w * h, 5), w, h, w * h / 10), 1.0);
}

TEST(BlueNoise, WideCellsSpreadDotsFurtherAcrossThanDown) {
    // Cells half as wide as tall (1440 × 720 dpi): on paper the dots should
    // be even, so in cells they lie about twice as far apart across as down.
    const unsigned w = 64, h = 32;
    const std::vector<uint16_t> ranks = makeBlueNoise({w, h, 0.5, 1.5, 9});
    double across = 0, down = 0;
    int pairs = 0;
    const unsigned level = w * h / 16;
    for (unsigned i = 0; i < ranks.size(); ++i) {
        if (ranks[i] >= level) continue;
        // Nearest other dot, measured on paper; accumulate its offsets in cells.
        double best = 1e9, bx = 0, by = 0;
        for (unsigned j = 0; j < ranks.size(); ++j) {
            if (j == i || ranks[j] >= level) continue;
            int dx = std::abs(int(i % w) - int(j % w)), dy = std::abs(int(i / w) - int(j / w));
            dx = std::min<int>(dx, w - dx);
            dy = std::min<int>(dy, h - dy);
            const double d = std::hypot(dx * 0.5, double(dy));
            if (d < best) best = d, bx = dx, by = dy;
        }
        across += bx;
        down += by;
        ++pairs;
    }
    ASSERT_GT(pairs, 0);
    EXPECT_GT(across / pairs, 1.3 * (down / pairs));
}

}  // namespace
}  // namespace inkdot::tools
