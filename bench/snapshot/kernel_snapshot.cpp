// kernel_snapshot: a digest of everything the halftone kernels write, over a
// few hundred random scenarios per kernel, to show that a rework of a kernel
// left every output byte and every error cell as it was.
//
//   kernel_snapshot [scenarios per kernel] > before.txt
//   ... change a kernel, rebuild ...
//   kernel_snapshot [same number] > after.txt && diff before.txt after.txt
//
// One line per scenario: the kernel the dispatch chose, the scenario number
// and a 64-bit digest of every output plane byte (of the whole output area,
// so bytes a run must not touch are covered too), every error line cell, the
// result code and the run state after every call. A scenario is an instance
// built by hand with random tables (matrix size and contents, grid cells,
// nodes, tone, dot values, thresholds, split rows, curves), random settings
// within its kernel (inputFormat 2, 3 and 4, scaleMode -1, 0, 1 and the
// replicating values 2 to 5, colourMode 1 and 2), several lines of several
// runs each with odd counts, bitOffset, gaps and white stretches, so that
// error lines carry over from run to run and line to line.
//
// Not a test: it asserts nothing, it only makes the before/after comparison
// cheap. Built with the benchmarks.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "../even_grid_cells.h"
#include "support/hand_context.h"

namespace inkdot {
namespace {

using test::HandContext;

class Digest {
public:
    void add(const void* data, size_t n) {
        const auto* p = static_cast<const uint8_t*>(data);
        for (size_t i = 0; i < n; ++i) {
            h_ ^= p[i];
            h_ *= 0x100000001B3ull;  // FNV-1a 64
        }
    }
    void add(uint32_t v) { add(&v, sizeof v); }
    uint64_t value() const { return h_; }

private:
    uint64_t h_ = 0xCBF29CE484222325ull;
};

// One row per kernel (and per way into it): the settings that select it.
struct KernelRow {
    const char* kernel;
    uint32_t method;
    uint32_t outputBits;
    bool colour;
    int resolutionClass;  // 0 general, 1 1440x720, 2 DoubleY
    int inkOrHalving;     // one-bit colour diffusion: 1 needs ink or halving, -1 neither, 0 either
    bool hybrid;          // ditherMode 0 or 2
};

// clang-format off
constexpr KernelRow kRows[] = {
    {"Dither1Mono",          3, 1, false, 0,  0, false},
    {"Dither1Mono",          0, 1, false, 0,  0, false},
    {"Dither1Colour",        3, 1, true,  0,  0, false},
    {"Dither1ColourHybrid",  3, 1, true,  0,  0, true},
    {"Threshold1Colour",     0, 1, true,  0,  0, false},
    {"Dither2Mono",          3, 2, false, 0,  0, false},
    {"Dither2MonoDoubleY",   3, 2, false, 2,  0, false},
    {"Dither2Colour",        3, 2, true,  0,  0, false},
    {"Dither2ColourDoubleY", 3, 2, true,  2,  0, false},
    {"Ed1MonoGeneral",       1, 1, false, 0,  0, false},
    {"Ed1Mono1440x720",      1, 1, false, 1,  0, false},
    {"Ed1MonoDoubleY",       1, 1, false, 2,  0, false},
    {"Ed1ColourGeneral",     1, 1, true,  0,  1, false},
    {"Ed1Colour1440x720",    1, 1, true,  1,  1, false},
    {"Ed1ColourDoubleY",     1, 1, true,  2,  0, false},
    {"Ed1ColourGeneralB",    1, 1, true,  0, -1, false},
    {"Ed1Colour1440x720B",   1, 1, true,  1, -1, false},
    {"Ed2MonoGeneral",       1, 2, false, 0,  0, false},
    {"Ed2Mono1440x720",      1, 2, false, 1,  0, false},
    {"Ed2MonoDoubleY",       1, 2, false, 2,  0, false},
    {"Ed2ColourGeneral",     1, 2, true,  0,  0, false},
    {"Ed2Colour1440x720",    1, 2, true,  1,  0, false},
    {"Ed2ColourDoubleY",     1, 2, true,  2,  0, false},
};
// clang-format on

class Scenario {
public:
    Scenario(const KernelRow& row, uint32_t seed) : row_(row), g_(seed) {}

