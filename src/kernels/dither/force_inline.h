// Marks the small per-pixel steps that several kernels of one file share:
// the compiler would otherwise keep them out of line once they have more
// than one caller, and a call per pixel costs more than the step itself.
#pragma once

#if defined(_MSC_VER)
#define INKDOT_FORCE_INLINE __forceinline
#else
#define INKDOT_FORCE_INLINE inline __attribute__((always_inline))
#endif
