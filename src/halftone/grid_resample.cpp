// Resampling the colour grid of colour management at the instance's own
// levels (32 per axis, or the two corners 0 and 255), by tetrahedral
// interpolation with fractions in 128ths.
#include <algorithm>

#include "halftone/protocol_steps.h"

namespace inkdot {
namespace {

constexpr int32_t kFractionBits = 7;
constexpr int32_t kOne = 1 << kFractionBits;  // a whole cell in 128ths
constexpr int32_t kHalf = kOne / 2;           // rounds the weighted sum to the nearest value

// Where a level sits in the source grid: lower node and fraction in 128ths.
struct LevelIndex {
    uint8_t node[256];
    uint8_t fraction[256];  // 0..128, 128 only at the upper node of the last cell
};

LevelIndex indexLevels(const uint8_t* levels, uint32_t n) {
    LevelIndex index{};
    uint32_t k = 0;
    for (int v = 0; v < 256; ++v) {
        // Level 255 stays in the last interval instead of opening one past the end.
        while (k + 2 < n && levels[k + 1] <= v) ++k;
        const int32_t d = levels[k + 1] - levels[k];
        index.node[v] = static_cast<uint8_t>(k);
        index.fraction[v] = static_cast<uint8_t>(((v - levels[k]) * kOne + d / 2) / d);  // rounded
    }
    return index;
}

struct AxisStep {
    int32_t fraction;
    uint32_t stride;  // bytes from a node to its neighbour along the axis
};

}  // namespace

bool isLevelRow(const uint8_t* levels, uint32_t count) {
    if (count < 2 || levels[0] != 0 || levels[count - 1] != 255) return false;
    for (uint32_t i = 1; i < count; ++i) {
        if (levels[i] <= levels[i - 1]) return false;
    }
    return true;
}

void resampleGrid(const CmLut& source, const CmLut& target, uint32_t* out) {
    const uint32_t n = source.gridCount[0];
    const uint32_t channels = source.channels;
    const LevelIndex index = indexLevels(source.grid[0], n);  // first axis serves all three
    const uint32_t strides[3] = {n * n * channels, n * channels, channels};

    for (uint32_t a = 0; a < target.gridCount[0]; ++a) {
        for (uint32_t b = 0; b < target.gridCount[1]; ++b) {
            for (uint32_t c = 0; c < target.gridCount[2]; ++c) {
                const uint8_t levels[3] = {target.grid[0][a], target.grid[1][b], target.grid[2][c]};
                uint32_t baseOffset = 0;
                AxisStep steps[3];
                for (int axis = 0; axis < 3; ++axis) {
                    baseOffset += index.node[levels[axis]] * strides[axis];
                    steps[axis] = {index.fraction[levels[axis]], strides[axis]};
                }
                // Largest fraction first; equal fractions give the node between
                // them weight 0, so their order does not matter.
                std::sort(steps, steps + 3, [](const AxisStep& x, const AxisStep& y) { return x.fraction > y.fraction; });
                const uint8_t* v0 = source.lutData + baseOffset;
                const uint8_t* v1 = v0 + steps[0].stride;
                const uint8_t* v2 = v1 + steps[1].stride;
                const uint8_t* v3 = v2 + steps[2].stride;
                const int32_t w0 = kOne - steps[0].fraction;
                const int32_t w1 = steps[0].fraction - steps[1].fraction;
                const int32_t w2 = steps[1].fraction - steps[2].fraction;
                const int32_t w3 = steps[2].fraction;
                uint32_t packed = 0;
                for (uint32_t ch = 0; ch < 4; ++ch) {  // four inks per node, ink 0 in the low byte
                    const int32_t sum = w0 * v0[ch] + w1 * v1[ch] + w2 * v2[ch] + w3 * v3[ch];
                    packed |= static_cast<uint32_t>((sum + kHalf) >> kFractionBits) << (8 * ch);
                }
                *out++ = packed;
            }
        }
    }
}

}  // namespace inkdot