    uint64_t run() {
        HtSettings s = settings();
        HandContext hc(s);
        // Replication as the resource protocol sets it up (2 is doubling, odd
        // expansions replicate, even ones double and replicate).
        if (s.scaleMode >= 2) {
            const int32_t expansion = s.scaleMode + 1;
            hc.ctx.scaleMode = expansion % 2 == 0 ? 1 : 0;
            hc.ctx.replicationFactor = static_cast<uint32_t>(expansion % 2 == 0 ? expansion / 2 : expansion);
        }
        fillTables(hc);
        hc.ready();
        kernelName_ = chooseKernel(hc.ctx).name;
        return runLines(hc, s);
    }

    const char* kernelName() const { return kernelName_; }

private:
    uint32_t pick(uint32_t n) { return static_cast<uint32_t>(g_() % n); }
    int32_t between(int32_t lo, int32_t hi) { return lo + static_cast<int32_t>(pick(static_cast<uint32_t>(hi - lo + 1))); }
    bool chance(uint32_t percent) { return pick(100) < percent; }

    HtSettings settings() {
        static constexpr uint32_t kColourFormats[] = {2, 2, 3, 4, 4, 7, 1};
        static constexpr int32_t kScales[] = {0, 0, 0, 1, 1, -1, -1, 2, 3, 4, 5};
        static constexpr uint32_t kGeneral[][2] = {{720, 720}, {360, 360}, {720, 360}, {1440, 1440}};
        for (;;) {
            HtSettings s{};
            s.method = row_.method;
            if (row_.method == 1 && row_.outputBits == 1) s.method = chance(70) ? 1 : (chance(50) ? 2 : 5);
            s.ditherMode = row_.hybrid ? (chance(50) ? 0 : 2) : (chance(50) ? 1 : 3);
            s.colourMode = row_.colour ? (chance(60) ? 1 : 2) : 0;
            s.inputFormat = row_.colour ? kColourFormats[pick(std::size(kColourFormats))] : (chance(85) ? 0 : 2);
            s.outputBits = row_.outputBits;
            s.scaleMode = kScales[pick(std::size(kScales))];
            if (row_.resolutionClass == 1) {
                s.resolutionX = 1440, s.resolutionY = 720;
            } else if (row_.resolutionClass == 2) {
                s.resolutionX = chance(50) ? 360 : 720, s.resolutionY = 2 * s.resolutionX;
            } else {
                const auto& r = kGeneral[pick(std::size(kGeneral))];
                s.resolutionX = r[0], s.resolutionY = r[1];
            }
            s.width = chance(70) ? 1 + pick(120) : 100 + pick(1400);
            const bool inkOrHalving = s.inputFormat == 4 || s.scaleMode == -1;
            if (row_.inkOrHalving == 1 && !inkOrHalving) continue;
            if (row_.inkOrHalving == -1 && inkOrHalving) continue;
            return s;
        }
    }

