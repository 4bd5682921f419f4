// inkdot beside the tools a user would pick instead, in one run on one
// machine and one input: a deterministic synthetic photograph (default
// 4096 x 1024). Every figure is the median of several runs of library calls;
// no process is started. Throughput is in megapixels per second.
//
//   inkdot_compare [--width N] [--height N] [--reps N] [--magick-threads N] [--clock cpu|wall]
//
// Rows:
//   RGB->CMYK n^3    inkdot's tetrahedral interpolator on a CmLut built by the
//                    colour-management protocol, against a LittleCMS device
//                    link holding the same node values (its default 8-bit
//                    path, and the pipeline evaluated as given)
//   gray / CMYK      inkdot's one-bit kernels through Halftone, line by line,
//                    against ImageMagick's o8x8 ordered dither and
//                    Floyd-Steinberg to two levels
//   CMYK n-bit ...   with Gutenprint installed: inkdot's one- and two-bit
//                    colour kernels, from RGB and from ink bytes, against
//                    Gutenprint's dither algorithms, which take ink amounts
// The baseline column copies the task's input and output bytes once.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "bandwidth.h"
#include "cm/interpolate.h"
#include "inkdot_side.h"
#include "lcms_side.h"
#include "magick_side.h"
#include "synthetic_photo.h"
#include "timing.h"
#ifdef INKDOT_COMPARE_GUTENPRINT
#include "gutenprint_side.h"
#endif

