// A halftone instance built by hand for kernel tests and benchmarks: every
// table lives in a vector the caller owns and can fill directly, so a
// kernel's behaviour can be pinned with tiny tables. `run()` picks the
// kernel the way the resource protocol does and goes through the public
// Halftone call. Below it: the kernel tests' settings and one hand-worked
// run checked as text.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "halftone/dispatch.h"
#include "halftone/ht_context.h"
#include "inkdot/inkdot.h"

namespace inkdot::test {

// Instance settings with the kernel tests' defaults: one-bit error
// diffusion, monochrome, 720 x 720, 64 pixels wide.
struct KernelSetup {
    uint32_t method = 1, ditherMode = 0, inputFormat = 0, colourMode = 0;
    uint32_t resolutionX = 720, resolutionY = 720, outputBits = 1;
    int32_t scaleMode = 0;
    uint32_t width = 64;

    HtSettings settings() const {
        return {method, ditherMode, inputFormat, colourMode, resolutionX, resolutionY,
                outputBits, scaleMode, 0, width, 0};
    }
};

// Ordered dither (method 3), monochrome or three-byte colour.
inline KernelSetup monoSetup(uint32_t outputBits = 1) {
    return KernelSetup{.method = 3, .ditherMode = 1, .outputBits = outputBits};
}
inline KernelSetup colourSetup(uint32_t outputBits = 1) {
    return KernelSetup{.method = 3, .ditherMode = 1, .inputFormat = 2, .colourMode = 1, .outputBits = outputBits};
}
// The class in which the two-bit kernels offer halving.
inline KernelSetup doubleY(KernelSetup s) {
    s.resolutionX = 360;
    s.resolutionY = 720;
    return s;
}
// Error diffusion in one resolution class.
inline KernelSetup edSetup(uint32_t colourMode, uint32_t outputBits, uint32_t resX, uint32_t resY,
                           int32_t scaleMode = 0) {
    return KernelSetup{.inputFormat = colourMode ? 2u : 0u, .colourMode = colourMode, .resolutionX = resX,
                       .resolutionY = resY, .outputBits = outputBits, .scaleMode = scaleMode};
}

// One setup per kernel: the ordered-dither and fixed-threshold kernels, then
// the error-diffusion ones (every class; the plain one-bit colour kernels
// through halving).
inline std::vector<KernelSetup> everyKernelSetup() {
    return {monoSetup(1), colourSetup(1), monoSetup(2), colourSetup(2), doubleY(monoSetup(2)), doubleY(colourSetup(2)),
            KernelSetup{.method = 0, .ditherMode = 1},
            KernelSetup{.method = 0, .ditherMode = 1, .inputFormat = 2, .colourMode = 1},
            KernelSetup{.method = 3, .ditherMode = 0, .inputFormat = 2, .colourMode = 1},
            edSetup(0, 1, 360, 360),     edSetup(0, 1, 1440, 720),     edSetup(0, 1, 360, 720),
            edSetup(1, 1, 360, 360, -1), edSetup(1, 1, 1440, 720, -1), edSetup(1, 1, 360, 720),
            edSetup(1, 1, 360, 360),     edSetup(1, 1, 1440, 720),     edSetup(0, 2, 720, 720),
            edSetup(0, 2, 1440, 720),    edSetup(0, 2, 360, 720),      edSetup(1, 2, 720, 720),
            edSetup(1, 2, 1440, 720),    edSetup(1, 2, 360, 720)};
}

class HandContext {
public:
    explicit HandContext(const HtSettings& s) {
        std::memcpy(&ctx.method, &s, sizeof s);
        ctx.replicationFactor = 1;
        for (unsigned k = 0; k < 4; ++k) attach(kErrorLine0 + k, errorLines[k], s.width + 60, 0);
        setMatrix(1, 1, {0});
        attach(kConversionTable, conversion, 32 * 32 * 32, 0u);
        attach(kToneTable, tone, 512, uint16_t{0});
        attach(kDotValueTable, dotValue, 256, int16_t{255});
        attach(kEdThresholdTable, edThreshold, 512, int16_t{128});
        attach(kGridCellTable, gridCell, 512, uint8_t{0});
        attach(kDotSplitTable, dotSplit, 768, uint8_t{0});
        attach(kReplicatedLine, replicated, s.width * 6 + 8, uint8_t{0});
    }
    // Slot `slot` holds `size` entries of `value` in `table`.
    template <class T>
    void attach(unsigned slot, std::vector<T>& table, size_t size, T value) {
        table.assign(size, value);
        ctx.buffers[slot].data = table.data();
    }

