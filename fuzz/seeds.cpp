// Writes the seed corpora of the fuzz targets from the test writers:
//   fuzz_seeds <directory>   ->  <directory>/<target>/seed-N
// Each seed is a valid input of its harness, so the fuzzers start from
// complete protocols and mutate from there.
#include <cups/raster.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "cm/cm_context.h"
#include "cm_job.h"
#include "fuzz_input.h"
#include "support/colour_table_writer.h"
#include "support/ht_fixture.h"
#include "support/index_text_writer.h"
#include "pack/pack.h"
#include "tools/test_files.h"

namespace {

using namespace inkdot;
using namespace inkdot::fuzz;
using Bytes = std::vector<uint8_t>;

void write(const std::string& dir, const std::string& target, int n, const Bytes& bytes) {
    const std::string path = dir + "/" + target + "/seed-" + std::to_string(n);
    FILE* f = std::fopen(path.c_str(), "wb");
    if (f == nullptr) {
        std::perror(path.c_str());
        return;
    }
    std::fwrite(bytes.data(), 1, bytes.size(), f);
    std::fclose(f);
}

Bytes textBytes(const std::string& text) { return Bytes(text.begin(), text.end()); }

test::IndexTextWriter indexFor(int32_t block, uint32_t selectA, int selectC, const char* lastName = "M") {
    test::IndexTextWriter w;
    w.add(7, 1, "L0", "Plain", 1, 1, "M0", 1, 1);  // a record that matches nothing
    w.add(block, 317, "L" + std::to_string(selectA), "Photo", 5, 6, lastName + std::to_string(selectC), 8, 9);
    return w;
}

void indexSeeds(const std::string& dir) {
    test::IndexTextWriter plain = indexFor(100, 1, 3);
    write(dir, "index_text", 0, textBytes(plain.text()));
    test::IndexTextWriter spaced = plain;
    spaced.blankLines = "\r\n\r\n";
    spaced.lead = " \t";
    spaced.list2Base = 0;
    write(dir, "index_text", 1, textBytes(spaced.text()));
    test::IndexTextWriter lfOnly = plain;
    lfOnly.lineEnd = "\n";
    lfOnly.records[1].trailing = "extra tokens";
    write(dir, "index_text", 2, textBytes(lfOnly.text() + std::string(1, '\x1a')));
}

Bytes correctionTables() {
    Bytes out(21 * 256);
    for (int d = 0; d < 21; ++d)
        for (int x = 0; x < 256; ++x) out[d * 256 + x] = static_cast<uint8_t>(x > 255 - d ? 255 : x + d);
    return out;
}

void cmSeeds(const std::string& dir) {
    const uint8_t flagSets[][2] = {{0x01, 0x03}, {0x00, 0x02}, {0x45, 0x17}, {0x91, 0x0B}, {0x21, 0x0E}, {0x32, 0x01}};
    int n = 0;
    for (const auto& flags : flagSets) {
        for (int grid : {3, 5}) {
            CmHeader h{};
            h.flags = flags[0];
            h.levels = flags[1];
            h.gamma = 90;
            h.key = 7;
            for (int c = 0; c < 20; ++c) h.weights[c] = static_cast<uint8_t>(10 + 3 * c);  // 40 + 3c after the mapping
            h.halftone = static_cast<uint8_t>(n & 15);
            CmJob job(h);
            CmContext* ctx = nullptr;
            uint32_t first = 0;
            if (CmNew(&job.s1, &job.s2, 0, &first, &ctx) != RC_OK) continue;
            const uint32_t selectA = ctx->settings2.selectA;
            const int selectC = ctx->selectC;
            CmDelete(ctx);

            Bytes seed(reinterpret_cast<const uint8_t*>(&h), reinterpret_cast<const uint8_t*>(&h) + kCmHeaderBytes);
            putBlock(seed, textBytes(indexFor(100, selectA, selectC).text()));
            test::ColourTableWriter table;
            table.gridCount[0] = table.gridCount[1] = table.gridCount[2] = static_cast<uint8_t>(grid);
            table.inkParam[0] = 250;
            table.blackMode = static_cast<uint8_t>(n % 4);
            table.tableMode = n % 2 ? 50 : 0;
            table.extraData = test::dotSplitDescriptor(test::kDotSplitId);
            putBlock(seed, table.build());
            putBlock(seed, {7, 1, 0, 3, 2, 0xFE, 9, 0, 0, 0, 0, 0xFE, 0xFF});
            putBlock(seed, {45, 52, 50, 58});
            putBlock(seed, textBytes(indexFor(4321, selectA, 0).text()));
            putBlock(seed, correctionTables());
            write(dir, "cm_protocol", n++, seed);
        }
    }
}

void htSeeds(const std::string& dir) {
    // method, ditherMode, inputFormat, colourMode, resolution X, Y (indices), outputBits, scaleMode
    const uint8_t settings[][8] = {
        {1, 1, 0, 0, 0, 0, 1, 0},   {1, 1, 3, 1, 1, 0, 1, 0},   {3, 0, 3, 1, 0, 0, 1, 2},
        {3, 1, 0, 0, 2, 0, 2, 0},   {1, 1, 3, 1, 0, 0, 2, 1},   {0, 1, 4, 2, 0, 0, 1, 255},
        {3, 1, 3, 3, 2, 0, 2, 3},   {1, 1, 0, 0, 1, 0, 2, 0},
    };
    const test::HtBlocks blocks;
    int n = 0;
    for (const auto& s : settings) {
        Bytes seed(s, s + 8);
        seed.push_back(200);  // width 200
        seed.push_back(0);
        seed.push_back(static_cast<uint8_t>(n % 3));  // ink choice: 250, 350, 500
        const Bytes descriptor = test::dotSplitDescriptor(test::kDotSplitId);
        seed.insert(seed.end(), descriptor.begin(), descriptor.end());
        putBlock(seed, blocks.requestList);
        putBlock(seed, blocks.gridLevels);
        putBlock(seed, n % 2 ? test::thresholdMatrixBlock(64, 4, test::rampValues(256)) : blocks.matrix);
        putBlock(seed, blocks.dotSplit);
        write(dir, "ht_protocol", n++, seed);
    }
}

void runSeeds(const std::string& dir) {
    for (int n = 0; n < 24; ++n) {
        const uint8_t choice = static_cast<uint8_t>(n * 37 + (n & 1));
        Bytes seed{choice, static_cast<uint8_t>(n * 11), 120, 0};
        for (int call = 0; call < 4; ++call) {
            const uint16_t count = static_cast<uint16_t>(call == 3 ? 120 - 31 * 2 : 31);
            const uint16_t startX = static_cast<uint16_t>(31 * (call < 3 ? call : 2) + (call == 3 ? 31 : 0));
            test::putU16(seed, count);
            test::putU16(seed, startX);
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
    test::writeTestPng(at + "png-gray", 8, 6, PNG_COLOR_TYPE_GRAY, 8, {ramp.begin(), ramp.begin() + 48});
    test::writeTestPng(at + "png-rgba", 8, 6, PNG_COLOR_TYPE_RGBA, 8, ramp);
    test::writeTestPng(at + "png-16", 8, 6, PNG_COLOR_TYPE_GRAY, 16, {ramp.begin(), ramp.begin() + 48});
    test::writeBytes(at + "pgm", "P5\n# ramp\n4 2\n255\n" + std::string("\x00\x40\x80\xff\x10\x20\x30\x40", 8));
    test::writeBytes(at + "ppm-16", "P6 2 1 65535\n" + std::string(12, '\x7f'));
    test::writeTestTiff(at + "tiff-rgb", 4, 3, {}, std::vector<uint16_t>(36, 99));
    test::writeTestTiff(at + "tiff-white", 4, 3, {PHOTOMETRIC_MINISWHITE, 1, 8}, std::vector<uint16_t>(12, 7));
    test::writeTestTiff(at + "tiff-16", 4, 3, {PHOTOMETRIC_MINISBLACK, 2, 16, EXTRASAMPLE_ASSOCALPHA},
                        std::vector<uint16_t>(24, 4000));
}

void packSeeds(const std::string& dir) {
    const tools::BlockMap blocks = {{1, {1, 2, 3}}, {100, Bytes(textBytes("// index text\r\n"))}, {950, Bytes(300, 9)}};
    write(dir, "pack", 0, tools::writePack(blocks));
    write(dir, "pack", 1, tools::writePack({}));
}

// Raster streams of one or two small pages: the first byte picks the
// filter's options (harness), then the stream as the CUPS library writes it.
void rasterSeeds(const std::string& dir) {
    const struct { cups_cspace_t space; unsigned channels, xdpi, ydpi, pages; cups_mode_t mode; uint8_t options; } kinds[] = {
        {CUPS_CSPACE_RGB, 3, 720, 720, 1, CUPS_RASTER_WRITE, 0},
        {CUPS_CSPACE_SW, 1, 1440, 720, 2, CUPS_RASTER_WRITE_COMPRESSED, 2},
        {CUPS_CSPACE_SRGB, 3, 720, 360, 1, CUPS_RASTER_WRITE_COMPRESSED, 7},
        {CUPS_CSPACE_W, 1, 360, 720, 2, CUPS_RASTER_WRITE, 1},
    };
    int n = 0;
    for (const auto& k : kinds) {
        const std::string path = dir + "/raster_filter/seed-" + std::to_string(n++);
        const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (fd < 0) continue;
        if (::write(fd, &k.options, 1) != 1) std::perror(path.c_str());
        cups_raster_t* r = cupsRasterOpen(fd, k.mode);
        cups_page_header2_t h;
        std::memset(&h, 0, sizeof h);
        h.HWResolution[0] = k.xdpi;
        h.HWResolution[1] = k.ydpi;
        h.cupsWidth = 24;
        h.cupsHeight = 6;
        h.cupsBitsPerColor = 8;
        h.cupsBitsPerPixel = 8 * k.channels;
        h.cupsBytesPerLine = 24 * k.channels;
        h.cupsColorOrder = CUPS_ORDER_CHUNKED;
        h.cupsColorSpace = k.space;
        h.cupsNumColors = k.channels;
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

// Pack descriptions with every block kind; small matrices keep the runs quick.
void resourceSeeds(const std::string& dir) {
    const std::string every =
        "# every kind\n"
        "0 index file=idx.txt\n"
        "100 colour-table points=5 black-mode=1 ink-limit=240 ink-param=250,100 dot-split=1100\n"
        "900 index file=idx.txt\n"
        "950 correction-tables strength=1.6\n"
        "980 routing records=0:0.1.2.3;7:3.2.1.0\n"
        "990 base-weights weights=50,50,50,50\n"
        "1000 request-list ids=1001,1010,1011\n"
        "1001 grid-levels\n"
        "1010 matrix width=16 height=16 cell-width=1 sigma=1.2 seed=3\n"
        "1011 matrix width=16 height=8 cell-width=0.5\n"
        "1100 dot-split small-ink=0.35 medium-ink=0.65 medium=0.08,0.60 large=0.30,1.00\n";
    write(dir, "resource_sources", 0, textBytes(every));
    const std::string shared =
        "101 colour-table points=3 input-gamma=2.2 black-start=0.1 black-power=2 gray-gamma=1.5 "
        "rich-black-start=1 table-mode=7 ink-param=500,120,1,2,3 dot-split=7\n"
        "102 colour-table points=2 black-mode=3 ink-param=500,120 dot-split=7\n"
        "7 dot-split medium=0.1,0.5 large=0.2,0.9\n";
    write(dir, "resource_sources", 1, textBytes(shared));
    write(dir, "resource_sources", 2, textBytes("5 colour-table points=1 dot-split=6\n6 dot-split\n"));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s <corpus directory>\n", argv[0]);
        return 2;
    }
    const std::string dir = argv[1];
    indexSeeds(dir);
    cmSeeds(dir);
    htSeeds(dir);
    runSeeds(dir);
    imageSeeds(dir);
    packSeeds(dir);
    rasterSeeds(dir);
    resourceSeeds(dir);
    return 0;
}
