// The resource index text: a small text block listing table records, each
// naming a block number and the setting values it serves.
//
// Layout: anything up to the marker "//", the version character '3', the rest
// of that line, a heading line, record lines of nine blank-separated tokens
// ended by a line whose first token begins with '/', then name list 1, name
// list 2 (optionally led by its base number) and name list 3, one line each,
// and a flag line.
#pragma once

#include <cstdint>

namespace inkdot {

// Capacities of the format. A text that breaks any of them is outside the
// format and parses to no records.
inline constexpr int kIndexMaxTokenChars = 255;  // also the longest line copy
inline constexpr int kIndexMaxNameChars = 11;
inline constexpr int kIndexMaxList1 = 12;
inline constexpr int kIndexMaxList2 = 32;
inline constexpr int kIndexMaxList3 = 12;
inline constexpr int kIndexMaxRecords = 100;

// The search's scratch area, obtained from the memory service.
inline constexpr uint32_t kIndexScratchBytes = 8400;

using IndexName = char[kIndexMaxNameChars + 1];  // NUL-terminated

struct IndexRecord {
    int32_t blockNo;
    int32_t tableId;  // 0 in the text is stored as -1
    IndexName name1;
    IndexName name2;
    int32_t key5;
    int32_t key6;
    IndexName name3;
    int32_t key8;
    int32_t key9;
    int32_t pos1;  // position of name1 in list 1, 0 when absent
    int32_t num2;  // list-2 base + position of name2, 0 when absent
    int32_t pos3;  // position of name3 in list 3, 0 when absent
};

struct IndexText {
    int32_t recordCount;
    IndexRecord records[kIndexMaxRecords];
    int32_t list1Count;
    int32_t list2Count;
    int32_t list3Count;
    int32_t list2Base;
    IndexName list1[kIndexMaxList1];
    IndexName list2[kIndexMaxList2];
    IndexName list3[kIndexMaxList3];
};
static_assert(sizeof(IndexText) <= kIndexScratchBytes, "the parse must fit the scratch area");

// Parses the text into *out (which the caller provides zero-filled) and
// returns the number of records: 0 for a wrong version, a missing "//"
// marker or a broken capacity. The parser stops at the first NUL or SUB and
// never reads past it.
int32_t parseIndexText(const uint8_t* text, IndexText* out);

// Decimal conversion of an index token: every '-' (wherever it stands) makes
// the result negative, every other character c adds c - '0' as the next digit.
// Wraps at 32 bits rather than overflowing.
int32_t indexTokenNumber(const char* token);

}  // namespace inkdot
