// inkdot chart: the built-in test chart as a PNG.
#include <algorithm>
#include <cctype>
#include <filesystem>

#include "cli/cli.h"
#include "cli/options.h"
#include "image/test_chart.h"

namespace inkdot::tools {

namespace {

// The chart is always PNG: a name that says otherwise (x.tif) is refused
// rather than filled with data its name denies.
bool namesPng(const std::string& path) {
    std::string ext = std::filesystem::path(path).extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return std::tolower(c); });
    return ext.empty() || ext == ".png";
}

constexpr OptionDef kChartOptions[] = {{"output", true}, {"width", true}, {"height", true}};
constexpr const char* kChartHelp =
    "usage: inkdot chart -o FILE.png [--width N] [--height N]\n"
    "\n"
    "Writes the test chart: gray ramp and steps, cyan/magenta/yellow and\n"
    "red/green/blue ramps, a hue sweep, skin tones and dark tones.\n"
    "  -o, --output FILE   the PNG to write; a name with another extension\n"
    "                      (FILE.tif, FILE.jpg) is refused\n"
    "  --width N           pixels across, 64..20000 (default 1200)\n"
    "  --height N          pixels down, 64..20000 (default 900)\n";
}  // namespace

int chartCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    ParsedArgs parsed;
    std::string error;
    long width = 1200, height = 900;
    bool ok = parseArgs(args, kChartOptions, parsed, error);
    if (ok && parsed.help) {
        out << kChartHelp;
        return kExitOk;
    }
    if (ok && !parsed.positional.empty()) {
        error = "chart takes no arguments besides its options";
        ok = false;
    }
    if (ok && !parsed.has("output")) {
        error = "chart needs -o FILE.png";
        ok = false;
    }
    if (ok && !namesPng(parsed.value("output", ""))) {
        error = "chart writes PNG only; name the output FILE.png, not " + parsed.value("output", "");
        ok = false;
    }
    if (ok && parsed.has("width")) ok = parseInt(parsed.value("width", ""), 64, 20000, "width", width, error);
    if (ok && parsed.has("height")) ok = parseInt(parsed.value("height", ""), 64, 20000, "height", height, error);
    if (!ok) {
        err << "inkdot chart: " << error << " (see inkdot chart --help)\n";
        return kExitUsage;
    }
    const std::string path = parsed.value("output", "");
    if (const auto parent = std::filesystem::path(path).parent_path(); !parent.empty()) {
        std::error_code ec;
        std::filesystem::create_directories(parent, ec);
    }
    if (!writeChart(path, static_cast<uint32_t>(width), static_cast<uint32_t>(height), error)) {
        err << "inkdot chart: " << error << "\n";
        return kExitFailed;
    }
    out << "wrote chart " << path << " (" << width << " x " << height << ")\n";
    return kExitOk;
}

}  // namespace inkdot::tools
