// What a user sees: a flat patch comes out with as many dots per matrix tile
// as its tone value, in every ordered-dither kernel, when the matrix holds
// every threshold once (Bayer or a random permutation).
#include <gtest/gtest.h>

#include <vector>

#include "kernels/kernels.h"
#include "support/hand_context.h"

namespace inkdot::test {
namespace {

constexpr uint32_t kSide = 16;           // 256 cells: tone values 0..255 map one to one
constexpr uint32_t kWidth = 4 * kSide;   // four tiles across
constexpr uint32_t kStride = kWidth / 4; // enough for two bits a pixel

// Runs kSide lines of a flat patch and counts, per plane, the pixels whose
// dot code is at least `atLeast` (1 for one-bit output).
struct Patch {
    HandContext& hc;
    std::vector<uint8_t> pixel;  // one input pixel's bytes
    uint32_t bits;

    std::vector<uint32_t> count(uint32_t planes, unsigned atLeast = 1, uint32_t inputPixelsPerOutput = 1) {
        std::vector<uint8_t> in;
        for (uint32_t i = 0; i < kWidth * inputPixelsPerOutput; ++i) in.insert(in.end(), pixel.begin(), pixel.end());
        std::vector<uint32_t> dots(planes, 0);
        for (uint32_t line = 0; line < kSide; ++line) {
            std::vector<uint8_t> out(4 * kStride);
            EXPECT_EQ(hc.run(in.data(), out.data(), kStride, 0, kWidth, 0, line), RC_OK);
            for (uint32_t k = 0; k < planes; ++k)
                for (uint32_t i = 0; i < kWidth; ++i) {
                    const unsigned code = bits == 1 ? bitAt(out.data() + k * kStride, i) : codeAt(out.data() + k * kStride, i);
                    dots[k] += code >= atLeast;
                }
        }
        return dots;
    }
};

std::vector<uint16_t> matrixFor(uint32_t seed) { return seed == 0 ? bayerMatrix(kSide) : permutationMatrix(kSide, seed); }

void identityTone(HandContext& hc) {
    for (uint32_t v = 0; v < 256; ++v) hc.tone[v] = static_cast<uint16_t>(v);
}

class Density : public ::testing::TestWithParam<uint32_t> {};  // matrix seed; 0 = Bayer

TEST_P(Density, Dither1MonoGray) {
    HandContext hc(monoSetup().settings());
    hc.setMatrix(kSide, kSide, matrixFor(GetParam()));
    identityTone(hc);
    for (uint8_t level : {0, 1, 17, 128, 200, 255}) {
        Patch p{hc, {level}, 1};
        EXPECT_EQ(p.count(1)[0], 4u * kSide * kSide * level / 256) << "level " << int(level);
    }
}

// Ink amounts on a grid node: tones 40, 70, 100, 30 (planes 3 and 0 fit together).
void colourNode(HandContext& hc, uint32_t seed) {
    hc.setMatrix(kSide, kSide, matrixFor(seed));
    identityTone(hc);
    evenGridCells(hc);  // level 8 sits on node 1
    hc.setNode(1, 1, 1, packInks(40, 70, 100, 30));
    hc.conversion[7] = packInks(40, 70, 100, 30);  // the 2 x 2 x 2 grid's all-ones entry
}

TEST_P(Density, Dither1ColourAndThreshold1Colour) {
    for (uint32_t method : {3u, 0u}) {
        KernelSetup s = colourSetup();
        s.method = method;
        HandContext hc(s.settings());
        colourNode(hc, GetParam());
        // Level 8 is node 1 of the grid; 200 is bit 1 of the small grid (but all ones is white).
        Patch p{hc, method == 3 ? std::vector<uint8_t>{8, 8, 8} : std::vector<uint8_t>{200, 200, 200}, 1};
        const auto dots = p.count(4);
        if (method == 3) {
            EXPECT_EQ(dots, (std::vector<uint32_t>{4 * 40, 4 * 70, 4 * 100, 4 * 30}));
        } else {
            EXPECT_EQ(dots, (std::vector<uint32_t>{0, 0, 0, 0})) << "white";
        }
    }
}

TEST_P(Density, Threshold1ColourDarkPatch) {
    KernelSetup s = colourSetup();
    s.method = 0;
    HandContext hc(s.settings());
    colourNode(hc, GetParam());
    hc.conversion[0] = packInks(10, 20, 30, 40);
    Patch p{hc, {0, 0, 0}, 1};
    EXPECT_EQ(p.count(4), (std::vector<uint32_t>{4 * 10, 4 * 20, 4 * 30, 4 * 40}));
}

TEST_P(Density, Dither1ColourHybrid) {
    KernelSetup s = colourSetup();
    s.ditherMode = 2;
    HandContext hc(s.settings());
    colourNode(hc, GetParam());
    hc.setNode(1, 1, 1, packInks(40, 128, 100, 30));
    hc.setSpread(32, 9, 4, 2);
    Patch p{hc, {8, 8, 8}, 1};
    const auto dots = p.count(4);
    EXPECT_EQ(dots[0], 4u * 40);
    EXPECT_EQ(dots[2], 4u * 100);
    EXPECT_EQ(dots[3], 4u * 30);
    // Plane 1 by diffusion: level 128 of dot value 255, about half the pixels.
    const double expected = 4.0 * kSide * kSide * 128 / 255;
    EXPECT_NEAR(dots[1], expected, expected * 0.03);
}

TEST_P(Density, Dither2MonoGray) {
    for (bool dy : {false, true}) {
        KernelSetup s = monoSetup(2);
        if (dy) s = doubleY(s), s.scaleMode = -1;
        HandContext hc(s.settings());
        hc.setMatrix(kSide, kSide, matrixFor(GetParam()));
        identityTone(hc);
        hc.setSplit(77, 50, 60, 70);
        hc.monoCurve()[0] = 1;
        hc.monoCurve()[100 + 1] = 77;
        Patch p{hc, {100}, 2};
        const uint32_t perTile[4] = {0, 70 + 60 + 50, 70 + 60, 70};
        for (unsigned atLeast = 1; atLeast <= 3; ++atLeast)
            EXPECT_EQ(p.count(1, atLeast, dy ? 2 : 1)[0], 4 * perTile[atLeast]) << "codes >= " << atLeast;
    }
}

TEST_P(Density, Dither2Colour) {
    for (bool dy : {false, true}) {
        KernelSetup s = colourSetup(2);
        if (dy) s = doubleY(s), s.scaleMode = -1;
        HandContext hc(s.settings());
        colourNode(hc, GetParam());
        hc.setSplit(40, 10, 10, 20);
        hc.setSplit(70, 0, 30, 40);
        hc.setSplit(100, 100, 0, 0);
        hc.setSplit(30, 0, 0, 30);
        Patch p{hc, {8, 8, 8}, 2};
        const std::vector<std::vector<uint32_t>> perTile = {
            {40, 70, 100, 30},  // any dot: s + m + l
            {30, 70, 0, 30},    // medium or large: m + l
            {20, 40, 0, 30},    // large: l
        };
        for (unsigned atLeast = 1; atLeast <= 3; ++atLeast) {
            std::vector<uint32_t> expected;
            for (uint32_t n : perTile[atLeast - 1]) expected.push_back(4 * n);
            EXPECT_EQ(p.count(4, atLeast, dy ? 2 : 1), expected) << "codes >= " << atLeast;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Matrices, Density, ::testing::Values(0u, 1u, 2u));

}  // namespace
}  // namespace inkdot::test
