// Temporary files and directories removed when the process is ended by
// SIGINT, SIGTERM or SIGHUP, so that an interrupted run leaves nothing
// behind. The handler then ends the process by the same signal, as if it had
// not been caught. A signal whose disposition is not the default (ignored,
// or caught by the program) is left alone.
#pragma once

#include <csignal>
#include <string>

namespace inkdot::tools {

// Registers a path for removal; a directory is emptied (its plain entries)
// and removed. Returns a ticket for forgetOnSignal, or -1 when the table is
// full (the path is then only removed by a later run).
int removeOnSignal(const std::string& path, bool directory);
void forgetOnSignal(int ticket);

// Holds SIGINT, SIGTERM and SIGHUP back while in scope: a step that must
// not be cut in two (publishing a set of files) runs under it, and a signal
// that arrives meanwhile takes effect at its end.
class SignalsHeld {
public:
    SignalsHeld();
    ~SignalsHeld();
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

private:
    sigset_t previous_;
};

}  // namespace inkdot::tools
