// The halftone resource protocol (filled in with the table builders).
#include "halftone/ht_context.h"
#include "halftone/ht_instance.h"

namespace inkdot {

uint32_t halftoneSetResource(HtContext* /*ctx*/, const uint8_t* /*block*/, uint32_t* /*outNextBlock*/) {
    return RC_DATA;
}

}  // namespace inkdot
