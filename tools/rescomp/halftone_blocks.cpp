#include "rescomp/halftone_blocks.h"

#include "rescomp/colour_table.h"

namespace inkdot::tools {

Bytes requestListBlock(const std::vector<uint16_t>& ids) {
    Bytes out;
    for (uint16_t id : ids) appendU16le(out, id);
    appendU16le(out, kRequestListEnd);
    return out;
}

Bytes gridLevelBlock() {
    Bytes out;
    appendU16le(out, kHalftoneGridLevels);
    for (unsigned i = 0; i < kHalftoneGridLevels; ++i) appendU8(out, gridLevel(i, kHalftoneGridLevels));
    return out;
}

Bytes matrixBlock(unsigned width, unsigned height, const std::vector<uint16_t>& thresholds) {
    Bytes out;
    appendU8(out, width == 256 ? 255 : width);  // the byte 255 stands for 256 cells
    appendU8(out, height == 256 ? 255 : height);
    appendU16le(out, 0);
    for (uint16_t t : thresholds) appendU16le(out, t);
    return out;
}

}  // namespace inkdot::tools
