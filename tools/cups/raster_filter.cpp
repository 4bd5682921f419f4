#include "cups/raster_filter.h"

#include <cups/raster.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdlib>
#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "cups/cancel_request.h"
#include "cups/filter_settings.h"
#include "cups/page_plan.h"
#include "cups/raster_input.h"
#include "driver/band_pipeline.h"

namespace inkdot::cups {

namespace {

constexpr int kExitDone = 0;
constexpr int kExitFailed = 1;

// Planar output and copies need the whole halftoned page before it is
// written. A2 at 1440x720 with two-bit CMYK is about 400 MB; a page needing
// more than this is refused rather than risked.
constexpr uint64_t kMaxHeldPageBytes = uint64_t{1} << 30;

// Progress is reported in steps of this many percent of a page.
constexpr unsigned kProgressStep = 10;

void report(std::FILE* log, const char* format, ...) {
    va_list args;
    va_start(args, format);
    std::vfprintf(log, format, args);
    va_end(args);
    std::fputc('\n', log);
    std::fflush(log);
}

struct RasterCloser {
    void operator()(cups_raster_t* r) const { cupsRasterClose(r); }
};
using RasterStream = std::unique_ptr<cups_raster_t, RasterCloser>;

struct FdCloser {
    int fd = -1;
    ~FdCloser() {
        if (fd >= 0) ::close(fd);
    }
};

const char* qualityName(Quality q) {
    switch (q) {
        case Quality::Draft: return "draft";
        case Quality::Normal: return "normal";
        case Quality::High: return "high";
    }
    return "?";
}

const char* methodName(Method m) {
    switch (m) {
        case Method::ErrorDiffusion: return "error diffusion";
        case Method::Dither: return "ordered dither";
        case Method::Threshold: return "threshold";
    }
    return "?";
}

// Reports the page's progress when it passes the next step.
class Progress {
public:
    Progress(std::FILE* log, uint32_t lines) : log_(log), lines_(lines) {}
    void lineDone(uint32_t done) {
        const unsigned percent = static_cast<unsigned>(uint64_t{done} * 100 / lines_);
        if (percent < next_) return;
        report(log_, "ATTR: job-media-progress=%u", percent);
        next_ = (percent / kProgressStep + 1) * kProgressStep;
    }

private:
    std::FILE* log_;
    uint32_t lines_;
    unsigned next_ = kProgressStep;
};

bool writeLine(cups_raster_t* out, const uint8_t* bytes, uint64_t count) {
    return cupsRasterWritePixels(out, const_cast<uint8_t*>(bytes), static_cast<unsigned>(count)) == count;
}

enum class PageEnd { Done, Cancelled, Failed };

// A page held whole, for planar output or copies. It grows as its lines
// arrive, so a header alone claims no memory: planar output keeps one run of
// lines per plane, banded output one run of whole lines.
struct HeldPage {
    std::vector<std::vector<uint8_t>> runs;

    // One halftoned line: planar, plane k's lines follow one another; banded,
    // a line holds every plane's bytes in turn, as the job writes them. This
    // may run on the pipeline's second thread, so an allocation failure is
    // caught here: false when the line cannot be held.
    bool add(const uint8_t* line, unsigned planes, size_t planeBytes) try {
        if (runs.size() == 1) {
            runs[0].insert(runs[0].end(), line, line + planes * planeBytes);
            return true;
        }
        for (unsigned k = 0; k < planes; ++k)
            runs[k].insert(runs[k].end(), line + k * planeBytes, line + (k + 1) * planeBytes);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }

