// How the colour kernels walk their input: three bytes a pixel for every
// inputFormat but ink input (4), inputFormat 3 included.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "support/hand_context.h"

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

}  // namespace
}  // namespace inkdot
