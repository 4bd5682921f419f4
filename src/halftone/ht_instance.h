// Bodies of the halftone operations behind the exported functions.
#pragma once

#include <cstdint>

#include "inkdot/inkdot.h"

namespace inkdot {

uint32_t halftoneNew(const HtSettings* settings, const CmLut* lut, uint32_t reserved3,
                     uint32_t* outModelId, HtContext** outHandle);
uint32_t halftoneSetResource(HtContext* ctx, const uint8_t* block, uint32_t* outNextBlock);
uint32_t halftone(HtContext* ctx, const uint8_t* src, uint8_t* dst, uint32_t planeStride,
                  uint32_t bitOffset, uint32_t count, uint32_t startX, uint32_t reserved8,
                  uint32_t lineNo, uint32_t reserved10, uint32_t option11);
uint32_t halftoneDelete(HtContext* ctx);

// The settings HalftoneNew refuses (RC_ARG + 1) though it hands the record
// back; the resource protocol refuses to feed such an instance as well.
uint32_t checkSettings(const HtContext& ctx);

}  // namespace inkdot
