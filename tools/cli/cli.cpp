#include "cli/cli.h"

#include <algorithm>
#include <iostream>

namespace inkdot::tools {
namespace {

constexpr const char* kUsage =
    "inkdot: colour management and halftoning for inkjet printing\n"
    "\n"
    "usage: inkdot COMMAND [options]\n"
    "\n"
    "commands:\n"
    "  print IN -o OUTDIR   halftone an image into ink planes and a preview\n"
    "  chart -o FILE.png    write the built-in test chart\n"
    "  pack DIR -o FILE     compile resource sources into a pack file\n"
    "  info [--pack FILE]   describe a pack (default: the built-in one)\n"
    "  report -o OUTDIR     measure print quality: tone, spectra, texture\n"
    "\n"
    "'inkdot COMMAND --help' describes a command's options; --version tells the version.\n";

bool hasArg(const std::vector<std::string>& args, const char* name) {
    return std::find(args.begin(), args.end(), name) != args.end();
}

}  // namespace

int runCli(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    if (args.empty()) {
        err << kUsage;
        return kExitUsage;
    }
    const std::string& command = args[0];
    const std::vector<std::string> rest(args.begin() + 1, args.end());
    if (command == "--help" || command == "-h" || command == "help") {
        out << kUsage;
        return kExitOk;
    }
    // Every command answers --version the same way.
    if (hasArg(args, "--version") && !hasArg(args, "--help") && !hasArg(args, "-h")) {
        out << "inkdot " << INKDOT_VERSION << "\n";
        return kExitOk;
    }
    if (command == "print") return printCommand(rest, out, err);
    if (command == "chart") return chartCommand(rest, out, err);
    if (command == "pack") return packCommand(rest, out, err);
    if (command == "info") return infoCommand(rest, out, err);
    if (command == "report") return reportCommand(rest, out, err);
    err << "inkdot: unknown command '" << command << "' (see inkdot --help)\n";
    return kExitUsage;
}

int runCli(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    // What was asked for (help, the version, info's listing) goes to standard
    // output; the progress and results of the other commands are messages,
    // on standard error with the failures.
    const bool answer = args.empty() || args[0] == "info" || args[0] == "help" || hasArg(args, "--help") ||
                        hasArg(args, "-h") || hasArg(args, "--version");
    return runCli(args, answer ? std::cout : std::cerr, std::cerr);
}

}  // namespace inkdot::tools
