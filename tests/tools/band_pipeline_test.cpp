// A page in overlapped bands gives the planes of one line after another. (A
// failing or stopping stage is checked end to end: a CUPS stream cut short, a
// cancelled job, a full disk under a print.) The thread-sanitizer build runs it.
#include <gtest/gtest.h>

#include "driver/band_pipeline.h"
#include "inkdot/job.h"

namespace inkdot::tools {
namespace {

// Band edges fall inside the page (45 lines in bands of 7), the width is odd,
// and the last setting repeats lines as a 360x720 page does.
constexpr uint32_t kWidth = 203, kLines = 45;

TEST(BandPipeline, OverlappedAndSerialBandsPrintTheLineByLinePlanes) {
    const struct { bool mono; HalftoneSetup setup; unsigned lineRepeat; } settings[] = {
        {false, {Method::ErrorDiffusion, 1, Resolution::R1440x720, HScale::x2, kWidth}, 1},
        {false, {Method::ErrorDiffusion, 2, Resolution::R720x720, HScale::x1, kWidth}, 1},
        {true, {Method::Dither, 2, Resolution::R360x720, HScale::x1, kWidth}, 2},
    };
    std::string error;
    const std::unique_ptr<BlockSource> pack = openDefaultPack(error);
    for (const auto& s : settings) {
        // Input line y of a busy picture, the same whichever thread asks for it.
        const unsigned bpp = s.mono ? 1 : 3;
        const auto input = [bpp](uint32_t y, uint8_t* out) {
            for (uint32_t i = 0; i < kWidth * bpp; ++i)
                out[i] = uint8_t((i * 3 + y * 5) / 2 + (((i * 0x9E3779B1u) ^ (y * 0x85EBCA77u)) >> 27));
        };
        ColourSettings colour;
        colour.mono = s.mono;
        std::vector<uint8_t> lineByLine, in(kWidth * bpp);
        const std::unique_ptr<Job> job = Job::open(colour, s.setup, *pack, error);
        ASSERT_TRUE(job && job->inputBytesPerPixel() == bpp) << error;
        const size_t lineBytes = job->planeCount() * job->planeStride();
        std::vector<uint8_t> planes(lineBytes);
        for (uint32_t y = 0; y < kLines * s.lineRepeat; ++y) {
            input(y / s.lineRepeat, in.data());
            ASSERT_TRUE(job->halftoneLine(in.data(), planes.data(), error)) << error;
            lineByLine.insert(lineByLine.end(), planes.begin(), planes.end());
        }
        for (bool overlapped : {false, true}) {
            const std::unique_ptr<Job> banded = Job::open(colour, s.setup, *pack, error);
            std::vector<uint8_t> page;
            BandStages stages;
            stages.read = [&](uint8_t* lines, uint32_t first, uint32_t count, std::string&) {
                for (uint32_t i = 0; i < count; ++i) input(first + i, lines + size_t{i} * kWidth * bpp);
                return true;
            };
            stages.write = [&](const uint8_t* lines, uint32_t first, uint32_t count, std::string&) {
                EXPECT_EQ(first, page.size() / lineBytes) << "bands are written in page order";
                page.insert(page.end(), lines, lines + count * lineBytes);
                return true;
            };
            const BandPlan plan{.inputLines = kLines, .lineRepeat = s.lineRepeat, .bandLines = 7, .overlapped = overlapped};
            EXPECT_TRUE(runBands(*banded, plan, stages, error)) << error;
            EXPECT_TRUE(page == lineByLine) << int(s.setup.method) << " overlapped " << overlapped;
        }
    }
}

}  // namespace
}  // namespace inkdot::tools
