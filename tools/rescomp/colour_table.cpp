#include "rescomp/colour_table.h"

#include <cstring>

namespace inkdot::tools {

using namespace colourtable;

uint8_t gridLevel(unsigned index, unsigned points) {
    // Rounded to the nearest level: (2 × 255 × i + (n − 1)) / (2 (n − 1)).
    return static_cast<uint8_t>((510u * index + (points - 1)) / (2 * (points - 1)));
}

Bytes buildColourTable(const ColourTableParams& params) {
    const unsigned n = params.points;
    Bytes out(kGridLevelsAt, 0);
    static constexpr char kLabel[] = "inkdot ctable";
    std::memcpy(out.data(), kLabel, sizeof kLabel - 1);
    out[kTableModeAt] = params.tableMode;
    out[kBlackModeAt] = params.blackMode;
    for (int i = 0; i < 5; ++i) {
        out[kInkParamAt + 2 * i] = static_cast<uint8_t>(static_cast<uint16_t>(params.inkParam[i]) >> 8);
        out[kInkParamAt + 2 * i + 1] = static_cast<uint8_t>(params.inkParam[i]);
    }
    for (int axis = 0; axis < 3; ++axis) out[kGridCountAt + axis] = static_cast<uint8_t>(n);
    out[kChannelsAt] = kChannels;

    for (int axis = 0; axis < 3; ++axis)
        for (unsigned i = 0; i < n; ++i) appendU8(out, gridLevel(i, n));

    for (unsigned r = 0; r < n; ++r)
        for (unsigned g = 0; g < n; ++g)
            for (unsigned b = 0; b < n; ++b) {
                const Cmyk ink = separate(params.model, gridLevel(r, n), gridLevel(g, n), gridLevel(b, n));
                out.insert(out.end(), {ink.c, ink.m, ink.y, ink.k});
            }

    for (unsigned i = 0; i < n; ++i) appendU8(out, blackOnlyGray(params.model, gridLevel(i, n)));
    for (unsigned i = 0; i < n; ++i) {
        const uint8_t v = gridLevel(i, n);
        const Cmyk ink = separate(params.model, v, v, v);
        out.insert(out.end(), {ink.c, ink.m, ink.y, ink.k});
    }

    if (params.dotSplitBlock != 0) {
        putU32le(out, kDataAreaOffsetAt, static_cast<uint32_t>(out.size()));
        putU32le(out, kDataAreaSizeAt, kDescriptorSize);
        appendU32le(out, 1);  // nonzero: the descriptor is present
        appendU16le(out, 1);  // descriptor kind 1: one dot-split block follows
        appendU16le(out, params.dotSplitBlock);
    }
    return out;
}

}  // namespace inkdot::tools
