// SIGTERM, the scheduler's way of cancelling a job, as a flag the filter's
// line loop looks at.
#pragma once

namespace inkdot::cups {

// Installs the SIGTERM handler (without SA_RESTART, so a blocked read returns).
void watchForCancel();
bool cancelRequested();
// For tests: raises or clears the flag as the handler would.
void setCancelRequested(bool requested);

}  // namespace inkdot::cups