    bool write(cups_raster_t* out, cups_page_header2_t& header, int copies) const {
        const uint64_t rowBytes = header.cupsBytesPerLine;
        for (int c = 0; c < copies; ++c) {
            if (!cupsRasterWriteHeader2(out, &header)) return false;
            for (const std::vector<uint8_t>& run : runs)
                for (uint64_t at = 0; at < run.size(); at += rowBytes)
                    if (!writeLine(out, run.data() + at, rowBytes)) return false;
        }
        return true;
    }
};

// Reads input lines first .. first + count - 1 of a page of `height` lines;
// false on a cancel (no reason) or a stream that ends early (the reason).
bool readPageLines(cups_raster_t* in, uint32_t lineBytes, uint32_t height, uint8_t* lines, uint32_t first,
                   uint32_t count, std::string& why) {
    for (uint32_t i = 0; i < count; ++i) {
        if (cancelRequested()) return false;
        if (cupsRasterReadPixels(in, lines + size_t{i} * lineBytes, lineBytes) != lineBytes) {
            // A cancelled job's upstream filter stops too: an early end is
            // then the cancel, not a broken stream.
            if (cancelRequested()) return false;
            why = "the page ends after " + std::to_string(first + i) + " of " + std::to_string(height) +
                  " lines: the raster stream is truncated";
            return false;
        }
    }
    return true;
}

// The page in progress when a job is cancelled is finished blank, so what
// was written stays a whole raster page and the printer can eject the sheet.
bool finishBlank(cups_raster_t* out, uint64_t lineBytes, uint32_t lines) {
    const std::vector<uint8_t> blank(lineBytes, 0);
    for (uint32_t y = 0; y < lines; ++y)
        if (!writeLine(out, blank.data(), lineBytes)) return false;
    return true;
}

// One page: halftones every line and writes it `copies` times. A page is
// held whole when it is written planar or more than once; otherwise each
// line goes out as soon as it is halftoned.
PageEnd printPage(cups_raster_t* in, cups_raster_t* out, const cups_page_header2_t& header, const PagePlan& plan,
                  const BlockSource& pack, int pageNo, int copies, std::FILE* log) {
    std::string error;
    std::unique_ptr<Job> job = Job::open(plan.colour, plan.halftone, pack, error);
    if (!job) {
        report(log, "ERROR: Page %d cannot be halftoned: %s", pageNo, error.c_str());
        return PageEnd::Failed;
    }
    const bool held = plan.order == PlaneOrder::Planar || copies > 1;
    const uint64_t pageBytes = outputPageBytes(plan);
    if (held && pageBytes > kMaxHeldPageBytes) {
        report(log, "ERROR: Page %d needs %llu MB held for planar output or copies, more than the filter's %llu MB",
               pageNo, static_cast<unsigned long long>(pageBytes >> 20),
               static_cast<unsigned long long>(kMaxHeldPageBytes >> 20));
        return PageEnd::Failed;
    }
    const size_t planeBytes = job->planeStride();
    const unsigned planes = job->planeCount();
    HeldPage page;
    page.runs.resize(held ? (plan.order == PlaneOrder::Planar ? planes : 1) : 0);

    cups_page_header2_t outHeader = outputHeader(header, plan);
    outHeader.NumCopies = 1;  // the copies are made here
    if (!held && !cupsRasterWriteHeader2(out, &outHeader)) {
        report(log, "ERROR: Page %d: the output cannot be written", pageNo);
        return PageEnd::Failed;
    }

    const uint64_t bandBytes = uint64_t{planeBytes} * planes;
    Progress progress(log, plan.height);
    bool cancelled = false;
    uint32_t y = 0;  // lines written or held
    // Reading, halftoning and writing overlap band by band on a second core.
    tools::BandStages stages;
    stages.read = [&](uint8_t* lines, uint32_t first, uint32_t count, std::string& why) {
        return readPageLines(in, header.cupsBytesPerLine, plan.height, lines, first, count, why);
    };
    stages.write = [&](const uint8_t* lines, uint32_t, uint32_t count, std::string& why) {
        for (uint32_t i = 0; i < count; ++i, ++y) {
            const uint8_t* line = lines + size_t{i} * bandBytes;
            if (held) {
                if (!page.add(line, planes, planeBytes)) {
                    why = "no memory to hold line " + std::to_string(y + 1) + " of the " +
                          std::to_string(pageBytes >> 20) + " MB page";
                    return false;
                }
            } else if (!writeLine(out, line, bandBytes)) {
                why = "the output cannot be written";
                return false;
            }
            progress.lineDone(y + 1);
        }
        return true;
    };
    const tools::BandPlan bands{.inputLines = plan.height, .overlapped = tools::severalCores()};
    if (!tools::runBands(*job, bands, stages, error)) {
        if (!error.empty()) {
            report(log, "ERROR: Page %d: %s", pageNo, error.c_str());
            return PageEnd::Failed;
        }
        cancelled = true;
    }

    if (cancelled) {
        report(log, "INFO: Job cancelled on page %d after %u of %u lines", pageNo, y, plan.height);
        if (!held) return finishBlank(out, bandBytes, plan.height - y) ? PageEnd::Cancelled : PageEnd::Failed;
        for (std::vector<uint8_t>& run : page.runs) run.resize(pageBytes / page.runs.size(), 0);  // the rest blank
        copies = 1;
    }
    if (held && !page.write(out, outHeader, copies)) {
        report(log, "ERROR: Page %d: the output cannot be written", pageNo);
        return PageEnd::Failed;
    }
    report(log, "PAGE: %d %d", pageNo, copies);
    return cancelled ? PageEnd::Cancelled : PageEnd::Done;
}

// The queue leaves copies to the printer (its PPD says cupsManualCopies
// False): a raster maker then writes each page once with NumCopies, and the
// filter, standing for the printer, makes them. A raster that reaches the
// filter straight from the job carries the count only on the command line.
// Either way a page is never multiplied twice, nor more than `limit` times.
int pageCopies(const cups_page_header2_t& header, int jobCopies, int limit) {
    return header.NumCopies > 1 ? static_cast<int>(std::min<unsigned>(header.NumCopies, limit)) : jobCopies;
}

// Plans page `pageNo` from its header and announces it; false, reported, for
// a page the filter cannot print.
bool planAndAnnounce(const cups_page_header2_t& header, const FilterSettings& settings, const FilterLimits& limits,
                     int pageNo, PagePlan& plan, std::FILE* log) {
    std::string error;
    if (!planPage(header, settings, plan, error)) {
        report(log, "ERROR: Page %d: %s", pageNo, error.c_str());
        return false;
    }
    // The first header of a stream is checked as it arrives; later ones
    // of a compressed stream come from the library's own buffer.
    if (header.cupsBytesPerLine > limits.lineBytes || plan.height > limits.pageLines) {
        report(log, "ERROR: Page %d: %u lines of %u bytes, more than the %u lines of %u bytes the filter takes", pageNo,
               plan.height, header.cupsBytesPerLine, limits.pageLines, limits.lineBytes);
        return false;
    }
    report(log, "INFO: Printing page %d", pageNo);
    report(log, "DEBUG: Page %d: %u x %u at %s dpi, %s, %s quality: %s, %u bit%s, %s", pageNo, header.cupsWidth,
           header.cupsHeight, resolutionName(plan.halftone.resolution), plan.colour.mono ? "gray" : "colour",
           qualityName(settings.quality), methodName(plan.halftone.method), plan.halftone.outputBits,
           plan.halftone.outputBits == 1 ? "" : "s", plan.order == PlaneOrder::Planar ? "planar" : "banded");
    return true;
}

// The exit status once no further page header comes after `pages` pages: a
// cancel, a clean end, or a header that is cut or malformed.
int streamEnd(RasterInput& input, int pages, std::FILE* log) {
    if (cancelRequested()) {
        report(log, "INFO: Job cancelled after %d page%s", pages, pages == 1 ? "" : "s");
        return kExitDone;
    }
    std::string why;
    switch (input.whyNoHeader(why)) {
        case RasterInput::NoHeader::End: break;
        case RasterInput::NoHeader::Truncated:
            report(log, "ERROR: The raster stream ends inside the header of page %d: it is truncated", pages + 1);
            return kExitFailed;
        case RasterInput::NoHeader::Malformed:
            report(log, "ERROR: Page %d: the page header is malformed: %s", pages + 1, why.c_str());
            return kExitFailed;
    }
    if (pages == 0) {
        report(log, "ERROR: The raster stream holds no pages");
        return kExitFailed;
    }
    report(log, "INFO: Printed %d page%s", pages, pages == 1 ? "" : "s");
    return kExitDone;
}

}  // namespace

bool parseFilterArgs(int argc, const char* const* argv, FilterArgs& out, std::string& error) {
    if (argc < 6 || argc > 7) {
        error = "Usage: rastertoinkdot job-id user title copies options [file]";
        return false;
    }
    FilterArgs a;
    a.jobId = argv[1];
    a.user = argv[2];
    a.title = argv[3];
    char* end = nullptr;
    const long copies = std::strtol(argv[4], &end, 10);
    const int maxCopies = FilterLimits{}.copies;
    if (*argv[4] == '\0' || *end != '\0' || copies < 1 || copies > maxCopies) {
        error = "The number of copies must be from 1 to " + std::to_string(maxCopies) + ", not '" + argv[4] + "'";
        return false;
    }
    a.copies = static_cast<int>(copies);
    a.options = argv[5];
    if (argc == 7) a.file = argv[6];
    out = a;
    return true;
}

int runRasterFilter(const FilterArgs& args, int inFd, int outFd, std::FILE* log) {
    OptionList options;
    addPpdDefaults(args.ppdPath, options);
    options.parse(args.options.c_str());
    FilterSettings settings;
    std::string error;
    if (!readFilterSettings(options, settings, error)) {
        report(log, "ERROR: %s", error.c_str());
        return kExitFailed;
    }

    FdCloser fileFd;
    if (!args.file.empty()) {
        fileFd.fd = ::open(args.file.c_str(), O_RDONLY);
        if (fileFd.fd < 0) {
            report(log, "ERROR: Unable to open the raster file %s: %s", args.file.c_str(), std::strerror(errno));
            return kExitFailed;
        }
        inFd = fileFd.fd;
    }
    RasterInput input(inFd, args.limits.lineBytes);
    RasterStream in(input.open());
    if (!in) {
        report(log, "ERROR: The input is not a CUPS raster stream");
        return kExitFailed;
    }
    std::unique_ptr<BlockSource> builtIn;
    const BlockSource* pack = args.pack;
    if (pack == nullptr) {
        builtIn = openDefaultPack(error);
        if (!builtIn) {
            report(log, "ERROR: The built-in resource pack cannot be read: %s", error.c_str());
            return kExitFailed;
        }
        pack = builtIn.get();
    }
    RasterStream out(cupsRasterOpen(outFd, CUPS_RASTER_WRITE_COMPRESSED));
    if (!out) {
        report(log, "ERROR: The output cannot be opened as a raster stream");
        return kExitFailed;
    }

    int pageNo = 0;
    cups_page_header2_t header;
    for (input.startHeader(); !cancelRequested() && cupsRasterReadHeader2(in.get(), &header); input.startHeader()) {
        ++pageNo;
        PagePlan plan;
        if (!planAndAnnounce(header, settings, args.limits, pageNo, plan, log)) return kExitFailed;
        PageEnd end = PageEnd::Failed;
        try {
            const int copies = pageCopies(header, args.copies, args.limits.copies);
            end = printPage(in.get(), out.get(), header, plan, *pack, pageNo, copies, log);
        } catch (const std::bad_alloc&) {
            report(log, "ERROR: Page %d: out of memory", pageNo);
        }
        switch (end) {
            case PageEnd::Done: break;
            case PageEnd::Cancelled: return kExitDone;
            case PageEnd::Failed: return kExitFailed;
        }
    }
    return streamEnd(input, pageNo, log);
}

}  // namespace inkdot::cups
