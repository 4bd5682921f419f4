// Two-bit colour error diffusion: four planes of two-bit dot codes per run.
// Planes 0, 1 and 3 take the dot-size decision with error diffusion, each on
// its own error line; plane 2 is placed by the threshold matrix alone. The
// four planes read the matrix at four places so their dots do not stack.
//
// Three wrappers (one per resolution class) each pick one of two inner
// kernels by input kind; all six inner kernels are one pixel loop
// instantiated with a spread family and an input policy.
#include <algorithm>

#include "halftone/ht_context.h"
#include "inkdot/inkdot.h"
#include "kernels/ed1/continuity.h"
#include "kernels/ed1/diffusion_step.h"
#include "kernels/ed1/error_cell.h"
#include "kernels/ed1/perturbation.h"
#include "kernels/ed1/spread_patterns.h"
#include "kernels/ed2/dot_size.h"
#include "kernels/ed2/ed2_pattern_choice.h"
#include "kernels/ed2/ink_lanes.h"
#include "kernels/ed2/input_step.h"
#include "kernels/ed2/matrix_scale.h"
#include "kernels/force_inline.h"
#include "kernels/grid_node.h"
#include "kernels/kernels.h"
#include "kernels/matrix_row.h"
#include "kernels/packing.h"

namespace inkdot {
namespace {

// Where each plane reads the matrix: row A is lineNo, row B lineNo + 24;
// columns are shifted so the four planes (and the jitter value mP) do not
// fall on the same cell.
constexpr uint32_t kRowBOffset = 24;
constexpr uint32_t kJitterColumn = 24;  // mP, row A
constexpr uint32_t kPlane1Column = 16;  // row B
constexpr uint32_t kPlane2Column = 48;  // row A
constexpr uint32_t kPlane3Column = 40;  // row B

constexpr uint8_t kLastGridNode = kGridLevels - 1;

// The small-dot history: a plane keeps diffusing while it has seen small-dot
// ink at this pixel or one of the four non-white pixels before it. Bit 4 is
// set by small ink and shifts out after five pixels; every run starts as if
// small ink had just been seen.
constexpr uint32_t kHistoryFresh = 16;

// Everything the pixel loop needs about one split row, gathered once per call
// so the loop reads one small record instead of four context tables.
struct SplitRowInfo {
    uint32_t toneLarge;        // low half of splitToneCumulative
    uint32_t toneLargeMedium;  // high half of splitToneCumulative
    uint32_t toneTotal;        // splitToneTotal
    int32_t small;             // low byte of splitAmounts
    int32_t total;             // high half of splitAmounts: small + medium + large
    int32_t smallThreshold;    // edThresholdTable, before the perturbation
};

void gatherSplitRows(const HtContext& ctx, SplitRowInfo* rows) {
    const int16_t* threshold = slotData<int16_t>(ctx, kEdThresholdTable);
    for (uint32_t v = 0; v < 256; ++v) {
        rows[v] = {ctx.splitToneCumulative[v] & 0xFFFF, ctx.splitToneCumulative[v] >> 16, ctx.splitToneTotal[v],
                   static_cast<int32_t>(ctx.splitAmounts[v] & 0xFF), static_cast<int32_t>(ctx.splitAmounts[v] >> 16),
                   threshold[v]};
    }
}

// Ink input: the pixel already holds the four split rows, white being 0 in all.
template <bool ReducesPairs>
class InkPixels {
public:
    static constexpr bool kReducesPairs = ReducesPairs;

    explicit InkPixels(const HtContext&) {}
    uint32_t pixelBytes() const { return 4; }

    // Reads one pixel (or the lighter of a pair, byte by byte); false when white.
    bool load(const uint8_t* in, bool reduce) {
        uint32_t word = 0;
        for (uint32_t k = 0; k < 4; ++k) {
            const uint8_t b = reduce ? std::min(in[k], in[k + 4]) : in[k];
            word |= uint32_t{b} << (8 * k);
        }
        word_ = word;
        return word != 0;
    }
    InkLanes inks(uint32_t /*q*/, uint32_t /*round*/) const { return InkLanes::fromPacked(word_); }

private:
    uint32_t word_ = 0;
};

// Three-channel input converted through the colour grid, node by node chosen
// by the matrix, with the grid smoothing between neighbouring pixels.
template <bool ReducesPairs>
class RgbPixels {
public:
    static constexpr bool kReducesPairs = ReducesPairs;
    static constexpr uint32_t kWhiteSum = 3 * 255;

