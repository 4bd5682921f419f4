// The memory service: every record and table of the library comes from here.
//
// A block is locked from MemAlloc to MemFree, so the pointer MemAlloc returns
// is at once the block's identity and its data address. MemLock and MemUnlock
// cannot fail with the system allocator; callers still check them so that a
// memory service whose locking can fail slots in unchanged.
#pragma once

#include <cstdint>

namespace inkdot {

void* MemAlloc(uint32_t size, uint32_t zeroFill);
void* MemLock(void* block);
uint32_t MemUnlock(void* block);
uint32_t MemFree(void* block);

// The one pattern every caller follows: MemAlloc (null: RC_MEM_ALLOC), then
// MemLock (null: free the block, RC_MEM_LOCK). On success *out holds the block.
uint32_t obtainBlock(uint32_t size, bool zeroFill, void** out);

// Unlock then free: RC_MEM_UNLOCK when the unlock fails (the block is then
// not freed), RC_MEM_FREE when the free fails.
uint32_t releaseBlock(void* block);

}  // namespace inkdot
