// Writing one ink plane as it comes from the engine: one-bit planes as PBM
// (P4; 1 = dot = black, the engine's own bit order), two-bit planes as a
// four-level PGM (P5, maxval 3) whose sample is 3 − dot code, so that a large
// dot shows black and no dot white.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "image/atomic_file.h"

namespace inkdot::tools {

class PlaneWriter {
public:
    bool open(const std::string& path, uint32_t width, uint32_t height, unsigned bits, std::string& error);
    // One engine output line of this plane.
    bool writeLine(const uint8_t* packed, std::string& error);
    bool finish(std::string& error);

private:
    AtomicFile file_;
    uint32_t width_ = 0;
    unsigned bits_ = 1;
    std::vector<uint8_t> levels_;
};

}  // namespace inkdot::tools
