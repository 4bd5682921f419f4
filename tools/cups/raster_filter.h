// rastertoinkdot: CUPS raster pages in (8-bit gray or RGB), halftoned CUPS
// raster pages out (K or CMYK, 1 or 2 bits a colour, banded or planar).
#pragma once

#include <cstdio>
#include <string>

namespace inkdot::cups {

// The filter's command line as the scheduler gives it.
struct FilterArgs {
    std::string jobId;
    std::string user;
    std::string title;
    int copies = 1;
    std::string options;   // "name=value …"
    std::string file;      // empty: standard input
    std::string ppdPath;   // the queue's PPD ($PPD), for its defaults
};

// Reads argv (program, job-id, user, title, copies, options[, file]); false
// with the reason in `error` for a command line the filter cannot run.
bool parseFilterArgs(int argc, const char* const* argv, FilterArgs& out, std::string& error);

// Runs the filter: reads the raster from `args.file` or `inFd`, writes to
// `outFd`, and reports to `log` in the scheduler's "INFO:"/"ERROR:"/"ATTR:"
// lines. Returns the exit status: 0 done (also after a cancel), 1 failed.
int runRasterFilter(const FilterArgs& args, int inFd, int outFd, std::FILE* log);

}  // namespace inkdot::cups
