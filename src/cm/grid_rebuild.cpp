#include "cm/grid_rebuild.h"

#include "cm/cm_context.h"
#include "cm/colour_adjust.h"
#include "cm/colour_table.h"
#include "cm/interpolate.h"
#include "cm/pixel_layout.h"
#include "cm/tone_curves.h"
#include "frame/memory.h"

namespace inkdot {
namespace {

constexpr int32_t kSaturationLimit = 50;
constexpr uint32_t kRowPixelBytes = 4;  // node pixels: a spare byte, then red, green, blue

bool adjustsColours(const CmContext& ctx) {
    return ctx.settings1.processLevel == 2 && ctx.settings1.processMode == 0;
}

// The curve settings: the colour table's saturation offset joins in the
// adjusting mode, limited only from above (the builder refuses a sum below -50).
CmSettings1 curveSettings(const CmContext& ctx) {
    CmSettings1 s = ctx.settings1;
    if (adjustsColours(ctx)) {
        int64_t sum = static_cast<int64_t>(s.saturation) + ctx.saturationOffset;
        if (sum > kSaturationLimit) sum = kSaturationLimit;
        if (sum < INT32_MIN) sum = INT32_MIN;
        s.saturation = static_cast<int32_t>(sum);
    }
    return s;
}

void adjustRow(const CmContext& ctx, uint8_t* row, uint32_t count, const PixelLayout& layout) {
    for (uint32_t p = 0; p < count; ++p, row += layout.pixelBytes) {
        int32_t cmy[3] = {255 - row[layout.red], 255 - row[layout.green], 255 - row[layout.blue]};
        adjustDominant(cmy, ctx.adjustDominant);
        adjustMinimum(cmy, ctx.adjustMinimum);
        adjustHue(cmy, ctx.adjustHue);
        row[layout.red] = static_cast<uint8_t>(255 - cmy[0]);
        row[layout.green] = static_cast<uint8_t>(255 - cmy[1]);
        row[layout.blue] = static_cast<uint8_t>(255 - cmy[2]);
    }
}

}  // namespace

uint32_t rebuildGrid(CmContext* ctx) {
    CmLut& lut = *ctx->lut;
    const uint32_t n = lut.gridCount[0];
    const uint32_t channels = lut.channels;
    const PixelLayout layout = pixelLayoutOf(*ctx);

    void* fresh = nullptr;
    if (const uint32_t rc = obtainBlock(channels * n * n * n, true, &fresh); rc != RC_OK) return rc;
    CurveRecord* curves = nullptr;
    const CurveLayout curveLayout{layout.pixelBytes, {layout.red, layout.green, layout.blue}};
    if (const uint32_t rc = buildCurves(curveSettings(*ctx), curveLayout, &curves); rc != RC_OK) {
        releaseBlock(fresh);
        return rc;
    }

    Interpolator ip;
    prepareInterpolator(lut, ip);  // the grid levels stay; only the node data is replaced
    uint8_t row[kMaxGridPoints * kRowPixelBytes] = {};
    uint8_t* out = static_cast<uint8_t*>(fresh);
    for (uint32_t i0 = 0; i0 < n; ++i0) {
        for (uint32_t i1 = 0; i1 < n; ++i1) {
            for (uint32_t i2 = 0; i2 < n; ++i2) {
                uint8_t* pixel = row + i2 * layout.pixelBytes;
                pixel[layout.red] = lut.grid[0][i0];
                pixel[layout.green] = lut.grid[1][i1];
                pixel[layout.blue] = lut.grid[2][i2];
            }
            // The black node (0, 0, 0) and the white node (n-1, n-1, n-1)
            // keep their own levels: the curves never move the ends.
            uint32_t first = 0;
            uint32_t count = n;
            if (i0 == 0 && i1 == 0) { first = 1; --count; }
            if (i0 == n - 1 && i1 == n - 1) --count;
            uint8_t* curved = row + first * layout.pixelBytes;
            applyCurves(*curves, count, curved, curved);
            if (adjustsColours(*ctx)) adjustRow(*ctx, row, n, layout);
            interpolate(ip, layout, n, row, out);
            out += n * channels;
        }
    }

    releaseCurves(curves);  // its result changes nothing here
    releaseBlock(lut.lutDataBlock);
    lut.lutData = static_cast<uint8_t*>(fresh);
    lut.lutDataBlock = fresh;
    return RC_OK;
}

}  // namespace inkdot
