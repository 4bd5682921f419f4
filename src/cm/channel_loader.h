// The channel-table loader: after the grid rebuild it reads a routing table
// (block 980), base weights (block 990), an index text (block 900) and the
// table block that index names, and then passes every grid value of each ink
// channel through a correction table chosen by that channel's requested weight.
#pragma once

#include <cstdint>

#include "inkdot/inkdot.h"

inline constexpr uint32_t kLoaderMaxChannels = 20;

struct CmLoader {
    MemBlock selfBlock;
    MemBlock tablesBlock;
    uint8_t* tables;  // `channels` rows of 256 bytes: row c corrects ink channel c
    CmSettings1 settings1;
    CmSettings2 settings2;
    uint32_t state;   // 1..4
    CmContext* owner;
    uint8_t requested[kLoaderMaxChannels];  // from the channel-weight record
    uint8_t rowMap[kLoaderMaxChannels];     // destination row of each channel's table
    uint8_t base[kLoaderMaxChannels];       // from block 990
};

namespace inkdot {

// Fixed block numbers of the channel-table set.
inline constexpr uint32_t kRoutingBlock = 980;
inline constexpr uint32_t kBaseWeightBlock = 990;
inline constexpr uint32_t kTableIndexBlock = 900;

// Creates the loader and stores it in ctx->loader; *outNextBlock receives 980,
// or 0xFFFFFFFF when the chunk directory holds no valid channel-weight record
// (the caller then releases the loader). On RC_MEM_ALLOC / RC_MEM_LOCK no
// loader exists and *outNextBlock is untouched.
uint32_t createLoader(CmContext* ctx, uint32_t* outNextBlock);

// One loader step with the block asked for last. RC_DATA for a routing
// record of more than 20 bytes, for an index without a usable record, or a
// null block; RC_MEM_ALLOC when the index search gets no scratch area.
uint32_t loaderStep(CmContext* ctx, const uint8_t* block, uint32_t* outNextBlock);

// Every grid value x of channel c becomes tables[c * 256 + x].
void applyLoaderTables(CmContext* ctx);

}  // namespace inkdot
