// SIGTERM while a page streams in: the filter finishes the page blank, keeps
// its output a valid raster stream and exits 0.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include "cups/cancel_request.h"
#include "cups/raster_filter.h"
#include "raster_writer.h"

namespace inkdot::test {
namespace {

// Should an assertion end the test early, the child filter is not left
// waiting on its pipe.
struct ChildGuard {
    pid_t pid = -1;
    ~ChildGuard() {
        if (pid > 0 && ::waitpid(pid, nullptr, WNOHANG) == 0) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
        }
    }
};

TEST(CupsFilterCancel, SigtermEndsTheJobWithAWholeBlankedPage) {
    TempDir dir;
    const std::string outPath = dir.file("out.ras");
    const std::string logPath = dir.file("filter.log");
    int data[2], ready[2];
    ASSERT_EQ(::pipe(data), 0);
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        ::close(data[1]);
        ::close(ready[0]);
        cups::watchForCancel();
        const char go = 1;
        if (::write(ready[1], &go, 1) != 1) ::_exit(3);
        cups::FilterArgs args;
        const int out = ::open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        std::FILE* log = std::fopen(logPath.c_str(), "w");
        if (out < 0 || log == nullptr) ::_exit(4);
        const int status = cups::runRasterFilter(args, data[0], out, log);
        std::fclose(log);  // _exit flushes no stdio buffers
        ::_exit(status);
    }
    ChildGuard guard{pid};
    ::close(data[0]);
    ::close(ready[1]);
    char go = 0;
    ASSERT_EQ(::read(ready[0], &go, 1), 1);  // the handler is in place
    ::close(ready[0]);

    // Ten of a hundred lines, then the cancel; the upstream end closes as the
    // scheduler's killed upstream filter would.
    cups_raster_t* r = cupsRasterOpen(data[1], CUPS_RASTER_WRITE);
    ASSERT_NE(r, nullptr);
    cups_page_header2_t h = inputHeader(64, 100, CUPS_CSPACE_W);
    ASSERT_TRUE(cupsRasterWriteHeader2(r, &h));
    std::vector<uint8_t> lines(64 * 10, 0);  // black
    ASSERT_EQ(cupsRasterWritePixels(r, lines.data(), static_cast<unsigned>(lines.size())), lines.size());
    // The cancel must find the page started; wait (at most ten seconds) for
    // the filter to say so.
    for (int tries = 0; tries < 1000 && readBytes(logPath).find("Printing page 1") == std::string::npos; ++tries)
        ::usleep(10000);
    ASSERT_EQ(::kill(pid, SIGTERM), 0);
    cupsRasterClose(r);
    ::close(data[1]);

    int status = 0;
    ASSERT_EQ(::waitpid(pid, &status, 0), pid);
    guard.pid = -1;
    ASSERT_TRUE(WIFEXITED(status)) << "the filter died of signal " << (WIFSIGNALED(status) ? WTERMSIG(status) : 0);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    const std::string log = readBytes(logPath);
    EXPECT_NE(log.find("INFO: Job cancelled"), std::string::npos) << log;
    EXPECT_EQ(log.find("ERROR"), std::string::npos) << log;

    const int in = ::open(outPath.c_str(), O_RDONLY);
    std::vector<cups::PageSummary> pages;
    std::string error;
    EXPECT_TRUE(in >= 0 && cups::summariseRaster(in, pages, error)) << error;
    ::close(in);
    ASSERT_EQ(pages.size(), 1u);
    EXPECT_EQ(pages[0].header.cupsHeight, 100u);
    // At most the ten black lines carry ink.
    EXPECT_LE(pages[0].planes[0].dots, 64u * 10u);
}

TEST(CupsFilterCancel, ACancelBeforeTheFirstPageWritesNothing) {
    TempDir dir;
    const std::string path = dir.file("in.ras");
    writeRasterFile(path, {flatPage(inputHeader(16, 4), {0, 0, 0})});
    cups::setCancelRequested(true);
    const FilterRun r = runFilter(dir.path().string(), path);
    cups::setCancelRequested(false);
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(r.logHas("INFO: Job cancelled after 0 pages")) << r.log;
    EXPECT_TRUE(r.pages.empty());
}

}  // namespace
}  // namespace inkdot::test
