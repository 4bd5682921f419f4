// The request list of phase 1 and the class lookup of the later phases.
#include "halftone/block_format.h"
#include "halftone/protocol_steps.h"

namespace inkdot {

uint32_t readRequestList(HtContext& ctx, const uint8_t* block) {
    using namespace block::request_list;
    unsigned stored = 0;
    for (const uint8_t* p = block;; p += 2) {
        const uint16_t id = block::readU16le(p);
        if (id == kEndOfList) break;
        if (stored == kMaxIds) return RC_DATA;
        ctx.requestIds[stored++] = id;
    }
    // Places behind the terminator keep their 0 from the zero-filled record,
    // so a class named there asks for block 0.
    ctx.requestIds[stored] = kEndOfList;
    return RC_OK;
}

uint16_t classMatrixId(const HtContext& ctx) {
    using namespace block::request_list;
    if (is1440x720(ctx)) return ctx.requestIds[kMatrix1440x720];
    if (ctx.resolutionX == 2 * ctx.resolutionY) return ctx.requestIds[kMatrixDoubleX];
    if (isDoubleY(ctx)) return ctx.requestIds[kMatrixDoubleY];
    return ctx.requestIds[kMatrixGeneral];
}

}  // namespace inkdot
