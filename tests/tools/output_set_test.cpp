// Output sets: a print's planes and preview replace the previous set whole
// or not at all, whatever fails on the way, and what may sit at an output
// path is written through, replaced, or refused.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/stat.h>
#include <fcntl.h>
#include <sys/wait.h>

#include <cerrno>
#include <map>
#include <sstream>
#include <thread>

#include "cli/cli.h"
#include "image/atomic_file.h"
#include "image/output_set.h"
#include "tools/test_files.h"

namespace inkdot::tools {
namespace {

using Files = std::map<std::string, std::string>;  // name → bytes, "<dir>" for a directory

int run(std::vector<std::string> args, std::string* err = nullptr) {
    std::ostringstream out, errors;
    const int status = runCli(args, out, errors);
    if (err != nullptr) *err = errors.str();
    return status;
}

// Four charts of different sizes under one name, so that each run's set
// differs in every file; `expected[v]` is version v's set printed alone.
class PrintSets : public ::testing::Test {
protected:
    void SetUp() override {
        for (int v = 0; v < 4; ++v) {
            std::filesystem::create_directories(dir.path() / std::to_string(v));
            const std::string size = std::to_string(64 + 8 * v), alone = std::to_string(v) + "-alone";
            ASSERT_EQ(run({"chart", "-o", input(v), "--width", size, "--height", size}), kExitOk);
            ASSERT_EQ(run({"print", input(v), "-o", dir.file(alone)}), kExitOk);
            expected.push_back(files(alone));
        }
    }
    void TearDown() override { setFileFault({}); }
    std::string input(int v) const { return dir.file(std::to_string(v) + "/page.png"); }
    int print(int v, std::string* err = nullptr) { return run({"print", input(v), "-o", dir.file("out")}, err); }
    Files files(const std::string& sub = "out") const {
        Files f;
        for (const auto& e : std::filesystem::directory_iterator(dir.path() / sub))
            f[e.path().filename().string()] = e.is_directory() ? "<dir>" : test::readBytes(e.path().string());
        return f;
    }

