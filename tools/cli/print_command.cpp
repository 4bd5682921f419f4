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
#include "image/output_set.h"
#include "image/plane_writer.h"
#include "image/preview.h"

namespace inkdot::tools {
namespace {

const char* const kPlaneNames[4] = {"cyan", "magenta", "yellow", "black"};

std::string stemOf(const std::string& path) {
    const std::string stem = std::filesystem::path(path).stem().string();
    return stem.empty() ? "page" : stem;
}

// Removes an output directory that this run made, if the run fails before
// anything was put into it. Declared before the output set, so it runs after
// the set's staging directory is gone and its lock released.
struct MadeDirectory {
    std::filesystem::path path;
    std::string lockName;  // the set's lock file, the one thing the run leaves
    bool keep = false;
    ~MadeDirectory() {
        std::error_code ec;
        if (keep || path.empty()) return;
        std::filesystem::remove(path / lockName, ec);
        std::filesystem::remove(path, ec);  // only removes an empty directory
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

// What a print reads: the image, its conversion into device RGB (if any),
// the resource pack and the job built from them.
struct PrintInputs {
    std::unique_ptr<ImageReader> image;
    std::unique_ptr<InputConversion> conversion;
    std::unique_ptr<BlockSource> pack;
    std::unique_ptr<Job> job;

    bool open(PrintOptions& options, std::string& error) {
        if (options.input == "-") {
            if (!makeStandardInputSeekable(error)) return false;
            options.input = kStandardInputPath;  // the files are then named stdin-...
        }
        image = openImage(options.input, error);
        if (!image || !openInputConversion(*image, options, conversion, error)) return false;
        pack = options.packFile.empty() ? openDefaultPack(error) : openPackFile(options.packFile, error);
        if (!pack) return false;
        options.halftone.inputWidth = image->width();
        job = Job::open(options.colour, options.halftone, *pack, error);
        return job != nullptr;
    }
};

// The page's plane files and its preview, staged in one output set.
struct PageFiles {
    std::vector<PlaneWriter> planes;
    std::vector<std::string> planePaths;  // where each plane is published
    PreviewBuilder preview;
    std::string previewPath;
    size_t planeStride = 0;

    bool open(OutputSet& set, const std::string& outputDir, const std::string& stem, const Job& job,
              uint32_t pageHeight, const PrintOptions& options, std::string& error) {
        const std::string base = (std::filesystem::path(outputDir) / stem).string();
        const unsigned count = job.planeCount();
        const unsigned bits = job.outputBits();
        planeStride = job.planeStride();
        planes = std::vector<PlaneWriter>(count);
        std::string staged;
        for (unsigned p = 0; p < count; ++p) {
            const std::string suffix =
                std::string("-") + (count == 1 ? "black" : kPlaneNames[p]) + (bits == 1 ? ".pbm" : ".pgm");
            planePaths.push_back(base + suffix);
            if (!set.stage(stem + suffix, staged, error) ||
                !planes[p].open(staged, job.outputWidth(), pageHeight, bits, error))
                return false;
        }
        const Dpi dpi = resolutionDpi(options.halftone.resolution);
        previewPath = base + "-preview.png";
        return set.stage(stem + "-preview.png", staged, error) &&
               preview.open(staged, job.outputWidth(), pageHeight, dpi.x, dpi.y, count, bits, options.previewWidth,
                            error);
    }

    // `count` halftoned lines, each its planes one after the other.
    bool writeLines(const uint8_t* lines, uint32_t count, std::string& error) {
        for (uint32_t i = 0; i < count; ++i) {
            const uint8_t* line = lines + size_t{i} * planes.size() * planeStride;
            for (size_t p = 0; p < planes.size(); ++p)
                if (!planes[p].writeLine(line + p * planeStride, error)) return false;
            if (!preview.addLine(line, planeStride, error)) return false;
        }
        return true;
    }

    bool finish(OutputSet& set, std::string& error) {
        for (PlaneWriter& w : planes)
            if (!w.finish(error)) return false;
        return preview.finish(error) && set.publish(error);
    }
};

void reportPrinted(std::ostream& out, const PrintOptions& options, const Job& job, uint64_t pageHeight,
                   const PageFiles& files, const InputConversion* conversion) {
    const Dpi dpi = resolutionDpi(options.halftone.resolution);
    const unsigned bits = job.outputBits();
    const size_t planes = files.planePaths.size();
    out << "printed " << options.input << ": " << job.outputWidth() << " x " << pageHeight << " dots at " << dpi.x
        << "x" << dpi.y << " dpi, " << bits << " bit" << (bits == 1 ? "" : "s") << ", table " << job.modelId()
        << "\n";
    for (size_t p = 0; p < planes; ++p)
        out << "  " << (planes == 1 ? "black" : kPlaneNames[p]) << " plane: " << files.planePaths[p] << "\n";
    if (conversion) out << "  converted into device RGB (sRGB) from '" << conversion->description() << "'\n";
    out << "  preview: " << files.previewPath << " (" << files.preview.geometry().width << " x "
        << files.preview.geometry().height << ")\n";
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
    if (options.outputDir == "-") {
        err << "inkdot print: -o takes a directory: the planes and the preview are several files, which standard "
               "output cannot hold (see inkdot print --help)\n";
        return kExitUsage;
    }

    PrintInputs in;
    if (!in.open(options, error)) return fail(err, error);
    Job* const job = in.job.get();
    ImageReader* const image = in.image.get();
    InputConversion* const conversion = in.conversion.get();

    const unsigned lineRepeat = options.autoScale ? autoLineRepeat(options.halftone.resolution) : 1;
    const uint64_t pageHeight = uint64_t{image->height()} * lineRepeat;
    if (pageHeight > 0xFFFFFFu) return fail(err, "the image is too tall to print");

    std::error_code ec;
    MadeDirectory made;
    if (!std::filesystem::exists(options.outputDir, ec)) made.path = options.outputDir;
    std::filesystem::create_directories(options.outputDir, ec);
    if (ec) return fail(err, "cannot make " + options.outputDir + ": " + ec.message());

    // The planes and the preview are one set (image/output_set.h): written
    // in a staging directory and published together when all are complete,
    // so a failure or an interruption leaves the previous set as it was.
    const std::string stem = stemOf(options.input);
    made.lockName = "." + stem + ".lock";
    OutputSet set;
    if (!set.open(options.outputDir, stem, error)) return fail(err, error);
    PageFiles files;
    if (!files.open(set, options.outputDir, stem, *job, static_cast<uint32_t>(pageHeight), options, error))
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
        return files.writeLines(lines, count, e);
    };
    const BandPlan plan{.inputLines = image->height(), .lineRepeat = lineRepeat, .overlapped = severalCores()};
    if (!runBands(*job, plan, stages, error)) return fail(err, error);
    if (!files.finish(set, error)) return fail(err, error);
    made.keep = true;
    reportPrinted(out, options, *job, pageHeight, files, conversion);
    return kExitOk;
}

}  // namespace inkdot::tools
