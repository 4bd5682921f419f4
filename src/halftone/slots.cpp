#include "halftone/slots.h"

#include <cstring>

#include "frame/memory.h"

namespace inkdot {

uint32_t acquireSlot(HtContext& ctx, Slot slot, uint32_t size, bool zeroFill) {
    HtBuffer& buffer = ctx.buffers[slot];
    void* block = MemAlloc(size, zeroFill ? 1u : 0u);
    if (block == nullptr) {
        buffer.handle = nullptr;
        return RC_MEM_ALLOC;
    }
    if (MemLock(block) == nullptr) {
        MemFree(block);
        buffer.handle = nullptr;
        return RC_MEM_LOCK;
    }
    buffer.size = size;
    buffer.data = block;
    buffer.handle = block;
    return RC_OK;
}

void setSlotView(HtContext& ctx, Slot slot, void* data, uint32_t size) {
    ctx.buffers[slot] = HtBuffer{size, data, nullptr};
}

void clearSlots(HtContext& ctx) { std::memset(ctx.buffers, 0, sizeof ctx.buffers); }

uint32_t releaseSlots(HtContext& ctx) {
    for (HtBuffer& buffer : ctx.buffers) {
        if (buffer.data != nullptr && buffer.handle != nullptr) {
            if (MemUnlock(buffer.handle) != 0) return RC_MEM_UNLOCK;
            buffer.data = nullptr;
        }
    }
    uint32_t result = RC_OK;
    for (HtBuffer& buffer : ctx.buffers) {
        if (buffer.handle != nullptr) {
            if (MemFree(buffer.handle) != 0) result = RC_MEM_FREE;
            buffer.handle = nullptr;
        }
    }
    return result;
}

}  // namespace inkdot
