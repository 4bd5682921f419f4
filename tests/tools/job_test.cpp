// The driver layer: protocol order and messages, and end-to-end halftoning
// with the default pack in every method, depth, colour mode and resolution.
#include <gtest/gtest.h>

#include <bit>
#include <map>
#include <sstream>

#include "cli/cli.h"
#include "image/image_reader.h"
#include "image_writers.h"
#include "inkdot/job.h"
#include "pack/pack.h"
#include "temp_dir.h"

namespace inkdot {
namespace {

using test::TempDir;

// A block source that serves the default pack with blocks replaced or
// removed, and records the order in which blocks were asked for.
class EditedPack : public BlockSource {
public:
    EditedPack() {
        std::string error;
        base_ = openDefaultPack(error);
        EXPECT_TRUE(base_) << error;
    }
    std::span<const uint8_t> block(uint32_t number) const override {
        asked.push_back(number);
        if (auto it = replaced.find(number); it != replaced.end()) return it->second;
        return base_->block(number);
    }
    uint32_t requestListBlock() const override { return base_->requestListBlock(); }

    std::map<uint32_t, std::vector<uint8_t>> replaced;  // an empty vector removes the block
    mutable std::vector<uint32_t> asked;

private:
    std::unique_ptr<BlockSource> base_;
};

TEST(Job, MissingBlockIsNamed) {
    EditedPack pack;
    pack.replaced[0] = {};
    std::string error;
    EXPECT_EQ(Job::open({}, {Method::ErrorDiffusion, 1, Resolution::R720x720, HScale::x1, 16}, pack, error), nullptr);
    EXPECT_EQ(error, "the resource pack has no block 0 (index text)");
    EXPECT_EQ(pack.asked, std::vector<uint32_t>{0}) << "colour management asks for the index first";
}

TEST(Job, RefusesWidthsThatCannotBePrinted) {
    EditedPack pack;
    std::string error;
    EXPECT_EQ(Job::open({}, {Method::ErrorDiffusion, 1, Resolution::R720x720, HScale::Half, 1}, pack, error), nullptr);
    EXPECT_NE(error.find("line width of 1 pixels"), std::string::npos) << error;
    EXPECT_EQ(Job::open({}, {Method::ErrorDiffusion, 3, Resolution::R720x720, HScale::x1, 8}, pack, error), nullptr);
    EXPECT_EQ(error, "output bits must be 1 or 2");
    EXPECT_TRUE(pack.asked.empty()) << "nothing is asked for before the settings are checked";
}

TEST(ResultMessage, NamesTheClassAndTheCode) {
    EXPECT_EQ(resultMessage(RC_DATA), "resource data missing, out of order or invalid (code 0x300)");
    EXPECT_EQ(resultMessage(RC_ARG + 6), "argument 6 was refused (code 0x206)");
    EXPECT_EQ(resultMessage(RC_ARG), "this combination of settings is not supported (code 0x200)");
    EXPECT_EQ(resultMessage(RC_MEM_ALLOC), "the engine could not obtain memory (code 0x101)");
}

TEST(Job, RunsBothProtocolsInTheEngineOrder) {
    EditedPack pack;
    std::string error;
    ColourSettings colour;
    colour.inkWeights = std::array<uint8_t, 4>{50, 50, 60, 40};
    auto job = Job::open(colour, {Method::ErrorDiffusion, 2, Resolution::R1440x720, HScale::x2, 10}, pack, error);
    ASSERT_TRUE(job) << error;
    EXPECT_EQ(pack.asked, (std::vector<uint32_t>{0, 100, 980, 990, 900, 950, 1000, 1001, 1012, 1100}));
    EXPECT_EQ(job->modelId(), 101u);
    EXPECT_EQ(job->outputWidth(), 20u);
    EXPECT_EQ(job->planeCount(), 4u);
    EXPECT_EQ(job->planeStride(), 5u);
}

TEST(Job, ShortBlockIsRefusedBeforeTheEngineSeesIt) {
    EditedPack pack;
    pack.replaced[1010] = {64, 64, 0, 0, 1, 2};
    std::string error;
    EXPECT_EQ(Job::open({}, {Method::Dither, 1, Resolution::R720x720, HScale::x1, 8}, pack, error), nullptr);
    EXPECT_EQ(error, "block 1010 (threshold matrix) holds 6 bytes, its layout needs 8196");
}

TEST(Job, BlockAtFaultIsNamed) {
    // Each case spoils one block of the default pack; the engine would refuse
    // the run only while reading a later block (the matrix 1010 or the dot
    // split), so the driver checks first and names the block to blame.
    std::string error;
    auto base = openDefaultPack(error);
    ASSERT_TRUE(base) << error;
    const auto copy = [&](uint32_t n) {
        const auto b = base->block(n);
        return std::vector<uint8_t>(b.begin(), b.end());
    };
    struct Spoilt {
        uint32_t block;
        size_t at;
        std::vector<uint8_t> bytes;
        unsigned bits;
        const char* message;
    };
    const Spoilt cases[] = {
        // Ink parameter A, big-endian at 48: 300 is 0x012C.
        {100, 48, {0x01, 0x2C}, 1, "block 100 (colour table) has ink parameter A = 300; one-bit halftoning takes 250, 350 or 500"},
        {100, 50, {0x00, 0x00}, 1, "block 100 (colour table) has ink parameter B = 0; one-bit halftoning takes 1 to 1000"},
        // Data area size, u32 at 20: 0 leaves out the dot-split descriptor.
        {100, 20, {0, 0, 0, 0}, 2, "block 100 (colour table) names no dot-split block, which two-bit output needs"},
        {1010, 0, {48}, 1, "block 1010 (threshold matrix) has a width of 48 cells, which is no power of two"},
        {1100, 15, {100, 100, 100}, 2, "block 1100 (dot-split table) has row 5, whose dot amounts add up to more than 255"},
    };
    for (const Spoilt& c : cases) {
        EditedPack pack;
        std::vector<uint8_t> block = copy(c.block);
        std::copy(c.bytes.begin(), c.bytes.end(), block.begin() + static_cast<std::ptrdiff_t>(c.at));
        pack.replaced[c.block] = block;
        EXPECT_EQ(Job::open({}, {Method::Dither, c.bits, Resolution::R720x720, HScale::x1, 8}, pack, error), nullptr);
        EXPECT_EQ(error, c.message);
    }
}

struct Case {
    Method method;
    unsigned bits;
    Resolution resolution;
    bool mono;
};

std::string caseName(const Case& c) {
    const char* method = c.method == Method::ErrorDiffusion ? "ed" : c.method == Method::Dither ? "dither" : "threshold";
    const Dpi dpi = resolutionDpi(c.resolution);
    return std::string(method) + std::to_string(c.bits) + "bit_" + std::to_string(dpi.x) + "x" +
           std::to_string(dpi.y) + (c.mono ? "_mono" : "_colour");
}

std::vector<Case> allCases() {
    std::vector<Case> cases;
    for (Method m : {Method::ErrorDiffusion, Method::Dither, Method::Threshold})
        for (unsigned bits : {1u, 2u})
            for (Resolution r : {Resolution::R720x720, Resolution::R1440x720, Resolution::R360x720, Resolution::R720x360})
                for (bool mono : {false, true}) {
                    if (bits == 2 && m == Method::Threshold) continue;  // one-bit only
                    if (bits == 2 && r == Resolution::R720x360) continue;  // no two-bit spread table for this class
                    cases.push_back({m, bits, r, mono});
                }
    return cases;
}


// Ink coverage of a halftoned flat gray patch: the sum of dot codes over all
// planes and pixels of `lines` lines; -1 when a line failed.
long inkOf(Job& job, uint8_t gray, int lines, std::string& error) {
    std::vector<uint8_t> input(size_t{job.inputWidth()} * job.inputBytesPerPixel(), gray);
    std::vector<uint8_t> planes(job.planeCount() * job.planeStride());
    long total = 0;
    for (int y = 0; y < lines; ++y) {
        if (!job.halftoneLine(input.data(), planes.data(), error)) return -1;
        for (uint8_t byte : planes) {
            if (job.outputBits() == 1) total += std::popcount(byte);
            else
                for (int s = 0; s < 8; s += 2) total += (byte >> s) & 3;
        }
    }
    return total;
}

class EndToEnd : public ::testing::TestWithParam<Case> {};

TEST_P(EndToEnd, DensityFollowsTone) {
    const Case c = GetParam();
    std::string error;
    auto pack = openDefaultPack(error);
    ColourSettings colour;
    colour.mono = c.mono;
    long previous = -1;
    for (uint8_t gray : {255, 192, 128, 64, 0}) {
        // A fresh job per patch, so error carried from the previous tone does not count.
        auto job = Job::open(colour, {c.method, c.bits, c.resolution, HScale::x1, 96}, *pack, error);
        ASSERT_TRUE(job) << error;
        const long ink = inkOf(*job, gray, 32, error);
        ASSERT_GE(ink, 0) << error;
        if (gray == 255) {
            EXPECT_EQ(ink, 0) << "paper white takes no ink";
        } else if (c.method == Method::Threshold) {
            EXPECT_GE(ink, previous) << "a fixed threshold steps, gray " << int(gray);
        } else {
            EXPECT_GT(ink, previous) << "darker gray " << int(gray) << " takes more ink";
        }
        if (gray == 0) {
            EXPECT_GT(ink, 0) << "black takes ink";
        }
        previous = ink;
    }
}

INSTANTIATE_TEST_SUITE_P(AllSettings, EndToEnd, ::testing::ValuesIn(allCases()),
                         [](const auto& info) { return caseName(info.param); });

// Share of pixels with a dot in each plane for a flat colour patch.
std::array<double, 4> planeShares(Job& job, uint8_t r, uint8_t g, uint8_t b, std::string& error) {
    std::vector<uint8_t> input;
    for (uint32_t x = 0; x < job.inputWidth(); ++x) input.insert(input.end(), {r, g, b});
    std::vector<uint8_t> planes(job.planeCount() * job.planeStride());
    std::array<double, 4> shares{};
    const int lines = 32;
    for (int y = 0; y < lines; ++y) {
        EXPECT_TRUE(job.halftoneLine(input.data(), planes.data(), error)) << error;
        for (unsigned p = 0; p < 4; ++p)
            for (size_t i = 0; i < job.planeStride(); ++i)
                shares[p] += std::popcount(planes[p * job.planeStride() + i]);
    }
    for (double& s : shares) s /= double(lines) * job.outputWidth();
    return shares;
}

TEST(EndToEndColour, EachPrimaryLandsInItsOwnPlanes) {
    std::string error;
    auto pack = openDefaultPack(error);
    auto job = Job::open({}, {Method::ErrorDiffusion, 1, Resolution::R720x720, HScale::x1, 64}, *pack, error);
    ASSERT_TRUE(job) << error;
    // Red is magenta and yellow; blue is cyan and magenta; nothing else.
    const auto red = planeShares(*job, 255, 0, 0, error);
    EXPECT_LT(red[0], 0.02);
    EXPECT_GT(red[1], 0.8);
    EXPECT_GT(red[2], 0.8);
    EXPECT_LT(red[3], 0.02);
    const auto blue = planeShares(*job, 0, 0, 255, error);
    EXPECT_GT(blue[0], 0.8);
    EXPECT_GT(blue[1], 0.8);
    EXPECT_LT(blue[2], 0.02);
    const auto cyan = planeShares(*job, 0, 255, 255, error);
    EXPECT_GT(cyan[0], 0.8);
    EXPECT_LT(cyan[1] + cyan[2] + cyan[3], 0.05);
}

class EndToEndCli : public ::testing::TestWithParam<std::pair<const char*, const char*>> {};

TEST_P(EndToEndCli, PrintsTheChartIntoPlanesAndAPreview) {
    const auto [method, bits] = GetParam();
    TempDir dir;
    std::ostringstream out, err;
    ASSERT_EQ(tools::runCli({"chart", "-o", dir.file("c.png"), "--width", "120", "--height", "90"}, out, err), 0);
    const std::string outDir = dir.file("out");
    std::ostringstream o, e;
    const int status = tools::runCli(
        {"print", dir.file("c.png"), "-o", outDir, "--method", method, "--bits", bits, "--resolution", "1440x720"}, o, e);
    ASSERT_EQ(status, 0) << e.str();
    const bool oneBit = std::string(bits) == "1";
    // 120 image columns doubled for 1440 x 720 dpi.
    const std::string header = oneBit ? "P4\n240 90\n" : "P5\n240 90\n3\n";
    const size_t rowBytes = oneBit ? 30 : 240;
    for (const char* plane : {"cyan", "magenta", "yellow", "black"}) {
        const std::string bytes = test::readBytes(outDir + "/c-" + plane + (oneBit ? ".pbm" : ".pgm"));
        EXPECT_EQ(bytes.substr(0, header.size()), header) << plane;
        EXPECT_EQ(bytes.size(), header.size() + rowBytes * 90) << plane;
    }
    std::string error;
    auto preview = tools::openImage(outDir + "/c-preview.png", error);
    ASSERT_TRUE(preview) << error;
    EXPECT_EQ(preview->width(), 120u) << "one preview pixel per image pixel: boxes of 2 x 1 dots";
    EXPECT_EQ(preview->height(), 90u);
    // The preview's top-left corner is paper, the gray ramp's right end dark.
    std::vector<uint8_t> row(120 * 3);
    ASSERT_TRUE(preview->readRow(row.data(), error)) << error;
    EXPECT_GT(row[0], 230);
    EXPECT_LT(row[119 * 3], 90);
}

INSTANTIATE_TEST_SUITE_P(MethodsAndDepths, EndToEndCli,
                         ::testing::Values(std::pair{"ed", "1"}, std::pair{"dither", "2"}),
                         [](const auto& info) { return std::string(info.param.first) + info.param.second + "bit"; });

TEST(EndToEndCliMono, SixteenBitGrayWithAlphaPrintsOnePlane) {
    TempDir dir;
    std::vector<uint16_t> samples;
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 32; ++x) samples.insert(samples.end(), {uint16_t(x * 2000), uint16_t(65535)});
    ASSERT_TRUE(test::writeTestPng(dir.file("g.png"), 32, 16, PNG_COLOR_TYPE_GRAY_ALPHA, 16, samples));
    std::ostringstream o, e;
    const int status = tools::runCli({"print", dir.file("g.png"), "-o", dir.file("out"), "--mono"}, o, e);
    ASSERT_EQ(status, 0) << e.str();
    EXPECT_EQ(dir.listing().size(), 2u);
    EXPECT_TRUE(std::filesystem::exists(dir.file("out/g-black.pbm")));
    EXPECT_FALSE(std::filesystem::exists(dir.file("out/g-cyan.pbm")));
}

}  // namespace
}  // namespace inkdot
