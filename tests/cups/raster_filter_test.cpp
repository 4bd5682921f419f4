// rastertoinkdot in-process: the settings of its pages, its progress, and
// what it says about input it cannot print. (Gray and colour charts, copies
// and both colour orders, checked against the engine's own halftoning, go
// through a real print queue in scripts/test-cups.sh.)
#include "cups/raster_filter.h"

#include <gtest/gtest.h>

#include "raster_writer.h"
#include "support/memory_watch.h"

namespace inkdot::test {
namespace {

class CupsRasterFilter : public ::testing::Test {
protected:
    std::string input(std::vector<InputPage> pages, const std::string& name = "in.ras") {
        writeRasterFile(dir.file(name), std::move(pages));
        return dir.file(name);
    }
    FilterRun run(const std::string& path, const std::string& options = "", const std::string& ppd = "") {
        return runFilter(dir.path().string(), path, options, ppd);
    }

    MemoryWatch memory;
    TempDir dir;
};

TEST_F(CupsRasterFilter, QualityResolutionAndThePpdSetTheOutput) {
    dir.write("queue.ppd", "*DefaultInkdotQuality: Draft\n*DefaultInkdotOrder: Planar\n");
    const std::string path = input({flatPage(inputHeader(64, 8, CUPS_CSPACE_RGB, 720, 360), {90, 120, 150}),
                                    flatPage(inputHeader(64, 8, CUPS_CSPACE_RGB, 360, 720), {90, 120, 150})});
    const struct { const char* options; bool ppd; unsigned bits720x360, bits360x720, order; } cases[] = {
        {"InkdotQuality=Draft", false, 1, 1, CUPS_ORDER_BANDED},
        {"InkdotQuality=High", false, 1, 2, CUPS_ORDER_BANDED},  // 720x360 has no dot sizes
        {"", true, 1, 1, CUPS_ORDER_PLANAR},                      // the queue's defaults
        {"InkdotQuality=High", true, 1, 2, CUPS_ORDER_PLANAR},
    };
    for (const auto& c : cases) {
        const FilterRun r = run(path, c.options, c.ppd ? dir.file("queue.ppd") : "");
        ASSERT_EQ(r.status, 0) << r.log;
        ASSERT_EQ(r.pages.size(), 2u);
        EXPECT_EQ(r.pages[0].header.cupsBitsPerColor, c.bits720x360) << c.options << c.ppd;
        EXPECT_EQ(r.pages[1].header.cupsBitsPerColor, c.bits360x720) << c.options << c.ppd;
        EXPECT_EQ(r.pages[1].header.cupsColorOrder, c.order) << c.options << c.ppd;
        EXPECT_EQ(r.pages[1].header.HWResolution[0] * 1000 + r.pages[1].header.HWResolution[1], 360720u);
    }
}

TEST_F(CupsRasterFilter, ReportsProgressPerPage) {
    const FilterRun r = run(input({flatPage(inputHeader(50, 200, CUPS_CSPACE_W), {128}),
                                   flatPage(inputHeader(50, 3, CUPS_CSPACE_W), {128})}));
    ASSERT_EQ(r.status, 0) << r.log;
    EXPECT_TRUE(r.logHas("INFO: Printing page 1\n") && r.logHas("INFO: Printing page 2\n")) << r.log;
    // Page 1 passes every tenth; page 2 (three lines) reports 33, 66 and 100.
    std::vector<std::string> expected;
    for (int p : {10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 33, 66, 100})
        expected.push_back("ATTR: job-media-progress=" + std::to_string(p));
    EXPECT_EQ(r.lines("ATTR: job-media-progress="), expected);
}

// Bad input: an ERROR line naming why and exit status 1, never a crash; the
// good pages before a bad one are still written.
TEST_F(CupsRasterFilter, InputItCannotPrintIsReported) {
    // Two pages of 16 x 4 RGB: the sync word (4 bytes), then per page a
    // header (1796 bytes) and 192 bytes of pixels; the second header starts
    // at byte 1992. A stream that stops inside it, or a header the CUPS
    // library refuses, fails the job where it used to end as "Printed 1 page".
    constexpr size_t kSecondHeader = 4 + 1796 + 192;
    const InputPage rgb = flatPage(inputHeader(16, 4), {1, 2, 3});
    const std::string two = readBytes(input({rgb, rgb}));
    const auto patched = [&](size_t at, uint32_t value, size_t cut = 0) {
        std::string bytes = cut != 0 ? two.substr(0, cut) : two;
        if (cut == 0) std::memcpy(&bytes[at], &value, sizeof value);  // the writer's own byte order
        const std::string name = "patched-" + std::to_string(at) + "-" + std::to_string(cut) + ".ras";
        dir.write(name, bytes);
        return dir.file(name);
    };
    const auto field = [&](size_t offset, uint32_t value) { return patched(kSecondHeader + offset, value); };
    const std::string full = readBytes(input({flatPage(inputHeader(100, 50), {10, 20, 30})}, "full.ras"));
    dir.write("cut.ras", full.substr(0, 4 + 1796 + 100 * 3 * 20));  // 20 of 50 lines
    dir.write("junk.ras", "%PDF-1.4 this is not a raster stream");
    dir.write("empty.ras", "");
    dir.write("sync-only.ras", "RaSt");
    cups_page_header2_t deep = inputHeader(16, 4, CUPS_CSPACE_RGB);
    deep.cupsBitsPerColor = 16;
    deep.cupsBitsPerPixel = 48;
    deep.cupsBytesPerLine = 16 * 6;
    const struct { std::string path; const char* why; const char* options = ""; size_t pagesWritten = 0; } cases[] = {
        {dir.file("cut.ras"), "truncated"},
        {dir.file("cut.ras"), "ends after 20 of 50 lines", "InkdotOrder=Planar"},
        {field(offsetof(cups_page_header2_t, cupsWidth), 0), "Page 2: Empty page of 0 x 4 pixels", "", 1},
        {field(offsetof(cups_page_header2_t, cupsHeight), 0),
         "Page 2: the page header is malformed: an empty page of 16 x 0 pixels", "", 1},
        {field(offsetof(cups_page_header2_t, cupsBytesPerLine), 47), "lines of 47 bytes for 16 pixels of 24 bits", "", 1},
        // A colour space no enumerator names, read as a number (fuzz_raster_filter).
        {field(offsetof(cups_page_header2_t, cupsColorSpace), 64), "Page 2: Unsupported colour space 64", "", 1},
        {field(offsetof(cups_page_header2_t, cupsColorOrder), 77), "colour order 77", "", 1},
        // A first header claiming lines of 2 GB, which the CUPS library would
        // allocate for before handing the header over (fuzz_raster_filter).
        {patched(4 + offsetof(cups_page_header2_t, cupsBytesPerLine), 2172021600u),
         "Page 1: the page header is malformed: lines of 2172021600 bytes, more than"},
        {patched(0, 0, kSecondHeader + 1), "ends inside the header of page 2", "", 1},
        {patched(0, 0, kSecondHeader + 1795), "ends inside the header of page 2", "", 1},
        {input({rgb, flatPage(inputHeader(16, 4, CUPS_CSPACE_CMYK), {0, 0, 0, 0})}, "cmyk.ras"), "ERROR: Page 2: Unsupported colour space 6", "", 1},
        {input({InputPage{deep, std::vector<uint8_t>(16 * 6 * 4)}}, "deep.ras"), "bit depth"},
        // The engine holds lines of up to 2^24 - 1 pixels.
        {input({InputPage{inputHeader(1u << 24, 1, CUPS_CSPACE_W), {}}}, "wide.ras"), "cannot be halftoned"},
        {input({flatPage(inputHeader(16, 4, CUPS_CSPACE_RGB, 600, 600), {0, 0, 0})}, "600.ras"), "600x600"},
        {dir.file("junk.ras"), "not a CUPS raster stream"},
        {dir.file("empty.ras"), "not a CUPS raster stream"},
        {dir.file("missing.ras"), "Unable to open"},
        {dir.file("sync-only.ras"), "holds no pages"},
        {input({rgb}, "gamma.ras"), "InkdotGamma", "InkdotGamma=9"},
    };
    for (const auto& c : cases) {
        const FilterRun r = run(c.path, c.options);
        EXPECT_EQ(r.status, 1) << c.why;
        EXPECT_FALSE(r.lines("ERROR: ").empty()) << r.log;
        EXPECT_TRUE(r.logHas(c.why)) << r.log;
        if (c.pagesWritten > 0) {
            EXPECT_EQ(r.pages.size(), c.pagesWritten) << c.why;
        }
    }
}

}  // namespace
}  // namespace inkdot::test
