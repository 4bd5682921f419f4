// rastertoinkdot in-process: its progress, what it says about input it cannot
// print, and a job cancelled before its first page. (Qualities, resolutions,
// the PPD's defaults, copies and both colour orders, checked against the
// engine's own halftoning, go through a real print queue in scripts/test-cups.sh.)
#include "cups/raster_filter.h"

#include <cups/raster.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>

#include "cups/cancel_request.h"
#include "cups/raster_summary.h"
#include "support/memory_watch.h"
#include "tools/test_files.h"

namespace inkdot::test {
namespace {

// Two pages of 16 x 4 RGB: the sync word (4 bytes), then per page a header
// (1796 bytes) and 192 bytes of pixels; the second header starts at byte 1992.
constexpr size_t kSecondHeader = 4 + 1796 + 192;

// The header of an 8-bit chunky input page.
cups_page_header2_t inputHeader(unsigned width, unsigned height, cups_cspace_t space = CUPS_CSPACE_RGB, unsigned dpi = 720) {
    cups_page_header2_t h;
    std::memset(&h, 0, sizeof h);
    const unsigned channels = space == CUPS_CSPACE_W ? 1 : space == CUPS_CSPACE_CMYK ? 4 : 3;
    h.HWResolution[0] = h.HWResolution[1] = dpi;
    h.cupsWidth = width;
    h.cupsHeight = height;
    h.cupsBitsPerColor = 8;
    h.cupsBitsPerPixel = 8 * channels;
    h.cupsBytesPerLine = width * channels;
    h.cupsColorSpace = space;
    return h;
}

// A flat page: every pixel the same bytes (none: the header alone).
struct Page {
    cups_page_header2_t header;
    std::vector<uint8_t> pixel;
};

// Writes the pages to `fd` as an uncompressed CUPS raster stream, as most raster makers write it.
void writeRaster(int fd, std::vector<Page> pages) {
    cups_raster_t* r = cupsRasterOpen(fd, CUPS_RASTER_WRITE);
    for (Page& page : pages) {
        std::vector<uint8_t> pixels;
        for (size_t i = 0; !page.pixel.empty() && i < size_t{page.header.cupsWidth} * page.header.cupsHeight; ++i)
            pixels.insert(pixels.end(), page.pixel.begin(), page.pixel.end());
        EXPECT_TRUE(cupsRasterWriteHeader2(r, &page.header));
        if (!pixels.empty()) cupsRasterWritePixels(r, pixels.data(), unsigned(pixels.size()));
    }
    cupsRasterClose(r);
    ::close(fd);
}

// Each run of the filter with its exit status, a line of its log and the pages
// it wrote. Bad input: an ERROR line naming why and status 1, never a crash;
// the good pages before a bad one are still written.
TEST(CupsRasterFilter, EveryRunEndsAsItsInputDeserves) {
    MemoryWatch memory;
    TempDir dir;
    const auto input = [&](const std::string& name, std::vector<Page> pages) {
        writeRaster(::open(dir.file(name).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), std::move(pages));
        return dir.file(name);
    };
    // A stream that stops inside the second header, or a header the CUPS
    // library refuses, fails the job where it used to end as "Printed 1 page".
    const Page rgb{inputHeader(16, 4), {1, 2, 3}};
    const std::string two = readBytes(input("two.ras", {rgb, rgb}));
    // A header field of page 2 (or at `header`) set to `value`, in the writer's own byte order.
    const auto field = [&](size_t offset, uint32_t value, size_t header = kSecondHeader) {
        std::string bytes = two;
        std::memcpy(&bytes[header + offset], &value, sizeof value);
        dir.write("field-" + std::to_string(header + offset) + ".ras", bytes);
        return dir.file("field-" + std::to_string(header + offset) + ".ras");
    };
    dir.write("inside.ras", two.substr(0, kSecondHeader + 1));
    dir.write("cut.ras", readBytes(input("full.ras", {{inputHeader(100, 50), {10, 20, 30}}})).substr(0, 4 + 1796 + 100 * 3 * 20));
    dir.write("junk.ras", "%PDF-1.4 this is not a raster stream");
    dir.write("sync-only.ras", "RaSt");
    const struct { std::string path; int status; const char* says; const char* options = ""; size_t pages = 0; } cases[] = {
        // A good run, gray at normal quality: a page of three lines reports 33, 66 and 100.
        {input("gray.ras", {{inputHeader(50, 3, CUPS_CSPACE_W), {128}}}), 0,
         "INFO: Printing page 1\nDEBUG: Page 1: 50 x 3 at 720x720 dpi, gray, normal quality: ordered dither, 2 bits, banded\n"
         "ATTR: job-media-progress=33\nATTR: job-media-progress=66\nATTR: job-media-progress=100\nPAGE: 1 1\nINFO: Printed 1 page\n",
         "", 1},
        {dir.file("cut.ras"), 1, "ends after 20 of 50 lines", "InkdotOrder=Planar"},
        {field(offsetof(cups_page_header2_t, cupsWidth), 0), 1, "Page 2: Empty page of 0 x 4 pixels", "", 1},
        {field(offsetof(cups_page_header2_t, cupsHeight), 0), 1,
         "Page 2: the page header is malformed: an empty page of 16 x 0 pixels", "", 1},
        {field(offsetof(cups_page_header2_t, cupsBytesPerLine), 47), 1, "lines of 47 bytes for 16 pixels of 24 bits", "", 1},
        // A colour space no enumerator names, read as a number (fuzz_raster_filter).
        {field(offsetof(cups_page_header2_t, cupsColorSpace), 64), 1, "Page 2: Unsupported colour space 64", "", 1},
        {field(offsetof(cups_page_header2_t, cupsColorOrder), 77), 1, "colour order 77", "", 1},
        // A first header claiming lines of 2 GB, which the CUPS library would
        // allocate for before handing the header over (fuzz_raster_filter).
        {field(offsetof(cups_page_header2_t, cupsBytesPerLine), 2172021600u, 4), 1,
         "Page 1: the page header is malformed: lines of 2172021600 bytes, more than"},
        {dir.file("inside.ras"), 1, "ends inside the header of page 2", "", 1},
        {input("cmyk.ras", {rgb, {inputHeader(16, 4, CUPS_CSPACE_CMYK), {0, 0, 0, 0}}}), 1,
         "ERROR: Page 2: Unsupported colour space 6", "", 1},
        {field(offsetof(cups_page_header2_t, cupsBitsPerColor), 16, 4), 1, "bit depth"},
        // The engine holds lines of up to 2^24 - 1 pixels.
        {input("wide.ras", {{inputHeader(1u << 24, 1, CUPS_CSPACE_W), {}}}), 1, "cannot be halftoned"},
        {input("600.ras", {{inputHeader(16, 4, CUPS_CSPACE_RGB, 600), {0, 0, 0}}}), 1, "600x600"},
        {dir.file("junk.ras"), 1, "not a CUPS raster stream"},
        {dir.file("missing.ras"), 1, "Unable to open"},
        {dir.file("sync-only.ras"), 1, "holds no pages"},
        {dir.file("two.ras"), 1, "InkdotGamma", "InkdotGamma=9"},
        {dir.file("two.ras"), 0, "INFO: Job cancelled after 0 pages\n", "cancel"},  // before the first page: nothing written
    };
    for (const auto& c : cases) {
        cups::FilterArgs args;
        args.options = c.options;
        args.file = c.path;
        const int out = ::open(dir.file("out.ras").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        std::FILE* file = std::fopen(dir.file("filter.log").c_str(), "w");
        cups::setCancelRequested(args.options == "cancel");
        EXPECT_EQ(cups::runRasterFilter(args, -1, out, file), c.status) << c.says;
        cups::setCancelRequested(false);
        ::close(out);
        std::fclose(file);
        const std::string log = readBytes(dir.file("filter.log"));
        EXPECT_NE(log.find(c.says), std::string::npos) << log;
        EXPECT_TRUE(c.status != 0 || c.pages == 0 || log == c.says) << "a good run's whole log";
        EXPECT_EQ(log.find("ERROR: ") != std::string::npos, c.status != 0) << log;
        if (c.pages == 0 && c.status != 0) continue;
        std::vector<cups::PageSummary> pages;
        std::string error;
        const int in = ::open(dir.file("out.ras").c_str(), O_RDONLY);
        EXPECT_TRUE(cups::summariseRaster(in, pages, error)) << error;
        ::close(in);
        EXPECT_EQ(pages.size(), c.pages) << c.says;
    }
}

}  // namespace
}  // namespace inkdot::test
