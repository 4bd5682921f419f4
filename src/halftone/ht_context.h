// The halftone instance record and its buffer slots.
#pragma once

#include <cstddef>
#include <cstdint>

#include "halftone/kernel.h"
#include "inkdot/inkdot.h"

// One buffer slot. A slot with a handle owns its block; a slot with handle 0
// and a pointer is a view into a lower slot's block and is never released by itself.
struct HtBuffer {
    uint32_t size;
    void* data;
    MemBlock handle;
};

namespace inkdot {

enum Slot : unsigned {
    kConversionTable = 0,
    kErrorLine0 = 1,  // error lines 0..3 are slots 1..4
    kThresholdMatrix = 5,
    kToneTable = 6,       // view behind the matrix
    kDotValueTable = 7,
    kEdThresholdTable = 8,  // view in slot 7's block
    kGridCellTable = 9,     // view in slot 7's block
    kDotSplitTable = 10,
    kReplicatedLine = 11,
    kSlotCount = 20,
};

}  // namespace inkdot

struct HtContext {
    // The eleven setting words, in the caller's order.
    uint32_t method;
    uint32_t ditherMode;
    uint32_t inputFormat;
    uint32_t colourMode;
    uint32_t resolutionX;
    uint32_t resolutionY;
    uint32_t outputBits;
    int32_t scaleMode;  // rewritten by the resource protocol's replication setup
    uint32_t spare8;
    uint32_t width;
    uint32_t spare10;

    uint16_t requestIds[16];  // block ids of the request list, ended by 65535
    CmLut lut;                // private copy; the protocol rewrites its grid fields
    HtBuffer buffers[inkdot::kSlotCount];
    uint32_t errorLineCount;  // 0, 1 or 4
    uint32_t prevLineNo;
    uint32_t prevRunEnd;
    uint32_t callCount;       // HalftoneSetResource calls so far = protocol phase
    MemBlock selfBlock;
    uint32_t matrixWidth;
    uint32_t matrixHeight;
    uint16_t matrixCells;     // width x height kept to 16 bits
    int32_t spreadThreshold1;
    int32_t spreadThreshold2;
    int32_t spreadThreshold3;
    int32_t spreadThreshold4;
    uint32_t splitToneCumulative[256];  // tone(large) | tone(large + medium) << 16
    uint32_t splitAmounts[256];         // small | (small + medium + large) << 16
    uint32_t splitToneTotal[256];       // tone(small) + tone(medium) + tone(large)
    uint32_t replicationFactor;

    // The kernel chosen when the resource protocol completed; null until then,
    // so a Halftone call on an instance that was not fed completely is refused.
    inkdot::HtKernel kernel;
    // The phase whose call failed, 0 while none has. Tables after a failed
    // phase are incomplete, so every later call is refused and the instance
    // never becomes ready: it is deleted and created anew.
    uint32_t failedPhase;
};

namespace inkdot {

// Typed access to a slot's data.
template <class T>
inline T* slotData(HtContext& ctx, Slot slot) {
    return static_cast<T*>(ctx.buffers[slot].data);
}
template <class T>
inline const T* slotData(const HtContext& ctx, Slot slot) {
    return static_cast<const T*>(ctx.buffers[slot].data);
}

// Every error line keeps this many cells of margin on each side: more than
// the widest spread pattern reaches (21 columns left, 23 right), so no
// pixel needs a bounds test at the line ends.
inline constexpr uint32_t kErrorLineMargin = 30;

// Error line k (0..3) addressed at column 0: the kernels read cell x for column x.
inline int32_t* errorLine(HtContext& ctx, unsigned k) {
    return slotData<int32_t>(ctx, static_cast<Slot>(kErrorLine0 + k)) + kErrorLineMargin;
}

// Bytes per input pixel by inputFormat, as replication copies them: gray 1;
// 3, ink input and 7 give 4; 6 gives 6; else 3.
inline uint32_t bytesPerPixel(uint32_t inputFormat) {
    switch (inputFormat) {
        case INKDOT_INPUT_GRAY: return 1;
        case INKDOT_INPUT_RGB_ALT: case INKDOT_INPUT_INK: case 7: return 4;
        case 6: return 6;
        default: return 3;
    }
}

// Bytes a colour kernel steps per input pixel: four for ink input
// (inputFormat 4), three for every other format. inputFormat 3 is read as
// three-byte pixels too, so it means the same to every colour kernel as
// inputFormat 2; only replication copies pixels of the format's own size.
inline constexpr uint32_t kRgbPixelBytes = 3;
inline constexpr uint32_t kInkPixelBytes = 4;
inline uint32_t colourPixelBytes(uint32_t inputFormat) {
    return inputFormat == INKDOT_INPUT_INK ? kInkPixelBytes : kRgbPixelBytes;
}

// Resolution classes.
inline bool is1440x720(const HtContext& ctx) { return ctx.resolutionX == 1440 && ctx.resolutionY == 720; }
inline bool isDoubleY(const HtContext& ctx) { return 2 * ctx.resolutionX == ctx.resolutionY; }
inline bool isSquare(const HtContext& ctx) { return ctx.resolutionX == ctx.resolutionY; }

}  // namespace inkdot
