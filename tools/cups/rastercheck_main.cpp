// inkdot-rastercheck: checks a halftoned CUPS raster file (what rastertoinkdot
// writes) against what the print test expects, and prints each page's
// layout and per-plane dot density.
//
//   inkdot-rastercheck FILE [--pages N] [--width W] [--height H]
//       [--space cmyk|k] [--bits 1|2] [--order banded|planar]
//       [--reference IMAGE --quality draft|normal|high] [--tolerance T]
//
// With --reference, the image is halftoned directly by the engine with the
// settings the page shows, and every plane's coverage must come within T
// (default 0.03) of that reference's.
#include <fcntl.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "cups/page_plan.h"
#include "cups/raster_summary.h"
#include "image/image_reader.h"

namespace {

using namespace inkdot;
using namespace inkdot::cups;

const char* const kPlaneNames[4] = {"cyan", "magenta", "yellow", "black"};

// Coverage of each plane when the engine halftones the image itself.
bool referenceCoverage(const std::string& path, const PagePlan& pagePlan, std::vector<double>& coverage,
                       std::string& error) {
    auto image = tools::openImage(path, error);
    if (!image) return false;
    PagePlan plan = pagePlan;
    plan.halftone.inputWidth = image->width();
    auto pack = openDefaultPack(error);
    if (!pack) return false;
    auto job = Job::open(plan.colour, plan.halftone, *pack, error);
    if (!job) return false;
    std::vector<uint8_t> row(size_t{image->width()} * image->channels());
    std::vector<uint8_t> input(size_t{image->width()} * job->inputBytesPerPixel());
    std::vector<uint8_t> planes(job->planeCount() * job->planeStride());
    std::vector<PlaneCounts> counts(job->planeCount());
    for (uint32_t y = 0; y < image->height(); ++y) {
        if (!image->readRow(row.data(), error)) return false;
        for (uint32_t x = 0; x < image->width(); ++x) {
            const uint8_t* p = row.data() + size_t{x} * image->channels();
            if (plan.colour.mono) {
                // Luma weights in thousandths, rounded.
                input[x] = image->channels() == 1 ? p[0]
                                                  : static_cast<uint8_t>((299 * p[0] + 587 * p[1] + 114 * p[2] + 500) / 1000);
            } else {
                for (int c = 0; c < 3; ++c) input[size_t{x} * 3 + c] = image->channels() == 1 ? p[0] : p[c];
            }
        }
        if (!job->halftoneLine(input.data(), planes.data(), error)) return false;
        for (unsigned k = 0; k < job->planeCount(); ++k)
            countLine(planes.data() + k * job->planeStride(), job->outputWidth(), job->outputBits(), counts[k]);
    }
    const double full = double(image->width()) * image->height() * ((1u << job->outputBits()) - 1);
    coverage.clear();
    for (const PlaneCounts& c : counts) coverage.push_back(double(c.ink) / full);
    return true;
}

int usage() {
    std::fprintf(stderr,
                 "usage: inkdot-rastercheck FILE [--pages N] [--width W] [--height H] [--space cmyk|k]\n"
                 "       [--bits 1|2] [--order banded|planar] [--reference IMAGE --quality Q] [--tolerance T]\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return usage();
    std::map<std::string, std::string> want;
    for (int i = 2; i < argc; i += 2) {
        if (std::strncmp(argv[i], "--", 2) != 0 || i + 1 >= argc) return usage();
        want[argv[i] + 2] = argv[i + 1];
    }
    const int fd = ::open(argv[1], O_RDONLY);
    if (fd < 0) {
        std::fprintf(stderr, "inkdot-rastercheck: cannot open %s\n", argv[1]);
        return 1;
    }
    std::vector<PageSummary> pages;
    std::string error;
    const bool read = summariseRaster(fd, pages, error);
    ::close(fd);
    if (!read) {
        std::fprintf(stderr, "FAIL: %s\n", error.c_str());
        return 1;
    }

    int failures = 0;
    auto check = [&](bool ok, const std::string& what) {
        if (!ok) {
            std::printf("FAIL: %s\n", what.c_str());
            ++failures;
        }
    };
    auto wanted = [&](const char* key) { return want.count(key) ? want[key] : std::string(); };

    std::printf("%zu page%s\n", pages.size(), pages.size() == 1 ? "" : "s");
    if (!wanted("pages").empty()) check(std::to_string(pages.size()) == wanted("pages"), "page count");

    const double tolerance = wanted("tolerance").empty() ? 0.03 : std::atof(wanted("tolerance").c_str());
    std::vector<double> reference;
    for (size_t n = 0; n < pages.size(); ++n) {
        const PageSummary& page = pages[n];
        const cups_page_header2_t& h = page.header;
        const bool cmyk = h.cupsColorSpace == CUPS_CSPACE_CMYK;
        const bool planar = h.cupsColorOrder == CUPS_ORDER_PLANAR;
        std::printf("page %zu: %u x %u, %ux%u dpi, %s, %u bit%s, %s\n", n + 1, h.cupsWidth, h.cupsHeight,
                    h.HWResolution[0], h.HWResolution[1], cmyk ? "CMYK" : "K", h.cupsBitsPerColor,
                    h.cupsBitsPerColor == 1 ? "" : "s", planar ? "planar" : "banded");
        const std::string page_ = "page " + std::to_string(n + 1) + ": ";
        if (!wanted("width").empty()) check(std::to_string(h.cupsWidth) == wanted("width"), page_ + "width");
        if (!wanted("height").empty()) check(std::to_string(h.cupsHeight) == wanted("height"), page_ + "height");
        if (!wanted("space").empty()) check((cmyk ? "cmyk" : "k") == wanted("space"), page_ + "colour space");
        if (!wanted("bits").empty()) check(std::to_string(h.cupsBitsPerColor) == wanted("bits"), page_ + "bits");
        if (!wanted("order").empty()) check((planar ? "planar" : "banded") == wanted("order"), page_ + "order");

        if (!wanted("reference").empty() && reference.empty()) {
            FilterSettings settings;
            const std::string q = wanted("quality");
            settings.quality = q == "draft" ? Quality::Draft : q == "high" ? Quality::High : Quality::Normal;
            // The reference reads the image as the page's colour space says.
            cups_page_header2_t asInput = h;
            asInput.cupsColorSpace = cmyk ? CUPS_CSPACE_RGB : CUPS_CSPACE_W;
            asInput.cupsBitsPerColor = 8;
            asInput.cupsBitsPerPixel = cmyk ? 24 : 8;
            asInput.cupsColorOrder = CUPS_ORDER_CHUNKED;
            asInput.cupsBytesPerLine = h.cupsWidth * (cmyk ? 3 : 1);
            PagePlan plan;
            if (!planPage(asInput, settings, plan, error) ||
                !referenceCoverage(wanted("reference"), plan, reference, error)) {
                std::printf("FAIL: reference: %s\n", error.c_str());
                return 1;
            }
        }
        for (unsigned k = 0; k < page.planes.size(); ++k) {
            const double c = page.coverage(k);
            std::printf("  %-8s dots %.4f  coverage %.4f", page.planes.size() == 1 ? "black" : kPlaneNames[k],
                        double(page.planes[k].dots) / double(page.pixels()), c);
            if (k < reference.size()) {
                std::printf("  reference %.4f", reference[k]);
                check(std::fabs(c - reference[k]) <= tolerance,
                      page_ + (page.planes.size() == 1 ? "black" : kPlaneNames[k]) + " coverage");
            }
            std::printf("\n");
        }
    }
    std::printf("%s\n", failures == 0 ? "raster check passed" : "raster check FAILED");
    return failures == 0 ? 0 : 1;
}
