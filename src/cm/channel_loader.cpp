#include "cm/channel_loader.h"

#include <cstring>

#include "cm/chunk_directory.h"
#include "cm/cm_context.h"
#include "cm/cm_instance.h"
#include "cm/index_search.h"
#include "frame/memory.h"

namespace inkdot {
namespace {

// Routing records end in 0xFE; 0xFF where a record would start ends the
// block. The channel-weight record ends with the same two markers.
constexpr uint8_t kRecordEnd = 0xFE;
constexpr uint8_t kSequenceEnd = 0xFF;

// Channel-weight record: "CW:", the routing key, one weight per channel, 0xFE 0xFF.
constexpr uint32_t kWeightRoutingKey = 3;
constexpr uint32_t kWeights = 4;
constexpr uint8_t kMinWeight = 30;
constexpr uint8_t kMaxWeight = 70;
constexpr uint32_t kMaxRoutingRecord = 20;  // bytes before the record's 0xFE

constexpr uint32_t kCorrectionTables = 21;  // table d for d = 0..20
constexpr int32_t kNeutralTable = 10;       // requested = base picks the middle table
constexpr int32_t kCloseWeights = 2;        // weights this close to the base count as equal

// The channel-weight record, when the directory holds a valid one.
const uint8_t* channelWeights(const CmSettings1& settings1, uint32_t channels) {
    const auto* record =
        static_cast<const uint8_t*>(lookupChunk(settings1.chunkDir, kChunkChannelWeights));
    if (record == nullptr || std::memcmp(record, "CW:", 3) != 0) return nullptr;
    for (uint32_t c = 0; c < channels; ++c) {
        if (record[kWeights + c] < kMinWeight || record[kWeights + c] > kMaxWeight) return nullptr;
    }
    if (record[kWeights + channels] != kRecordEnd || record[kWeights + channels + 1] != kSequenceEnd) return nullptr;
    return record;
}

// Block 980. A record whose key is the routing key gives rowMap its bytes 1 to
// `channels` (the last such record wins). A matching record too short to name
// a row for every channel, or naming a row at or beyond `channels`, would
// route a table outside `tables`: it is ignored. A record longer than 20
// bytes means the block is not a routing table: RC_DATA.
bool rowsInRange(const uint8_t* rows, uint32_t channels) {
    for (uint32_t c = 0; c < channels; ++c) {
        if (rows[c] >= channels) return false;
    }
    return true;
}

uint32_t readRouting(CmLoader& loader, const uint8_t* block, uint32_t channels, uint8_t key) {
    const uint8_t* at = block;
    while (*at != kSequenceEnd) {
        uint32_t length = 0;
        while (at[length] != kRecordEnd) {
            if (length == kMaxRoutingRecord) return RC_DATA;
            ++length;
        }
        if (at[0] == key && length >= 1 + channels && rowsInRange(at + 1, channels)) {
            std::memcpy(loader.rowMap, at + 1, channels);
        }
        at += length + 1;
    }
    return RC_OK;
}

void chooseTables(CmLoader& loader, const uint8_t* block, uint32_t channels) {
    uint32_t close = 0;
    for (uint32_t c = 0; c < channels; ++c) {
        const int32_t diff = loader.requested[c] - loader.base[c];
        if (diff >= -kCloseWeights && diff <= kCloseWeights) ++close;
    }
    if (close == channels) std::memcpy(loader.requested, loader.base, channels);
    for (uint32_t c = 0; c < channels; ++c) {
        // Two weight points per table, table 10 at equal weights.
        int32_t d = (loader.requested[c] - loader.base[c] + 2 * kNeutralTable) / 2;
        if (d < 0) d = 0;
        if (d > static_cast<int32_t>(kCorrectionTables) - 1) d = kCorrectionTables - 1;
        std::memcpy(loader.tables + loader.rowMap[c] * 256u, block + d * 256, 256);
    }
}

}  // namespace

uint32_t createLoader(CmContext* ctx, uint32_t* outNextBlock) {
    const uint32_t channels = ctx->lut->channels;
    void* self = nullptr;
    if (const uint32_t rc = obtainBlock(sizeof(CmLoader), true, &self); rc != RC_OK) return rc;
    void* tables = nullptr;
    if (const uint32_t rc = obtainBlock(channels * 256u, true, &tables); rc != RC_OK) {
        releaseBlock(self);
        return rc;
    }
    auto* loader = static_cast<CmLoader*>(self);
    loader->selfBlock = self;
    loader->tablesBlock = tables;
    loader->tables = static_cast<uint8_t*>(tables);
    loader->settings1 = ctx->settings1;
    loader->settings2 = ctx->settings2;
    loader->owner = ctx;
    ctx->loader = loader;

    const ChunkDirectory* dir = ctx->settings1.chunkDir;
    if (dir == nullptr || dir->count == 0 || channelWeights(ctx->settings1, channels) == nullptr) {
        *outNextBlock = INKDOT_NO_MORE_BLOCKS;
        return RC_OK;
    }
    loader->state = 1;
    *outNextBlock = kRoutingBlock;
    return RC_OK;
}

uint32_t loaderStep(CmContext* ctx, const uint8_t* block, uint32_t* outNextBlock) {
    CmLoader& loader = *ctx->loader;
    const uint32_t channels = ctx->lut->channels;
    if (block == nullptr) return RC_DATA;
    switch (loader.state) {
        case 1: {
            const uint8_t* weights = channelWeights(loader.settings1, channels);
            if (weights == nullptr) return RC_DATA;  // the record was valid at creation; no longer
            std::memcpy(loader.requested, weights + kWeights, channels);
            for (uint32_t i = 0; i < kLoaderMaxChannels; ++i) loader.rowMap[i] = static_cast<uint8_t>(i);
            const uint8_t key = weights[kWeightRoutingKey];
            if (const uint32_t rc = readRouting(loader, block, channels, key); rc != RC_OK) return rc;
            loader.state = 2;
            *outNextBlock = kBaseWeightBlock;
            return RC_OK;
        }
        case 2:
            std::memcpy(loader.base, block, channels);
            loader.state = 3;
            *outNextBlock = kTableIndexBlock;
            return RC_OK;
        case 3: {
            ctx->selectC = 0;
            const int32_t found = searchIndex(ctx, block);
            loader.state = 4;
            *outNextBlock = static_cast<uint32_t>(found);
            if (found == 0) return RC_DATA;
            if (found < 0) return RC_MEM_ALLOC;
            return RC_OK;
        }
        case 4:
            chooseTables(loader, block, channels);
            *outNextBlock = INKDOT_NO_MORE_BLOCKS;
            return RC_OK;
        default:
            return RC_DATA;  // a loader with nothing to load takes no steps
    }
}

void applyLoaderTables(CmContext* ctx) {
    const CmLut& lut = *ctx->lut;
    const uint8_t* tables = ctx->loader->tables;
    const uint32_t channels = lut.channels;
    const uint32_t nodes = lut.gridCount[0] * lut.gridCount[1] * lut.gridCount[2];
    uint8_t* value = lut.lutData;
    for (uint32_t node = 0; node < nodes; ++node) {
        for (uint32_t c = 0; c < channels; ++c, ++value) *value = tables[c * 256u + *value];
    }
}

void releaseLoader(CmContext* ctx) {
    CmLoader* loader = ctx->loader;
    if (loader == nullptr) return;
    ctx->loader = nullptr;
    releaseBlock(loader->tablesBlock);
    releaseBlock(loader->selfBlock);
}

}  // namespace inkdot
