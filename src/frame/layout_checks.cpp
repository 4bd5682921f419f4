// The CmLut is the interface between the two families and a driver may read
// it by position, so its layout is fixed: 142 words on a 32-bit build.
#include <cstddef>

#include "inkdot/inkdot.h"

namespace {

constexpr size_t word(size_t n) { return n * 4; }

#if UINTPTR_MAX == 0xFFFFFFFFu
static_assert(sizeof(CmLut) == word(142), "CmLut is 142 words");
static_assert(offsetof(CmLut, blackMode) == word(1));
static_assert(offsetof(CmLut, channels) == word(2));
static_assert(offsetof(CmLut, neutralMode) == word(3));
static_assert(offsetof(CmLut, auxParam) == word(4));
static_assert(offsetof(CmLut, inkParam) == word(8));
static_assert(offsetof(CmLut, gridCount) == word(13));
static_assert(offsetof(CmLut, grid) == word(16));
static_assert(offsetof(CmLut, grayTable) == word(67));
static_assert(offsetof(CmLut, lutData) == word(131));
static_assert(offsetof(CmLut, lutDataBlock) == word(132));
static_assert(offsetof(CmLut, tableBlockNo) == word(133));
static_assert(offsetof(CmLut, modelId) == word(134));
static_assert(offsetof(CmLut, reservedA) == word(135));
static_assert(offsetof(CmLut, extraData) == word(137));
static_assert(offsetof(CmLut, extraDataBlock) == word(138));
static_assert(offsetof(CmLut, reservedB) == word(139));
static_assert(offsetof(CmLut, selfBlock) == word(141));
static_assert(sizeof(CmSettings1) == word(15), "first colour settings array is 15 words");
static_assert(sizeof(ChunkEntry) == word(2), "chunk entries are pairs of words");
static_assert(offsetof(ChunkDirectory, entries) == word(1));
#endif
static_assert(sizeof(CmSettings2) == word(11), "second colour settings array is 11 words");
static_assert(sizeof(HtSettings) == word(11), "halftone settings are 11 words");
static_assert(offsetof(CmLut, grayTable) == word(67), "the word-sized fields come first on every build");

}  // namespace
