// Input raster pages for the CUPS filter's tests, made with the CUPS library
// itself, and one run of the filter in-process with its log and output read back.
#pragma once

#include <cups/raster.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "cups/raster_filter.h"
#include "cups/raster_summary.h"
#include "tools/test_files.h"

namespace inkdot::test {

// The header of an 8-bit chunky input page.
inline cups_page_header2_t inputHeader(unsigned width, unsigned height, cups_cspace_t space = CUPS_CSPACE_RGB,
                                       unsigned xdpi = 720, unsigned ydpi = 720) {
    cups_page_header2_t h;
    std::memset(&h, 0, sizeof h);
    const unsigned channels = space == CUPS_CSPACE_W || space == CUPS_CSPACE_K ? 1 : space == CUPS_CSPACE_CMYK ? 4 : 3;
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

// One page: its header and its pixel bytes (cupsBytesPerLine × cupsHeight, or fewer for a page cut short).
struct InputPage {
    cups_page_header2_t header;
    std::vector<uint8_t> pixels;
};

// A page of one colour: `pixel` holds one pixel's bytes.
inline InputPage flatPage(cups_page_header2_t header, std::vector<uint8_t> pixel) {
    InputPage page{header, {}};
    for (size_t i = 0; i < size_t{header.cupsWidth} * header.cupsHeight; ++i)
        page.pixels.insert(page.pixels.end(), pixel.begin(), pixel.end());
    return page;
}

// Writes the pages as an uncompressed CUPS raster stream, as most raster makers write it.
inline void writeRasterFile(const std::string& path, std::vector<InputPage> pages) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    ASSERT_GE(fd, 0);
    cups_raster_t* r = cupsRasterOpen(fd, CUPS_RASTER_WRITE);
    for (InputPage& page : pages) {
        ASSERT_TRUE(cupsRasterWriteHeader2(r, &page.header));
        if (!page.pixels.empty()) cupsRasterWritePixels(r, page.pixels.data(), unsigned(page.pixels.size()));
    }
    cupsRasterClose(r);
    ::close(fd);
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
        for (size_t at = 0, end; at < log.size(); at = end + 1) {
            end = std::min(log.find('\n', at), log.size());
            if (log.compare(at, prefix.size(), prefix) == 0) found.push_back(log.substr(at, end - at));
        }
        return found;
    }
};

inline FilterRun runFilter(const std::string& dir, const std::string& input, const std::string& options = "",
                           const std::string& ppdPath = "") {
    cups::FilterArgs args;
    args.options = options;
    args.file = input;
    args.ppdPath = ppdPath;
    const std::string outPath = dir + "/out.ras", logPath = dir + "/filter.log";
    FilterRun run;
    const int out = ::open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    std::FILE* log = std::fopen(logPath.c_str(), "w");
    if (out < 0 || log == nullptr) return run;
    run.status = cups::runRasterFilter(args, -1, out, log);
    ::close(out);
    std::fclose(log);
    run.log = readBytes(logPath);
    const int in = ::open(outPath.c_str(), O_RDONLY);
    std::string error;
    run.outputReadable = in >= 0 && cups::summariseRaster(in, run.pages, error);
    if (in >= 0) ::close(in);
    return run;
}

}  // namespace inkdot::test
