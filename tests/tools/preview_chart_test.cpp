// The preview of the printed page and the built-in test chart.
#include <gtest/gtest.h>

#include "image/image_reader.h"
#include "image/preview.h"
#include "image/test_chart.h"
#include "temp_dir.h"

namespace inkdot::tools {
namespace {

using test::TempDir;

TEST(PreviewGeometry, BoxesAreSquareOnPaper) {
    const PreviewGeometry wide = previewGeometry(2400, 900, 1440, 720, 1000);
    EXPECT_EQ(wide.boxWidth, 2 * wide.boxHeight);
    EXPECT_LE(wide.width, 1000u);
    EXPECT_EQ(wide.width, 2400 / wide.boxWidth);
    const PreviewGeometry tall = previewGeometry(1000, 2000, 360, 720, 1000);
    EXPECT_EQ(tall.boxHeight, 2 * tall.boxWidth);
    const PreviewGeometry small = previewGeometry(300, 200, 720, 720, 1000);
    EXPECT_EQ(small.boxWidth, 1u);
    EXPECT_EQ(small.width, 300u);
    EXPECT_EQ(small.height, 200u);
    // A partial box at the edge still gets a preview pixel.
    EXPECT_EQ(previewGeometry(2001, 11, 720, 720, 1000).width, 667u);  // boxes of 3, the last one partial
    // A very tall page keeps its preview within 20 000 rows, which a PNG
    // holds: 1 000 000 lines in boxes of 50, 10 columns in one box.
    const PreviewGeometry needle = previewGeometry(10, 1000000, 720, 720, 1000);
    EXPECT_EQ(needle.boxHeight, 50u);
    EXPECT_EQ(needle.height, 20000u);
    EXPECT_EQ(needle.width, 1u);
}

// Builds a preview of `lines` identical printed lines and returns its first pixel.
std::vector<uint8_t> previewOf(const TempDir& dir, unsigned planes, unsigned bits, const std::vector<uint8_t>& line,
                               uint32_t width, uint32_t lines) {
    std::string error;
    PreviewBuilder preview;
    EXPECT_TRUE(preview.open(dir.file("p.png"), width, lines, 720, 720, planes, bits, 1, error)) << error;
    for (uint32_t y = 0; y < lines; ++y) EXPECT_TRUE(preview.addLine(line.data(), line.size() / planes, error));
    EXPECT_TRUE(preview.finish(error)) << error;
    auto reader = openImage(dir.file("p.png"), error);
    EXPECT_TRUE(reader) << error;
    std::vector<uint8_t> pixel(size_t{reader->width()} * 3);
    EXPECT_TRUE(reader->readRow(pixel.data(), error)) << error;
    pixel.resize(3);
    return pixel;
}

TEST(Preview, DrawsInkColoursAndAveragesCoverage) {
    TempDir dir;
    // Mono, one bit, 8 pixels: no dots is paper, all dots near black, half the
    // dots a mid gray (averaged in linear light, so lighter than 128).
    EXPECT_EQ(previewOf(dir, 1, 1, {0x00}, 8, 8), (std::vector<uint8_t>{255, 255, 255}));
    const auto solid = previewOf(dir, 1, 1, {0xFF}, 8, 8);
    EXPECT_LT(solid[0], 40);
    const auto half = previewOf(dir, 1, 1, {0xAA}, 8, 8);
    EXPECT_GT(half[0], 128);
    EXPECT_LT(half[0], 255);
    // Colour: a cyan plane full of dots is cyan; cyan over magenta is blue.
    const auto cyan = previewOf(dir, 4, 1, {0xFF, 0x00, 0x00, 0x00}, 8, 8);
    EXPECT_LT(cyan[0], 40);
    EXPECT_GT(cyan[2], 180);
    const auto blue = previewOf(dir, 4, 1, {0xFF, 0xFF, 0x00, 0x00}, 8, 8);
    EXPECT_LT(blue[0], 40);
    EXPECT_LT(blue[1], 40);
    EXPECT_GT(blue[2], blue[1] + 40);
    // Two bits: small dots cover less than large ones.
    const auto small = previewOf(dir, 1, 2, {0x55, 0x55}, 8, 8);
    const auto large = previewOf(dir, 1, 2, {0xFF, 0xFF}, 8, 8);
    EXPECT_GT(small[0], large[0] + 50);
}

TEST(TestChart, HasItsBandsWhereExpected) {
    const uint32_t w = 1200, h = 900;
    uint8_t rgb[3];
    auto at = [&](uint32_t x, uint32_t y) {
        chartPixel(x, y, w, h, rgb);
        return std::vector<int>{rgb[0], rgb[1], rgb[2]};
    };
    EXPECT_EQ(at(0, 10), (std::vector<int>{255, 255, 255})) << "gray ramp starts at paper";
    EXPECT_EQ(at(w - 1, 10), (std::vector<int>{0, 0, 0})) << "and ends at black";
    EXPECT_EQ(at(w - 1, 160), (std::vector<int>{0, 0, 0})) << "last gray step";
    EXPECT_EQ(at(w - 1, 210), (std::vector<int>{0, 255, 255})) << "cyan ramp";
    EXPECT_EQ(at(w - 1, 260), (std::vector<int>{255, 0, 255})) << "magenta ramp";
    EXPECT_EQ(at(w - 1, 310), (std::vector<int>{255, 255, 0})) << "yellow ramp";
    EXPECT_EQ(at(w - 1, 370), (std::vector<int>{255, 0, 0})) << "red ramp";
    EXPECT_EQ(at(w - 1, 420), (std::vector<int>{0, 255, 0})) << "green ramp";
    EXPECT_EQ(at(w - 1, 470), (std::vector<int>{0, 0, 255})) << "blue ramp";
    EXPECT_EQ(at(0, 630), (std::vector<int>{255, 0, 0})) << "hue sweep at full colour";
    EXPECT_EQ(at(0, 899), (std::vector<int>{255, 224, 196})) << "lightest skin tone";
    EXPECT_EQ(at(w / 2, 880), (std::vector<int>{0, 0, 0})) << "darkest patch";
    // The gray ramp is neutral and darkens left to right.
    for (uint32_t x = 1; x < w; ++x) {
        const auto a = at(x - 1, 50), b = at(x, 50);
        EXPECT_EQ(b[0], b[1]);
        EXPECT_EQ(b[1], b[2]);
        EXPECT_LE(b[0], a[0]);
    }
}

}  // namespace
}  // namespace inkdot::tools
