// inkdot driver layer: runs both resource protocols for a print job and
// halftones a page line by line (C++).
//
//   std::string error;
//   auto pack = inkdot::openDefaultPack(error);
//   auto job = inkdot::Job::open(colour, setup, *pack, error);
//   std::vector<uint8_t> planes(job->planeCount() * job->planeStride());
//   for each input line: job->halftoneLine(line, planes.data(), error);
//
// Failures come back as false / null with one line of text in `error`.
#ifndef INKDOT_JOB_H
#define INKDOT_JOB_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "inkdot/inkdot.h"

namespace inkdot {

// Where the engine's resource blocks come from, by block number.
class BlockSource {
public:
    virtual ~BlockSource() = default;
    // The block's bytes; an empty span when the source has no such block.
    virtual std::span<const uint8_t> block(uint32_t number) const = 0;
    // The block that starts the halftone protocol (the request list).
    virtual uint32_t requestListBlock() const = 0;
};

// The pack compiled into the tools.
std::unique_ptr<BlockSource> openDefaultPack(std::string& error);
// A pack file written by `inkdot pack`.
std::unique_ptr<BlockSource> openPackFile(const std::string& path, std::string& error);

enum class Method { ErrorDiffusion, Dither, Threshold };
enum class Resolution { R720x720, R1440x720, R360x720, R720x360 };

struct Dpi {
    uint32_t x, y;
};
Dpi resolutionDpi(Resolution r);

struct ColourSettings {
    bool mono = false;
    int brightness = 0;   // -50..50
    int contrast = 0;     // -50..50
    int saturation = 0;   // -50..50
    int gamma = 150;      // hundredths, 100..300
    int offsetR = 0, offsetG = 0, offsetB = 0;  // -50..50, added to each tone curve
    // Requested weight of each ink (C, M, Y, K), 30..70, 50 = as the pack's base.
    std::optional<std::array<uint8_t, 4>> inkWeights;
};

// Horizontal scaling of input pixels to printed pixels.
enum class HScale { Half, x1, x2, x3, x4, x5 };

struct HalftoneSetup {
    Method method = Method::ErrorDiffusion;
    unsigned outputBits = 1;  // 1 or 2
    Resolution resolution = Resolution::R720x720;
    HScale hscale = HScale::x1;
    uint32_t inputWidth = 0;  // pixels per input line
};

// The engine's words for a result code, e.g. "resource data missing, out of
// order or invalid (code 0x300)".
std::string resultMessage(uint32_t code);

class Job {
public:
    // Runs CmNew and the colour-management protocol, HalftoneNew and the
    // halftone protocol, and only then releases the colour-management instance.
    static std::unique_ptr<Job> open(const ColourSettings& colour, const HalftoneSetup& setup,
                                     const BlockSource& source, std::string& error);
    ~Job();
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    uint32_t inputWidth() const { return inputWidth_; }
    uint32_t outputWidth() const { return outputWidth_; }
    unsigned inputBytesPerPixel() const { return mono_ ? 1 : 3; }
    unsigned planeCount() const { return mono_ ? 1 : 4; }
    // Bytes of one output line of one plane.
    size_t planeStride() const { return planeStride_; }
    unsigned outputBits() const { return outputBits_; }
    uint32_t modelId() const { return modelId_; }

    // Halftones the next line: `input` holds inputWidth() pixels (gray bytes
    // for mono, R G B for colour; the job hands the engine its own B G R
    // order); `planes` receives planeCount() planes of
    // planeStride() bytes, plane k at k × planeStride() (C, M, Y, K; mono: K).
    bool halftoneLine(const uint8_t* input, uint8_t* planes, std::string& error);

private:
    Job() = default;

    HtContext* ht_ = nullptr;
    bool mono_ = false;
    unsigned outputBits_ = 1;
    uint32_t inputWidth_ = 0;
    uint32_t outputWidth_ = 0;
    size_t planeStride_ = 0;
    uint32_t modelId_ = 0;
    uint32_t lineNo_ = 0;
    std::vector<uint8_t> inputCopy_;  // input plus the margin some kernels read past a run
};

}  // namespace inkdot

#endif  // INKDOT_JOB_H
