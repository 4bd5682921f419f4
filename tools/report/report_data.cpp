#include "report/report_data.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <sstream>

#include "report/csv_file.h"
#include "report/power_spectrum.h"

namespace inkdot::tools {
namespace {

constexpr double kMmPerInch = 25.4;

// A ramp drives one ink (or gray) from paper white (255) to full (0).
struct Ramp {
    const char* name;
    Rgb (*colour)(uint8_t v);
};

const Ramp kColourRamps[] = {
    {"gray", [](uint8_t v) { return Rgb{v, v, v}; }},
    {"cyan", [](uint8_t v) { return Rgb{v, 255, 255}; }},
    {"magenta", [](uint8_t v) { return Rgb{255, v, 255}; }},
    {"yellow", [](uint8_t v) { return Rgb{255, 255, v}; }},
};

const char* const kColourInks[4] = {"cyan", "magenta", "yellow", "black"};

std::string hexDigits(unsigned v) {
    static const char kDigits[] = "0123456789abcdef";
    return {kDigits[v >> 4], kDigits[v & 15]};
}

std::string joinLevels(const std::vector<unsigned>& levels) {
    std::string text;
    for (unsigned v : levels) text += (text.empty() ? "" : " ") + std::to_string(v);
    return text;
}

// Everything measured for one configuration, filled method by method.
class ReportRun {
public:
    ReportRun(const ReportParams& params, const ReportPlan& plan, const BlockSource& pack, std::ostream& log)
        : params_(params), plan_(plan), pack_(pack), log_(log), dpi_(resolutionDpi(params.resolution)),
          tone_("method,ramp,level,ink,none,small,medium,large,dotted,coverage"),
          spectrum_("method,level,coverage,dotted,frequency,power,anisotropy,samples"),
          flat_("method,level,coverage,dotted,principal_frequency,low_power_share,anisotropy_db,windows"),
          texture_("method,patch,level,row,codes") {
        for (unsigned v = 0; v < 255; v += plan.rampStep) levels_.push_back(v);
        levels_.push_back(255);
    }

    bool measure(Method method, bool first, std::string& error) {
        const HalftoneSetup setup{method, params_.outputBits, params_.resolution, HScale::x1, 0};
        log_ << "  " << methodName(method) << ": tone ramps" << std::flush;
        bool done = measureTone(setup, first, error);
        if (done) log_ << ", flat patches" << std::flush;
        done = done && measureFlat(setup, error);
        if (done) log_ << ", texture" << std::flush;
        done = done && measureTexture(setup, error);
        log_ << (done ? "\n" : ": failed\n");  // the progress line ends either way
        return done;
    }

    bool save(const std::string& dir, const std::vector<Method>& methods, std::string& error) {
        CsvFile config("key,value");
        std::string names;
        for (Method m : methods) names += (names.empty() ? "" : " ") + std::string(methodName(m));
        config.row("methods", names);
        config.row("bits", params_.outputBits);
        config.row("resolution", resolutionName(params_.resolution));
        config.row("dpi_x", dpi_.x);
        config.row("dpi_y", dpi_.y);
        config.row("colour", params_.mono ? "mono" : "colour");
        config.row("pack", params_.packName);
        config.row("gamma", params_.colour.gamma / 100.0);
        config.row("small_ink", params_.amounts.small);
        config.row("medium_ink", params_.amounts.medium);
        config.row("spectrum_ink", params_.mono ? "black" : "cyan");
        config.row("flat_levels", joinLevels(flatLevels_));
        config.row("texture_levels", joinLevels(textureLevels_));
        config.row("spectrum_window", plan_.spectrumWindow);
        config.row("crop_width", cropWidth());
        config.row("crop_height", cropHeight());
        const std::filesystem::path base(dir);
        return config.save((base / "config.csv").string(), error) && tone_.save((base / "tone.csv").string(), error) &&
               spectrum_.save((base / "spectrum.csv").string(), error) &&
               flat_.save((base / "flat.csv").string(), error) && texture_.save((base / "texture.csv").string(), error);
    }

private:
    std::span<const Ramp> ramps() const { return params_.mono ? std::span(kColourRamps, 1) : std::span(kColourRamps); }
    const char* inkName(unsigned plane) const { return params_.mono ? "black" : kColourInks[plane]; }
    // The flat patches show one ink alone: cyan (its ramp) in colour, black in mono.
    const Ramp& flatRamp() const { return params_.mono ? kColourRamps[0] : kColourRamps[1]; }
    uint32_t cropWidth() const { return plan_.crop * dpi_.x / std::min(dpi_.x, dpi_.y); }
    uint32_t cropHeight() const { return plan_.crop * dpi_.y / std::min(dpi_.x, dpi_.y); }

