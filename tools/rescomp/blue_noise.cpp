#include "rescomp/blue_noise.h"

#include <algorithm>
#include <cmath>

namespace inkdot::tools {
namespace {

// xorshift32: a fixed, platform-independent sequence for the seed pattern.
uint32_t nextRandom(uint32_t& state) {
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    return state;
}

class EnergyField {
public:
    explicit EnergyField(const BlueNoiseParams& params) : w_(params.width), h_(params.height) {
        const double unitX = params.cellWidth >= 1.0 ? params.cellWidth : 1.0;
        const double unitY = params.cellWidth >= 1.0 ? 1.0 : 1.0 / params.cellWidth;
        // The Gaussian is below 1e-7 beyond 5.7 sigma; a window of that radius
        // (or the whole torus when smaller) keeps each update local.
        const double reach = 5.7 * params.sigma;
        rx_ = std::min<int>(static_cast<int>(std::ceil(reach / unitX)), static_cast<int>(w_ - 1) / 2);
        ry_ = std::min<int>(static_cast<int>(std::ceil(reach / unitY)), static_cast<int>(h_ - 1) / 2);
        const int kw = 2 * rx_ + 1;
        kernel_.resize(static_cast<size_t>(kw) * (2 * ry_ + 1));
        for (int dy = -ry_; dy <= ry_; ++dy)
            for (int dx = -rx_; dx <= rx_; ++dx) {
                const double px = dx * unitX, py = dy * unitY;
                kernel_[(dy + ry_) * kw + dx + rx_] =
                    std::exp(-(px * px + py * py) / (2.0 * params.sigma * params.sigma));
            }
        energy_.assign(static_cast<size_t>(w_) * h_, 0.0);
        dot_.assign(energy_.size(), 0);
    }

    size_t cells() const { return energy_.size(); }
    bool isDot(size_t cell) const { return dot_[cell] != 0; }

    void set(size_t cell, bool on) {
        dot_[cell] = on ? 1 : 0;
        const double sign = on ? 1.0 : -1.0;
        const int cx = static_cast<int>(cell % w_), cy = static_cast<int>(cell / w_);
        const int kw = 2 * rx_ + 1;
        for (int dy = -ry_; dy <= ry_; ++dy) {
            const size_t row = static_cast<size_t>((cy + dy + static_cast<int>(h_)) % static_cast<int>(h_)) * w_;
            for (int dx = -rx_; dx <= rx_; ++dx) {
                const int x = (cx + dx + static_cast<int>(w_)) % static_cast<int>(w_);
                energy_[row + x] += sign * kernel_[(dy + ry_) * kw + dx + rx_];
            }
        }
    }

    // The dot with the highest energy (ties: the first).
    size_t tightestCluster() const { return extreme(true); }
    // The empty cell with the lowest energy (ties: the first).
    size_t largestVoid() const { return extreme(false); }

private:
    size_t extreme(bool amongDots) const {
        size_t best = cells();
        for (size_t i = 0; i < cells(); ++i) {
            if (isDot(i) != amongDots) continue;
            if (best == cells() || (amongDots ? energy_[i] > energy_[best] : energy_[i] < energy_[best]))
                best = i;
        }
        return best;
    }

    unsigned w_, h_;
    int rx_ = 0, ry_ = 0;
    std::vector<double> kernel_;
    std::vector<double> energy_;
    std::vector<uint8_t> dot_;
};

}  // namespace

std::vector<uint16_t> makeBlueNoise(const BlueNoiseParams& params) {
    EnergyField field(params);
    const size_t cells = field.cells();
    std::vector<uint16_t> rank(cells, 0);

    // 1. Seed pattern, a tenth of the cells, at least one.
    const size_t seedCount = std::max<size_t>(1, cells / 10);
    uint32_t state = params.seed != 0 ? params.seed : 1;
    for (size_t placed = 0; placed < seedCount;) {
        const size_t cell = nextRandom(state) % cells;
        if (field.isDot(cell)) continue;
        field.set(cell, true);
        ++placed;
    }
    for (size_t guard = 0; guard < cells * 4; ++guard) {
        const size_t cluster = field.tightestCluster();
        field.set(cluster, false);
        const size_t hole = field.largestVoid();
        field.set(hole, true);
        if (hole == cluster) break;
    }
    std::vector<uint8_t> seedPattern(cells);
    for (size_t i = 0; i < cells; ++i) seedPattern[i] = field.isDot(i) ? 1 : 0;

    // 2. Rank the seed dots, tightest cluster last out gets the highest rank.
    for (size_t r = seedCount; r-- > 0;) {
        const size_t cluster = field.tightestCluster();
        field.set(cluster, false);
        rank[cluster] = static_cast<uint16_t>(r);
    }
    // 3. Restore the seed and fill the voids.
    for (size_t i = 0; i < cells; ++i)
        if (seedPattern[i]) field.set(i, true);
    for (size_t r = seedCount; r < cells; ++r) {
        const size_t hole = field.largestVoid();
        field.set(hole, true);
        rank[hole] = static_cast<uint16_t>(r);
    }
    return rank;
}

}  // namespace inkdot::tools
