// The inkdot command-line program.
#include "cli/cli.h"

int main(int argc, char** argv) { return inkdot::tools::runCli(argc, argv); }
