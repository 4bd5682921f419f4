// rastertoinkdot end to end in-process: raster pages in, halftoned pages out.
#include "cups/raster_filter.h"

#include <gtest/gtest.h>

#include "raster_writer.h"
#include "support/memory_watch.h"
#include "tools/temp_dir.h"

namespace inkdot::test {
namespace {

using cups::PageSummary;

class CupsRasterFilter : public ::testing::Test {
protected:
    std::string input(std::vector<InputPage> pages) {
        const std::string path = dir.file("in.ras");
        writeRasterFile(path, std::move(pages));
        return path;
    }
    FilterRun run(const std::string& path, const std::string& options = "", int copies = 1) {
        return runFilter(dir.path().string(), path, options, copies);
    }
    // A run that must fail: exit 1, an ERROR line naming `why`, no crash.
    void expectRefused(const std::string& path, const std::string& why, const std::string& options = "") {
        const FilterRun r = run(path, options);
        EXPECT_EQ(r.status, 1);
        ASSERT_FALSE(r.lines("ERROR: ").empty()) << r.log;
        EXPECT_TRUE(r.logHas(why)) << r.log;
    }

    MemoryWatch memory;
    TempDir dir;
};

TEST_F(CupsRasterFilter, GrayPagesBecomeBlackPagesWhoseInkFollowsTone) {
    std::vector<InputPage> pages;
    for (uint8_t level : {255, 192, 128, 64, 0}) pages.push_back(flatPage(inputHeader(200, 40, CUPS_CSPACE_W), {level}));
    const FilterRun r = run(input(pages));
    ASSERT_EQ(r.status, 0) << r.log;
    ASSERT_TRUE(r.outputReadable);
    ASSERT_EQ(r.pages.size(), 5u);
    EXPECT_EQ(r.pages[0].planes[0].dots, 0u) << "white takes no ink";
    for (size_t p = 0; p < r.pages.size(); ++p) {
        const cups_page_header2_t& h = r.pages[p].header;
        EXPECT_EQ(h.cupsColorSpace, CUPS_CSPACE_K);
        EXPECT_EQ(h.cupsNumColors, 1u);
        EXPECT_EQ(h.cupsBitsPerColor, 2u);  // normal quality at 720x720: two-bit dither
        EXPECT_EQ(h.cupsWidth, 200u);
        EXPECT_EQ(h.cupsHeight, 40u);
        if (p > 0) {
            EXPECT_GT(r.pages[p].coverage(0), r.pages[p - 1].coverage(0)) << "page " << p + 1;
        }
    }
    EXPECT_GT(r.pages[4].coverage(0), 0.9) << "black is (nearly) full ink";
}

TEST_F(CupsRasterFilter, QualityAndResolutionSetTheOutputBits) {
    const std::string path = input({flatPage(inputHeader(64, 8, CUPS_CSPACE_RGB, 720, 360), {90, 120, 150}),
                                    flatPage(inputHeader(64, 8, CUPS_CSPACE_RGB, 360, 720), {90, 120, 150})});
    FilterRun r = run(path, "InkdotQuality=Draft");
    ASSERT_EQ(r.status, 0) << r.log;
    ASSERT_EQ(r.pages.size(), 2u);
    EXPECT_EQ(r.pages[0].header.cupsBitsPerColor, 1u);
    EXPECT_EQ(r.pages[1].header.cupsBitsPerColor, 1u);
    r = run(path, "InkdotQuality=High");
    ASSERT_EQ(r.status, 0) << r.log;
    EXPECT_EQ(r.pages[0].header.cupsBitsPerColor, 1u) << "720x360 has no dot sizes";
    EXPECT_EQ(r.pages[1].header.cupsBitsPerColor, 2u);
    EXPECT_EQ(r.pages[1].header.HWResolution[0], 360u);
    EXPECT_EQ(r.pages[1].header.HWResolution[1], 720u);
}

TEST_F(CupsRasterFilter, PlanarAndBandedCarryTheSameDots) {
    const std::string path = input({patternPage(inputHeader(150, 30), [](unsigned x, unsigned y, unsigned c) {
        return static_cast<uint8_t>((x * 3 + y * 5 + c * 70) & 0xFF);
    })});
    const FilterRun banded = run(path, "InkdotOrder=Banded");
    const FilterRun planar = run(path, "InkdotOrder=Planar");
    ASSERT_EQ(banded.status, 0) << banded.log;
    ASSERT_EQ(planar.status, 0) << planar.log;
    ASSERT_EQ(planar.pages.size(), 1u);
    EXPECT_EQ(banded.pages[0].header.cupsColorOrder, CUPS_ORDER_BANDED);
    EXPECT_EQ(planar.pages[0].header.cupsColorOrder, CUPS_ORDER_PLANAR);
    for (unsigned k = 0; k < 4; ++k) {
        EXPECT_EQ(planar.pages[0].planes[k].dots, banded.pages[0].planes[k].dots) << "plane " << k;
        EXPECT_EQ(planar.pages[0].planes[k].ink, banded.pages[0].planes[k].ink) << "plane " << k;
    }
}

TEST_F(CupsRasterFilter, CopiesRepeatEachPage) {
    const std::string path = input({flatPage(inputHeader(100, 20), {200, 100, 50}),
                                    flatPage(inputHeader(100, 20, CUPS_CSPACE_W), {100})});
    const FilterRun r = run(path, "", 3);
    ASSERT_EQ(r.status, 0) << r.log;
    ASSERT_EQ(r.pages.size(), 6u);
    for (size_t p = 0; p < 6; ++p) {
        const PageSummary& first = r.pages[p / 3 * 3];
        EXPECT_EQ(r.pages[p].header.cupsColorSpace, first.header.cupsColorSpace);
        for (unsigned k = 0; k < first.planes.size(); ++k) EXPECT_EQ(r.pages[p].planes[k].ink, first.planes[k].ink);
    }
    EXPECT_EQ(r.pages[0].header.cupsColorSpace, CUPS_CSPACE_CMYK);
    EXPECT_EQ(r.pages[3].header.cupsColorSpace, CUPS_CSPACE_K);
    EXPECT_EQ(r.lines("PAGE: "), (std::vector<std::string>{"PAGE: 1 3", "PAGE: 2 3"}));
}

TEST_F(CupsRasterFilter, ReportsProgressPerPage) {
    const FilterRun r = run(input({flatPage(inputHeader(50, 200, CUPS_CSPACE_W), {128}),
                                   flatPage(inputHeader(50, 3, CUPS_CSPACE_W), {128})}));
    ASSERT_EQ(r.status, 0) << r.log;
    EXPECT_TRUE(r.logHas("INFO: Printing page 1\n"));
    EXPECT_TRUE(r.logHas("INFO: Printing page 2\n"));
    const auto progress = r.lines("ATTR: job-media-progress=");
    // Page 1 passes every tenth; page 2 (three lines) reports 33, 66 and 100.
    std::vector<std::string> expected;
    for (int p = 10; p <= 100; p += 10) expected.push_back("ATTR: job-media-progress=" + std::to_string(p));
    for (int p : {33, 66, 100}) expected.push_back("ATTR: job-media-progress=" + std::to_string(p));
    EXPECT_EQ(progress, expected);
}

TEST_F(CupsRasterFilter, ReadsDefaultsFromTheQueuePpd) {
    dir.write("queue.ppd", "*DefaultInkdotQuality: Draft\n*DefaultInkdotOrder: Planar\n");
    const std::string path = input({flatPage(inputHeader(64, 8), {128, 128, 128})});
    FilterRun r = runFilter(dir.path().string(), path, "", 1, dir.file("queue.ppd"));
    ASSERT_EQ(r.status, 0) << r.log;
    EXPECT_EQ(r.pages[0].header.cupsBitsPerColor, 1u);
    EXPECT_EQ(r.pages[0].header.cupsColorOrder, CUPS_ORDER_PLANAR);
    r = runFilter(dir.path().string(), path, "InkdotQuality=High", 1, dir.file("queue.ppd"));
    ASSERT_EQ(r.status, 0) << r.log;
    EXPECT_EQ(r.pages[0].header.cupsBitsPerColor, 2u);
}

// Bad input: an ERROR line and exit status 1, never a crash.

TEST_F(CupsRasterFilter, TruncatedStreamIsReported) {
    const std::string path = input({flatPage(inputHeader(100, 50), {10, 20, 30})});
    // Cut in the middle of the page's pixels (the header takes 1800 bytes).
    truncateFile(path, 4 + 1796 + 100 * 3 * 20);
    expectRefused(path, "truncated");
    const FilterRun r = run(path, "InkdotOrder=Planar");
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.logHas("ends after 20 of 50 lines")) << r.log;
}

// Two pages of 16 x 4 RGB: the sync word (4 bytes), then per page a
// header (1796 bytes) and 192 bytes of pixels; the second header starts at
// byte 1992. A stream that stops inside it, or a header the CUPS library
// refuses, fails the job where it used to end as "Printed 1 page".
TEST_F(CupsRasterFilter, AStreamCutOrMalformedInAPageHeaderFailsTheJob) {
    constexpr off_t kSecondHeader = 4 + 1796 + 192;
    const auto patched = [&](size_t offset, uint32_t value) {
        const std::string path = input({flatPage(inputHeader(16, 4), {1, 2, 3}), flatPage(inputHeader(16, 4), {1, 2, 3})});
        std::string bytes = readText(path);
        std::memcpy(&bytes[kSecondHeader + offset], &value, sizeof value);  // the writer's own byte order
        const std::string name = "patched-" + std::to_string(offset) + ".ras";
        dir.write(name, bytes);
        return dir.file(name);
    };
    const struct { std::string path; const char* why; } cases[] = {
        {patched(offsetof(cups_page_header2_t, cupsWidth), 0), "Page 2: Empty page of 0 x 4 pixels"},
        {patched(offsetof(cups_page_header2_t, cupsHeight), 0), "Page 2: the page header is malformed: an empty page of 16 x 0 pixels"},
        {patched(offsetof(cups_page_header2_t, cupsBytesPerLine), 47), "lines of 47 bytes for 16 pixels of 24 bits"},
        // A colour space no enumerator names, read as a number (fuzz_raster_filter).
        {patched(offsetof(cups_page_header2_t, cupsColorSpace), 64), "Page 2: Unsupported colour space 64"},
        {patched(offsetof(cups_page_header2_t, cupsColorOrder), 77), "colour order 77"},
    };
    for (const auto& c : cases) expectRefused(c.path, c.why);
    // A first header claiming lines of 2 GB, which the CUPS library would
    // allocate for before handing the header over (fuzz_raster_filter).
    const std::string path = input({flatPage(inputHeader(16, 4), {1, 2, 3})});
    std::string bytes = readText(path);
    const uint32_t huge = 2172021600u;
    std::memcpy(&bytes[4 + offsetof(cups_page_header2_t, cupsBytesPerLine)], &huge, sizeof huge);
    dir.write("huge.ras", bytes);
    expectRefused(dir.file("huge.ras"), "Page 1: the page header is malformed: lines of 2172021600 bytes, more than");
    for (off_t cut : {kSecondHeader + 1, kSecondHeader + 1795}) {
        const std::string path = input({flatPage(inputHeader(16, 4), {1, 2, 3}), flatPage(inputHeader(16, 4), {1, 2, 3})});
        truncateFile(path, cut);
        expectRefused(path, "ends inside the header of page 2");
    }
}

TEST_F(CupsRasterFilter, PagesItCannotPrintAreReported) {
    cups_page_header2_t deep = inputHeader(16, 4, CUPS_CSPACE_RGB);
    deep.cupsBitsPerColor = 16;
    deep.cupsBitsPerPixel = 48;
    deep.cupsBytesPerLine = 16 * 6;
    const struct { InputPage page; const char* why; } cases[] = {
        {flatPage(inputHeader(16, 4, CUPS_CSPACE_CMYK), {0, 0, 0, 0}), "colour space"},
        {InputPage{deep, std::vector<uint8_t>(16 * 6 * 4)}, "bit depth"},
        // The engine holds lines of up to 2^24 - 1 pixels.
        {InputPage{inputHeader(1u << 24, 1, CUPS_CSPACE_W), {}}, "cannot be halftoned"},
        {flatPage(inputHeader(16, 4, CUPS_CSPACE_RGB, 600, 600), {0, 0, 0}), "600x600"},
    };
    for (const auto& c : cases) expectRefused(input({c.page}), c.why);
}

TEST_F(CupsRasterFilter, AGoodPageBeforeABadOneIsStillWritten) {
    const FilterRun r = run(input({flatPage(inputHeader(16, 4), {0, 0, 0}),
                                   flatPage(inputHeader(16, 4, CUPS_CSPACE_CMYK), {0, 0, 0, 0})}));
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.logHas("ERROR: Page 2: ")) << r.log;
    ASSERT_TRUE(r.outputReadable);
    EXPECT_EQ(r.pages.size(), 1u);
}

