// Writes the seed corpora of the binary fuzz inputs from the test writers:
//   fuzz_seeds <directory>   ->  <directory>/<target>/seed-N
// Each seed is a valid input of its harness, so the fuzzers start from
// complete protocols and mutate from there. The text inputs (index texts,
// pack descriptions) are files in fuzz/seeds/.
#include <cups/raster.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "cm_job.h"
#include "fuzz_input.h"
#include "pack/pack.h"
#include "support/ht_fixture.h"
#include "tools/test_files.h"

namespace {

using namespace inkdot;
using namespace inkdot::fuzz;
using Bytes = std::vector<uint8_t>;

std::string seedPath(const std::string& dir, const std::string& target, int n) {
    return dir + "/" + target + "/seed-" + std::to_string(n);
}
void write(const std::string& dir, const std::string& target, int n, const Bytes& bytes) {
    test::writeBytes(seedPath(dir, target, n), std::string(bytes.begin(), bytes.end()));
}
Bytes textBytes(const std::string& text) { return Bytes(text.begin(), text.end()); }

// An index naming `block` under every selectA (list 1) and selectC (list 3)
// the settings can give, so that it matches whatever a header chooses.
Bytes indexFor(int32_t block) {
    test::IndexTextWriter w;
    for (int a = 0; a < 4; ++a)
        for (int c = 0; c < 5; ++c) w.add(block, 317, "L" + std::to_string(a), "Photo", 5, 6, "M" + std::to_string(c), 8, 9);
    return textBytes(w.text());
}

void cmSeeds(const std::string& dir) {
    const uint8_t flagSets[][2] = {{0x01, 0x03}, {0x00, 0x02}, {0x45, 0x17}, {0x91, 0x0B}, {0x21, 0x0E}, {0x32, 0x01}};
    Bytes correction(21 * 256);  // table d adds d, saturating
    for (int d = 0; d < 21; ++d)
        for (int x = 0; x < 256; ++x) correction[d * 256 + x] = static_cast<uint8_t>(x > 255 - d ? 255 : x + d);
    int n = 0;
    for (const auto& flags : flagSets) {
        for (uint8_t grid : {3, 5}) {
            CmHeader h{.flags = flags[0], .levels = flags[1], .gamma = 90, .key = 7, .weights = {}, .halftone = uint8_t(n & 15)};
            for (int c = 0; c < 20; ++c) h.weights[c] = static_cast<uint8_t>(10 + 3 * c);
            test::ColourTableWriter table;
            table.gridCount[0] = table.gridCount[1] = table.gridCount[2] = grid;
            table.inkParam[0] = 250;
            table.blackMode = static_cast<uint8_t>(n % 4);
            table.tableMode = n % 2 ? 50 : 0;
            table.extraData = test::dotSplitDescriptor(test::kDotSplitId);
            Bytes seed(reinterpret_cast<const uint8_t*>(&h), reinterpret_cast<const uint8_t*>(&h) + kCmHeaderBytes);
            for (const Bytes& block : {indexFor(100), table.build(),
                                       Bytes{7, 1, 0, 3, 2, 0xFE, 9, 0, 0, 0, 0, 0xFE, 0xFF}, Bytes{45, 52, 50, 58},
                                       indexFor(4321), correction})
                putBlock(seed, block);
            write(dir, "cm_protocol", n++, seed);
        }
    }
}

void htSeeds(const std::string& dir) {
    // method, ditherMode, inputFormat, colourMode, resolution X, Y (indices), outputBits, scaleMode
    const uint8_t settings[][8] = {
        {1, 1, 0, 0, 0, 0, 1, 0}, {1, 1, 3, 1, 1, 0, 1, 0}, {3, 0, 3, 1, 0, 0, 1, 2}, {3, 1, 0, 0, 2, 0, 2, 0},
        {1, 1, 3, 1, 0, 0, 2, 1}, {0, 1, 4, 2, 0, 0, 1, 255}, {3, 1, 3, 3, 2, 0, 2, 3}, {1, 1, 0, 0, 1, 0, 2, 0},
    };
    const test::HtBlocks blocks;
    const Bytes descriptor = test::dotSplitDescriptor(test::kDotSplitId);
    for (int n = 0; n < 8; ++n) {
        Bytes seed(settings[n], settings[n] + 8);
        seed.insert(seed.end(), {200, 0, static_cast<uint8_t>(n % 3)});  // width 200; ink 250, 350 or 500
        seed.insert(seed.end(), descriptor.begin(), descriptor.end());
        for (const Bytes* block : {&blocks.requestList, &blocks.gridLevels, &blocks.matrix, &blocks.dotSplit})
            putBlock(seed, block == &blocks.matrix && n % 2 ? test::thresholdMatrixBlock(64, 4, test::rampValues(256)) : *block);
        write(dir, "ht_protocol", n, seed);
    }
}

// Four runs over a 120-pixel line: three of 31 pixels, then the rest.
void runSeeds(const std::string& dir) {
    for (int n = 0; n < 24; ++n) {
        Bytes seed{static_cast<uint8_t>(n * 37 + (n & 1)), static_cast<uint8_t>(n * 11), 120, 0};
        for (int call = 0; call < 4; ++call) {
            test::putU16(seed, static_cast<uint16_t>(call == 3 ? 120 - 3 * 31 : 31));
            test::putU16(seed, static_cast<uint16_t>(31 * call));
            seed.push_back(static_cast<uint8_t>(call));
            test::putU16(seed, static_cast<uint16_t>(n));
            seed.push_back(0);
            for (int i = 0; i < 31 * 4; ++i) seed.push_back(static_cast<uint8_t>(i * 7 + n * 13));
        }
        write(dir, "halftone_run", n, seed);
    }
}

// Small images of each kind the readers take: PNG gray, RGBA and 16-bit,
// PNM gray and 16-bit RGB, TIFF RGB, min-is-white and 16-bit gray.
void imageSeeds(const std::string& dir) {
    const std::string at = dir + "/image_readers/seed-";
    std::vector<uint16_t> ramp(8 * 6 * 4);
    for (size_t i = 0; i < ramp.size(); ++i) ramp[i] = static_cast<uint16_t>(i * 5);
    const std::vector<uint16_t> gray(ramp.begin(), ramp.begin() + 48);
    test::writeTestPng(at + "png-gray", 8, 6, PNG_COLOR_TYPE_GRAY, 8, gray);
    test::writeTestPng(at + "png-rgba", 8, 6, PNG_COLOR_TYPE_RGBA, 8, ramp);
    test::writeTestPng(at + "png-16", 8, 6, PNG_COLOR_TYPE_GRAY, 16, gray);
    test::writeBytes(at + "pgm", "P5\n# ramp\n4 2\n255\n" + std::string("\x00\x40\x80\xff\x10\x20\x30\x40", 8));
    test::writeBytes(at + "ppm-16", "P6 2 1 65535\n" + std::string(12, '\x7f'));
    test::writeTestTiff(at + "tiff-rgb", 4, 3, {}, std::vector<uint16_t>(36, 99));
    test::writeTestTiff(at + "tiff-white", 4, 3, {PHOTOMETRIC_MINISWHITE, 1, 8}, std::vector<uint16_t>(12, 7));
    test::writeTestTiff(at + "tiff-16", 4, 3, {PHOTOMETRIC_MINISBLACK, 2, 16, EXTRASAMPLE_ASSOCALPHA},
                        std::vector<uint16_t>(24, 4000));
}

// Raster streams of one or two 24 x 6 pages, plain and compressed: the first
// byte picks the filter's options (harness), then the stream as the CUPS
// library writes it.
void rasterSeeds(const std::string& dir) {
    const struct { cups_cspace_t space; unsigned channels, xdpi, ydpi, pages; cups_mode_t mode; uint8_t options; } kinds[] = {
        {CUPS_CSPACE_RGB, 3, 720, 720, 1, CUPS_RASTER_WRITE, 0},
        {CUPS_CSPACE_SW, 1, 1440, 720, 2, CUPS_RASTER_WRITE_COMPRESSED, 2},
        {CUPS_CSPACE_SRGB, 3, 720, 360, 1, CUPS_RASTER_WRITE_COMPRESSED, 7},
        {CUPS_CSPACE_W, 1, 360, 720, 2, CUPS_RASTER_WRITE, 1},
    };
    for (int n = 0; n < 4; ++n) {
        const auto& k = kinds[n];
        const int fd = open(seedPath(dir, "raster_filter", n).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (fd < 0 || ::write(fd, &k.options, 1) != 1) continue;
        cups_raster_t* r = cupsRasterOpen(fd, k.mode);
        cups_page_header2_t h{.HWResolution = {k.xdpi, k.ydpi}, .cupsWidth = 24, .cupsHeight = 6, .cupsBitsPerColor = 8,
                              .cupsBitsPerPixel = 8 * k.channels, .cupsBytesPerLine = 24 * k.channels,
                              .cupsColorSpace = k.space, .cupsNumColors = k.channels};
        std::vector<uint8_t> pixels(size_t{h.cupsBytesPerLine} * h.cupsHeight);
        for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<uint8_t>(i * 11);
        for (unsigned page = 0; page < k.pages; ++page) {
            cupsRasterWriteHeader2(r, &h);
            cupsRasterWritePixels(r, pixels.data(), static_cast<unsigned>(pixels.size()));
        }
        cupsRasterClose(r);
        close(fd);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s <corpus directory>\n", argv[0]);
        return 2;
    }
    const std::string dir = argv[1];
    cmSeeds(dir);
    htSeeds(dir);
    runSeeds(dir);
    imageSeeds(dir);
    write(dir, "pack", 0, tools::writePack({{1, {1, 2, 3}}, {100, textBytes("// index text\r\n")}, {950, Bytes(300, 9)}}));
    write(dir, "pack", 1, tools::writePack({}));
    rasterSeeds(dir);
    return 0;
}
