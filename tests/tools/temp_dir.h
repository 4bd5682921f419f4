// A scratch directory for one test, removed with everything in it afterwards.
#pragma once

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

namespace inkdot::test {

class TempDir {
public:
    TempDir() {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        path_ = std::filesystem::temp_directory_path() /
                ("inkdot-" + std::string(info->test_suite_name()) + "-" + info->name() + "-" +
                 std::to_string(::getpid()));
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~TempDir() { std::filesystem::remove_all(path_); }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string file(const std::string& name) const { return (path_ / name).string(); }
    const std::filesystem::path& path() const { return path_; }

    void write(const std::string& name, const std::string& text) const {
        std::ofstream(path_ / name, std::ios::binary) << text;
    }

    // Names of the files in the directory (not recursive).
    std::vector<std::string> listing() const {
        std::vector<std::string> names;
        for (const auto& e : std::filesystem::directory_iterator(path_)) names.push_back(e.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::filesystem::path path_;
};

}  // namespace inkdot::test
