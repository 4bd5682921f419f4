// The settings of "inkdot print", parsed from its options.
#pragma once

#include <string>

#include "cli/options.h"
#include "image/colour_profile.h"
#include "inkdot/job.h"

namespace inkdot::tools {

struct PrintOptions {
    std::string input;
    std::string outputDir;
    std::string packFile;      // empty: the built-in pack
    ColourSettings colour;
    HalftoneSetup halftone;    // inputWidth is filled in from the image
    bool autoScale = true;     // keep the image's aspect on paper
    uint32_t previewWidth = 1000;
    std::string inputProfile;  // empty: the image's own profile, if any; kBuiltInSrgb: sRGB
    RenderingIntent intent = RenderingIntent::Perceptual;
};

// --input-profile sRGB names the built-in sRGB (a file of that name: ./sRGB).
inline constexpr const char* kBuiltInSrgb = "sRGB";

extern const OptionDef kPrintOptions[];
extern const size_t kPrintOptionCount;
extern const char* const kPrintHelp;

// "720x720", "1440x720", "360x720" or "720x360".
bool parseResolution(const std::string& text, Resolution& out);
// "ed", "dither" or "threshold".
bool parseMethod(const std::string& text, Method& out);

// Two-bit output is made at 720x720, 1440x720 and 360x720: the engine has no
// two-bit error spread for columns twice as dense as lines (720x360). False
// with a usage message for --bits 2 at 720x360.
bool checkDepthAtResolution(unsigned bits, Resolution r, std::string& error);

bool parsePrintOptions(const ParsedArgs& args, PrintOptions& out, std::string& error);

// With automatic scaling: printed columns per image column and printed lines
// per image line that keep the image square on paper.
HScale autoHScale(Resolution r);
unsigned autoLineRepeat(Resolution r);

}  // namespace inkdot::tools
