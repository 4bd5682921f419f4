// A halftone instance built by hand for kernel tests: every table lives in a
// vector the test owns and can fill directly, so a kernel's behaviour can be
// pinned with tiny tables. `ready()` picks the kernel the way the resource
// protocol does; `run()` goes through the public Halftone call. Below it:
// small writers for settings, grid nodes, matrices and pixels, and readers
// for the output planes.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <initializer_list>
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
    uint32_t method = 1;
    uint32_t ditherMode = 0;
    uint32_t inputFormat = 0;
    uint32_t colourMode = 0;
    uint32_t resolutionX = 720;
    uint32_t resolutionY = 720;
    uint32_t outputBits = 1;
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

// One setup per kernel: the ordered-dither and fixed-threshold kernels, then
// the error-diffusion ones (monochrome and colour, one- and two-bit, every
// class; the plain one-bit colour kernels through halving).
inline std::vector<KernelSetup> everyKernelSetup() {
    std::vector<KernelSetup> all = {monoSetup(1), colourSetup(1), monoSetup(2), colourSetup(2),
                                    doubleY(monoSetup(2)), doubleY(colourSetup(2))};
    all.push_back(KernelSetup{.method = 0, .ditherMode = 1});
    all.push_back(KernelSetup{.method = 0, .ditherMode = 1, .inputFormat = 2, .colourMode = 1});
    all.push_back(KernelSetup{.method = 3, .ditherMode = 0, .inputFormat = 2, .colourMode = 1});
    struct Ed { uint32_t colourMode, outputBits, resX, resY; int32_t scaleMode; };
    const Ed diffusion[] = {
        {0, 1, 360, 360, 0},  {0, 1, 1440, 720, 0}, {0, 1, 360, 720, 0}, {1, 1, 360, 360, -1}, {1, 1, 1440, 720, -1},
        {1, 1, 360, 720, 0},  {1, 1, 360, 360, 0},  {1, 1, 1440, 720, 0}, {0, 2, 720, 720, 0},  {0, 2, 1440, 720, 0},
        {0, 2, 360, 720, 0},  {1, 2, 720, 720, 0},  {1, 2, 1440, 720, 0}, {1, 2, 360, 720, 0},
    };
    for (const Ed& e : diffusion)
        all.push_back(KernelSetup{.inputFormat = e.colourMode ? 2u : 0u, .colourMode = e.colourMode,
                                  .resolutionX = e.resX, .resolutionY = e.resY, .outputBits = e.outputBits,
                                  .scaleMode = e.scaleMode});
    return all;
}

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

inline uint32_t packInks(uint32_t c0, uint32_t c1, uint32_t c2, uint32_t c3) {
    return c0 | c1 << 8 | c2 << 16 | c3 << 24;
}

// Input level v sits on grid node n.
inline void onNode(HandContext& hc, uint8_t v, uint8_t n) { hc.setGridCell(v, n, 255); }

// The grid cell table the resource protocol builds for 32 evenly spread
// levels (0, 8, 16, ... 255): on-node levels get weight 255, the others the
// lower node's share of 255.
inline void evenGridCells(HandContext& hc) {
    uint32_t level[32];
    for (uint32_t k = 0; k < 32; ++k) level[k] = (k * 255 + 15) / 31;
    uint32_t j = 0;
    for (uint32_t v = 0; v < 256; ++v) {
        if (level[j] == v) {
            hc.setGridCell(static_cast<uint8_t>(v), static_cast<uint8_t>(j), 255);
            ++j;
        } else {
            hc.setGridCell(static_cast<uint8_t>(v), static_cast<uint8_t>(j - 1),
                           static_cast<uint8_t>((level[j] - v) * 255 / (level[j] - level[j - 1])));
        }
    }
}

// A side x side matrix holding every value 0 .. side^2 - 1 once, shuffled.
inline std::vector<uint16_t> permutationMatrix(uint32_t side, uint32_t seed) {
    std::vector<uint16_t> cells(side * side);
    std::iota(cells.begin(), cells.end(), uint16_t{0});
    std::mt19937 rng(seed);
    std::shuffle(cells.begin(), cells.end(), rng);
    return cells;
}

// Pixel i of a one-bit plane.
inline bool bitAt(const uint8_t* plane, uint32_t i) { return (plane[i / 8] >> (7 - i % 8)) & 1; }
// Dot code of pixel i of a two-bit plane.
inline unsigned codeAt(const uint8_t* plane, uint32_t i) { return (plane[i / 4] >> (6 - 2 * (i % 4))) & 3; }