    void fillTables(HandContext& hc) {
        // Matrix: width a power of two up to 256 (now and then 512, which the
        // cached kernels refuse), any height; values a shuffled ramp, random
        // 16-bit values, or one value.
        const uint32_t width = chance(3) ? 512 : 1u << pick(9);
        const uint32_t height = chance(20) ? 1 : 1 + pick(70);
        const uint32_t cells = std::max<uint32_t>(1, std::min<uint32_t>(width * height, 65536));
        std::vector<uint16_t> m(width * height);
        const uint32_t matrixKind = pick(4);
        const uint16_t flat = static_cast<uint16_t>(pick(cells));
        for (uint32_t i = 0; i < m.size(); ++i) {
            m[i] = matrixKind == 0   ? static_cast<uint16_t>(g_())
                   : matrixKind == 1 ? flat
                                     : static_cast<uint16_t>((i * 2897u + 11u) % cells);
        }
        if (matrixKind >= 2) std::shuffle(m.begin(), m.end(), g_);
        hc.setMatrix(width, height, m);

        const uint32_t toneScale = chance(70) ? cells : 65536;
        for (uint32_t k = 0; k < 256; ++k) {
            const uint32_t base = k * (toneScale - 1) / 255;
            hc.tone[k] = static_cast<uint16_t>(chance(10) ? g_() : base);
            hc.dotValue[k] = static_cast<int16_t>(chance(5) ? g_() : between(150, 700));
            hc.edThreshold[k] = static_cast<int16_t>(chance(5) ? between(-2000, 2000) : between(60, 200));
        }
        int32_t t[4];
        for (int32_t& v : t) v = between(-5, 260);
        if (chance(80)) std::sort(t, t + 4, std::greater<int32_t>());
        hc.setSpread(t[0], t[1], t[2], t[3]);

        // Split rows: layered, random, or with runs of rows without small ink
        // (which switch the colour planes' diffusion off).
        const uint32_t splitKind = pick(3);
        for (uint32_t r = 0; r < 256; ++r) {
            uint32_t sm, md, lg;
            if (splitKind == 0) {
                sm = std::min(r, 85u), md = r < 85 ? 0 : std::min(r - 85, 85u), lg = r < 170 ? 0 : r - 170;
            } else {
                sm = pick(256), md = pick(256 - sm), lg = pick(256 - sm - md);
                if (splitKind == 2 && (r / 16) % 2 == 1) sm = 0;
            }
            hc.setSplit(static_cast<uint8_t>(r), static_cast<uint8_t>(sm), static_cast<uint8_t>(md),
                        static_cast<uint8_t>(lg));
        }

        if (row_.colour) {
            if (chance(60)) {
                bench::evenGridCells(hc);
            } else {
                // Random cells, some of them past the grid's last node.
                for (uint32_t v = 0; v < 256; ++v) {
                    const uint8_t node = static_cast<uint8_t>(chance(5) ? 31 : std::min<uint32_t>(v / 8, 31));
                    hc.setGridCell(static_cast<uint8_t>(v), node, static_cast<uint8_t>(chance(20) ? 255 : pick(256)));
                }
            }
            // Grid: a CMYK separation with noise, planes zeroed in places, or random words.
            const bool randomGrid = chance(15);
            for (uint32_t a = 0; a < 32; ++a)
                for (uint32_t b = 0; b < 32; ++b)
                    for (uint32_t c = 0; c < 32; ++c) {
                        uint32_t word;
                        if (randomGrid) {
                            word = static_cast<uint32_t>(g_());
                        } else {
                            const int32_t cy = 255 - int32_t(c * 255 / 31), mg = 255 - int32_t(b * 255 / 31),
                                          ye = 255 - int32_t(a * 255 / 31);
                            const int32_t k = std::min({cy, mg, ye}) / 2;
                            int32_t ink[4] = {cy - k, mg - k, ye - k, k};
                            for (int32_t& v : ink) {
                                v = std::clamp(v + between(-6, 6), 0, 255);
                                if (v < 40 && chance(40)) v = 0;
                            }
                            word = uint32_t(ink[0]) | uint32_t(ink[1]) << 8 | uint32_t(ink[2]) << 16 |
                                   uint32_t(ink[3]) << 24;
                        }
                        hc.setNode(a, b, c, word);
                    }
        } else {
            uint16_t* curve = hc.monoCurve();
            if (row_.outputBits == 2) {
                // Padded curve: entry 0 the level spread W, then the shifted ink curve.
                const uint32_t spread = 1 + pick(chance(50) ? 3 : 40);
                curve[0] = static_cast<uint16_t>(spread);
                for (uint32_t j = 0; j < spread + 256; ++j) {
                    const int32_t v = std::clamp(int32_t(j) - int32_t(spread / 2), 0, 255);
                    curve[1 + j] = static_cast<uint16_t>(chance(5) ? pick(256) : 255 - v);
                }
            } else {
                for (uint32_t v = 0; v < 256; ++v)
                    curve[v] = static_cast<uint16_t>(v > 240 && chance(50) ? 0 : (chance(10) ? pick(256) : 255 - v));
            }
        }

        // Error lines start empty or with leftovers.
        if (chance(40))
            for (auto& line : hc.errorLines)
                for (int32_t& cell : line) cell = between(-6000, 6000);
    }

