#include "cli/standard_input.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace inkdot::tools {
namespace {

// Copies all of `from` into `to`; false with errno set on failure.
bool copyAll(int from, int to, size_t& total) {
    char buffer[1 << 16];
    for (;;) {
        const ssize_t got = read(from, buffer, sizeof buffer);
        if (got == 0) return true;
        if (got < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        for (ssize_t done = 0; done < got;) {
            const ssize_t put = write(to, buffer + done, static_cast<size_t>(got - done));
            if (put < 0 && errno != EINTR) return false;
            if (put > 0) done += put;
        }
        total += static_cast<size_t>(got);
    }
}

}  // namespace

bool makeStandardInputSeekable(std::string& error) {
    struct stat st {};
    if (fstat(STDIN_FILENO, &st) != 0) {
        error = std::string("cannot read standard input: ") + std::strerror(errno);
        return false;
    }
    if (S_ISREG(st.st_mode)) return true;
    // Re-opening /dev/stdin opens the in-memory file afresh from its start.
    const int memory = memfd_create("inkdot-stdin", MFD_CLOEXEC);
    size_t total = 0;
    if (memory < 0 || !copyAll(STDIN_FILENO, memory, total) || dup2(memory, STDIN_FILENO) < 0) {
        error = std::string("cannot read standard input: ") + std::strerror(errno);
        if (memory >= 0) close(memory);
        return false;
    }
    close(memory);
    if (total == 0) {
        error = "standard input is empty";
        return false;
    }
    return true;
}

}  // namespace inkdot::tools
