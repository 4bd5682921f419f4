#include "rescomp/separation.h"

#include <algorithm>
#include <cmath>

namespace inkdot::tools {
namespace {

double inkDemand(const SeparationModel& model, uint8_t v) {
    return 1.0 - std::pow(v / 255.0, model.inputGamma);
}

// The primaries' share under full black along the neutral axis: the limit of
// (x' − K) / (1 − K) as x' and K both reach 1, where K's slope is
// blackPower / (1 − blackStart).
double underFullBlack(const SeparationModel& model) {
    return std::max(0.0, 1.0 - (1.0 - model.blackStart) / model.blackPower);
}

double smoothstep(double t) { return t * t * (3.0 - 2.0 * t); }

uint8_t toByte(double x) { return static_cast<uint8_t>(std::lround(std::clamp(x, 0.0, 1.0) * 255.0)); }

}  // namespace

Cmyk separate(const SeparationModel& model, uint8_t r, uint8_t g, uint8_t b) {
    const double demand[3] = {inkDemand(model, r), inkDemand(model, g), inkDemand(model, b)};
    const double gray = std::min({demand[0], demand[1], demand[2]});

    double k = 0.0;
    if (gray > model.blackStart)
        k = std::pow((gray - model.blackStart) / (1.0 - model.blackStart), model.blackPower);

    double primary[3];
    for (int i = 0; i < 3; ++i)
        primary[i] = k < 1.0 ? std::max(0.0, (demand[i] - k) / (1.0 - k)) : underFullBlack(model);

    const double limit = model.inkLimitPercent / 100.0;
    if (gray > model.richBlackStart) {
        const double rich = std::clamp((limit - 1.0) / 3.0, 0.0, 1.0);
        const double w = smoothstep((gray - model.richBlackStart) / (1.0 - model.richBlackStart));
        for (double& p : primary) p += w * std::max(0.0, rich - p);
    }
    const double sum = primary[0] + primary[1] + primary[2];
    if (sum + k > limit && sum > 0.0) {
        const double scale = std::max(0.0, limit - k) / sum;
        for (double& p : primary) p *= scale;
    }

    uint8_t out[3] = {toByte(primary[0]), toByte(primary[1]), toByte(primary[2])};
    const uint8_t black = toByte(k);
    // Rounding can lift the sum by up to two units over the limit; take them
    // from the largest primary, which changes the hue least.
    const int limitUnits = model.inkLimitPercent * 255 / 100;
    while (out[0] + out[1] + out[2] + black > limitUnits) {
        uint8_t* largest = std::max_element(out, out + 3);
        if (*largest == 0) break;
        --*largest;
    }
    return {out[0], out[1], out[2], black};
}

uint8_t blackOnlyGray(const SeparationModel& model, uint8_t v) {
    return toByte(std::pow(inkDemand(model, v), model.grayGamma));
}

}  // namespace inkdot::tools
