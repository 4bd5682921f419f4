// Fuzz target: the CUPS raster filter's page loop on a raster stream held in
// memory (a memory file as its standard input), output and log discarded.
// The first byte chooses the queue options (quality and plane order, which
// decide whether pages are held whole); the rest is the stream.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>

#include "cups/raster_filter.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    static const char* const kOptions[4] = {"", "InkdotQuality=Draft", "InkdotOrder=Planar",
                                            "InkdotQuality=High InkdotOrder=Planar"};
    static std::FILE* const log = std::fopen("/dev/null", "w");
    static const int out = open("/dev/null", O_WRONLY);
    const int in = memfd_create("raster", 0);
    if (in < 0) return 0;
    if (write(in, data + 1, size - 1) == static_cast<ssize_t>(size - 1) && lseek(in, 0, SEEK_SET) == 0) {
        inkdot::cups::FilterArgs args;
        args.jobId = "1";
        args.options = kOptions[data[0] & 3];
        args.copies = 1 + (data[0] >> 2 & 1);  // a second copy holds the page
        const int status = inkdot::cups::runRasterFilter(args, in, out, log);
        if (status != 0 && status != 1) __builtin_trap();
    }
    close(in);
    return 0;
}
