// An output file that appears under its name only when it is complete: it
// is written to a temporary name beside the target and renamed by commit().
// Dropped without commit(), it removes the temporary file.
#pragma once

#include <cstdio>
#include <string>

namespace inkdot::tools {

class AtomicFile {
public:
    AtomicFile() = default;
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    bool open(const std::string& path, std::string& error);
    std::FILE* stream() { return file_; }
    const std::string& path() const { return path_; }
    bool write(const void* data, size_t size, std::string& error);
    // Closes and renames into place.
    bool commit(std::string& error);

private:
    std::string path_;
    std::string temporary_;
    std::FILE* file_ = nullptr;
    bool committed_ = false;
};

}  // namespace inkdot::tools
