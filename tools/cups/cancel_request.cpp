#include "cups/cancel_request.h"

#include <atomic>
#include <csignal>

namespace inkdot::cups {

namespace {
// Set in a signal handler and read by the page's reading thread: a lock-free
// atomic is safe in both places.
std::atomic<bool> gCancelled{false};
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void onTerminate(int) { gCancelled = true; }
}  // namespace

void watchForCancel() {
    struct sigaction action {};
    sigemptyset(&action.sa_mask);
    action.sa_handler = onTerminate;
    sigaction(SIGTERM, &action, nullptr);
}

bool cancelRequested() { return gCancelled; }

void setCancelRequested(bool requested) { gCancelled = requested; }

}  // namespace inkdot::cups
