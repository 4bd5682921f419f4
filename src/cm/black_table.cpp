#include "cm/black_table.h"

#include "cm/colour_table.h"
#include "cm/interpolate.h"
#include "cm/pixel_layout.h"

namespace inkdot {

void buildGrayTable(CmContext* ctx) {
    CmLut& lut = *ctx->lut;
    const PixelLayout layout = pixelLayoutOf(*ctx);
    const uint32_t black = lut.channels - 1;
    Interpolator ip;
    prepareInterpolator(lut, ip);
    for (uint32_t v = 0; v < 256; ++v) {
        uint8_t pixel[8] = {};  // room for the node pixel layout
        pixel[layout.red] = pixel[layout.green] = pixel[layout.blue] = static_cast<uint8_t>(v);
        uint8_t inks[kMaxChannels];
        interpolate(ip, layout, 1, pixel, inks);
        uint8_t k = inks[black];
        if (v < 255) {
            if (lut.blackMode == 0 && k == 255) k = 254;
            if (lut.blackMode != 0 && k == 0) k = 1;
        }
        lut.grayTable[v] = k;
    }
}

}  // namespace inkdot
