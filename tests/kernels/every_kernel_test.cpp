// Properties every kernel keeps, checked on each of them through Halftone:
// where a run writes, what a bit offset does, what doubling means, who
// refuses option11, what an empty run does, how the continuity rule clears
// the error lines, and that sister kernels agree.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "kernels/kernels.h"
#include "support/hand_context.h"

namespace inkdot::test {
namespace {

constexpr uint32_t kStride = 24;  // bytes per output plane
constexpr uint32_t kGuard = 4;    // bytes in front of plane 0 that no run may touch
constexpr uint8_t kFill = 0xA5;   // what the output holds before a run

// Tables from a fixed seed, inside the ranges the resource protocol gives:
// amounts and levels 0..255, grid nodes 0..30, a dot-split row per amount.
void randomTables(HandContext& hc, const KernelSetup& k) {
    std::mt19937 rng(11);
    hc.setMatrix(16, 16, permutationMatrix(16, 5));
    hc.setSpread(56, 22, 11, 4);
    for (auto& t : hc.tone) t = static_cast<uint16_t>(rng() % 256);
    for (auto& t : hc.edThreshold) t = static_cast<int16_t>(rng() % 300);
    for (auto& d : hc.dotValue) d = static_cast<int16_t>(200 + rng() % 100);
    for (uint32_t v = 0; v < 256; ++v) hc.setGridCell(static_cast<uint8_t>(v), rng() % 31, rng() & 0xFF);
    for (uint32_t r = 0; r < 256; ++r) {
        const uint32_t s = rng() % 100, m = rng() % 80, l = rng() % 70;
        hc.setSplit(static_cast<uint8_t>(r), s, m, l);
    }
    if (k.colourMode != 0) {
        for (auto& c : hc.conversion) c = rng();
    } else {
        for (uint32_t i = 0; i < 2 * hc.conversion.size(); ++i) hc.monoCurve()[i] = rng() & 0xFF;
        hc.monoCurve()[0] = 4;  // the two-bit level spread
    }
}

struct Output {
    std::vector<uint8_t> bytes = std::vector<uint8_t>(kGuard + 4 * kStride, kFill);
    uint8_t* dst() { return bytes.data() + kGuard; }
    const uint8_t* plane(unsigned k) const { return bytes.data() + kGuard + k * kStride; }
};

// One run of `count` random pixels from column 5 of line 3.
struct Scenario {
    KernelSetup setup;
    HandContext hc;
    Output out;
    explicit Scenario(const KernelSetup& k) : setup(k), hc(k.settings()) { randomTables(hc, k); }
    uint32_t run(const std::vector<uint8_t>& in, uint32_t bitOffset, uint32_t count, uint32_t option11 = 0) {
        return hc.run(in.data(), out.dst(), kStride, bitOffset, count, 5, 3, option11);
    }
};

std::vector<uint8_t> randomPixels(size_t bytes, unsigned seed) {
    std::mt19937 rng(seed);
    std::vector<uint8_t> in(bytes);
    for (auto& b : in) b = static_cast<uint8_t>(rng());
    return in;
}

// A run at bit offset b writes the pixels it writes at offset 0, b places
// further on; keeps the b leading pixels of the first byte; clears the rest
// of its last byte; and touches nothing else, in front of or behind it.
TEST(EveryKernel, BitOffsetShiftsTheRunAndNothingOutsideItIsTouched) {
    constexpr uint32_t kCount = 37;
    const std::vector<uint8_t> in = randomPixels(8 * kCount, 3);
    for (const KernelSetup& k : everyKernelSetup()) {
        const uint32_t perByte = k.outputBits == 1 ? 8 : 4;
        const unsigned planes = k.colourMode ? 4 : 1;
        Scenario plain(k);
        SCOPED_TRACE(chooseKernel(plain.hc.ready()).name);
        ASSERT_EQ(plain.run(in, 0, kCount), RC_OK);
        uint32_t dots = 0;  // the tables must print some pixels and leave others
        for (unsigned p = 0; p < planes; ++p)
            for (uint32_t i = 0; i < kCount; ++i) dots += pixelAt(k.outputBits, plain.out.plane(p), i) != 0;
        ASSERT_GT(dots, 0u);
        ASSERT_LT(dots, planes * kCount);
        for (uint32_t b = 1; b < perByte; b += 2) {
            Scenario shifted(k);
            ASSERT_EQ(shifted.run(in, b, kCount), RC_OK);
            for (unsigned l = 0; l < 4; ++l) EXPECT_EQ(shifted.hc.errorLines[l], plain.hc.errorLines[l]) << l;
            const Output fill;
            const uint32_t usedBytes = (b + kCount + perByte - 1) / perByte;
            for (unsigned p = 0; p < 4; ++p) {
                const uint8_t* s = shifted.out.plane(p);
                if (p >= planes) {
                    EXPECT_EQ(std::vector<uint8_t>(s, s + kStride), std::vector<uint8_t>(kStride, kFill)) << p;
                    continue;
                }
                for (uint32_t i = 0; i < b; ++i) ASSERT_EQ(pixelAt(k.outputBits, s, i), pixelAt(k.outputBits, fill.plane(0), i));
                for (uint32_t i = 0; i < kCount; ++i)
                    ASSERT_EQ(pixelAt(k.outputBits, s, b + i), pixelAt(k.outputBits, plain.out.plane(p), i)) << "plane " << p << " pixel " << i;
                for (uint32_t i = b + kCount; i < usedBytes * perByte; ++i) ASSERT_EQ(pixelAt(k.outputBits, s, i), 0u);
                for (uint32_t i = usedBytes; i < kStride; ++i) ASSERT_EQ(s[i], kFill);
            }
            for (uint32_t i = 0; i < kGuard; ++i) ASSERT_EQ(shifted.out.bytes[i], kFill);
        }
    }
}

// Doubling (scaleMode 1) is the plain reading of every input pixel twice,
// for three-byte and ink input alike.
TEST(EveryKernel, DoublingEqualsEachPixelGivenTwice) {
    const std::vector<uint8_t> in = randomPixels(4 * 40, 4);
    std::vector<KernelSetup> setups = everyKernelSetup();
    for (KernelSetup k : everyKernelSetup()) {
        k.inputFormat = 4;
        if (k.colourMode != 0) setups.push_back(k);
    }
    for (KernelSetup k : setups) {
        const uint32_t pixelBytes = k.colourMode ? (k.inputFormat == 4 ? 4 : 3) : 1;
        for (uint32_t count : {30u, 31u}) {
            std::vector<uint8_t> twice;
            for (uint32_t i = 0; i < count; ++i)
                twice.insert(twice.end(), in.begin() + (i / 2) * pixelBytes, in.begin() + (i / 2 + 1) * pixelBytes);
            k.scaleMode = 0;
            Scenario plain(k);
            k.scaleMode = 1;
            Scenario doubled(k);
            SCOPED_TRACE(testing::Message() << chooseKernel(doubled.hc.ready()).name << ", " << count << " pixels");
            ASSERT_EQ(plain.run(twice, 0, count), RC_OK);
            ASSERT_EQ(doubled.run(in, 0, count), RC_OK);
            EXPECT_EQ(doubled.out.bytes, plain.out.bytes);
            for (unsigned l = 0; l < 4; ++l) EXPECT_EQ(doubled.hc.errorLines[l], plain.hc.errorLines[l]) << l;
        }
    }
}

// Sister kernels agree over random runs on random tables: a kernel that
// halves (scaleMode -1) prints what its sister prints from the input pairs
// reduced byte by byte to the smaller byte (the larger in the one-bit
// 1440 x 720 class), or reads one pixel per output pixel (kSame); the
// DoubleY dither kernels without halving are their sisters outright; the
// hybrid's planes 0, 2 and 3 are Dither1Colour's.
TEST(EveryKernel, SisterKernelsAgree) {
    enum Reduce { kSame, kSmaller, kLarger };
    struct Sister {
        KernelSetup a, b;
        Reduce reduce;
        unsigned planes;  // compared planes; error lines too when all the kernel writes
    };
    const auto halving = [](KernelSetup s) { return (s.scaleMode = -1, s); };
    const KernelSetup mono2 = monoSetup(2), colour2 = colourSetup(2), ed2y = edSetup(1, 2, 360, 720);
    KernelSetup ink2y = ed2y, hybrid = colourSetup();
    ink2y.inputFormat = 4;
    hybrid.ditherMode = 0;
    const Sister sisters[] = {
        {halving(doubleY(mono2)), mono2, kSmaller, 1},    {halving(doubleY(colour2)), colour2, kSmaller, 15},
        {doubleY(mono2), mono2, kSame, 1},                {doubleY(colour2), colour2, kSame, 15},
        {halving(monoSetup()), monoSetup(), kSmaller, 1}, {halving(mono2), mono2, kSame, 1},
        {edSetup(0, 1, 360, 360, -1), edSetup(0, 1, 360, 360), kSmaller, 1},
        {edSetup(0, 1, 1440, 720, -1), edSetup(0, 1, 1440, 720), kLarger, 1},
        {edSetup(0, 1, 360, 720, -1), edSetup(0, 1, 360, 720), kSmaller, 1},
        {edSetup(0, 2, 360, 720, -1), edSetup(0, 2, 360, 720), kSmaller, 1},
        {halving(ed2y), ed2y, kSmaller, 15},              {halving(ink2y), ink2y, kSmaller, 15},
        {edSetup(1, 2, 720, 720, -1), edSetup(1, 2, 720, 720), kSame, 15},
        {hybrid, colourSetup(), kSame, 13},
    };
    std::mt19937 rng(23);
    for (const Sister& s : sisters) {
        Scenario a(s.a), b(s.b);
        SCOPED_TRACE(testing::Message() << chooseKernel(a.hc.ready()).name << " / " << chooseKernel(b.hc.ready()).name);
        const uint32_t pixelBytes = s.a.colourMode ? (s.a.inputFormat == 4 ? 4 : 3) : 1;
        const uint32_t perPixel = s.reduce == kSame ? 1 : 2;
        for (uint32_t line = 0; line < 12; ++line) {
            const uint32_t count = 1 + rng() % 61, startX = rng() % (65 - count), bitOffset = rng() % 4;
            std::vector<uint8_t> in = randomPixels(perPixel * count * pixelBytes, rng());
            for (uint32_t i = 0; i < in.size(); i += pixelBytes)
                if (rng() % 4 == 0) std::fill_n(&in[i], pixelBytes, s.a.inputFormat == 4 ? 0 : 255);  // white
            std::vector<uint8_t> reduced = in;
            if (s.reduce != kSame) {
                reduced.resize(count * pixelBytes);
                for (uint32_t i = 0; i < reduced.size(); ++i) {
                    const uint8_t* pair = &in[i / pixelBytes * 2 * pixelBytes + i % pixelBytes];
                    reduced[i] = s.reduce == kSmaller ? std::min(pair[0], pair[pixelBytes]) : std::max(pair[0], pair[pixelBytes]);
                }
            }
            ASSERT_EQ(a.hc.run(in.data(), a.out.dst(), kStride, bitOffset, count, startX, line), RC_OK);
            ASSERT_EQ(b.hc.run(reduced.data(), b.out.dst(), kStride, bitOffset, count, startX, line), RC_OK);
            for (unsigned p = 0; p < 4; ++p) {
                if (s.planes >> p & 1) {
                    ASSERT_TRUE(std::equal(a.out.plane(p), a.out.plane(p) + kStride, b.out.plane(p))) << p;
                }
            }
            for (unsigned l = 0; l < 4 && s.planes != 13; ++l) ASSERT_EQ(a.hc.errorLines[l], b.hc.errorLines[l]) << line;
        }
    }
}

// inputFormat 2 and 3 are one layout to every colour kernel: the same pixels,
// three bytes apart, give the same planes and error lines, also when doubled.
TEST(EveryKernel, Formats2And3ReadTheSameThreeBytePixels) {
    const std::vector<uint8_t> in = randomPixels(3 * 40, 6);
    for (KernelSetup k : everyKernelSetup()) {
        if (k.colourMode == 0) continue;
        for (int32_t scaleMode : {k.scaleMode, 1}) {
            k.scaleMode = scaleMode;
            k.inputFormat = 2;
            Scenario two(k);
            k.inputFormat = 3;
            Scenario three(k);
            SCOPED_TRACE(testing::Message() << chooseKernel(three.hc.ready()).name << ", scaleMode " << scaleMode);
            ASSERT_EQ(two.run(in, 1, 37), RC_OK);
            ASSERT_EQ(three.run(in, 1, 37), RC_OK);
            EXPECT_EQ(two.out.bytes, three.out.bytes);
            for (unsigned l = 0; l < 4; ++l) EXPECT_EQ(two.hc.errorLines[l], three.hc.errorLines[l]) << l;
        }
    }
}

// A white run (all bytes 255, or no ink in ink input; for the monochrome
// kernels only the two-bit diffusion knows white) prints nothing and leaves
// the error lines at zero, whatever the tables. The count is even: an odd
// last pixel is looked up, white or not.
TEST(EveryKernel, WhiteRunPrintsNothingAndLeavesNoError) {
    std::vector<KernelSetup> setups;
    for (KernelSetup k : everyKernelSetup()) {
        if (k.colourMode == 0 && !(k.method == 1 && k.outputBits == 2)) continue;
        setups.push_back(k);
        if (k.colourMode != 0) setups.push_back((k.inputFormat = 4, k));
    }
    for (const KernelSetup& k : setups) {
        Scenario s(k);
        SCOPED_TRACE(testing::Message() << chooseKernel(s.hc.ready()).name << ", input form " << k.inputFormat);
        const std::vector<uint8_t> white(8 * 36, k.inputFormat == 4 ? 0 : 255);
        ASSERT_EQ(s.run(white, 0, 36), RC_OK);
        for (unsigned p = 0; p < (k.colourMode ? 4u : 1u); ++p)
            for (uint32_t i = 0; i < 36; ++i) ASSERT_EQ(pixelAt(k.outputBits, s.out.plane(p), i), 0u) << "plane " << p;
        for (const auto& line : s.hc.errorLines) EXPECT_EQ(line, std::vector<int32_t>(line.size(), 0));
    }
}

// The monochrome kernels refuse option11 and change nothing; the colour
// kernels ignore it.
TEST(EveryKernel, OnlyMonochromeKernelsRefuseOption11) {
    const std::vector<uint8_t> in = randomPixels(8 * 16, 5);
    for (const KernelSetup& k : everyKernelSetup()) {
        Scenario s(k);
        SCOPED_TRACE(chooseKernel(s.hc.ready()).name);
        s.hc.ctx.prevLineNo = 99;
        if (k.colourMode != 0) {
            EXPECT_EQ(s.run(in, 0, 16, 1), RC_OK);
            continue;
        }
        EXPECT_EQ(s.run(in, 0, 16, 1), RC_ARG + 11);
        EXPECT_EQ(s.out.bytes, Output{}.bytes);
        EXPECT_EQ(s.hc.ctx.prevLineNo, 99u);
        EXPECT_EQ(s.hc.errorLines[0], std::vector<int32_t>(s.hc.errorLines[0].size(), 0));
    }
}

// The cached-table colour kernels are their plain sisters with the tables
// copied once per call: over runs on repeated, next and skipped lines, at
// every offset, with white pixels and 16-bit matrix values, they write the
// same bytes, error cells and run state. With three-plane output (colourMode
// 2) the cached kernels write planes 0..2 alike and leave plane 3 alone.
TEST(EveryKernel, CachedColourKernelsEqualTheirPlainSisters) {
    const std::pair<HtKernel, HtKernel> sisters[] = {{Ed1ColourGeneral, Ed1ColourGeneralB},
                                                     {Ed1Colour1440x720, Ed1Colour1440x720B}};
    const KernelSetup k{.inputFormat = 2, .colourMode = 1};
    std::mt19937 rng(8);
    std::vector<uint16_t> matrix(16 * 8);
    for (auto& m : matrix) m = static_cast<uint16_t>(rng());
    for (auto [plain, cached] : sisters) {
        KernelSetup threePlanes = k;
        threePlanes.colourMode = 2;
        Scenario a(k), b(k), c(threePlanes);
        for (Scenario* s : {&a, &b, &c}) s->hc.setMatrix(16, 8, matrix);
        uint32_t line = 0;
        for (unsigned r = 0; r < 40; ++r) {
            line += rng() % 3;
            const uint32_t startX = rng() % 64, count = rng() % (65 - startX), bitOffset = rng() % 8;
            std::vector<uint8_t> in = randomPixels(3 * count, r);
            for (uint32_t i = 0; i < in.size(); i += 15) in[i] = in[i + 1] = in[i + 2] = 255;  // every fifth pixel white
            HtRun run{in.data(), a.out.dst(), kStride, bitOffset, count, startX, line, 0};
            ASSERT_EQ(plain(a.hc.ctx, run), RC_OK);
            run.dst = b.out.dst();
            ASSERT_EQ(cached(b.hc.ctx, run), RC_OK);
            run.dst = c.out.dst();
            ASSERT_EQ(cached(c.hc.ctx, run), RC_OK);
            ASSERT_EQ(a.out.bytes, b.out.bytes) << "run " << r;
            const auto plane3 = c.out.bytes.begin() + kGuard + 3 * kStride;
            ASSERT_TRUE(std::equal(c.out.bytes.begin(), plane3, a.out.bytes.begin()));
            ASSERT_EQ(std::count(plane3, c.out.bytes.end(), kFill), long{kStride});
            for (unsigned l = 0; l < 3; ++l) ASSERT_EQ(c.hc.errorLines[l], a.hc.errorLines[l]) << "run " << r;
            for (unsigned l = 0; l < 4; ++l) ASSERT_EQ(a.hc.errorLines[l], b.hc.errorLines[l]) << "run " << r;
            ASSERT_EQ(a.hc.ctx.prevRunEnd, b.hc.ctx.prevRunEnd);
        }
    }
}

// An empty run stores its line and rewrites nothing, but with a bit offset
// it keeps that many leading pixels of each plane's first byte and clears
// the rest of that byte.
TEST(EveryKernel, EmptyRunRewritesOnlyAnOffsetByte) {
    for (const KernelSetup& k : everyKernelSetup()) {
        HandContext h(k.settings());
        SCOPED_TRACE(chooseKernel(h.ready()).name);
        const unsigned planes = k.colourMode ? 4 : 1;
        std::vector<uint8_t> out(4 * 16, 0xFF);
        ASSERT_EQ(h.run(nullptr, out.data(), 16, 0, 0, 4, 6), RC_OK);
        EXPECT_EQ(out, std::vector<uint8_t>(4 * 16, 0xFF));
        EXPECT_EQ(h.ctx.prevLineNo, 6u);
        if (k.method == 1) {
            EXPECT_EQ(h.ctx.prevRunEnd, 4u);
        }
        ASSERT_EQ(h.run(nullptr, out.data(), 16, 2, 0, 4, 7), RC_OK);
        for (unsigned p = 0; p < 4; ++p) {
            EXPECT_EQ(out[16 * p], p < planes ? (k.outputBits == 1 ? 0xC0 : 0xF0) : 0xFF) << "plane " << p;
            EXPECT_EQ(out[16 * p + 1], 0xFF);
        }
        EXPECT_EQ(h.ctx.prevLineNo, 7u);
    }
}

// Every error-diffusion kernel applies the rule to the lines it diffuses,
// even for an empty run, and leaves the margins and the other lines alone.
TEST(EveryKernel, DiffusionKernelsApplyTheContinuityRule) {
    // Line 2 after creation (line 1 skipped) clears every column; line 15 after a
    // line 14 that reached the width, from column 20, clears columns 0..19.
    struct Case { uint32_t previousLine, previousEnd, line, startX, clearedTo; };
    const Case cases[] = {{0, 0, 2, 0, 64}, {14, 64, 15, 20, 20}};
    for (const KernelSetup& k : everyKernelSetup()) {
        if (k.method != 1) continue;
        for (const Case& c : cases) {
            HandContext h(k.settings());
            SCOPED_TRACE(testing::Message() << chooseKernel(h.ready()).name << ", line " << c.line);
            for (auto& l : h.errorLines) std::fill(l.begin(), l.end(), 7);
            h.ctx.prevLineNo = c.previousLine;
            h.ctx.prevRunEnd = c.previousEnd;
            std::vector<uint8_t> out(64, 0);
            ASSERT_EQ(h.run(nullptr, out.data(), 16, 0, 0, c.startX, c.line), RC_OK);
            for (unsigned l = 0; l < 4; ++l) {
                const bool diffused = l < (k.colourMode ? 3u : 1u);
                for (int x = -30; x < 94; ++x) {
                    const bool cleared = diffused && x >= 0 && x < static_cast<int>(c.clearedTo);
                    ASSERT_EQ(h.line(l)[x], cleared ? 0 : 7) << "line " << l << ", column " << x;
                }
            }
            EXPECT_EQ(h.ctx.prevLineNo, c.line);
        }
    }
}

}  // namespace
}  // namespace inkdot::test
