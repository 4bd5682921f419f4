// Every row of the dispatch table through the public Halftone call, as a
// driver makes it: one 10 000-pixel line per call, lines top to bottom, on an
// instance fed through the halftone resource protocol (a 64 x 64 threshold
// matrix holding every value 0..4095 once, in random order like the
// blue-noise matrices drivers load). Two contents per kernel:
// "photo" (gradients, soft blobs and grain) and "flat" (one mid tone).
// Benchmark name = kernel name; items per second are output pixels per second.
//
// A kernel that is not written yet answers RC_DATA; its benchmark is skipped
// with that code, so the program runs while kernels land.
//
// Also the whole halftone resource protocol (HalftoneNew, every phase,
// HalftoneDelete) for colour one-bit and two-bit instances.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "halftone/dispatch.h"
#include "support/ht_fixture.h"
#include "synthetic_photo.h"

namespace inkdot {
namespace {

constexpr uint32_t kWidth = 10000;
constexpr uint32_t kLines = 16;        // distinct input lines, cycled
constexpr uint32_t kPhotoHeight = 1024;  // the photo's height, for its vertical gradient
constexpr uint32_t kMatrixSide = 64;

// A 64 x 64 matrix holding each of 0..4095 once, shuffled. The order matters:
// the diffusion kernels choose spread forms by the parity of each matrix
// value, and a matrix whose parity alternates along a line (as any odd
// multiplier scatter's does) lets the branch predictor learn a choice that a
// real matrix makes at random.
test::Bytes permutationMatrix() {
    std::vector<uint16_t> cells(kMatrixSide * kMatrixSide);
    for (uint32_t i = 0; i < cells.size(); ++i) cells[i] = static_cast<uint16_t>(i);
    std::shuffle(cells.begin(), cells.end(), std::mt19937(7));
    return test::thresholdMatrixBlock(kMatrixSide, kMatrixSide, cells);
}

test::HtBlocks benchBlocks() {
    test::HtBlocks blocks;
    blocks.matrix = permutationMatrix();
    return blocks;
}

// Monochrome: ink is the inverse of the gray input.
const test::MonoLut& monoLut() {
    static const test::MonoLut lut([](int v) { return 255 - v; });
    return lut;
}

// Colour: a 17-point grid with a plain CMYK separation (black = half the smallest of c, m, y).
const test::ColourLut& colourLut() {
    static const test::ColourLut lut(test::evenLevels(17), [](int r, int g, int b) {
        const int c = 255 - r, m = 255 - g, y = 255 - b;
        const int k = std::min(c, std::min(m, y));
        return test::ColourLut::Node{static_cast<uint8_t>(c), static_cast<uint8_t>(m), static_cast<uint8_t>(y),
                                     static_cast<uint8_t>(k / 2)};
    });
    return lut;
}

// One dispatch row: the settings that reach it.
struct Row {
    const char* name;  // the kernel's name, with a suffix where two rows share a kernel
    const char* kernel;
    uint32_t method;
    uint32_t ditherMode;
    uint32_t colourMode;
    uint32_t resolutionX;
    uint32_t resolutionY;
    uint32_t outputBits;
    int32_t scaleMode;
};

// Two-bit instances need a class with two-bit spread thresholds, so their
// "general" rows run at equal resolutions (720 x 720). The plain colour
// error-diffusion sisters are reached with halving input (scaleMode -1),
// which reads one three-byte pixel per output pixel there.
// clang-format off
constexpr Row kRows[] = {
    {"Dither2ColourDoubleY",   "Dither2ColourDoubleY", 3, 1, 1,  720, 1440, 2,  0},
    {"Dither2Colour",          "Dither2Colour",        3, 1, 1,  720,  720, 2,  0},
    {"Dither2MonoDoubleY",     "Dither2MonoDoubleY",   3, 1, 0,  720, 1440, 2,  0},
    {"Dither2Mono",            "Dither2Mono",          3, 1, 0,  720,  720, 2,  0},
    {"Ed2Colour1440x720",      "Ed2Colour1440x720",    1, 1, 1, 1440,  720, 2,  0},
    {"Ed2ColourDoubleY",       "Ed2ColourDoubleY",     1, 1, 1,  720, 1440, 2,  0},
    {"Ed2ColourGeneral",       "Ed2ColourGeneral",     1, 1, 1,  720,  720, 2,  0},
    {"Ed2Mono1440x720",        "Ed2Mono1440x720",      1, 1, 0, 1440,  720, 2,  0},
    {"Ed2MonoDoubleY",         "Ed2MonoDoubleY",       1, 1, 0,  720, 1440, 2,  0},
    {"Ed2MonoGeneral",         "Ed2MonoGeneral",       1, 1, 0,  720,  720, 2,  0},
    {"Dither1Mono",            "Dither1Mono",          3, 1, 0,  720,  720, 1,  0},
    {"Dither1ColourHybrid",    "Dither1ColourHybrid",  3, 0, 1,  720,  720, 1,  0},
    {"Dither1Colour",          "Dither1Colour",        3, 1, 1,  720,  720, 1,  0},
    {"Dither1Mono_threshold",  "Dither1Mono",          0, 1, 0,  720,  720, 1,  0},
    {"Threshold1Colour",       "Threshold1Colour",     0, 1, 1,  720,  720, 1,  0},
    {"Ed1MonoDoubleY",         "Ed1MonoDoubleY",       1, 1, 0,  720, 1440, 1,  0},
    {"Ed1Mono1440x720",        "Ed1Mono1440x720",      1, 1, 0, 1440,  720, 1,  0},
    {"Ed1MonoGeneral",         "Ed1MonoGeneral",       1, 1, 0,  720,  720, 1,  0},
    {"Ed1ColourDoubleY",       "Ed1ColourDoubleY",     1, 1, 1,  720, 1440, 1,  0},
    {"Ed1Colour1440x720B",     "Ed1Colour1440x720B",   1, 1, 1, 1440,  720, 1,  0},
    {"Ed1Colour1440x720",      "Ed1Colour1440x720",    1, 1, 1, 1440,  720, 1, -1},
    {"Ed1ColourGeneralB",      "Ed1ColourGeneralB",    1, 1, 1,  720,  720, 1,  0},
    {"Ed1ColourGeneral",       "Ed1ColourGeneral",     1, 1, 1,  720,  720, 1, -1},
};
// clang-format on

HtSettings settingsFor(const Row& row) {
    HtSettings s = test::htSettings(row.method, row.colourMode, row.outputBits, kWidth);
    s.ditherMode = row.ditherMode;
    s.inputFormat = row.colourMode == 0 ? 0 : 2;  // gray bytes or three-byte RGB
    s.resolutionX = row.resolutionX;
    s.resolutionY = row.resolutionY;
    s.scaleMode = row.scaleMode;
    return s;
}

enum class Content { photo, flat };

using Lines = std::vector<std::vector<uint8_t>>;

// kLines input lines of `channels` bytes per pixel. The buffers hold two
// pixels per output pixel, so halving input never reads past them.
Lines makeLines(Content content, uint32_t channels) {
    Lines lines(kLines, std::vector<uint8_t>(2u * kWidth * channels));
    for (uint32_t y = 0; y < kLines; ++y) {
        auto& line = lines[y];
        if (content == Content::photo) {
            bench::photoLine(line.data(), y * (kPhotoHeight / kLines), channels, 2 * kWidth, kPhotoHeight);
        } else {
            const uint8_t flat[3] = {150, 128, 100};  // a mid tone, gray 128
            for (size_t i = 0; i < line.size(); ++i) line[i] = channels == 1 ? 128 : flat[i % 3];
        }
    }
    return lines;
}

// Made once per content and pixel size: Google Benchmark calls a benchmark
// several times while it sizes its iteration count.
const Lines& inputLines(Content content, uint32_t channels) {
    static std::map<std::pair<Content, uint32_t>, Lines> made;
    auto found = made.find({content, channels});
    if (found == made.end()) found = made.emplace(std::make_pair(content, channels), makeLines(content, channels)).first;
    return found->second;
}

void runRow(benchmark::State& state, const Row& row, Content content) {
    const HtSettings settings = settingsFor(row);
    const CmLut& lut = row.colourMode == 0 ? monoLut().lut : colourLut().lut;
    const test::HtInstance ht(settings, lut, benchBlocks());
    if (ht.rc != RC_OK) {
        state.SkipWithError(("resource protocol failed with " + std::to_string(ht.rc)).c_str());
        return;
    }
    if (std::strcmp(chooseKernel(*ht.ctx).name, row.kernel) != 0) {
        state.SkipWithError(("dispatch chose " + std::string(chooseKernel(*ht.ctx).name)).c_str());
        return;
    }

    const Lines& lines = inputLines(content, row.colourMode == 0 ? 1 : 3);
    const uint32_t planeStride = (kWidth * row.outputBits + 7) / 8 + 1;
    std::vector<uint8_t> planes(4u * planeStride);
    uint32_t lineNo = 0;
    for (auto _ : state) {
        const uint32_t rc = Halftone(ht.ctx, lines[lineNo % kLines].data(), planes.data(), planeStride, 0, kWidth, 0,
                                     0, lineNo, 0, 0);
        if (rc != RC_OK) {
            state.SkipWithError(("Halftone answered " + std::to_string(rc)).c_str());
            break;
        }
        ++lineNo;
        benchmark::DoNotOptimize(planes.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kWidth);
}

const bool kRegistered = [] {
    for (const Row& row : kRows) {
        benchmark::RegisterBenchmark((std::string(row.name) + "/photo").c_str(),
                                     [&row](benchmark::State& s) { runRow(s, row, Content::photo); });
        benchmark::RegisterBenchmark((std::string(row.name) + "/flat").c_str(),
                                     [&row](benchmark::State& s) { runRow(s, row, Content::flat); });
    }
    return true;
}();

// HalftoneNew, every phase of the resource protocol, HalftoneDelete: what a
// driver pays per job before the first line. Colour, error diffusion, so
// phase 1 makes four error lines of a 10 000-pixel line and phase 2 resamples
// the colour grid.
void runProtocol(benchmark::State& state, uint32_t outputBits) {
    const HtSettings settings = settingsFor({"", "", 1, 1, 1, 720, 720, outputBits, 0});
    const test::HtBlocks blocks = benchBlocks();
    const test::Bytes* order[] = {&blocks.requestList, &blocks.gridLevels, &blocks.matrix, &blocks.dotSplit};
    const int phases = outputBits == 2 ? 4 : 3;
    for (auto _ : state) {
        HtContext* ctx = nullptr;
        uint32_t model = 0;
        uint32_t rc = HalftoneNew(&settings, &colourLut().lut, 0, &model, &ctx);
        uint32_t next = 0;
        for (int p = 0; p < phases && rc == RC_OK; ++p) rc = HalftoneSetResource(ctx, order[p]->data(), &next);
        if (ctx != nullptr) HalftoneDelete(ctx);
        if (rc != RC_OK || next != INKDOT_NO_MORE_BLOCKS) {
            state.SkipWithError(("resource protocol failed with " + std::to_string(rc)).c_str());
            break;
        }
    }
}

void BM_HalftoneProtocolColour1Bit(benchmark::State& state) { runProtocol(state, 1); }
void BM_HalftoneProtocolColour2Bit(benchmark::State& state) { runProtocol(state, 2); }
BENCHMARK(BM_HalftoneProtocolColour1Bit)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_HalftoneProtocolColour2Bit)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace inkdot
