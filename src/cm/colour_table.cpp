#include "cm/colour_table.h"

#include <cstring>

#include "cm/byte_read.h"
#include "cm/cm_context.h"
#include "cm/ink_scale.h"
#include "frame/memory.h"

namespace inkdot {
namespace {

namespace ct = colour_table;

constexpr uint32_t kNeutralSettingMid = 50;  // neutralSetting 50 keeps the table's neutral axis
constexpr uint32_t kTableModeNeutralList = 50;

bool gridSupported(const uint8_t* block) {
    const uint32_t n = block[ct::kGridCount];
    const uint32_t channels = block[ct::kChannels];
    if (block[ct::kGridCount + 1] != n || block[ct::kGridCount + 2] != n) return false;
    if (n < kMinGridPoints || n > kMaxGridPoints) return false;
    if (channels == 0 || channels > kMaxChannels || n * channels > kMaxRowBytes) return false;
    for (uint32_t axis = 0; axis < 3; ++axis) {
        const uint8_t* levels = block + ct::kGridLevels + axis * n;
        if (levels[0] != 0 || levels[n - 1] != 255) return false;
        for (uint32_t i = 1; i < n; ++i) {
            if (levels[i] <= levels[i - 1]) return false;
        }
    }
    return true;
}

// The block's length is not handed over: the area's offset and size are
// trusted as the driver's file states them.
uint32_t copyDataArea(CmLut& lut, const uint8_t* block) {
    const uint32_t offset = readU32le(block + ct::kDataAreaOffset);
    const uint32_t size = readU32le(block + ct::kDataAreaSize);
    if (size == 0) {
        lut.extraDataBlock = nullptr;
        return RC_OK;
    }
    void* area = nullptr;
    if (const uint32_t rc = obtainBlock(size, true, &area); rc != RC_OK) return rc;
    std::memcpy(area, block + offset, size);
    lut.extraData = static_cast<uint8_t*>(area);
    lut.extraDataBlock = area;
    return RC_OK;
}

void readParameters(CmContext& ctx, CmLut& lut, const uint8_t* block) {
    const uint8_t blackMode = block[ct::kBlackMode];
    lut.blackMode = blackMode == 2 ? 1u : blackMode;
    for (int c = 0; c < 3; ++c) {
        ctx.adjustDominant[c] = block[ct::kAdjustDominant + c];
        ctx.adjustHue[c] = readS8(block + ct::kAdjustHue + c);
        ctx.adjustMinimum[c] = readS8(block + ct::kAdjustMinimum + c);
    }
    ctx.saturationOffset = readS8(block + ct::kSaturationOffset);
    for (int i = 0; i < 5; ++i) lut.inkParam[i] = readBe16(block + ct::kInkParam + 2 * i);
    for (int i = 0; i < 4; ++i) lut.auxParam[i] = readBe16(block + ct::kAuxParam + 2 * i);
    for (int axis = 0; axis < 3; ++axis) lut.gridCount[axis] = block[ct::kGridCount + axis];
    lut.channels = block[ct::kChannels];
    const uint32_t n = lut.gridCount[0];
    for (uint32_t axis = 0; axis < 3; ++axis) {
        std::memcpy(lut.grid[axis], block + ct::kGridLevels + axis * n, n);
    }
}

uint32_t deriveNeutralMode(const CmContext& ctx) {
    uint32_t mode = 0;
    if (ctx.settings2.pixelFormat != 0) mode = ctx.settings1.neutralSetting != kNeutralSettingMid ? 1u : 0u;
    if (ctx.settings1.processMode == 1) mode = 1;
    return mode;
}

// The neutral nodes (i, i, i) and the two lists after the node data that can
// replace them.
void setNeutralAxis(const CmContext& ctx, CmLut& lut, const uint8_t* nodeData) {
    const uint32_t n = lut.gridCount[0];
    const uint32_t channels = lut.channels;
    const uint32_t nodeBytes = n * n * n * channels;
    const uint8_t* neutralList = nodeData + nodeBytes;
    const uint8_t* neutralNodes = neutralList + n;
    const uint32_t diagonalStep = (n * n + n + 1) * channels;  // node (i,i,i) to (i+1,i+1,i+1)
    const uint32_t black = channels - 1;

    if (lut.neutralMode == 0 && (lut.blackMode == 1 || lut.blackMode == 3)) {
        const bool everyChannel = ctx.settings2.selectA == 2;
        const bool scaleBlack = lut.blackMode == 3 && ctx.settings2.blackScaling != 0;
        for (uint32_t i = 0; i < n; ++i) {
            uint8_t* node = lut.lutData + i * diagonalStep;
            for (uint32_t c = 0; c < black; ++c) node[c] = everyChannel ? neutralList[i] : 0;
            node[black] = neutralList[i];
            if (scaleBlack) node[black] = inkScale(node[black], lut.inkParam[0], lut.inkParam[1]);
        }
    }
    if (ctx.settings1.processLevel == 2 && lut.neutralMode == 1 && ctx.tableMode == kTableModeNeutralList &&
        ctx.settings1.processMode == 0) {
        for (uint32_t i = 0; i < n; ++i) {
            std::memcpy(lut.lutData + i * diagonalStep, neutralNodes + i * channels, channels);
        }
    }
}

}  // namespace

uint32_t readColourTable(CmContext* ctx, const uint8_t* block) {
    if (block == nullptr || !gridSupported(block)) return RC_DATA;
    CmLut& lut = *ctx->lut;

    lut.tableBlockNo = ctx->matchBlockNo;
    lut.modelId = ctx->matchTableId;
    ctx->tableMode = block[ct::kTableMode];
    if (const uint32_t rc = copyDataArea(lut, block); rc != RC_OK) return rc;
    readParameters(*ctx, lut, block);
    lut.neutralMode = deriveNeutralMode(*ctx);

    const uint32_t n = lut.gridCount[0];
    const uint32_t nodeBytes = n * n * n * lut.channels;
    const uint8_t* nodeData = block + ct::kGridLevels + 3 * n;
    void* nodes = nullptr;
    if (const uint32_t rc = obtainBlock(nodeBytes, true, &nodes); rc != RC_OK) return rc;
    std::memcpy(nodes, nodeData, nodeBytes);
    lut.lutData = static_cast<uint8_t*>(nodes);
    lut.lutDataBlock = nodes;

    setNeutralAxis(*ctx, lut, nodeData);
    return RC_OK;
}

}  // namespace inkdot
