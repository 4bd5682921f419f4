#include "image/atomic_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "image/signal_cleanup.h"

namespace inkdot::tools {
namespace {

std::function<int(FileStep)>& fileFault() {
    static std::function<int(FileStep)> fault;
    return fault;
}

const char* kindOf(mode_t mode) {
    if (S_ISDIR(mode)) return "a directory";
    if (S_ISSOCK(mode)) return "a socket";
    if (S_ISBLK(mode)) return "a block device";
    return "not a regular file";
}

// Fails a step with errno set, injected or real.
bool stepFails(FileStep step, bool failed) {
    if (const int injected = injectedFault(step)) {
        errno = injected;
        return true;
    }
    return failed;
}

}  // namespace

void setFileFault(std::function<int(FileStep)> fault) { fileFault() = std::move(fault); }

int injectedFault(FileStep step) { return fileFault() ? fileFault()(step) : 0; }

void removeDeadTemporaries(const std::string& path) {
    const std::filesystem::path p(path);
    const std::string prefix = p.filename().string() + ".tmp-";
    std::error_code ec;
    const std::filesystem::path dir = p.parent_path().empty() ? "." : p.parent_path();
    for (const auto& entry : std::filesystem::directory_iterator(dir, ec)) {
        const std::string name = entry.path().filename().string();
        if (name.size() <= prefix.size() || name.compare(0, prefix.size(), prefix) != 0) continue;
        const std::string digits = name.substr(prefix.size());
        if (digits.find_first_not_of("0123456789") != std::string::npos || digits.size() > 9) continue;
        const pid_t pid = static_cast<pid_t>(std::stol(digits));
        if (pid != getpid() && ::kill(pid, 0) != 0 && errno == ESRCH) std::filesystem::remove(entry.path(), ec);
    }
}

AtomicFile::~AtomicFile() {
    if (file_ != nullptr) std::fclose(file_);
    if (!committed_ && !temporary_.empty()) std::remove(temporary_.c_str());
    forgetOnSignal(ticket_);
}

bool AtomicFile::open(const std::string& path, std::string& error) {
    path_ = target_ = path;
    if (path == "-") {
        const int fd = ::dup(STDOUT_FILENO);
        file_ = fd < 0 ? nullptr : ::fdopen(fd, "wb");
        if (file_ == nullptr) {
            if (fd >= 0) ::close(fd);
            error = std::string("cannot write to standard output: ") + std::strerror(errno);
            return false;
        }
        return true;
    }
    struct stat linkInfo {}, info {};
    const bool present = ::lstat(path.c_str(), &linkInfo) == 0;
    const bool reached = ::stat(path.c_str(), &info) == 0;
    if (reached && (S_ISFIFO(info.st_mode) || S_ISCHR(info.st_mode))) {
        file_ = std::fopen(path.c_str(), "wb");
        if (file_ == nullptr) {
            error = "cannot write " + path + ": " + std::strerror(errno);
            return false;
        }
        return true;
    }
    if (present && !reached) {
        error = "cannot write " + path + ": it is a link to nothing";
        return false;
    }
    if (present && !S_ISREG(info.st_mode)) {
        error = "cannot write " + path + ": it is " + kindOf(info.st_mode) + ", and only regular files are replaced";
        return false;
    }
    if (present && S_ISLNK(linkInfo.st_mode)) {
        char resolved[PATH_MAX];
        if (::realpath(path.c_str(), resolved) == nullptr) {
            error = "cannot write " + path + ": " + std::strerror(errno);
            return false;
        }
        target_ = resolved;
    }
    removeDeadTemporaries(target_);
    temporary_ = target_ + ".tmp-" + std::to_string(static_cast<long>(getpid()));
    file_ = std::fopen(temporary_.c_str(), "wb");
    if (file_ == nullptr) {
        error = "cannot write " + temporary_ + ": " + std::strerror(errno);
        temporary_.clear();
        return false;
    }
    ticket_ = removeOnSignal(temporary_, false);
    return true;
}

bool AtomicFile::write(const void* data, size_t size, std::string& error) {
    if (stepFails(FileStep::Write, std::fwrite(data, 1, size, file_) != size)) {
        error = "cannot write " + path_ + ": " + std::strerror(errno);
        return false;
    }
    return true;
}

bool AtomicFile::commit(std::string& error) {
    // Written through: what is left goes out now. Otherwise the data reaches
    // the disk before the name does, so that a crash after the rename cannot
    // leave the name on an empty or partial file.
    int reason = 0;
    if (std::fflush(file_) != 0) reason = errno;
    else if (!temporary_.empty() && stepFails(FileStep::Sync, ::fsync(fileno(file_)) != 0)) reason = errno;
    if (std::fclose(file_) != 0 && reason == 0) reason = errno;
    file_ = nullptr;
    if (reason == 0 && !temporary_.empty() && std::rename(temporary_.c_str(), target_.c_str()) != 0) reason = errno;
    if (reason != 0) {
        error = "cannot finish " + path_ + ": " + std::strerror(reason);
        return false;
    }
    committed_ = true;
    return true;
}

}  // namespace inkdot::tools
