// A page in overlapped bands: the planes of one line after another, and a
// stage that fails or stops ends the page the way it says.
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

struct BandRun {
    bool ok = true;
    std::string error;
    std::vector<uint8_t> page;  // the printed lines written, in the order they came
    size_t lineBytes = 0;
    size_t lines() const { return page.size() / lineBytes; }
};

// The page line by line (`bands` false), or through runBands; the reader
// ends the page at input line `readUntil` (empty `readError`: a stop), the
// writer fails at printed line `writeUntil`.
BandRun printPage(const Setting& s, bool bands, bool overlapped = false, uint32_t readUntil = kLines,
                  const std::string& readError = "", uint32_t writeUntil = ~0u) {
    std::string error;
    static const std::unique_ptr<BlockSource> pack = openDefaultPack(error);
    ColourSettings colour;
    colour.mono = s.mono;
    const std::unique_ptr<Job> job = Job::open(colour, s.setup, *pack, error);
    EXPECT_TRUE(job) << error;
    const unsigned bpp = job->inputBytesPerPixel();
    BandRun run;
    run.lineBytes = job->planeCount() * job->planeStride();
    if (!bands) {
        std::vector<uint8_t> input(size_t{kWidth} * bpp), planes(run.lineBytes);
        for (uint32_t y = 0; y < kLines * s.lineRepeat; ++y) {
            if (y % s.lineRepeat == 0) inputLine(y / s.lineRepeat, bpp, input.data());
            EXPECT_TRUE(job->halftoneLine(input.data(), planes.data(), error)) << error;
            run.page.insert(run.page.end(), planes.begin(), planes.end());
        }
        return run;
    }
    BandStages stages;
    stages.read = [&](uint8_t* lines, uint32_t first, uint32_t count, std::string& why) {
        for (uint32_t i = 0; i < count; ++i) {
            if (first + i == readUntil) return why = readError, false;
            inputLine(first + i, bpp, lines + size_t{i} * kWidth * bpp);
        }
        return true;
    };
    stages.write = [&](const uint8_t* lines, uint32_t first, uint32_t count, std::string& why) {
        EXPECT_EQ(first, run.lines()) << "bands are written in page order";
        for (uint32_t i = 0; i < count; ++i) {
            if (run.lines() == writeUntil) return why = "the disk is full", false;
            run.page.insert(run.page.end(), lines + i * run.lineBytes, lines + (i + 1) * run.lineBytes);
        }
        return true;
    };
    const BandPlan plan{.inputLines = kLines, .lineRepeat = s.lineRepeat, .bandLines = kBandLines, .overlapped = overlapped};
    run.ok = runBands(*job, plan, stages, run.error);
    return run;
}

TEST(BandPipeline, OverlappedAndSerialBandsPrintTheLineByLinePlanes) {
    for (const Setting& s : kSettings) {
        const std::vector<uint8_t> expected = printPage(s, false).page;
        for (bool overlapped : {false, true}) {
            const BandRun run = printPage(s, true, overlapped);
            ASSERT_TRUE(run.ok) << run.error;
            EXPECT_TRUE(run.page == expected) << int(s.setup.method) << (overlapped ? ", overlapped" : ", serial");
        }
    }
}

TEST(BandPipeline, AFailingStageEndsThePageWithItsReason) {
    const Setting& s = kSettings[2];  // two printed lines an input line
    const std::vector<uint8_t> whole = printPage(s, false).page;
    for (bool overlapped : {false, true}) {
        // Line 20 lies in the band of lines 14..20: what came before it is all the writer may see.
        BandRun run = printPage(s, true, overlapped, 20, "the image file is cut short");
        EXPECT_TRUE(!run.ok && run.error == "the image file is cut short") << run.error;
        EXPECT_LE(run.lines(), 14u * 2);
        // A reader that stops on purpose at line 21 (a cancel) still gets
        // its three whole bands, lines 0..20, halftoned and written.
        run = printPage(s, true, overlapped, 21);
        EXPECT_TRUE(!run.ok && run.error.empty()) << run.error;
        EXPECT_EQ(run.lines(), 21u * 2);
        EXPECT_TRUE(std::equal(run.page.begin(), run.page.end(), whole.begin()));
        run = printPage(s, true, overlapped, kLines, "", 30);
        EXPECT_TRUE(!run.ok && run.error == "the disk is full") << run.error;
        EXPECT_EQ(run.lines(), 30u);
    }
}

}  // namespace
}  // namespace inkdot::tools
