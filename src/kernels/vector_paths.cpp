#include "kernels/vector_paths.h"

#include <atomic>

namespace inkdot {
namespace {

// Relaxed: the switch orders nothing, and a kernel reads it once per chunk or run.
std::atomic<bool> allowed{true};

}  // namespace

bool vectorPathsAllowed() { return allowed.load(std::memory_order_relaxed); }
void allowVectorPaths(bool on) { allowed.store(on, std::memory_order_relaxed); }

}  // namespace inkdot