    bool measureTone(const HalftoneSetup& setup, bool first, std::string& error) {
        std::vector<double> flatInk, grayDarkest;
        for (const Ramp& ramp : ramps()) {
            std::vector<Rgb> colours;
            for (unsigned v : levels_) colours.push_back(ramp.colour(static_cast<uint8_t>(v)));
            std::vector<PrintedPatch> patches;
            if (!printFlatPatches(params_.colour, setup, pack_, colours, plan_.tone, patches, error)) return false;
            for (size_t i = 0; i < patches.size(); ++i) {
                double darkest = 0.0;
                for (unsigned p = 0; p < patches[i].planes; ++p) {
                    const DotCounts c = countPlane(patches[i], p);
                    const double coverage = c.coverage(params_.amounts);
                    tone_.row(methodName(setup.method), ramp.name, levels_[i], inkName(p), c.share(0), c.share(1),
                              c.share(2), c.share(3), c.dotted(), coverage);
                    darkest = std::max(darkest, coverage);
                    if (&ramp == &flatRamp() && p == 0) flatInk.push_back(coverage);
                }
                if (&ramp == &kColourRamps[0]) grayDarkest.push_back(darkest);
            }
        }
        // The first method's tone response places the flat and texture patches;
        // every method then prints the same input levels.
        if (first) {
            const auto place = [this](const std::vector<double>& targets, const std::vector<double>& coverage,
                                      std::vector<unsigned>& out) {
                for (double t : targets) {
                    const unsigned v = nearestLevel(levels_, coverage, t);
                    if (std::find(out.begin(), out.end(), v) == out.end()) out.push_back(v);  // coarse ramps repeat levels
                }
            };
            place(plan_.flatTargets, flatInk, flatLevels_);
            for (double t : plan_.textureTargets) textureLevels_.push_back(nearestLevel(levels_, grayDarkest, t));
        }
        return true;
    }

    bool measureFlat(const HalftoneSetup& setup, std::string& error) {
        std::vector<Rgb> colours;
        for (unsigned v : flatLevels_) colours.push_back(flatRamp().colour(static_cast<uint8_t>(v)));
        std::vector<PrintedPatch> patches;
        if (!printFlatPatches(params_.colour, setup, pack_, colours, plan_.flat, patches, error)) return false;
        const double size = plan_.spectrumWindow;
        // One step of the transform index is dpi / size cycles per inch.
        const double unitX = dpi_.x / kMmPerInch / size, unitY = dpi_.y / kMmPerInch / size;
        const double fullCircle = std::min(unitX, unitY) * size / 2;  // annuli beyond are cut by the corners
        for (size_t i = 0; i < patches.size(); ++i) {
            // The flat ink is plane 0 in both modes: cyan of C M Y K, or the black plane.
            const DotCounts counts = countPlane(patches[i], 0);
            SpectrumAccumulator accumulator(plan_.spectrumWindow, unitX, unitY);
            addPlaneWindows(patches[i], 0, params_.amounts, accumulator);
            const RadialSpectrum s = accumulator.result();
            const double coverage = counts.coverage(params_.amounts);
            const double fg = principalFrequency(counts.dotted(), dpi_);
            double total = 0.0, low = 0.0, anisotropyDb = 0.0;
            unsigned circles = 0;
            for (size_t a = 0; a < s.frequency.size(); ++a) {
                spectrum_.row(methodName(setup.method), flatLevels_[i], coverage, counts.dotted(), s.frequency[a],
                              s.power[a], s.anisotropy[a], s.samples[a]);
                const double energy = s.power[a] * s.samples[a];
                total += energy;
                if (s.frequency[a] < fg / 2) low += energy;
                if (s.frequency[a] <= fullCircle && s.anisotropy[a] > 0.0) {
                    anisotropyDb += 10.0 * std::log10(s.anisotropy[a]);
                    ++circles;
                }
            }
            flat_.row(methodName(setup.method), flatLevels_[i], coverage, counts.dotted(), fg,
                      total > 0.0 ? low / total : 0.0, circles > 0 ? anisotropyDb / circles : 0.0, s.windows);
        }
        return true;
    }

