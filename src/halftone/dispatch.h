// The choice of kernel: made once, when the resource protocol completes.
#pragma once

#include "halftone/ht_context.h"

namespace inkdot {

struct KernelChoice {
    HtKernel kernel;
    const char* name;
};

// First matching row of the dispatch table. scaleMode is read as the
// resource protocol's phase 1 left it.
KernelChoice chooseKernel(const HtContext& ctx);

}  // namespace inkdot
