// Colour-management timings: the tetrahedral interpolator alone, and a whole
// resource protocol run (six calls) on a 33 x 33 x 33 four-ink table with
// settings that exercise every curve and adjustment path.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "../tests/support/colour_table_writer.h"
#include "../tests/support/index_text_writer.h"
#include "cm/interpolate.h"
#include "inkdot/inkdot.h"

namespace {

using inkdot::test::ColourTableWriter;
using inkdot::test::IndexTextWriter;

constexpr uint8_t kGridPoints = 33;
constexpr uint32_t kTableBlock = 100;
constexpr uint32_t kCorrectionBlock = 777;

ColourTableWriter table33() {
    ColourTableWriter w;
    w.gridCount[0] = w.gridCount[1] = w.gridCount[2] = kGridPoints;
    w.channels = 4;
    w.tableMode = 50;
    w.adjustDominant[0] = 10;
    w.adjustHue[1] = 5;
    w.adjustMinimum[2] = 8;
    w.saturationOffset = 5;
    return w;
}

std::vector<uint8_t> textBlock(const IndexTextWriter& w) {
    const std::string text = w.text();
    return std::vector<uint8_t>(text.begin(), text.end() + 1);
}

void BM_InterpolateRgb(benchmark::State& state) {
    const std::vector<uint8_t> block = table33().build();
    CmLut lut{};
    lut.channels = 4;
    for (int a = 0; a < 3; ++a) {
        lut.gridCount[a] = kGridPoints;
        for (int i = 0; i < kGridPoints; ++i) lut.grid[a][i] = block[76 + a * kGridPoints + i];
    }
    std::vector<uint8_t> nodes(block.begin() + 76 + 3 * kGridPoints, block.end());
    lut.lutData = nodes.data();

    constexpr uint32_t kPixels = 4096;
    std::vector<uint8_t> rgb(3 * kPixels);
    std::mt19937 rng(11);
    for (auto& b : rgb) b = static_cast<uint8_t>(rng());
    std::vector<uint8_t> out(4 * kPixels);
    for (auto _ : state) {
        inkdot::interpolateRgb(lut, kPixels, rgb.data(), out.data());
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kPixels);
}
BENCHMARK(BM_InterpolateRgb);

void BM_CmSetResourceFullProtocol(benchmark::State& state) {
    CmSettings1 s1{};
    CmSettings2 s2{};
    s1.brightness = 20;
    s1.contrast = 15;
    s1.saturation = 25;
    s1.offsetR = 5;
    s1.offsetB = -5;
    s1.processLevel = 2;
    s1.neutralSetting = 40;
    s1.selectB = 1;
    s2.selectA = 3;
    s2.pixelFormat = 1;

    const int32_t gamma = 180;
    const std::vector<uint8_t> weights = {'C', 'W', ':', 1, 55, 45, 60, 50, 0xFE, 0xFF};
    struct {
        int32_t count = 2;
        ChunkEntry entries[2];
    } dir;
    dir.entries[0] = ChunkEntry{1, &gamma};
    dir.entries[1] = ChunkEntry{512, weights.data()};
    s1.chunkDir = reinterpret_cast<const ChunkDirectory*>(&dir);

    IndexTextWriter index;  // processLevel 2 gives selectC 4
    index.add(kTableBlock, 350, "L3", "Photo", 0, 0, "M4", 0, 0);
    IndexTextWriter tableIndex;  // searched with selectC 0
    tableIndex.add(kCorrectionBlock, 1, "L3", "Photo", 0, 0, "M0", 0, 0);
    std::vector<uint8_t> tables(21 * 256);
    for (int d = 0; d < 21; ++d)
        for (int x = 0; x < 256; ++x) tables[d * 256 + x] = static_cast<uint8_t>(x * (90 + d) / 110);
    const std::vector<uint8_t> blocks[] = {
        textBlock(index), table33().build(), {1, 0, 1, 2, 3, 0xFE, 0xFF}, {50, 50, 50, 50},
        textBlock(tableIndex), tables,
    };

    for (auto _ : state) {
        uint32_t next = 0;
        CmContext* ctx = nullptr;
        CmNew(&s1, &s2, 0, &next, &ctx);
        int calls = 0;
        for (const auto& block : blocks) {
            if (CmSetResource(ctx, block.data(), &next) != RC_OK) {
                state.SkipWithError("protocol failed");
                break;
            }
            ++calls;
        }
        if (next != INKDOT_NO_MORE_BLOCKS || calls != 6) state.SkipWithError("protocol did not end after six calls");
        benchmark::DoNotOptimize(CmGetLut(ctx)->grayTable[128]);
        CmDelete(ctx);
    }
}
BENCHMARK(BM_CmSetResourceFullProtocol)->Unit(benchmark::kMillisecond);

}  // namespace

