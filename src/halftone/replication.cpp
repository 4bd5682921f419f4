#include "halftone/replication.h"

#include <cstring>

namespace inkdot {

void replicatePixels(const uint8_t* in, uint8_t* out, uint32_t pixelBytes, uint32_t factor,
                     uint32_t target) {
    uint32_t written = 0;
    while (written < target) {
        for (uint32_t r = 0; r < factor && written < target; ++r, ++written) {
            if (pixelBytes == 4) {
                uint32_t word;  // four-byte pixels travel as whole words
                std::memcpy(&word, in, 4);
                std::memcpy(out, &word, 4);
            } else {
                std::memcpy(out, in, pixelBytes);
            }
            out += pixelBytes;
        }
        in += pixelBytes;
    }
}

}  // namespace inkdot