// Pixels from..from + n - 1 of plane k as "0"/"1" (one-bit) or "0".."3" (two-bit).
inline std::string bitsOf(const std::vector<uint8_t>& out, uint32_t stride, unsigned k, uint32_t n, uint32_t from = 0) {
    std::string s;
    for (uint32_t i = from; i < from + n; ++i) s += bitAt(out.data() + k * stride, i) ? '1' : '0';
    return s;
}
inline std::string codesOf(const std::vector<uint8_t>& out, uint32_t stride, unsigned k, uint32_t n, uint32_t from = 0) {
    std::string s;
    for (uint32_t i = from; i < from + n; ++i) s += static_cast<char>('0' + codeAt(out.data() + k * stride, i));
    return s;
}

// One run of `count` pixels from column startX of line lineNo; the pixels of
// each plane the kernel writes as text, planes separated by spaces
// ("0110 0000 ..." one-bit, codes "0".."3" two-bit).
inline std::string runPlanes(HandContext& hc, const std::vector<uint8_t>& in, uint32_t count, uint32_t startX = 0,
                             uint32_t lineNo = 0) {
    constexpr uint32_t kStride = 16;
    std::vector<uint8_t> out(4 * kStride, 0xA5);
    if (hc.run(in.data(), out.data(), kStride, 0, count, startX, lineNo) != RC_OK) return "refused";
    std::string planes;
    for (unsigned k = 0; k < (hc.ctx.colourMode ? 4u : 1u); ++k)
        planes += (k ? " " : "") + (hc.ctx.outputBits == 1 ? bitsOf(out, kStride, k, count) : codesOf(out, kStride, k, count));
    return planes;
}

// Colour pixels, three bytes each.
inline std::vector<uint8_t> rgbPixels(std::initializer_list<std::array<uint8_t, 3>> pixels) {
    std::vector<uint8_t> bytes;
    for (const auto& p : pixels) bytes.insert(bytes.end(), p.begin(), p.end());
    return bytes;
}


// Four ink bytes in plane order.
struct Ink {
    uint8_t v0, v1, v2, v3;
};
inline std::vector<uint8_t> inkPixels(std::initializer_list<Ink> pixels) {
    std::vector<uint8_t> out;
    for (const Ink& p : pixels) out.insert(out.end(), {p.v0, p.v1, p.v2, p.v3});
    return out;
}

// One four-plane output area: plane k is bytes [k * stride, (k + 1) * stride).
struct Planes {
    static constexpr uint32_t kStride = 16;
    std::vector<uint8_t> bytes = std::vector<uint8_t>(4 * kStride, 0);
    uint8_t* dst() { return bytes.data(); }
    uint8_t at(unsigned plane, unsigned i) const { return bytes[plane * kStride + i]; }
    unsigned code(unsigned plane, unsigned i) const { return codeAt(bytes.data() + plane * kStride, i); }
};

// Two-bit error diffusion built by hand: tone[i] = 16 i (a 64 x 64 matrix's
// scale), empty split rows for the test to write, the square class's
// thresholds, and a mono curve with level spread 1 (input v reads split row
// curve[1 + v]).
struct Ed2Hand : HandContext {
    explicit Ed2Hand(const HtSettings& s) : HandContext(s) {
        for (uint32_t i = 0; i < 256; ++i) tone[i] = static_cast<uint16_t>(16 * i);
        for (uint32_t r = 0; r < 256; ++r) setSplit(static_cast<uint8_t>(r), 0, 0, 0);
        setSpread(15, 3, 1, 0);
        monoCurve()[0] = 1;
        for (uint32_t v = 0; v < 256; ++v) monoCurve()[1 + v] = static_cast<uint16_t>(v);
    }
    void mapGray(uint8_t v, uint16_t r) { monoCurve()[1 + v] = r; }
    // Matrix cell (row, column) of the current matrix.
    void setCell(uint32_t row, uint32_t column, uint16_t value) { matrix[row * ctx.matrixWidth + column] = value; }
    void fillLines(int32_t value) {
        for (auto& l : errorLines) std::fill(l.begin(), l.end(), value);
    }
};

inline HtSettings ed2Settings(uint32_t colourMode, uint32_t inputFormat, uint32_t resX, uint32_t resY,
                              uint32_t width, int32_t scaleMode = 0) {
    return KernelSetup{.inputFormat = inputFormat, .colourMode = colourMode, .resolutionX = resX,
                       .resolutionY = resY, .outputBits = 2, .scaleMode = scaleMode, .width = width}
        .settings();
}

}  // namespace inkdot::test
