// A print's planes and preview replace the previous set whole or not at all.
#include <gtest/gtest.h>

#include <cerrno>
#include <map>
#include <sstream>

#include "cli/cli.h"
#include "image/atomic_file.h"
#include "tools/test_files.h"

namespace inkdot::tools {
namespace {

std::map<std::string, std::string> filesIn(const std::filesystem::path& dir) {
    std::map<std::string, std::string> files;  // a staging directory left behind shows as a name too
    for (const auto& e : std::filesystem::directory_iterator(dir))
        files[e.path().filename().string()] = e.is_directory() ? "<dir>" : test::readBytes(e.path().string());
    return files;
}

// A full disk at the first write, the last one, a file's sync or the rename
// that publishes the set: the old set stays whole, nothing is left behind,
// and the message says why.
TEST(PrintSets, AFailureLeavesTheOldSetWhole) {
    test::TempDir dir;
    std::ostringstream out, err;
    const auto run = [&](std::vector<std::string> args) { return err.str(""), runCli(args, out, err); };
    for (const std::string size : {"64", "72"}) {  // two versions of one page: every file differs
        std::filesystem::create_directories(dir.path() / size);
        ASSERT_EQ(run({"chart", "-o", dir.file(size + "/page.png"), "--width", size, "--height", size}), kExitOk);
    }
    int writes = 0;
    setFileFault([&](FileStep step) { return writes += step == FileStep::Write, 0; });
    ASSERT_EQ(run({"print", dir.file("64/page.png"), "-o", dir.file("out")}), kExitOk);
    const auto old = filesIn(dir.path() / "out");
    const std::pair<FileStep, int> faults[] = {
        {FileStep::Write, 1}, {FileStep::Write, writes}, {FileStep::Sync, 1}, {FileStep::Publish, 1}};
    for (const auto& [step, at] : faults) {
        int seen = 0;
        setFileFault([&](FileStep s) { return s == step && ++seen == at ? ENOSPC : 0; });
        EXPECT_EQ(run({"print", dir.file("72/page.png"), "-o", dir.file("out")}), kExitFailed) << int(step) << " #" << at;
        EXPECT_NE(err.str().find("No space left on device"), std::string::npos) << err.str();
        EXPECT_TRUE(filesIn(dir.path() / "out") == old) << int(step) << " #" << at;
    }
    setFileFault({});
}

}  // namespace
}  // namespace inkdot::tools
