// Output sets: a print's planes and preview replace the previous set whole
// or not at all, whatever fails on the way, and what may sit at an output
// path is written through, replaced, or refused.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <sstream>
#include <thread>

#include "cli/cli.h"
#include "image/atomic_file.h"
#include "image/output_set.h"
#include "image_writers.h"
#include "temp_dir.h"

namespace inkdot::tools {
namespace {

using test::TempDir;
using Files = std::map<std::string, std::string>;  // name → bytes

int run(std::vector<std::string> args, std::string* err = nullptr) {
    std::ostringstream out, errors;
    const int status = runCli(args, out, errors);
    if (err != nullptr) *err = errors.str();
    return status;
}

// Every entry of a directory with its bytes; directories show as "<dir>".
Files contents(const std::filesystem::path& dir) {
    Files files;
    for (const auto& e : std::filesystem::directory_iterator(dir))
        files[e.path().filename().string()] = e.is_directory() ? "<dir>" : test::readBytes(e.path().string());
    return files;
}

// Charts of different sizes under one name, so that each run's set differs
// in every file.
class PrintSets : public ::testing::Test {
protected:
    void SetUp() override {
        for (int v = 0; v < 4; ++v) {
            std::filesystem::create_directories(dir.path() / ("v" + std::to_string(v)));
            const std::string size = std::to_string(64 + 8 * v);
            ASSERT_EQ(run({"chart", "-o", input(v), "--width", size, "--height", size}), kExitOk);
            ASSERT_EQ(run({"print", input(v), "-o", dir.file("alone" + std::to_string(v))}), kExitOk);
            expected.push_back(contents(dir.path() / ("alone" + std::to_string(v))));
        }
    }
    void TearDown() override { setFileFault({}); }
    std::string input(int v) const { return dir.file("v" + std::to_string(v) + "/page.png"); }
    int print(int v, std::string* err = nullptr) { return run({"print", input(v), "-o", dir.file("out")}, err); }
    Files out() const { return contents(dir.path() / "out"); }

    TempDir dir;
    std::vector<Files> expected;  // each version's set printed alone (with its lock file)
};

// A failing disk at every stage: the first write, one in the middle of the
// planes, the last (the preview's end), each file's sync and the rename that
// makes the set count as written. The old set stays whole, nothing is left
// behind, and the message says why.
TEST_F(PrintSets, AFullDiskAtAnyStageLeavesTheOldSet) {
    ASSERT_EQ(print(0), kExitOk);
    ASSERT_EQ(out(), expected[0]);
    int writes = 0;
    setFileFault([&](FileStep step) { return step == FileStep::Write ? (++writes, 0) : 0; });
    ASSERT_EQ(print(1), kExitOk);
    setFileFault({});
    ASSERT_EQ(print(0), kExitOk);
    const int total = writes;
    const struct { FileStep step; int at; } faults[] = {
        {FileStep::Write, 1}, {FileStep::Write, total / 2}, {FileStep::Write, total},
        {FileStep::Sync, 1},  {FileStep::Sync, 5},          {FileStep::Publish, 1},
    };
    for (const auto& f : faults) {
        int seen = 0;
        setFileFault([&](FileStep step) { return step == f.step && ++seen == f.at ? ENOSPC : 0; });
        std::string err;
        EXPECT_EQ(print(1, &err), kExitFailed) << "step " << int(f.step) << " #" << f.at;
        EXPECT_NE(err.find("No space left on device"), std::string::npos) << err;
        EXPECT_EQ(out(), expected[0]) << "step " << int(f.step) << " #" << f.at;
    }
}

// Stopped between two renames (a kill, or a rename that fails) after the set
// counted as written: the next run with the name finishes the new set first.
TEST_F(PrintSets, ASetStoppedBetweenRenamesIsFinishedByTheNextRun) {
    ASSERT_EQ(print(0), kExitOk);
    for (int at = 2; at <= 6; ++at) {
        int seen = 0;
        setFileFault([&](FileStep step) { return step == FileStep::Publish && ++seen == at ? EIO : 0; });
        EXPECT_EQ(print(1), kExitFailed);
        setFileFault({});
        EXPECT_NE(out(), expected[1]) << "stopped half way at rename " << at;
        {
            OutputSet next;  // what the next run does first
            std::string error;
            ASSERT_TRUE(next.open(dir.file("out"), "page", error)) << error;
            Files finished = out();
            finished.erase(std::filesystem::path(next.stagingDir()).filename().string());
            EXPECT_EQ(finished, expected[1]) << "rename " << at;
        }
        ASSERT_EQ(print(0), kExitOk);
    }
}

// Eight runs at once with one output name: they take turns, all succeed,
// and the directory ends with one run's set, whole.
TEST_F(PrintSets, ConcurrentRunsLeaveOneWholeSet) {
    for (int round = 0; round < 2; ++round) {
        std::vector<std::thread> runs;
        std::vector<int> status(8, -1);
        for (int i = 0; i < 8; ++i) runs.emplace_back([&, i] { status[i] = print(i % 4); });
        for (std::thread& t : runs) t.join();
        EXPECT_EQ(status, std::vector<int>(8, kExitOk));
        const Files now = out();
        EXPECT_TRUE(now == expected[0] || now == expected[1] || now == expected[2] || now == expected[3]);
    }
}

// SIGTERM while the planes are written: the run ends by the signal and its
// staging directory is gone; a SIGKILLed run's leftovers go with the next run.
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
            for (const auto& [name, bytes] : out())
                staged |= name.rfind(".big.stage-", 0) == 0 && !std::filesystem::is_empty(dir.path() / "out" / name);
            if (!staged) usleep(1000);
        }
        ASSERT_TRUE(staged) << "the run never started writing";
        kill(child, signal);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
        if (signal == SIGKILL) {
            EXPECT_EQ(out().size(), 2u) << "the lock and the dead run's staging directory";
            ASSERT_EQ(print(0), kExitOk);
            Files rest = out();
            rest.erase(".big.lock");
            EXPECT_EQ(rest, expected[0]);
        } else {
            EXPECT_EQ(out(), (Files{{".big.lock", ""}}));
        }
    }
}

// What sits at a single output path: a regular file or a link to one is
// replaced (the link stays), a FIFO and "-" are written through, anything
// else is refused; a set refuses anything but regular files.
TEST(OutputPaths, AreReplacedWrittenThroughOrRefused) {
    TempDir dir;
    const auto chart = [&](const std::string& path) {
        std::string err;
        const int status = run({"chart", "-o", path, "--width", "64", "--height", "64"}, &err);
        return status == kExitOk ? std::string("ok") : err;
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
    const int saved = dup(STDOUT_FILENO);
    FILE* file = std::fopen(dir.file("stdout.png").c_str(), "wb");
    dup2(fileno(file), STDOUT_FILENO);
    const std::string status = chart("-");
    dup2(saved, STDOUT_FILENO);
    close(saved);
    std::fclose(file);
    EXPECT_EQ(status, "ok");
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
