// What one input page becomes: the engine's settings for it and the header of
// the page the filter writes.
#pragma once

#include <cups/raster.h>

#include <cstdint>
#include <string>

#include "cups/filter_settings.h"
#include "inkdot/job.h"

namespace inkdot::cups {

struct PagePlan {
    ColourSettings colour;
    HalftoneSetup halftone;   // inputWidth is the page width
    PlaneOrder order = PlaneOrder::Banded;
    uint32_t height = 0;      // lines
    unsigned inputBytesPerPixel = 3;
};

// The engine's resolution class for a page resolution; false when the engine
// has none for it.
bool resolutionClass(unsigned xdpi, unsigned ydpi, Resolution& out);

// Method and output bits for a quality at a resolution: draft is a fixed
// threshold with on/off dots; normal is two-bit ordered dither and high
// two-bit error diffusion where the resolution offers dot sizes, and one-bit
// error diffusion where it does not (720x360).
void chooseHalftone(Quality quality, Resolution resolution, Method& method, unsigned& outputBits);
bool offersDotSizes(Resolution resolution);

// Checks the input page header and plans the page; false with the reason in
// `error` for a page the filter cannot print.
bool planPage(const cups_page_header2_t& in, const FilterSettings& settings, PagePlan& plan, std::string& error);

// The header of the output page: the input's page description (media, size,
// resolution) with the halftoned raster's layout: K or CMYK, 1 or 2 bits a
// colour, banded (each line holds every plane's line in turn) or planar (the
// whole page of each plane in turn).
cups_page_header2_t outputHeader(const cups_page_header2_t& in, const PagePlan& plan);

// Bytes of one plane's line and of the whole output page.
uint64_t planeLineBytes(const PagePlan& plan);
uint64_t outputPageBytes(const PagePlan& plan);

}  // namespace inkdot::cups
