// The driver layer's job: the order it asks for blocks in, and the block or
// setting it names when it refuses a run.
#include <gtest/gtest.h>

#include <map>

#include "inkdot/job.h"

namespace inkdot {
namespace {

// The default pack with blocks replaced (an empty vector removes one); records the blocks asked for.
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
    std::vector<uint8_t> copy(uint32_t number) const {
        const auto b = base_->block(number);
        return {b.begin(), b.end()};
    }

    std::map<uint32_t, std::vector<uint8_t>> replaced;
    mutable std::vector<uint32_t> asked;

private:
    std::unique_ptr<BlockSource> base_;
};

TEST(Job, RunsBothProtocolsInTheEngineOrder) {
    EditedPack pack;
    std::string error;
    ColourSettings colour;
    colour.inkWeights = std::array<uint8_t, 4>{50, 50, 60, 40};
    auto job = Job::open(colour, {Method::ErrorDiffusion, 2, Resolution::R1440x720, HScale::x2, 10}, pack, error);
    ASSERT_TRUE(job) << error;
    EXPECT_EQ(pack.asked, (std::vector<uint32_t>{0, 100, 980, 990, 900, 950, 1000, 1001, 1012, 1100}));
    // 10 pixels doubled, four planes of 20 two-bit codes in 5 bytes.
    EXPECT_EQ(std::vector<size_t>({job->modelId(), job->outputWidth(), job->planeCount(), job->planeStride()}),
              std::vector<size_t>({101, 20, 4, 5}));
}

TEST(Job, RefusesByNamingTheSettingOrTheBlockAtFault) {
    // Each case spoils one setting or one block of the default pack. The engine
    // would refuse a spoilt block only while reading a later one (the matrix
    // 1010 or the dot split), so the driver checks first and names the block.
    const struct {
        HalftoneSetup setup;
        uint32_t block;
        size_t at;  // where `bytes` go; ~0: the block is replaced by them
        std::vector<uint8_t> bytes;
        const char* message;
    } cases[] = {
        {{Method::ErrorDiffusion, 1, Resolution::R720x720, HScale::Half, 1}, 0, 0, {}, "line width of 1 pixels"},
        {{Method::ErrorDiffusion, 3, Resolution::R720x720, HScale::x1, 8}, 0, 0, {}, "output bits must be 1 or 2"},
        {{Method::ErrorDiffusion, 1, Resolution::R720x720, HScale::x1, 16}, 0, ~size_t{0}, {},
         "the resource pack has no block 0 (index text)"},
        {{Method::Dither, 1, Resolution::R720x720, HScale::x1, 8}, 1010, ~size_t{0}, {64, 64, 0, 0, 1, 2},
         "block 1010 (threshold matrix) holds 6 bytes, its layout needs 8196"},
        // Ink parameter A, big-endian at 48: 300 is 0x012C.
        {{Method::Dither, 1, Resolution::R720x720, HScale::x1, 8}, 100, 48, {0x01, 0x2C},
         "block 100 (colour table) has ink parameter A = 300; one-bit halftoning takes 250, 350 or 500"},
        {{Method::Dither, 1, Resolution::R720x720, HScale::x1, 8}, 100, 50, {0x00, 0x00},
         "block 100 (colour table) has ink parameter B = 0; one-bit halftoning takes 1 to 1000"},
        // Data area size, u32 at 20: 0 leaves out the dot-split descriptor.
        {{Method::Dither, 2, Resolution::R720x720, HScale::x1, 8}, 100, 20, {0, 0, 0, 0},
         "block 100 (colour table) names no dot-split block, which two-bit output needs"},
        {{Method::Dither, 1, Resolution::R720x720, HScale::x1, 8}, 1010, 0, {48},
         "block 1010 (threshold matrix) has a width of 48 cells, which is no power of two"},
        {{Method::Dither, 2, Resolution::R720x720, HScale::x1, 8}, 1100, 15, {100, 100, 100},
         "block 1100 (dot-split table) has row 5, whose dot amounts add up to more than 255"},
    };
    for (const auto& c : cases) {
        EditedPack pack;
        if (c.at == ~size_t{0}) {
            pack.replaced[c.block] = c.bytes;
        } else if (!c.bytes.empty()) {
            pack.replaced[c.block] = pack.copy(c.block);
            std::copy(c.bytes.begin(), c.bytes.end(), pack.replaced[c.block].begin() + std::ptrdiff_t(c.at));
        }
        std::string error;
        EXPECT_EQ(Job::open({}, c.setup, pack, error), nullptr) << c.message;
        EXPECT_NE(error.find(c.message), std::string::npos) << error;
        if (c.bytes.empty()) {
            EXPECT_EQ(pack.asked, std::vector<uint32_t>(c.at == 0 ? 0 : 1, 0)) << "settings first, then the index";
        }
    }
}

TEST(ResultMessage, NamesTheClassAndTheCode) {
    EXPECT_EQ(resultMessage(RC_DATA), "resource data missing, out of order or invalid (code 0x300)");
    EXPECT_EQ(resultMessage(RC_ARG + 6), "argument 6 was refused (code 0x206)");
    EXPECT_EQ(resultMessage(RC_ARG), "this combination of settings is not supported (code 0x200)");
    EXPECT_EQ(resultMessage(RC_MEM_ALLOC), "the engine could not obtain memory (code 0x101)");
}

}  // namespace
}  // namespace inkdot
