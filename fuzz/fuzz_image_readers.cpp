// Fuzz target: the PNG, PNM and TIFF readers on one file. The input is
// handed over as a memory file (its /proc path), the way the readers meet a
// file on disk; the reader is chosen by the content, as `inkdot print`
// chooses it, and every row is read.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <vector>

#include "image/image_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const int fd = memfd_create("image", 0);
    if (fd < 0) return 0;
    if (size == 0 || write(fd, data, size) == static_cast<ssize_t>(size)) {
        std::string error;
        auto image = inkdot::tools::openImage("/proc/self/fd/" + std::to_string(fd), error);
        if (image) {
            // Rows of a claimed size: the readers' own limit bounds the row;
            // the rows read stop at the first failure.
            std::vector<uint8_t> row(size_t{image->width()} * image->channels());
            for (uint32_t y = 0; y < image->height() && image->readRow(row.data(), error); ++y) {
            }
        } else if (error.empty()) {
            __builtin_trap();  // a refusal always says why
        }
    }
    close(fd);
    return 0;
}
