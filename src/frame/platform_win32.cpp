// Windows platform layer: movable global memory, locked at once and kept
// locked for the block's whole life, and the allocation-failure text formatted
// by wsprintfA and shown in a message box.
#include <windows.h>

#include "frame/platform.h"

namespace inkdot::platform {

void* allocate(uint32_t size, bool zeroFill) {
    const UINT flags = GMEM_MOVEABLE | (zeroFill ? GMEM_ZEROINIT : 0u);
    // A movable block of zero bytes is created discarded and cannot be locked;
    // one byte keeps a zero-byte request a real block, as on POSIX.
    HGLOBAL handle = GlobalAlloc(flags, size == 0 ? 1 : size);
    if (handle == nullptr) return nullptr;
    void* block = GlobalLock(handle);
    // A block that cannot be locked is of no use to anyone: give it back.
    if (block == nullptr) GlobalFree(handle);
    return block;
}

uint32_t release(void* block) {
    HGLOBAL handle = GlobalHandle(block);
    GlobalUnlock(handle);
    // GlobalFree answers null on success and the handle itself on failure; the
    // handle's low word is what the caller sees, and never 0 for a failure.
    HGLOBAL left = GlobalFree(handle);
    if (left == nullptr) return 0;
    const auto code = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(left));
    return code != 0 ? code : 1u;
}

void formatAllocFailure(char (&text)[kAllocTextChars], uint32_t size) {
    // wsprintfA writes at most 1024 characters; "size = " and ten digits fit
    // the buffer many times over. Its %lu takes a 32-bit unsigned long.
    wsprintfA(text, kAllocFailureFormat, static_cast<unsigned long>(size));
}

void showAllocFailure(const char* text) {
    // No owner window: the box is modal for the calling thread only.
    MessageBoxA(nullptr, text, "Alloc", MB_OK);
}

}  // namespace inkdot::platform
