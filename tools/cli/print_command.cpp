// inkdot print: image → colour management → halftoning → ink planes and a
// preview, streamed line by line.
#include <filesystem>
#include <memory>
#include <vector>

#include "cli/cli.h"
#include "cli/print_options.h"
#include "cli/standard_input.h"
#include "driver/band_pipeline.h"
#include "image/colour_profile.h"
#include "image/image_reader.h"
#include "image/plane_writer.h"
#include "image/preview.h"

namespace inkdot::tools {
namespace {

const char* const kPlaneNames[4] = {"cyan", "magenta", "yellow", "black"};

// Turns an image row into what the job reads: gray for mono (luma weights
// 299/587/114 in thousandths, rounded), RGB for colour.
void toJobInput(const uint8_t* row, unsigned channels, uint32_t width, bool mono, uint8_t* out) {
    for (uint32_t x = 0; x < width; ++x) {
        const uint8_t* p = row + size_t{x} * channels;
        if (mono) {
            out[x] = channels == 1 ? p[0] : static_cast<uint8_t>((299 * p[0] + 587 * p[1] + 114 * p[2] + 500) / 1000);
        } else {
            for (int c = 0; c < 3; ++c) out[size_t{x} * 3 + c] = channels == 1 ? p[0] : p[c];
        }
    }
}

std::string stemOf(const std::string& path) {
    const std::string stem = std::filesystem::path(path).stem().string();
    return stem.empty() ? "page" : stem;
}

// Removes an output directory that this run made, if the run fails before
// anything was put into it. Declared before the writers, so it runs after
// their temporary files are gone.
struct MadeDirectory {
    std::filesystem::path path;
    bool keep = false;
    ~MadeDirectory() {
        std::error_code ec;
        if (!keep && !path.empty()) std::filesystem::remove(path, ec);  // only removes an empty directory
    }
};

// The conversion of the image into device RGB: from --input-profile, else
// from the profile the image carries; none (null) for an untagged image and
// for --input-profile sRGB, device RGB being sRGB. One rule for PNG and TIFF:
// an embedded profile that cannot be used stops the print, and the message
// says how to print anyway.
bool openInputConversion(const ImageReader& image, const PrintOptions& options,
                         std::unique_ptr<InputConversion>& out, std::string& error) {
    if (options.inputProfile == kBuiltInSrgb) return true;
    std::vector<uint8_t> given;
    if (!options.inputProfile.empty() && !readProfileFile(options.inputProfile, given, error)) return false;
    const bool embedded = options.inputProfile.empty();
    const std::string name = embedded ? "the profile embedded in " + options.input : options.inputProfile;
    const char* const howToOverride = "; --input-profile sRGB or FILE prints the image with another";
    if (embedded && !image.iccProblem().empty()) {
        error = name + " is not a usable ICC profile: " + image.iccProblem() + howToOverride;
        return false;
    }
    const std::vector<uint8_t>& profile = embedded ? image.iccProfile() : given;
    if (embedded && profile.empty()) return true;
    out = InputConversion::create(profile, image.channels(), options.intent, name, error);
    if (out == nullptr && embedded) error += howToOverride;
    return out != nullptr;
}

int fail(std::ostream& err, const std::string& message) {
    err << "inkdot print: " << message << "\n";
    return kExitFailed;
}

}  // namespace

int printCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    ParsedArgs parsed;
    PrintOptions options;
    std::string error;
    if (!parseArgs(args, {kPrintOptions, kPrintOptionCount}, parsed, error) ||
        (!parsed.help && !parsePrintOptions(parsed, options, error))) {
        err << "inkdot print: " << error << " (see inkdot print --help)\n";
        return kExitUsage;
    }
    if (parsed.help) {
        out << kPrintHelp;
        return kExitOk;
    }

    if (options.input == "-") {
        if (!makeStandardInputSeekable(error)) return fail(err, error);
        options.input = kStandardInputPath;  // the files are then named stdin-...
    }
    std::unique_ptr<ImageReader> image = openImage(options.input, error);
    if (!image) return fail(err, error);
    std::unique_ptr<InputConversion> conversion;
    if (!openInputConversion(*image, options, conversion, error)) return fail(err, error);
    std::unique_ptr<BlockSource> pack =
        options.packFile.empty() ? openDefaultPack(error) : openPackFile(options.packFile, error);
    if (!pack) return fail(err, error);

