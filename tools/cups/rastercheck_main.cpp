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
        tools::toJobInput(row.data(), image->channels(), image->width(), plan.colour.mono, input.data());
        if (!job->halftoneLine(input.data(), planes.data(), error)) return false;
        for (unsigned k = 0; k < job->planeCount(); ++k)
            countLine(planes.data() + k * job->planeStride(), job->outputWidth(), job->outputBits(), counts[k]);
    }
    const double full = double(image->width()) * image->height() * ((1u << job->outputBits()) - 1);
    coverage.clear();
    for (const PlaneCounts& c : counts) coverage.push_back(double(c.ink) / full);
    return true;
}

// What the command line asks of the raster, and the failures found.
struct Checks {
    std::map<std::string, std::string> want;
    int failures = 0;

    std::string wanted(const char* key) const {
        const auto it = want.find(key);
        return it == want.end() ? std::string() : it->second;
    }
    // Checks `got` against --key when it was given.
    void expect(const char* key, const std::string& got, const std::string& what) {
        if (!wanted(key).empty()) check(got == wanted(key), what);
    }
    void check(bool ok, const std::string& what) {
        if (ok) return;
        std::printf("FAIL: %s\n", what.c_str());
        ++failures;
    }
};

// The engine's own coverage of --reference, halftoned with the settings the
// page shows (read as the page's colour space says).
bool pageReference(const Checks& checks, const cups_page_header2_t& h, std::vector<double>& reference,
                   std::string& error) {
    FilterSettings settings;
    const std::string q = checks.wanted("quality");
    settings.quality = q == "draft" ? Quality::Draft : q == "high" ? Quality::High : Quality::Normal;
    const bool cmyk = h.cupsColorSpace == CUPS_CSPACE_CMYK;
    cups_page_header2_t asInput = h;
    asInput.cupsColorSpace = cmyk ? CUPS_CSPACE_RGB : CUPS_CSPACE_W;
    asInput.cupsBitsPerColor = 8;
    asInput.cupsBitsPerPixel = cmyk ? 24 : 8;
    asInput.cupsColorOrder = CUPS_ORDER_CHUNKED;
    asInput.cupsBytesPerLine = h.cupsWidth * (cmyk ? 3 : 1);
    PagePlan plan;
    return planPage(asInput, settings, plan, error) &&
           referenceCoverage(checks.wanted("reference"), plan, reference, error);
}

// Prints page `n` and checks it; false when the reference cannot be made.
bool checkPage(Checks& checks, size_t n, const PageSummary& page, std::vector<double>& reference) {
    const cups_page_header2_t& h = page.header;
    const bool cmyk = h.cupsColorSpace == CUPS_CSPACE_CMYK;
    const bool planar = h.cupsColorOrder == CUPS_ORDER_PLANAR;
    std::printf("page %zu: %u x %u, %ux%u dpi, %s, %u bit%s, %s\n", n + 1, h.cupsWidth, h.cupsHeight,
                h.HWResolution[0], h.HWResolution[1], cmyk ? "CMYK" : "K", h.cupsBitsPerColor,
                h.cupsBitsPerColor == 1 ? "" : "s", planar ? "planar" : "banded");
    const std::string name = "page " + std::to_string(n + 1) + ": ";
    checks.expect("width", std::to_string(h.cupsWidth), name + "width");
    checks.expect("height", std::to_string(h.cupsHeight), name + "height");
    checks.expect("space", cmyk ? "cmyk" : "k", name + "colour space");
    checks.expect("bits", std::to_string(h.cupsBitsPerColor), name + "bits");
    checks.expect("order", planar ? "planar" : "banded", name + "order");

    std::string error;
    if (!checks.wanted("reference").empty() && reference.empty() && !pageReference(checks, h, reference, error)) {
        std::printf("FAIL: reference: %s\n", error.c_str());
        return false;
    }
    const double tolerance = checks.wanted("tolerance").empty() ? 0.03 : std::atof(checks.wanted("tolerance").c_str());
    for (unsigned k = 0; k < page.planes.size(); ++k) {
        const char* plane = page.planes.size() == 1 ? "black" : kPlaneNames[k];
        const double c = page.coverage(k);
        std::printf("  %-8s dots %.4f  coverage %.4f", plane, double(page.planes[k].dots) / double(page.pixels()), c);
        if (k < reference.size()) {
            std::printf("  reference %.4f", reference[k]);
            checks.check(std::fabs(c - reference[k]) <= tolerance, name + plane + " coverage");
        }
        std::printf("\n");
    }
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
    Checks checks;
    for (int i = 2; i < argc; i += 2) {
        if (std::strncmp(argv[i], "--", 2) != 0 || i + 1 >= argc) return usage();
        checks.want[argv[i] + 2] = argv[i + 1];
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
    std::printf("%zu page%s\n", pages.size(), pages.size() == 1 ? "" : "s");
    checks.expect("pages", std::to_string(pages.size()), "page count");
    std::vector<double> reference;
    for (size_t n = 0; n < pages.size(); ++n)
        if (!checkPage(checks, n, pages[n], reference)) return 1;
    std::printf("%s\n", checks.failures == 0 ? "raster check passed" : "raster check FAILED");
    return checks.failures == 0 ? 0 : 1;
}
