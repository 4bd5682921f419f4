// Tone curves and saturation: the driver's brightness, contrast, gamma and
// per-channel offsets as three 256-entry curves, applied with a saturation
// spread to runs of pixels.
#pragma once

#include <cstdint>

#include "inkdot/inkdot.h"

namespace inkdot {

struct CurveRecord {
    uint32_t curveSource;
    int32_t saturation;        // as given to the builder
    int32_t curve[3][256];     // red, green, blue; every entry 0..255
    uint32_t componentPos[3];  // byte positions of red, green, blue in a pixel
    uint32_t pixelBytes;
    MemBlock selfBlock;
};

// The pixel layout the curves are applied to.
struct CurveLayout {
    uint32_t pixelBytes;
    uint32_t componentPos[3];
};

// Builds the curves for a settings array laid out like settings1. On success
// *out holds a record from the memory service (not zero-filled) that the
// caller releases with releaseCurves. Codes: RC_MEM_ALLOC / RC_MEM_LOCK;
// RC_ARG + 1 for curveSource without ready-made curves or a setting outside
// -50..50; RC_ARG + 2 for a gamma outside 100..300.
uint32_t buildCurves(const CmSettings1& settings, const CurveLayout& layout, CurveRecord** out);

// Saturation spread then the curves, for `count` pixels; dst may equal src.
// Only the three component bytes of each dst pixel are written.
uint32_t applyCurves(const CurveRecord& record, uint32_t count, const uint8_t* src, uint8_t* dst);

// RC_MEM_UNLOCK, RC_MEM_FREE or RC_OK.
uint32_t releaseCurves(CurveRecord* record);

// The pieces of the builder, open for tests: the base curve through
// brightness b and contrast k (each -50..50), before gamma and offsets.
void brightnessContrastCurve(int32_t brightness, int32_t contrast, int32_t out[256]);

// The saturation spread of one pixel's red, green and blue.
void spreadSaturation(int32_t saturation, int32_t& r, int32_t& g, int32_t& b);

}  // namespace inkdot