    // Input pixels for `count` output pixels (room for halving and for
    // four-byte reads): gradients with grain, random bytes, white stretches.
    std::vector<uint8_t> pixels(uint32_t count, uint32_t pixelBytes, bool ink) {
        const uint32_t n = 2 * count + 4;
        std::vector<uint8_t> bytes(n * pixelBytes + 8);
        const uint8_t white = ink ? 0 : 255;
        const uint32_t kind = pick(4);
        int32_t base[4] = {between(0, 255), between(0, 255), between(0, 255), between(0, 255)};
        const int32_t slope = between(-3, 3);
        bool inWhite = false;
        for (uint32_t i = 0; i < n; ++i) {
            if (chance(inWhite ? 80 : 8)) inWhite = !inWhite;
            for (uint32_t k = 0; k < pixelBytes; ++k) {
                uint8_t v;
                if (kind == 0) {
                    v = static_cast<uint8_t>(g_());
                } else {
                    v = static_cast<uint8_t>(std::clamp(base[k % 4] + slope * int32_t(i) + between(-4, 4), 0, 255));
                }
                if (kind == 3 && inWhite) v = white;
                if (kind == 2 && chance(3)) v = white;
                bytes[i * pixelBytes + k] = v;
            }
            if (kind != 0 && chance(2)) base[pick(4)] = between(0, 255);
        }
        if (chance(10)) std::fill(bytes.begin(), bytes.end(), white);
        return bytes;
    }

    uint64_t runLines(HandContext& hc, const HtSettings& s) {
        Digest d;
        const uint32_t pixelsPerByte = s.outputBits == 2 ? 4 : 8;
        const uint32_t pixelBytes = std::max<uint32_t>(bytesPerPixel(s.inputFormat), row_.colour ? 3 : 1);
        const bool ink = s.inputFormat == 4;
        static constexpr uint32_t kStarts[] = {0, 13, 14, 15, 16, 31};
        uint32_t lineNo = chance(50) ? kStarts[pick(std::size(kStarts))] : pick(100);
        const uint32_t lines = 2 + pick(4);
        for (uint32_t l = 0; l < lines; ++l) {
            // The line cut into runs at random points; some runs skipped, some empty.
            std::vector<uint32_t> cuts = {0, s.width};
            const uint32_t pieces = pick(4);
            for (uint32_t c = 0; c < pieces; ++c) cuts.push_back(pick(s.width + 1));
            std::sort(cuts.begin(), cuts.end());
            for (size_t r = 0; r + 1 < cuts.size(); ++r) {
                const uint32_t startX = cuts[r];
                const uint32_t count = cuts[r + 1] - cuts[r];
                if (count != 0 && chance(10)) continue;
                const uint32_t bitOffset = chance(40) ? 0 : pick(pixelsPerByte);
                const uint32_t planeBytes = (bitOffset + count + pixelsPerByte - 1) / pixelsPerByte;
                const uint32_t stride = planeBytes + 1 + pick(3);
                std::vector<uint8_t> out(4 * stride);
                for (uint8_t& b : out) b = static_cast<uint8_t>(g_());
                const std::vector<uint8_t> src = pixels(count, pixelBytes, ink);
                const uint32_t rc = hc.run(src.data(), out.data(), stride, bitOffset, count, startX, lineNo);
                d.add(rc);
                d.add(out.data(), out.size());
                d.add(hc.ctx.prevLineNo);
                d.add(hc.ctx.prevRunEnd);
                for (const auto& line : hc.errorLines) d.add(line.data(), line.size() * sizeof(int32_t));
            }
            lineNo += chance(15) ? 2 : 1;
        }
        return d.value();
    }

    const KernelRow& row_;
    std::mt19937_64 g_;
    const char* kernelName_ = "";
};

}  // namespace
}  // namespace inkdot

int main(int argc, char** argv) {
    const uint32_t perRow = argc > 1 ? static_cast<uint32_t>(std::strtoul(argv[1], nullptr, 10)) : 300;
    std::map<std::string, uint32_t> perKernel;
    uint32_t rowIndex = 0;
    for (const inkdot::KernelRow& row : inkdot::kRows) {
        for (uint32_t i = 0; i < perRow; ++i) {
            inkdot::Scenario scenario(row, rowIndex * 1000003u + i);
            const uint64_t digest = scenario.run();
            std::printf("%s %u %u %016llx\n", scenario.kernelName(), rowIndex, i,
                        static_cast<unsigned long long>(digest));
            ++perKernel[scenario.kernelName()];
        }
        ++rowIndex;
    }
    for (const auto& [kernel, n] : perKernel) std::fprintf(stderr, "%-22s %u scenarios\n", kernel.c_str(), n);
    return 0;
}
