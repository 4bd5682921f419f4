// The report page: tools/report_plots.py turns the CSV files of a report
// directory into report.html.
#pragma once

#include <ostream>
#include <string>

namespace inkdot::tools {

// The plotting script: installed beside the program (PREFIX/bin/inkdot →
// PREFIX/share/inkdot/report_plots.py), else the one of the source tree the
// program was built from. Empty when neither is there.
std::string findReportScript();

// Runs the plotting script on `dir` with Debian's python3; the script's own
// lines go to standard error. False with a reason (naming the Debian packages
// to install when matplotlib or numpy is missing).
bool writeReportPage(const std::string& dir, std::string& error);

}  // namespace inkdot::tools
