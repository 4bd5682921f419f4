// The C interface of the driver layer (inkdot/inkdot_job.h): opaque handles
// over BlockSource and Job. Every setting is checked here, because a C caller
// has no command line in front of it that did so.
#include "inkdot/inkdot_job.h"

#include <cstring>
#include <exception>
#include <memory>
#include <string>

#include "inkdot/job.h"

struct InkdotPack {
    std::unique_ptr<inkdot::BlockSource> source;
};

struct InkdotJob {
    std::unique_ptr<inkdot::Job> job;
};

namespace {

using namespace inkdot;

constexpr const char* kOutOfMemory = "out of memory";

// The C codes of resolution and scaling are the C++ enumerations' values.
static_assert(static_cast<int>(Resolution::R720x720) == INKDOT_RES_720X720 &&
              static_cast<int>(Resolution::R1440x720) == INKDOT_RES_1440X720 &&
              static_cast<int>(Resolution::R360x720) == INKDOT_RES_360X720 &&
              static_cast<int>(Resolution::R720x360) == INKDOT_RES_720X360);
static_assert(static_cast<int>(HScale::Half) == INKDOT_HSCALE_HALF && static_cast<int>(HScale::x1) == INKDOT_HSCALE_1 &&
              static_cast<int>(HScale::x5) == INKDOT_HSCALE_5);

void copyOut(const std::string& text, char* buffer, size_t size) {
    if (buffer == nullptr || size == 0) return;
    const size_t n = text.size() < size - 1 ? text.size() : size - 1;
    std::memcpy(buffer, text.data(), n);
    buffer[n] = '\0';
}

bool within(int v, int lo, int hi) { return v >= lo && v <= hi; }

// The C settings as the C++ layer's records; false with the field at fault.
bool convertSettings(const InkdotJobSettings& s, ColourSettings& colour, HalftoneSetup& setup, std::string& error) {
    constexpr int kAdjustLimit = 50;
    const struct {
        const char* name;
        int value, lo, hi;
    } ranges[] = {
        {"method", s.method, INKDOT_JOB_ED, INKDOT_JOB_THRESHOLD},
        {"outputBits", s.outputBits, 1, 2},
        {"resolution", s.resolution, INKDOT_RES_720X720, INKDOT_RES_720X360},
        {"hscale", s.hscale, INKDOT_HSCALE_HALF, INKDOT_HSCALE_5},
        {"brightness", s.brightness, -kAdjustLimit, kAdjustLimit},
        {"contrast", s.contrast, -kAdjustLimit, kAdjustLimit},
        {"saturation", s.saturation, -kAdjustLimit, kAdjustLimit},
        {"gamma", s.gamma, 100, 300},
        {"offsetR", s.offsetR, -kAdjustLimit, kAdjustLimit},
        {"offsetG", s.offsetG, -kAdjustLimit, kAdjustLimit},
        {"offsetB", s.offsetB, -kAdjustLimit, kAdjustLimit},
    };
    for (const auto& r : ranges) {
        if (!within(r.value, r.lo, r.hi)) {
            error = std::string("settings: ") + r.name + " must be " + std::to_string(r.lo) + " to " +
                    std::to_string(r.hi) + ", not " + std::to_string(r.value);
            return false;
        }
    }
    colour.mono = s.mono != 0;
    colour.brightness = s.brightness;
    colour.contrast = s.contrast;
    colour.saturation = s.saturation;
    colour.gamma = s.gamma;
    colour.offsetR = s.offsetR;
    colour.offsetG = s.offsetG;
    colour.offsetB = s.offsetB;
    if (s.useInkWeights) {
        std::array<uint8_t, 4> weights{};
        for (int c = 0; c < 4; ++c) {
            if (!within(s.inkWeights[c], 30, 70)) {
                error = "settings: inkWeights[" + std::to_string(c) + "] must be 30 to 70, not " +
                        std::to_string(s.inkWeights[c]);
                return false;
            }
            weights[c] = s.inkWeights[c];
        }
        colour.inkWeights = weights;
    }
    constexpr Method kMethods[] = {Method::ErrorDiffusion, Method::Dither, Method::Threshold};
    setup.method = kMethods[s.method];
    setup.outputBits = static_cast<unsigned>(s.outputBits);
    setup.resolution = static_cast<Resolution>(s.resolution);
    setup.hscale = static_cast<HScale>(s.hscale);
    setup.inputWidth = s.inputWidth;
    return true;
}

}  // namespace

