#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "cm/cm_context.h"
#include "cm/colour_table.h"
#include "support/cm_fixture.h"
#include "support/colour_table_writer.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::ColourTableWriter;

// A table read into a fresh instance of its own, deleted with the result.
struct Read {
    test::MemoryWatch watch;
    CmContext* ctx;
    ColourTableWriter w;
    std::vector<uint8_t> bytes;
    uint32_t rc;
    Read(const ColourTableWriter& writer, const test::CmSettings& s = {}, uint32_t tableId = 0)
        : ctx(test::newInstance(s)), w(writer), bytes(w.build()) {
        ctx->matchTableId = tableId;
        rc = readColourTable(ctx, bytes.data());
    }
    ~Read() { CmDelete(ctx); }
    const CmLut& lut() const { return *ctx->lut; }
    // Byte c of node i (lutData order) as written and as read.
    uint8_t written(size_t i, size_t c) const { return bytes[w.nodeDataOffset() + i * w.channels + c]; }
    uint8_t node(size_t i, size_t c) const { return lut().lutData[i * lut().channels + c]; }
};

ColourTableWriter grid(int n, int channels = 4) {
    ColourTableWriter w;
    w.gridCount[0] = w.gridCount[1] = w.gridCount[2] = static_cast<uint8_t>(n);
    w.channels = static_cast<uint8_t>(channels);
    return w;
}

TEST(ColourTableRead, HeaderFieldsAndNodes) {
    ColourTableWriter w = grid(4);
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
    w.extraData = {9, 8, 7, 6, 5};
    const Read r(w, {}, 317);
    ASSERT_EQ(r.rc, RC_OK);
    EXPECT_EQ(r.lut().modelId, 317u);
    EXPECT_EQ(std::vector<int>({r.ctx->tableMode, r.ctx->adjustDominant[0], r.ctx->adjustHue[1], r.ctx->saturationOffset,
                                r.ctx->adjustMinimum[2], r.lut().auxParam[0], r.lut().auxParam[3]}),
              std::vector<int>({50, 200, -5, -20, -128, 17, -300}));
    EXPECT_EQ(r.lut().blackMode, 1u);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(r.lut().inkParam[i], ink[i]);
    EXPECT_EQ(r.lut().channels, 4u);
    for (int a = 0; a < 3; ++a) {
        EXPECT_EQ(r.lut().gridCount[a], 4u);
        EXPECT_EQ(std::memcmp(r.lut().grid[a], w.levels[a].data(), 4), 0);
        EXPECT_EQ(r.lut().grid[a][4], 0);
    }
    ASSERT_NE(r.lut().extraData, nullptr);
    EXPECT_EQ(r.lut().extraDataBlock, r.lut().extraData);
    EXPECT_EQ(std::memcmp(r.lut().extraData, w.extraData.data(), 5), 0);
    // neutralMode 0 (neutralSetting 50, pixelFormat 1, processMode 2); black
    // mode 1 replaces the neutral nodes (below), the rest is copied.
    EXPECT_EQ(r.lut().neutralMode, 0u);
    for (size_t i : {size_t{27}, size_t{48}})  // nodes (1, 2, 3) and (3, 0, 0)
        for (int c = 0; c < 4; ++c) EXPECT_EQ(r.node(i, c), r.written(i, c));
}

