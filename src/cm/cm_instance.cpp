// CmNew, CmGetLut and CmDelete: the life of a colour-management instance.
#include "cm/cm_instance.h"

#include "cm/cm_context.h"
#include "frame/memory.h"

namespace inkdot {

uint32_t cmNew(const CmSettings1* settings1, const CmSettings2* settings2, uint32_t /*ignored3*/,
               uint32_t* outFirstBlock, CmContext** outHandle) {
    *outFirstBlock = 0;  // the first block wanted is always the resource index

    void* contextBlock = nullptr;
    if (const uint32_t rc = obtainBlock(sizeof(CmContext), true, &contextBlock); rc != RC_OK) return rc;
    auto* ctx = static_cast<CmContext*>(contextBlock);
    ctx->selfBlock = contextBlock;

    void* lutBlock = nullptr;
    if (const uint32_t rc = obtainBlock(sizeof(CmLut), true, &lutBlock); rc != RC_OK) {
        releaseBlock(contextBlock);
        return rc;
    }
    ctx->lut = static_cast<CmLut*>(lutBlock);
    ctx->lut->selfBlock = lutBlock;
    ctx->lutBlock = lutBlock;

    ctx->settings1 = *settings1;
    ctx->settings2 = *settings2;

    if (ctx->settings2.selectA == 0) {
        ctx->settings2.selectA = 3;
        ctx->settings1.processLevel = 2;
    }
    int16_t selectC = static_cast<int16_t>(ctx->settings1.processLevel & 0xFFFFu);
    if (ctx->settings1.processLevel == 2) selectC = 4;
    if (ctx->settings1.processMode == 1) {
        selectC = 4;
    } else if (ctx->settings1.processMode == 4) {
        selectC = 0;
        ctx->settings1.processLevel = 0;
    } else if (ctx->settings2.pixelFormat == 0) {
        selectC = 0;
    }
    ctx->selectC = selectC;

    ctx->phase = 1;
    *outHandle = ctx;
    return RC_OK;
}

CmLut* cmGetLut(CmContext* ctx) { return ctx->lut; }

uint32_t cmDelete(CmContext* ctx) {
    releaseLoader(ctx);  // a protocol abandoned in its last phases leaves the loader alive
    CmLut* lut = ctx->lut;
    if (lut->lutDataBlock != nullptr) releaseBlock(lut->lutDataBlock);
    if (lut->extraDataBlock != nullptr) releaseBlock(lut->extraDataBlock);
    releaseBlock(ctx->lutBlock);
    releaseBlock(ctx->selfBlock);
    return RC_OK;
}

}  // namespace inkdot
