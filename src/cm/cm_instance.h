// Bodies of the colour-management operations behind the exported functions.
#pragma once

#include <cstdint>

#include "frame/byte_reader.h"
#include "inkdot/inkdot.h"

namespace inkdot {

uint32_t cmNew(const CmSettings1* settings1, const CmSettings2* settings2, uint32_t ignored3,
               uint32_t* outFirstBlock, CmContext** outHandle);
// `block` carries the length the driver gave (CmSetResourceSized) or
// kUnboundedBlock (CmSetResource); a valid block reads the same either way.
uint32_t cmSetResource(CmContext* ctx, ByteView block, uint32_t* outNextBlock);
CmLut* cmGetLut(CmContext* ctx);
uint32_t cmDelete(CmContext* ctx);

// Releases the channel-table loader if one is alive (tables, then the loader).
void releaseLoader(CmContext* ctx);

}  // namespace inkdot
