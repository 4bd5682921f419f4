// The blocks colour management reads: the index text and its search, the
// colour table; and the keys CmNew derives from the settings.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "cm/cm_context.h"
#include "cm/colour_table.h"
#include "cm/index_search.h"
#include "cm/index_text.h"
#include "support/cm_fixture.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::ColourTableWriter;
using test::IndexTextWriter;

// Parses from an exactly sized, NUL-terminated heap copy, so that a read past
// the terminator shows under the address sanitizer.
struct Parsed {
    std::unique_ptr<IndexText> index = std::make_unique<IndexText>();  // zero-filled
    int32_t count;
    explicit Parsed(const std::string& text) {
        std::vector<uint8_t> bytes(text.begin(), text.end());
        bytes.push_back(0);
        count = parseIndexText(bytes.data(), index.get());
    }
    std::vector<int32_t> keys(int i) const {
        const IndexRecord& r = index->records[i];
        return {r.blockNo, r.tableId, r.key5, r.key6, r.key8, r.key9, r.pos1, r.num2, r.pos3};
    }
};

// Names count by their last place in a list; list 2 counts from its base
// number when it has one (its first token does not begin with 'P'). Blanks
// before tokens, blank lines and extra tokens change nothing.
TEST(IndexText, RecordFieldsAndNamePositions) {
    IndexTextWriter w;
    w.list1 = {"A", "B0123456789", "C", "B0123456789"};  // names of 11 characters, the longest
    w.list2Base = 10;
    w.list2 = {"X", "Y"};
    w.add(120, 7, "B0123456789", "Y", 5, -6, "M2", 8, 9);
    w.add(130, 0, "none", "none", 0, 0, "none", 0, 0);  // table id 0; names in no list
    const Parsed p(w.text());
    ASSERT_EQ(p.count, 2);
    EXPECT_EQ(p.keys(0), (std::vector<int32_t>{120, 7, 5, -6, 8, 9, 3, 11, 2}));
    EXPECT_EQ(p.keys(1), (std::vector<int32_t>{130, -1, 0, 0, 0, 0, 0, 0, 0})) << "not the base 10";
    EXPECT_STREQ(p.index->records[0].name1, "B0123456789");
    IndexTextWriter loose = test::matchingIndex(1, 1);
    loose.add(2, 1, "L0", "Plain", 0, 0, "M0", 0, 0);
    const Parsed plain(loose.text());
    loose.lead = " \t ";
    loose.blankLines = "\r\n\n\r\n";
    loose.records[0].trailing = "extra tokens 1 2 3";
    std::string looseText = loose.text();  // and a version line "3" ended by LF alone: the next line is the heading
    const Parsed l(looseText.replace(looseText.find("//3 index\r\n"), 11, "//3\n"));
    ASSERT_EQ(l.count, 2);
    EXPECT_EQ(l.keys(0), (std::vector<int32_t>{1, 1, 5, 6, 8, 9, 1, 1, 3}));
    EXPECT_EQ(std::memcmp(plain.index->records, l.index->records, 2 * sizeof(IndexRecord)), 0);
    loose.records[0].key5 = std::string(252, '0') + "123";  // a 255-character token, the longest
    EXPECT_EQ(Parsed(loose.text()).keys(0)[2], 123);
    // A '-' anywhere makes a number negative; numbers wrap at 32 bits.
    const std::pair<const char*, int32_t> numbers[] = {{"", 0}, {"980", 980}, {"-12", -12}, {"1-2", -12}, {"4294967295", -1}};
    for (const auto& [token, value] : numbers) EXPECT_EQ(indexTokenNumber(token), value) << token;
}

