#include "cli/print_options.h"

#include <array>
#include <cstdlib>
#include <optional>
#include <sstream>

namespace inkdot::tools {

const OptionDef kPrintOptions[] = {
    {"output", true},     {"method", true},     {"bits", true},       {"resolution", true},
    {"mono", false},      {"colour", false},    {"color", false},     {"brightness", true},
    {"contrast", true},   {"saturation", true}, {"gamma", true},      {"offset-r", true},
    {"offset-g", true},   {"offset-b", true},   {"ink-weights", true}, {"hscale", true},
    {"pack", true},       {"preview-width", true}, {"input-profile", true}, {"intent", true},
};
const size_t kPrintOptionCount = sizeof kPrintOptions / sizeof kPrintOptions[0];

const char* const kPrintHelp =
    "usage: inkdot print IN -o OUTDIR [options]\n"
    "\n"
    "Halftones IN (PNG, PNM P5/P6 or TIFF; 8 or 16 bits; gray or RGB; alpha is\n"
    "composited over white) and writes into OUTDIR one file per ink plane\n"
    "(NAME-cyan/-magenta/-yellow/-black: .pbm for one bit, a four-level .pgm for\n"
    "two bits, 3 - dot size) and NAME-preview.png, a picture of the printed page.\n"
    "\n"
    "options:\n"
    "  -o, --output DIR         output directory (made if missing)\n"
    "  --method ed|dither|threshold   error diffusion (default), matrix dither,\n"
    "                           fixed threshold (one bit only)\n"
    "  --bits 1|2               dots per pixel: 1 on/off (default), 2 small/medium/large\n"
    "                           (2 at 720x720, 1440x720 and 360x720, not at 720x360)\n"
    "  --resolution RES         720x720 (default), 1440x720, 360x720 or 720x360 dpi\n"
    "  --mono | --colour        black ink only, or C M Y K (default)\n"
    "  --brightness N           -50..50 (default 0)\n"
    "  --contrast N             -50..50 (default 0)\n"
    "  --saturation N           -50..50 (default 0)\n"
    "  --gamma G                1.00..3.00 (default 1.50)\n"
    "  --offset-r/-g/-b N       -50..50, added to the red, green or blue tone curve\n"
    "  --ink-weights C,M,Y,K    30..70 each, 50 = nominal: more or less of an ink\n"
    "  --hscale auto|half|1..5  printed columns per image column; auto (default)\n"
    "                           keeps the image square on paper\n"
    "  --pack FILE              resource pack (default: the built-in pack)\n"
    "  --preview-width N        widest preview in pixels (default 1000)\n"
    "  --input-profile FILE|sRGB\n"
    "                           ICC profile of IN, in place of the one it carries;\n"
    "                           sRGB names the built-in sRGB (./sRGB is a file).\n"
    "                           Untagged images are taken as sRGB. A profile\n"
    "                           embedded in IN (PNG iCCP or TIFF ICC tag) that\n"
    "                           cannot be used stops the print, in PNG and TIFF\n"
    "                           alike; --input-profile replaces it\n"
    "  --intent perceptual|relative|saturation|absolute\n"
    "                           rendering intent into device RGB (default perceptual)\n";

bool parseResolution(const std::string& text, Resolution& out) {
    for (Resolution r : {Resolution::R720x720, Resolution::R1440x720, Resolution::R360x720, Resolution::R720x360}) {
        if (text == resolutionName(r)) {
            out = r;
            return true;
        }
    }
    return false;
}

bool parseMethod(const std::string& text, Method& out) {
    if (text == "ed") out = Method::ErrorDiffusion;
    else if (text == "dither") out = Method::Dither;
    else if (text == "threshold") out = Method::Threshold;
    else return false;
    return true;
}

bool checkDepthAtResolution(unsigned bits, Resolution r, std::string& error) {
    if (bits == 2 && r == Resolution::R720x360) {
        error = "--bits 2 is not available at 720x360; two-bit output is made at 720x720, 1440x720 and 360x720";
        return false;
    }
    return true;
}

bool parseHalftoneChoice(const ParsedArgs& args, Method& method, unsigned& outputBits, Resolution& resolution,
                         std::string& error) {
    const std::string methodText = args.value("method", "ed");
    if (!parseMethod(methodText, method)) {
        error = "--method must be ed, dither or threshold, not '" + methodText + "'";
        return false;
    }
    const std::string bits = args.value("bits", "1");
    if (bits != "1" && bits != "2") {
        error = "--bits must be 1 or 2, not '" + bits + "'";
        return false;
    }
    outputBits = bits == "2" ? 2 : 1;
    if (outputBits == 2 && method == Method::Threshold) {
        error = "--method threshold gives one-bit output only; use --bits 1";
        return false;
    }
    const std::string resolutionText = args.value("resolution", "720x720");
    if (!parseResolution(resolutionText, resolution)) {
        error = "--resolution must be 720x720, 1440x720, 360x720 or 720x360, not '" + resolutionText + "'";
        return false;
    }
    return checkDepthAtResolution(outputBits, resolution, error);
}

namespace {

bool parseSetting(const ParsedArgs& args, const char* name, int& out, std::string& error) {
    if (!args.has(name)) return true;
    long v = 0;
    if (!parseInt(args.value(name, ""), -50, 50, name, v, error)) return false;
    out = static_cast<int>(v);
    return true;
}

// Gamma as a decimal with up to two places, in hundredths.
bool parseGamma(const std::string& text, int& out, std::string& error) {
    char* end = nullptr;
    const double g = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !(g >= 1.0 && g <= 3.0)) {
        error = "--gamma must be a number from 1.00 to 3.00, not '" + text + "'";
        return false;
    }
    out = static_cast<int>(g * 100.0 + 0.5);
    return true;
}

// --ink-weights C,M,Y,K: four values from 30 to 70.
bool parseInkWeights(const std::string& text, std::optional<std::array<uint8_t, 4>>& out, std::string& error) {
    std::stringstream list(text);
    std::string item;
    std::array<uint8_t, 4> weights{};
    int n = 0;
    for (; std::getline(list, item, ','); ++n) {
        long v = 0;
        if (n < 4 && !parseInt(item, 30, 70, "ink-weights", v, error)) return false;
        if (n < 4) weights[n] = static_cast<uint8_t>(v);
    }
    if (n == 4) {
        out = weights;
        return true;
    }
    error = "--ink-weights takes four values: C,M,Y,K";
    return false;
}

// --hscale auto|half|1..5; auto follows the resolution, and repeats lines too.
bool parseHScale(const std::string& hscale, PrintOptions& out, std::string& error) {
    out.autoScale = hscale == "auto";
    if (out.autoScale) out.halftone.hscale = autoHScale(out.halftone.resolution);
    else if (hscale == "half") out.halftone.hscale = HScale::Half;
    else if (hscale.size() == 1 && hscale[0] >= '1' && hscale[0] <= '5')
        out.halftone.hscale = static_cast<HScale>(hscale[0] - '0');
    else {
        error = "--hscale must be auto, half or 1 to 5, not '" + hscale + "'";
        return false;
    }
    return true;
}

}  // namespace

