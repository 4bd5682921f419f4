#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cm/cm_context.h"
#include "cm/index_search.h"
#include "cm/index_text.h"
#include "support/cm_fixture.h"
#include "support/index_text_writer.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::IndexTextWriter;

struct Parsed {
    std::unique_ptr<IndexText> index = std::make_unique<IndexText>();
    int32_t count = 0;
};

// Parses from an exactly sized, NUL-terminated heap copy, so that a read past
// the terminator shows under the address sanitizer.
Parsed parse(const std::string& text) {
    std::vector<uint8_t> bytes(text.begin(), text.end());
    bytes.push_back(0);
    Parsed p;
    std::memset(p.index.get(), 0, sizeof(IndexText));
    p.count = parseIndexText(bytes.data(), p.index.get());
    return p;
}

TEST(IndexText, RecordFieldsAndNamePositions) {
    IndexTextWriter w;
    w.list1 = {"A", "B", "C", "B"};  // B twice: the last entry counts
    w.list2Base = 10;
    w.list2 = {"X", "Y"};
    w.list3 = {"M0", "M1", "M2"};
    w.add(120, 7, "B", "Y", 5, -6, "M2", 8, 9);
    w.add(130, 0, "none", "none", 0, 0, "none", 0, 0);  // table id 0; names in no list
    const Parsed p = parse(w.text());
    ASSERT_EQ(p.count, 2);
    const IndexRecord& r = p.index->records[0];
    EXPECT_EQ(r.blockNo, 120);
    EXPECT_EQ(r.tableId, 7);
    EXPECT_STREQ(r.name1, "B");
    EXPECT_EQ(r.key5, 5);
    EXPECT_EQ(r.key6, -6);
    EXPECT_EQ(r.key8, 8);
    EXPECT_EQ(r.key9, 9);
    EXPECT_EQ(r.pos1, 3);
    EXPECT_EQ(r.num2, 11);
    EXPECT_EQ(r.pos3, 2);
    const IndexRecord& s = p.index->records[1];
    EXPECT_EQ(s.tableId, -1);
    EXPECT_EQ(s.pos1, 0);
    EXPECT_EQ(s.num2, 0);  // not the base 10
    EXPECT_EQ(s.pos3, 0);
}

TEST(IndexText, ListTwoWithoutABaseNumberCountsFromZero) {
    IndexTextWriter w;  // list 2 is "Plain Photo": its first token begins with 'P', no base number
    w.add(1, 1, "L0", "Plain", 0, 0, "M0", 0, 0);
    w.add(2, 1, "L0", "Photo", 0, 0, "M0", 0, 0);
    const Parsed p = parse(w.text());
    ASSERT_EQ(p.count, 2);
    EXPECT_EQ(p.index->records[0].num2, 0);
    EXPECT_EQ(p.index->records[1].num2, 1);
}

TEST(IndexText, BlanksBlankLinesAndExtraTokensChangeNothing) {
    IndexTextWriter plain;
    plain.add(100, 3, "L2", "Photo", 1, 2, "M4", 3, 4);
    plain.add(200, 4, "L3", "Plain", 5, 6, "M1", 7, 8);
    IndexTextWriter loose = plain;
    loose.lead = " \t ";
    loose.blankLines = "\r\n\n\r\n";
    loose.records[0].trailing = "extra tokens 1 2 3";
    const Parsed a = parse(plain.text());
    const Parsed b = parse(loose.text());
    ASSERT_EQ(a.count, 2);
    ASSERT_EQ(b.count, 2);
    EXPECT_EQ(std::memcmp(a.index->records, b.index->records, 2 * sizeof(IndexRecord)), 0);
}