    // Three colour bytes a pixel, whatever inputFormat (other than ink) says.
    explicit RgbPixels(const HtContext& ctx)
        : grid_(slotData<uint32_t>(ctx, kConversionTable)), pixelBytes_(colourPixelBytes(ctx.inputFormat)) {
        const uint8_t* cells = slotData<uint8_t>(ctx, kGridCellTable);
        for (uint32_t v = 0; v < 256; ++v) {
            // A lower node at the grid's last node has no next one: it is held
            // there (weight 255 never moves), so a stray table entry cannot
            // address a node outside the 32 x 32 x 32 grid.
            const uint8_t node = cells[2 * v];
            steps_[v] = node >= kLastGridNode ? GridCell{kLastGridNode, 255} : GridCell{node, cells[2 * v + 1]};
        }
    }

    uint32_t pixelBytes() const { return pixelBytes_; }

    bool load(const uint8_t* in, bool reduce) {
        for (uint32_t c = 0; c < 3; ++c) bytes_[c] = reduce ? std::min(in[c], in[c + pixelBytes_]) : in[c];
        return uint32_t{bytes_[0]} + bytes_[1] + bytes_[2] != kWhiteSum;
    }

    InkLanes inks(uint32_t q, uint32_t round) {
        auto node = [&](uint32_t c) { return gridNode(steps_[bytes_[c]].node, steps_[bytes_[c]].weight, q); };
        const NodeIndices nodes{node(0), node(1), node(2)};
        // Byte 2 runs along the slowest axis, byte 0 along the fastest.
        const InkLanes v = InkLanes::fromPacked(grid_[gridEntry(nodes)]);
        // Averaged with the previous pixel when the nodes neighbour, selected by a mask.
        const uint32_t smooth = neighbourMask(nodes, previousNodes_);
        const InkLanes mean = averageLanes(previous_, v, round);
        previous_ = {selectByMask(smooth, mean.planes02, v.planes02), selectByMask(smooth, mean.planes13, v.planes13)};
        previousNodes_ = nodes;
        return previous_;
    }

private:
    const uint32_t* grid_;
    uint32_t pixelBytes_;
    GridCell steps_[256];
    uint8_t bytes_[3] = {};
    NodeIndices previousNodes_{-2, -2, -2};  // -2: the run's first pixel has no neighbour
    InkLanes previous_{0, 0};
};

struct DiffusedPlane {
    int32_t* line;
    int32_t carry = 0;
    uint32_t history = kHistoryFresh;

