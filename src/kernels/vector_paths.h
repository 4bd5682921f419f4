// The kernels' hand-written vector paths (the AVX2 and AVX-512 colour input
// passes, the AVX-512 colour dither decisions) run where the CPU has their
// instructions and this switch allows them. It is on from the start; turned
// off, every kernel takes its portable loops, which give the same bytes: the
// tests compare the two on the same machine. Loops that the compiler builds
// in several versions (cpu_clones.h) are not affected.
#pragma once

namespace inkdot {

bool vectorPathsAllowed();
void allowVectorPaths(bool allowed);

}  // namespace inkdot
