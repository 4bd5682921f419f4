// Replication setup of phase 1: an expansion by E output pixels per input
// pixel is split into the kernels' own doubling (scaleMode 1) and a
// replication in front of the kernel, so that 2 is doubling alone, 3 is
// replication by 3, 4 is doubling with replication by 2, 5 replication by 5.
#include "halftone/protocol_steps.h"
#include "halftone/slots.h"

namespace inkdot {

uint32_t setUpReplication(HtContext& ctx) {
    if (ctx.scaleMode < INKDOT_SCALE_REPEAT_MIN) {
        ctx.replicationFactor = 1;
    } else {
        const int64_t expansion = int64_t{ctx.scaleMode} + 1;  // 64 bits: scaleMode may be the largest int
        if (expansion % 2 == 0) {
            ctx.scaleMode = INKDOT_SCALE_DOUBLE;
            ctx.replicationFactor = static_cast<uint32_t>(expansion / 2);
        } else {
            ctx.scaleMode = INKDOT_SCALE_NONE;
            ctx.replicationFactor = static_cast<uint32_t>(expansion);
        }
    }
    return acquireSlot(ctx, kReplicatedLine, ctx.width * bytesPerPixel(ctx.inputFormat), false);
}

}  // namespace inkdot
