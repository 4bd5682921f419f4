// A halftone instance built by hand for kernel tests: every table lives in a
// vector the test owns and can fill directly, so a kernel's behaviour can be
// pinned with tiny tables. `ready()` picks the kernel the way the resource
// protocol does; `run()` goes through the public Halftone call.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "halftone/dispatch.h"
#include "halftone/ht_context.h"
#include "inkdot/inkdot.h"

namespace inkdot::test {

class HandContext {
public:
    explicit HandContext(const HtSettings& s) {
        std::memcpy(&ctx.method, &s, sizeof s);
        ctx.replicationFactor = 1;
        for (unsigned k = 0; k < 4; ++k) {
            errorLines[k].assign(s.width + 60, 0);
            ctx.buffers[kErrorLine0 + k].data = errorLines[k].data();
        }
        setMatrix(1, 1, {0});
        conversion.assign(32 * 32 * 32, 0);
        ctx.buffers[kConversionTable].data = conversion.data();
        tone.assign(512, 0);
        ctx.buffers[kToneTable].data = tone.data();
        dotValue.assign(256, 255);
        ctx.buffers[kDotValueTable].data = dotValue.data();
        edThreshold.assign(512, 128);
        ctx.buffers[kEdThresholdTable].data = edThreshold.data();
        gridCell.assign(512, 0);
        ctx.buffers[kGridCellTable].data = gridCell.data();
        dotSplit.assign(768, 0);
        ctx.buffers[kDotSplitTable].data = dotSplit.data();
        replicated.assign(s.width * 6 + 8, 0);
        ctx.buffers[kReplicatedLine].data = replicated.data();
    }

    // Matrix cells row by row; width must be a power of two.
    void setMatrix(uint32_t width, uint32_t height, std::vector<uint16_t> cells) {
        matrix = std::move(cells);
        matrix.resize(width * height);
        ctx.matrixWidth = width;
        ctx.matrixHeight = height;
        ctx.matrixCells = static_cast<uint16_t>(width * height);
        ctx.buffers[kThresholdMatrix].data = matrix.data();
    }
    // A matrix whose every cell holds the same value.
    void setFlatMatrix(uint32_t width, uint32_t height, uint16_t value) {
        setMatrix(width, height, std::vector<uint16_t>(width * height, value));
    }
    // gridCellTable entry for input level v: lower node and its weight.
    void setGridCell(uint8_t v, uint8_t node, uint8_t weight) {
        gridCell[2 * v] = node;
        gridCell[2 * v + 1] = weight;
    }
    // Colour conversion node (a, b, c) = entry (a * 32 + b) * 32 + c, ink k in byte k.
    void setNode(uint32_t a, uint32_t b, uint32_t c, uint32_t packed) { conversion[(a * 32 + b) * 32 + c] = packed; }
    void setSpread(int32_t t1, int32_t t2, int32_t t3, int32_t t4) {
        ctx.spreadThreshold1 = t1; ctx.spreadThreshold2 = t2;
        ctx.spreadThreshold3 = t3; ctx.spreadThreshold4 = t4;
    }
    // Dot-split row r = {small, medium, large}; also fills the derived tables from `tone`.
    void setSplit(uint8_t r, uint8_t s, uint8_t m, uint8_t l) {
        dotSplit[3 * r] = s; dotSplit[3 * r + 1] = m; dotSplit[3 * r + 2] = l;
        ctx.splitToneCumulative[r] = tone[l] + ((tone[l] + tone[m]) << 16);
        ctx.splitAmounts[r] = s + ((s + m + l) << 16);
        ctx.splitToneTotal[r] = tone[s] + tone[m] + tone[l];
    }
    int32_t* line(unsigned k) { return errorLines[k].data() + 30; }  // column 0

    // Chooses the kernel as a completed resource protocol would.
    HtContext& ready() {
        ctx.kernel = chooseKernel(ctx).kernel;
        return ctx;
    }
    uint32_t run(const uint8_t* src, uint8_t* dst, uint32_t planeStride, uint32_t bitOffset, uint32_t count,
                 uint32_t startX, uint32_t lineNo, uint32_t option11 = 0) {
        if (ctx.kernel == nullptr) ready();
        return Halftone(&ctx, src, dst, planeStride, bitOffset, count, startX, 0, lineNo, 0, option11);
    }

    HtContext ctx{};
    std::vector<int32_t> errorLines[4];
    std::vector<uint16_t> matrix;
    std::vector<uint32_t> conversion;  // colour form; the mono forms reuse it as u16 through monoCurve()
    std::vector<uint16_t> tone;
    std::vector<int16_t> dotValue;
    std::vector<int16_t> edThreshold;
    std::vector<uint8_t> gridCell;
    std::vector<uint8_t> dotSplit;
    std::vector<uint8_t> replicated;

    // The monochrome conversion table (u16 per entry) in the same storage.
    uint16_t* monoCurve() { return reinterpret_cast<uint16_t*>(conversion.data()); }
};

}  // namespace inkdot::test
