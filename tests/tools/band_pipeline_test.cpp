// A page in overlapped bands: the planes of one line after another, and a
// stage that fails or stops ends the page the way it says.
#include <gtest/gtest.h>

#include "driver/band_pipeline.h"
#include "inkdot/job.h"

namespace inkdot::tools {
namespace {

struct Setting {
    const char* name;
    bool mono;
    HalftoneSetup setup;
    unsigned lineRepeat;
};

// Band edges fall inside the page (45 lines in bands of 7), the width is odd,
// and one setting repeats lines as a 360x720 page does.
constexpr uint32_t kWidth = 203, kLines = 45, kBandLines = 7;
const Setting kSettings[] = {
    {"colour ED one-bit 1440x720", false, {Method::ErrorDiffusion, 1, Resolution::R1440x720, HScale::x2, kWidth}, 1},
    {"colour ED two-bit 720x720", false, {Method::ErrorDiffusion, 2, Resolution::R720x720, HScale::x1, kWidth}, 1},
    {"mono dither two-bit 360x720", true, {Method::Dither, 2, Resolution::R360x720, HScale::x1, kWidth}, 2},
};

// Input line y of a busy picture, the same whichever thread asks for it.
void inputLine(uint32_t y, unsigned bytesPerPixel, uint8_t* out) {
    for (uint32_t i = 0; i < kWidth * bytesPerPixel; ++i) {
        const uint32_t h = (i * 0x9E3779B1u) ^ (y * 0x85EBCA77u);
        out[i] = static_cast<uint8_t>((i * 3 + y * 5) / 2 + (h >> 27));
    }
}

std::unique_ptr<Job> openJob(const Setting& s) {
    std::string error;
    static const std::unique_ptr<BlockSource> pack = openDefaultPack(error);
    ColourSettings colour;
    colour.mono = s.mono;
    std::unique_ptr<Job> job = Job::open(colour, s.setup, *pack, error);
    EXPECT_TRUE(job) << error;
    return job;
}

// The page halftoned line by line with no bands at all.
std::vector<uint8_t> lineByLine(const Setting& s) {
    std::unique_ptr<Job> job = openJob(s);
    std::vector<uint8_t> input(size_t{kWidth} * job->inputBytesPerPixel());
    const size_t lineBytes = job->planeCount() * job->planeStride();
    std::vector<uint8_t> page(kLines * s.lineRepeat * lineBytes);
    std::string error;
    for (uint32_t y = 0; y < kLines; ++y) {
        inputLine(y, job->inputBytesPerPixel(), input.data());
        for (unsigned r = 0; r < s.lineRepeat; ++r)
            EXPECT_TRUE(job->halftoneLine(input.data(), &page[(y * s.lineRepeat + r) * lineBytes], error)) << error;
    }
    return page;
}

struct BandRun {
    bool ok;
    std::string error;
    std::vector<uint8_t> page;  // the printed lines written, in the order they came
    uint32_t linesWritten = 0;
};

// The page through runBands; the reader ends the page at input line
// `readUntil` (empty `readError`: a stop), the writer fails at printed line
// `writeUntil`.
BandRun banded(const Setting& s, bool overlapped, uint32_t readUntil = kLines, const std::string& readError = "",
               uint32_t writeUntil = ~0u) {
    std::unique_ptr<Job> job = openJob(s);
    const unsigned bpp = job->inputBytesPerPixel();
    const size_t lineBytes = job->planeCount() * job->planeStride();
    BandRun run;
    BandStages stages;
    stages.read = [&](uint8_t* lines, uint32_t first, uint32_t count, std::string& error) {
        for (uint32_t i = 0; i < count; ++i) {
            if (first + i == readUntil) {
                error = readError;
                return false;
            }
            inputLine(first + i, bpp, lines + size_t{i} * kWidth * bpp);
        }
        return true;
    };
    stages.write = [&](const uint8_t* lines, uint32_t first, uint32_t count, std::string& error) {
        EXPECT_EQ(first, run.linesWritten) << "bands are written in page order";
        for (uint32_t i = 0; i < count; ++i, ++run.linesWritten) {
            if (run.linesWritten == writeUntil) {
                error = "the disk is full";
                return false;
            }
            run.page.insert(run.page.end(), lines + i * lineBytes, lines + (i + 1) * lineBytes);
        }
        return true;
    };
    const BandPlan plan{.inputLines = kLines, .lineRepeat = s.lineRepeat, .bandLines = kBandLines,
                        .overlapped = overlapped};
    run.ok = runBands(*job, plan, stages, run.error);
    return run;
}

TEST(BandPipeline, OverlappedAndSerialBandsPrintTheLineByLinePlanes) {
    for (const Setting& s : kSettings) {
        const std::vector<uint8_t> expected = lineByLine(s);
        for (bool overlapped : {false, true}) {
            const BandRun run = banded(s, overlapped);
            ASSERT_TRUE(run.ok) << s.name << ": " << run.error;
            EXPECT_TRUE(run.page == expected) << s.name << (overlapped ? ", overlapped" : ", serial");
        }
    }
}

TEST(BandPipeline, AFailingStageEndsThePageWithItsReason) {
    const Setting& s = kSettings[2];  // two printed lines an input line
    for (bool overlapped : {false, true}) {
        // Line 20 lies in the band of lines 14..20: what came before it is all the writer may see.
        BandRun run = banded(s, overlapped, 20, "the image file is cut short");
        EXPECT_FALSE(run.ok);
        EXPECT_EQ(run.error, "the image file is cut short");
        EXPECT_LE(run.linesWritten, 14u * 2);
        // A reader that stops on purpose at line 21 (a cancel) still gets
        // its three whole bands, lines 0..20, halftoned and written.
        run = banded(s, overlapped, 21);
        EXPECT_FALSE(run.ok);
        EXPECT_EQ(run.error, "");
        EXPECT_EQ(run.linesWritten, 21u * 2);
        EXPECT_TRUE(std::equal(run.page.begin(), run.page.end(), lineByLine(s).begin()));
        run = banded(s, overlapped, kLines, "", 30);
        EXPECT_FALSE(run.ok);
        EXPECT_EQ(run.error, "the disk is full");
        EXPECT_EQ(run.linesWritten, 30u);
    }
}

}  // namespace
}  // namespace inkdot::tools