// Each case edits the text of one matching record ("100 1 L1 Photo 5 6 M3 8
// 9", lists "L0 L1 L2 L3", "Plain Photo", "M0 .. M4").
TEST(IndexText, BrokenTextsGiveNoRecords) {
    const std::string text = test::matchingIndex(100, 1).text();
    const auto edit = [&](const std::string& from, const std::string& to) {
        std::string t = text;
        return t.replace(t.find(from), from.size(), to);
    };
    const auto more = [](int n, std::string out = "") {  // n names more, one past a list's capacity
        while (n-- > 0) out += " N" + std::to_string(n);
        return out + " ";
    };
    std::string records;
    for (int i = 0; i < 100; ++i) records += std::to_string(i + 2) + " 1 L1 Photo 5 6 M3 8 9\r\n";
    const std::pair<const char*, std::string> cases[] = {
        {"version 4", edit("//3", "//4")},
        {"no version", edit("//3", "//")},
        {"'/ ' at both markers", edit("//3", "/ 3").replace(text.find("//\r\n"), 2, "/ ")},
        {"SUB before the marker", edit("//3", "\x1a//3")},
        {"token of 256 characters", edit(" 5 ", " " + std::string(256, '1') + " ")},
        {"line of 300 characters", edit(" 9 ", " 9 " + std::string(300, 'x'))},
        {"record name of 12 characters", edit("L1 P", "L1xxxxxxxxxx P")},
        {"list name of 12 characters", edit("M4 ", "M4 M123456789ab ")},
        {"13 names in list 1", edit("L3 ", "L3" + more(9))},
        {"33 names in list 2", edit("Plain Photo ", "Plain Photo" + more(31))},
        {"13 names in list 3", edit("M4 ", "M4" + more(8))},
        {"101 records", edit("//\r\n", records + "//\r\n")},
        {"no end of the record list", edit("//\r\n", "")},
        {"the rest behind a NUL", edit("//\r\n", std::string(1, '\0') + "//\r\n")},
        {"no marker", "no marker at all"},
        {"no marker, a version first", "3" + edit("//\r\n", "/\r\n").substr(text.find("//3") + 3)},
        {"empty", ""},
        {"no record list", "//3"},
    };
    for (const auto& [what, broken] : cases) EXPECT_EQ(Parsed(broken).count, 0) << what;
}

// All seven keys must match; a negative block never matches; the last match wins, also one naming block 0.
TEST(IndexSearch, AllSevenKeysMustMatchAndTheLastMatchWins) {
    test::MemoryWatch watch;
    CmContext* ctx = test::newInstance(test::CmSettings{});
    const auto search = [ctx](const IndexTextWriter& w) {
        const std::string text = w.text();
        return searchIndex(ctx, reinterpret_cast<const uint8_t*>(text.c_str()));
    };
    using E = test::IndexEntry;
    const struct { std::string E::*field; const char* value; int32_t want; uint32_t tableId; } cases[] = {
        {&E::trailing, "", 321, 45}, {&E::name1, "L2", 0, 0},    {&E::name3, "M2", 0, 0}, {&E::name2, "Plain", 0, 0},
        {&E::key8, "7", 0, 0},       {&E::key5, "4", 0, 0},      {&E::key6, "0", 0, 0},   {&E::key9, "-9", 0, 0},
        {&E::blockNo, "-5", 0, 0},   {&E::tableId, "0", 321, 0xFFFFFFFFu},  // table id 0 is kept as -1
    };
    for (const auto& c : cases) {
        IndexTextWriter w = test::matchingIndex(321, 45);
        w.records[0].*c.field = c.value;
        ctx->matchTableId = 0;
        EXPECT_EQ(search(w), c.want) << c.value;
        EXPECT_EQ(ctx->matchTableId, c.tableId) << c.value;
    }
    IndexTextWriter w = test::matchingIndex(100, 5);
    w.add(200, 9, "L1", "Photo", 5, 6, "M3", 8, 9);
    w.add(300, 9, "L0", "Photo", 5, 6, "M3", 8, 9);  // no match
    w.add(-7, 6, "L1", "Photo", 5, 6, "M3", 8, 9);   // a negative block is no match
    EXPECT_EQ(search(w), 200);
    EXPECT_EQ(ctx->matchBlockNo, 200u);
    w.add(0, 4, "L1", "Photo", 5, 6, "M3", 8, 9);
    EXPECT_EQ(search(w), 0);
    EXPECT_EQ(ctx->matchTableId, 4u) << "block 0 is a match: phase 1 then refuses it";
    CmDelete(ctx);
}

// A table read into a fresh instance of its own, deleted with the result.
struct Read {
    test::MemoryWatch watch;
    CmContext* ctx;
    std::vector<uint8_t> bytes;
    uint32_t rc;
    Read(const ColourTableWriter& w, const test::CmSettings& s = {}) : ctx(test::newInstance(s)), bytes(w.build()) {
        rc = readColourTable(ctx, ByteView(bytes.data(), bytes.size()));  // sized: exactly the table's bytes
    }
    ~Read() { CmDelete(ctx); }
    const CmLut& lut() const { return *ctx->lut; }
    // Byte c of node i (lutData order) as read.
    uint8_t node(size_t i, size_t c) const { return lut().lutData[i * lut().channels + c]; }
};

ColourTableWriter grid(int n, int channels = 4) {
    ColourTableWriter w;
    w.gridCount[0] = w.gridCount[1] = w.gridCount[2] = static_cast<uint8_t>(n);
    w.channels = static_cast<uint8_t>(channels);
    return w;
}