TEST_F(CupsRasterFilter, InputThatIsNotAPageStreamIsReported) {
    dir.write("junk.ras", "%PDF-1.4 this is not a raster stream");
    dir.write("empty.ras", "");
    dir.write("sync-only.ras", "RaSt");
    expectRefused(dir.file("junk.ras"), "not a CUPS raster stream");
    expectRefused(dir.file("empty.ras"), "not a CUPS raster stream");
    expectRefused(dir.file("missing.ras"), "Unable to open");
    expectRefused(dir.file("sync-only.ras"), "holds no pages");
    expectRefused(input({flatPage(inputHeader(16, 4), {0, 0, 0})}), "InkdotGamma", "InkdotGamma=9");
}

TEST(CupsFilterArgs, ReadsTheSchedulersCommandLine) {
    const char* argv[] = {"rastertoinkdot", "42", "alice", "chart", "2", "InkdotQuality=High", "/tmp/in.ras"};
    cups::FilterArgs a;
    std::string error;
    ASSERT_TRUE(cups::parseFilterArgs(7, argv, a, error)) << error;
    EXPECT_EQ(a.jobId, "42");
    EXPECT_EQ(a.user, "alice");
    EXPECT_EQ(a.title, "chart");
    EXPECT_EQ(a.copies, 2);
    EXPECT_EQ(a.options, "InkdotQuality=High");
    EXPECT_EQ(a.file, "/tmp/in.ras");
    ASSERT_TRUE(cups::parseFilterArgs(6, argv, a, error));
    EXPECT_EQ(a.file, "");
    EXPECT_FALSE(cups::parseFilterArgs(5, argv, a, error));
    EXPECT_NE(error.find("Usage"), std::string::npos);
    for (const char* copies : {"0", "-1", "two", "", "10000"}) {
        const char* bad[] = {"rastertoinkdot", "1", "u", "t", copies, ""};
        EXPECT_FALSE(cups::parseFilterArgs(6, bad, a, error)) << copies;
    }
}

}  // namespace
}  // namespace inkdot::test
