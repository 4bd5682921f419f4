// Page headers → the engine's settings and the output page's header.
#include "cups/page_plan.h"

#include <gtest/gtest.h>

#include "raster_writer.h"

namespace inkdot::cups {
namespace {

using test::inputHeader;

constexpr Resolution kAllResolutions[] = {Resolution::R720x720, Resolution::R1440x720, Resolution::R360x720,
                                          Resolution::R720x360};

TEST(CupsPagePlan, EachEngineResolutionHasItsClassAndOthersNone) {
    Resolution r{};
    for (Resolution want : kAllResolutions) {
        const Dpi dpi = resolutionDpi(want);
        ASSERT_TRUE(resolutionClass(dpi.x, dpi.y, r)) << resolutionName(want);
        EXPECT_EQ(r, want);
    }
    for (auto [x, y] : {std::pair{600u, 600u}, {300u, 300u}, {720u, 1440u}, {0u, 0u}})
        EXPECT_FALSE(resolutionClass(x, y, r)) << x << "x" << y;
}

TEST(CupsPagePlan, QualityChoosesMethodAndBits) {
    const struct { Quality q; Resolution r; Method m; unsigned bits; } cases[] = {
        {Quality::Draft, Resolution::R720x720, Method::Threshold, 1},
        {Quality::Normal, Resolution::R1440x720, Method::Dither, 2},
        {Quality::High, Resolution::R360x720, Method::ErrorDiffusion, 2},
        // 720x360 has no dot sizes: normal and high fall back to one-bit error diffusion.
        {Quality::Normal, Resolution::R720x360, Method::ErrorDiffusion, 1},
        {Quality::High, Resolution::R720x360, Method::ErrorDiffusion, 1},
    };
    for (const auto& c : cases) {
        Method m{};
        unsigned bits = 0;
        chooseHalftone(c.q, c.r, m, bits);
        EXPECT_EQ(m, c.m) << int(c.q) << " " << resolutionName(c.r);
        EXPECT_EQ(bits, c.bits) << int(c.q) << " " << resolutionName(c.r);
    }
}

// Every plan the filter can make is one the engine and the default pack accept.
TEST(CupsPagePlan, EveryQualityResolutionAndColourModeOpensAJob) {
    std::string error;
    auto pack = openDefaultPack(error);
    ASSERT_TRUE(pack) << error;
    for (Resolution r : kAllResolutions) {
        const Dpi dpi = resolutionDpi(r);
        for (Quality q : {Quality::Draft, Quality::Normal, Quality::High}) {
            for (cups_cspace_t space : {CUPS_CSPACE_W, CUPS_CSPACE_RGB}) {
                FilterSettings settings;
                settings.quality = q;
                PagePlan plan;
                ASSERT_TRUE(planPage(inputHeader(64, 4, space, dpi.x, dpi.y), settings, plan, error)) << error;
                auto job = Job::open(plan.colour, plan.halftone, *pack, error);
                EXPECT_TRUE(job) << resolutionName(r) << " quality " << int(q) << " space " << space << ": "
                                 << error;
            }
        }
    }
}

TEST(CupsPagePlan, GrayAndRgbFamiliesAreRead) {
    FilterSettings settings;
    settings.colour.brightness = 10;
    PagePlan plan;
    std::string error;
    for (cups_cspace_t space : {CUPS_CSPACE_W, CUPS_CSPACE_SW}) {
        ASSERT_TRUE(planPage(inputHeader(100, 10, space), settings, plan, error)) << error;
        EXPECT_TRUE(plan.colour.mono);
        EXPECT_EQ(plan.inputBytesPerPixel, 1u);
    }
    for (cups_cspace_t space : {CUPS_CSPACE_RGB, CUPS_CSPACE_SRGB, CUPS_CSPACE_ADOBERGB}) {
        ASSERT_TRUE(planPage(inputHeader(100, 10, space, 1440, 720), settings, plan, error)) << error;
        EXPECT_FALSE(plan.colour.mono);
        EXPECT_EQ(plan.halftone.resolution, Resolution::R1440x720);
        EXPECT_EQ(plan.halftone.hscale, HScale::x1);
        EXPECT_EQ(plan.halftone.inputWidth, 100u);
        EXPECT_EQ(plan.height, 10u);
        EXPECT_EQ(plan.colour.brightness, 10);
    }
}

// Colour space, bit depth and resolution refusals are checked through the filter.
TEST(CupsPagePlan, RefusesLayoutsItCannotRead) {
    const FilterSettings settings;
    PagePlan plan;
    std::string error;
    cups_page_header2_t h = inputHeader(100, 10, CUPS_CSPACE_RGB);
    h.cupsColorOrder = CUPS_ORDER_BANDED;
    EXPECT_FALSE(planPage(h, settings, plan, error));
    h = inputHeader(100, 10, CUPS_CSPACE_RGB);
    h.cupsBytesPerLine = 301;
    EXPECT_FALSE(planPage(h, settings, plan, error));
    EXPECT_NE(error.find("301"), std::string::npos) << error;
    EXPECT_FALSE(planPage(inputHeader(0, 10, CUPS_CSPACE_W), settings, plan, error));
}

TEST(CupsPagePlan, OutputHeaderDescribesTheHalftonedLayout) {
    FilterSettings settings;
    settings.quality = Quality::High;
    PagePlan plan;
    std::string error;
    cups_page_header2_t in = inputHeader(101, 7, CUPS_CSPACE_RGB);
    std::strcpy(in.MediaType, "plain");
    ASSERT_TRUE(planPage(in, settings, plan, error));
    cups_page_header2_t out = outputHeader(in, plan);
    EXPECT_EQ(out.cupsColorSpace, CUPS_CSPACE_CMYK);
    EXPECT_EQ(out.cupsColorOrder, CUPS_ORDER_BANDED);
    EXPECT_EQ(out.cupsNumColors, 4u);
    EXPECT_EQ(out.cupsBitsPerColor, 2u);
    EXPECT_EQ(out.cupsBitsPerPixel, 2u);
    EXPECT_EQ(out.cupsWidth, 101u);
    EXPECT_EQ(out.cupsHeight, 7u);
    EXPECT_EQ(out.cupsBytesPerLine, 4u * 26u);  // 101 two-bit pixels take 26 bytes a plane
    EXPECT_STREQ(out.MediaType, "plain");
    EXPECT_EQ(out.HWResolution[0], 720u);
    EXPECT_EQ(outputPageBytes(plan), 4u * 26u * 7u);

    settings.quality = Quality::Draft;
    settings.order = PlaneOrder::Planar;
    in = inputHeader(101, 7, CUPS_CSPACE_W);
    ASSERT_TRUE(planPage(in, settings, plan, error));
    out = outputHeader(in, plan);
    EXPECT_EQ(out.cupsColorSpace, CUPS_CSPACE_K);
    EXPECT_EQ(out.cupsColorOrder, CUPS_ORDER_PLANAR);
    EXPECT_EQ(out.cupsNumColors, 1u);
    EXPECT_EQ(out.cupsBitsPerColor, 1u);
    EXPECT_EQ(out.cupsBytesPerLine, 13u);  // 101 one-bit pixels
}

}  // namespace
}  // namespace inkdot::cups
