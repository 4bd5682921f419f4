// Inputs the fuzz targets found, each kept as a case with its fix.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "cm/index_text.h"
#include "pipeline.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

// A token of 256 characters or more breaks the index: the parse ends with no
// records. The token reader used to stop without terminating its copy, and
// the list-2 lead (read as a base number) and the numeric record fields were
// then converted from a buffer without an end (fuzz_cm_protocol).
TEST(FuzzRegressions, OverlongTokensBreakTheIndexWithoutReadingPastTheirCopy) {
    const std::string longToken(300, '7');
    struct Case { const char* what; std::function<void(test::IndexTextWriter&)> change; };
    const Case cases[] = {
        {"list-2 name", [&](test::IndexTextWriter& w) { w.list2Base = 0; w.list2[0] = longToken; }},
        {"list-2 base number", [&](test::IndexTextWriter& w) { w.list2.insert(w.list2.begin(), longToken); }},
        {"table id", [&](test::IndexTextWriter& w) { w.records[0].tableId = longToken; }},
        {"key 5", [&](test::IndexTextWriter& w) { w.records[0].key5 = longToken; }},
        {"name 1", [&](test::IndexTextWriter& w) { w.records[0].name1 = longToken; }},
        {"first token of a record", [&](test::IndexTextWriter& w) { w.records[0].blockNo = longToken; }},
        {"ninth token", [&](test::IndexTextWriter& w) { w.records[0].key9 = longToken; }},
        {"name list 3", [&](test::IndexTextWriter& w) { w.list3.push_back(longToken); }},
    };
    for (const Case& c : cases) {
        test::MemoryWatch watch;
        test::IndexTextWriter writer;
        writer.add(100, 317, "L1", "Photo", 5, 6, "M3", 8, 9);
        c.change(writer);
        const std::string text = writer.text();
        auto index = std::make_unique<IndexText>();
        EXPECT_EQ(parseIndexText(ByteView(reinterpret_cast<const uint8_t*>(text.data()), text.size()), index.get()), 0)
            << c.what;

        // Through the protocol, sized and unsized: no usable record.
        for (bool sized : {true, false}) {
            test::Job job(test::jobConfig("long token", 1, 1, 1), sized);
            job.files.putText(0, text);
            EXPECT_FALSE(job.runColour()) << c.what;
            EXPECT_EQ(job.failedRc, RC_DATA) << c.what;
            EXPECT_EQ(job.failedPhase, 1u) << c.what;
        }
    }
}

}  // namespace
}  // namespace inkdot
