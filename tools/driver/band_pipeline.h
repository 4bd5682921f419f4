// A page in bands of lines: each band is read (decoded and converted into
// the job's input), halftoned by the job and written (planes, preview,
// printer stream). On two or more cores the stages of successive bands
// overlap: band N + 1 is read while band N is halftoned and band N − 1
// written, each stage on its own thread. The library instance stays on one
// thread and sees the lines in page order, so the output is the serial one.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "inkdot/job.h"

namespace inkdot::tools {

// What happens to a page around its halftoning. Each stage is called from one
// thread at a time, band after band in page order; returning false stops the
// page, with the reason in `error`. The reader may stop with an empty error
// (a cancelled job): the bands read before are still halftoned and written.
struct BandStages {
    // Fills `count` input lines of the job (inputWidth() × inputBytesPerPixel()
    // bytes each, one after another): the page's input lines from `first` on.
    std::function<bool(uint8_t* lines, uint32_t first, uint32_t count, std::string& error)> read;
    // Takes `count` printed lines, each planeCount() planes of planeStride()
    // bytes as Job::halftoneLine leaves them: the page's lines from `first` on.
    std::function<bool(const uint8_t* lines, uint32_t first, uint32_t count, std::string& error)> write;
};

struct BandPlan {
    uint32_t inputLines = 0;
    unsigned lineRepeat = 1;   // printed lines per input line
    uint32_t bandLines = 32;   // input lines a band
    bool overlapped = true;    // stages on their own threads; false: one after another on this one
};

// Runs the page through `stages` and `job`. False at the first stage that
// fails (its reason in `error`) or when the reader stopped (empty `error`).
bool runBands(Job& job, const BandPlan& plan, const BandStages& stages, std::string& error);

// Whether this process may run on more than one core (its CPU affinity):
// overlapping the stages only pays when it can.
bool severalCores();

}  // namespace inkdot::tools
