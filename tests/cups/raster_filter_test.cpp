// rastertoinkdot in-process: its progress, what it says about input it cannot
// print, and a cancelled job. (Qualities, resolutions, the PPD's defaults,
// copies and both colour orders, checked against the engine's own halftoning,
// go through a real print queue in scripts/test-cups.sh.)
#include "cups/raster_filter.h"

#include <cups/raster.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

#include "cups/cancel_request.h"
#include "cups/raster_summary.h"
#include "support/memory_watch.h"
#include "tools/test_files.h"

namespace inkdot::test {
namespace {

// The header of an 8-bit chunky input page.
cups_page_header2_t inputHeader(unsigned width, unsigned height, cups_cspace_t space = CUPS_CSPACE_RGB, unsigned dpi = 720) {
    cups_page_header2_t h;
    std::memset(&h, 0, sizeof h);
    const unsigned channels = space == CUPS_CSPACE_W ? 1 : space == CUPS_CSPACE_CMYK ? 4 : 3;
    h.HWResolution[0] = h.HWResolution[1] = dpi;
    h.PageSize[0] = width * 72 / dpi;
    h.PageSize[1] = height * 72 / dpi;
    h.NumCopies = 1;
    h.cupsWidth = width;
    h.cupsHeight = height;
    h.cupsBitsPerColor = 8;
    h.cupsBitsPerPixel = 8 * channels;
    h.cupsBytesPerLine = width * channels;
    h.cupsColorSpace = space;
    h.cupsNumColors = channels;
    return h;
}

struct Page {
    cups_page_header2_t header;
    std::vector<uint8_t> pixels;  // empty: a flat page of the header's first pixel bytes
    std::vector<uint8_t> pixel = {};
};

// Writes the pages to `fd` as an uncompressed CUPS raster stream, as most raster makers write it.
void writeRaster(int fd, std::vector<Page> pages) {
    cups_raster_t* r = cupsRasterOpen(fd, CUPS_RASTER_WRITE);
    for (Page& page : pages) {
        const size_t flat = page.pixels.empty() ? size_t{page.header.cupsWidth} * page.header.cupsHeight : 0;
        for (size_t i = 0; i < flat; ++i)
            page.pixels.insert(page.pixels.end(), page.pixel.begin(), page.pixel.end());
        EXPECT_TRUE(cupsRasterWriteHeader2(r, &page.header));
        if (!page.pixels.empty()) cupsRasterWritePixels(r, page.pixels.data(), unsigned(page.pixels.size()));
    }
    cupsRasterClose(r);
    ::close(fd);
}

class CupsRasterFilter : public ::testing::Test {
protected:
    std::string input(const std::string& name, std::vector<Page> pages) {
        writeRaster(::open(dir.file(name).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), std::move(pages));
        return dir.file(name);
    }
    // One run of the filter: its status, its log, and the pages it wrote.
    int run(const std::string& path, const std::string& options = "", int inFd = -1) {
        cups::FilterArgs args;
        args.options = options;
        args.file = path;
        const int out = ::open(dir.file("out.ras").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        std::FILE* file = std::fopen(dir.file("filter.log").c_str(), "w");
        const int status = cups::runRasterFilter(args, inFd, out, file);
        ::close(out);
        std::fclose(file);
        log = readBytes(dir.file("filter.log"));
        return status;
    }
    std::vector<cups::PageSummary> pages() const {
        std::vector<cups::PageSummary> pages;
        std::string error;
        const int in = ::open(dir.file("out.ras").c_str(), O_RDONLY);
        EXPECT_TRUE(cups::summariseRaster(in, pages, error)) << error;
        ::close(in);
        return pages;
    }

    MemoryWatch memory;
    TempDir dir;
    std::string log;
};

TEST_F(CupsRasterFilter, ReportsProgressPerPage) {
    ASSERT_EQ(run(input("in.ras", {{inputHeader(50, 200, CUPS_CSPACE_W), {}, {128}}, {inputHeader(50, 3, CUPS_CSPACE_W), {}, {128}}})), 0);
    // Page 1 passes every tenth; page 2 (three lines) reports 33, 66 and 100.
    std::string expected = "INFO: Printing page 1\n";
    for (int p : {10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 0, 33, 66, 100})
        expected += p == 0 ? "INFO: Printing page 2\n" : "ATTR: job-media-progress=" + std::to_string(p) + "\n";
    std::string reported;
    for (size_t at = 0, end; at < log.size(); at = end + 1) {
        end = log.find('\n', at);
        if (log.compare(at, 6, "ATTR: ") == 0 || log.compare(at, 20, "INFO: Printing page ") == 0) reported += log.substr(at, end + 1 - at);
    }
    EXPECT_EQ(reported, expected) << log;
}

// Bad input: an ERROR line naming why and exit status 1, never a crash; the
// good pages before a bad one are still written.
TEST_F(CupsRasterFilter, InputItCannotPrintIsReported) {
    // Two pages of 16 x 4 RGB: the sync word (4 bytes), then per page a header
    // (1796 bytes) and 192 bytes of pixels; the second header starts at byte
    // 1992. A stream that stops inside it, or a header the CUPS library
    // refuses, fails the job where it used to end as "Printed 1 page".
    constexpr size_t kSecondHeader = 4 + 1796 + 192;
    const Page rgb{inputHeader(16, 4), {}, {1, 2, 3}};
    const std::string two = readBytes(input("two.ras", {rgb, rgb}));
    const auto patched = [&](size_t at, uint32_t value, size_t cut = 0) {
        std::string bytes = cut != 0 ? two.substr(0, cut) : two;
        if (cut == 0) std::memcpy(&bytes[at], &value, sizeof value);  // the writer's own byte order
        const std::string name = "patched-" + std::to_string(at) + "-" + std::to_string(cut) + ".ras";
        dir.write(name, bytes);
        return dir.file(name);
    };
    const auto field = [&](size_t offset, uint32_t value) { return patched(kSecondHeader + offset, value); };
    dir.write("cut.ras", readBytes(input("full.ras", {{inputHeader(100, 50), {}, {10, 20, 30}}})).substr(0, 4 + 1796 + 100 * 3 * 20));
    dir.write("junk.ras", "%PDF-1.4 this is not a raster stream");
    dir.write("empty.ras", "");
    dir.write("sync-only.ras", "RaSt");
    cups_page_header2_t deep = inputHeader(16, 4);
    deep.cupsBitsPerColor = 16;
    deep.cupsBitsPerPixel = 48;
    deep.cupsBytesPerLine = 16 * 6;
    const struct { std::string path; const char* why; const char* options = ""; size_t pagesWritten = 0; } cases[] = {
        {dir.file("cut.ras"), "truncated"},
        {dir.file("cut.ras"), "ends after 20 of 50 lines", "InkdotOrder=Planar"},
        {field(offsetof(cups_page_header2_t, cupsWidth), 0), "Page 2: Empty page of 0 x 4 pixels", "", 1},
        {field(offsetof(cups_page_header2_t, cupsHeight), 0), "Page 2: the page header is malformed: an empty page of 16 x 0 pixels", "", 1},
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
        {input("cmyk.ras", {rgb, {inputHeader(16, 4, CUPS_CSPACE_CMYK), {}, {0, 0, 0, 0}}}), "ERROR: Page 2: Unsupported colour space 6", "", 1},
        {input("deep.ras", {{deep, std::vector<uint8_t>(16 * 6 * 4)}}), "bit depth"},
        // The engine holds lines of up to 2^24 - 1 pixels.
        {input("wide.ras", {{inputHeader(1u << 24, 1, CUPS_CSPACE_W), {}}}), "cannot be halftoned"},
        {input("600.ras", {{inputHeader(16, 4, CUPS_CSPACE_RGB, 600), {}, {0, 0, 0}}}), "600x600"},
        {dir.file("junk.ras"), "not a CUPS raster stream"},
        {dir.file("empty.ras"), "not a CUPS raster stream"},
        {dir.file("missing.ras"), "Unable to open"},
        {dir.file("sync-only.ras"), "holds no pages"},
        {input("gamma.ras", {rgb}), "InkdotGamma", "InkdotGamma=9"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(run(c.path, c.options), 1) << c.why;
        EXPECT_NE(log.find("ERROR: "), std::string::npos) << log;
        EXPECT_NE(log.find(c.why), std::string::npos) << log;
        if (c.pagesWritten > 0) EXPECT_EQ(pages().size(), c.pagesWritten) << c.why;
    }
    // A job cancelled before its first page writes nothing and ends well.
    cups::setCancelRequested(true);
    EXPECT_EQ(run(dir.file("two.ras")), 0);
    cups::setCancelRequested(false);
    EXPECT_NE(log.find("INFO: Job cancelled after 0 pages"), std::string::npos) << log;
    EXPECT_TRUE(pages().empty());
}

// SIGTERM while a page streams in finishes the page blank, keeps the output a
// valid raster stream and exits 0.
TEST_F(CupsRasterFilter, SigtermEndsTheJobWithAWholeBlankedPage) {
    int data[2], ready[2];
    ASSERT_TRUE(::pipe(data) == 0 && ::pipe(ready) == 0);
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::close(data[1]);
        cups::watchForCancel();
        if (::write(ready[1], "", 1) != 1) ::_exit(3);  // the handler is in place
        ::_exit(run("", "", data[0]));
    }
    ::close(data[0]);
    char go = 1;
    ASSERT_EQ(::read(ready[0], &go, 1), 1);
    // Ten of a hundred black lines, then the cancel once the filter says the
    // page has started; the upstream end closes as the scheduler's killed
    // upstream filter would.
    cups_raster_t* r = cupsRasterOpen(data[1], CUPS_RASTER_WRITE);
    cups_page_header2_t h = inputHeader(64, 100, CUPS_CSPACE_W);
    ASSERT_TRUE(cupsRasterWriteHeader2(r, &h));
    std::vector<uint8_t> lines(64 * 10, 0);
    ASSERT_EQ(cupsRasterWritePixels(r, lines.data(), unsigned(lines.size())), lines.size());
    for (int tries = 0; tries < 1000 && readBytes(dir.file("filter.log")).find("Printing page 1") == std::string::npos; ++tries)
        ::usleep(10000);
    ASSERT_EQ(::kill(pid, SIGTERM), 0);
    cupsRasterClose(r);
    ::close(data[1]);
    int status = 0;
    ASSERT_EQ(::waitpid(pid, &status, 0), pid);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    log = readBytes(dir.file("filter.log"));
    EXPECT_TRUE(log.find("INFO: Job cancelled") != std::string::npos && log.find("ERROR") == std::string::npos) << log;
    const std::vector<cups::PageSummary> written = pages();
    ASSERT_EQ(written.size(), 1u);
    EXPECT_EQ(written[0].header.cupsHeight, 100u);
    EXPECT_LE(written[0].planes[0].dots, 64u * 10u) << "at most the ten black lines carry ink";
}

}  // namespace
}  // namespace inkdot::test
