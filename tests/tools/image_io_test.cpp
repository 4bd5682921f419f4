// Image input and output: alpha over paper, the three readers, plane files.
#include <gtest/gtest.h>

#include "image/image_reader.h"
#include "image/plane_writer.h"
#include "image_writers.h"
#include "temp_dir.h"

namespace inkdot::tools {
namespace {

using test::readBytes;
using test::TempDir;
using test::writeBytes;

std::vector<uint8_t> convert(const SampleLayout& layout, std::vector<uint16_t> samples, uint32_t width) {
    std::vector<uint8_t> out(size_t{width} * layout.colourChannels);
    convertRow(layout, samples.data(), width, out.data());
    return out;
}

TEST(ConvertRow, CompositesAlphaOverWhite) {
    SampleLayout rgba{3, true, false, false, 255};
    EXPECT_EQ(convert(rgba, {0, 0, 0, 0}, 1), (std::vector<uint8_t>{255, 255, 255})) << "transparent is paper";
    EXPECT_EQ(convert(rgba, {10, 20, 30, 255}, 1), (std::vector<uint8_t>{10, 20, 30})) << "opaque is itself";
    // Black at alpha 128: 255 × 127 / 255 = 127 of white shows through.
    EXPECT_EQ(convert(rgba, {0, 0, 0, 128}, 1), (std::vector<uint8_t>{127, 127, 127}));
    SampleLayout premultiplied{1, true, true, false, 255};
    // 100 premultiplied at alpha 200: 100 + 55 of white.
    EXPECT_EQ(convert(premultiplied, {100, 200}, 1), (std::vector<uint8_t>{155}));
}

// Every pixel of a file, converted to 8-bit gray or RGB; empty when it cannot be opened.
std::vector<uint8_t> readFile(const std::string& path, uint32_t channels) {
    std::string error;
    auto reader = openImage(path, error);
    EXPECT_TRUE(reader) << error;
    if (!reader) return {};
    EXPECT_EQ(reader->channels(), channels) << path;
    std::vector<uint8_t> out(size_t{reader->width()} * reader->height() * channels);
    for (uint32_t y = 0; y < reader->height(); ++y)
        EXPECT_TRUE(reader->readRow(&out[size_t{y} * reader->width() * channels], error)) << error;
    return out;
}

// Each format's depths, alpha and gray encodings, as 8-bit gray or RGB on white paper.
TEST(ImageReader, ReadsEveryFormatIntoEightBitSamples) {
    TempDir dir;
    writeBytes(dir.file("a.pgm"), std::string("P5\n# made by hand\n3 2\n255\n") + std::string("\x00\x80\xff\x01\x02\x03", 6));
    writeBytes(dir.file("b.ppm"), std::string("P6 1 1 65535\n") + std::string("\xff\xff\x00\x00\x80\x00", 6));
    ASSERT_TRUE(test::writeTestPng(dir.file("rgba.png"), 2, 1, PNG_COLOR_TYPE_RGBA, 8, {255, 0, 0, 255, 0, 0, 0, 0}));
    ASSERT_TRUE(test::writeTestPng(dir.file("g16.png"), 3, 1, PNG_COLOR_TYPE_GRAY, 16, {0, 32768, 65535}));
    ASSERT_TRUE(test::writeTestPng(dir.file("ga.png"), 1, 2, PNG_COLOR_TYPE_GRAY_ALPHA, 8, {0, 0, 50, 255}));
    ASSERT_TRUE(test::writeTestTiff(dir.file("rgb.tif"), 2, 1, {}, {1, 2, 3, 4, 5, 6}));
    ASSERT_TRUE(test::writeTestTiff(dir.file("g16.tif"), 2, 1, {PHOTOMETRIC_MINISBLACK, 1, 16, 0, false, {}}, {65535, 257}));
    ASSERT_TRUE(test::writeTestTiff(dir.file("white.tif"), 2, 1, {PHOTOMETRIC_MINISWHITE, 1, 8, 0, false, {}}, {0, 255}));
    ASSERT_TRUE(test::writeTestTiff(dir.file("rgba.tif"), 1, 1, {PHOTOMETRIC_RGB, 4, 8, EXTRASAMPLE_UNASSALPHA, false, {}},
                                    {0, 0, 0, 0}));
    const struct { const char* file; uint32_t channels; std::vector<uint8_t> pixels; } cases[] = {
        {"a.pgm", 1, {0, 128, 255, 1, 2, 3}},  // 3 x 2, a comment in the header
        {"b.ppm", 3, {255, 0, 128}},           // 16-bit samples
        {"rgba.png", 3, {255, 0, 0, 255, 255, 255}},
        {"g16.png", 1, {0, 128, 255}},
        {"ga.png", 1, {255, 50}},
        {"rgb.tif", 3, {1, 2, 3, 4, 5, 6}},
        {"g16.tif", 1, {255, 1}},
        {"white.tif", 1, {255, 0}},
        {"rgba.tif", 3, {255, 255, 255}},
    };
    for (const auto& c : cases) EXPECT_EQ(readFile(dir.file(c.file), c.channels), c.pixels) << c.file;
}

// Sizes are checked against the readers' limits before anything is
// allocated for them (1 000 000 pixels a side, 256 MB for a whole interlaced
// PNG: 10 000 x 10 000 RGBA16 is 800 MB); damaged headers and layouts the
// readers do not handle are refused by name.
TEST(ImageReader, RefusesWhatItCannotReadBeforeAllocating) {
    TempDir dir;
    writeBytes(dir.file("wide.pgm"), "P5 16777216 1 255\n");
    writeBytes(dir.file("tall.ppm"), "P6 1 99999999999 255\n");
    writeBytes(dir.file("zero.pgm"), "P5 4 4 0\n");
    writeBytes(dir.file("words.pgm"), "P5 four 4 255\n");
    writeBytes(dir.file("huge.png"), test::claimedPng(1000000, 1000000, true));
    writeBytes(dir.file("big.png"), test::claimedPng(10000, 10000, true));
    writeBytes(dir.file("wide.png"), test::claimedPng(1000001, 1, false));
    writeBytes(dir.file("x.gif"), "GIF89a....");
    ASSERT_TRUE(test::writeTestTiff(dir.file("wide.tif"), 1000001, 1, {PHOTOMETRIC_MINISBLACK, 1, 8, 0, false, {}},
                                    std::vector<uint16_t>(1000001)));
    ASSERT_TRUE(test::writeTestTiff(dir.file("tiled.tif"), 16, 16, {PHOTOMETRIC_RGB, 3, 8, 0, true, {}}, {}));
    ASSERT_TRUE(test::writeTestTiff(dir.file("sep.tif"), 1, 1, {PHOTOMETRIC_SEPARATED, 4, 8, 0, false, {}}, {0, 0, 0, 0}));
    const struct { const char* file; const char* why; } cases[] = {
        {"wide.pgm", "too large (16777216 x 1 pixels; at most 1000000 pixels a side"},
        {"tall.ppm", "too large (1 x 99999999999 pixels"},
        {"zero.pgm", "maxval"},
        {"words.pgm", "damaged PNM header"},
        {"huge.png", "needs 7629394 MB"},  // 10^12 pixels of 8 bytes
        {"big.png", "needs 762 MB, more than the 256 MB allowed; save it without interlacing"},
        {"wide.png", "too large (1000001 x 1 pixels"},
        {"x.gif", "is not a PNG, PNM (P5/P6) or TIFF image"},
        {"none.png", "cannot open"},
        {"wide.tif", "too large (1000001 x 1 pixels"},
        {"tiled.tif", "tiled TIFF"},
        {"sep.tif", "only gray and RGB"},
    };
    for (const auto& c : cases) {
        std::string error;
        EXPECT_FALSE(openImage(dir.file(c.file), error)) << c.file;
        EXPECT_NE(error.find(c.why), std::string::npos) << c.file << ": " << error;
    }
}

// A file that ends before its last row fails that row and names the file.
TEST(ImageReader, RefusesRowsPastTheEndOfTheFile) {
    TempDir dir;
    writeBytes(dir.file("short.pgm"), "P5 64 64 255\nabc");
    std::vector<uint16_t> samples(64 * 64);
    for (size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<uint16_t>(i * 7919 % 256);
    ASSERT_TRUE(test::writeTestPng(dir.file("full.png"), 64, 64, PNG_COLOR_TYPE_GRAY, 8, samples));
    const std::string bytes = readBytes(dir.file("full.png"));
    writeBytes(dir.file("cut.png"), bytes.substr(0, bytes.size() / 2));
    for (const char* file : {"short.pgm", "cut.png"}) {
        std::string error;
        auto reader = openImage(dir.file(file), error);
        ASSERT_TRUE(reader) << error;
        std::vector<uint8_t> row(64);
        bool allRead = true;
        for (int y = 0; y < 64 && allRead; ++y) allRead = reader->readRow(row.data(), error);
        EXPECT_FALSE(allRead) << file;
        EXPECT_NE(error.find(file), std::string::npos) << error;
    }
}

TEST(PlaneWriter, WritesPbmAsIsAndTwoBitPlanesAsFourLevelPgm) {
    TempDir dir;
    std::string error;
    PlaneWriter one;
    ASSERT_TRUE(one.open(dir.file("one.pbm"), 10, 1, 1, error)) << error;
    const uint8_t line1[2] = {0xA5, 0xC0};
    ASSERT_TRUE(one.writeLine(line1, error));
    ASSERT_TRUE(one.finish(error)) << error;
    EXPECT_EQ(readBytes(dir.file("one.pbm")), std::string("P4\n10 1\n\xA5\xC0", 10));

    PlaneWriter two;
    ASSERT_TRUE(two.open(dir.file("two.pgm"), 5, 1, 2, error)) << error;
    const uint8_t line2[2] = {0b00011011, 0b11000000};  // codes 0 1 2 3 | 3
    ASSERT_TRUE(two.writeLine(line2, error));
    ASSERT_TRUE(two.finish(error)) << error;
    EXPECT_EQ(readBytes(dir.file("two.pgm")), std::string("P5\n5 1\n3\n\x03\x02\x01\x00\x00", 14));
}

}  // namespace
}  // namespace inkdot::tools
