// Throughput of the one-bit colour error-diffusion kernels on photographic-like
// lines of 10 000 pixels, and the price of the per-call table copies of the
// cached kernels on long and on short runs (the run length is the benchmark's
// argument). Items per second are pixels per second.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

#include "kernels/colour_input/colour_input.h"
#include "kernels/kernels.h"
#include "support/hand_context.h"

namespace {

using inkdot::HtKernel;
using inkdot::HtRun;
using inkdot::test::HandContext;

constexpr uint32_t kWidth = 10000;
constexpr uint32_t kLines = 64;

// Tables shaped like those the resource protocol builds: 32 evenly spaced
// grid levels, a CMY(K) grid, a 64 x 64 blue-noise stand-in (a shuffled
// permutation), dot values for inkParam 350 / 100 and thresholds near 128.
void buildTables(HandContext& hc) {
    std::mt19937 g(1);
    std::vector<uint16_t> cells(64 * 64);
    for (uint32_t i = 0; i < cells.size(); ++i) cells[i] = static_cast<uint16_t>(i);
    std::shuffle(cells.begin(), cells.end(), g);
    hc.setMatrix(64, 64, cells);
    hc.setSpread(59, 27, 12, 5);
    auto level = [](int j) { return j * 255 / 31; };
    int j = 0;
    for (int v = 0; v < 256; ++v) {
        if (level(j) == v) {
            hc.setGridCell(static_cast<uint8_t>(v), static_cast<uint8_t>(j), 255);
            ++j;
        } else {
            hc.setGridCell(static_cast<uint8_t>(v), static_cast<uint8_t>(j - 1),
                           static_cast<uint8_t>((level(j) - v) * 255 / (level(j) - level(j - 1))));
        }
    }
    for (uint32_t a = 0; a < 32; ++a)
        for (uint32_t b = 0; b < 32; ++b)
            for (uint32_t c = 0; c < 32; ++c) {
                const uint32_t cyan = 255 - level(c), magenta = 255 - level(b), yellow = 255 - level(a);
                const uint32_t black = std::min({cyan, magenta, yellow}) / 2;
                hc.setNode(a, b, c, (cyan - black) | (magenta - black) << 8 | (yellow - black) << 16 | black << 24);
            }
    for (int k = 0; k < 256; ++k) {
        const int dot = ((250 * (255 - k) * (255 - k) + 1) / 255 + 100 * 255) / 100;
        hc.dotValue[k] = static_cast<int16_t>(dot);
        hc.edThreshold[k] = static_cast<int16_t>(100 + k / 4);
        hc.tone[k] = static_cast<uint16_t>((4096 >> 8) * k * 255 / dot);
    }
}

// Smooth gradients with a little noise and a few paper-white stretches.
std::vector<uint8_t> photoLine(uint32_t line) {
    std::mt19937 g(line + 7);
    std::vector<uint8_t> px(3 * kWidth);
    for (uint32_t x = 0; x < kWidth; ++x) {
        const bool paper = (x / 700) % 5 == 4;
        for (int k = 0; k < 3; ++k) {
            const int base = static_cast<int>((x * (k + 1) / 37 + line * 3 + 80 * k) % 256);
            const int v = std::clamp(base + static_cast<int>(g() % 9) - 4, 0, 255);
            px[3 * x + k] = paper ? 255 : static_cast<uint8_t>(v);
        }
    }
    return px;
}

HtSettings colourSettings() {
    HtSettings s{};
    s.method = 1;
    s.inputFormat = 2;
    s.colourMode = 1;
    s.resolutionX = 360;
    s.resolutionY = 360;
    s.width = kWidth;
    return s;
}

// kLines lines, each cut into runs of the benchmark's argument.
void runKernel(benchmark::State& state, HtKernel kernel) {
    const uint32_t runLength = static_cast<uint32_t>(state.range(0));
    HandContext hc(colourSettings());
    buildTables(hc);
    std::vector<std::vector<uint8_t>> lines;
    for (uint32_t l = 0; l < kLines; ++l) lines.push_back(photoLine(l));
    const uint32_t stride = kWidth / 8 + 1;
    std::vector<uint8_t> out(4 * stride);

    uint32_t lineNo = 0;
    for (auto _ : state) {
        for (uint32_t l = 0; l < kLines; ++l, ++lineNo) {
            for (uint32_t x = 0; x < kWidth; x += runLength) {
                const uint32_t count = std::min(runLength, kWidth - x);
                const HtRun run{lines[l].data() + 3 * x, out.data() + x / 8, stride, x % 8, count, x, lineNo, 0};
                kernel(hc.ctx, run);
            }
        }
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kLines * kWidth);
}

// The colour input stage alone on the same lines: the grid conversion that
// every one-bit colour diffusion kernel runs on RGB input before its error
// chains, so the most any of them can reach from RGB.
void inputStage(benchmark::State& state) {
    HandContext hc(colourSettings());
    buildTables(hc);
    std::vector<std::vector<uint8_t>> lines;
    for (uint32_t l = 0; l < kLines; ++l) lines.push_back(photoLine(l));
    inkdot::ColourChunk chunk;
    uint32_t lineNo = 0;
    for (auto _ : state) {
        for (uint32_t l = 0; l < kLines; ++l, ++lineNo) {
            inkdot::GridInput<inkdot::kDiffusionGrid> input(hc.ctx,
                                                            inkdot::NodeMatrix{inkdot::matrixRow(hc.ctx, lineNo)});
            const inkdot::PixelSource<false> in(lines[l].data(), 3, false);
            inkdot::forEachChunk(input, in, 0, kWidth, chunk,
                                 [&](uint32_t, uint32_t) { benchmark::DoNotOptimize(chunk); });
        }
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kLines * kWidth);
}

}  // namespace

BENCHMARK(inputStage)->Name("Ed1ColourInputStage");
BENCHMARK_CAPTURE(runKernel, Ed1ColourGeneral, inkdot::Ed1ColourGeneral)->Arg(10000)->Arg(256)->Arg(32);
BENCHMARK_CAPTURE(runKernel, Ed1ColourGeneralB, inkdot::Ed1ColourGeneralB)->Arg(10000)->Arg(256)->Arg(32);
BENCHMARK_CAPTURE(runKernel, Ed1Colour1440x720, inkdot::Ed1Colour1440x720)->Arg(10000)->Arg(256)->Arg(32);
BENCHMARK_CAPTURE(runKernel, Ed1Colour1440x720B, inkdot::Ed1Colour1440x720B)->Arg(10000)->Arg(256)->Arg(32);
BENCHMARK_CAPTURE(runKernel, Ed1ColourDoubleY, inkdot::Ed1ColourDoubleY)->Arg(10000);
