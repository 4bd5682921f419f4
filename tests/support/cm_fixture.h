// Building colour-management instances for tests: settings that match the
// default index record, a chunk directory, a channel-weight record.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "cm/cm_context.h"
#include "inkdot/inkdot.h"
#include "support/colour_table_writer.h"
#include "support/index_text_writer.h"

namespace inkdot::test {

// A chunk directory of up to eight entries, laid out as ChunkDirectory.
struct ChunkDir {
    int32_t count = 0;
    ChunkEntry entries[8] = {};
    void add(uint32_t id, const void* value) { entries[count++] = ChunkEntry{id, value}; }
    const ChunkDirectory* get() const { return reinterpret_cast<const ChunkDirectory*>(this); }
};

// Settings whose keys match the record the default index names:
// list1 position 1, list2 number 1, list3 position 3, keys 5/6/8/9 = 5, 6, 8, 9.
// processMode 2 takes selectC from processLevel.
struct CmSettings {
    CmSettings1 s1{.selectF = 8, .selectB = 1, .processMode = 2, .processLevel = 3, .neutralSetting = 50};
    CmSettings2 s2{.selectA = 1, .pixelFormat = 1, .selectD = 5, .selectE = 6, .selectG = 9};
};

// An index with one record matching CmSettings, naming `block` / `table`.
inline IndexTextWriter matchingIndex(int32_t block, int32_t table) {
    IndexTextWriter w;
    w.add(block, table, "L1", "Photo", 5, 6, "M3", 8, 9);
    return w;
}

// A channel-weight record: "CW:", routing key, weights, 0xFE 0xFF.
inline std::vector<uint8_t> channelWeightRecord(uint8_t key, const std::vector<uint8_t>& weights) {
    std::vector<uint8_t> out{'C', 'W', ':', key};
    out.insert(out.end(), weights.begin(), weights.end());
    out.push_back(0xFE);
    out.push_back(0xFF);
    return out;
}

inline CmContext* newInstance(const CmSettings& s) {
    uint32_t first = 99;
    CmContext* ctx = nullptr;
    EXPECT_EQ(CmNew(&s.s1, &s.s2, 0, &first, &ctx), RC_OK);
    return ctx;
}

}  // namespace inkdot::test
