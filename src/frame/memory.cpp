#include "frame/memory.h"

#include <cstdio>

#include "frame/memory_seam.h"
#include "frame/platform.h"
#include "inkdot/inkdot.h"

namespace inkdot {

MemFaults& memFaults() {
    thread_local MemFaults faults;
    return faults;
}

void* MemAlloc(uint32_t size, uint32_t zeroFill) {
    MemFaults& seam = memFaults();
    ++seam.allocs;
    void* block = seam.allocs == seam.failAllocAt ? nullptr : platform::allocate(size, zeroFill != 0);
    if (block == nullptr) {
        char text[platform::kAllocTextChars];
        platform::formatAllocFailure(text, size);
        ++seam.messages;
        std::snprintf(seam.lastMessage, sizeof seam.lastMessage, "%s", text);
        platform::showAllocFailure(text);
        return nullptr;
    }
    ++seam.liveBlocks;
    return block;
}

void* MemLock(void* block) {
    MemFaults& seam = memFaults();
    ++seam.locks;
    return seam.locks == seam.failLockAt ? nullptr : block;
}

uint32_t MemUnlock(void* /*block*/) {
    MemFaults& seam = memFaults();
    ++seam.unlocks;
    return seam.unlocks == seam.failUnlockAt ? 1u : 0u;
}

uint32_t MemFree(void* block) {
    MemFaults& seam = memFaults();
    ++seam.frees;
    if (seam.frees == seam.failFreeAt) return 1u;
    const uint32_t result = platform::release(block);
    if (result == 0) --seam.liveBlocks;
    return result;
}

uint32_t obtainBlock(uint32_t size, bool zeroFill, void** out) {
    void* block = MemAlloc(size, zeroFill ? 1u : 0u);
    if (block == nullptr) return RC_MEM_ALLOC;
    if (MemLock(block) == nullptr) {
        MemFree(block);
        return RC_MEM_LOCK;
    }
    *out = block;
    return RC_OK;
}

uint32_t releaseBlock(void* block) {
    if (MemUnlock(block) != 0) return RC_MEM_UNLOCK;
    if (MemFree(block) != 0) return RC_MEM_FREE;
    return RC_OK;
}

}  // namespace inkdot
