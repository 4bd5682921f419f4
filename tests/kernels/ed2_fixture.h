// Hand-built two-bit error-diffusion instances for the ED2 kernel tests:
// tone[i] = 16 i (a 64 x 64 matrix's scale), split rows written by the test,
// thresholds and matrices small enough to follow by hand.
#pragma once

#include <cstdint>
#include <vector>

#include "support/hand_context.h"

namespace inkdot::test {

inline HtSettings ed2Settings(uint32_t colourMode, uint32_t inputFormat, uint32_t resX, uint32_t resY,
                              uint32_t width, int32_t scaleMode = 0) {
    HtSettings s{};
    s.method = 1;
    s.inputFormat = inputFormat;
    s.colourMode = colourMode;
    s.resolutionX = resX;
    s.resolutionY = resY;
    s.outputBits = 2;
    s.scaleMode = scaleMode;
    s.width = width;
    return s;
}

struct Ed2Hand : HandContext {
    explicit Ed2Hand(const HtSettings& s) : HandContext(s) {
        for (uint32_t i = 0; i < 256; ++i) tone[i] = static_cast<uint16_t>(16 * i);
        for (uint32_t r = 0; r < 256; ++r) setSplit(static_cast<uint8_t>(r), 0, 0, 0);
        setSpread(15, 3, 1, 0);  // the square class's two-bit thresholds
        // Mono curve with level spread 1: input v reads split row curve[1 + v].
        monoCurve()[0] = 1;
        for (uint32_t v = 0; v < 256; ++v) monoCurve()[1 + v] = static_cast<uint16_t>(v);
    }
    // Input byte v of a monochrome run maps to split row r.
    void mapGray(uint8_t v, uint16_t r) { monoCurve()[1 + v] = r; }
    // Matrix cell (row, column) of the current matrix.
    void setCell(uint32_t row, uint32_t column, uint16_t value) { matrix[row * ctx.matrixWidth + column] = value; }
    void fillLines(int32_t value) {
        for (auto& l : errorLines) std::fill(l.begin(), l.end(), value);
    }
};

// One four-plane output area: plane k is bytes [k * stride, (k + 1) * stride).
struct Planes {
    static constexpr uint32_t kStride = 16;
    std::vector<uint8_t> bytes = std::vector<uint8_t>(4 * kStride, 0);
    uint8_t* dst() { return bytes.data(); }
    uint8_t at(unsigned plane, unsigned i) const { return bytes[plane * kStride + i]; }
    // The two-bit code of pixel i (counted from the top pair of byte 0).
    unsigned code(unsigned plane, unsigned i) const { return (at(plane, i / 4) >> (6 - 2 * (i % 4))) & 3; }
};

// Four ink bytes in plane order.
struct Ink {
    uint8_t v0, v1, v2, v3;
};
inline std::vector<uint8_t> inkPixels(std::initializer_list<Ink> pixels) {
    std::vector<uint8_t> out;
    for (const Ink& p : pixels) out.insert(out.end(), {p.v0, p.v1, p.v2, p.v3});
    return out;
}

}  // namespace inkdot::test
