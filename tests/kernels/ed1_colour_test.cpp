// One-bit colour error diffusion: grid node choice and smoothing, per-plane
// thresholds, activity histories, the odd last pixel, white pixels, ink
// input, the cached-table kernels against their plain sisters, and dot
// density. Levels are observed through their effect on the error lines: a
// pixel that prints no dot and has no pending error leaves 8 x level in its
// own cell for every pattern the tests reach (G1, Y1, H0a, H0b).
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <vector>

#include "kernels/kernels.h"
#include "support/hand_context.h"

namespace inkdot {
namespace {

using test::HandContext;

constexpr uint32_t kStride = 32;  // bytes per output plane in the tests
constexpr uint32_t kWidth = 128;

struct KernelCase {
    const char* name;
    uint32_t resolutionX, resolutionY;
    int32_t scaleMode;
    HtKernel kernel;
    int32_t noDotCarry;  // next-line weight at x + 1 of the pattern for a no-dot pixel above T1
};

// The plain kernels are reached with halving (scaleMode -1), which reads one
// pixel per output pixel in them; the cached ones with the ordinary scaling.
const KernelCase kGeneral{"General", 360, 360, -1, Ed1ColourGeneral, 4};           // G1
const KernelCase k1440{"Colour1440x720", 1440, 720, -1, Ed1Colour1440x720, 0};     // H0a / H0b
const KernelCase kDoubleY{"DoubleY", 360, 720, 0, Ed1ColourDoubleY, 8};            // Y1
const KernelCase kGeneralB{"GeneralB", 360, 360, 0, Ed1ColourGeneralB, 4};         // G1
const KernelCase k1440B{"Colour1440x720B", 1440, 720, 0, Ed1Colour1440x720B, 0};  // H0a / H0b
const KernelCase kAllCases[] = {kGeneral, k1440, kDoubleY, kGeneralB, k1440B};

HtSettings settingsFor(const KernelCase& k, uint32_t inputFormat = 2, uint32_t colourMode = 1) {
    return test::KernelSetup{.inputFormat = inputFormat, .colourMode = colourMode, .resolutionX = k.resolutionX,
                             .resolutionY = k.resolutionY, .scaleMode = k.scaleMode, .width = kWidth}
        .settings();
}

// Input pixels, built one at a time.
struct Pixels {
    std::vector<uint8_t> bytes;
    Pixels& rgb(uint8_t b0, uint8_t b1, uint8_t b2) { bytes.insert(bytes.end(), {b0, b1, b2}); return *this; }
    Pixels& ink(uint8_t l0, uint8_t l1, uint8_t l2, uint8_t l3) { bytes.insert(bytes.end(), {l0, l1, l2, l3}); return *this; }
    Pixels& white() { return rgb(255, 255, 255); }
    Pixels& repeat(int n, uint8_t b) { for (int i = 0; i < n; ++i) rgb(b, b, b); return *this; }
};

// A hand-built colour instance with four output planes and a small palette:
// palette byte k (1..10) sits exactly on node 3k of every axis, so pixel
// (k, k, k) has the levels given for k whatever the matrix says, two
// different palette colours are never averaged, and a repeated one averages
// with itself (which keeps it).
class Rig {
public:
    explicit Rig(const KernelCase& k, uint32_t inputFormat = 2, uint32_t colourMode = 1)
        : hc(settingsFor(k, inputFormat, colourMode)), out(4 * kStride, 0) {
        hc.setMatrix(1, 1, {0x83});
    }
    void palette(uint8_t k, uint8_t l0, uint8_t l1, uint8_t l2, uint8_t l3) {
        hc.setGridCell(k, 3 * k, 255);
        hc.setNode(3 * k, 3 * k, 3 * k, test::packInks(l0, l1, l2, l3));
    }
    // Every diffused line's cell of column x.
    void preload(uint32_t x, int32_t value) {
        for (unsigned k = 0; k < 3; ++k) hc.line(k)[x] = value;
    }
    uint32_t run(const Pixels& px, uint32_t count, uint32_t startX = 0, uint32_t lineNo = 0, uint32_t bitOffset = 0) {
        return hc.run(px.bytes.data(), out.data(), kStride, bitOffset, count, startX, lineNo);
    }
    uint8_t plane(unsigned k, unsigned byte = 0) const { return out[k * kStride + byte]; }
    int32_t cell(unsigned line, uint32_t x) { return hc.line(line)[x]; }