TEST(ColourTableRead, GridLimits) {
    struct Case { const char* what; ColourTableWriter w; uint32_t rc; };
    std::vector<Case> cases = {
        {"48 points, 4 channels", grid(48), RC_OK}, {"16 points, 12 channels", grid(16, 12), RC_OK},
        {"2 points, 1 channel", grid(2, 1), RC_OK}, {"one point", grid(1), RC_DATA},
        {"49 points", grid(49, 3), RC_DATA},        {"no channels", grid(3, 0), RC_DATA},
        {"13 channels", grid(3, 13), RC_DATA},      {"row of 204 bytes", grid(17, 12), RC_DATA},
        {"unequal counts", grid(3), RC_DATA},       {"not starting at 0", grid(3), RC_DATA},
        {"not ending at 255", grid(3), RC_DATA},    {"not rising strictly", grid(4), RC_DATA},
    };
    cases[8].w.gridCount[2] = 4;
    cases[9].w.levels[1] = {1, 128, 255};
    cases[10].w.levels[2] = {0, 128, 254};
    cases[11].w.levels[0] = {0, 128, 128, 255};
    for (Case& c : cases) {
        c.w.extraData = {1, 2, 3};
        Read r(c.w);
        EXPECT_EQ(r.rc, c.rc) << c.what;
        if (c.rc == RC_OK) continue;
        EXPECT_EQ(r.watch.seam().allocs, 2u) << c.what << ": refused before any allocation of its own";
        EXPECT_EQ(r.lut().gridCount[0], 0u) << c.what;
        EXPECT_EQ(r.lut().lutData, nullptr) << c.what;
    }
}

TEST(ColourTableRead, NeutralModeDerivation) {
    const struct { uint32_t pixelFormat, neutralSetting, processMode, want; } cases[] = {
        {0, 49, 2, 0}, {1, 50, 0, 0}, {1, 49, 0, 1}, {7, 51, 2, 1}, {0, 50, 1, 1}, {1, 50, 1, 1},
    };
    for (const auto& c : cases) {
        test::CmSettings s;
        s.s2.pixelFormat = c.pixelFormat;
        s.s1.neutralSetting = c.neutralSetting;
        s.s1.processMode = c.processMode;
        const Read r(grid(3), s);
        ASSERT_EQ(r.rc, RC_OK);
        EXPECT_EQ(r.lut().neutralMode, c.want) << c.pixelFormat << " " << c.neutralSetting << " " << c.processMode;
    }
}

TEST(ColourTableRead, NeutralAxisFromTheNeutralLists) {
    // Black modes 1 to 3 put the neutral list value v into node (i, i, i):
    // black v, and c, m, y v too when selectA is 2, else 0. Black mode 3 with
    // blackScaling scales black: inkScale(128, 150, 100) = 114.
    for (uint32_t selectA : {2u, 1u}) {
        for (uint8_t blackMode : {0, 1, 2, 3}) {
            for (uint32_t scaling : {0u, 1u}) {
                test::CmSettings s;
                s.s2.selectA = selectA;
                s.s2.blackScaling = scaling;
                ColourTableWriter w = grid(3);
                w.blackMode = blackMode;
                w.inkParam[0] = 150;
                w.neutralList = {0, 128, 255};
                const Read r(w, s);
                ASSERT_EQ(r.rc, RC_OK);
                for (int i = 0; i < 3; ++i) {
                    const int v = w.neutralList[i], black = scaling && blackMode == 3 && i == 1 ? 114 : v;
                    for (int c = 0; c < 4; ++c) {
                        const int want = blackMode == 0 ? r.written(13 * i, c) : c == 3 ? black : selectA == 2 ? v : 0;
                        EXPECT_EQ(r.node(13 * i, c), want) << selectA << " " << int(blackMode) << " " << scaling;
                    }
                }
                for (int c = 0; c < 4; ++c) EXPECT_EQ(r.node(1, c), r.written(1, c)) << "(0, 0, 1) untouched";
            }
        }
    }
    // neutralMode 1 and table mode 50: the neutral node list (10 i + c) instead.
    for (uint8_t tableMode : {50, 49}) {
        test::CmSettings s;
        s.s1.processLevel = 2;
        s.s1.processMode = 0;
        s.s1.neutralSetting = 40;
        ColourTableWriter w = grid(3);
        w.tableMode = tableMode;
        const Read r(w, s);
        ASSERT_EQ(r.rc, RC_OK);
        for (int i = 0; i < 3; ++i)
            for (int c = 0; c < 4; ++c) EXPECT_EQ(r.node(13 * i, c), tableMode == 50 ? 10 * i + c : r.written(13 * i, c));
    }
}

}  // namespace
}  // namespace inkdot
