#include "image/output_set.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "image/atomic_file.h"
#include "image/signal_cleanup.h"

namespace fs = std::filesystem;

namespace inkdot::tools {
namespace {

constexpr const char* kStaging = ".stage-";
constexpr const char* kReady = ".ready-";

// Makes renames in `dir` durable.
bool syncDirectory(const std::string& dir) {
    const int fd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return false;
    const bool ok = ::fsync(fd) == 0;
    ::close(fd);
    return ok;
}

// Moves the files of a ready set into `dir`, then removes the set's directory.
bool moveIntoPlace(const fs::path& ready, const fs::path& dir, std::string& error) {
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(ready, ec)) {
        const fs::path target = dir / entry.path().filename();
        if (const int injected = injectedFault(FileStep::Publish)) {
            error = "cannot publish " + target.string() + ": " + std::strerror(injected);
            return false;
        }
        if (::rename(entry.path().c_str(), target.c_str()) != 0) {
            error = "cannot publish " + target.string() + ": " + std::strerror(errno);
            return false;
        }
    }
    syncDirectory(dir.string());
    fs::remove(ready, ec);
    return !ec;
}

// False when `path` exists and is anything but a regular file (a link too).
bool replaceable(const fs::path& path, std::string& error) {
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0 || S_ISREG(info.st_mode)) return true;
    error = "will not replace " + path.string() + ": it is " +
            (S_ISLNK(info.st_mode) ? "a symbolic link" : S_ISDIR(info.st_mode) ? "a directory" : "not a regular file") +
            ", and a set of output files replaces regular files only";
    return false;
}

}  // namespace

// Sets of other names whose lock nobody holds were left by dead runs: they
// are finished or removed too, so that a name never printed again does not
// keep its leftovers.
void recoverAbandonedSets(const std::string& dir, const std::string& name) {
    std::error_code ec;
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(dir, ec)) {
        const std::string n = entry.path().filename().string();
        for (const char* kind : {kStaging, kReady}) {
            const size_t at = n.rfind(kind);
            if (n.size() > 1 && n[0] == '.' && at != std::string::npos && at > 1 && n.size() == at + std::strlen(kind) + 6 &&
                n.compare(1, at - 1, name) != 0)
                names.push_back(n.substr(1, at - 1));
        }
    }
    for (const std::string& other : names) {
        const std::string lockPath = (fs::path(dir) / ("." + other + ".lock")).string();
        const int fd = ::open(lockPath.c_str(), O_RDWR | O_CLOEXEC);
        if (fd < 0) continue;
        if (::flock(fd, LOCK_EX | LOCK_NB) == 0) recoverOutputSets(dir, other);
        ::close(fd);
    }
}

void recoverOutputSets(const std::string& dir, const std::string& name) {
    const std::string staging = "." + name + kStaging, ready = "." + name + kReady;
    std::error_code ec;
    std::vector<fs::path> found;
    for (const auto& entry : fs::directory_iterator(dir, ec)) found.push_back(entry.path());
    for (const fs::path& p : found) {
        const std::string n = p.filename().string();
        std::string error;
        if (n.rfind(ready, 0) == 0 && n.size() == ready.size() + 6) moveIntoPlace(p, dir, error);
        else if (n.rfind(staging, 0) == 0 && n.size() == staging.size() + 6) fs::remove_all(p, ec);
    }
}

OutputSet::~OutputSet() {
    if (!staging_.empty()) {
        std::error_code ec;
        fs::remove_all(staging_, ec);
    }
    forgetOnSignal(ticket_);
    if (lockFd_ >= 0) ::close(lockFd_);  // releases the lock
}

bool OutputSet::open(const std::string& dir, const std::string& name, std::string& error) {
    dir_ = dir;
    name_ = name;
    const std::string lockPath = (fs::path(dir) / ("." + name + ".lock")).string();
    lockFd_ = ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    int rc;
    do rc = lockFd_ < 0 ? -1 : ::flock(lockFd_, LOCK_EX);
    while (rc != 0 && errno == EINTR);
    if (rc != 0) {
        error = "cannot lock " + lockPath + ": " + std::strerror(errno);
        return false;
    }
    recoverOutputSets(dir, name);
    recoverAbandonedSets(dir, name);
    std::string pattern = (fs::path(dir) / ("." + name + kStaging + "XXXXXX")).string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        error = "cannot make a staging directory in " + dir + ": " + std::strerror(errno);
        return false;
    }
    staging_ = pattern;
    ticket_ = removeOnSignal(staging_, true);
    return true;
}

bool OutputSet::stage(const std::string& fileName, std::string& stagedPath, std::string& error) {
    const fs::path target = fs::path(dir_) / fileName;
    if (!replaceable(target, error)) return false;
    removeDeadTemporaries(target.string());  // left by runs before sets were staged
    stagedPath = (fs::path(staging_) / fileName).string();
    return true;
}

bool OutputSet::publish(std::string& error) {
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(staging_, ec))
        if (!replaceable(fs::path(dir_) / entry.path().filename(), error)) return false;
    if (ec) {
        error = "cannot read " + staging_ + ": " + ec.message();
        return false;
    }
    const SignalsHeld held;
    std::string ready = staging_;
    ready.replace(ready.size() - 6 - std::strlen(kStaging), std::strlen(kStaging), kReady);
    const int injected = injectedFault(FileStep::Publish);
    if (injected != 0 || !syncDirectory(staging_) || ::rename(staging_.c_str(), ready.c_str()) != 0) {
        error = "cannot publish into " + dir_ + ": " + std::strerror(injected != 0 ? injected : errno);
        return false;
    }
    // From here the set counts as written: if the moves stop half way, the
    // next run with this name finishes them.
    forgetOnSignal(ticket_);
    ticket_ = -1;
    staging_.clear();
    syncDirectory(dir_);
    return moveIntoPlace(ready, dir_, error);
}

}  // namespace inkdot::tools