    bool measureTexture(const HalftoneSetup& setup, std::string& error) {
        // Named for the default targets: light, middle and dark.
        static const char* const kPatchNames[] = {"light", "middle", "dark"};
        std::vector<Rgb> colours;
        for (unsigned v : textureLevels_) colours.push_back(kColourRamps[0].colour(static_cast<uint8_t>(v)));
        const uint32_t w = cropWidth(), h = cropHeight();
        PatchLayout layout{std::max<uint32_t>(2 * w, 128), plan_.flat.runIn, h};
        std::vector<PrintedPatch> patches;
        if (!printFlatPatches(params_.colour, setup, pack_, colours, layout, patches, error)) return false;
        for (size_t i = 0; i < patches.size(); ++i) {
            const PrintedPatch& patch = patches[i];
            const uint32_t left = (patch.width - w) / 2;
            for (uint32_t y = 0; y < h; ++y) {
                std::string codes;
                codes.reserve(size_t{w} * 2);
                for (uint32_t x = left; x < left + w; ++x) {
                    // Two bits per ink, C M Y K from the bottom; a mono plane is black.
                    unsigned packed = 0;
                    for (unsigned p = 0; p < patch.planes; ++p) {
                        unsigned code = dotCode(patch.line(p, y), x, patch.bits);
                        if (patch.bits == 1 && code != 0) code = 3;  // a one-bit dot is a large dot
                        packed |= code << (2 * (params_.mono ? 3 : p));
                    }
                    codes += hexDigits(packed);
                }
                texture_.row(methodName(setup.method), i < 3 ? kPatchNames[i] : "patch", textureLevels_[i], y, codes);
            }
        }
        return true;
    }

    const ReportParams& params_;
    const ReportPlan& plan_;
    const BlockSource& pack_;
    std::ostream& log_;
    Dpi dpi_;
    std::vector<unsigned> levels_;
    std::vector<unsigned> flatLevels_, textureLevels_;
    CsvFile tone_, spectrum_, flat_, texture_;
};

}  // namespace

std::vector<Method> reportMethods(Method chosen, unsigned outputBits) {
    std::vector<Method> methods{chosen};
    for (Method m : {Method::ErrorDiffusion, Method::Dither, Method::Threshold}) {
        if (m == chosen || (m == Method::Threshold && outputBits != 1)) continue;
        methods.push_back(m);
    }
    return methods;
}

const char* methodName(Method m) {
    switch (m) {
        case Method::ErrorDiffusion: return "ed";
        case Method::Dither: return "dither";
        case Method::Threshold: return "threshold";
    }
    return "?";
}

unsigned nearestLevel(const std::vector<unsigned>& levels, const std::vector<double>& coverage, double target) {
    size_t best = 0;
    for (size_t i = 1; i < levels.size() && i < coverage.size(); ++i)
        if (std::abs(coverage[i] - target) < std::abs(coverage[best] - target)) best = i;
    return levels.empty() ? 0 : levels[best];
}

double principalFrequency(double dotted, Dpi dpi) {
    const double minority = std::min(dotted, 1.0 - dotted);
    // Minority pixels at share g sit about 1 / sqrt(g) pixel pitches apart;
    // the pitch of a pixel that is not square is the root of its area.
    const double pixelsPerMm = std::sqrt(static_cast<double>(dpi.x) * dpi.y) / kMmPerInch;
    return std::sqrt(minority) * pixelsPerMm;
}

bool writeReportData(const ReportParams& params, const ReportPlan& plan, const BlockSource& pack,
                     const std::string& dir, std::ostream& log, std::string& error) {
    const std::vector<Method> methods = reportMethods(params.method, params.outputBits);
    ReportRun run(params, plan, pack, log);
    for (size_t i = 0; i < methods.size(); ++i)
        if (!run.measure(methods[i], i == 0, error)) return false;
    return run.save(dir, methods, error);
}

}  // namespace inkdot::tools