HScale autoHScale(Resolution r) {
    // Columns narrower than lines are high: print each image column twice.
    return (r == Resolution::R1440x720 || r == Resolution::R720x360) ? HScale::x2 : HScale::x1;
}

unsigned autoLineRepeat(Resolution r) { return r == Resolution::R360x720 ? 2 : 1; }

bool parsePrintOptions(const ParsedArgs& args, PrintOptions& out, std::string& error) {
    if (args.positional.size() != 1) {
        error = args.positional.empty() ? "print needs an input image" : "print takes one input image";
        return false;
    }
    out.input = args.positional[0];
    out.outputDir = args.value("output", "");
    if (out.outputDir.empty()) {
        error = "print needs -o OUTDIR";
        return false;
    }
    out.packFile = args.value("pack", "");

    HalftoneSetup& h = out.halftone;
    if (!parseHalftoneChoice(args, h.method, h.outputBits, h.resolution, error)) return false;
    if (args.has("mono") && (args.has("colour") || args.has("color"))) {
        error = "choose either --mono or --colour";
        return false;
    }
    out.colour.mono = args.has("mono");

    ColourSettings& c = out.colour;
    if (!parseSetting(args, "brightness", c.brightness, error) || !parseSetting(args, "contrast", c.contrast, error) ||
        !parseSetting(args, "saturation", c.saturation, error) || !parseSetting(args, "offset-r", c.offsetR, error) ||
        !parseSetting(args, "offset-g", c.offsetG, error) || !parseSetting(args, "offset-b", c.offsetB, error))
        return false;
    if (args.has("gamma") && !parseGamma(args.value("gamma", ""), c.gamma, error)) return false;

    if (args.has("ink-weights") && !parseInkWeights(args.value("ink-weights", ""), c.inkWeights, error))
        return false;
    if (!parseHScale(args.value("hscale", "auto"), out, error)) return false;

    out.inputProfile = args.value("input-profile", "");
    const std::string intent = args.value("intent", "perceptual");
    if (!parseRenderingIntent(intent, out.intent)) {
        error = "--intent must be perceptual, relative, saturation or absolute, not '" + intent + "'";
        return false;
    }

    if (args.has("preview-width")) {
        long w = 0;
        if (!parseInt(args.value("preview-width", ""), 16, 20000, "preview-width", w, error)) return false;
        out.previewWidth = static_cast<uint32_t>(w);
    }
    return true;
}

}  // namespace inkdot::tools
