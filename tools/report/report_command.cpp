// inkdot report: prints synthetic targets through the engine with every
// halftoning method, writes the measurements as CSV files and makes the
// report page from them with tools/report_plots.py.
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "cli/cli.h"
#include "cli/options.h"
#include "cli/print_options.h"
#include "report/report_data.h"
#include "report/report_page.h"

namespace inkdot::tools {
namespace {

constexpr OptionDef kReportOptions[] = {
    {"output", true}, {"method", true}, {"bits", true},        {"resolution", true},
    {"mono", false},  {"pack", true},   {"dot-amounts", true}, {"quick", false},
    {"csv", false},
};

constexpr const char* kReportHelp =
    "usage: inkdot report -o OUTDIR [options]\n"
    "\n"
    "Prints synthetic targets (gray and primary ramps, flat patches) through the\n"
    "engine with every halftoning method of the configuration and measures the\n"
    "dots. Writes into OUTDIR config.csv, tone.csv (coverage per ink against\n"
    "input level), spectrum.csv and flat.csv (power spectrum and anisotropy of\n"
    "flat patches) and texture.csv (crops of light, middle and dark patches),\n"
    "and from them the page OUTDIR/report.html with the plotting script\n"
    "report_plots.py (needs python3-matplotlib and python3-numpy).\n"
    "\n"
    "options:\n"
    "  -o, --output DIR         output directory (made if missing)\n"
    "  --method ed|dither|threshold   the method shown first (default ed);\n"
    "                           every other method of the depth follows\n"
    "  --bits 1|2               dots per pixel (default 1; 2 not at 720x360)\n"
    "  --resolution RES         720x720 (default), 1440x720, 360x720 or 720x360\n"
    "  --mono                   black ink only\n"
    "  --pack FILE              resource pack (default: the built-in pack)\n"
    "  --dot-amounts S,M        ink of a small and a medium dot relative to a\n"
    "                           large one (default 0.35,0.65, as the built-in pack)\n"
    "  --quick                  small targets: a rough report in a moment\n"
    "  --csv                    the measurements only, no page\n";

bool parseAmount(const std::string& text, double& out) {
    char* end = nullptr;
    out = std::strtod(text.c_str(), &end);
    return !text.empty() && *end == '\0' && out > 0.0 && out <= 1.0;
}

bool parseReportOptions(const ParsedArgs& args, ReportParams& params, ReportPlan& plan, std::string& dir,
                        std::string& packFile, std::string& error) {
    if (!args.positional.empty()) {
        error = "report takes no input file";
        return false;
    }
    dir = args.value("output", "");
    if (dir.empty()) {
        error = "report needs -o OUTDIR";
        return false;
    }
    const std::string method = args.value("method", "ed");
    if (!parseMethod(method, params.method)) {
        error = "--method must be ed, dither or threshold, not '" + method + "'";
        return false;
    }
    const std::string bits = args.value("bits", "1");
    if (bits != "1" && bits != "2") {
        error = "--bits must be 1 or 2, not '" + bits + "'";
        return false;
    }
    params.outputBits = bits == "2" ? 2 : 1;
    if (params.outputBits == 2 && params.method == Method::Threshold) {
        error = "--method threshold gives one-bit output only; use --bits 1";
        return false;
    }
    const std::string resolution = args.value("resolution", "720x720");
    if (!parseResolution(resolution, params.resolution)) {
        error = "--resolution must be 720x720, 1440x720, 360x720 or 720x360, not '" + resolution + "'";
        return false;
    }
    if (!checkDepthAtResolution(params.outputBits, params.resolution, error)) return false;
    params.mono = params.colour.mono = args.has("mono");
    packFile = args.value("pack", "");
    if (!packFile.empty()) params.packName = std::filesystem::path(packFile).filename().string();
    if (args.has("dot-amounts")) {
        const std::string text = args.value("dot-amounts", "");
        const size_t comma = text.find(',');
        if (comma == std::string::npos || !parseAmount(text.substr(0, comma), params.amounts.small) ||
            !parseAmount(text.substr(comma + 1), params.amounts.medium)) {
            error = "--dot-amounts takes two numbers above 0 and at most 1: SMALL,MEDIUM";
            return false;
        }
    }
    if (args.has("quick")) {
        plan.tone = {128, 16, 32};
        plan.rampStep = 32;
        plan.flat = {128, 32, 128};
        plan.spectrumWindow = 64;
        plan.crop = 48;
    }
    return true;
}

}  // namespace

int reportCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    ParsedArgs parsed;
    ReportParams params;
    ReportPlan plan;
    std::string dir, packFile, error;
    if (!parseArgs(args, kReportOptions, parsed, error) ||
        (!parsed.help && !parseReportOptions(parsed, params, plan, dir, packFile, error))) {
        err << "inkdot report: " << error << " (see inkdot report --help)\n";
        return kExitUsage;
    }
    if (parsed.help) {
        out << kReportHelp;
        return kExitOk;
    }
    std::unique_ptr<BlockSource> pack = packFile.empty() ? openDefaultPack(error) : openPackFile(packFile, error);
    std::error_code ec;
    if (pack) std::filesystem::create_directories(dir, ec);
    if (pack && ec) error = "cannot make " + dir + ": " + ec.message();
    if (!pack || ec) {
        err << "inkdot report: " << error << "\n";
        return kExitFailed;
    }
    out << "measuring " << params.outputBits << "-bit " << (params.mono ? "mono" : "colour") << " printing at "
        << resolutionName(params.resolution) << " dpi with the " << params.packName << " pack\n";
    if (!writeReportData(params, plan, *pack, dir, out, error)) {
        err << "inkdot report: " << error << "\n";
        return kExitFailed;
    }
    if (parsed.has("csv")) {
        out << "measurements in " << dir << "\n";
        return kExitOk;
    }
    if (!writeReportPage(dir, error)) {
        err << "inkdot report: " << error << "\n";
        return kExitFailed;
    }
    return kExitOk;
}

}  // namespace inkdot::tools
