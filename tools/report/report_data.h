// The measurements behind "inkdot report": synthetic targets printed through
// the engine for every halftoning method of one configuration, written as
// CSV files that tools/report_plots.py turns into the report page.
//
//   config.csv    key,value: the configuration and the levels chosen
//   tone.csv      tone response: per ramp, input level and ink, the dot shares
//                 and the printed coverage (dots counted by their ink amounts)
//   spectrum.csv  radially averaged power spectrum and anisotropy of flat
//                 single-ink patches at several coverages
//   flat.csv      one line per method and flat patch: coverage, principal
//                 frequency, low-frequency power share, mean anisotropy
//   texture.csv   enlarged-crop material: the dot codes of light, middle and
//                 dark gray patches, one hex string per printed line
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "inkdot/job.h"
#include "report/dot_counts.h"
#include "report/printed_patch.h"

namespace inkdot::tools {

struct ReportParams {
    Method method = Method::ErrorDiffusion;  // shown first; every other method follows
    unsigned outputBits = 1;
    Resolution resolution = Resolution::R720x720;
    bool mono = false;
    std::string packName = "built-in";
    ColourSettings colour;  // the print settings the targets go through
    DotAmounts amounts;
};

// Sizes of the targets; the defaults make the report page, tests use smaller ones.
struct ReportPlan {
    PatchLayout tone{256, 32, 64};
    unsigned rampStep = 8;                // ramp levels 0, step, 2 step, ..., 255
    PatchLayout flat{512, 64, 512};       // spectrum patches
    uint32_t spectrumWindow = 128;        // periodogram size
    std::vector<double> flatTargets{1.0 / 16, 1.0 / 8, 1.0 / 4, 1.0 / 2, 3.0 / 4};
    uint32_t crop = 96;                   // texture crops, in line pitches (square on paper)
    std::vector<double> textureTargets{0.08, 0.35, 0.75};
};

// The methods of a report: the chosen one first, then the others that give
// the configuration's output depth (fixed threshold is one-bit only).
std::vector<Method> reportMethods(Method chosen, unsigned outputBits);
const char* methodName(Method m);

// Prints and measures every target and writes the CSV files into `dir` (which
// must exist). Progress lines go to `log`.
bool writeReportData(const ReportParams& params, const ReportPlan& plan, const BlockSource& pack,
                     const std::string& dir, std::ostream& log, std::string& error);

// The input level whose measured coverage in `coverage` (one value per level)
// is nearest `target`.
unsigned nearestLevel(const std::vector<unsigned>& levels, const std::vector<double>& coverage, double target);

// The frequency (cycles per mm) around which a blue-noise pattern of this dot
// share puts its power: one over the mean distance between the minority
// pixels, on a grid of dpiX × dpiY.
double principalFrequency(double dotted, Dpi dpi);

}  // namespace inkdot::tools
