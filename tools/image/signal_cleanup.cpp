#include "image/signal_cleanup.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <mutex>

namespace inkdot::tools {
namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};
// A print stages six files at most, a report five; a few sets at once fit.
constexpr int kSlots = 64;
constexpr size_t kPathBytes = 4096;

enum Kind : int { kFree = 0, kFile = 1, kDirectory = 2 };

struct Slot {
    std::atomic<int> kind{kFree};
    char path[kPathBytes];
};

Slot slots[kSlots];
std::mutex slotsMutex;
bool installed = false;

// The kernel's directory record (getdents64), read here because opendir
// allocates and is not safe in a signal handler.
struct DirectoryRecord {
    uint64_t inode;
    int64_t next;
    unsigned short length;
    unsigned char type;
    char name[1];
};

void emptyDirectory(const char* path) {
    const int fd = ::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return;
    alignas(8) char buffer[4096];
    long n;
    while ((n = ::syscall(SYS_getdents64, fd, buffer, sizeof buffer)) > 0) {
        for (long at = 0; at < n;) {
            const auto* record = reinterpret_cast<const DirectoryRecord*>(buffer + at);
            const char* name = buffer + at + offsetof(DirectoryRecord, name);
            if (std::strcmp(name, ".") != 0 && std::strcmp(name, "..") != 0) ::unlinkat(fd, name, 0);
            at += record->length;
        }
    }
    ::close(fd);
}

void onSignal(int signal) {
    for (Slot& slot : slots)
        if (slot.kind.load() == kFile) ::unlink(slot.path);
    for (Slot& slot : slots) {
        if (slot.kind.load() != kDirectory) continue;
        emptyDirectory(slot.path);
        ::rmdir(slot.path);
    }
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void install() {
    for (int s : kSignals) {
        struct sigaction current {};
        if (sigaction(s, nullptr, &current) != 0 || current.sa_handler != SIG_DFL) continue;
        struct sigaction action {};
        action.sa_handler = onSignal;
        sigemptyset(&action.sa_mask);
        for (int other : kSignals) sigaddset(&action.sa_mask, other);  // one cleanup at a time
        sigaction(s, &action, nullptr);
    }
    installed = true;
}

}  // namespace

int removeOnSignal(const std::string& path, bool directory) {
    if (path.size() >= kPathBytes) return -1;
    std::lock_guard<std::mutex> lock(slotsMutex);
    if (!installed) install();
    for (int i = 0; i < kSlots; ++i) {
        if (slots[i].kind.load() != kFree) continue;
        std::memcpy(slots[i].path, path.c_str(), path.size() + 1);
        slots[i].kind.store(directory ? kDirectory : kFile);  // the path is complete before the handler may read it
        return i;
    }
    return -1;
}

void forgetOnSignal(int ticket) {
    if (ticket < 0 || ticket >= kSlots) return;
    std::lock_guard<std::mutex> lock(slotsMutex);
    slots[ticket].kind.store(kFree);
}

SignalsHeld::SignalsHeld() {
    sigset_t held;
    sigemptyset(&held);
    for (int s : kSignals) sigaddset(&held, s);
    pthread_sigmask(SIG_BLOCK, &held, &previous_);
}

SignalsHeld::~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }

}  // namespace inkdot::tools
