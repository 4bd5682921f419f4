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

// Byte i of plane p on printed line y of a page whose inks differ in
// density by plane, by column and by band of lines.
uint8_t busyPageByte(unsigned p, unsigned y, unsigned i) {
    uint32_t h = (p * 0x9E3779B1u) ^ (y * 0x85EBCA77u) ^ (i * 0xC2B2AE3Du);
    h ^= h >> 15;
    h *= 0x2C1B3C6Du;
    h ^= h >> 12;
    const uint8_t a = static_cast<uint8_t>(h), b = static_cast<uint8_t>(h >> 8), c = static_cast<uint8_t>(h >> 16);
    switch (p) {
        case 0: return a;
        case 1: return a & b;
        case 2: return i < 3 ? a & b & c : a | b;
        default: return y < 10 ? 0 : a & c;
    }
}

TEST(Preview, KeepsTheLookOfTheDotByDotAverage) {
    // 37 x 23 dots at 1440 x 720, at most 4 preview pixels across: boxes of
    // 10 x 5 dots, the last column 7 dots wide, the last row 3 lines high,
    // and spare bits past the page edge that must not count. The expected
    // pixels are what the preview made when it summed coverage dot by dot
    // in floats and encoded sRGB with the power function; the byte-wise sums
    // give the same one-bit pixels, and two-bit ones within one step, as
    // 35 and 65 hundredths add up in another order.
    const std::vector<uint8_t> expected[2] = {
        {136, 135, 157, 143, 161, 176, 142, 135, 107, 176, 170, 96,  137, 142, 156, 126, 135, 175, 136, 126,
         111, 145, 142, 99,  115, 123, 128, 113, 115, 139, 113, 107, 90,  122, 110, 67,  106, 103, 121, 107,
         111, 128, 126, 132, 107, 108, 102, 62,  103, 110, 121, 104, 95,  101, 116, 124, 96,  131, 124, 53},
        {139, 149, 171, 158, 149, 98,  145, 142, 93,  145, 137, 83,  135, 140, 166, 136, 133, 103, 146, 138,
         81,  142, 142, 90,  113, 118, 131, 118, 111, 82,  115, 103, 61,  107, 103, 57,  103, 105, 124, 111,
         109, 77,  108, 109, 68,  92,  97,  56,  106, 106, 112, 121, 125, 86,  113, 110, 69,  101, 99,  74},
    };
    TempDir dir;
    for (unsigned bits : {1u, 2u}) {
        const uint32_t width = 37, height = 23;
        const size_t stride = (width * bits + 7) / 8;
        std::string error;
        PreviewBuilder preview;
        ASSERT_TRUE(preview.open(dir.file("p.png"), width, height, 1440, 720, 4, bits, 4, error)) << error;
        std::vector<uint8_t> line(4 * stride);
        for (unsigned y = 0; y < height; ++y) {
            for (unsigned p = 0; p < 4; ++p)
                for (unsigned i = 0; i < stride; ++i) line[p * stride + i] = busyPageByte(p, y, i);
            ASSERT_TRUE(preview.addLine(line.data(), stride, error)) << error;
        }
        ASSERT_TRUE(preview.finish(error)) << error;
        auto reader = openImage(dir.file("p.png"), error);
        ASSERT_TRUE(reader) << error;
        ASSERT_EQ(reader->width() * reader->height() * 3, expected[bits - 1].size());
        std::vector<uint8_t> pixels(expected[bits - 1].size());
        for (uint32_t y = 0; y < reader->height(); ++y)
            ASSERT_TRUE(reader->readRow(&pixels[y * reader->width() * 3], error)) << error;
        for (size_t i = 0; i < pixels.size(); ++i)
            EXPECT_NEAR(pixels[i], expected[bits - 1][i], bits - 1) << bits << " bits, byte " << i;
    }
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
