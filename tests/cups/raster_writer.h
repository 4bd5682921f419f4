// Small writers for the CUPS filter's tests: input raster pages made with the
// CUPS library itself, and one run of the filter in-process with its log and
// output read back.
#pragma once

#include <cups/raster.h>
#include <gtest/gtest.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "cups/raster_filter.h"
#include "cups/raster_summary.h"

namespace inkdot::test {

// The header of an 8-bit chunky input page.
inline cups_page_header2_t inputHeader(unsigned width, unsigned height, cups_cspace_t space = CUPS_CSPACE_RGB,
                                       unsigned xdpi = 720, unsigned ydpi = 720) {
    cups_page_header2_t h;
    std::memset(&h, 0, sizeof h);
    const unsigned channels = (space == CUPS_CSPACE_W || space == CUPS_CSPACE_SW || space == CUPS_CSPACE_K) ? 1
                              : space == CUPS_CSPACE_CMYK                                                 ? 4
                                                                                                          : 3;
    h.HWResolution[0] = xdpi;
    h.HWResolution[1] = ydpi;
    h.PageSize[0] = width * 72 / xdpi;
    h.PageSize[1] = height * 72 / ydpi;
    h.NumCopies = 1;
    h.cupsWidth = width;
    h.cupsHeight = height;
    h.cupsBitsPerColor = 8;
    h.cupsBitsPerPixel = 8 * channels;
    h.cupsBytesPerLine = width * channels;
    h.cupsColorOrder = CUPS_ORDER_CHUNKED;
    h.cupsColorSpace = space;
    h.cupsNumColors = channels;
    return h;
}

// One page: its header and its pixel bytes (cupsBytesPerLine × cupsHeight,
// or fewer for a page cut short).
struct InputPage {
    cups_page_header2_t header;
    std::vector<uint8_t> pixels;
};

// A page of one colour: `pixel` holds one pixel's bytes.
inline InputPage flatPage(cups_page_header2_t header, std::vector<uint8_t> pixel) {
    InputPage page{header, {}};
    page.pixels.reserve(size_t{header.cupsBytesPerLine} * header.cupsHeight);
    for (size_t i = 0; i < size_t{header.cupsWidth} * header.cupsHeight; ++i)
        page.pixels.insert(page.pixels.end(), pixel.begin(), pixel.end());
    return page;
}

// A page whose pixel bytes come from f(x, y, channel).
inline InputPage patternPage(cups_page_header2_t header, const std::function<uint8_t(unsigned, unsigned, unsigned)>& f) {
    InputPage page{header, {}};
    const unsigned channels = header.cupsBitsPerPixel / 8;
    for (unsigned y = 0; y < header.cupsHeight; ++y)
        for (unsigned x = 0; x < header.cupsWidth; ++x)
            for (unsigned c = 0; c < channels; ++c) page.pixels.push_back(f(x, y, c));
    return page;
}

// Writes the pages as a CUPS raster stream (uncompressed, as most raster
// makers write it).
inline void writeRasterFile(const std::string& path, std::vector<InputPage> pages) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    ASSERT_GE(fd, 0);
    cups_raster_t* r = cupsRasterOpen(fd, CUPS_RASTER_WRITE);
    ASSERT_NE(r, nullptr);
    for (InputPage& page : pages) {
        ASSERT_TRUE(cupsRasterWriteHeader2(r, &page.header));
        if (!page.pixels.empty())
            cupsRasterWritePixels(r, page.pixels.data(), static_cast<unsigned>(page.pixels.size()));
    }
    cupsRasterClose(r);
    ::close(fd);
}

// Cuts a file down to its first `bytes` bytes.
inline void truncateFile(const std::string& path, off_t bytes) { ASSERT_EQ(::truncate(path.c_str(), bytes), 0); }

inline std::string readText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// One run of the filter on a raster file.
struct FilterRun {
    int status = -1;
    std::string log;                       // every line the filter reported
    std::vector<cups::PageSummary> pages;  // the output, read back
    bool outputReadable = false;

    bool logHas(const std::string& text) const { return log.find(text) != std::string::npos; }
    // The lines that start with `prefix`.
    std::vector<std::string> lines(const std::string& prefix) const {
        std::vector<std::string> found;
        std::istringstream in(log);
        for (std::string line; std::getline(in, line);)
            if (line.rfind(prefix, 0) == 0) found.push_back(line);
        return found;
    }
};

inline FilterRun runFilter(const std::string& dir, const std::string& input, const std::string& options = "",
                           int copies = 1, const std::string& ppdPath = "") {
    cups::FilterArgs args;
    args.jobId = "1";
    args.user = "tester";
    args.title = "test page";
    args.copies = copies;
    args.options = options;
    args.file = input;
    args.ppdPath = ppdPath;
    const std::string outPath = dir + "/out.ras";
    const std::string logPath = dir + "/filter.log";
    FilterRun run;
    const int out = ::open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    std::FILE* log = std::fopen(logPath.c_str(), "w");
    if (out < 0 || log == nullptr) return run;
    run.status = cups::runRasterFilter(args, -1, out, log);
    ::close(out);
    std::fclose(log);
    run.log = readText(logPath);
    const int in = ::open(outPath.c_str(), O_RDONLY);
    std::string error;
    run.outputReadable = in >= 0 && cups::summariseRaster(in, run.pages, error);
    if (in >= 0) ::close(in);
    return run;
}

}  // namespace inkdot::test
