// The colour-management resource protocol: each call reads the phase,
// advances it, runs that phase's steps and names the block wanted next.
//
//   phase 1: block 0, the resource index  -> the colour table block r
//   phase 2: block r, the colour table    -> 980, or the end
//   phase 3..6: the channel-table loader  -> 990, 900, its table block, the end
#include "cm/black_table.h"
#include "cm/channel_loader.h"
#include "cm/cm_context.h"
#include "cm/cm_instance.h"
#include "cm/colour_table.h"
#include "cm/grid_rebuild.h"
#include "cm/index_search.h"
#include "cm/ink_scale.h"
#include "cm/pixel_layout.h"

namespace inkdot {
namespace {

constexpr uint32_t kInkScaledModelsFirst = 300;  // table ids whose grids get whole-table ink scaling
constexpr uint32_t kInkScaledModelsLast = 399;

uint32_t readIndex(CmContext* ctx, const uint8_t* block, uint32_t* outNextBlock) {
    const int32_t found = block == nullptr ? 0 : searchIndex(ctx, block);
    *outNextBlock = static_cast<uint32_t>(found);
    if (found == 0) return RC_DATA;
    if (found < 0) return RC_MEM_ALLOC;
    return RC_OK;
}

bool scalesWholeTable(const CmContext& ctx) {
    const uint32_t model = ctx.lut->modelId;
    return model >= kInkScaledModelsFirst && model <= kInkScaledModelsLast &&
           ctx.settings2.inkScaleGate < 2 && ctx.settings2.selectA == 3;
}

uint32_t buildFromColourTable(CmContext* ctx, const uint8_t* block, uint32_t* outNextBlock) {
    if (const uint32_t rc = readColourTable(ctx, block); rc != RC_OK) return rc;
    for (int i = 0; i < 4; ++i) ctx->pixelLayout[i] = kNodePixelLayout[i];
    if (const uint32_t rc = rebuildGrid(ctx); rc != RC_OK) return rc;
    // Chunk 257 (a curve record) could be resampled here to auxParam[0] + 1
    // points, but the result is applied to nothing, so the step is left out.
    if (scalesWholeTable(*ctx)) inkScaleGrid(*ctx->lut);
    buildGrayTable(ctx);
    if (const uint32_t rc = createLoader(ctx, outNextBlock); rc != RC_OK) return rc;
    if (*outNextBlock == INKDOT_NO_MORE_BLOCKS) releaseLoader(ctx);
    return RC_OK;
}

// Past phase 2 only a living loader takes blocks: once it is released (the
// protocol ended, or a step failed) every further call is out of order.
uint32_t runLoader(CmContext* ctx, const uint8_t* block, uint32_t* outNextBlock) {
    if (ctx->loader == nullptr) return RC_DATA;
    const uint32_t rc = loaderStep(ctx, block, outNextBlock);
    if (rc != RC_OK) {
        releaseLoader(ctx);
        return rc;
    }
    if (*outNextBlock == INKDOT_NO_MORE_BLOCKS) {
        applyLoaderTables(ctx);
        releaseLoader(ctx);
    }
    return RC_OK;
}

}  // namespace

uint32_t cmSetResource(CmContext* ctx, const uint8_t* block, uint32_t* outNextBlock) {
    const int32_t phase = ctx->phase;
    if (phase < INT32_MAX) ctx->phase = phase + 1;  // advances on every call, failed ones too
    switch (phase) {
        case 1: return readIndex(ctx, block, outNextBlock);
        case 2: return buildFromColourTable(ctx, block, outNextBlock);
        default: return runLoader(ctx, block, outNextBlock);
    }
}

}  // namespace inkdot