    test::TempDir dir;
    std::vector<Files> expected;
};

// A full disk at the first write, one in the middle, the last, a file's sync
// or the rename that makes the set count as written: the old set stays
// whole, nothing is left behind, and the message says why. Stopped between
// two later renames, the set counts as written: the next run with the name
// finishes it first.
TEST_F(PrintSets, AFailureAnywhereLeavesOneWholeSet) {
    int writes = 0;
    setFileFault([&](FileStep step) { return step == FileStep::Write ? (++writes, 0) : 0; });
    ASSERT_EQ(print(1), kExitOk);
    const std::pair<FileStep, int> faults[] = {
        {FileStep::Write, 1}, {FileStep::Write, writes / 2}, {FileStep::Write, writes}, {FileStep::Sync, 1},
        {FileStep::Sync, 5},  {FileStep::Publish, 1},        {FileStep::Publish, 2},    {FileStep::Publish, 4},
        {FileStep::Publish, 6}};
    for (const auto& [step, at] : faults) {
        setFileFault({});
        ASSERT_EQ(print(0), kExitOk);
        int seen = 0;
        setFileFault([&](FileStep s) { return s == step && ++seen == at ? ENOSPC : 0; });
        std::string err;
        EXPECT_EQ(print(1, &err), kExitFailed) << int(step) << " #" << at;
        EXPECT_NE(err.find("No space left on device"), std::string::npos) << err;
        if (step != FileStep::Publish || at == 1) {
            EXPECT_EQ(files(), expected[0]) << int(step) << " #" << at;
            continue;
        }
        EXPECT_NE(files(), expected[1]) << "stopped half way at rename " << at;
        OutputSet next;  // what the next run does first
        std::string error;
        ASSERT_TRUE(next.open(dir.file("out"), "page", error)) << error;
        Files finished = files();
        finished.erase(std::filesystem::path(next.stagingDir()).filename().string());
        EXPECT_EQ(finished, expected[1]) << "rename " << at;
    }
}

// Eight runs at once with one output name take turns, all succeed, and
// leave one run's set, whole.
TEST_F(PrintSets, ConcurrentRunsLeaveOneWholeSet) {
    std::vector<std::thread> runs;
    std::vector<int> status(8, -1);
    for (int i = 0; i < 8; ++i) runs.emplace_back([&, i] { status[i] = print(i % 4); });
    for (std::thread& t : runs) t.join();
    EXPECT_EQ(status, std::vector<int>(8, kExitOk));
    EXPECT_NE(std::find(expected.begin(), expected.end(), files()), expected.end());
}

// SIGTERM or SIGINT while the planes are written: the run ends by the signal
// and its staging directory is gone; a SIGKILLed run's leftovers go with the next run.
TEST_F(PrintSets, InterruptedRunsLeaveNoTemporaries) {
    ASSERT_EQ(run({"chart", "-o", dir.file("big.png"), "--width", "3000", "--height", "3000"}), kExitOk);
    std::filesystem::create_directories(dir.path() / "out");
    for (int signal : {SIGTERM, SIGINT, SIGKILL}) {
        const pid_t child = fork();
        if (child == 0) _exit(run({"print", dir.file("big.png"), "-o", dir.file("out"), "--resolution", "1440x720"}));
        // Waits for the first plane file in the staging directory: the
        // directory alone may not yet be known to the signal handler.
        bool staged = false;
        for (int i = 0; i < 20000 && !staged; ++i) {
            for (const auto& [name, bytes] : files())
                staged |= name.rfind(".big.stage-", 0) == 0 && !std::filesystem::is_empty(dir.path() / "out" / name);
            if (!staged) usleep(1000);
        }
        ASSERT_TRUE(staged) << "the run never started writing";
        kill(child, signal);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
        if (signal != SIGKILL) {
            EXPECT_EQ(files(), (Files{{".big.lock", ""}}));
            continue;
        }
        EXPECT_EQ(files().size(), 2u) << "the lock and the dead run's staging directory";
        ASSERT_EQ(print(0), kExitOk);
        Files rest = files();
        rest.erase(".big.lock");
        EXPECT_EQ(rest, expected[0]);
    }
}

// At a single output path a regular file or a link to one is replaced (the
// link stays), a FIFO and "-" are written through, anything else is refused;
// a set refuses anything but regular files.
TEST(OutputPaths, AreReplacedWrittenThroughOrRefused) {
    test::TempDir dir;
    const auto chart = [&](const std::string& path) {
        std::string err;
        return run({"chart", "-o", path, "--width", "64", "--height", "64"}, &err) == kExitOk ? "ok" : err;
    };
    dir.write("old.png", "old");
    ASSERT_EQ(chart(dir.file("old.png")), "ok");
    const std::string png = test::readBytes(dir.file("old.png"));
    EXPECT_EQ(png.substr(1, 3), "PNG");
    std::filesystem::create_symlink("old.png", dir.file("link.png"));
    EXPECT_EQ(chart(dir.file("link.png")), "ok");
    EXPECT_TRUE(std::filesystem::is_symlink(dir.file("link.png")));
    std::filesystem::create_symlink("nothing", dir.file("dangling.png"));
    EXPECT_NE(chart(dir.file("dangling.png")).find("a link to nothing"), std::string::npos);
    std::filesystem::create_directories(dir.path() / "sub");
    EXPECT_NE(chart(dir.file("sub")).find("it is a directory"), std::string::npos);

    ASSERT_EQ(mkfifo(dir.file("fifo").c_str(), 0644), 0);
    std::string through;
    std::thread reader([&] { through = test::readBytes(dir.file("fifo")); });
    EXPECT_EQ(chart(dir.file("fifo")), "ok");
    reader.join();
    EXPECT_EQ(through, png);
    // "-": standard output, here redirected into a file.
    const int saved = dup(STDOUT_FILENO), file = open(dir.file("stdout.png").c_str(), O_WRONLY | O_CREAT, 0644);
    dup2(file, STDOUT_FILENO);
    EXPECT_EQ(chart("-"), "ok");
    dup2(saved, STDOUT_FILENO);
    close(saved), close(file);
    EXPECT_EQ(test::readBytes(dir.file("stdout.png")), png);

    std::filesystem::create_directories(dir.path() / "out");
    std::filesystem::create_symlink("../old.png", dir.file("out/old-cyan.pbm"));
    std::string err;
    EXPECT_EQ(run({"print", dir.file("old.png"), "-o", dir.file("out")}, &err), kExitFailed);
    EXPECT_NE(err.find("will not replace"), std::string::npos) << err;
    EXPECT_NE(err.find("a symbolic link"), std::string::npos) << err;
    EXPECT_EQ(run({"print", dir.file("old.png"), "-o", "-"}, &err), kExitUsage);
    EXPECT_EQ(test::readBytes(dir.file("old.png")), png) << "the link's file is left alone";
}

}  // namespace
}  // namespace inkdot::tools
