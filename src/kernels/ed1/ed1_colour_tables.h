// How the one-bit colour error-diffusion kernels reach their tables. The
// pixel loop is written once against this interface; the plain kernels read
// the instance's tables where they lie, the cached kernels copy them into
// local arrays at the start of every call. The two also differ in how they
// read dotValueTable: the plain kernels take planes 0 and 1 as unsigned and
// plane 3 as signed 16-bit values, the cached kernels take every plane as
// signed (the readings agree below 32768).
#pragma once

#include <cstdint>

#include "halftone/ht_context.h"
#include "halftone/kernel.h"
#include "kernels/matrix_row.h"

namespace inkdot {

// Tables read in place.
class DirectColourTables {
public:
    static constexpr uint32_t kMaxMatrixWidth = 0xFFFFFFFF;  // the matrix is read where it lies

    DirectColourTables(const HtContext& ctx, uint32_t lineNo)
        : row(matrixRow(ctx, lineNo)),
          tone_(slotData<uint16_t>(ctx, kToneTable)),
          dotValueUnsigned_(slotData<uint16_t>(ctx, kDotValueTable)),
          dotValueSigned_(slotData<int16_t>(ctx, kDotValueTable)),
          edThreshold_(slotData<int16_t>(ctx, kEdThresholdTable)) {}

    uint32_t tone(int32_t level) const { return tone_[level]; }
    int32_t edThreshold(int32_t level) const { return edThreshold_[level]; }
    template <unsigned Plane>
    int32_t dotValue(int32_t level) const {
        if constexpr (Plane == 3) return dotValueSigned_[level];
        else return dotValueUnsigned_[level];
    }

    MatrixRow row;

private:
    const uint16_t* tone_;
    const uint16_t* dotValueUnsigned_;
    const int16_t* dotValueSigned_;
    const int16_t* edThreshold_;
};

// Local copies made once per call: every look-up of the pixel loop becomes a
// plain array access with the 16-bit entries already widened. These kernels
// refuse a matrix wider than 256 cells (RC_DATA, nothing touched), a limit
// drivers know them by; the matrix row itself is read in place.
class CachedColourTables {
public:
    static constexpr uint32_t kMaxMatrixWidth = 256;

    CachedColourTables(const HtContext& ctx, uint32_t lineNo)
        : row(matrixRow(ctx, lineNo)) {
        const int16_t* dotValue = slotData<int16_t>(ctx, kDotValueTable);
        const int16_t* edThreshold = slotData<int16_t>(ctx, kEdThresholdTable);
        const uint16_t* tone = slotData<uint16_t>(ctx, kToneTable);
        for (uint32_t v = 0; v < 256; ++v) {
            dotValue_[v] = dotValue[v];
            edThreshold_[v] = edThreshold[v];
            tone_[v] = tone[v];
        }
    }

    uint32_t tone(int32_t level) const { return tone_[level]; }
    int32_t edThreshold(int32_t level) const { return edThreshold_[level]; }
    template <unsigned Plane>
    int32_t dotValue(int32_t level) const { return dotValue_[level]; }

    MatrixRow row;

private:
    int32_t dotValue_[256];
    int32_t edThreshold_[256];
    int32_t tone_[256];
};

}  // namespace inkdot
