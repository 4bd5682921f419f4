// Function multi-versioning for the kernels' stage loops: the compiler builds
// the loop twice, once for the baseline instruction set and once for AVX2
// (wider vectors for the per-pixel input stage, and BMI2 shifts), and the
// loader picks the one the CPU runs. One binary, no CPU test in the kernels.
//
// Only where the toolchain resolves clones at load time (GCC on x86-64
// Linux); elsewhere - the 32-bit Windows DLL, -m32, other compilers - the
// macro is empty and the baseline loop is all there is. ThreadSanitizer builds
// leave them out too: the clones' load-time resolvers run before its runtime
// is set up, and the instrumented program dies before main.
#pragma once

#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && defined(__linux__) && \
    !defined(__SANITIZE_THREAD__) && !defined(INKDOT_NO_CPU_CLONES)
#define INKDOT_CPU_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define INKDOT_CPU_CLONES
#endif
