// rastertoinkdot: the CUPS filter program.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "cups/cancel_request.h"
#include "cups/raster_filter.h"

int main(int argc, char** argv) {
    if (argc == 2 && std::string(argv[1]) == "--version") {
        std::printf("rastertoinkdot (inkdot) %s\n", INKDOT_VERSION);
        return 0;
    }
    inkdot::cups::FilterArgs args;
    std::string error;
    if (!inkdot::cups::parseFilterArgs(argc, argv, args, error)) {
        std::fprintf(stderr, "ERROR: %s\n", error.c_str());
        return 1;
    }
    if (const char* ppd = std::getenv("PPD")) args.ppdPath = ppd;
    inkdot::cups::watchForCancel();
    return inkdot::cups::runRasterFilter(args, 0, 1, stderr);
}
