#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "kernels/kernels.h"
#include "support/hand_context.h"

namespace inkdot {
namespace {

using test::HandContext;

// The three resolution classes that pick the three monochrome kernels.
struct MonoClass {
    const char* name;
    uint32_t resolutionX, resolutionY;
};
constexpr MonoClass kGeneral{"Ed1MonoGeneral", 360, 360};
constexpr MonoClass k1440x720{"Ed1Mono1440x720", 1440, 720};
constexpr MonoClass kDoubleY{"Ed1MonoDoubleY", 360, 720};
constexpr MonoClass kAllClasses[] = {kGeneral, k1440x720, kDoubleY};

HtSettings monoSettings(const MonoClass& c, uint32_t width, int32_t scaleMode = 0) {
    return test::KernelSetup{.resolutionX = c.resolutionX, .resolutionY = c.resolutionY, .scaleMode = scaleMode,
                             .width = width}
        .settings();
}

// A small one-bit instance: spread thresholds 32, 9, 4, 2, a flat matrix.
struct Mono {
    HandContext h;
    explicit Mono(const MonoClass& c, uint32_t width = 64, int32_t scaleMode = 0, uint16_t matrixValue = 0x43)
        : h(monoSettings(c, width, scaleMode)) {
        h.setSpread(32, 9, 4, 2);
        h.setFlatMatrix(4, 4, matrixValue);
    }
    void level(uint8_t byte, int16_t level) { h.monoCurve()[byte] = static_cast<uint16_t>(level); }
    // The previous call of this instance, as the continuity rule sees it.
    void previous(uint32_t line, uint32_t end) {
        h.ctx.prevLineNo = line;
        h.ctx.prevRunEnd = end;
    }
    int32_t& cell(int column) { return h.line(0)[column]; }
    uint32_t run(const std::vector<uint8_t>& src, uint8_t* dst, uint32_t bitOffset, uint32_t count,
                 uint32_t startX, uint32_t lineNo) {
        return h.run(src.data(), dst, 0, bitOffset, count, startX, lineNo);
    }
};

// Two pixels worked by hand: column 60 (sum 30 < 35, no dot, G0) and column 61
// (sum 47 >= -80, dot, err -208, G1).
TEST(Ed1Mono, WorkedTwoPixelRun) {
    Mono m(kGeneral, 100);
    m.level(1, 20);
    m.level(2, 40);
    m.h.edThreshold[20] = 15;
    m.h.edThreshold[40] = -100;
    m.cell(60) = 320;
    m.previous(5, 60);  // an earlier run of the same line ended here: nothing is cleared
    uint8_t out = 0xFF;
    ASSERT_EQ(m.run({1, 2}, &out, 0, 2, 60, 5), RC_OK);

    const int32_t expected[] = {120, -592, -592, -1664, -1544, -832};
    for (int k = 0; k < 6; ++k) EXPECT_EQ(m.cell(58 + k), expected[k]) << "column " << 58 + k;
    EXPECT_EQ(m.cell(57), 0);
    EXPECT_EQ(m.cell(64), 0) << "the final carry is discarded";
    EXPECT_EQ(out, 0x40);
    EXPECT_EQ(m.h.ctx.prevLineNo, 5u);
    EXPECT_EQ(m.h.ctx.prevRunEnd, 62u);
}


// Pixel 0 (level 200, dot, err -55) leaves a carry; pixel 1 is white and
// overwrites its cell: the carry in General and DoubleY, 0 in 1440x720.
TEST(Ed1Mono, WhitePixelDropsItsError) {
    struct Case {
        MonoClass cls;
        int32_t cellAfterWhite;
    };
    // Carries: G1 and H1 leave 4 x err, Y1 8 x err.
    const Case cases[] = {{kGeneral, 4 * -55}, {k1440x720, 0}, {kDoubleY, 8 * -55}};
    for (const Case& k : cases) {
        Mono m(k.cls, 64);
        m.level(1, 200);
        m.h.edThreshold[200] = 128;  // 200 >= 128 + 20
        m.h.edThreshold[0] = -30000;  // a white pixel never consults it
        m.cell(11) = 32000;
        m.cell(12) = 5000;
        m.previous(3, 10);
        uint8_t out = 0;
        ASSERT_EQ(m.run({1, 0, 0}, &out, 0, 3, 10, 3), RC_OK);
        EXPECT_EQ(out, 0x80) << k.cls.name;
        EXPECT_EQ(m.cell(11), k.cellAfterWhite) << k.cls.name;
        EXPECT_EQ(m.cell(12), 0) << k.cls.name << ": the carry was spent";
    }
}

// The threshold moves by +24, +20, -20 or -24 with bits 1..7 of the matrix value:
// a sum equal to threshold + p prints, one below it does not.
TEST(Ed1Mono, MatrixPerturbationShiftsTheThreshold) {
    const std::pair<uint16_t, int16_t> cases[] = {{0x00, 24}, {0x07, 24},  {0x08, 20},  {0x81, 20},
                                                  {0x82, -20}, {0xF7, -20}, {0xF8, -24}, {0x1FF, -24}};
    for (auto [value, p] : cases) {
        for (int16_t above : {0, 1}) {
            Mono m(kGeneral, 64, 0, value);
            m.level(1, 100);
            m.h.edThreshold[100] = static_cast<int16_t>(100 - p + above);
            uint8_t out = 0;
            ASSERT_EQ(m.run({1}, &out, 0, 1, 0, 0), RC_OK);
            EXPECT_EQ(out, above ? 0x00 : 0x80) << "matrix value " << value;
        }
    }
}

using Taps = std::vector<std::pair<int, int32_t>>;  // (offset from x, amount)

// `amount` at every offset from `from` to `to`.
Taps band(int from, int to, int32_t amount) {
    Taps taps;
    for (int k = from; k <= to; ++k) taps.push_back({k, amount});
    return taps;
}
Taps operator+(Taps a, const Taps& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// One pixel of byte 1 (level `level`) at column x, then the bytes behind it;
// byte 0 is white. The level tables are read at the level's low byte.
struct PixelCase {
    const char* what;
    MonoClass cls;
    uint16_t matrix;
    int16_t level, threshold, dotValue;
    std::vector<uint8_t> in;
    int x;
    uint8_t out;
    Taps taps;
    bool wholeLine;  // every cell the taps do not name holds 0
};

TEST(Ed1Mono, PixelCases) {
    const int32_t e2 = 2 - 255, e3 = 3 - 255, e6 = 6 - 255, e20 = 20 - 255, e33 = 33;
    const PixelCase cases[] = {
        {"equal prints", k1440x720, 0x43, 20, 0, 255, {1}, 0, 0x80, {}, false},
        {"one below does not", k1440x720, 0x43, 20, 1, 255, {1}, 0, 0x00, {}, false},
        {"equal prints", kDoubleY, 0x43, 20, 0, 255, {1}, 0, 0x80, {}, false},
        {"one below does not", kDoubleY, 0x43, 20, 1, 255, {1}, 0, 0x00, {}, false},
        {"the dot value is read unsigned: 0xFFFF removes 65535; G1 keeps 8/32 at x", kGeneral, 0x43, 100, 0, -1, {1},
         10, 0x80, {{0, 8 * (100 - 65535)}}, false},
        {"curve entry 0xFFEC is level -20, tables read at 236; lowest band odd cell: G5b", kGeneral, 0x43, -20, -100,
         10, {1}, 30, 0x80, band(-14, 14, -30), true},
        // G1: this line +1: 8, +2: 4; next line -2: 4, -1: 4, 0: 8, +1: 4 (the carry,
        // which the white pixel at x + 1 writes into its own cell).
        {"a level above T1 spreads G1 without a dot", kGeneral, 0x43, 33, 1000, 255, {1, 0}, 10, 0x00,
         {{2, 4 * e33}, {-2, 4 * e33}, {-1, 4 * e33}, {0, 8 * e33}, {1, 4 * e33}}, true},
        // G4a: this line +1..+4: 2, +5..+10: 1; next line -10..-5: 1, -4..0: 2.
        {"lowest bands on an even cell: G4a", kGeneral, 0x42, 2, -100, 255, {1}, 30, 0x80,
         band(1, 4, 2 * e2) + band(5, 10, e2) + band(-10, -5, e2) + band(-4, 0, 2 * e2), true},
        // G3: this line +1..+3: 3, +4..+7: 1; next line -7, -6: 1, -5..-2: 2, -1, 0: 3.
        {"between T3 and T2 with a dot: G3", kGeneral, 0x43, 6, -100, 255, {1}, 30, 0x80,
         band(1, 3, 3 * e6) + band(4, 7, e6) + band(-7, -6, e6) + band(-5, -2, 2 * e6) + band(-1, 0, 3 * e6), true},
        // G5b: this line +1..+14: 1; next line -14..0: 1.
        {"lowest bands on an odd cell: G5b", kGeneral, 0x43, 2, -100, 255, {1}, 30, 0x80, band(-14, 14, e2), true},
        // G2a: this line +1, +2: 4, +3..+5: 2; next line -4..-2: 2, -1, 0: 4.
        {"between T2 and T1 on an even cell: G2a", kGeneral, 0x42, 20, -100, 255, {1}, 30, 0x80,
         band(1, 2, 4 * e20) + band(3, 5, 2 * e20) + band(-4, -2, 2 * e20) + band(-1, -1, 4 * e20) +
             band(0, 0, 4 * e20), true},
        // G2b: this line +1, +2: 4, +3, +4: 2; next line -4..-2: 2, -1: 4, 0: 6.
        {"between T2 and T1 on an odd cell: G2b", kGeneral, 0x43, 20, -100, 255, {1}, 30, 0x80,
         band(1, 2, 4 * e20) + band(3, 4, 2 * e20) + band(-4, -2, 2 * e20) + band(-1, -1, 4 * e20) +
             band(0, 0, 6 * e20), true},
        // G4b: as G4a, but +11 in place of +10 on this line.
        {"above T4 on an odd cell: G4b", kGeneral, 0x43, 3, -100, 255, {1}, 30, 0x80,
         band(1, 4, 2 * e3) + band(5, 9, e3) + band(11, 11, e3) + band(-10, -5, e3) + band(-4, 0, 2 * e3), true},
        // H2: this line +1..+3: 3, +4, +5: 2, +6, +7: 1; next line -7, -6: 1, -5, -4: 2, -3..-1: 3, 0: 2.
        {"between T2 and T1: H2", k1440x720, 0x43, 20, -100, 255, {1}, 30, 0x80,
         band(1, 3, 3 * e20) + band(4, 5, 2 * e20) + band(6, 7, e20) + band(-7, -6, e20) + band(-5, -4, 2 * e20) +
             band(-3, -1, 3 * e20) + band(0, 0, 2 * e20), true},
        // H3: this line +1..+5: 2, +6..+10: 1; next line -10..-6: 1, -5..0: 2.
        {"between T3 and T2: H3", k1440x720, 0x43, 6, -100, 255, {1}, 30, 0x80,
         band(1, 5, 2 * e6) + band(6, 10, e6) + band(-10, -6, e6) + band(-5, 0, 2 * e6), true},
        // H4: this line +1: 2, +2..+14: 1; next line -14..-2: 1, -1: 2, 0: 1.
        {"between T4 and T3: H4", k1440x720, 0x42, 3, -100, 255, {1}, 30, 0x80,
         band(1, 1, 2 * e3) + band(2, 14, e3) + band(-14, -2, e3) + band(-1, -1, 2 * e3) + band(0, 0, e3), true},
        // H5: err on this line +1..+9 and next line -9..-1; err >> 1 (-253 >> 1 = -127) on
        // this line +10..+23 and next line -21..-10 and 0.
        {"at T4 and below: H5 with the halved error", k1440x720, 0x43, 2, -100, 255, {1}, 30, 0x80,
         band(1, 9, e2) + band(10, 23, -127) + band(-21, -10, -127) + band(-9, -1, e2) + band(0, 0, -127), true},
        // Y2: this line +1: 4, +2: 2; next line -2: 2, -1: 4, 0: 16.
        {"between T2 and T1: Y2", kDoubleY, 0x43, 20, -100, 255, {1}, 30, 0x80,
         band(1, 1, 4 * e20) + band(2, 2, 2 * e20) + band(-2, -2, 2 * e20) + band(-1, -1, 4 * e20) +
             band(0, 0, 16 * e20), true},
        // Y3: this line +1..+4: 2; next line -4..-2: 2, -1: 4, 0: 8.
        {"between T3 and T2 with a dot: Y3", kDoubleY, 0x43, 6, -100, 255, {1}, 30, 0x80,
         band(1, 4, 2 * e6) + band(-4, -2, 2 * e6) + band(-1, -1, 4 * e6) + band(0, 0, 8 * e6), true},
        {"above T4 on an odd cell: G3", kDoubleY, 0x43, 3, -100, 255, {1}, 30, 0x80,
         band(1, 3, 3 * e3) + band(4, 7, e3) + band(-7, -6, e3) + band(-5, -2, 2 * e3) + band(-1, 0, 3 * e3), true},
        {"at T4 on an odd cell: G4b", kDoubleY, 0x43, 2, -100, 255, {1}, 30, 0x80,
         band(1, 4, 2 * e2) + band(5, 9, e2) + band(11, 11, e2) + band(-10, -5, e2) + band(-4, 0, 2 * e2), true},
    };
    for (const PixelCase& c : cases) {
        SCOPED_TRACE(std::string(c.cls.name) + ": " + c.what);
        Mono m(c.cls, 64, 0, c.matrix);
        m.level(1, c.level);
        const auto index = static_cast<uint8_t>(c.level);
        m.h.edThreshold[index] = c.threshold;
        m.h.dotValue[index] = c.dotValue;
        uint8_t out = 0xFF;
        ASSERT_EQ(m.run(c.in, &out, 0, static_cast<uint32_t>(c.in.size()), c.x, 0), RC_OK);
        EXPECT_EQ(out & (0xFF00 >> c.in.size()), c.out);
        std::vector<int32_t> expected(64, 0);
        for (auto [offset, amount] : c.taps) expected[c.x + offset] += amount;
        for (int x = 0; x < 64; ++x) {
            const bool named = std::any_of(c.taps.begin(), c.taps.end(), [&](auto t) { return c.x + t.first == x; });
            if (named || c.wholeLine) {
                EXPECT_EQ(m.cell(x), expected[x]) << "column " << x;
            }
        }
    }
}

// Random tables from a fixed seed, so two instances get the same ones.
// Bytes below 8 are white.
void randomTables(Mono& m, unsigned seed) {
    std::mt19937 rng(seed);
    std::vector<uint16_t> cells(16 * 16);
    for (auto& v : cells) v = static_cast<uint16_t>(rng() & 0xFF);
    m.h.setMatrix(16, 16, cells);
    m.h.setSpread(56, 22, 11, 4);
    for (int b = 0; b < 256; ++b) {
        m.level(static_cast<uint8_t>(b), static_cast<int16_t>(b < 8 ? 0 : b));
        m.h.edThreshold[b] = static_cast<int16_t>(100 + rng() % 60);
        m.h.dotValue[b] = static_cast<int16_t>(255 + rng() % 40);
    }
}

void expectSameState(Mono& a, Mono& b, const std::vector<uint8_t>& outA, const std::vector<uint8_t>& outB) {
    EXPECT_EQ(outA, outB);
    for (int x = -30; x < static_cast<int>(a.h.ctx.width) + 30; ++x) ASSERT_EQ(a.cell(x), b.cell(x)) << x;
}

// Halving (scaleMode -1) equals the plain reading of the smaller byte of each
// pair (the larger at 1440 x 720), over random runs, bit for bit and cell for cell.
TEST(Ed1Mono, HalvedInputEqualsPreparedPlainInput) {
    std::mt19937 rng(7);
    for (const MonoClass& c : kAllClasses) {
        Mono scaled(c, 200, -1), plain(c, 200, 0);
        randomTables(scaled, 11);
        randomTables(plain, 11);
        for (uint32_t line = 0; line < 6; ++line) {
            const uint32_t start = rng() % 40, count = rng() % 150 + 1;
            std::vector<uint8_t> input(2 * count), prepared(count);
            for (auto& v : input) v = static_cast<uint8_t>(rng());
            for (uint32_t i = 0; i < count; ++i)
                prepared[i] = c.resolutionX == 1440 ? std::max(input[2 * i], input[2 * i + 1])
                                                    : std::min(input[2 * i], input[2 * i + 1]);
            std::vector<uint8_t> outA(count / 8 + 2, 0x3C), outB(outA);
            ASSERT_EQ(scaled.run(input, outA.data(), line % 8, count, start, line), RC_OK);
            ASSERT_EQ(plain.run(prepared, outB.data(), line % 8, count, start, line), RC_OK);
            expectSameState(scaled, plain, outA, outB);
        }
    }
}

}  // namespace
}  // namespace inkdot
