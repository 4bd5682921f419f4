// Throughput of the one-bit colour error-diffusion kernels on photographic-like
// lines of 10 000 pixels, and the price of the per-call table copies of the
// cached kernels on long and on short runs. Plain main, no framework: prints
// Mpixel/s per kernel (best of several passes). Time is the thread's CPU
// time, so a busy machine does not distort the figures.
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <vector>

#include "kernels/kernels.h"
#include "support/hand_context.h"

namespace {

using inkdot::HtKernel;
using inkdot::HtRun;
using inkdot::test::HandContext;

constexpr uint32_t kWidth = 10000;
constexpr uint32_t kLines = 64;
constexpr int kPasses = 5;

double cpuSeconds() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

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

// Best Mpixel/s over several passes of kLines lines, each cut into runs.
double measure(HtKernel kernel, uint32_t runLength) {
    HtSettings s{};
    s.method = 1;
    s.inputFormat = 2;
    s.colourMode = 1;
    s.resolutionX = 360;
    s.resolutionY = 360;
    s.width = kWidth;
    HandContext hc(s);
    buildTables(hc);
    std::vector<std::vector<uint8_t>> lines;
    for (uint32_t l = 0; l < kLines; ++l) lines.push_back(photoLine(l));
    const uint32_t stride = kWidth / 8 + 1;
    std::vector<uint8_t> out(4 * stride);

    double best = 0;
    for (int pass = 0; pass < kPasses; ++pass) {
        const double start = cpuSeconds();
        for (uint32_t l = 0; l < kLines; ++l) {
            for (uint32_t x = 0; x < kWidth; x += runLength) {
                const uint32_t count = std::min(runLength, kWidth - x);
                const HtRun run{lines[l].data() + 3 * x, out.data() + x / 8, stride, x % 8, count, x,
                                0, pass * kLines + l, 0, 0};
                kernel(hc.ctx, run);
            }
        }
        const double seconds = cpuSeconds() - start;
        best = std::max(best, kLines * kWidth / seconds / 1e6);
    }
    return best;
}

}  // namespace

int main() {
    struct Named {
        const char* name;
        HtKernel kernel;
    };
    const Named kernels[] = {
        {"Ed1ColourGeneral", inkdot::Ed1ColourGeneral},     {"Ed1ColourGeneralB", inkdot::Ed1ColourGeneralB},
        {"Ed1Colour1440x720", inkdot::Ed1Colour1440x720},   {"Ed1Colour1440x720B", inkdot::Ed1Colour1440x720B},
        {"Ed1ColourDoubleY", inkdot::Ed1ColourDoubleY},
    };
    std::printf("%-20s %14s %14s %14s\n", "kernel", "10000-px runs", "256-px runs", "32-px runs");
    for (const Named& k : kernels)
        std::printf("%-20s %10.1f Mp/s %10.1f Mp/s %10.1f Mp/s\n", k.name, measure(k.kernel, kWidth),
                    measure(k.kernel, 256), measure(k.kernel, 32));
    return 0;
}
