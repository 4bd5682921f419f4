// Throughput of the monochrome one-bit error-diffusion kernels: one
// 10 000-pixel line of mid gray per iteration, lines top to bottom, through
// the Halftone call as a driver makes it.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "support/hand_context.h"

namespace inkdot {
namespace {

constexpr uint32_t kWidth = 10000;
constexpr uint32_t kMatrixSide = 64;

void runLines(benchmark::State& state, uint32_t resolutionX, uint32_t resolutionY, int32_t scaleMode) {
    HtSettings s{};
    s.method = 1;  // error diffusion
    s.resolutionX = resolutionX;
    s.resolutionY = resolutionY;
    s.outputBits = 1;
    s.scaleMode = scaleMode;
    s.width = kWidth;
    test::HandContext h(s);
    h.setSpread(56, 22, 11, 4);
    std::vector<uint16_t> cells(kMatrixSide * kMatrixSide);
    // A permutation of 0..4095 scattered by an odd multiplier: every bit pattern occurs.
    for (uint32_t i = 0; i < cells.size(); ++i) cells[i] = static_cast<uint16_t>((i * 2897 + 11) & 4095);
    h.setMatrix(kMatrixSide, kMatrixSide, cells);
    for (int b = 0; b < 256; ++b) {
        h.monoCurve()[b] = static_cast<uint16_t>(b);
        h.edThreshold[b] = 128;
        h.dotValue[b] = 255;
    }

    const uint32_t inputBytes = scaleMode == -1 ? 2 * kWidth : kWidth;
    const std::vector<uint8_t> src(inputBytes, 128);  // mid gray
    std::vector<uint8_t> dst(kWidth / 8 + 1);
    uint32_t line = 0;
    for (auto _ : state) {
        const uint32_t rc = h.run(src.data(), dst.data(), 0, 0, kWidth, 0, line++);
        benchmark::DoNotOptimize(rc);
        benchmark::DoNotOptimize(dst.data());
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kWidth);
}

void BM_Ed1MonoGeneral(benchmark::State& state) { runLines(state, 360, 360, 0); }
void BM_Ed1Mono1440x720(benchmark::State& state) { runLines(state, 1440, 720, 0); }
void BM_Ed1MonoDoubleY(benchmark::State& state) { runLines(state, 360, 720, 0); }
void BM_Ed1MonoGeneralHalved(benchmark::State& state) { runLines(state, 360, 360, -1); }
void BM_Ed1MonoGeneralDoubled(benchmark::State& state) { runLines(state, 360, 360, 1); }

BENCHMARK(BM_Ed1MonoGeneral);
BENCHMARK(BM_Ed1Mono1440x720);
BENCHMARK(BM_Ed1MonoDoubleY);
BENCHMARK(BM_Ed1MonoGeneralHalved);
BENCHMARK(BM_Ed1MonoGeneralDoubled);

}  // namespace
}  // namespace inkdot
