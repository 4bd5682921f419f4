// Colour-managed input: profiles embedded in PNG and TIFF files are found,
// rows are converted into device RGB exactly as LittleCMS's own transform
// does, and unusable profiles are refused with a clear message.
#include <gtest/gtest.h>
#include <lcms2.h>
#include <png.h>
#include <tiffio.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "cli/cli.h"
#include "image/colour_profile.h"
#include "image/image_reader.h"
#include "tools/image_writers.h"
#include "tools/temp_dir.h"

namespace inkdot::tools {
namespace {

using test::TempDir;

std::vector<uint8_t> saveProfile(cmsHPROFILE profile) {
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    std::vector<uint8_t> bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

// An RGB profile with its own primaries and a plain power-law tone curve.
std::vector<uint8_t> makeRgbProfile(cmsCIExyYTRIPLE primaries, double gamma) {
    cmsCIExyY d65;
    cmsWhitePointFromTemp(&d65, 6504);
    cmsToneCurve* curve = cmsBuildGamma(nullptr, gamma);
    cmsToneCurve* curves[3] = {curve, curve, curve};
    cmsHPROFILE profile = cmsCreateRGBProfile(&d65, &primaries, curves);
    cmsFreeToneCurve(curve);
    return saveProfile(profile);
}

// Wide-gamut primaries (those of Adobe RGB) with gamma 2.2.
std::vector<uint8_t> wideProfile() { return makeRgbProfile({{0.64, 0.33, 1}, {0.21, 0.71, 1}, {0.15, 0.06, 1}}, 2.2); }

std::vector<uint8_t> grayProfile() {
    cmsCIExyY d50 = {0.3457, 0.3585, 1};
    cmsToneCurve* curve = cmsBuildGamma(nullptr, 2.2);
    cmsHPROFILE profile = cmsCreateGrayProfile(&d50, curve);
    cmsFreeToneCurve(curve);
    return saveProfile(profile);
}

// An 8-bit RGB PNG, with an iCCP chunk when `profile` is not empty.
void writePng(const std::string& path, uint32_t w, uint32_t h, const std::vector<uint8_t>& pixels,
              const std::vector<uint8_t>& profile) {
    ASSERT_TRUE(test::writeTestPng(path, w, h, PNG_COLOR_TYPE_RGB, 8, {pixels.begin(), pixels.end()}, profile));
}

// An 8-bit RGB TIFF with the profile (any bytes) in its ICC tag.
void writeTiff(const std::string& path, uint32_t w, uint32_t h, const std::vector<uint8_t>& pixels,
               const std::vector<uint8_t>& profile) {
    test::TiffParams params;
    params.icc = profile;
    ASSERT_TRUE(test::writeTestTiff(path, w, h, params, {pixels.begin(), pixels.end()}));
}

// Every level of every channel at least once, plus mixtures.
std::vector<uint8_t> testPixels(uint32_t w, uint32_t h) {
    std::vector<uint8_t> p(size_t{w} * h * 3);
    for (size_t i = 0; i < p.size(); ++i) p[i] = static_cast<uint8_t>((i * 37 + i / 3 * 11) & 255);
    return p;
}

// What LittleCMS itself makes of the pixels: source profile → sRGB.
std::vector<uint8_t> lcmsReference(const std::vector<uint8_t>& profile, const std::vector<uint8_t>& pixels,
                                   cmsUInt32Number intent, bool gray = false) {
    cmsHPROFILE source = cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size()));
    cmsHPROFILE srgb = cmsCreate_sRGBProfile();
    cmsHTRANSFORM t = cmsCreateTransform(source, gray ? TYPE_GRAY_8 : TYPE_RGB_8, srgb, TYPE_RGB_8, intent, 0);
    const size_t count = gray ? pixels.size() : pixels.size() / 3;
    std::vector<uint8_t> out(count * 3);
    cmsDoTransform(t, pixels.data(), out.data(), static_cast<cmsUInt32Number>(count));
    cmsDeleteTransform(t);
    cmsCloseProfile(srgb);
    cmsCloseProfile(source);
    return out;
}

// Reads the image and converts every row with its embedded profile.
std::vector<uint8_t> convertImage(const std::string& path, RenderingIntent intent) {
    std::string error;
    auto image = openImage(path, error);
    EXPECT_TRUE(image) << error;
    if (!image) return {};
    auto conversion = InputConversion::create(image->iccProfile(), image->channels(), intent, "test", error);
    EXPECT_TRUE(conversion) << error;
    if (!conversion) return {};
    std::vector<uint8_t> row(size_t{image->width()} * image->channels()), out;
    std::vector<uint8_t> device(size_t{image->width()} * 3);
    for (uint32_t y = 0; y < image->height(); ++y) {
        EXPECT_TRUE(image->readRow(row.data(), error)) << error;
        conversion->convertRow(row.data(), image->width(), device.data());
        out.insert(out.end(), device.begin(), device.end());
    }
    return out;
}

TEST(ColourProfile, EmbeddedPngProfileConvertsAsLittleCmsDoes) {
    TempDir dir;
    const auto profile = wideProfile();
    const auto pixels = testPixels(64, 8);
    writePng(dir.file("wide.png"), 64, 8, pixels, profile);
    std::string error;
    EXPECT_EQ(openImage(dir.file("wide.png"), error)->iccProfile(), profile);
    const struct {
        RenderingIntent ours;
        cmsUInt32Number lcms;
    } intents[] = {{RenderingIntent::Perceptual, INTENT_PERCEPTUAL},
                   {RenderingIntent::Relative, INTENT_RELATIVE_COLORIMETRIC},
                   {RenderingIntent::Saturation, INTENT_SATURATION},
                   {RenderingIntent::Absolute, INTENT_ABSOLUTE_COLORIMETRIC}};
    for (const auto& intent : intents) {
        const auto converted = convertImage(dir.file("wide.png"), intent.ours);
        EXPECT_EQ(converted, lcmsReference(profile, pixels, intent.lcms)) << intent.lcms;
        EXPECT_NE(converted, pixels);  // a wide-gamut profile moves the colours
    }
}

TEST(ColourProfile, UnusableProfilesAreRefused) {
    std::string error;
    EXPECT_FALSE(InputConversion::create({}, 3, RenderingIntent::Perceptual, "empty.icc", error));
    EXPECT_EQ(error, "empty.icc is not a usable ICC profile: it is empty");
    const std::vector<uint8_t> junk(200, 0x5A);
    EXPECT_FALSE(InputConversion::create(junk, 3, RenderingIntent::Perceptual, "junk.icc", error));
    EXPECT_EQ(error.rfind("junk.icc is not a usable ICC profile: ", 0), 0u) << error;
    auto truncated = wideProfile();
    truncated.resize(truncated.size() / 2);
    EXPECT_FALSE(InputConversion::create(truncated, 3, RenderingIntent::Perceptual, "half.icc", error));
    EXPECT_EQ(error.rfind("half.icc is not a usable ICC profile: ", 0), 0u) << error;
    EXPECT_FALSE(InputConversion::create(grayProfile(), 3, RenderingIntent::Perceptual, "gray.icc", error));
    EXPECT_EQ(error, "gray.icc is a gray profile, but the image is RGB");
}

class PrintWithProfile : public ::testing::Test {
protected:
    int print(std::vector<std::string> args) {
        out.str("");
        err.str("");
        args.insert(args.begin(), "print");
        return runCli(args, out, err);
    }
    TempDir dir;
    std::ostringstream out, err;
};

TEST_F(PrintWithProfile, ConvertsTaggedInput) {
    writePng(dir.file("wide.png"), 16, 4, testPixels(16, 4), wideProfile());
    ASSERT_EQ(print({dir.file("wide.png"), "-o", dir.file("out"), "--intent", "relative"}), kExitOk) << err.str();
    EXPECT_NE(out.str().find("converted into device RGB (sRGB)"), std::string::npos) << out.str();
    // Untagged input prints without a conversion.
    writePng(dir.file("plain.png"), 16, 4, testPixels(16, 4), {});
    ASSERT_EQ(print({dir.file("plain.png"), "-o", dir.file("out")}), kExitOk) << err.str();
    EXPECT_EQ(out.str().find("converted"), std::string::npos) << out.str();
}

TEST_F(PrintWithProfile, InvalidProfilesFailClearly) {
    writePng(dir.file("plain.png"), 16, 4, testPixels(16, 4), {});
    dir.write("junk.icc", std::string(300, 'x'));
    EXPECT_EQ(print({dir.file("plain.png"), "-o", dir.file("out"), "--input-profile", dir.file("junk.icc")}),
              kExitFailed);
    EXPECT_NE(err.str().find("junk.icc is not a usable ICC profile"), std::string::npos) << err.str();
    EXPECT_FALSE(std::filesystem::exists(dir.file("out")));

    EXPECT_EQ(print({dir.file("plain.png"), "-o", dir.file("out"), "--input-profile", dir.file("none.icc")}),
              kExitFailed);
    EXPECT_NE(err.str().find("cannot open"), std::string::npos) << err.str();

    // libtiff keeps whatever bytes the ICC tag holds: a broken embedded profile.
    writeTiff(dir.file("broken.tif"), 8, 2, testPixels(8, 2), std::vector<uint8_t>(150, 1));
    EXPECT_EQ(print({dir.file("broken.tif"), "-o", dir.file("out")}), kExitFailed);
    EXPECT_NE(err.str().find("the profile embedded in"), std::string::npos) << err.str();

    EXPECT_EQ(print({dir.file("broken.tif"), "-o", dir.file("out"), "--input-profile", "sRGB"}), kExitOk) << err.str();

    EXPECT_EQ(print({dir.file("plain.png"), "-o", dir.file("out"), "--intent", "vivid"}), kExitUsage);
    EXPECT_NE(err.str().find("--intent must be perceptual, relative, saturation or absolute"), std::string::npos);
}

}  // namespace
}  // namespace inkdot::tools
