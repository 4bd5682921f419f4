// A print job: both resource protocols in the order the engine dictates, then
// one Halftone call per raster line.
#include "inkdot/job.h"

#include <cstddef>
#include <cstring>

#include "driver/block_checks.h"
#include "driver/pack_keys.h"

namespace inkdot {

using tools::BlockRole;

namespace {

// A protocol that keeps asking for blocks is broken; these bound the loops
// (colour management needs at most six calls, halftoning four).
constexpr int kMaxCmCalls = 8;
constexpr int kMaxHtCalls = 6;

constexpr uint32_t kGammaChunk = 1;
constexpr uint32_t kChannelWeightChunk = 512;

// Layout twin of ChunkDirectory with room for the two chunks the driver hands over.
struct ChunkStorage {
    int32_t count;
    ChunkEntry entries[2];
};
static_assert(offsetof(ChunkStorage, entries) == offsetof(ChunkDirectory, entries));

// Everything the colour-management settings point to must live until the
// protocol ends.
struct CmInputs {
    CmSettings1 s1{};
    CmSettings2 s2{};
    int32_t gamma = 150;
    uint8_t channelWeights[10] = {};
    ChunkStorage chunks{};
};

void fillCmInputs(const ColourSettings& colour, Resolution resolution, CmInputs& in) {
    namespace keys = tools::keys;
    in.s1.brightness = colour.brightness;
    in.s1.contrast = colour.contrast;
    in.s1.saturation = colour.saturation;
    in.s1.offsetR = colour.offsetR;
    in.s1.offsetG = colour.offsetG;
    in.s1.offsetB = colour.offsetB;
    in.s1.selectB = keys::resolutionKey(resolution);
    in.s1.neutralSetting = keys::kNeutralPlain;
    in.s2.selectA = keys::kMediaPlain;
    in.s2.inkScaleGate = keys::kNoWholeTableInkScaling;
    in.s2.pixelFormat = keys::kPixelFormatRgb;
    in.s2.selectD = colour.mono ? keys::kMono : keys::kColour;

    in.gamma = colour.gamma;
    in.chunks.entries[in.chunks.count++] = {kGammaChunk, &in.gamma};
    if (colour.inkWeights) {
        // "CW:", the routing key, one weight per channel, then 0xFE 0xFF.
        uint8_t* w = in.channelWeights;
        std::memcpy(w, "CW:", 3);
        w[3] = keys::kRoutingKey;
        for (int c = 0; c < 4; ++c) w[4 + c] = (*colour.inkWeights)[c];
        w[8] = 0xFE;
        w[9] = 0xFF;
        in.chunks.entries[in.chunks.count++] = {kChannelWeightChunk, in.channelWeights};
    }
    in.s1.chunkDir = reinterpret_cast<const ChunkDirectory*>(&in.chunks);
}

BlockRole cmRole(int call) {
    switch (call) {
        case 1: return BlockRole::IndexText;
        case 2: return BlockRole::ColourTable;
        case 3: return BlockRole::Routing;
        case 4: return BlockRole::BaseWeights;
        case 5: return BlockRole::IndexText;
        default: return BlockRole::CorrectionTables;
    }
}

BlockRole htRole(int call) {
    switch (call) {
        case 1: return BlockRole::RequestList;
        case 2: return BlockRole::GridLevels;
        case 3: return BlockRole::ThresholdMatrix;
        default: return BlockRole::DotSplit;
    }
}

// Looks up and checks the block a protocol asked for; empty on failure.
std::vector<uint8_t> fetchBlock(const BlockSource& source, uint32_t number, BlockRole role, std::string& error) {
    const std::span<const uint8_t> bytes = source.block(number);
    if (bytes.empty()) {
        error = "the resource pack has no block " + std::to_string(number) + " (" + tools::roleName(role) + ")";
        return {};
    }
    if (std::string why = tools::checkBlock(role, bytes); !why.empty()) {
        error = "block " + std::to_string(number) + " (" + tools::roleName(role) + ") " + why;
        return {};
    }
    return tools::engineCopy(bytes);
}

uint32_t engineMethod(Method m) {
    switch (m) {
        case Method::ErrorDiffusion: return INKDOT_METHOD_DIFFUSION;
        case Method::Dither: return INKDOT_METHOD_MATRIX;
        case Method::Threshold: return INKDOT_METHOD_THRESHOLD;
    }
    return INKDOT_METHOD_DIFFUSION;
}

// Engine scaling code and output width for an input width.
int32_t scaleCode(HScale s) {
    switch (s) {
        case HScale::Half: return INKDOT_SCALE_HALVE;  // each output pixel from two input pixels
        case HScale::x1: return INKDOT_SCALE_NONE;
        case HScale::x2: return INKDOT_SCALE_DOUBLE;   // the kernels' own doubling
        default: return static_cast<int32_t>(s) - 1;  // expansion by n + 1: x3 → 2 … x5 → 4
    }
}

uint64_t scaledWidth(uint32_t inputWidth, HScale s) {
    if (s == HScale::Half) return inputWidth / 2;
    return uint64_t{inputWidth} * static_cast<uint32_t>(s);
}

// Colour management: CmNew and its resource protocol. Leaves the instance in
// `cm` (also on failure, for the caller to delete). The colour table must also
// hold what halftoning at `outputBits` reads from it.
bool runColourProtocol(const CmInputs& in, const BlockSource& source, unsigned outputBits, CmContext*& cm,
                       std::string& error) {
    uint32_t next = 0;
    uint32_t rc = CmNew(&in.s1, &in.s2, 0, &next, &cm);
    if (rc != RC_OK) {
        error = "colour management could not start: " + resultMessage(rc);
        return false;
    }
    for (int call = 1; call <= kMaxCmCalls; ++call) {
        const uint32_t asked = next;
        std::vector<uint8_t> block = fetchBlock(source, asked, cmRole(call), error);
        if (block.empty()) return false;
        const std::string why =
            cmRole(call) == BlockRole::ColourTable ? tools::checkHalftoneUse(block, outputBits) : std::string{};
        if (!why.empty()) {
            error = "block " + std::to_string(asked) + " (colour table) " + why;
            return false;
        }
        rc = CmSetResource(cm, block.data(), &next);
        if (rc != RC_OK) {
            error = "colour management refused block " + std::to_string(asked) + ": " + resultMessage(rc);
            if (rc == RC_DATA && call == 1) error += "; no colour table in the index matches these settings";
            return false;
        }
        if (next == INKDOT_NO_MORE_BLOCKS) return true;
    }
    error = "colour management kept asking for blocks";
    return false;
}

}  // namespace

Dpi resolutionDpi(Resolution r) {
    switch (r) {
        case Resolution::R720x720: return {720, 720};
        case Resolution::R1440x720: return {1440, 720};
        case Resolution::R360x720: return {360, 720};
        case Resolution::R720x360: return {720, 360};
    }
    return {720, 720};
}

std::unique_ptr<Job> Job::open(const ColourSettings& colour, const HalftoneSetup& setup, const BlockSource& source,
                               std::string& error) {
    const uint64_t outputWidth = scaledWidth(setup.inputWidth, setup.hscale);
    if (setup.inputWidth == 0 || outputWidth == 0 || outputWidth > 0xFFFFFFu) {
        error = "the line width of " + std::to_string(setup.inputWidth) + " pixels cannot be printed at this scaling";
        return nullptr;
    }
    if (setup.outputBits != INKDOT_ONE_BIT && setup.outputBits != INKDOT_TWO_BITS) {
        error = "output bits must be 1 or 2";
        return nullptr;
    }

    std::unique_ptr<Job> job(new Job);
    job->mono_ = colour.mono;
    job->outputBits_ = setup.outputBits;
    job->inputWidth_ = setup.inputWidth;
    job->outputWidth_ = static_cast<uint32_t>(outputWidth);
    job->planeStride_ = (outputWidth * setup.outputBits + 7) / 8;
    // Some kernels read a few bytes past the last pixel of a run; the copy has room.
    job->inputCopy_.assign(size_t{setup.inputWidth} * job->inputBytesPerPixel() + 16, 0);

    CmInputs in;
    fillCmInputs(colour, setup.resolution, in);
    CmContext* cm = nullptr;
    if (!runColourProtocol(in, source, setup.outputBits, cm, error)) {
        if (cm != nullptr) CmDelete(cm);
        return nullptr;
    }

    const Dpi dpi = resolutionDpi(setup.resolution);
    HtSettings hs{};
    hs.method = engineMethod(setup.method);
    hs.ditherMode = INKDOT_DITHER_PLAIN;  // colour dither: the plain matrix kernel for every plane
    hs.inputFormat = colour.mono ? INKDOT_INPUT_GRAY : INKDOT_INPUT_RGB;
    hs.colourMode = colour.mono ? INKDOT_MONO : INKDOT_COLOUR;
    hs.resolutionX = dpi.x;
    hs.resolutionY = dpi.y;
    hs.outputBits = setup.outputBits;
    hs.scaleMode = scaleCode(setup.hscale);
    hs.width = job->outputWidth_;

    // The halftone protocol reads the colour grid and the dot-split descriptor
    // through the CmLut's pointers: the colour-management instance stays alive
    // until it has finished.
    uint32_t rc = HalftoneNew(&hs, CmGetLut(cm), 0, &job->modelId_, &job->ht_);
    bool ok = rc == RC_OK;
    if (!ok) error = "halftoning could not start: " + resultMessage(rc);
    uint32_t next = source.requestListBlock();
    for (int call = 1; ok; ++call) {
        if (call > kMaxHtCalls) {
            error = "halftoning kept asking for blocks";
            ok = false;
            break;
        }
        const uint32_t asked = next;
        std::vector<uint8_t> block = fetchBlock(source, asked, htRole(call), error);
        if (block.empty()) {
            ok = false;
            break;
        }
        rc = HalftoneSetResource(job->ht_, block.data(), &next);
        if (rc != RC_OK) {
            error = "halftoning refused block " + std::to_string(asked) + ": " + resultMessage(rc);
            if (rc == RC_ARG + 1 && call == 3 && setup.outputBits == INKDOT_TWO_BITS)
                error += "; two-bit output is not available at this resolution";
            ok = false;
        } else if (next == INKDOT_NO_MORE_BLOCKS) {
            break;
        }
    }
    CmDelete(cm);
    if (!ok) return nullptr;  // the destructor deletes the halftone instance
    return job;
}

Job::~Job() {
    if (ht_ != nullptr) HalftoneDelete(ht_);
}

bool Job::halftoneLine(const uint8_t* input, uint8_t* planes, std::string& error) {
    if (mono_) {
        std::memcpy(inputCopy_.data(), input, inputWidth_);
    } else {
        // The engine's raster pixels are blue, green, red: byte 2 picks the
        // grid's red axis.
        uint8_t* out = inputCopy_.data();
        for (uint32_t x = 0; x < inputWidth_; ++x, input += 3, out += 3) {
            out[0] = input[2];
            out[1] = input[1];
            out[2] = input[0];
        }
    }
    const uint32_t rc = Halftone(ht_, inputCopy_.data(), planes, static_cast<uint32_t>(planeStride_), 0,
                                 outputWidth_, 0, 0, lineNo_, 0, 0);
    if (rc != RC_OK) {
        error = "halftoning line " + std::to_string(lineNo_) + " failed: " + resultMessage(rc);
        if (rc == RC_ARG) error += "; two-bit output needs error diffusion or dither";
        return false;
    }
    ++lineNo_;
    return true;
}

}  // namespace inkdot
