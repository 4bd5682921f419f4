// The inkdot command-line program: print, chart, pack, info and report.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace inkdot::tools {

// Runs one command line (without the program name). Messages go to `out`,
// failures as one line to `err`. Returns the exit status: 0 done, 1 failed,
// 2 bad usage.
int runCli(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

int runCli(int argc, char** argv);

// The commands, each with its arguments after the command name.
int printCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);
int chartCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);
int packCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);
int reportCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);
int infoCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;

}  // namespace inkdot::tools
