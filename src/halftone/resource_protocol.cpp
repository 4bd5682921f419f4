// HalftoneSetResource: the phases in which the instance asks for its blocks
// and builds its tables. Phase 1 takes the request list, phase 2 the grid
// levels, phase 3 the threshold matrix, phase 4 (two-bit output) the dot-split
// block. The instance is ready when a call answers -1 after its last phase.
#include <cstring>

#include "halftone/block_format.h"
#include "halftone/dispatch.h"
#include "halftone/ht_context.h"
#include "halftone/ht_instance.h"
#include "halftone/setting_kinds.h"
#include "halftone/protocol_steps.h"
#include "halftone/slots.h"

namespace inkdot {
namespace {

// Ids travel as 16-bit values widened with their sign: id 65535 and the end
// of the protocol both arrive as -1.
uint32_t answerOf(uint16_t id) { return static_cast<uint32_t>(static_cast<int32_t>(static_cast<int16_t>(id))); }
constexpr uint32_t kNoMoreBlocks = INKDOT_NO_MORE_BLOCKS;

// A failure that gives up everything the instance holds. The failure's own
// code is the answer, whatever the release reports. Views are dropped too,
// so that no slot points into a freed block.
uint32_t releaseAllAnd(HtContext& ctx, uint32_t rc) {
    releaseSlots(ctx);
    for (HtBuffer& buffer : ctx.buffers) {
        if (buffer.handle == nullptr) buffer = HtBuffer{};
    }
    return rc;
}

uint32_t phaseRequestList(HtContext& ctx, ByteView block, uint32_t* outNextBlock) {
    if (const uint32_t rc = checkSettings(ctx); rc != RC_OK) return rc;
    ctx.errorLineCount = errorLineCountFor(ctx);
    if (block.isNull()) return RC_ARG + 2;
    if (const uint32_t rc = readRequestList(ctx, block); rc != RC_OK) return rc;
    *outNextBlock = answerOf(ctx.requestIds[block::request_list::kGridLevels]);
    // Line sizes are 32-bit: an error line's cells and margins in bytes must fit.
    if (ctx.width > 0xFFFFFFFFu / sizeof(int32_t) - 2 * kErrorLineMargin) return RC_ARG + 1;
    if (const uint32_t rc = acquireErrorLines(ctx); rc != RC_OK) return releaseAllAnd(ctx, rc);
    if (const uint32_t rc = setUpReplication(ctx); rc != RC_OK) return releaseAllAnd(ctx, rc);
    return RC_OK;
}

uint32_t phaseColourGrid(HtContext& ctx, ByteView block) {
    const CmLut source = ctx.lut;  // the grid as colour management left it
    if (source.lutDataBlock == nullptr || source.lutData == nullptr) return releaseAllAnd(ctx, RC_ARG + 1);
    // The resampled grid packs four inks per node and the per-level index
    // needs a proper level row; a source grid of another shape is refused as
    // invalid resource data, keeping the slots.
    const uint32_t n = source.gridCount[0];
    if (source.channels != 4 || n < 2 || n > sizeof source.grid[0] || !isLevelRow(source.grid[0], n)) {
        return RC_DATA;
    }

    uint32_t tableBytes;
    if (ctx.method == INKDOT_METHOD_THRESHOLD) {
        // Fixed threshold needs only the corners: 2 x 2 x 2 nodes at 0 and 255.
        for (unsigned axis = 0; axis < 3; ++axis) {
            ctx.lut.gridCount[axis] = 2;
            ctx.lut.grid[axis][0] = 0;
            ctx.lut.grid[axis][1] = 255;
        }
        tableBytes = source.channels * 8;
    } else {
        using namespace block::grid_levels;
        // A block too short for its count and 32 levels is no grid level
        // block at all: refused as invalid data before anything is read,
        // keeping the slots like the protocol's other data refusals.
        if (!block.isNull() && !block.holds(0, kBlockBytes)) return RC_DATA;
        // A missing block, a count other than 32 and levels that are not a
        // level row are one refusal: the grid level block is unusable.
        if (block.isNull() || block.u16le(kCountOffset) != kLevelCount ||
            !isLevelRow(block.data + kLevelsOffset, kLevelCount)) {
            return releaseAllAnd(ctx, RC_ARG + 2);
        }
        for (unsigned axis = 0; axis < 3; ++axis) {
            ctx.lut.gridCount[axis] = kLevelCount;
            std::memcpy(ctx.lut.grid[axis], block.data + kLevelsOffset, kLevelCount);
        }
        tableBytes = source.channels * kLevelCount * kLevelCount * kLevelCount;
    }
    const uint32_t rounded = (tableBytes + 3) & ~3u;  // whole u32 nodes
    if (const uint32_t rc = acquireSlot(ctx, kConversionTable, rounded, false); rc != RC_OK) {
        return releaseAllAnd(ctx, rc);
    }
    ctx.lut.lutDataBlock = nullptr;  // the instance's own slot 0 holds the grid now
    ctx.lut.lutData = slotData<uint8_t>(ctx, kConversionTable);
    resampleGrid(source, ctx.lut, slotData<uint32_t>(ctx, kConversionTable));
    return RC_OK;
}

uint32_t phaseGridLevels(HtContext& ctx, ByteView block) {
    if (!isColour(ctx.colourMode)) {
        const uint32_t rc = buildInkCurve(ctx);
        return rc == RC_OK ? rc : releaseAllAnd(ctx, rc);
    }
    return phaseColourGrid(ctx, block);
}

// Threshold matrix, tone table behind it, and the dot value block with the
// error-diffusion threshold and grid cell tables as views into it.
uint32_t acquireMatrixAndTables(HtContext& ctx) {
    const uint32_t matrixBytes = (2u * ctx.matrixCells + 3) & ~3u;  // u16 cells, whole words
    const uint32_t toneBytes = isDitherMethod(ctx.method) && !isColour(ctx.colourMode) ? 1024 : 512;
    if (const uint32_t rc = acquireSlot(ctx, kThresholdMatrix, matrixBytes + toneBytes, false); rc != RC_OK) {
        return rc;
    }
    setSlotView(ctx, kToneTable, slotData<uint8_t>(ctx, kThresholdMatrix) + matrixBytes, toneBytes);

    const uint32_t dotBytes = ctx.colourMode == INKDOT_COLOUR_DOUBLE_DOT_TABLE ? 1024 : 512;
    const uint32_t edBytes = isTwoBit(ctx.outputBits) ? 1024 : 512;  // two-bit re-indexes through a second half
    const uint32_t cellBytes = 512;
    if (const uint32_t rc = acquireSlot(ctx, kDotValueTable, dotBytes + edBytes + cellBytes, true); rc != RC_OK) {
        return rc;
    }
    uint8_t* base = slotData<uint8_t>(ctx, kDotValueTable);
    setSlotView(ctx, kEdThresholdTable, base + dotBytes, edBytes);
    setSlotView(ctx, kGridCellTable, base + dotBytes + edBytes, cellBytes);
    return RC_OK;
}

uint32_t phaseThresholdMatrix(HtContext& ctx, ByteView block, uint32_t* outNextBlock) {
    if (isTwoBit(ctx.outputBits)) {
        using namespace block::dot_split_descriptor;
        const ByteView descriptor(ctx.lut.extraData, kBytes);
        if (descriptor.isNull() || descriptor.u32le(kPresentOffset) == 0 ||
            descriptor.u16le(kFormatOffset) != kFormat) {
            return RC_DATA;
        }
        *outNextBlock = answerOf(descriptor.u16le(kBlockIdOffset));
    } else {
        *outNextBlock = kNoMoreBlocks;
    }
    if (block.isNull()) return RC_ARG + 2;

    using namespace block::threshold_matrix;
    if (!block.holds(0, kValuesOffset)) return RC_DATA;
    const uint8_t widthByte = block.u8(kWidthOffset);
    const uint8_t heightByte = block.u8(kHeightOffset);
    const uint32_t width = widthByte == kByteFor256 ? 256 : widthByte;
    const uint32_t height = heightByte == kByteFor256 ? 256 : heightByte;
    // The kernels address a column as x AND (width - 1) and matrixCells is 16
    // bits wide: an empty side, a width that is no power of two and 256 x 256
    // cells cannot be held.
    if (width == 0 || height == 0 || (width & (width - 1)) != 0 || width * height > 0xFFFF) return RC_DATA;
    if (!block.holds(kValuesOffset, kCellBytes * width * height)) return RC_DATA;  // cells beyond the block
    ctx.matrixWidth = width;
    ctx.matrixHeight = height;
    ctx.matrixCells = static_cast<uint16_t>(width * height);
    if (const uint32_t rc = acquireMatrixAndTables(ctx); rc != RC_OK) return releaseAllAnd(ctx, rc);

    uint16_t* matrix = slotData<uint16_t>(ctx, kThresholdMatrix);
    for (uint32_t i = 0; i < ctx.matrixCells; ++i) matrix[i] = block.u16le(kValuesOffset + kCellBytes * i);

    buildGridCellTable(slotData<uint8_t>(ctx, kGridCellTable), ctx.lut.grid[0], ctx.lut.gridCount[0]);
    if (const uint32_t rc = chooseSpreadThresholds(ctx); rc != RC_OK) return rc;

    int16_t* dot = slotData<int16_t>(ctx, kDotValueTable);
    buildDotValueTable(dot, isTwoBit(ctx.outputBits), ctx.lut.inkParam[0], ctx.lut.inkParam[1]);
    if (hasZeroDotValue(dot)) return RC_DATA;  // dot values divide the tone and threshold tables
    uint16_t* tone = slotData<uint16_t>(ctx, kToneTable);
    buildToneTable(tone, dot, ctx.matrixCells);
    if (!isColour(ctx.colourMode) && ctx.outputBits == INKDOT_ONE_BIT && isDitherMethod(ctx.method)) {
        composeToneWithInkCurve(tone, slotData<uint16_t>(ctx, kConversionTable));
    }
    buildEdThresholdTable(slotData<int16_t>(ctx, kEdThresholdTable), dot);
    return RC_OK;
}

uint32_t phaseDotSplit(HtContext& ctx, ByteView block, uint32_t* outNextBlock) {
    *outNextBlock = kNoMoreBlocks;
    if (block.isNull()) return RC_ARG + 2;
    if (!block.holds(0, block::dot_split::kBlockBytes)) return RC_DATA;  // checked before acquiring: slots kept
    if (const uint32_t rc = acquireSlot(ctx, kDotSplitTable, block::dot_split::kBlockBytes, false); rc != RC_OK) {
        return releaseAllAnd(ctx, rc);
    }
    uint8_t* table = slotData<uint8_t>(ctx, kDotSplitTable);
    if (const uint32_t rc = copyDotSplitRows(table, block.data); rc != RC_OK) return rc;
    reindexEdThresholds(slotData<int16_t>(ctx, kEdThresholdTable), table, ctx.resolutionX);
    buildSplitTables(ctx);
    return RC_OK;
}

uint32_t runPhase(HtContext& ctx, uint32_t phase, ByteView block, uint32_t* outNextBlock) {
    if (phase == 1) return phaseRequestList(ctx, block, outNextBlock);
    // A one-bit instance's last phase is 3: its threshold table block has no
    // room for the dot-split re-indexing of phase 4.
    const uint32_t lastPhase = isTwoBit(ctx.outputBits) ? 4 : 3;
    if (phase > lastPhase) return RC_DATA;
    const uint16_t classId = classMatrixId(ctx);
    if (classId == block::request_list::kEndOfList) return RC_DATA;
    switch (phase) {
        case 2:
            *outNextBlock = answerOf(classId);
            return phaseGridLevels(ctx, block);
        case 3:
            return phaseThresholdMatrix(ctx, block, outNextBlock);
        default:
            return phaseDotSplit(ctx, block, outNextBlock);
    }
}

}  // namespace

uint32_t halftoneSetResource(HtContext* ctx, ByteView block, uint32_t* outNextBlock) {
    const uint32_t phase = ++ctx->callCount;  // a call that fails still uses up its phase
    if (ctx->failedPhase != 0) return RC_DATA;  // fed out of order: start anew

    const uint32_t rc = outNextBlock == nullptr ? RC_ARG + 3 : runPhase(*ctx, phase, block, outNextBlock);
    if (rc != RC_OK) {
        // Calls beyond the last phase leave a ready instance ready.
        if (ctx->kernel == nullptr) ctx->failedPhase = phase;
        return rc;
    }
    const bool complete = phase == (isTwoBit(ctx->outputBits) ? 4u : 3u);
    if (complete) ctx->kernel = chooseKernel(*ctx).kernel;
    return RC_OK;
}

}  // namespace inkdot