// The keys CmNew derives from the settings, and the neutral mode the table
// read derives: 1 from a pixel format other than 0 with neutralSetting not
// 50, or from processMode 1.
TEST(CmInstance, DerivedKeysAndNeutralMode) {
    const struct {
        uint32_t selectA, processMode, processLevel, pixelFormat, neutralSetting, wantA, wantLevel;
        int16_t wantC;
        uint32_t wantNeutral;
    } cases[] = {
        {0, 0, 7, 1, 49, 3, 2, 4, 1},  // selectA 0 means 3 and forces processLevel 2
        {0, 4, 7, 1, 50, 3, 0, 0, 0},  // processMode 4 clears both
        {1, 1, 0, 1, 50, 1, 0, 4, 1},  // processMode 1 gives 4 whatever processLevel holds
        {1, 1, 9, 0, 50, 1, 9, 4, 1},  // ... also with pixelFormat 0
        {1, 0, 3, 0, 49, 1, 3, 0, 0},  // pixelFormat 0 gives 0
        {1, 2, 3, 7, 51, 1, 3, 3, 1},  // otherwise the low 16 bits of processLevel
        {1, 2, 0x10005, 1, 50, 1, 0x10005, 5, 0},
        {1, 2, 2, 1, 50, 1, 2, 4, 0},
    };
    for (const auto& c : cases) {
        test::CmSettings s;
        s.s2.selectA = c.selectA;
        s.s1.processMode = c.processMode;
        s.s1.processLevel = c.processLevel;
        s.s2.pixelFormat = c.pixelFormat;
        s.s1.neutralSetting = c.neutralSetting;
        const Read r(grid(3), s);
        EXPECT_EQ(r.ctx->settings2.selectA, c.wantA);
        EXPECT_EQ(r.ctx->settings1.processLevel, c.wantLevel);
        EXPECT_EQ(r.ctx->selectC, c.wantC) << c.processMode << " " << c.processLevel;
        EXPECT_EQ(r.lut().neutralMode, c.wantNeutral) << c.pixelFormat << " " << c.neutralSetting << " " << c.processMode;
    }
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
        EXPECT_EQ(r.lut().lutData, nullptr) << c.what;
    }
}

// Black modes 1 to 3 put the neutral list value v into node (i, i, i): black
// v, and c, m, y v too when selectA is 2, else 0; black mode 3 with
// blackScaling scales black: inkScale(128, 150, 100) = 114. neutralMode 1 and
// table mode 50 take the neutral node list (10 i + c) instead.
TEST(ColourTableRead, NeutralAxis) {
    const struct { uint32_t selectA, scaling; bool neutralMode1; uint8_t blackMode, tableMode; int want[3][4]; } cases[] = {
        {2, 0, false, 0, 0, {{255, 255, 255, 127}, {128, 128, 128, 64}, {0, 0, 0, 0}}},  // the table's own nodes
        {2, 0, false, 1, 0, {{0, 0, 0, 0}, {128, 128, 128, 128}, {255, 255, 255, 255}}},
        {1, 0, false, 2, 0, {{0, 0, 0, 0}, {0, 0, 0, 128}, {0, 0, 0, 255}}},
        {2, 1, false, 3, 0, {{0, 0, 0, 0}, {128, 128, 128, 114}, {255, 255, 255, 255}}},
        {1, 0, true, 0, 50, {{0, 1, 2, 3}, {10, 11, 12, 13}, {20, 21, 22, 23}}},
        {1, 0, true, 0, 49, {{255, 255, 255, 127}, {128, 128, 128, 64}, {0, 0, 0, 0}}},
    };
    for (const auto& c : cases) {
        test::CmSettings s;
        s.s2.selectA = c.selectA;
        s.s2.blackScaling = c.scaling;
        if (c.neutralMode1) {  // processLevel 2 without processMode 2, neutralSetting not 50
            s.s1.processLevel = 2;
            s.s1.processMode = 0;
            s.s1.neutralSetting = 40;
        }
        ColourTableWriter w = grid(3);
        w.blackMode = c.blackMode;
        w.tableMode = c.tableMode;
        w.inkParam[0] = 150;
        w.neutralList = {0, 128, 255};
        const Read r(w, s);
        for (int i = 0; i < 3; ++i)
            for (int ch = 0; ch < 4; ++ch)
                EXPECT_EQ(r.node(13 * i, ch), c.want[i][ch]) << int(c.blackMode) << " " << c.selectA << " node " << i;
        const int untouched[4] = {255, 255, 128, 64};  // (0, 0, 1) = input (0, 0, 127) as written: c, m, y, min / 2
        for (int ch = 0; ch < 4; ++ch) EXPECT_EQ(r.node(1, ch), untouched[ch]) << "(0, 0, 1) untouched";
    }
}

}  // namespace
}  // namespace inkdot