    HandContext hc;
    std::vector<uint8_t> out;
};

// The conversion example: matrix value 0x83 (q = 130), cells {3, 200},
// {5, 60}, {7, 130} choose nodes 3, 6, 8, entry (8 x 32 + 6) x 32 + 3 = 8387.
void setExampleNode(Rig& r) {
    r.hc.setGridCell(40, 3, 200);
    r.hc.setGridCell(50, 5, 60);
    r.hc.setGridCell(60, 7, 130);
    r.hc.conversion[8387] = 0x40302010;  // levels 16, 32, 48, 64
}

// A previous pixel with nodes 3, 6, i2 and the given levels that prints a dot
// in planes 0, 1 and 3 and leaves no error (its dot value equals its level).
void setPreviousPixel(Rig& r, int32_t i2, uint8_t l0, uint8_t l1, uint8_t l2, uint8_t l3) {
    r.hc.setGridCell(10, 3, 255);
    r.hc.setGridCell(20, 6, 255);
    r.hc.setGridCell(30, static_cast<uint8_t>(i2), 255);
    r.hc.setNode(i2, 6, 3, test::packInks(l0, l1, l2, l3));
    for (uint8_t l : {l0, l1, l3}) {
        r.hc.dotValue[l] = l;
        r.hc.edThreshold[l] = -1000;
    }
}

// The example pixel (40, 50, 60), after a previous pixel with nodes 3, 6, i2
// or alone; the levels it diffuses show in its cell, and plane 2 prints only
// where the tone table is marked.
struct SmoothingCase {
    const char* what;
    uint16_t matrix;
    int32_t previousI2;  // -1: no previous pixel
    uint8_t previous[4];
    uint8_t markedTone;
    Pixels pixels;
    uint32_t startX, column;
    uint8_t levels[3];  // planes 0, 1, 3 in the column's cells
    uint8_t plane2;
};

TEST(Ed1Colour, NodeChoiceAndSmoothing) {
    const SmoothingCase cases[] = {
        {"conversion takes the matrix-chosen node", 0x83, -1, {}, 48, Pixels().rgb(40, 50, 60).white(), 5, 5,
         {16, 32, 64}, 0x80},
        {"one node step: (previous + level) >> 1 on odd cells", 0x83, 7, {20, 30, 40, 50}, 44,
         Pixels().rgb(10, 20, 30).rgb(40, 50, 60), 0, 1, {18, 31, 57}, 0x40},
        {"even cells round the average up", 0x82, 7, {21, 31, 41, 51}, 45, Pixels().rgb(10, 20, 30).rgb(40, 50, 60),
         0, 1, {19, 32, 58}, 0x40},
        {"two node steps: not averaged", 0x83, 6, {20, 30, 40, 50}, 48, Pixels().rgb(10, 20, 30).rgb(40, 50, 60), 0,
         1, {16, 32, 64}, 0x40},
        {"white pixels keep the smoothing state", 0x83, 7, {20, 30, 40, 50}, 44,
         Pixels().rgb(10, 20, 30).white().rgb(40, 50, 60).white(), 0, 2, {18, 31, 57}, 0x20},
    };
    for (const KernelCase& k : kAllCases) {
        for (const SmoothingCase& c : cases) {
            SCOPED_TRACE(std::string(k.name) + ": " + c.what);
            Rig r(k);
            r.hc.setMatrix(1, 1, {c.matrix});
            setExampleNode(r);
            if (c.previousI2 >= 0) setPreviousPixel(r, c.previousI2, c.previous[0], c.previous[1], c.previous[2], c.previous[3]);
            r.hc.tone[c.markedTone] = 1000;
            const uint32_t count = static_cast<uint32_t>(c.pixels.bytes.size() / 3);
            ASSERT_EQ(r.run(c.pixels, count, c.startX), RC_OK);
            for (unsigned l = 0; l < 3; ++l) EXPECT_EQ(r.cell(l, c.column), 8 * c.levels[l]) << "line " << l;
            EXPECT_EQ(r.plane(2), c.plane2);
            const uint8_t previousDots = c.previousI2 >= 0 ? 0x80 : 0;  // the previous pixel prints planes 0, 1, 3
            for (unsigned p : {0u, 1u, 3u}) EXPECT_EQ(r.plane(p), previousDots) << "plane " << p;
        }
    }
}

TEST(Ed1Colour, WhitePixelMovesTheCarryIntoItsCell) {
    for (const KernelCase& k : kAllCases) {
        SCOPED_TRACE(k.name);
        Rig r(k);
        r.palette(1, 10, 20, 0, 30);
        r.preload(1, 32 * 100);  // pending error that the white pixel drops
        ASSERT_EQ(r.run(Pixels().rgb(1, 1, 1).white(), 2), RC_OK);
        EXPECT_EQ(r.cell(0, 1), k.noDotCarry * 10);
        EXPECT_EQ(r.cell(1, 1), k.noDotCarry * 20);
        EXPECT_EQ(r.cell(2, 1), k.noDotCarry * 30);
        EXPECT_EQ(r.plane(0) | r.plane(1) | r.plane(2) | r.plane(3), 0);
    }
}

TEST(Ed1Colour, CountOneOnlyDithersThePair) {
    for (const KernelCase& k : kAllCases) {
        SCOPED_TRACE(k.name);
        Rig r(k);
        r.hc.setFlatMatrix(16, 16, 10);
        r.palette(1, 200, 0, 0, 100);
        r.hc.tone[200] = 200;
        r.hc.tone[100] = 100;
        for (uint32_t x = 0; x < 8; ++x) r.preload(x, 32 * 1000);
        const std::vector<int32_t> before = r.hc.errorLines[0];
        ASSERT_EQ(r.run(Pixels().rgb(1, 1, 1), 1, 3), RC_OK);
        EXPECT_EQ(r.plane(3), 0x80);  // t3 = 100 > 10
        EXPECT_EQ(r.plane(0), 0x00);  // 245 < 200 fails
        EXPECT_EQ(r.hc.errorLines[0], before) << "no diffusion at all";
        EXPECT_EQ(r.hc.ctx.prevRunEnd, 4u);
    }
}

// One run worked by hand; the first output byte of each plane.
// q = 100 gives p = +20: an edThresholdTable entry of 50 is 70 in planes 0
// and 3 and 30 in plane 1; a pending sum s = cell / 32 + level decides.
// Plane 2 is dithered: a dot where m < tone, compared as unsigned. With a
// large pending error in every cell, a plane prints wherever it diffuses: it
// idles after five pixels without its ink, and white pixels do not count.
// The odd last pixel (M = 255, m = 10): planes 3 and 0 pair against m (t3 =
// 100 > 10; t0 + t3 > 255 - 10 adds plane 0), planes 1 and 2 against n = 245
// (t1 > 245 prints 1, else t1 + t2 > 245 prints 2); the nodes are chosen at
// mid-matrix (q = 128 moves weight 128) and a level of 31 or less counts as 0,
// except in ink input.
TEST(Ed1Colour, HandWorkedRuns) {
    struct Case {
        const char* what;
        uint32_t inputFormat;
        std::function<void(Rig&)> tables;
        Pixels pixels;
        uint8_t planes[4];  // the first output byte of each plane
    };
    // The tone pairs are copied: a case keeps its table builder beyond the
    // initializer list it was written with.
    auto tones = [](std::initializer_list<std::pair<uint8_t, uint16_t>> list) {
        return [t = std::vector(list)](Rig& r) {
            r.hc.setFlatMatrix(16, 16, 10);
            for (auto [level, tone] : t) r.hc.tone[level] = tone;
        };
    };
    auto pair03 = [&](uint8_t l0) { return [=](Rig& r) { r.palette(1, l0, 0, 0, 100); tones({{l0, l0}, {100, 100}})(r); }; };
    auto pair12 = [&](uint16_t t1, uint16_t t2) { return [=](Rig& r) { r.palette(1, 0, 40, 50, 0); tones({{40, t1}, {50, t2}})(r); }; };
    auto pending = [](int32_t sum) {
        return [=](Rig& r) {
            r.hc.setMatrix(1, 1, {100});
            r.palette(1, 10, 10, 0, 10);
            r.hc.edThreshold[10] = 50;
            r.preload(0, 32 * (sum - 10));
        };
    };
    auto busy = [](Rig& r) {
        r.palette(1, 9, 0, 0, 9);
        r.palette(2, 0, 0, 0, 9);
        for (uint32_t x = 0; x < 16; ++x) r.preload(x, 32 * 1000);
    };
    const Case cases[] = {
        {"sum 29: no plane", 2, pending(29), Pixels().rgb(1, 1, 1).white(), {0, 0, 0, 0}},
        {"sum 30: plane 1 at 50 - 20", 2, pending(30), Pixels().rgb(1, 1, 1).white(), {0, 0x80, 0, 0}},
        {"sum 69: plane 1 only", 2, pending(69), Pixels().rgb(1, 1, 1).white(), {0, 0x80, 0, 0}},
        {"sum 70: planes 0 and 3 at 50 + 20", 2, pending(70), Pixels().rgb(1, 1, 1).white(), {0x80, 0x80, 0, 0x80}},
        {"plane 2 dithered by the matrix", 2, [](Rig& r) {
             r.hc.setMatrix(4, 1, {99, 100, 101, 0x8000});
             r.palette(1, 0, 0, 7, 0);
             r.hc.tone[7] = 100;
         }, Pixels().repeat(4, 1), {0, 0, 0x80, 0}},
        // 9 then zeros: five pixels; zeros from the start: four.
        {"activity: idle after five pixels without ink", 2, busy, Pixels().rgb(1, 1, 1).repeat(7, 2), {0xF8, 0xF0, 0, 0xFF}},
        {"activity: white pixels do not count", 2, busy, Pixels().rgb(1, 1, 1).white().repeat(4, 2).white().rgb(2, 2, 2),
         {0xBC, 0xB8, 0, 0xBD}},
        {"plane 3 alone", 2, pair03(200), Pixels().white().white().rgb(1, 1, 1), {0, 0, 0, 0x20}},
        {"planes 3 and 0", 2, pair03(250), Pixels().white().white().rgb(1, 1, 1), {0x20, 0, 0, 0x20}},
        {"plane 2 by the pair sum", 2, pair12(100, 200), Pixels().rgb(1, 1, 1), {0, 0, 0x80, 0}},
        {"plane 1 alone", 2, pair12(250, 10), Pixels().rgb(1, 1, 1), {0, 0x80, 0, 0}},
        {"neither: 200 is not above 245", 2, pair12(100, 100), Pixels().rgb(1, 1, 1), {0, 0, 0, 0}},
        {"250 is", 2, pair12(100, 150), Pixels().rgb(1, 1, 1), {0, 0, 0x80, 0}},
        {"nodes at mid-matrix, faint levels dropped", 2, [](Rig& r) {
             r.hc.setFlatMatrix(16, 16, 10);
             r.hc.setGridCell(70, 3, 128);
             r.hc.setNode(4, 4, 4, test::packInks(31, 0, 0, 40));
             r.hc.tone[31] = r.hc.tone[40] = 1000;
         }, Pixels().rgb(70, 70, 70), {0, 0, 0, 0x80}},
        {"ink input keeps faint levels", 4, tones({{31, 1000}, {40, 1000}}), Pixels().ink(31, 0, 0, 40),
         {0x80, 0, 0, 0x80}},
    };
    for (const Case& c : cases) {
        for (const KernelCase& k : kAllCases) {
            SCOPED_TRACE(std::string(k.name) + ": " + c.what);
            Rig r(k, c.inputFormat);
            c.tables(r);
            ASSERT_EQ(r.run(c.pixels, static_cast<uint32_t>(c.pixels.bytes.size() / (c.inputFormat == 4 ? 4 : 3))), RC_OK);
            for (unsigned p = 0; p < 4; ++p) EXPECT_EQ(r.plane(p), c.planes[p]) << "plane " << p;
        }
    }
}

// Ink input: the four bytes are the levels, four bytes a pixel, no grid and
// no averaging; all four zero is white.
TEST(Ed1Colour, InkInputTakesTheBytesAsLevels) {
    for (const KernelCase& k : {kGeneral, k1440, kDoubleY}) {
        SCOPED_TRACE(k.name);
        Rig r(k, 4);
        ASSERT_EQ(r.hc.ready().kernel, k.kernel);
        setPreviousPixel(r, 7, 20, 30, 40, 50);  // its dot values and thresholds only
        r.hc.tone[48] = 1000;
        ASSERT_EQ(r.run(Pixels().ink(20, 30, 40, 50).ink(16, 32, 48, 64), 2), RC_OK);
        EXPECT_EQ(r.cell(0, 1), 8 * 16) << "not averaged with the previous pixel";
        EXPECT_EQ(r.cell(1, 1), 8 * 32);
        EXPECT_EQ(r.cell(2, 1), 8 * 64);
        EXPECT_EQ(r.plane(2), 0x40);

        // A later run on the line, over large pending errors: all four zero is
        // white and drops its cell; one byte of ink makes the pixel diffuse.
        r.preload(40, 32 * 1000);
        r.preload(41, 32 * 1000);
        ASSERT_EQ(r.run(Pixels().ink(0, 0, 0, 0).ink(0, 0, 0, 1), 2, 40), RC_OK);
        EXPECT_EQ(r.plane(0), 0x40);
        EXPECT_EQ(r.plane(3), 0x40);
    }
}

// The colour kernels take the a forms on odd matrix cells (0x43) and the b
// forms on even ones (0x42). One pixel at column 10; each check names an
// error line, a column and the cell on an odd and an even matrix cell.
TEST(Ed1Colour, ParityForms) {
    struct Check { unsigned line; uint32_t column; int32_t odd, even; };
    struct Case {
        const char* what;
        std::vector<KernelCase> kernels;
        uint8_t l0, l1, l3;
        bool dot;
        std::vector<Check> checks;
    };
    const int32_t e4 = 4 - 255, e30 = 30 - 255, e3 = 3 - 255;
    const Case cases[] = {
        // L = T4 = 4 with a dot includes T4 on odd cells (G4a, 2/32 at x) except in
        // plane 1 (G5a, 1/32 at x); even cells exclude it (G5b).
        {"general: plane 1 excludes T4 on every cell", {kGeneral, kGeneralB}, 4, 4, 4, true,
         {{0, 10, 2 * e4, e4}, {1, 10, e4, e4}, {2, 10, 2 * e4, e4}}},
        {"general: L = 30 with a dot, G2a (4 at x) / G2b (6 at x)", {kGeneral, kGeneralB}, 30, 0, 0, true,
         {{0, 10, 4 * e30, 6 * e30}}},
        {"1440 x 720: L = 30 without a dot, H0a (4 at x - 3) / H0b (none)", {k1440, k1440B}, 30, 0, 0, false,
         {{0, 7, 4 * 30, 0}}},
        {"DoubleY: L = 3 below T4 with a dot, G4a (1 at x + 10) / G4b (1 at x + 11)", {kDoubleY}, 3, 0, 0, true,
         {{0, 20, e3, 0}, {0, 21, 0, e3}}},
    };
    for (const Case& c : cases) {
        for (const KernelCase& k : c.kernels) {
            for (uint16_t m : {0x43, 0x42}) {
                SCOPED_TRACE(std::string(k.name) + (m & 1 ? " odd: " : " even: ") + c.what);
                Rig r(k);
                r.hc.setMatrix(1, 1, {m});
                r.hc.setSpread(56, 22, 11, 4);
                r.palette(1, c.l0, c.l1, 0, c.l3);
                if (c.dot) r.hc.edThreshold[c.l0] = r.hc.edThreshold[c.l1] = r.hc.edThreshold[c.l3] = -100;
                ASSERT_EQ(r.run(Pixels().rgb(1, 1, 1).white(), 2, 10), RC_OK);
                for (const Check& x : c.checks) EXPECT_EQ(r.cell(x.line, x.column), m & 1 ? x.odd : x.even);
            }
        }
    }
}

// Dot values of 32768 and more: the plain kernels read planes 0 and 1 as
// unsigned and plane 3 as signed, the cached kernels every plane as signed.
TEST(Ed1Colour, DotValueSignedness) {
    for (const KernelCase& k : kAllCases) {
        SCOPED_TRACE(k.name);
        Rig r(k);
        r.palette(1, 100, 100, 0, 100);
        r.hc.dotValue[100] = static_cast<int16_t>(40000 - 65536);
        r.hc.edThreshold[100] = -1000;
        r.hc.setSpread(0, 0, 0, 0);  // G1 / Y1 / H1: 8/32 at x after a dot; 1440: 4/32
        ASSERT_EQ(r.run(Pixels().rgb(1, 1, 1).white(), 2), RC_OK);
        const bool cached = k.kernel == &Ed1ColourGeneralB || k.kernel == &Ed1Colour1440x720B;
        const int32_t atX = (k.kernel == &Ed1Colour1440x720 || k.kernel == &Ed1Colour1440x720B) ? 4 : 8;
        const int32_t errSigned = 100 - (40000 - 65536);
        const int32_t errUnsigned = 100 - 40000;
        EXPECT_EQ(r.cell(0, 0), atX * (cached ? errSigned : errUnsigned));
        EXPECT_EQ(r.cell(1, 0), atX * (cached ? errSigned : errUnsigned));
        EXPECT_EQ(r.cell(2, 0), atX * errSigned);
    }
}

TEST(Ed1Colour, EmptyMatrixIsRefused) {
    for (const KernelCase& k : kAllCases) {
        Rig r(k);
        r.hc.ctx.matrixHeight = 0;
        EXPECT_EQ(r.run(Pixels().white().white(), 2), RC_DATA) << k.name;
    }
}

// The cached kernels keep one matrix row of at most 256 columns.
TEST(Ed1ColourCached, MatrixWiderThan256IsRefusedUntouched) {
    for (const KernelCase& k : {kGeneralB, k1440B}) {
        SCOPED_TRACE(k.name);
        Rig r(k);
        r.hc.setFlatMatrix(512, 1, 0x83);
        r.palette(1, 100, 100, 100, 100);
        r.preload(20, 1234);
        r.hc.ctx.prevLineNo = 3;
        r.hc.ctx.prevRunEnd = 7;
        std::fill(r.out.begin(), r.out.end(), 0x5A);
        const std::vector<int32_t> line0 = r.hc.errorLines[0];
        EXPECT_EQ(r.run(Pixels().repeat(4, 1), 4, 0, 9, 2), RC_DATA);
        EXPECT_EQ(r.hc.ctx.prevLineNo, 3u);
        EXPECT_EQ(r.hc.ctx.prevRunEnd, 7u);
        EXPECT_EQ(r.hc.errorLines[0], line0);
        EXPECT_EQ(r.cell(2, 20), 1234);
        EXPECT_EQ(std::count(r.out.begin(), r.out.end(), 0x5A), static_cast<long>(r.out.size()));

        r.hc.setFlatMatrix(256, 1, 0x83);
        EXPECT_EQ(r.run(Pixels().repeat(4, 1), 4, 0, 9, 2), RC_OK);
    }
    Rig plain(kGeneral);  // the plain kernels read the matrix in place
    plain.hc.setFlatMatrix(512, 1, 0x83);
    EXPECT_EQ(plain.run(Pixels().white().white(), 2), RC_OK);
}

}  // namespace
}  // namespace inkdot
