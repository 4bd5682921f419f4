#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "cm/cm_context.h"
#include "cm/colour_table.h"
#include "cm/ink_scale.h"
#include "support/cm_fixture.h"
#include "support/colour_table_writer.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::ColourTableWriter;

// A table read into a fresh instance of its own, deleted with the result.
struct FreshRead {
    test::MemoryWatch watch;
    CmContext* ctx;
    std::vector<uint8_t> bytes;
    uint32_t rc;
    FreshRead(const test::CmSettings& s, const ColourTableWriter& w)
        : ctx(test::newInstance(s)), bytes(w.build()), rc(readColourTable(ctx, bytes.data())) {}
    ~FreshRead() { CmDelete(ctx); }
    const CmLut& lut() const { return *ctx->lut; }
    const uint8_t* written(size_t at) const { return bytes.data() + at; }
};

class ColourTableRead : public ::testing::Test {
protected:
    test::MemoryWatch watch;
    test::CmSettings settings;
    CmContext* ctx = nullptr;
    std::vector<uint8_t> block;

    void TearDown() override {
        if (ctx != nullptr) CmDelete(ctx);
    }
    uint32_t read(const ColourTableWriter& w) {
        if (ctx == nullptr) ctx = test::newInstance(settings);
        block = w.build();
        return readColourTable(ctx, block.data());
    }
    const CmLut& lut() const { return *ctx->lut; }
    const uint8_t* node(const ColourTableWriter& w, uint32_t i0, uint32_t i1, uint32_t i2) const {
        const uint32_t n = w.gridCount[0];
        return block.data() + w.nodeDataOffset() + ((i0 * n + i1) * n + i2) * w.channels;
    }
    const uint8_t* lutNode(uint32_t i0, uint32_t i1, uint32_t i2) const {
        const uint32_t n = lut().gridCount[0];
        return lut().lutData + ((i0 * n + i1) * n + i2) * lut().channels;
    }
};

TEST_F(ColourTableRead, HeaderFieldsAndNodes) {
    ctx = test::newInstance(settings);
    ctx->matchBlockNo = 4242;
    ctx->matchTableId = 317;
    ColourTableWriter w;
    w.gridCount[0] = w.gridCount[1] = w.gridCount[2] = 4;
    w.tableMode = 50;
    w.blackMode = 2;  // reported as 1
    w.adjustDominant[0] = 200;
    w.adjustHue[1] = -5;
    w.saturationOffset = -20;
    w.adjustMinimum[2] = -128;
    const int16_t ink[5] = {150, -2, 300, -32768, 32767};
    std::memcpy(w.inkParam, ink, sizeof ink);
    w.auxParam[0] = 17;
    w.auxParam[3] = -300;
    w.levels[0] = {0, 10, 20, 255};
    w.levels[1] = {0, 100, 200, 255};
    w.levels[2] = {0, 1, 2, 255};
    ASSERT_EQ(read(w), RC_OK);
    EXPECT_EQ(lut().tableBlockNo, 4242u);
    EXPECT_EQ(lut().modelId, 317u);
    EXPECT_EQ(ctx->tableMode, 50);
    EXPECT_EQ(lut().blackMode, 1u);
    EXPECT_EQ(ctx->adjustDominant[0], 200);
    EXPECT_EQ(ctx->adjustHue[1], -5);
    EXPECT_EQ(ctx->saturationOffset, -20);
    EXPECT_EQ(ctx->adjustMinimum[2], -128);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(lut().inkParam[i], ink[i]);
    EXPECT_EQ(lut().auxParam[0], 17);
    EXPECT_EQ(lut().auxParam[3], -300);
    EXPECT_EQ(lut().channels, 4u);
    for (int a = 0; a < 3; ++a) {
        EXPECT_EQ(lut().gridCount[a], 4u);
        EXPECT_EQ(std::memcmp(lut().grid[a], w.levels[a].data(), 4), 0);
        EXPECT_EQ(lut().grid[a][4], 0);
    }
    EXPECT_EQ(lut().extraData, nullptr);
    EXPECT_EQ(lut().extraDataBlock, nullptr);
    // neutralSetting 50 with pixelFormat 1 and processMode 2: neutralMode 0;
    // black mode 1 then replaces the neutral nodes (checked below), the rest is copied.
    EXPECT_EQ(lut().neutralMode, 0u);
    EXPECT_EQ(std::memcmp(lutNode(1, 2, 3), node(w, 1, 2, 3), 4), 0);
    EXPECT_EQ(std::memcmp(lutNode(3, 0, 0), node(w, 3, 0, 0), 4), 0);
}

TEST_F(ColourTableRead, DataAreaIsCopied) {
    ColourTableWriter w;
    w.extraData = {9, 8, 7, 6, 5};
    ASSERT_EQ(read(w), RC_OK);
    ASSERT_NE(lut().extraData, nullptr);
    EXPECT_EQ(lut().extraDataBlock, lut().extraData);
    EXPECT_EQ(std::memcmp(lut().extraData, w.extraData.data(), 5), 0);
}