    // Matrix cells row by row (missing ones 0); width must be a power of two.
    void setMatrix(uint32_t width, uint32_t height, std::vector<uint16_t> cells) {
        matrix = std::move(cells);
        matrix.resize(width * height);
        ctx.matrixWidth = width;
        ctx.matrixHeight = height;
        ctx.matrixCells = static_cast<uint16_t>(width * height);
        ctx.buffers[kThresholdMatrix].data = matrix.data();
    }
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
        ctx.spreadThreshold1 = t1;
        ctx.spreadThreshold2 = t2;
        ctx.spreadThreshold3 = t3;
        ctx.spreadThreshold4 = t4;
    }
    // Dot-split row r = {small, medium, large}; also fills the derived tables from `tone`.
    void setSplit(uint8_t r, uint8_t s, uint8_t m, uint8_t l) {
        dotSplit[3 * r] = s;
        dotSplit[3 * r + 1] = m;
        dotSplit[3 * r + 2] = l;
        ctx.splitToneCumulative[r] = tone[l] + ((tone[l] + tone[m]) << 16);
        ctx.splitAmounts[r] = s + ((s + m + l) << 16);
        ctx.splitToneTotal[r] = tone[s] + tone[m] + tone[l];
    }
    int32_t* line(unsigned k) { return errorLines[k].data() + 30; }  // column 0
    // The monochrome conversion table (u16 per entry) in the colour table's storage.
    uint16_t* monoCurve() { return reinterpret_cast<uint16_t*>(conversion.data()); }

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
    std::vector<uint32_t> conversion;
    std::vector<uint16_t> tone;
    std::vector<int16_t> dotValue, edThreshold;
    std::vector<uint8_t> gridCell, dotSplit, replicated;
};

inline uint32_t packInks(uint32_t c0, uint32_t c1, uint32_t c2, uint32_t c3) {
    return c0 | c1 << 8 | c2 << 16 | c3 << 24;
}

// A side x side matrix holding every value 0 .. side^2 - 1 once, shuffled.
inline std::vector<uint16_t> permutationMatrix(uint32_t side, uint32_t seed) {
    std::vector<uint16_t> cells(side * side);
    std::iota(cells.begin(), cells.end(), uint16_t{0});
    std::mt19937 rng(seed);
    std::shuffle(cells.begin(), cells.end(), rng);
    return cells;
}

// Pixel i of a one-bit plane, or its dot code in a two-bit one.
inline unsigned pixelAt(uint32_t outputBits, const uint8_t* plane, uint32_t i) {
    return outputBits == 1 ? (plane[i / 8] >> (7 - i % 8)) & 1 : (plane[i / 4] >> (6 - 2 * (i % 4))) & 3;
}

// One hand-worked run: the tables, `count` pixels of `in` from column startX
// of line `line`, the pixels of each plane it writes as text, planes
// separated by spaces ("0110 0000 ..." one-bit, codes "0".."3" two-bit;
// "refused" for a result code), and error cells it leaves.
struct Cell { unsigned line; int column; int32_t value; };
struct RunCase {
    const char* what;
    std::function<void(HandContext&)> tables;
    std::vector<uint8_t> in;
    uint32_t count, startX, line;
    std::string planes;
    std::vector<Cell> cells = {};
};

// `prep` fills the tables a family's cases share before the case's own.
inline void checkRun(const KernelSetup& k, const RunCase& c, void (*prep)(HandContext&) = nullptr) {
    HandContext hc(k.settings());
    if (prep) prep(hc);
    c.tables(hc);
    const uint32_t stride = c.count / 4 + 1;
    std::vector<uint8_t> out(4 * stride, 0xA5);
    std::string planes = "refused";
    if (hc.run(c.in.data(), out.data(), stride, 0, c.count, c.startX, c.line) == RC_OK) {
        planes.clear();
        for (unsigned p = 0; p < (hc.ctx.colourMode ? 4u : 1u); ++p) {
            if (p) planes += ' ';
            for (uint32_t i = 0; i < c.count; ++i)
                planes += static_cast<char>('0' + pixelAt(k.outputBits, &out[p * stride], i));
        }
    }
    EXPECT_EQ(planes, c.planes) << c.what;
    for (const Cell& e : c.cells)
        EXPECT_EQ(hc.line(e.line)[e.column], e.value) << c.what << ": line " << e.line << ", column " << e.column;
}

}  // namespace inkdot::test
