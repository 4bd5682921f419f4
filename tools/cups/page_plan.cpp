#include "cups/page_plan.h"

#include <cstring>

namespace inkdot::cups {

namespace {

// A header's enumerated field as the number the stream holds: a value no
// enumerator names may not be read through the enumeration's type.
template <typename Enum>
unsigned rawValue(const Enum& field) {
    static_assert(sizeof(Enum) == sizeof(unsigned));
    unsigned v;
    std::memcpy(&v, &field, sizeof v);
    return v;
}

bool isGray(unsigned space) { return space == CUPS_CSPACE_W || space == CUPS_CSPACE_SW; }

bool isRgb(unsigned space) {
    return space == CUPS_CSPACE_RGB || space == CUPS_CSPACE_SRGB || space == CUPS_CSPACE_ADOBERGB;
}

}  // namespace

bool resolutionClass(unsigned xdpi, unsigned ydpi, Resolution& out) {
    for (Resolution r : {Resolution::R720x720, Resolution::R1440x720, Resolution::R360x720, Resolution::R720x360}) {
        const Dpi dpi = resolutionDpi(r);
        if (dpi.x == xdpi && dpi.y == ydpi) {
            out = r;
            return true;
        }
    }
    return false;
}

bool offersDotSizes(Resolution resolution) {
    // Two-bit output has spread thresholds for equal resolutions, 1440x720 and
    // a doubled vertical resolution, not for a doubled horizontal one.
    return resolution != Resolution::R720x360;
}

void chooseHalftone(Quality quality, Resolution resolution, Method& method, unsigned& outputBits) {
    const bool dotSizes = offersDotSizes(resolution);
    switch (quality) {
        case Quality::Draft:
            method = Method::Threshold;
            outputBits = 1;
            return;
        case Quality::Normal:
            method = dotSizes ? Method::Dither : Method::ErrorDiffusion;
            outputBits = dotSizes ? 2 : 1;
            return;
        case Quality::High:
            method = Method::ErrorDiffusion;
            outputBits = dotSizes ? 2 : 1;
            return;
    }
}

bool planPage(const cups_page_header2_t& in, const FilterSettings& settings, PagePlan& plan, std::string& error) {
    const unsigned space = rawValue(in.cupsColorSpace);
    if (!isGray(space) && !isRgb(space)) {
        error = "Unsupported colour space " + std::to_string(space) + " (the filter reads gray or RGB pages)";
        return false;
    }
    if (in.cupsBitsPerColor != 8) {
        error = "Unsupported bit depth of " + std::to_string(in.cupsBitsPerColor) +
                " bits per colour (the filter reads 8-bit pages)";
        return false;
    }
    const unsigned channels = isGray(space) ? 1 : 3;
    if (in.cupsBitsPerPixel != 8 * channels || (channels == 3 && rawValue(in.cupsColorOrder) != CUPS_ORDER_CHUNKED)) {
        error = "Unsupported pixel layout (" + std::to_string(in.cupsBitsPerPixel) +
                " bits per pixel, colour order " + std::to_string(rawValue(in.cupsColorOrder)) +
                "); the filter reads chunky 8-bit pixels";
        return false;
    }
    if (in.cupsWidth == 0 || in.cupsHeight == 0) {
        error = "Empty page of " + std::to_string(in.cupsWidth) + " x " + std::to_string(in.cupsHeight) + " pixels";
        return false;
    }
    if (uint64_t{in.cupsBytesPerLine} != uint64_t{in.cupsWidth} * channels) {
        error = "Line of " + std::to_string(in.cupsBytesPerLine) + " bytes does not match a width of " +
                std::to_string(in.cupsWidth) + " pixels";
        return false;
    }
    Resolution resolution{};
    if (!resolutionClass(in.HWResolution[0], in.HWResolution[1], resolution)) {
        error = "Unsupported resolution " + std::to_string(in.HWResolution[0]) + "x" +
                std::to_string(in.HWResolution[1]) + " dpi (the printer offers 720x720, 1440x720, 360x720 and 720x360)";
        return false;
    }

    PagePlan p;
    p.colour = settings.colour;
    p.colour.mono = channels == 1;
    p.halftone.resolution = resolution;
    // The page is rastered at the printing resolution already: one printed
    // pixel per input pixel.
    p.halftone.hscale = HScale::x1;
    p.halftone.inputWidth = in.cupsWidth;
    chooseHalftone(settings.quality, resolution, p.halftone.method, p.halftone.outputBits);
    p.order = settings.order;
    p.height = in.cupsHeight;
    p.inputBytesPerPixel = channels;
    plan = p;
    return true;
}

uint64_t planeLineBytes(const PagePlan& plan) {
    return (uint64_t{plan.halftone.inputWidth} * plan.halftone.outputBits + 7) / 8;
}

uint64_t outputPageBytes(const PagePlan& plan) {
    return planeLineBytes(plan) * (plan.colour.mono ? 1 : 4) * plan.height;
}

cups_page_header2_t outputHeader(const cups_page_header2_t& in, const PagePlan& plan) {
    cups_page_header2_t out = in;
    const unsigned planes = plan.colour.mono ? 1 : 4;
    out.cupsColorSpace = plan.colour.mono ? CUPS_CSPACE_K : CUPS_CSPACE_CMYK;
    out.cupsColorOrder = plan.order == PlaneOrder::Planar ? CUPS_ORDER_PLANAR : CUPS_ORDER_BANDED;
    out.cupsBitsPerColor = plan.halftone.outputBits;
    out.cupsBitsPerPixel = plan.halftone.outputBits;
    out.cupsNumColors = planes;
    out.cupsWidth = plan.halftone.inputWidth;
    out.cupsHeight = plan.height;
    const uint64_t line = planeLineBytes(plan);
    out.cupsBytesPerLine = static_cast<unsigned>(plan.order == PlaneOrder::Planar ? line : line * planes);
    return out;
}

}  // namespace inkdot::cups
