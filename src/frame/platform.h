// What the memory service needs from the platform. One implementation is
// compiled in, chosen at build time: the system allocator on POSIX, movable
// global memory and a message box on Windows.
#pragma once

#include <cstdint>

namespace inkdot::platform {

// Obtains and locks a block; null on failure.
void* allocate(uint32_t size, bool zeroFill);
// Unlocks and frees a block; 0 on success.
uint32_t release(void* block);
// Shows the allocation-failure text (already formatted) with the caption "Alloc".
void showAllocFailure(const char* text);

}  // namespace inkdot::platform
