// Reading back a halftoned CUPS raster stream (K or CMYK, 1 or 2 bits a
// colour, banded or planar) into per-plane counts: how many pixels carry a
// dot and how much ink they carry.
#pragma once

#include <cups/raster.h>

#include <cstdint>
#include <string>
#include <vector>

namespace inkdot::cups {

struct PlaneCounts {
    uint64_t dots = 0;  // pixels with any dot
    uint64_t ink = 0;   // sum of dot codes (1 for a one-bit dot; 1 to 3 for two bits)
};

struct PageSummary {
    cups_page_header2_t header{};
    std::vector<PlaneCounts> planes;

    uint64_t pixels() const { return uint64_t{header.cupsWidth} * header.cupsHeight; }
    // Ink as a share of a page of the largest dots, 0 to 1.
    double coverage(unsigned plane) const;
};

// Adds the dot codes of one packed plane line (`width` pixels of `bits` bits,
// first pixel in the most significant bits) to `counts`.
void countLine(const uint8_t* line, uint32_t width, unsigned bits, PlaneCounts& counts);

// Reads every page of the stream on `fd`; false with the reason in `error`
// when the stream is not a halftoned raster this module reads, or ends early.
bool summariseRaster(int fd, std::vector<PageSummary>& pages, std::string& error);

}  // namespace inkdot::cups
