// Inlining the compiler would not do by itself, for per-pixel steps.
//
// INKDOT_FORCE_INLINE marks the small per-pixel steps that several kernels
// of one file share: the compiler would otherwise keep them out of line once
// they have more than one caller, and a call per pixel costs more than the
// step itself (its state goes through the stack instead of registers).
//
// INKDOT_FLATTEN marks a pixel loop whose whole call tree is to be inlined
// into it, so that e.g. the branches of a pattern choice lead straight to
// the additions of their pattern instead of through calls and a jump table.
#pragma once

// INKDOT_INLINE_LAMBDA marks a lambda that is a stage's body inside such a
// loop (written after its parameter list): flattening alone left the
// one-bit colour diffusion's chunk body a call, 10% slower.
#if defined(_MSC_VER)
#define INKDOT_FORCE_INLINE __forceinline
#define INKDOT_FLATTEN
#define INKDOT_INLINE_LAMBDA
#else
#define INKDOT_FORCE_INLINE inline __attribute__((always_inline))
#define INKDOT_FLATTEN [[gnu::flatten]]
#define INKDOT_INLINE_LAMBDA __attribute__((always_inline))
#endif
