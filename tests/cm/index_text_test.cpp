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

// Parses from an exactly sized, NUL-terminated heap copy, so that a read past
// the terminator shows under the address sanitizer.
struct Parsed {
    std::unique_ptr<IndexText> index = std::make_unique<IndexText>();
    int32_t count;
    explicit Parsed(const std::string& text) {
        std::vector<uint8_t> bytes(text.begin(), text.end());
        bytes.push_back(0);
        std::memset(index.get(), 0, sizeof(IndexText));
        count = parseIndexText(bytes.data(), index.get());
    }
    const IndexRecord& operator[](int i) const { return index->records[i]; }
};

TEST(IndexText, RecordFieldsAndNamePositions) {
    IndexTextWriter w;
    w.list1 = {"A", "B", "C", "B"};  // B twice: the last entry counts
    w.list2Base = 10;
    w.list2 = {"X", "Y"};
    w.list3 = {"M0", "M1", "M2"};
    w.add(120, 7, "B", "Y", 5, -6, "M2", 8, 9);
    w.add(130, 0, "none", "none", 0, 0, "none", 0, 0);  // table id 0; names in no list
    const Parsed p(w.text());
    ASSERT_EQ(p.count, 2);
    const IndexRecord& r = p[0];
    EXPECT_EQ(std::vector<int32_t>({r.blockNo, r.tableId, r.key5, r.key6, r.key8, r.key9, r.pos1, r.num2, r.pos3}),
              std::vector<int32_t>({120, 7, 5, -6, 8, 9, 3, 11, 2}));
    EXPECT_STREQ(r.name1, "B");
    EXPECT_EQ(std::vector<int32_t>({p[1].tableId, p[1].pos1, p[1].num2, p[1].pos3}), std::vector<int32_t>({-1, 0, 0, 0}))
        << "not the base 10";
    // List 2 "Plain Photo" has no base number (its first token begins with 'P'): it counts from 0.
    IndexTextWriter plain;
    plain.add(1, 1, "L0", "Plain", 0, 0, "M0", 0, 0);
    plain.add(2, 1, "L0", "Photo", 0, 0, "M0", 0, 0);
    const Parsed q(plain.text());
    ASSERT_EQ(q.count, 2);
    EXPECT_EQ(q[0].num2, 0);
    EXPECT_EQ(q[1].num2, 1);
    // Blanks before tokens, blank lines and extra tokens change nothing.
    IndexTextWriter loose = plain;
    loose.lead = " \t ";
    loose.blankLines = "\r\n\n\r\n";
    loose.records[0].trailing = "extra tokens 1 2 3";
    const Parsed l(loose.text());
    ASSERT_EQ(l.count, 2);
    EXPECT_EQ(std::memcmp(q.index->records, l.index->records, 2 * sizeof(IndexRecord)), 0);
    // A '-' anywhere makes a number negative; numbers wrap at 32 bits.
    const std::pair<const char*, int32_t> numbers[] = {{"", 0}, {"980", 980}, {"-12", -12}, {"1-2", -12}, {"4294967295", -1}};
    for (const auto& [token, value] : numbers) EXPECT_EQ(indexTokenNumber(token), value) << token;
}

TEST(IndexText, CapacitiesAtTheirLimitsParse) {
    IndexTextWriter w;
    w.list1.clear();
    w.list2.clear();
    w.list3.clear();
    for (int i = 0; i < 12; ++i) w.list1.push_back("N" + std::to_string(i) + "xxxxxxxx");  // 11 chars max
    for (int i = 0; i < 32; ++i) w.list2.push_back("P" + std::to_string(i));
    for (int i = 0; i < 12; ++i) w.list3.push_back("M" + std::to_string(i));
    for (int i = 0; i < 100; ++i) w.add(i + 1, 1, "N11xxxxxxxx", "P31", 0, 0, "M11", 0, 0);
    w.records[0].key5 = std::string(252, '0') + "123";  // a 255-character token
    const Parsed p(w.text());
    ASSERT_EQ(p.count, 100);
    EXPECT_EQ(p[0].key5, 123);
    EXPECT_EQ(std::vector<int32_t>({p[99].pos1, p[99].num2, p[99].pos3}), std::vector<int32_t>({11, 31, 11}));
}

