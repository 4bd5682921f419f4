// Flat colour patches printed through the real engine (inkdot::Job), kept as
// plane lines for measuring.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "inkdot/job.h"
#include "report/dot_counts.h"
#include "report/power_spectrum.h"

namespace inkdot::tools {

struct Rgb {
    uint8_t r, g, b;
};

struct PrintedPatch {
    uint32_t width = 0, height = 0;  // printed pixels, lines
    unsigned planes = 0, bits = 1;
    size_t stride = 0;               // bytes of one plane line
    std::vector<uint8_t> data;       // line y of plane p at (y × planes + p) × stride

    const uint8_t* line(unsigned plane, uint32_t y) const { return &data[(size_t{y} * planes + plane) * stride]; }
};

// How the patches of one job are laid out: every patch is the full job width,
// `runIn` lines that are printed but not kept (error diffusion settles from
// the previous patch's error), then `height` kept lines.
struct PatchLayout {
    uint32_t width = 256;
    uint32_t runIn = 32;
    uint32_t height = 64;
};

// Prints one flat patch per colour, in order, with one job. Mono jobs read
// the colour's red byte as gray. False with a reason on failure.
bool printFlatPatches(const ColourSettings& colour, const HalftoneSetup& setup, const BlockSource& pack,
                      std::span<const Rgb> colours, const PatchLayout& layout, std::vector<PrintedPatch>& out,
                      std::string& error);

// Dot counts of one plane over the whole patch.
DotCounts countPlane(const PrintedPatch& patch, unsigned plane);

// Adds every whole size × size window of one plane (dots as their ink
// amounts) to the spectrum.
void addPlaneWindows(const PrintedPatch& patch, unsigned plane, const DotAmounts& amounts,
                     SpectrumAccumulator& spectrum);

}  // namespace inkdot::tools