TEST_F(ColourTableRead, UnsupportedGridsAreRefusedBeforeAnyAllocation) {
    struct Case { const char* what; ColourTableWriter w; };
    std::vector<Case> cases;
    auto with = [&](const char* what, auto change) {
        ColourTableWriter w;
        w.extraData = {1, 2, 3};
        change(w);
        cases.push_back({what, w});
    };
    with("unequal counts", [](ColourTableWriter& w) { w.gridCount[2] = 4; });
    with("one point", [](ColourTableWriter& w) { w.gridCount[0] = w.gridCount[1] = w.gridCount[2] = 1; });
    with("49 points", [](ColourTableWriter& w) { w.gridCount[0] = w.gridCount[1] = w.gridCount[2] = 49; w.channels = 3; });
    with("no channels", [](ColourTableWriter& w) { w.channels = 0; });
    with("13 channels", [](ColourTableWriter& w) { w.channels = 13; });
    with("row of 204 bytes", [](ColourTableWriter& w) { w.gridCount[0] = w.gridCount[1] = w.gridCount[2] = 17; w.channels = 12; });
    with("not starting at 0", [](ColourTableWriter& w) { w.levels[1] = {1, 128, 255}; });
    with("not ending at 255", [](ColourTableWriter& w) { w.levels[2] = {0, 128, 254}; });
    with("not rising strictly", [](ColourTableWriter& w) {
        w.gridCount[0] = w.gridCount[1] = w.gridCount[2] = 4;
        w.levels[0] = {0, 128, 128, 255};
    });
    for (Case& c : cases) {
        FreshRead r(settings, c.w);
        EXPECT_EQ(r.rc, RC_DATA) << c.what;
        EXPECT_EQ(r.watch.seam().allocs, 2u) << c.what << ": only the instance's own blocks";
        EXPECT_EQ(r.lut().gridCount[0], 0u) << c.what;
        EXPECT_EQ(r.lut().lutData, nullptr) << c.what;
    }
}

TEST_F(ColourTableRead, LargestSupportedGrids) {
    for (auto [n, channels] : {std::pair{48, 4}, std::pair{16, 12}, std::pair{2, 1}}) {
        ColourTableWriter w;
        w.gridCount[0] = w.gridCount[1] = w.gridCount[2] = static_cast<uint8_t>(n);
        w.channels = static_cast<uint8_t>(channels);
        EXPECT_EQ(FreshRead(settings, w).rc, RC_OK) << n << "x" << channels;
    }
}

TEST_F(ColourTableRead, NeutralModeDerivation) {
    struct Case { uint32_t pixelFormat, neutralSetting, processMode, want; };
    const Case cases[] = {
        {0, 49, 2, 0}, {1, 50, 0, 0}, {1, 49, 0, 1}, {7, 51, 2, 1}, {0, 50, 1, 1}, {1, 50, 1, 1},
    };
    for (const Case& c : cases) {
        test::CmSettings s;
        s.s2.pixelFormat = c.pixelFormat;
        s.s1.neutralSetting = c.neutralSetting;
        s.s1.processMode = c.processMode;
        const FreshRead r(s, ColourTableWriter{});
        ASSERT_EQ(r.rc, RC_OK);
        EXPECT_EQ(r.lut().neutralMode, c.want) << c.pixelFormat << " " << c.neutralSetting << " " << c.processMode;
    }
}

TEST_F(ColourTableRead, NeutralAxisFromTheNeutralList) {
    for (uint32_t selectA : {2u, 1u}) {
        for (uint8_t blackMode : {0, 1, 2, 3}) {
            test::CmSettings s;
            s.s2.selectA = selectA;
            ColourTableWriter w;
            w.blackMode = blackMode;
            w.neutralList = {31, 32, 33};
            const FreshRead r(s, w);
            ASSERT_EQ(r.rc, RC_OK);
            for (uint32_t i = 0; i < 3; ++i) {
                const uint8_t* got = r.lut().lutData + i * 13 * 4;  // node (i, i, i)
                if (blackMode == 0) {
                    EXPECT_EQ(std::memcmp(got, r.written(w.nodeDataOffset() + i * 13 * 4), 4), 0);
                    continue;
                }
                for (int c = 0; c < 3; ++c) EXPECT_EQ(got[c], selectA == 2 ? 31 + i : 0) << selectA << " " << int(blackMode);
                EXPECT_EQ(got[3], 31 + i);
            }
            EXPECT_EQ(std::memcmp(r.lut().lutData + 4, r.written(w.nodeDataOffset() + 4), 4), 0);  // (0,0,1) untouched
        }
    }
}

TEST_F(ColourTableRead, BlackScalingOfTheNeutralAxis) {
    for (uint32_t scaling : {0u, 1u}) {
        test::CmSettings s;
        s.s2.blackScaling = scaling;
        ColourTableWriter w;
        w.blackMode = 3;
        w.inkParam[0] = 150;
        w.neutralList = {0, 128, 255};
        const FreshRead r(s, w);
        ASSERT_EQ(r.rc, RC_OK);
        const uint8_t want[3] = {0, static_cast<uint8_t>(scaling ? 114 : 128), 255};  // inkScale(128, 150, 100) = 114
        for (uint32_t i = 0; i < 3; ++i) EXPECT_EQ(r.lut().lutData[i * 13 * 4 + 3], want[i]);
    }
}

TEST_F(ColourTableRead, NeutralAxisFromTheNeutralNodeList) {
    settings.s1.processLevel = 2;
    settings.s1.processMode = 0;
    settings.s1.neutralSetting = 40;  // neutralMode 1
    ColourTableWriter w;
    w.tableMode = 50;
    ASSERT_EQ(read(w), RC_OK);
    for (uint32_t i = 0; i < 3; ++i)
        for (uint32_t c = 0; c < 4; ++c) EXPECT_EQ(lutNode(i, i, i)[c], 10 * i + c);

    w.tableMode = 49;  // any other table mode keeps the nodes
    CmDelete(ctx);
    ctx = nullptr;
    ASSERT_EQ(read(w), RC_OK);
    EXPECT_EQ(std::memcmp(lutNode(1, 1, 1), node(w, 1, 1, 1), 4), 0);
}

}  // namespace
}  // namespace inkdot
