// Throughput of the two-bit error-diffusion kernels on whole raster lines.
// The instance is built by hand with tables shaped like the resource
// protocol's (64 x 64 ordered matrix, tone 16 i, split rows moving from small
// to large dots), and the input is a smooth colour ramp with some noise, so
// grid smoothing, history and all spread patterns take part.
//
#include <benchmark/benchmark.h>

#include <vector>

#include "halftone/dispatch.h"
#include "halftone/ht_context.h"
#include "inkdot/inkdot.h"

namespace {

using namespace inkdot;

constexpr uint32_t kWidth = 4800;

struct BenchInstance {
    HtContext ctx{};
    std::vector<int32_t> errorLines = std::vector<int32_t>(4 * (kWidth + 60), 0);
    std::vector<uint16_t> matrix = std::vector<uint16_t>(64 * 64);
    std::vector<uint16_t> tone = std::vector<uint16_t>(512);
    std::vector<int16_t> edThreshold = std::vector<int16_t>(512);
    std::vector<uint8_t> gridCell = std::vector<uint8_t>(512);
    std::vector<uint8_t> dotSplit = std::vector<uint8_t>(768);
    std::vector<uint32_t> conversion = std::vector<uint32_t>(32 * 32 * 32);

    BenchInstance(uint32_t colourMode, uint32_t inputFormat, uint32_t resX, uint32_t resY) {
        ctx.method = 1;
        ctx.outputBits = 2;
        ctx.colourMode = colourMode;
        ctx.inputFormat = inputFormat;
        ctx.resolutionX = resX;
        ctx.resolutionY = resY;
        ctx.width = kWidth;
        ctx.replicationFactor = 1;
        for (uint32_t k = 0; k < 4; ++k) ctx.buffers[kErrorLine0 + k].data = &errorLines[k * (kWidth + 60)];
        // Ordered 64 x 64 matrix holding 0..4095.
        for (uint32_t y = 0; y < 64; ++y)
            for (uint32_t x = 0; x < 64; ++x) {
                uint32_t v = 0;
                for (uint32_t b = 0; b < 6; ++b) {
                    const uint32_t xb = (x >> b) & 1, yb = (y >> b) & 1;
                    v |= ((xb ^ yb) << (2 * (5 - b) + 1)) | (yb << (2 * (5 - b)));
                }
                matrix[y * 64 + x] = static_cast<uint16_t>(v);
            }
        ctx.matrixWidth = ctx.matrixHeight = 64;
        ctx.matrixCells = 4096;
        ctx.buffers[kThresholdMatrix].data = matrix.data();
        for (uint32_t i = 0; i < 256; ++i) tone[i] = static_cast<uint16_t>(i == 255 ? 4096 : 16 * i);
        ctx.buffers[kToneTable].data = tone.data();
        for (uint32_t a = 0; a < 256; ++a) {
            const uint32_t l = a > 170 ? a - 170 : 0, m = a > 85 ? (a < 170 ? a : 170) - 85 : 0, s = a - m - l;
            dotSplit[3 * a] = static_cast<uint8_t>(s);
            dotSplit[3 * a + 1] = static_cast<uint8_t>(m);
            dotSplit[3 * a + 2] = static_cast<uint8_t>(l);
            ctx.splitToneCumulative[a] = tone[l] + ((tone[l] + tone[m]) << 16);
            ctx.splitAmounts[a] = s + ((s + m + l) << 16);
            ctx.splitToneTotal[a] = tone[s] + tone[m] + tone[l];
            edThreshold[a] = static_cast<int16_t>((128 + 2 * a) / 3);
            // 32 grid levels spaced about 8.2 apart.
            const uint32_t node = a * 31 / 255, low = node * 255 / 31, high = (node + 1) * 255 / 31;
            gridCell[2 * a] = static_cast<uint8_t>(node);
            gridCell[2 * a + 1] = static_cast<uint8_t>(a == low ? 255 : (high - a) * 255 / (high - low));
        }
        ctx.buffers[kDotSplitTable].data = dotSplit.data();
        ctx.buffers[kEdThresholdTable].data = edThreshold.data();
        ctx.buffers[kGridCellTable].data = gridCell.data();
        // Grid: inks fall as the channels rise (255 is white).
        for (uint32_t a = 0; a < 32; ++a)
            for (uint32_t b = 0; b < 32; ++b)
                for (uint32_t c = 0; c < 32; ++c) {
                    const uint32_t c0 = 255 - c * 8, c1 = 255 - b * 8, c2 = 255 - a * 8;
                    const uint32_t k = (c0 < c1 ? (c0 < c2 ? c0 : c2) : (c1 < c2 ? c1 : c2)) / 2;
                    conversion[(a * 32 + b) * 32 + c] = (c0 - k) | (c1 - k) << 8 | (c2 - k) << 16 | k << 24;
                }
        if (colourMode == 0) {
            // The padded monochrome curve (level spread 4) in the same storage.
            auto* curve = reinterpret_cast<uint16_t*>(conversion.data());
            curve[0] = 4;
            for (uint32_t e = 0; e < 4 + 256; ++e) {
                const int32_t v = static_cast<int32_t>(e) - 2;
                curve[1 + e] = static_cast<uint16_t>(255 - (v < 0 ? 0 : v > 255 ? 255 : v));
            }
        }
        ctx.buffers[kConversionTable].data = conversion.data();
        ctx.kernel = chooseKernel(ctx).kernel;
    }
};

// One whole line per iteration; lines advance so the matrix rows and the
// continuity rule see an ordinary page. Args: {colourMode, inputFormat, resX, resY}.
void BM_Ed2Line(benchmark::State& state) {
    const auto arg = [&](int i) { return static_cast<uint32_t>(state.range(i)); };
    BenchInstance b(arg(0), arg(1), arg(2), arg(3));
    state.SetLabel(chooseKernel(b.ctx).name);
    const uint32_t bpp = arg(0) == 0 ? 1 : arg(1) == 4 ? 4 : 3;
    std::vector<uint8_t> in(kWidth * bpp);
    uint32_t seed = 12345;
    for (uint32_t x = 0; x < kWidth; ++x)
        for (uint32_t c = 0; c < bpp; ++c) {
            seed = seed * 1103515245 + 12345;  // a little noise on the ramp
            const uint32_t ramp = (x * 255 / kWidth + 60 * c) % 256;
            in[x * bpp + c] = static_cast<uint8_t>((ramp + (seed >> 28)) & 0xFF);
        }
    const uint32_t stride = kWidth / 4 + 4;
    std::vector<uint8_t> out(4 * stride);
    uint32_t line = 0;
    for (auto _ : state) {
        if (Halftone(&b.ctx, in.data(), out.data(), stride, 0, kWidth, 0, 0, line++, 0, 0) != RC_OK) {
            state.SkipWithError("Halftone refused the run");
            break;
        }
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kWidth);
}
// Colour with three-channel and ink input, then gray, in each class.
BENCHMARK(BM_Ed2Line)
    ->Args({1, 3, 720, 720})->Args({1, 4, 720, 720})->Args({0, 0, 720, 720})
    ->Args({1, 3, 1440, 720})->Args({1, 4, 1440, 720})->Args({0, 0, 1440, 720})
    ->Args({1, 3, 720, 1440})->Args({1, 4, 720, 1440})->Args({0, 0, 720, 1440});

}  // namespace
