// The exported operations: the eight of the two families and the two sized
// resource calls. Each passes its arguments unchanged to the body of the
// operation and returns the body's result unchanged; an unsized block is a
// block of unbounded length.
#include "cm/cm_instance.h"
#include "halftone/ht_instance.h"
#include "inkdot/inkdot.h"

extern "C" {

INKDOT_API uint32_t INKDOT_CALL CmNew(const CmSettings1* settings1, const CmSettings2* settings2,
                                      uint32_t ignored3, uint32_t* outFirstBlock,
                                      CmContext** outHandle) {
    return inkdot::cmNew(settings1, settings2, ignored3, outFirstBlock, outHandle);
}

INKDOT_API uint32_t INKDOT_CALL CmSetResource(CmContext* ctx, const uint8_t* block,
                                              uint32_t* outNextBlock) {
    return inkdot::cmSetResource(ctx, inkdot::ByteView(block, inkdot::kUnboundedBlock), outNextBlock);
}

INKDOT_API uint32_t INKDOT_CALL CmSetResourceSized(CmContext* ctx, const uint8_t* block, uint32_t size,
                                                   uint32_t* outNextBlock) {
    return inkdot::cmSetResource(ctx, inkdot::ByteView(block, size), outNextBlock);
}

INKDOT_API CmLut* INKDOT_CALL CmGetLut(CmContext* ctx) { return inkdot::cmGetLut(ctx); }

INKDOT_API uint32_t INKDOT_CALL CmDelete(CmContext* ctx) { return inkdot::cmDelete(ctx); }

INKDOT_API uint32_t INKDOT_CALL HalftoneNew(const HtSettings* settings, const CmLut* lut,
                                            uint32_t reserved3, uint32_t* outModelId,
                                            HtContext** outHandle) {
    return inkdot::halftoneNew(settings, lut, reserved3, outModelId, outHandle);
}

INKDOT_API uint32_t INKDOT_CALL HalftoneSetResource(HtContext* ctx, const uint8_t* block,
                                                    uint32_t* outNextBlock) {
    return inkdot::halftoneSetResource(ctx, inkdot::ByteView(block, inkdot::kUnboundedBlock), outNextBlock);
}

INKDOT_API uint32_t INKDOT_CALL HalftoneSetResourceSized(HtContext* ctx, const uint8_t* block,
                                                         uint32_t size, uint32_t* outNextBlock) {
    return inkdot::halftoneSetResource(ctx, inkdot::ByteView(block, size), outNextBlock);
}

INKDOT_API uint32_t INKDOT_CALL Halftone(HtContext* ctx, const uint8_t* src, uint8_t* dst,
                                         uint32_t planeStride, uint32_t bitOffset, uint32_t count,
                                         uint32_t startX, uint32_t reserved8, uint32_t lineNo,
                                         uint32_t reserved10, uint32_t option11) {
    return inkdot::halftone(ctx, src, dst, planeStride, bitOffset, count, startX, reserved8, lineNo,
                            reserved10, option11);
}

INKDOT_API uint32_t INKDOT_CALL HalftoneDelete(HtContext* ctx) { return inkdot::halftoneDelete(ctx); }

}  // extern "C"