namespace inkdot::compare {
namespace {

struct Options {
    uint32_t width = 4096;
    uint32_t height = 1024;
    unsigned reps = 5;
    unsigned magickThreads = 1;
};

struct Row {
    std::string task;
    std::string inkdot;  // what inkdot runs
    std::string peer;    // what the peer runs
    double inkdotSeconds;
    double peerSeconds;
    double baselineSeconds;
    std::string note;
};

double mpixPerSecond(double pixels, double s) { return s > 0 ? pixels / s / 1e6 : 0; }

std::string format(const char* fmt, double a, double b = 0, double c = 0) {
    char text[160];
    std::snprintf(text, sizeof text, fmt, a, b, c);
    return text;
}

std::string cpuName() {
    std::ifstream cpuinfo("/proc/cpuinfo");
    std::string line;
    while (std::getline(cpuinfo, line))
        if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
    return "unknown";
}

double inkFraction(const std::vector<uint8_t>& planes) {
    size_t bits = 0;
    for (uint8_t b : planes) bits += static_cast<size_t>(__builtin_popcount(b));
    return static_cast<double>(bits) / (8.0 * static_cast<double>(planes.size()));
}

// Largest and mean absolute difference between two ink images.
std::string difference(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b) {
    int most = 0;
    double sum = 0;
    for (size_t i = 0; i < a.size(); ++i) {
        const int d = std::abs(a[i] - b[i]);
        most = std::max(most, d);
        sum += d;
    }
    return format("max |diff| %.0f, mean %.3f (of 255)", most, sum / static_cast<double>(a.size()));
}

void printTable(const std::vector<Row>& rows, double pixels) {
    std::printf("\n%-30s %-22s %10s  %-34s %10s %8s %10s %9s\n", "task", "inkdot", "Mpx/s", "peer", "Mpx/s",
                "ratio", "baseline", "of base");
    std::printf("%s\n", std::string(142, '-').c_str());
    for (const Row& r : rows) {
        const double ink = mpixPerSecond(pixels, r.inkdotSeconds);
        const double peer = mpixPerSecond(pixels, r.peerSeconds);
        const double base = mpixPerSecond(pixels, r.baselineSeconds);
        std::printf("%-30s %-22s %10.1f  %-34s %10.1f %7.2fx %10.0f %8.1f%%\n", r.task.c_str(), r.inkdot.c_str(), ink,
                    r.peer.c_str(), peer, peer > 0 ? ink / peer : 0, base, base > 0 ? 100 * ink / base : 0);
        if (!r.note.empty()) std::printf("%32s%s\n", "", r.note.c_str());
    }
    std::printf("\nratio = inkdot throughput / peer throughput (above 1: inkdot is faster).\n"
                "of base = inkdot throughput as a share of the copy baseline for the same bytes.\n");
}

#ifdef INKDOT_COMPARE_GUTENPRINT
// Colour halftoning beside Gutenprint's dither algorithms. Gutenprint takes
// ink amounts; inkdot runs from the RGB image and from the ink amounts its
// own separation gives that image (inputFormat 4), and the peer gets the
// same ink amounts. Both sides read a 17-point plain separation.
void addGutenprintRows(const Options& o, const std::vector<uint8_t>& rgb, std::vector<Row>& rows) {
    const size_t n = static_cast<size_t>(o.width) * o.height;
    std::vector<uint8_t> ink(4 * n);
    inkOf(rgb.data(), n, ink.data());
    struct Task {
        const char* task;
        uint32_t method;
        uint32_t bits;
        std::vector<const char*> algorithms;
    };
    const Task tasks[] = {
        {"CMYK 1-bit ED", 1, 1, {"EvenTone", "HybridEvenTone", "Adaptive", "Floyd"}},
        {"CMYK 1-bit dither", 3, 1, {"Ordered", "VeryFast"}},
        {"CMYK 2-bit ED", 1, 2, {"EvenTone", "HybridEvenTone", "Adaptive"}},
        {"CMYK 2-bit dither", 3, 2, {"Ordered", "VeryFast"}},
    };
    for (const Task& t : tasks) {
        struct Side {
            const char* from;
            const uint8_t* pixels;
            double seconds = -1;
            std::string kernel;
            std::string note;
            double base = 0;
        };
        Side sides[] = {{"RGB", rgb.data(), -1, "", "", 0}, {"ink", ink.data(), -1, "", "", 0}};
        for (Side& side : sides) {
            const bool inkInput = side.pixels == ink.data();
            const HalftoneJob job(t.method, 1, o.width, separationLut(), t.bits, inkInput);
            std::vector<uint8_t> planes(static_cast<size_t>(o.height) * job.planesPerLine() * job.lineBytes());
            uint32_t rc = job.rc();
            if (rc == RC_OK) side.seconds = medianSeconds(o.reps, [&] { rc = job.run(side.pixels, o.height, planes.data()); });
            side.kernel = rc == RC_OK ? job.kernelName() : "(" + job.kernelName() + ")";
            side.note = rc == RC_OK ? format("set output bits: inkdot %.3f", inkFraction(planes))
                                    : "inkdot answered " + std::to_string(rc);
            if (rc != RC_OK) side.seconds = -1;
            side.base = bandwidthSeconds((inkInput ? 4 : 3) * n, planes.size(), o.reps);
        }
        for (const char* algorithm : t.algorithms) {
            GutenprintDither peer(algorithm, t.bits, o.width, o.height);
            const double seconds = peer.ok() ? medianOfTimed(o.reps, [&] { return peer.timedRun(ink); }) : -1;
            const std::string peerNote = peer.ok() ? format(", Gutenprint %.3f", peer.bitShare())
                                                   : std::string(", Gutenprint does not offer ") + algorithm;
            for (const Side& side : sides)
                rows.push_back({std::string(t.task) + " from " + side.from, side.kernel,
                                std::string("Gutenprint ") + algorithm + " (ink in)", side.seconds, seconds, side.base,
                                side.note + peerNote});
        }
    }
}
#endif

int run(const Options& o, const char* argv0) {
    const double pixels = static_cast<double>(o.width) * o.height;
    const size_t n = static_cast<size_t>(o.width) * o.height;
    std::printf("inkdot comparison: %u x %u synthetic photograph, median of %u runs, %s\n", o.width, o.height, o.reps,
                cpuName().c_str());
    std::printf("ImageMagick %u thread(s), LittleCMS and inkdot single-threaded; clock: %s time.\n", o.magickThreads,
                clockInUse() == Clock::cpu ? "process CPU" : "wall");

    const std::vector<uint8_t> rgb = bench::photoImage(3, o.width, o.height);
    const std::vector<uint8_t> gray = bench::photoImage(1, o.width, o.height);
    std::vector<Row> rows;
    double grayInk = 0;
    for (uint8_t v : gray) grayInk += 255 - v;
    std::printf("Mean ink of the gray image: %.3f (a halftone's dot share differs by its dot-gain correction).\n",
                grayInk / 255.0 / static_cast<double>(n));
    const double rgbToCmykBase = bandwidthSeconds(3 * n, 4 * n, o.reps);

    // Colour conversion: one table, two interpolators.
    std::vector<uint8_t> cmyk33;  // LittleCMS's result on the 33-point table: ImageMagick's CMYK input
    std::vector<uint8_t> inkCmyk(4 * n), peerCmyk(4 * n);
    for (uint8_t points : {18, 33}) {
        ColourManagement cm(points);
        if (cm.rc() != RC_OK) {
            std::fprintf(stderr, "colour-management protocol failed with %u\n", cm.rc());
            return 1;
        }
        const CmLut& lut = cm.lut();
        const double ink = medianSeconds(o.reps, [&] { interpolateRgb(lut, static_cast<uint32_t>(n), rgb.data(), inkCmyk.data()); });
        const std::string task = "RGB->CMYK " + std::to_string(points) + "^3";
        const std::string grid = LcmsLink::sameGrid(lut) ? "same grid" : "grid levels rounded to bytes";
        for (bool optimise : {true, false}) {
            if (!optimise && points != 33) continue;
            LcmsLink link(lut, optimise);
            if (!link.ok()) {
                std::fprintf(stderr, "LittleCMS refused the device link\n");
                return 1;
            }
            const double peer = medianSeconds(o.reps, [&] { link.run(rgb.data(), peerCmyk.data(), static_cast<uint32_t>(n)); });
            rows.push_back({task, "interpolateRgb", optimise ? "lcms2 cmsDoTransform" : "lcms2 cmsDoTransform NOOPTIMIZE",
                            ink, peer, rgbToCmykBase, grid + ": " + difference(inkCmyk, peerCmyk)});
            if (optimise && points == 33) cmyk33 = peerCmyk;
        }
    }
    const double lcms33 = rows[1].peerSeconds;

    // Halftoning.
    MagickSession magick(argv0, o.magickThreads);
    const ColourManagement cm33(33);
    struct Halftoning {
        const char* task;
        uint32_t method;
        uint32_t colourMode;
        MagickOp op;
        const char* peer;
    };
    const Halftoning tasks[] = {
        {"gray ordered dither", 3, 0, MagickOp::orderedO8x8, "IM OrderedPosterize o8x8"},
        {"gray error diffusion", 1, 0, MagickOp::floydSteinberg, "IM Quantize 2 gray FloydSteinberg"},
        {"CMYK ordered dither", 3, 1, MagickOp::orderedO8x8, "IM OrderedPosterize o8x8 (CMYK in)"},
        {"CMYK error diffusion", 1, 1, MagickOp::floydSteinberg, "IM Remap 16 inks FloydSteinberg"},
    };
    for (const Halftoning& t : tasks) {
        const bool colour = t.colourMode != 0;
        const HalftoneJob job(t.method, t.colourMode, o.width, colour ? cm33.lut() : monoLut());
        if (job.rc() != RC_OK) {
            std::fprintf(stderr, "%s: halftone protocol failed with %u\n", t.task, job.rc());
            return 1;
        }
        std::vector<uint8_t> planes(static_cast<size_t>(o.height) * job.planesPerLine() * job.lineBytes());
        const uint8_t* input = colour ? rgb.data() : gray.data();
        uint32_t rc = RC_OK;
        const double ink = medianSeconds(o.reps, [&] { rc = job.run(input, o.height, planes.data()); });
        MagickImage image(colour ? cmyk33.data() : gray.data(), o.width, o.height, colour);
        const double peer = image.ok() ? medianOfTimed(o.reps, [&] { return image.timedRun(t.op); }) : -1;
        const double base = bandwidthSeconds((colour ? 3 : 1) * n, planes.size(), o.reps);
        std::string note = rc == RC_OK ? format("ink coverage: inkdot %.3f, ", inkFraction(planes))
                                       : "inkdot kernel answered " + std::to_string(rc) + " (not on main yet); ";
        note += format("IM %.3f with %.0f levels a channel", image.inkCoverage(), image.distinctLevels());
        rows.push_back({t.task, rc == RC_OK ? job.kernelName() : "(" + job.kernelName() + ")", t.peer,
                        rc == RC_OK ? ink : -1, peer, base, note});
        if (colour) {
            rows.push_back({std::string(t.task) + " from RGB", job.kernelName(), "lcms2 33^3 + the IM call above",
                            rc == RC_OK ? ink : -1, peer > 0 ? lcms33 + peer : -1, base,
                            "inkdot converts and halftones in one pass; the peer needs both libraries"});
        }
    }
#ifdef INKDOT_COMPARE_GUTENPRINT
    addGutenprintRows(o, rgb, rows);
#endif
    printTable(rows, pixels);
    return 0;
}

}  // namespace
}  // namespace inkdot::compare

int main(int argc, char** argv) {
    inkdot::compare::Options o;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string flag = argv[i];
        const auto value = static_cast<unsigned>(std::strtoul(argv[i + 1], nullptr, 10));
        if (flag == "--width") o.width = value & ~7u;  // whole output bytes per line
        else if (flag == "--height") o.height = value;
        else if (flag == "--reps") o.reps = value;
        else if (flag == "--magick-threads") o.magickThreads = value;
        else if (flag == "--clock") inkdot::compare::clockInUse() = argv[i + 1] == std::string("wall") ? inkdot::compare::Clock::wall : inkdot::compare::Clock::cpu;
        else {
            std::fprintf(stderr, "unknown option %s\n", argv[i]);
            return 2;
        }
    }
    if (o.width == 0 || o.height == 0 || o.reps == 0) {
        std::fprintf(stderr, "width, height and reps must be positive\n");
        return 2;
    }
    return inkdot::compare::run(o, argv[0]);
}
