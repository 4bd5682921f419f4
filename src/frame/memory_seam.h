// Test seam of the memory service: per-thread fault injection and counters.
//
// The seam is thread-local, so instances driven on different threads never
// see each other's plan and production use (where nobody arms it) keeps no
// shared writable state. Counters are 1-based: failAllocAt = 3 makes the
// third MemAlloc on this thread fail; 0 means never.
#pragma once

#include <cstdint>

namespace inkdot {

struct MemFaults {
    uint32_t failAllocAt = 0;
    uint32_t failLockAt = 0;
    uint32_t failUnlockAt = 0;
    uint32_t failFreeAt = 0;  // the block is then kept, as a real failed free would
    uint32_t allocs = 0;      // MemAlloc calls seen (failed ones included)
    uint32_t locks = 0;
    uint32_t unlocks = 0;
    uint32_t frees = 0;
    uint32_t messages = 0;    // allocation-failure messages shown
    int64_t liveBlocks = 0;   // blocks obtained and not yet freed
    char lastMessage[200] = {};
};

// This thread's seam. Reset it with memFaults() = MemFaults{}.
MemFaults& memFaults();

}  // namespace inkdot
