// Colour-managed input: a profile embedded in a PNG or TIFF file converts rows
// into device RGB exactly as LittleCMS's own transform does, and a profile that
// cannot be used stops the print with a clear message.
#include <gtest/gtest.h>
#include <lcms2.h>

#include <sstream>

#include "cli/cli.h"
#include "image/colour_profile.h"
#include "image/image_reader.h"
#include "tools/test_files.h"

namespace inkdot::tools {
namespace {

// Wide-gamut primaries (those of Adobe RGB) with gamma 2.2 (`gray`: a gray profile of that curve).
std::vector<uint8_t> profile(bool gray = false) {
    cmsCIExyY d65 = {0.3127, 0.3290, 1};
    cmsCIExyYTRIPLE primaries = {{0.64, 0.33, 1}, {0.21, 0.71, 1}, {0.15, 0.06, 1}};
    cmsToneCurve* curve = cmsBuildGamma(nullptr, 2.2);
    cmsToneCurve* curves[3] = {curve, curve, curve};
    cmsHPROFILE p = gray ? cmsCreateGrayProfile(&d65, curve) : cmsCreateRGBProfile(&d65, &primaries, curves);
    cmsFreeToneCurve(curve);
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(p, nullptr, &size);
    std::vector<uint8_t> bytes(size);
    cmsSaveProfileToMem(p, bytes.data(), &size);
    cmsCloseProfile(p);
    return bytes;
}

TEST(ColourProfile, TaggedInputConvertsAsLittleCmsDoesAndBadProfilesStopThePrint) {
    test::TempDir dir;
    const auto wide = profile(), gray = profile(true);
    std::vector<uint16_t> samples(64 * 8 * 3);  // every level of every channel at least once, plus mixtures
    for (size_t i = 0; i < samples.size(); ++i) samples[i] = uint16_t((i * 37 + i / 3 * 11) & 255);
    const std::vector<uint8_t> pixels(samples.begin(), samples.end());
    ASSERT_TRUE(test::writeTestPng(dir.file("wide.png"), 64, 8, PNG_COLOR_TYPE_RGB, 8, samples, wide));
    const std::pair<RenderingIntent, cmsUInt32Number> intents[] = {
        {RenderingIntent::Perceptual, INTENT_PERCEPTUAL}, {RenderingIntent::Relative, INTENT_RELATIVE_COLORIMETRIC},
        {RenderingIntent::Saturation, INTENT_SATURATION}, {RenderingIntent::Absolute, INTENT_ABSOLUTE_COLORIMETRIC}};
    for (const auto& [ours, lcms] : intents) {
        std::string error;
        auto image = openImage(dir.file("wide.png"), error);
        ASSERT_TRUE(image && image->iccProfile() == wide) << error;
        auto conversion = InputConversion::create(image->iccProfile(), 3, ours, "test", error);
        ASSERT_TRUE(conversion) << error;
        std::vector<uint8_t> row(64 * 3), converted(pixels.size()), reference(pixels.size());
        for (uint32_t y = 0; y < 8; ++y) {
            ASSERT_TRUE(image->readRow(row.data(), error)) << error;
            conversion->convertRow(row.data(), 64, &converted[y * 64 * 3]);
        }
        // What LittleCMS itself makes of the pixels: source profile → sRGB.
        cmsHPROFILE source = cmsOpenProfileFromMem(wide.data(), cmsUInt32Number(wide.size())), srgb = cmsCreate_sRGBProfile();
        cmsHTRANSFORM t = cmsCreateTransform(source, TYPE_RGB_8, srgb, TYPE_RGB_8, lcms, 0);
        cmsDoTransform(t, pixels.data(), reference.data(), cmsUInt32Number(pixels.size() / 3));
        cmsDeleteTransform(t);
        cmsCloseProfile(srgb);
        cmsCloseProfile(source);
        EXPECT_EQ(converted, reference) << lcms;
        EXPECT_NE(converted, pixels) << "a wide-gamut profile moves the colours";
    }

    // Through the print command: tagged input is converted, untagged input is not.
    ASSERT_TRUE(test::writeTestPng(dir.file("plain.png"), 64, 8, PNG_COLOR_TYPE_RGB, 8, samples));
    test::TiffParams broken;  // libtiff keeps whatever bytes the ICC tag holds
    broken.icc.assign(150, 1);
    ASSERT_TRUE(test::writeTestTiff(dir.file("broken.tif"), 8, 2, broken, std::vector<uint16_t>(48, 7)));
    dir.write("junk.icc", std::string(300, 'x'));
    dir.write("empty.icc", "");
    dir.write("half.icc", std::string(wide.begin(), wide.begin() + std::ptrdiff_t(wide.size() / 2)));
    dir.write("gray.icc", std::string(gray.begin(), gray.end()));
    const struct { const char* input; std::vector<std::string> args; int status; const char* says; } cases[] = {
        {"wide.png", {"--intent", "relative"}, kExitOk, "converted into device RGB (sRGB)"},
        {"plain.png", {}, kExitOk, ""},
        {"plain.png", {"--input-profile", dir.file("junk.icc")}, kExitFailed, "junk.icc is not a usable ICC profile: "},
        {"plain.png", {"--input-profile", dir.file("empty.icc")}, kExitFailed, "empty.icc is not a usable ICC profile: it is empty"},
        {"plain.png", {"--input-profile", dir.file("half.icc")}, kExitFailed, "half.icc is not a usable ICC profile: "},
        {"plain.png", {"--input-profile", dir.file("gray.icc")}, kExitFailed, "gray.icc is a gray profile, but the image is RGB"},
        {"plain.png", {"--input-profile", dir.file("none.icc")}, kExitFailed, "cannot open"},
        {"broken.tif", {}, kExitFailed, "the profile embedded in"},
        {"broken.tif", {"--input-profile", "sRGB"}, kExitOk, ""},
    };
    for (const auto& c : cases) {
        std::vector<std::string> args{"print", dir.file(c.input), "-o", dir.file("out")};
        args.insert(args.end(), c.args.begin(), c.args.end());
        std::ostringstream out, err;
        std::filesystem::remove_all(dir.file("out"));
        EXPECT_EQ(runCli(args, out, err), c.status) << c.input << err.str();
        EXPECT_NE((out.str() + err.str()).find(c.says), std::string::npos) << out.str() << err.str();
        EXPECT_EQ(out.str().find("converted") != std::string::npos, c.status == kExitOk && *c.says != 0) << out.str();
        EXPECT_EQ(std::filesystem::exists(dir.file("out")), c.status == kExitOk) << c.input;
    }
}

}  // namespace
}  // namespace inkdot::tools
