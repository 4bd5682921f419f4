// POSIX platform layer: the system allocator, and the allocation-failure
// message written to standard error (there is no message box to show).
#include <cstdio>
#include <cstdlib>

#include "frame/platform.h"

namespace inkdot::platform {

void* allocate(uint32_t size, bool zeroFill) {
    // A zero-byte request still yields a distinct block, as on Windows.
    const size_t bytes = size == 0 ? 1 : size;
    return zeroFill ? std::calloc(1, bytes) : std::malloc(bytes);
}

uint32_t release(void* block) {
    std::free(block);
    return 0;
}

void formatAllocFailure(char (&text)[kAllocTextChars], uint32_t size) {
    std::snprintf(text, sizeof text, kAllocFailureFormat, static_cast<unsigned long>(size));
}

void showAllocFailure(const char* text) {
    std::fprintf(stderr, "Alloc: %s\n", text);
}

}  // namespace inkdot::platform
