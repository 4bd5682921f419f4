// How the colour kernels walk their input: three bytes a pixel for every
// inputFormat but ink input (4), inputFormat 3 included.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "support/hand_context.h"
#include "support/ht_fixture.h"

namespace inkdot {
namespace {

// Any tables the kernels accept, the same for every instance given one seed.
void randomTables(test::HandContext& h, uint32_t seed) {
    std::mt19937 rng(seed);
    std::vector<uint16_t> cells(8 * 4);
    for (auto& c : cells) c = static_cast<uint16_t>(rng() % 32);
    h.setMatrix(8, 4, cells);
    for (auto& node : h.conversion) node = rng();
    for (uint32_t v = 0; v < 256; ++v) {
        h.tone[v] = static_cast<uint16_t>(rng() % 40);
        h.dotValue[v] = static_cast<int16_t>(100 + rng() % 300);
        h.edThreshold[v] = static_cast<int16_t>(rng() % 256);
        h.setGridCell(static_cast<uint8_t>(v), static_cast<uint8_t>(rng() % 31), static_cast<uint8_t>(rng()));
        h.setSplit(static_cast<uint8_t>(v), static_cast<uint8_t>(rng() % 85), static_cast<uint8_t>(rng() % 85),
                   static_cast<uint8_t>(rng() % 85));
    }
    h.setSpread(56, 22, 11, 4);
}

// inputFormat 2 and 3 are one layout to every colour kernel: the same pixels,
// three bytes apart, give the same planes and error lines, also when doubled.
TEST(ColourInput, Formats2And3ReadTheSameThreeBytePixels) {
    std::mt19937 rng(5);
    std::vector<uint8_t> pixels(64 * 3);
    for (uint32_t i = 0; i < 64; ++i)
        for (uint32_t b = 0; b < 3; ++b) pixels[3 * i + b] = i % 5 == 0 ? 255 : static_cast<uint8_t>(rng());
    for (test::KernelSetup k : test::everyKernelSetup()) {
        if (k.colourMode == 0) continue;
        for (int32_t scaleMode : {k.scaleMode, 1}) {
            k.scaleMode = scaleMode;
            k.inputFormat = 2;
            test::HandContext two(k.settings());
            k.inputFormat = 3;
            test::HandContext three(k.settings());
            randomTables(two, 9);
            randomTables(three, 9);
            SCOPED_TRACE(testing::Message() << "method " << k.method << " bits " << k.outputBits << " "
                                            << k.resolutionX << "x" << k.resolutionY << " scaleMode " << scaleMode);
            ASSERT_EQ(two.ready().kernel, three.ready().kernel);
            for (uint32_t line = 0; line < 3; ++line) {
                std::vector<uint8_t> a(4 * 16, 0x5A), b(4 * 16, 0x5A);
                ASSERT_EQ(two.run(pixels.data(), a.data(), 16, 1, 37, 3, line), RC_OK);
                ASSERT_EQ(three.run(pixels.data(), b.data(), 16, 1, 37, 3, line), RC_OK);
                EXPECT_EQ(a, b) << "line " << line;
                for (unsigned e = 0; e < 4; ++e) EXPECT_EQ(two.errorLines[e], three.errorLines[e]) << "line " << line;
            }
        }
    }
}

// Worked by hand through the whole protocol: a grid that gives plane 2 full
// ink wherever byte 2 is low, and a run of two white pixels given three bytes
// apart with inputFormat 3. Pixel 1 is bytes 3..5 (255 255 255): white, so no
// plane prints. Reading it four bytes on (255 255 0) would have printed plane 2.
TEST(ColourInput, InputFormat3RunOfTwoWhitePixelsPrintsNothing) {
    test::MemoryWatch watch;
    test::ColourLut lut({0, 255}, [](int first, int, int) {
        return test::ColourLut::Node{0, 0, static_cast<uint8_t>(first == 0 ? 255 : 0), 0};
    });
    test::HtBlocks blocks;
    test::Bytes levels;
    for (int l = 0; l <= 240; l += 8) levels.push_back(static_cast<uint8_t>(l));
    levels.push_back(255);
    blocks.gridLevels = test::gridLevelBlock(levels);
    blocks.matrix = test::thresholdMatrixBlock(1, 1, {0});
    HtSettings s = test::htSettings(1, 1, 1, 16);  // error diffusion, colour, inputFormat 3, 720 x 720
    ASSERT_EQ(s.inputFormat, 3u);
    test::HtInstance ht(s, lut.lut, blocks);
    ASSERT_EQ(ht.rc, RC_OK);
    const uint8_t src[] = {255, 255, 255, 255, 255, 255, 0, 0};
    uint8_t dst[4 * 2];
    std::fill(std::begin(dst), std::end(dst), 0xA5);
    ASSERT_EQ(Halftone(ht.ctx, src, dst, 2, 0, 2, 0, 0, 0, 0, 0), RC_OK);
    for (unsigned plane = 0; plane < 4; ++plane) EXPECT_EQ(dst[2 * plane], 0) << "plane " << plane;
}

}  // namespace
}  // namespace inkdot
