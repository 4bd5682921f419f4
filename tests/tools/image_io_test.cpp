// The three image readers: each format's depths, alpha and gray encodings,
// read as 8-bit gray or RGB over white paper. (Their refusals are in cli_test.)
#include <gtest/gtest.h>

#include "image/image_reader.h"
#include "tools/test_files.h"

namespace inkdot::tools {
namespace {

TEST(ImageReader, ReadsEveryFormatIntoEightBitSamples) {
    test::TempDir dir;
    dir.write("a.pgm", std::string("P5\n# made by hand\n3 2\n255\n") + std::string("\x00\x80\xff\x01\x02\x03", 6));
    dir.write("b.ppm", std::string("P6 1 1 65535\n") + std::string("\xff\xff\x00\x00\x80\x00", 6));
    ASSERT_TRUE(test::writeTestPng(dir.file("rgba.png"), 2, 1, PNG_COLOR_TYPE_RGBA, 8, {255, 0, 0, 255, 0, 0, 0, 0}));
    ASSERT_TRUE(test::writeTestPng(dir.file("g16.png"), 3, 1, PNG_COLOR_TYPE_GRAY, 16, {0, 32768, 65535}));
    ASSERT_TRUE(test::writeTestPng(dir.file("ga.png"), 3, 1, PNG_COLOR_TYPE_GRAY_ALPHA, 8, {0, 0, 50, 255, 0, 128}));
    ASSERT_TRUE(test::writeTestTiff(dir.file("rgb.tif"), 2, 1, {}, {1, 2, 3, 4, 5, 6}));
    ASSERT_TRUE(test::writeTestTiff(dir.file("g16.tif"), 2, 1, {PHOTOMETRIC_MINISBLACK, 1, 16}, {65535, 257}));
    ASSERT_TRUE(test::writeTestTiff(dir.file("white.tif"), 2, 1, {PHOTOMETRIC_MINISWHITE, 1}, {0, 255}));
    ASSERT_TRUE(test::writeTestTiff(dir.file("rgba.tif"), 1, 1, {PHOTOMETRIC_RGB, 4, 8, EXTRASAMPLE_UNASSALPHA}, {0, 0, 0, 0}));
    ASSERT_TRUE(test::writeTestTiff(dir.file("pre.tif"), 1, 1, {PHOTOMETRIC_RGB, 4, 8, EXTRASAMPLE_ASSOCALPHA}, {100, 0, 9, 200}));
    const struct { const char* file; uint32_t channels; std::vector<uint8_t> pixels; } cases[] = {
        {"a.pgm", 1, {0, 128, 255, 1, 2, 3}},         // 3 x 2, a comment in the header
        {"b.ppm", 3, {255, 0, 128}},                  // 16-bit samples
        {"rgba.png", 3, {255, 0, 0, 255, 255, 255}},  // transparent is paper
        {"g16.png", 1, {0, 128, 255}},
        {"ga.png", 1, {255, 50, 127}},  // black at alpha 128: 255 × 127 / 255 of white shows
        {"rgb.tif", 3, {1, 2, 3, 4, 5, 6}},
        {"g16.tif", 1, {255, 1}},
        {"white.tif", 1, {255, 0}},
        {"rgba.tif", 3, {255, 255, 255}},
        {"pre.tif", 3, {155, 55, 64}},  // premultiplied: the sample plus 255 - 200 of white
    };
    for (const auto& c : cases) {
        std::string error;
        auto reader = openImage(dir.file(c.file), error);
        ASSERT_TRUE(reader && reader->channels() == c.channels) << c.file << ": " << error;
        std::vector<uint8_t> pixels(size_t{reader->width()} * reader->height() * c.channels);
        for (uint32_t y = 0; y < reader->height(); ++y)
            EXPECT_TRUE(reader->readRow(&pixels[size_t{y} * reader->width() * c.channels], error)) << error;
        EXPECT_EQ(pixels, c.pixels) << c.file;
    }
}

}  // namespace
}  // namespace inkdot::tools