extern "C" {

// No C++ exception may reach a C caller: an allocation that fails inside the
// driver layer comes back as a failure with a message.

InkdotPack* InkdotPackOpenDefault(char* error, size_t errorSize) {
    try {
        std::string why;
        auto pack = std::make_unique<InkdotPack>();
        pack->source = openDefaultPack(why);
        if (pack->source) return pack.release();
        copyOut(why, error, errorSize);
    } catch (const std::exception&) {
        copyOut(kOutOfMemory, error, errorSize);
    }
    return nullptr;
}

InkdotPack* InkdotPackOpenFile(const char* path, char* error, size_t errorSize) {
    if (path == nullptr) {
        copyOut("no pack file named", error, errorSize);
        return nullptr;
    }
    try {
        std::string why;
        auto pack = std::make_unique<InkdotPack>();
        pack->source = openPackFile(path, why);
        if (pack->source) return pack.release();
        copyOut(why, error, errorSize);
    } catch (const std::exception&) {
        copyOut(kOutOfMemory, error, errorSize);
    }
    return nullptr;
}

const uint8_t* InkdotPackBlock(const InkdotPack* pack, uint32_t number, size_t* size) {
    std::span<const uint8_t> bytes;
    if (pack != nullptr) bytes = pack->source->block(number);
    if (size != nullptr) *size = bytes.size();
    return bytes.empty() ? nullptr : bytes.data();
}

void InkdotPackClose(InkdotPack* pack) { delete pack; }

void InkdotJobSettingsInit(InkdotJobSettings* settings) {
    if (settings == nullptr) return;
    *settings = {};
    settings->method = INKDOT_JOB_ED;
    settings->outputBits = 1;
    settings->resolution = INKDOT_RES_720X720;
    settings->hscale = INKDOT_HSCALE_1;
    settings->gamma = ColourSettings{}.gamma;
    for (uint8_t& w : settings->inkWeights) w = 50;
}

InkdotJob* InkdotJobOpen(const InkdotPack* pack, const InkdotJobSettings* settings, char* error, size_t errorSize) {
    if (pack == nullptr || settings == nullptr) {
        copyOut("no pack or no settings given", error, errorSize);
        return nullptr;
    }
    try {
        ColourSettings colour;
        HalftoneSetup setup;
        std::string why;
        auto job = std::make_unique<InkdotJob>();
        if (convertSettings(*settings, colour, setup, why)) job->job = Job::open(colour, setup, *pack->source, why);
        if (job->job) return job.release();
        copyOut(why, error, errorSize);
    } catch (const std::exception&) {
        copyOut(kOutOfMemory, error, errorSize);
    }
    return nullptr;
}

void InkdotJobGetLayout(const InkdotJob* job, InkdotJobLayout* layout) {
    if (job == nullptr || layout == nullptr) return;
    const Job& j = *job->job;
    *layout = {j.inputWidth(), j.inputBytesPerPixel(), j.outputWidth(), j.outputBits(),
               j.planeCount(), j.planeStride(),        j.modelId()};
}

int InkdotJobHalftoneLine(InkdotJob* job, const uint8_t* input, uint8_t* planes, char* error, size_t errorSize) {
    if (job == nullptr || input == nullptr || planes == nullptr) {
        copyOut("no job, input line or plane buffer given", error, errorSize);
        return INKDOT_JOB_FAILED;
    }
    try {
        std::string why;
        if (job->job->halftoneLine(input, planes, why)) return INKDOT_JOB_OK;
        copyOut(why, error, errorSize);
    } catch (const std::exception&) {
        copyOut(kOutOfMemory, error, errorSize);
    }
    return INKDOT_JOB_FAILED;
}

void InkdotJobClose(InkdotJob* job) { delete job; }

const char* InkdotResultMessage(uint32_t code, char* buffer, size_t bufferSize) {
    try {
        copyOut(resultMessage(code), buffer, bufferSize);
    } catch (const std::exception&) {
        copyOut(kOutOfMemory, buffer, bufferSize);
    }
    return buffer;
}

}  // extern "C"