TEST(IndexText, VersionAndMarker) {
    for (char version : {'2', '4', '\0'}) {
        IndexTextWriter w = test::matchingIndex(100, 1);
        w.version = version;
        std::string text = w.text();
        EXPECT_EQ(parse(text).count, 0) << "version " << version;
    }
    IndexTextWriter w = test::matchingIndex(100, 1);
    w.preamble = "";
    std::string text = w.text();
    text.replace(0, 2, "/ ");  // no "//" before the records
    const size_t endMarker = text.find("//");
    ASSERT_NE(endMarker, std::string::npos);
    text[endMarker + 1] = ' ';
    EXPECT_EQ(parse(text).count, 0);
    EXPECT_EQ(parse("no marker at all").count, 0);
    EXPECT_EQ(parse("").count, 0);
    EXPECT_EQ(parse("//").count, 0);
    EXPECT_EQ(parse("//3").count, 0);  // no record list: the record loop fills up and breaks
    // SUB ends the text as NUL does.
    std::string withSub = test::matchingIndex(100, 1).text();
    withSub.insert(withSub.find("//"), "\x1a");
    EXPECT_EQ(parse(withSub).count, 0);
}

TEST(IndexText, TokenNumbers) {
    EXPECT_EQ(indexTokenNumber(""), 0);
    EXPECT_EQ(indexTokenNumber("980"), 980);
    EXPECT_EQ(indexTokenNumber("-12"), -12);
    EXPECT_EQ(indexTokenNumber("1-2"), -12);  // a '-' anywhere makes it negative
    EXPECT_EQ(indexTokenNumber("4294967295"), -1);  // wraps at 32 bits
}

TEST(IndexText, CapacitiesAtTheirLimitsParse) {
    IndexTextWriter w;
    w.list1.clear();
    for (int i = 0; i < 12; ++i) w.list1.push_back("N" + std::to_string(i) + "xxxxxxxx");  // 11 chars max
    w.list2.clear();
    for (int i = 0; i < 32; ++i) w.list2.push_back("P" + std::to_string(i));
    w.list3.clear();
    for (int i = 0; i < 12; ++i) w.list3.push_back("M" + std::to_string(i));
    for (int i = 0; i < 100; ++i) w.add(i + 1, 1, "N11xxxxxxxx", "P31", 0, 0, "M11", 0, 0);
    w.records[0].key5 = std::string(252, '0') + "123";  // a 255-character token
    const Parsed p = parse(w.text());
    ASSERT_EQ(p.count, 100);
    EXPECT_EQ(p.index->records[0].key5, 123);
    EXPECT_EQ(p.index->records[99].pos1, 11);
    EXPECT_EQ(p.index->records[99].num2, 31);
    EXPECT_EQ(p.index->records[99].pos3, 11);
}

TEST(IndexText, CapacityBreachesGiveNoRecords) {
    ASSERT_EQ(parse(test::matchingIndex(100, 1).text()).count, 1);
    const auto grow = [](std::vector<std::string>& list, size_t n) {
        while (list.size() < n) list.push_back("X" + std::to_string(list.size()));
    };
    const struct { const char* what; std::function<void(IndexTextWriter&)> change; } cases[] = {
        {"token of 256 characters", [](IndexTextWriter& w) { w.records[0].key5 = std::string(256, '1'); }},
        {"line of 300 characters", [](IndexTextWriter& w) { w.records[0].trailing = std::string(300, 'x'); }},
        {"record name of 12 characters", [](IndexTextWriter& w) { w.records[0].name1 = "L1xxxxxxxxxx"; }},
        {"list name of 12 characters", [](IndexTextWriter& w) { w.list3.push_back("M123456789ab"); }},
        {"13 names in list 1", [&](IndexTextWriter& w) { grow(w.list1, 13); }},
        {"33 names in list 2", [&](IndexTextWriter& w) { grow(w.list2, 33); }},
        {"13 names in list 3", [&](IndexTextWriter& w) { grow(w.list3, 13); }},
        {"101 records", [](IndexTextWriter& w) { for (int i = 0; i < 100; ++i) w.add(i + 2, 1, "L1", "Photo", 5, 6, "M3", 8, 9); }},
        {"no end of the record list", [](IndexTextWriter& w) { w.endMarker = false; }},
    };
    for (const auto& c : cases) {
        IndexTextWriter w = test::matchingIndex(100, 1);
        c.change(w);
        EXPECT_EQ(parse(w.text()).count, 0) << c.what;
    }
    std::string longHeading = test::matchingIndex(100, 1).text();
    longHeading.insert(longHeading.find("; block"), std::string(300, 'h'));
    EXPECT_EQ(parse(longHeading).count, 0) << "heading line of 300+ characters";
}

