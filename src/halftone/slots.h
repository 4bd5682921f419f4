// Buffer slot operations of the halftone instance.
#pragma once

#include <cstdint>

#include "halftone/ht_context.h"

namespace inkdot {

// Allocates and locks a block for the slot. On failure the slot's handle stays 0.
uint32_t acquireSlot(HtContext& ctx, Slot slot, uint32_t size, bool zeroFill);
// Makes the slot a view (handle 0) into memory owned by a lower slot.
void setSlotView(HtContext& ctx, Slot slot, void* data, uint32_t size);
void clearSlots(HtContext& ctx);
// Unlock pass, then free pass; views are never released.
uint32_t releaseSlots(HtContext& ctx);

}  // namespace inkdot