    void noteSmallInk(const SplitRowInfo& row) {
        history = (history >> 1) | (row.small != 0 ? kHistoryFresh : 0);
    }
};

// One diffused plane at column x. `perturbation` is already signed for the
// plane; `aForm` is the matrix parity that takes the a patterns.
// Inlined into the pixel loop, so that the plane's state stays in registers
// and the band's branch leads straight to its additions.
template <class Family>
INKDOT_FORCE_INLINE uint8_t diffusePlane(DiffusedPlane& plane, uint32_t x, const SplitRowInfo& row, uint32_t m,
                            int32_t perturbation, bool aForm, const ed2::SmallThresholds& bands) {
    int32_t* const cell = plane.line + x;
    if (plane.history == 0) {
        // No small ink for five pixels: drop the pending error, place only
        // what the matrix places.
        dropCell(*cell, plane.carry);
        return matrixLargeMediumCode(m, row.toneLarge, row.toneLargeMedium);
    }
    const int32_t sum = readCellTruncate(*cell) + row.total;
    const DotDecision d =
        decideDot(sum, m, {row.toneLarge, row.toneLargeMedium, row.small, row.smallThreshold + perturbation});
    Family::spreadChosen({row.toneLargeMedium != 0, row.small, d.code != kNoDot, aForm}, bands, cell, d.err,
                         plane.carry);
    return d.code;
}

template <class Family, class Pixels>
INKDOT_FLATTEN void colourRun(HtContext& ctx, const HtRun& run) {
    PlanePacker<2, 4> out(run.dst, run.planeStride, run.bitOffset);
    if (run.count == 0) {
        out.finish();
        return;
    }

    SplitRowInfo rows[256];
    gatherSplitRows(ctx, rows);
    Pixels pixels(ctx);
    const uint32_t scaleShift = matrixScaleShift(ctx.matrixCells);
    const uint16_t* rowA = matrixRow(ctx, run.lineNo).cells;
    const uint16_t* rowB = matrixRow(ctx, run.lineNo + kRowBOffset).cells;
    const uint32_t columnMask = ctx.matrixWidth - 1;
    const ed2::SmallThresholds bands = ed2::smallThresholds(ctx);
    const InputStep step = inputStep(ctx.scaleMode, pixels.pixelBytes(), Pixels::kReducesPairs);
    const bool reduce = Pixels::kReducesPairs && ctx.scaleMode == -1;
    DiffusedPlane plane0{errorLine(ctx, 0)}, plane1{errorLine(ctx, 1)}, plane3{errorLine(ctx, 2)};

    // Kept in locals: the error cells written below may alias the run's fields.
    const uint8_t* const src = run.src;
    const uint32_t startX = run.startX;
    const uint32_t count = run.count;
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t x = startX + i;
        if (!pixels.load(src + step.offset(i), reduce)) {
            // White: the error pending at x is dropped in every diffused plane;
            // the history and the smoothing neighbour stay as they were.
            dropCell(plane0.line[x], plane0.carry);
            dropCell(plane1.line[x], plane1.carry);
            dropCell(plane3.line[x], plane3.carry);
            out.next();
            continue;
        }

        const uint32_t mP = rowA[(x + kJitterColumn) & columnMask];
        const uint32_t q = (mP >> scaleShift) & 0xFE;  // bits 1..7 at the 256-cell scale
        const int32_t p = kPerturbationTable[q];
        const bool odd = (mP & 1) != 0;  // the colour kernels take the a forms on odd cells
        const InkLanes v = pixels.inks(q, odd ? 0 : 1);  // even cells round the average up

        const SplitRowInfo& row0 = rows[v.plane0()];
        const SplitRowInfo& row1 = rows[v.plane1()];
        const SplitRowInfo& row2 = rows[v.plane2()];
        const SplitRowInfo& row3 = rows[v.plane3()];

        const uint32_t m2 = rowA[(x + kPlane2Column) & columnMask];
        const uint32_t code2 = matrixOnlyCode(m2, row2.toneLarge, row2.toneLargeMedium, row2.toneTotal);

        plane0.noteSmallInk(row0);
        plane1.noteSmallInk(row1);
        plane3.noteSmallInk(row3);
        const uint32_t m0 = rowA[x & columnMask];
        const uint32_t m1 = rowB[(x + kPlane1Column) & columnMask];
        const uint32_t m3 = rowB[(x + kPlane3Column) & columnMask];
        // Plane 1's threshold moves against the others', so the planes do not
        // all favour the same cells.
        const uint32_t code0 = diffusePlane<Family>(plane0, x, row0, m0, p, odd, bands);
        const uint32_t code1 = diffusePlane<Family>(plane1, x, row1, m1, -p, odd, bands);
        const uint32_t code3 = diffusePlane<Family>(plane3, x, row3, m3, p, odd, bands);
        // All four codes, plane k in byte k, each repeated over its byte.
        out.setAll((code0 | code1 << 8 | code2 << 16 | code3 << 24) * kCodeRepeat);
        out.next();
    }
    out.finish();
}

// The inner kernels, by resolution class and input kind.
void Ed2ColourGeneralInk(HtContext& c, const HtRun& r) { colourRun<ed2::GeneralFamily, InkPixels<false>>(c, r); }
void Ed2ColourGeneralRgb(HtContext& c, const HtRun& r) { colourRun<ed2::GeneralFamily, RgbPixels<false>>(c, r); }
void Ed2Colour1440x720Ink(HtContext& c, const HtRun& r) { colourRun<ed2::Family1440x720, InkPixels<false>>(c, r); }
void Ed2Colour1440x720Rgb(HtContext& c, const HtRun& r) { colourRun<ed2::Family1440x720, RgbPixels<false>>(c, r); }
void Ed2ColourDoubleYInk(HtContext& c, const HtRun& r) { colourRun<ed2::DoubleYFamily, InkPixels<true>>(c, r); }
void Ed2ColourDoubleYRgb(HtContext& c, const HtRun& r) { colourRun<ed2::DoubleYFamily, RgbPixels<true>>(c, r); }

using InnerKernel = void (*)(HtContext&, const HtRun&);

// The wrapper keeps the three error lines consistent (one continuity case for
// all three) and hands the run on; the run was checked by Halftone.
template <InnerKernel Ink, InnerKernel Rgb>
uint32_t colourWrapper(HtContext& ctx, const HtRun& run) {
    applyContinuity(ctx, run, 3);
    (ctx.inputFormat == 4 ? Ink : Rgb)(ctx, run);
    return RC_OK;
}

}  // namespace

uint32_t Ed2ColourGeneral(HtContext& ctx, const HtRun& run) {
    return colourWrapper<Ed2ColourGeneralInk, Ed2ColourGeneralRgb>(ctx, run);
}
uint32_t Ed2Colour1440x720(HtContext& ctx, const HtRun& run) {
    return colourWrapper<Ed2Colour1440x720Ink, Ed2Colour1440x720Rgb>(ctx, run);
}
uint32_t Ed2ColourDoubleY(HtContext& ctx, const HtRun& run) {
    return colourWrapper<Ed2ColourDoubleYInk, Ed2ColourDoubleYRgb>(ctx, run);
}

}  // namespace inkdot
