// What the memory service needs from the platform. One implementation is
// compiled in, chosen at build time: the system allocator on POSIX, movable
// global memory and a message box on Windows.
#pragma once

#include <cstddef>
#include <cstdint>

namespace inkdot::platform {

// The allocation-failure text and the buffer it is formatted into. The text is
// decided here once; each platform formats it with its own formatter
// (formatAllocFailure), which writes the same decimal digits for any 32-bit size.
inline constexpr char kAllocFailureFormat[] = "size = %lu";
inline constexpr size_t kAllocTextChars = 200;

// Obtains and locks a block; null on failure.
void* allocate(uint32_t size, bool zeroFill);
// Unlocks and frees a block; 0 on success.
uint32_t release(void* block);
// Writes kAllocFailureFormat filled with size into text.
void formatAllocFailure(char (&text)[kAllocTextChars], uint32_t size);
// Shows the allocation-failure text with the caption "Alloc".
void showAllocFailure(const char* text);

}  // namespace inkdot::platform