    options.halftone.inputWidth = image->width();
    std::unique_ptr<Job> job = Job::open(options.colour, options.halftone, *pack, error);
    if (!job) return fail(err, error);

    const unsigned lineRepeat = options.autoScale ? autoLineRepeat(options.halftone.resolution) : 1;
    const uint64_t pageHeight = uint64_t{image->height()} * lineRepeat;
    if (pageHeight > 0xFFFFFFu) return fail(err, "the image is too tall to print");

    std::error_code ec;
    MadeDirectory made;
    if (!std::filesystem::exists(options.outputDir, ec)) made.path = options.outputDir;
    std::filesystem::create_directories(options.outputDir, ec);
    if (ec) return fail(err, "cannot make " + options.outputDir + ": " + ec.message());

    // Every output goes to a temporary file first; only a complete run renames
    // them into place, so a failure leaves nothing half written behind.
    const std::string base = (std::filesystem::path(options.outputDir) / stemOf(options.input)).string();
    const unsigned planes = job->planeCount();
    const unsigned bits = job->outputBits();
    std::vector<PlaneWriter> writers(planes);
    std::vector<std::string> planePaths;
    for (unsigned p = 0; p < planes; ++p) {
        const char* name = planes == 1 ? "black" : kPlaneNames[p];
        planePaths.push_back(base + "-" + name + (bits == 1 ? ".pbm" : ".pgm"));
        if (!writers[p].open(planePaths.back(), job->outputWidth(), static_cast<uint32_t>(pageHeight), bits, error))
            return fail(err, error);
    }
    const Dpi dpi = resolutionDpi(options.halftone.resolution);
    PreviewBuilder preview;
    const std::string previewPath = base + "-preview.png";
    if (!preview.open(previewPath, job->outputWidth(), static_cast<uint32_t>(pageHeight), dpi.x, dpi.y, planes, bits,
                      options.previewWidth, error))
        return fail(err, error);

    // Decoding and conversion, halftoning, and writing overlap band by band
    // when the process has a second core.
    std::vector<uint8_t> row(size_t{image->width()} * image->channels());
    std::vector<uint8_t> deviceRow(conversion ? size_t{image->width()} * 3 : 0);
    const size_t inputBytes = size_t{image->width()} * job->inputBytesPerPixel();
    BandStages stages;
    stages.read = [&](uint8_t* lines, uint32_t, uint32_t count, std::string& e) {
        for (uint32_t i = 0; i < count; ++i) {
            if (!image->readRow(row.data(), e)) return false;
            if (conversion) conversion->convertRow(row.data(), image->width(), deviceRow.data());
            toJobInput(conversion ? deviceRow.data() : row.data(), conversion ? 3 : image->channels(), image->width(),
                       options.colour.mono, lines + i * inputBytes);
        }
        return true;
    };
    stages.write = [&](const uint8_t* lines, uint32_t, uint32_t count, std::string& e) {
        for (uint32_t i = 0; i < count; ++i) {
            const uint8_t* line = lines + size_t{i} * planes * job->planeStride();
            for (unsigned p = 0; p < planes; ++p)
                if (!writers[p].writeLine(line + p * job->planeStride(), e)) return false;
            if (!preview.addLine(line, job->planeStride(), e)) return false;
        }
        return true;
    };
    const BandPlan plan{.inputLines = image->height(), .lineRepeat = lineRepeat, .overlapped = severalCores()};
    if (!runBands(*job, plan, stages, error)) return fail(err, error);
    for (PlaneWriter& w : writers)
        if (!w.finish(error)) return fail(err, error);
    if (!preview.finish(error)) return fail(err, error);
    made.keep = true;

    out << "printed " << options.input << ": " << job->outputWidth() << " x " << pageHeight << " dots at " << dpi.x
        << "x" << dpi.y << " dpi, " << bits << " bit" << (bits == 1 ? "" : "s") << ", table " << job->modelId()
        << "\n";
    for (unsigned p = 0; p < planes; ++p)
        out << "  " << (planes == 1 ? "black" : kPlaneNames[p]) << " plane: " << planePaths[p] << "\n";
    if (conversion)
        out << "  converted into device RGB (sRGB) from '" << conversion->description() << "'\n";
    out << "  preview: " << previewPath << " (" << preview.geometry().width << " x " << preview.geometry().height
        << ")\n";
    return kExitOk;
}

}  // namespace inkdot::tools