TEST(IndexText, BrokenTextsGiveNoRecords) {
    ASSERT_EQ(Parsed(test::matchingIndex(100, 1).text()).count, 1);
    const auto grow = [](std::vector<std::string>& list, size_t n) {
        while (list.size() < n) list.push_back("X" + std::to_string(list.size()));
    };
    const auto insertBefore = [](IndexTextWriter& w, const char* at, const std::string& what) {
        std::string t = w.text();
        return t.insert(t.find(at), what);
    };
    const struct { const char* what; std::function<std::string(IndexTextWriter&)> change; } cases[] = {
        {"version 2", [](IndexTextWriter& w) { w.version = '2'; return w.text(); }},
        {"version 4", [](IndexTextWriter& w) { w.version = '4'; return w.text(); }},
        {"no version", [](IndexTextWriter& w) { w.version = '\0'; return w.text(); }},
        {"SUB before the marker", [&](IndexTextWriter& w) { return insertBefore(w, "//", "\x1a"); }},
        {"heading line of 300+ characters", [&](IndexTextWriter& w) { return insertBefore(w, "; block", std::string(300, 'h')); }},
        {"token of 256 characters", [](IndexTextWriter& w) { w.records[0].key5 = std::string(256, '1'); return w.text(); }},
        {"line of 300 characters", [](IndexTextWriter& w) { w.records[0].trailing = std::string(300, 'x'); return w.text(); }},
        {"record name of 12 characters", [](IndexTextWriter& w) { w.records[0].name1 = "L1xxxxxxxxxx"; return w.text(); }},
        {"list name of 12 characters", [](IndexTextWriter& w) { w.list3.push_back("M123456789ab"); return w.text(); }},
        {"13 names in list 1", [&](IndexTextWriter& w) { grow(w.list1, 13); return w.text(); }},
        {"33 names in list 2", [&](IndexTextWriter& w) { grow(w.list2, 33); return w.text(); }},
        {"13 names in list 3", [&](IndexTextWriter& w) { grow(w.list3, 13); return w.text(); }},
        {"101 records", [](IndexTextWriter& w) { for (int i = 0; i < 100; ++i) w.add(i + 2, 1, "L1", "Photo", 5, 6, "M3", 8, 9); return w.text(); }},
        {"no end of the record list", [](IndexTextWriter& w) { w.endMarker = false; return w.text(); }},
        {"the rest behind a NUL", [](IndexTextWriter& w) {  // the NUL ends the text, also inside a line
             w.endMarker = false;
             const std::string t = w.text();
             return t.substr(0, t.find("L0")) + '\0' + t.substr(t.find("L0")) + "//\r\n";
         }},
        {"no marker", [](IndexTextWriter&) { return std::string("no marker at all"); }},
        {"empty", [](IndexTextWriter&) { return std::string(); }},
        {"marker alone", [](IndexTextWriter&) { return std::string("//"); }},
        {"no record list", [](IndexTextWriter&) { return std::string("//3"); }},
        {"'/ ' at both markers", [](IndexTextWriter& w) {
             w.preamble = "";
             std::string t = w.text();
             t[1] = ' ';
             t[t.find("//") + 1] = ' ';
             return t;
         }},
    };
    for (const auto& c : cases) {
        IndexTextWriter w = test::matchingIndex(100, 1);
        EXPECT_EQ(Parsed(c.change(w)).count, 0) << c.what;
    }
}

// Search and phase 1 -----------------------------------------------------------

TEST(IndexSearch, AllSevenKeysMustMatchAndTheLastMatchWins) {
    test::MemoryWatch watch;
    CmContext* ctx = test::newInstance(test::CmSettings{});
    ASSERT_EQ(ctx->selectC, 3);
    const auto search = [&](const IndexTextWriter& w) {
        const std::string text = w.text();
        return searchIndex(ctx, reinterpret_cast<const uint8_t*>(text.c_str()));
    };
    EXPECT_EQ(search(test::matchingIndex(321, 45)), 321);
    EXPECT_EQ(ctx->matchTableId, 45u);
    using E = test::IndexEntry;  // each key changed in turn, and a negative block
    const std::pair<std::string E::*, const char*> misses[] = {
        {&E::name1, "L2"}, {&E::name3, "M2"}, {&E::name2, "Plain"}, {&E::key8, "7"},
        {&E::key5, "4"},   {&E::key6, "0"},   {&E::key9, "-9"},     {&E::blockNo, "-5"}};
    for (const auto& [field, value] : misses) {
        IndexTextWriter w = test::matchingIndex(321, 45);
        w.records[0].*field = value;
        EXPECT_EQ(search(w), 0) << value;
    }
    IndexTextWriter w = test::matchingIndex(100, 5);
    w.add(200, 0, "L1", "Photo", 5, 6, "M3", 8, 9);
    w.add(300, 9, "L0", "Photo", 5, 6, "M3", 8, 9);  // no match
    w.add(-7, 6, "L1", "Photo", 5, 6, "M3", 8, 9);   // a negative block is no match
    EXPECT_EQ(search(w), 200);
    EXPECT_EQ(ctx->matchBlockNo, 200u);
    EXPECT_EQ(ctx->matchTableId, 0xFFFFFFFFu) << "table id 0 is kept as -1";
    // Names in no list search as position 0.
    ctx->settings2.selectA = 0;
    ctx->selectC = 0;
    ctx->settings1.selectB = 0;
    w = test::matchingIndex(77, 1);
    w.records[0].name1 = w.records[0].name2 = w.records[0].name3 = "Unknown";
    EXPECT_EQ(search(w), 77);
    CmDelete(ctx);

    IndexTextWriter wrongVersion = test::matchingIndex(100, 1);
    wrongVersion.version = '4';
    const struct { const char* what; IndexTextWriter w; uint32_t rc, next; } phases[] = {
        {"match", test::matchingIndex(100, 1), RC_OK, 100},
        {"wrong version", wrongVersion, RC_DATA, 0},
        {"block 0", test::matchingIndex(0, 1), RC_DATA, 0},
    };
    for (const auto& c : phases) {
        ctx = test::newInstance(test::CmSettings{});
        const std::string text = c.w.text();
        uint32_t next = 12345;
        EXPECT_EQ(CmSetResource(ctx, reinterpret_cast<const uint8_t*>(text.c_str()), &next), c.rc) << c.what;
        EXPECT_EQ(next, c.next) << c.what;
        EXPECT_EQ(ctx->phase, 2);
        CmDelete(ctx);
    }
}

}  // namespace
}  // namespace inkdot
