#include "cm/index_search.h"

#include "cm/cm_context.h"
#include "cm/index_text.h"
#include "frame/memory.h"

namespace inkdot {
namespace {

bool matches(const IndexRecord& rec, const CmContext& ctx) {
    // Keys are compared as 32-bit patterns; selectC is widened with its sign.
    return rec.pos1 == static_cast<int32_t>(ctx.settings2.selectA) &&
           rec.pos3 == static_cast<int32_t>(ctx.selectC) &&
           rec.num2 == static_cast<int32_t>(ctx.settings1.selectB) &&
           rec.key8 == static_cast<int32_t>(ctx.settings1.selectF) &&
           rec.key5 == static_cast<int32_t>(ctx.settings2.selectD) &&
           rec.key6 == static_cast<int32_t>(ctx.settings2.selectE) &&
           rec.key9 == static_cast<int32_t>(ctx.settings2.selectG);
}

}  // namespace

int32_t searchIndex(CmContext* ctx, const uint8_t* text) {
    void* scratch = nullptr;
    if (obtainBlock(kIndexScratchBytes, true, &scratch) != RC_OK) return -1;
    auto* index = static_cast<IndexText*>(scratch);

    int32_t result = 0;
    const int32_t count = parseIndexText(text, index);
    for (int32_t i = 0; i < count; ++i) {
        const IndexRecord& rec = index->records[i];
        // Valid indexes hold no negative block numbers; such a record is
        // treated as if it did not match, so it can never be asked for.
        if (rec.blockNo < 0 || !matches(rec, *ctx)) continue;
        ctx->matchBlockNo = static_cast<uint32_t>(rec.blockNo);
        ctx->matchTableId = static_cast<uint32_t>(rec.tableId);
        result = rec.blockNo;
    }
    releaseBlock(scratch);
    return result;
}

}  // namespace inkdot
