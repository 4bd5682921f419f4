// rastertoinkdot: CUPS raster pages in (8-bit gray or RGB), halftoned CUPS
// raster pages out (K or CMYK, 1 or 2 bits a colour, banded or planar).
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace inkdot {
class BlockSource;
}

namespace inkdot::cups {

// What one stream may ask of the filter. The defaults are the filter's own
// bounds: lines of the engine's widest line (2^24 - 1 pixels) of 8-bit RGB,
// pages of any length, and the scheduler's MaxCopies (9999 by default). A
// caller that feeds it many small streams (a fuzzer) sets small ones, so that
// each stream ends in a moment.
struct FilterLimits {
    uint32_t lineBytes = ((1u << 24) - 1) * 3;
    uint32_t pageLines = UINT32_MAX;
    int copies = 9999;
};

// The filter's command line as the scheduler gives it.
struct FilterArgs {
    std::string jobId;
    std::string user;
    std::string title;
    int copies = 1;
    std::string options;   // "name=value …"
    std::string file;      // empty: standard input
    std::string ppdPath;   // the queue's PPD ($PPD), for its defaults
    FilterLimits limits;
    const BlockSource* pack = nullptr;  // the built-in pack when null; a caller running many streams opens it once
};

// Reads argv (program, job-id, user, title, copies, options[, file]); false
// with the reason in `error` for a command line the filter cannot run.
bool parseFilterArgs(int argc, const char* const* argv, FilterArgs& out, std::string& error);

// Runs the filter: reads the raster from `args.file` or `inFd`, writes to
// `outFd`, and reports to `log` in the scheduler's "INFO:"/"ERROR:"/"ATTR:"
// lines. Returns the exit status: 0 done (also after a cancel), 1 failed.
int runRasterFilter(const FilterArgs& args, int inFd, int outFd, std::FILE* log);

}  // namespace inkdot::cups
