// Properties every kernel keeps, checked on each of them through Halftone:
// where a run writes, what a bit offset does, who refuses option11, that
// sister kernels agree, that white prints nothing, and how the continuity
// rule clears the error lines.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "kernels/vector_paths.h"
#include "support/hand_context.h"

namespace inkdot::test {
namespace {

constexpr uint32_t kStride = 24;  // bytes per output plane
constexpr uint32_t kGuard = 4;    // bytes in front of plane 0 that no run may touch
constexpr uint8_t kFill = 0xA5;   // what the output holds before a run: kFill + 37 i at byte i

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
    std::vector<uint8_t> bytes;
    Output() {
        for (uint32_t i = 0; i < kGuard + 4 * kStride; ++i) bytes.push_back(static_cast<uint8_t>(kFill + 37 * i));
    }
    uint8_t* dst() { return bytes.data() + kGuard; }
    const uint8_t* plane(unsigned k) const { return bytes.data() + kGuard + k * kStride; }
};

// One run of `count` random pixels from column 5 of line 3.
struct Scenario {
    HandContext hc;
    Output out;
    explicit Scenario(const KernelSetup& k) : hc(k.settings()) { randomTables(hc, k); }
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
// of its last byte; stores its line; and touches nothing else, in front of or
// behind it. An empty run so rewrites only an offset byte. Option 11 is
// refused by the monochrome kernels only. White runs (even counts: an odd
// last pixel is looked up, white or not) print nothing, whatever the tables.
TEST(EveryKernel, BitOffsetShiftsTheRunAndNothingOutsideItIsTouched) {
    const std::vector<uint8_t> in = randomPixels(8 * 37, 3);
    for (const KernelSetup& k : everyKernelSetup()) {
        for (uint32_t count : {37u, 0u}) {
            const uint32_t perByte = k.outputBits == 1 ? 8 : 4;
            const unsigned planes = k.colourMode ? 4 : 1;
            Scenario plain(k);
            SCOPED_TRACE(testing::Message() << chooseKernel(plain.hc.ready()).name << ", " << count << " pixels");
            ASSERT_EQ(plain.run(in, 0, count), RC_OK);
            uint32_t dots = 0;  // the tables must print some pixels and leave others
            for (unsigned p = 0; p < planes; ++p)
                for (uint32_t i = 0; i < count; ++i) dots += pixelAt(k.outputBits, plain.out.plane(p), i) != 0;
            ASSERT_TRUE(count == 0 || (dots > 0 && dots < planes * count));
            Scenario option11(k);  // the monochrome kernels refuse it and change nothing, the colour ones ignore it
            EXPECT_EQ(option11.run(in, 0, count, 1), k.colourMode ? RC_OK : RC_ARG + 11);
            EXPECT_TRUE(k.colourMode || option11.out.bytes == Output{}.bytes);
            // A white run (all bytes 255, or no ink in ink input; of the monochrome kernels
            // only the two-bit diffusion knows white) prints nothing and leaves no error.
            for (uint32_t format : {k.inputFormat, 4u}) {
                if ((k.colourMode == 0 && (k.method != 1 || k.outputBits != 2 || format == 4)) || count == 0) continue;
                KernelSetup form = k;
                form.inputFormat = format;
                Scenario white(form);
                ASSERT_EQ(white.run(std::vector<uint8_t>(8 * 36, format == 4 ? 0 : 255), 0, 36), RC_OK) << format;
                for (unsigned p = 0; p < planes; ++p)
                    for (uint32_t i = 0; i < 36; ++i) ASSERT_EQ(pixelAt(k.outputBits, white.out.plane(p), i), 0u) << p;
                for (const auto& line : white.hc.errorLines) EXPECT_EQ(line, std::vector<int32_t>(line.size(), 0));
            }
            for (uint32_t b = 0; b < perByte; b = b ? b + 2 : 1) {
                Scenario shifted(k);
                ASSERT_EQ(shifted.run(in, b, count), RC_OK);
                EXPECT_EQ(shifted.hc.ctx.prevLineNo, 3u);
                for (unsigned l = 0; l < 4; ++l) EXPECT_EQ(shifted.hc.errorLines[l], plain.hc.errorLines[l]) << l;
                const Output fill;
                const uint32_t usedBytes = (b + count + perByte - 1) / perByte;
                for (unsigned p = 0; p < 4; ++p) {
                    const uint8_t* s = shifted.out.plane(p);
                    const uint32_t written = p < planes ? usedBytes : 0;
                    for (uint32_t i = 0; i < b && written; ++i)
                        ASSERT_EQ(pixelAt(k.outputBits, s, i), pixelAt(k.outputBits, fill.plane(p), i));
                    for (uint32_t i = 0; i < count && written; ++i)
                        ASSERT_EQ(pixelAt(k.outputBits, s, b + i), pixelAt(k.outputBits, plain.out.plane(p), i)) << p;
                    for (uint32_t i = b + count; i < written * perByte; ++i) ASSERT_EQ(pixelAt(k.outputBits, s, i), 0u);
                    for (uint32_t i = written; i < kStride; ++i) ASSERT_EQ(s[i], fill.plane(p)[i]) << p;
                }
                for (uint32_t i = 0; i < kGuard; ++i) ASSERT_EQ(shifted.out.bytes[i], fill.bytes[i]);
            }
        }
    }
}

// Sister kernels agree over random runs (on next and skipped lines, at any
// offset, with white pixels) on the same random tables. Doubling (scaleMode
// 1) is the plain reading of every input pixel twice. A kernel that halves
// (scaleMode -1) prints what its sister prints from the input pairs reduced
// byte by byte to the smaller byte (the larger in the one-bit monochrome
// 1440 x 720 class), or reads one pixel per output pixel (kSame): the plain
// one-bit colour kernels are so the cached ones' sisters. inputFormat 2 and
// 3 are one layout. The DoubleY dither kernels without halving are their
// sisters outright; the hybrid's planes 0, 2 and 3 are Dither1Colour's;
// three-plane output (colourMode 2) is the first three planes and lines.
TEST(EveryKernel, SisterKernelsAgree) {
    enum Reduce { kSame, kSmaller, kLarger, kTwice };
    struct Sister { KernelSetup a, b; Reduce reduce; unsigned planes = 15, lines = 4; };  // planes: a mask
    const auto with = [](KernelSetup s, int32_t scaleMode, uint32_t inputFormat = 0) {
        s.scaleMode = scaleMode;
        s.inputFormat = inputFormat ? inputFormat : s.inputFormat;
        return s;
    };
    const KernelSetup mono2 = monoSetup(2), colour2 = colourSetup(2), ed2y = edSetup(1, 2, 360, 720);
    KernelSetup hybrid = colourSetup(), threePlanes = edSetup(1, 1, 360, 360);
    hybrid.ditherMode = 0, threePlanes.colourMode = 2;
    std::vector<Sister> sisters = {
        {with(doubleY(mono2), -1), mono2, kSmaller},    {with(doubleY(colour2), -1), colour2, kSmaller},
        {doubleY(mono2), mono2, kSame},                 {doubleY(colour2), colour2, kSame},
        {with(monoSetup(), -1), monoSetup(), kSmaller}, {with(mono2, -1), mono2, kSame},
        {edSetup(0, 1, 360, 360, -1), edSetup(0, 1, 360, 360), kSmaller},
        {edSetup(0, 1, 1440, 720, -1), edSetup(0, 1, 1440, 720), kLarger},
        {edSetup(0, 1, 360, 720, -1), edSetup(0, 1, 360, 720), kSmaller},
        {edSetup(0, 2, 360, 720, -1), edSetup(0, 2, 360, 720), kSmaller},
        {with(ed2y, -1), ed2y, kSmaller},               {with(ed2y, -1, 4), with(ed2y, 0, 4), kSmaller},
        {edSetup(1, 2, 720, 720, -1), edSetup(1, 2, 720, 720), kSame},
        {edSetup(1, 1, 360, 360, -1), edSetup(1, 1, 360, 360), kSame},
        {edSetup(1, 1, 1440, 720, -1), edSetup(1, 1, 1440, 720), kSame},
        {threePlanes, edSetup(1, 1, 360, 360), kSame, 7, 3},
        {hybrid, colourSetup(), kSame, 13, 0},
    };
    for (const KernelSetup& k : everyKernelSetup()) {
        sisters.push_back({with(k, 1), with(k, 0), kTwice});
        if (k.colourMode == 0) continue;
        sisters.push_back({with(k, 1, 4), with(k, 0, 4), kTwice});
        sisters.push_back({with(k, k.scaleMode, 3), with(k, k.scaleMode, 2), kSame});
        sisters.push_back({with(k, 1, 3), with(k, 1, 2), kSame});
    }
    std::mt19937 rng(23);
    for (const Sister& s : sisters) {
        Scenario a(s.a), b(s.b);
        SCOPED_TRACE(testing::Message() << chooseKernel(a.hc.ready()).name << " / " << chooseKernel(b.hc.ready()).name);
        if (s.a.method == 1 && s.a.outputBits == 1) {  // 16-bit matrix values
            for (size_t i = 0; i < a.hc.matrix.size(); ++i)
                a.hc.matrix[i] = b.hc.matrix[i] = static_cast<uint16_t>(rng());
        }
        const uint32_t pixelBytes = s.a.colourMode ? (s.a.inputFormat == 4 ? 4 : 3) : 1;
        for (uint32_t line = 0; line < 30; line += 1 + rng() % 2) {
            const uint32_t count = 1 + rng() % 61, startX = rng() % (65 - count), bitOffset = rng() % 4;
            const uint32_t inPixels = s.reduce == kSame ? count : s.reduce == kTwice ? (count + 1) / 2 : 2 * count;
            std::vector<uint8_t> in = randomPixels(inPixels * pixelBytes, rng()), sister(count * pixelBytes);
            for (uint32_t i = 0; i < in.size(); i += pixelBytes)
                if (rng() % 4 == 0) std::fill_n(&in[i], pixelBytes, s.a.inputFormat == 4 ? 0 : 255);  // white
            for (uint32_t i = 0; i < sister.size(); ++i) {
                const uint32_t pixel = i / pixelBytes, byte = i % pixelBytes;
                const uint32_t first = s.reduce == kTwice ? pixel / 2 : s.reduce == kSame ? pixel : 2 * pixel;
                const uint8_t x = in[first * pixelBytes + byte];
                const uint8_t y = s.reduce == kSmaller || s.reduce == kLarger ? in[(first + 1) * pixelBytes + byte] : x;
                sister[i] = s.reduce == kLarger ? std::max(x, y) : std::min(x, y);
            }
            ASSERT_EQ(a.hc.run(in.data(), a.out.dst(), kStride, bitOffset, count, startX, line), RC_OK);
            ASSERT_EQ(b.hc.run(sister.data(), b.out.dst(), kStride, bitOffset, count, startX, line), RC_OK);
            for (unsigned p = 0; p < 4; ++p) {
                if (s.planes >> p & 1) {
                    ASSERT_TRUE(std::equal(a.out.plane(p), a.out.plane(p) + kStride, b.out.plane(p))) << p;
                }
            }
            for (unsigned l = 0; l < s.lines; ++l) ASSERT_EQ(a.hc.errorLines[l], b.hc.errorLines[l]) << line;
        }
    }
}

// Every error-diffusion kernel applies the continuity rule to the lines it
// diffuses, even for an empty run, and leaves the margins and the other
// lines alone; the run state left is the run's own line and end. Bands are
// 16 lines: 31 is a band's last line, 32 a first.
TEST(EveryKernel, DiffusionKernelsApplyTheContinuityRule) {
    struct Case { const char* what; uint32_t prevLine, prevEnd, line, start, from, to; };  // cleared: [from, to)
    const Case cases[] = {
        {"line 1 after creation", 0, 0, 1, 0, 0, 0},
        {"a skipped line clears the whole line", 0, 0, 2, 0, 0, 64},
        {"line 31 after 30 clears up to its start", 30, 64, 31, 20, 0, 20},
        {"a second run on line 31 clears the gap", 31, 20, 31, 30, 20, 30},
        {"line 31 after a run that ended the line: from 0", 31, 64, 31, 20, 0, 20},
        {"line 32 clears behind the last run of 31", 31, 20, 32, 0, 20, 64},
        {"a run that ended line 31 hands over nothing", 31, 64, 32, 0, 0, 0},
        {"a run continuing where the last ended", 31, 20, 31, 20, 0, 0},
        {"gaps matter only on band edges", 17, 10, 17, 20, 0, 0},
        {"going back is no case", 5, 10, 3, 0, 0, 0},
        {"line 0 after 0xFFFFFFFF opens a band", 0xFFFFFFFFu, 50, 0, 0, 50, 64},
    };
    for (const KernelSetup& k : everyKernelSetup()) {
        if (k.method != 1) continue;
        HandContext five(k.settings());
        const std::vector<uint8_t> src(64, 0x80);
        std::vector<uint8_t> dst(64, 0);
        ASSERT_EQ(five.run(src.data(), dst.data(), 16, 0, 5, 20, 3), RC_OK);
        EXPECT_EQ(five.ctx.prevRunEnd, 25u) << "a run of 5 from column 20 ends at 25";
        for (const Case& c : cases) {
            HandContext h(k.settings());
            SCOPED_TRACE(testing::Message() << chooseKernel(h.ready()).name << ": " << c.what);
            for (auto& l : h.errorLines) std::fill(l.begin(), l.end(), 7);
            h.ctx.prevLineNo = c.prevLine;
            h.ctx.prevRunEnd = c.prevEnd;
            std::vector<uint8_t> out(64, 0);
            ASSERT_EQ(h.run(nullptr, out.data(), 16, 0, 0, c.start, c.line), RC_OK);
            for (unsigned l = 0; l < 4; ++l) {
                const bool diffused = l < (k.colourMode ? 3u : 1u);
                for (int x = -30; x < 94; ++x) {
                    const bool cleared = diffused && x >= static_cast<int>(c.from) && x < static_cast<int>(c.to);
                    ASSERT_EQ(h.line(l)[x], cleared ? 0 : 7) << "line " << l << ", column " << x;
                }
            }
            EXPECT_EQ(h.ctx.prevLineNo, c.line);
            EXPECT_EQ(h.ctx.prevRunEnd, c.start);
        }
    }
}

// The vector paths (where this CPU has them) and the portable loops print
// the same: every colour kernel, plain and doubled, on long random lines
// (whole vector steps of 16 and 32 pixels and a remainder, white pixels
// among them) over a matrix wider than a vector step, so that its values are
// read both in one piece and across the row's end. On a CPU without the
// vector units both sides take the portable loops.
TEST(EveryKernel, VectorPathsAgreeWithThePortableLoops) {
    struct PortableWhileAlive {
        PortableWhileAlive() { allowVectorPaths(false); }
        ~PortableWhileAlive() { allowVectorPaths(true); }
    };
    KernelSetup hybrid = colourSetup();
    hybrid.ditherMode = 0;
    std::vector<KernelSetup> setups = {hybrid};
    for (const KernelSetup& k : everyKernelSetup())
        if (k.colourMode != 0) setups.push_back(k);
    std::mt19937 rng(29);
    for (KernelSetup k : setups) {
        for (const int32_t scaleMode : {k.scaleMode, 1}) {
            k.scaleMode = scaleMode;
            k.width = 128;
            Scenario vector(k), portable(k);
            SCOPED_TRACE(testing::Message() << chooseKernel(vector.hc.ready()).name << ", scaleMode " << scaleMode);
            vector.hc.setMatrix(64, 4, permutationMatrix(16, 7));
            portable.hc.setMatrix(64, 4, permutationMatrix(16, 7));
            const uint32_t pixelBytes = k.inputFormat == 4 ? 4 : 3;
            for (uint32_t line = 0; line < 8; ++line) {
                const uint32_t count = 40 + rng() % 51, startX = rng() % (k.width - count), bitOffset = rng() % 4;
                std::vector<uint8_t> in = randomPixels(2 * count * pixelBytes, rng());
                for (uint32_t i = 0; i < in.size(); i += pixelBytes)
                    if (rng() % 8 == 0) std::fill_n(&in[i], pixelBytes, 255);  // white
                ASSERT_EQ(vector.hc.run(in.data(), vector.out.dst(), kStride, bitOffset, count, startX, line), RC_OK);
                {
                    const PortableWhileAlive portableLoops;
                    ASSERT_EQ(portable.hc.run(in.data(), portable.out.dst(), kStride, bitOffset, count, startX, line),
                              RC_OK);
                }
                EXPECT_EQ(vector.out.bytes, portable.out.bytes) << line;
                for (unsigned l = 0; l < 4; ++l) EXPECT_EQ(vector.hc.errorLines[l], portable.hc.errorLines[l]) << line;
            }
        }
    }
}

// A white pixel leaves no carry and no pending error behind, so a line cut
// into runs right after white pixels diffuses as the whole line in one run;
// here runs of even length (an odd run's last pixel has a rule of its own)
// across chunk boundaries, plain, doubled and halved. The whole line is
// long enough for the kernels to make the steps of every level first, the
// pieces are short enough to make them as the bytes come: the two agree on
// every byte. The one-bit monochrome diffusion, and the hybrid's plane 1
// from ink input (no averaging with pixels across a cut).
TEST(EveryKernel, ALineCutAfterWhitePixelsDiffusesAsOneRun) {
    constexpr uint32_t kWidth = 1536, kBytes = kWidth / 8;
    KernelSetup hybrid = colourSetup();
    hybrid.ditherMode = 0, hybrid.inputFormat = 4;
    std::vector<KernelSetup> setups = {hybrid};
    for (KernelSetup k : {edSetup(0, 1, 360, 360), edSetup(0, 1, 1440, 720), edSetup(0, 1, 360, 720)}) {
        for (int32_t scaleMode : {0, 1, -1}) {
            k.scaleMode = scaleMode;
            setups.push_back(k);
        }
    }
    std::mt19937 rng(31);
    for (KernelSetup k : setups) {
        k.width = kWidth;
        const uint32_t pixelBytes = k.colourMode ? 4 : 1;
        // Where pixel x reads its input, and how many bytes it reads.
        const auto offset = [&](uint32_t x) {
            return (k.scaleMode == 1 ? x / 2 : k.scaleMode == -1 ? 2 * x : x) * pixelBytes;
        };
        const uint32_t reads = (k.scaleMode == -1 ? 2 : 1) * pixelBytes;
        std::vector<uint8_t> in = randomPixels(offset(kWidth) + reads, rng());
        std::vector<uint32_t> cuts = {0};
        for (uint32_t x = 2 + 2 * (rng() % 150); x < kWidth; x += 2 + 2 * (rng() % 150)) {
            std::fill_n(&in[offset(x - 1)], reads, 0);  // white: byte 0 reads level 0, or no ink
            cuts.push_back(x);
        }
        cuts.push_back(kWidth);
        Scenario whole(k), cut(k);
        SCOPED_TRACE(testing::Message() << chooseKernel(whole.hc.ready()).name << ", scaleMode " << k.scaleMode);
        if (k.colourMode == 0) whole.hc.monoCurve()[0] = cut.hc.monoCurve()[0] = 0;
        std::vector<uint8_t> a(4 * kBytes), b(4 * kBytes);
        for (uint32_t line = 0; line < 3; ++line) {
            ASSERT_EQ(whole.hc.run(in.data(), a.data(), kBytes, 0, kWidth, 0, line), RC_OK);
            for (size_t r = 0; r + 1 < cuts.size(); ++r) {
                const uint32_t x = cuts[r];
                ASSERT_EQ(cut.hc.run(&in[offset(x)], &b[x / 8], kBytes, x % 8, cuts[r + 1] - x, x, line), RC_OK);
            }
            ASSERT_EQ(a, b) << line;
            ASSERT_EQ(whole.hc.errorLines[0], cut.hc.errorLines[0]) << line;
        }
    }
}

}  // namespace
}  // namespace inkdot::test
