// An output file that appears under its name only when it is complete: it
// is written to a temporary name beside the target, flushed to the disk and
// renamed by commit(). Dropped without commit(), or ended by SIGINT, SIGTERM
// or SIGHUP, it removes the temporary file.
//
// What sits at the path decides how it is written:
//   absent or a regular file    temporary file, then renamed into place;
//   a link to a regular file    the same for the file it points to (the link stays);
//   "-"                         standard output, written through;
//   a FIFO or character device  written through, as a stream;
//   anything else               refused (a directory, socket, block device, dangling link).
#pragma once

#include <cstdio>
#include <functional>
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
    // Flushes, syncs, closes and renames into place.
    bool commit(std::string& error);

private:
    std::string path_;
    std::string target_;     // the file replaced: path_, or where its link points
    std::string temporary_;  // empty when written through
    std::FILE* file_ = nullptr;
    int ticket_ = -1;        // removal on a signal
    bool committed_ = false;
};

// Removes `path`.tmp-PID files beside `path` whose process is gone: what a
// run killed outright (SIGKILL, a crash) left behind.
void removeDeadTemporaries(const std::string& path);

// The steps of writing output at which a test can make the disk fail.
enum class FileStep { Write, Sync, Publish };
// For tests: `fault` is asked before each step and returns an errno value
// to fail it with (0: go on). An empty function turns the seam off.
void setFileFault(std::function<int(FileStep)> fault);
// The errno value a step fails with (0 when none is injected).
int injectedFault(FileStep step);

}  // namespace inkdot::tools
