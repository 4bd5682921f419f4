// Ordered-dither kernels on a 10 000-pixel line through Halftone: pixels per
// second for each kernel, with a 64 x 64 permutation matrix and a gradient
// input with some noise (so the grid nodes and the smoothing vary).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include "even_grid_cells.h"
#include "support/hand_context.h"
#include "kernels/kernels.h"

namespace {

using inkdot::test::KernelSetup;
using inkdot::test::HandContext;

constexpr uint32_t kPixels = 10000;
constexpr uint32_t kStride = kPixels / 4 + 8;

enum Kind : int64_t { Mono1, Colour1, Hybrid1, Threshold1, Mono2, Mono2Y, Colour2, Colour2Y };

KernelSetup setupFor(Kind kind) {
    const bool twoBit = kind >= Mono2;
    const bool mono = kind == Mono1 || kind == Mono2 || kind == Mono2Y;
    KernelSetup s = mono ? inkdot::test::monoSetup(twoBit ? 2 : 1) : inkdot::test::colourSetup(twoBit ? 2 : 1);
    if (kind == Hybrid1) s.ditherMode = 0;
    if (kind == Threshold1) s.method = 0;
    if (kind == Mono2Y || kind == Colour2Y) s = inkdot::test::doubleY(s), s.scaleMode = -1;
    s.width = kPixels;
    return s;
}

void fillTables(HandContext& hc) {
    std::mt19937 rng(1);
    hc.setMatrix(64, 64, inkdot::test::permutationMatrix(64, 1));
    for (uint32_t v = 0; v < 256; ++v) hc.tone[v] = static_cast<uint16_t>(v * 16);
    inkdot::bench::evenGridCells(hc);
    for (uint32_t r = 0; r < 256; ++r)
        hc.setSplit(static_cast<uint8_t>(r), static_cast<uint8_t>(r / 3), static_cast<uint8_t>(r / 3),
                    static_cast<uint8_t>(r / 4));
    // A smooth grid like a real colour table: each ink falls along its own
    // axis, black follows the darkest of the three.
    for (uint32_t a = 0; a < 32; ++a)
        for (uint32_t b = 0; b < 32; ++b)
            for (uint32_t c = 0; c < 32; ++c) {
                const uint32_t c0 = 255 - c * 8, c1 = 255 - b * 8, c2 = 255 - a * 8;
                hc.setNode(a, b, c, inkdot::test::packInks(c0, c1, c2, std::min({c0, c1, c2}) / 2));
            }
    hc.setSpread(56, 22, 11, 4);
    // The padded mono curve (W = 8) over the start of the same storage.
    hc.monoCurve()[0] = 8;
    for (uint32_t k = 1; k < 8 + 257; ++k) hc.monoCurve()[k] = static_cast<uint16_t>(std::min<uint32_t>(k, 255));
}

void BM_Dither(benchmark::State& state) {
    const Kind kind = static_cast<Kind>(state.range(0));
    const KernelSetup s = setupFor(kind);
    HandContext hc(s.settings());
    fillTables(hc);
    const uint32_t pixelBytes = inkdot::bytesPerPixel(s.inputFormat) * (s.scaleMode == -1 ? 2 : 1);
    std::vector<uint8_t> in(kPixels * pixelBytes);
    std::mt19937 rng(2);
    for (size_t i = 0; i < in.size(); ++i) in[i] = static_cast<uint8_t>(i * 256 / in.size() + rng() % 9);
    std::vector<uint8_t> out(4 * kStride);
    uint32_t line = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(hc.run(in.data(), out.data(), kStride, 0, kPixels, 0, line++));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kPixels));
}
BENCHMARK(BM_Dither)
    ->ArgName("kernel")
    ->Arg(Mono1)->Arg(Colour1)->Arg(Hybrid1)->Arg(Threshold1)
    ->Arg(Mono2)->Arg(Mono2Y)->Arg(Colour2)->Arg(Colour2Y);

}  // namespace
