// The CmLut is read by position (the halftone instance copies it word for word
// and a driver may index it), so its field offsets are checked at run time too:
// a failure names the field instead of stopping the build.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

#include "inkdot/inkdot.h"

namespace {

constexpr size_t kWord = 4;
constexpr bool kPointersAreWords = sizeof(void*) == kWord;

struct FieldAt {
    const char* name;
    size_t offset;
    size_t word;
};

// Fields ahead of the first pointer: the same word on every build.
const FieldAt kLeadingFields[] = {
    {"reserved0", offsetof(CmLut, reserved0), 0},   {"blackMode", offsetof(CmLut, blackMode), 1},
    {"channels", offsetof(CmLut, channels), 2},     {"neutralMode", offsetof(CmLut, neutralMode), 3},
    {"auxParam", offsetof(CmLut, auxParam), 4},     {"inkParam", offsetof(CmLut, inkParam), 8},
    {"gridCount", offsetof(CmLut, gridCount), 13},  {"grid", offsetof(CmLut, grid), 16},
    {"grayTable", offsetof(CmLut, grayTable), 67},
};

// From lutData on, pointers and words interleave: word positions hold on a
// 32-bit build only.
const FieldAt kTrailingFields[] = {
    {"lutData", offsetof(CmLut, lutData), 131},
    {"lutDataBlock", offsetof(CmLut, lutDataBlock), 132},
    {"tableBlockNo", offsetof(CmLut, tableBlockNo), 133},
    {"modelId", offsetof(CmLut, modelId), 134},
    {"reservedA", offsetof(CmLut, reservedA), 135},
    {"extraData", offsetof(CmLut, extraData), 137},
    {"extraDataBlock", offsetof(CmLut, extraDataBlock), 138},
    {"reservedB", offsetof(CmLut, reservedB), 139},
    {"selfBlock", offsetof(CmLut, selfBlock), 141},
};

TEST(CmLutLayout, LeadingFieldsSitAtTheirWordsOnEveryBuild) {
    for (const FieldAt& field : kLeadingFields) {
        EXPECT_EQ(field.offset, field.word * kWord) << field.name;
    }
    // The grid levels and the black table are byte arrays packed without gaps.
    EXPECT_EQ(sizeof(CmLut::grid), 3u * 68u);
    EXPECT_EQ(sizeof(CmLut::grayTable), 256u);
}

TEST(CmLutLayout, TrailingFieldsSitAtTheirWordsOnA32BitBuild) {
    if (!kPointersAreWords) GTEST_SKIP() << "pointers are wider than a word on this build";
    for (const FieldAt& field : kTrailingFields) {
        EXPECT_EQ(field.offset, field.word * kWord) << field.name;
    }
    EXPECT_EQ(sizeof(CmLut), 142 * kWord);
}

TEST(CmLutLayout, TrailingFieldsKeepTheirOrderOnEveryBuild) {
    // Wider pointers move the tail, never reorder it.
    for (size_t i = 1; i < std::size(kTrailingFields); ++i) {
        EXPECT_LT(kTrailingFields[i - 1].offset, kTrailingFields[i].offset) << kTrailingFields[i].name;
    }
    EXPECT_GE(kTrailingFields[0].offset, offsetof(CmLut, grayTable) + sizeof(CmLut::grayTable));
}

TEST(SettingsLayout, SettingWordArraysHaveTheirWordCounts) {
    EXPECT_EQ(sizeof(CmSettings2), 11 * kWord);
    EXPECT_EQ(sizeof(HtSettings), 11 * kWord);
    EXPECT_EQ(offsetof(HtSettings, width), 9 * kWord);
    EXPECT_EQ(offsetof(CmSettings2, selectG), 6 * kWord);
    // The chunk directory pointer is the fifteenth word of the first array.
    EXPECT_EQ(offsetof(CmSettings1, chunkDir), 14 * kWord);
    if (kPointersAreWords) {
        EXPECT_EQ(sizeof(CmSettings1), 15 * kWord);
    }
}

TEST(SettingsLayout, ChunkEntriesArePairsOfWordsOnA32BitBuild) {
    EXPECT_EQ(offsetof(ChunkEntry, id), 0u);
    EXPECT_EQ(offsetof(ChunkDirectory, count), 0u);
    if (!kPointersAreWords) GTEST_SKIP() << "pointers are wider than a word on this build";
    EXPECT_EQ(sizeof(ChunkEntry), 2 * kWord);
    EXPECT_EQ(offsetof(ChunkEntry, value), kWord);
    EXPECT_EQ(offsetof(ChunkDirectory, entries), kWord);
}

}  // namespace
