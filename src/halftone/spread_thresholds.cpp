// The four ink levels at which the error-diffusion kernels widen their spread,
// chosen by resolution class and, for one-bit output, by the ink parameter.
#include "halftone/setting_kinds.h"
#include "halftone/protocol_steps.h"

namespace inkdot {
namespace {

struct Thresholds {
    int32_t t[4];
};

// One-bit rows, each for inkParam[0] = 250, 350 and 500.
constexpr Thresholds kSquare[3] = {{{32, 9, 4, 2}}, {{37, 20, 5, 2}}, {{55, 22, 8, 3}}};
constexpr Thresholds kDiffusion1440x720[3] = {{{30, 8, 5, 2}}, {{35, 18, 6, 3}}, {{52, 20, 9, 4}}};
constexpr Thresholds kDoubleY[3] = {{{40, 23, 6, 1}}, {{47, 30, 13, 2}}, {{63, 39, 14, 3}}};
constexpr Thresholds kOther[3] = {{{56, 22, 11, 4}}, {{59, 27, 12, 5}}, {{60, 32, 14, 7}}};

// Two-bit rows; inkParam[0] is not consulted.
constexpr Thresholds kTwoBit1440x720 = {{14, 3, 0, 0}};
constexpr Thresholds kTwoBitSquare = {{15, 3, 1, 0}};
constexpr Thresholds kTwoBitDoubleY = {{111, 8, 2, 0}};

void store(HtContext& ctx, const Thresholds& row) {
    ctx.spreadThreshold1 = row.t[0];
    ctx.spreadThreshold2 = row.t[1];
    ctx.spreadThreshold3 = row.t[2];
    ctx.spreadThreshold4 = row.t[3];
}

}  // namespace

uint32_t chooseSpreadThresholds(HtContext& ctx) {
    if (isTwoBit(ctx.outputBits)) {
        if (is1440x720(ctx)) store(ctx, kTwoBit1440x720);
        else if (isSquare(ctx)) store(ctx, kTwoBitSquare);
        else if (isDoubleY(ctx)) store(ctx, kTwoBitDoubleY);
        else return RC_ARG + 1;  // no two-bit spread for this class
        return RC_OK;
    }
    int column;
    switch (ctx.lut.inkParam[0]) {
        case 250: column = 0; break;
        case 350: column = 1; break;
        case 500: column = 2; break;
        default: return RC_DATA;
    }
    // Rows in this order; 1440x720 with any method but 1 and 2 falls to the
    // last row.
    if (isSquare(ctx)) store(ctx, kSquare[column]);
    else if (is1440x720(ctx) && diffusesLikeMethod1(ctx.method)) store(ctx, kDiffusion1440x720[column]);
    else if (isDoubleY(ctx)) store(ctx, kDoubleY[column]);
    else store(ctx, kOther[column]);
    return RC_OK;
}

}  // namespace inkdot
