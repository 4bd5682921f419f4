#include "cups/raster_summary.h"

#include <memory>

namespace inkdot::cups {

namespace {
struct RasterCloser {
    void operator()(cups_raster_t* r) const { cupsRasterClose(r); }
};
}  // namespace

double PageSummary::coverage(unsigned plane) const {
    const unsigned maxCode = (1u << header.cupsBitsPerColor) - 1;
    const uint64_t full = pixels() * maxCode;
    return full == 0 ? 0.0 : static_cast<double>(planes[plane].ink) / static_cast<double>(full);
}

void countLine(const uint8_t* line, uint32_t width, unsigned bits, PlaneCounts& counts) {
    const unsigned perByte = 8 / bits;
    const unsigned mask = (1u << bits) - 1;
    for (uint32_t x = 0; x < width; ++x) {
        const unsigned shift = 8 - bits * (x % perByte + 1);
        const unsigned code = (line[x / perByte] >> shift) & mask;
        counts.dots += code != 0;
        counts.ink += code;
    }
}

bool summariseRaster(int fd, std::vector<PageSummary>& pages, std::string& error) {
    std::unique_ptr<cups_raster_t, RasterCloser> in(cupsRasterOpen(fd, CUPS_RASTER_READ));
    if (!in) {
        error = "not a CUPS raster stream";
        return false;
    }
    pages.clear();
    PageSummary page;
    while (cupsRasterReadHeader2(in.get(), &page.header)) {
        const cups_page_header2_t& h = page.header;
        const unsigned bits = h.cupsBitsPerColor;
        const unsigned planes = h.cupsNumColors;
        const bool knownSpace = (h.cupsColorSpace == CUPS_CSPACE_K && planes == 1) ||
                                (h.cupsColorSpace == CUPS_CSPACE_CMYK && planes == 4);
        const bool split = h.cupsColorOrder == CUPS_ORDER_BANDED || h.cupsColorOrder == CUPS_ORDER_PLANAR;
        if (!knownSpace || (bits != 1 && bits != 2) || !split) {
            error = "page " + std::to_string(pages.size() + 1) + " is not K or CMYK, 1 or 2 bits, banded or planar";
            return false;
        }
        const uint64_t planeBytes = (uint64_t{h.cupsWidth} * bits + 7) / 8;
        const bool planar = h.cupsColorOrder == CUPS_ORDER_PLANAR;
        // Planar: a line is one plane and the page holds each plane's lines
        // in turn; banded: a line holds every plane.
        const uint64_t lineBytes = planar ? planeBytes : planeBytes * planes;
        const uint64_t lines = planar ? uint64_t{h.cupsHeight} * planes : h.cupsHeight;
        if (h.cupsBytesPerLine != lineBytes) {
            error = "page " + std::to_string(pages.size() + 1) + " has " + std::to_string(h.cupsBytesPerLine) +
                    " bytes a line where its width needs " + std::to_string(lineBytes);
            return false;
        }
        page.planes.assign(planes, PlaneCounts{});
        std::vector<uint8_t> line(lineBytes);
        for (uint64_t i = 0; i < lines; ++i) {
            if (cupsRasterReadPixels(in.get(), line.data(), h.cupsBytesPerLine) != h.cupsBytesPerLine) {
                error = "page " + std::to_string(pages.size() + 1) + " ends early";
                return false;
            }
            if (planar) {
                countLine(line.data(), h.cupsWidth, bits, page.planes[i / h.cupsHeight]);
            } else {
                for (unsigned k = 0; k < planes; ++k)
                    countLine(line.data() + k * planeBytes, h.cupsWidth, bits, page.planes[k]);
            }
        }
        pages.push_back(page);
    }
    return true;
}

}  // namespace inkdot::cups
