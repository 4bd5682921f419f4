#include "rescomp/dot_split.h"

#include <algorithm>
#include <cmath>

namespace inkdot::tools {
namespace {

double smoothstep(double edge0, double edge1, double x) {
    if (x <= edge0) return 0.0;
    if (x >= edge1) return 1.0;
    const double t = (x - edge0) / (edge1 - edge0);
    return t * t * (3.0 - 2.0 * t);
}

}  // namespace

int oneBitDotValue(int r, int inkParamA, int inkParamB) {
    const int64_t d = int64_t{inkParamA} - inkParamB, k = 255 - r;
    return static_cast<int>(((d * k * k + 1) / 255 + int64_t{inkParamB} * 255) / 100);
}

std::array<DotSplitRow, 256> makeDotSplit(const DotSplitParams& params) {
    std::array<DotSplitRow, 256> rows{};
    for (int r = 1; r < 256; ++r) {
        const double t = r / 255.0;
        const double large = smoothstep(params.largeStart, params.largeFull, t);
        const double medium = std::max(0.0, smoothstep(params.mediumStart, params.mediumFull, t) - large);
        const double small = 1.0 - large - medium;
        const double inkPerArea = small * params.smallInk + medium * params.mediumInk + large;
        const double oneBitInk = r * 255.0 / oneBitDotValue(r, params.inkParamA, params.inkParamB);
        const double area = std::min(255.0, oneBitInk / inkPerArea);
        int s = static_cast<int>(std::lround(area * small));
        int m = static_cast<int>(std::lround(area * medium));
        int l = static_cast<int>(std::lround(area * large));
        // Rounding three shares can overshoot a full pixel by a unit or two.
        while (s + m + l > 255) {
            if (s > 0) --s;
            else --m;
        }
        rows[r] = {static_cast<uint8_t>(s), static_cast<uint8_t>(m), static_cast<uint8_t>(l)};
    }
    return rows;
}

Bytes dotSplitBlock(const std::array<DotSplitRow, 256>& rows) {
    Bytes out;
    out.reserve(768);
    for (const DotSplitRow& row : rows) out.insert(out.end(), {row.small, row.medium, row.large});
    return out;
}

}  // namespace inkdot::tools
