// Fuzz target: the CUPS raster filter's page loop on a raster stream held in
// memory (a memory file as its standard input), output and log discarded.
// The first byte chooses the queue options (quality and plane order, which
// decide whether pages are held whole); the rest is the stream. The filter
// reads it with small limits on the page.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "cups/raster_filter.h"
#include "inkdot/job.h"

// Small pages keep a stream short: lines of 32 RGB or 96 gray pixels, 100
// lines (four bands, so that band buffers are reused) and two copies meet
// every rule of the page loop, while a stream of a few KB could otherwise
// ask, compressed, for millions of lines or thousands of copies.
constexpr inkdot::cups::FilterLimits kLimits{.lineBytes = 96, .pageLines = 100, .copies = 2};

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    static const char* const kOptions[4] = {"", "InkdotQuality=Draft", "InkdotOrder=Planar",
                                            "InkdotQuality=High InkdotOrder=Planar"};
    // The log is flushed at every line: a sink with no system call behind it.
    static std::FILE* const log = fopencookie(nullptr, "w", {.write = [](void*, const char*, size_t n) {
        return static_cast<ssize_t>(n);
    }});
    static const int out = open("/dev/null", O_WRONLY);
    static const std::unique_ptr<inkdot::BlockSource> pack = [] {  // opened once: it is not the input
        std::string error;
        return inkdot::openDefaultPack(error);
    }();
    const int in = memfd_create("raster", 0);
    if (in < 0) return 0;
    if (write(in, data + 1, size - 1) == static_cast<ssize_t>(size - 1) && lseek(in, 0, SEEK_SET) == 0) {
        inkdot::cups::FilterArgs args;
        args.jobId = "1";
        args.options = kOptions[data[0] & 3];
        args.copies = 1 + (data[0] >> 2 & 1);  // a second copy holds the page
        args.limits = kLimits;
        args.pack = pack.get();
        const int status = inkdot::cups::runRasterFilter(args, in, out, log);
        if (status != 0 && status != 1) __builtin_trap();
    }
    close(in);
    return 0;
}
