// The colour-management resource protocol (filled in with the colour table work).
#include "cm/cm_context.h"
#include "cm/cm_instance.h"

namespace inkdot {

uint32_t cmSetResource(CmContext* /*ctx*/, const uint8_t* /*block*/, uint32_t* /*outNextBlock*/) {
    return RC_DATA;
}

void releaseLoader(CmContext* ctx) { ctx->loader = nullptr; }

}  // namespace inkdot