// Search ------------------------------------------------------------------

class IndexSearch : public ::testing::Test {
protected:
    test::MemoryWatch watch;
    test::CmSettings settings;
    CmContext* ctx = nullptr;
    void SetUp() override { ctx = test::newInstance(settings); }
    void TearDown() override { CmDelete(ctx); }
    int32_t search(const IndexTextWriter& w) {
        std::string text = w.text();
        return searchIndex(ctx, reinterpret_cast<const uint8_t*>(text.c_str()));
    }
};

TEST_F(IndexSearch, AllSevenKeysMustMatch) {
    ASSERT_EQ(ctx->selectC, 3);
    EXPECT_EQ(search(test::matchingIndex(321, 45)), 321);
    EXPECT_EQ(ctx->matchBlockNo, 321u);
    EXPECT_EQ(ctx->matchTableId, 45u);

    const IndexTextWriter good = test::matchingIndex(321, 45);
    std::vector<IndexTextWriter> misses(7, good);
    misses[0].records[0].name1 = "L2";      // selectA
    misses[1].records[0].name3 = "M2";      // selectC
    misses[2].records[0].name2 = "Plain";   // selectB
    misses[3].records[0].key8 = "7";        // selectF
    misses[4].records[0].key5 = "4";        // selectD
    misses[5].records[0].key6 = "0";        // selectE
    misses[6].records[0].key9 = "-9";       // selectG
    for (size_t i = 0; i < misses.size(); ++i) EXPECT_EQ(search(misses[i]), 0) << "key " << i;
}

TEST_F(IndexSearch, LaterMatchWinsAndTableIdZeroIsMinusOne) {
    IndexTextWriter w = test::matchingIndex(100, 5);
    w.add(200, 0, "L1", "Photo", 5, 6, "M3", 8, 9);
    w.add(300, 9, "L0", "Photo", 5, 6, "M3", 8, 9);  // no match
    EXPECT_EQ(search(w), 200);
    EXPECT_EQ(ctx->matchBlockNo, 200u);
    EXPECT_EQ(ctx->matchTableId, 0xFFFFFFFFu);
}

TEST_F(IndexSearch, NegativeBlockCountsAsNoMatch) {
    IndexTextWriter w = test::matchingIndex(-5, 5);
    EXPECT_EQ(search(w), 0);
    w = test::matchingIndex(100, 5);
    w.add(-7, 6, "L1", "Photo", 5, 6, "M3", 8, 9);
    EXPECT_EQ(search(w), 100);
    EXPECT_EQ(ctx->matchTableId, 5u);
}

TEST_F(IndexSearch, NamesNotInListsSearchAsPositionZero) {
    ctx->settings2.selectA = 0;
    ctx->selectC = 0;
    ctx->settings1.selectB = 0;
    IndexTextWriter w = test::matchingIndex(77, 1);
    w.records[0].name1 = "Unknown";
    w.records[0].name2 = "Unknown";
    w.records[0].name3 = "Unknown";
    EXPECT_EQ(search(w), 77);
}

// Phase 1 of the protocol ---------------------------------------------------

TEST(IndexPhase, ResultCodesOfThePhase) {
    test::MemoryWatch watch;
    test::CmSettings settings;
    struct Case { const char* what; IndexTextWriter w; uint32_t rc; uint32_t next; };
    IndexTextWriter wrongVersion = test::matchingIndex(100, 1);
    wrongVersion.version = '4';
    const Case cases[] = {
        {"match", test::matchingIndex(100, 1), RC_OK, 100},
        {"wrong version", wrongVersion, RC_DATA, 0},
        {"block 0", test::matchingIndex(0, 1), RC_DATA, 0},
    };
    for (const Case& c : cases) {
        CmContext* ctx = test::newInstance(settings);
        std::string text = c.w.text();
        uint32_t next = 12345;
        EXPECT_EQ(CmSetResource(ctx, reinterpret_cast<const uint8_t*>(text.c_str()), &next), c.rc) << c.what;
        EXPECT_EQ(next, c.next) << c.what;
        EXPECT_EQ(ctx->phase, 2);
        CmDelete(ctx);
    }
}

}  // namespace
}  // namespace inkdot
