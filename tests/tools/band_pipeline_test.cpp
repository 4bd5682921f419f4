// A page in overlapped bands: the planes of one line after another.
#include <gtest/gtest.h>

#include "driver/band_pipeline.h"
#include "inkdot/job.h"

namespace inkdot::tools {
namespace {

struct Setting {
    bool mono;
    HalftoneSetup setup;
    unsigned lineRepeat;
};

// Band edges fall inside the page (45 lines in bands of 7), the width is odd,
// and the last setting repeats lines as a 360x720 page does.
constexpr uint32_t kWidth = 203, kLines = 45, kBandLines = 7;
const Setting kSettings[] = {
    {false, {Method::ErrorDiffusion, 1, Resolution::R1440x720, HScale::x2, kWidth}, 1},
    {false, {Method::ErrorDiffusion, 2, Resolution::R720x720, HScale::x1, kWidth}, 1},
    {true, {Method::Dither, 2, Resolution::R360x720, HScale::x1, kWidth}, 2},
};

// Input line y of a busy picture, the same whichever thread asks for it.
void inputLine(uint32_t y, unsigned bytesPerPixel, uint8_t* out) {
    for (uint32_t i = 0; i < kWidth * bytesPerPixel; ++i)
        out[i] = uint8_t((i * 3 + y * 5) / 2 + (((i * 0x9E3779B1u) ^ (y * 0x85EBCA77u)) >> 27));
}

// The page's planes, line by line (`bands` false), or through runBands.
std::vector<uint8_t> printPage(const Setting& s, bool bands, bool overlapped = false) {
    std::string error;
    static const std::unique_ptr<BlockSource> pack = openDefaultPack(error);
    ColourSettings colour;
    colour.mono = s.mono;
    const std::unique_ptr<Job> job = Job::open(colour, s.setup, *pack, error);
    EXPECT_TRUE(job) << error;
    const unsigned bpp = job->inputBytesPerPixel();
    const size_t lineBytes = job->planeCount() * job->planeStride();
    std::vector<uint8_t> page;
    if (!bands) {
        std::vector<uint8_t> input(size_t{kWidth} * bpp), planes(lineBytes);
        for (uint32_t y = 0; y < kLines * s.lineRepeat; ++y) {
            if (y % s.lineRepeat == 0) inputLine(y / s.lineRepeat, bpp, input.data());
            EXPECT_TRUE(job->halftoneLine(input.data(), planes.data(), error)) << error;
            page.insert(page.end(), planes.begin(), planes.end());
        }
        return page;
    }
    BandStages stages;
    stages.read = [&](uint8_t* lines, uint32_t first, uint32_t count, std::string&) {
        for (uint32_t i = 0; i < count; ++i) inputLine(first + i, bpp, lines + size_t{i} * kWidth * bpp);
        return true;
    };
    stages.write = [&](const uint8_t* lines, uint32_t first, uint32_t count, std::string&) {
        EXPECT_EQ(first, page.size() / lineBytes) << "bands are written in page order";
        page.insert(page.end(), lines, lines + count * lineBytes);
        return true;
    };
    const BandPlan plan{.inputLines = kLines, .lineRepeat = s.lineRepeat, .bandLines = kBandLines, .overlapped = overlapped};
    EXPECT_TRUE(runBands(*job, plan, stages, error)) << error;
    return page;
}

// A failing or stopping stage is checked end to end: a CUPS stream cut short
// (the reader), a cancelled job (a reader that stops) and a full disk under a
// print (the writer).
TEST(BandPipeline, OverlappedAndSerialBandsPrintTheLineByLinePlanes) {
    for (const Setting& s : kSettings) {
        const std::vector<uint8_t> expected = printPage(s, false);
        for (bool overlapped : {false, true})
            EXPECT_TRUE(printPage(s, true, overlapped) == expected) << int(s.setup.method) << " overlapped " << overlapped;
    }
}

}  // namespace
}  // namespace inkdot::tools
