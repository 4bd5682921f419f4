// Job options and PPD defaults → the filter's settings.
#include "cups/filter_settings.h"

#include <gtest/gtest.h>

#include <cstring>

namespace inkdot::cups {
namespace {

FilterSettings settingsFrom(const char* options, std::string* errorOut = nullptr, bool* ok = nullptr) {
    OptionList list;
    list.parse(options);
    FilterSettings s;
    std::string error;
    const bool read = readFilterSettings(list, s, error);
    if (errorOut) *errorOut = error;
    if (ok) *ok = read;
    return s;
}

TEST(CupsFilterSettings, ReadsEveryOptionOverTheDefaults) {
    FilterSettings s = settingsFrom("");
    EXPECT_EQ(s.quality, Quality::Normal);
    EXPECT_EQ(s.order, PlaneOrder::Banded);
    EXPECT_EQ(s.colour.brightness, 0);
    EXPECT_EQ(s.colour.contrast, 0);
    EXPECT_EQ(s.colour.saturation, 0);
    EXPECT_EQ(s.colour.gamma, 150);
    s = settingsFrom("InkdotQuality=High InkdotOrder=Planar InkdotBrightness=-25 InkdotContrast=50 "
                     "InkdotSaturation=7 InkdotGamma=2.20");
    EXPECT_EQ(s.quality, Quality::High);
    EXPECT_EQ(s.order, PlaneOrder::Planar);
    EXPECT_EQ(s.colour.brightness, -25);
    EXPECT_EQ(s.colour.contrast, 50);
    EXPECT_EQ(s.colour.saturation, 7);
    EXPECT_EQ(s.colour.gamma, 220);
}

TEST(CupsFilterSettings, IppPrintQualityAndGammaForms) {
    EXPECT_EQ(settingsFrom("print-quality=3").quality, Quality::Draft);
    EXPECT_EQ(settingsFrom("print-quality=4").quality, Quality::Normal);
    EXPECT_EQ(settingsFrom("print-quality=5").quality, Quality::High);
    // The PPD option names the printer's own choice and wins.
    EXPECT_EQ(settingsFrom("print-quality=5 InkdotQuality=Draft").quality, Quality::Draft);
    // Gamma as a decimal or in hundredths.
    for (auto [text, gamma] : {std::pair{"1", 100}, {"1.8", 180}, {"2.25", 225}, {"3.00", 300}, {"250", 250}})
        EXPECT_EQ(settingsFrom((std::string("InkdotGamma=") + text).c_str()).colour.gamma, gamma) << text;
}

TEST(CupsFilterSettings, RefusesValuesOutOfRangeNamingTheOption) {
    for (const char* bad : {"InkdotBrightness=51", "InkdotContrast=-51", "InkdotSaturation=abc",
                            "InkdotBrightness=", "InkdotGamma=0.99", "InkdotGamma=3.01", "InkdotGamma=1.505",
                            "InkdotGamma=301", "InkdotGamma=x", "InkdotQuality=Best", "InkdotOrder=Chunky",
                            "print-quality=6"}) {
        std::string error;
        bool ok = true;
        settingsFrom(bad, &error, &ok);
        EXPECT_FALSE(ok) << bad;
        const std::string name(bad, std::strchr(bad, '=') - bad);
        EXPECT_NE(error.find(name), std::string::npos) << bad << ": " << error;
    }
}

TEST(CupsFilterSettings, PpdDefaultsApplyAndJobOptionsOverrideThem) {
    const std::string ppd =
        "*PPD-Adobe: \"4.3\"\n"
        "*DefaultInkdotQuality: High\n"
        "*DefaultInkdotGamma: 1.80\r\n"  // a CR LF PPD
        "*DefaultInkdotBrightness: 25\n"
        "*DefaultResolution: 720dpi\n"    // not ours: left to the raster maker
        "*InkdotQuality Draft/Draft: \"\"\n";
    OptionList list;
    addPpdDefaultsFromText(ppd, list);
    EXPECT_EQ(list.count(), 3);
    EXPECT_EQ(list.get("DefaultResolution"), nullptr);
    list.parse("InkdotBrightness=-10");
    FilterSettings s;
    std::string error;
    ASSERT_TRUE(readFilterSettings(list, s, error)) << error;
    EXPECT_EQ(s.quality, Quality::High);
    EXPECT_EQ(s.colour.gamma, 180);
    EXPECT_EQ(s.colour.brightness, -10);
}

TEST(CupsFilterSettings, AnUnreadablePpdAddsNothing) {
    OptionList list;
    addPpdDefaults("/nonexistent/inkdot.ppd", list);
    addPpdDefaults("", list);
    EXPECT_EQ(list.count(), 0);
}

}  // namespace
}  // namespace inkdot::cups
