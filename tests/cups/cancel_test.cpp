// A cancelled job: SIGTERM while a page streams in finishes the page blank,
// keeps the output a valid raster stream and exits 0.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include "cups/cancel_request.h"
#include "raster_writer.h"

namespace inkdot::test {
namespace {

TEST(CupsFilterCancel, SigtermEndsTheJobWithAWholeBlankedPage) {
    TempDir dir;
    const std::string outPath = dir.file("out.ras"), logPath = dir.file("filter.log");
    int data[2], ready[2];
    ASSERT_TRUE(::pipe(data) == 0 && ::pipe(ready) == 0);
    const pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        ::close(data[1]);
        cups::watchForCancel();
        const int out = ::open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        std::FILE* log = std::fopen(logPath.c_str(), "w");
        if (out < 0 || log == nullptr || ::write(ready[1], "", 1) != 1) ::_exit(3);  // the handler is in place
        const int status = cups::runRasterFilter({}, data[0], out, log);
        std::fclose(log);  // _exit flushes no stdio buffers
        ::_exit(status);
    }
    ::close(data[0]);
    char go = 1;
    ASSERT_EQ(::read(ready[0], &go, 1), 1);
    // Ten of a hundred black lines, then the cancel once the filter says the
    // page has started (at most ten seconds); the upstream end closes as the
    // scheduler's killed upstream filter would.
    cups_raster_t* r = cupsRasterOpen(data[1], CUPS_RASTER_WRITE);
    cups_page_header2_t h = inputHeader(64, 100, CUPS_CSPACE_W);
    ASSERT_TRUE(cupsRasterWriteHeader2(r, &h));
    std::vector<uint8_t> lines(64 * 10, 0);
    ASSERT_EQ(cupsRasterWritePixels(r, lines.data(), unsigned(lines.size())), lines.size());
    for (int tries = 0; tries < 1000 && readBytes(logPath).find("Printing page 1") == std::string::npos; ++tries)
        ::usleep(10000);
    ASSERT_EQ(::kill(pid, SIGTERM), 0);
    cupsRasterClose(r);
    ::close(data[1]);
    int status = 0;
    ASSERT_EQ(::waitpid(pid, &status, 0), pid);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    const std::string log = readBytes(logPath);
    EXPECT_TRUE(log.find("INFO: Job cancelled") != std::string::npos && log.find("ERROR") == std::string::npos) << log;
    const int in = ::open(outPath.c_str(), O_RDONLY);
    std::vector<cups::PageSummary> pages;
    std::string error;
    EXPECT_TRUE(in >= 0 && cups::summariseRaster(in, pages, error)) << error;
    ::close(in);
    ASSERT_EQ(pages.size(), 1u);
    EXPECT_EQ(pages[0].header.cupsHeight, 100u);
    EXPECT_LE(pages[0].planes[0].dots, 64u * 10u) << "at most the ten black lines carry ink";
}

TEST(CupsFilterCancel, ACancelBeforeTheFirstPageWritesNothing) {
    TempDir dir;
    writeRasterFile(dir.file("in.ras"), {flatPage(inputHeader(16, 4), {0, 0, 0})});
    cups::setCancelRequested(true);
    const FilterRun r = runFilter(dir.path().string(), dir.file("in.ras"));
    cups::setCancelRequested(false);
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(r.logHas("INFO: Job cancelled after 0 pages")) << r.log;
    EXPECT_TRUE(r.pages.empty());
}

}  // namespace
}  // namespace inkdot::test
