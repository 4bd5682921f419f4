// Output sets: a print's planes and preview replace the previous set whole or
// not at all, whatever fails on the way.
#include <gtest/gtest.h>

#include <cerrno>
#include <map>
#include <sstream>

#include "cli/cli.h"
#include "image/atomic_file.h"
#include "image/output_set.h"
#include "tools/test_files.h"

namespace inkdot::tools {
namespace {

using Files = std::map<std::string, std::string>;  // name → bytes, "" for a directory

// Two charts of different sizes under one name, so that the two sets differ
// in every file; `expected[v]` is version v's set printed alone.
class PrintSets : public ::testing::Test {
protected:
    void SetUp() override {
        for (int v = 0; v < 2; ++v) {
            std::filesystem::create_directories(dir.path() / std::to_string(v));
            const std::string size = std::to_string(64 + 8 * v), alone = std::to_string(v) + "-alone";
            ASSERT_EQ(run({"chart", "-o", input(v), "--width", size, "--height", size}), kExitOk);
            ASSERT_EQ(run({"print", input(v), "-o", dir.file(alone)}), kExitOk);
            expected.push_back(files(alone));
        }
    }
    void TearDown() override { setFileFault({}); }
    int run(std::vector<std::string> args, std::string* err = nullptr) {
        std::ostringstream out, errors;
        const int status = runCli(args, out, errors);
        if (err != nullptr) *err = errors.str();
        return status;
    }
    std::string input(int v) const { return dir.file(std::to_string(v) + "/page.png"); }
    int print(int v, std::string* err = nullptr) { return run({"print", input(v), "-o", dir.file("out")}, err); }
    Files files(const std::string& sub = "out") const {
        Files f;
        for (const auto& e : std::filesystem::directory_iterator(dir.path() / sub))
            f[e.path().filename().string()] = e.is_directory() ? "" : test::readBytes(e.path().string());
        return f;
    }

    test::TempDir dir;
    std::vector<Files> expected;
};

// A full disk at the first write, one in the middle, the last, a file's sync
// or the rename that makes the set count as written: the old set stays whole,
// nothing is left behind, and the message says why. Stopped between two later
// renames, the set counts as written: the next run with the name finishes it.
TEST_F(PrintSets, AFailureAnywhereLeavesOneWholeSet) {
    int writes = 0;
    setFileFault([&](FileStep step) { return step == FileStep::Write ? (++writes, 0) : 0; });
    ASSERT_EQ(print(1), kExitOk);
    const std::pair<FileStep, int> faults[] = {{FileStep::Write, 1}, {FileStep::Write, writes / 2}, {FileStep::Write, writes},
                                               {FileStep::Sync, 1},  {FileStep::Sync, 5},           {FileStep::Publish, 1},
                                               {FileStep::Publish, 2}, {FileStep::Publish, 6}};
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
        OutputSet next;  // what the next run does first
        std::string error;
        ASSERT_TRUE(next.open(dir.file("out"), "page", error)) << error;
        Files finished = files();
        finished.erase(std::filesystem::path(next.stagingDir()).filename().string());
        EXPECT_EQ(finished, expected[1]) << "rename " << at;
    }
}

}  // namespace
}  // namespace inkdot::tools
