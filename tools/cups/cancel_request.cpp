#include "cups/cancel_request.h"

#include <csignal>

namespace inkdot::cups {

namespace {
volatile std::sig_atomic_t gCancelled = 0;

extern "C" void onTerminate(int) { gCancelled = 1; }
}  // namespace

void watchForCancel() {
    struct sigaction action {};
    sigemptyset(&action.sa_mask);
    action.sa_handler = onTerminate;
    sigaction(SIGTERM, &action, nullptr);
}

bool cancelRequested() { return gCancelled != 0; }

void setCancelRequested(bool requested) { gCancelled = requested ? 1 : 0; }

}  // namespace inkdot::cups
