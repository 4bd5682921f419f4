// Invalid settings and arguments for every operation, one row each, with the
// result code the operation answers. Every row runs under a MemoryWatch:
// refusals leak nothing.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "pipeline.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::Bytes;
using test::HtBlocks;
using test::HtInstance;

struct Row {
    const char* what;
    std::function<uint32_t()> call;
    uint32_t expected;
};

// --- HalftoneNew -------------------------------------------------------------

uint32_t newWith(const HtSettings* s, bool withLut = true, uint32_t reserved3 = 0) {
    test::MonoLut lut([](int v) { return v; });
    HtContext* ctx = nullptr;
    uint32_t model = 0;
    const uint32_t rc = HalftoneNew(s, withLut ? &lut.lut : nullptr, reserved3, &model, &ctx);
    if (ctx != nullptr) HalftoneDelete(ctx);
    return rc;
}

HtSettings settingsWith(const std::function<void(HtSettings&)>& change, uint32_t colourMode = 1) {
    HtSettings s = test::htSettings(1, colourMode, 1);
    change(s);
    return s;
}

uint32_t newWithSettings(const std::function<void(HtSettings&)>& change, uint32_t colourMode = 1) {
    const HtSettings s = settingsWith(change, colourMode);
    return newWith(&s);
}

// --- HalftoneSetResource -----------------------------------------------------

test::ColourLut& colourLut() {
    static test::ColourLut lut(test::evenLevels(3), [](int r, int g, int b) {
        return test::ColourLut::Node{uint8_t(255 - r), uint8_t(255 - g), uint8_t(255 - b), 0};
    });
    lut.refresh();
    return lut;
}

// The code of the first failing call of a whole feed.
uint32_t feed(const HtSettings& s, const CmLut& lut, const HtBlocks& blocks = HtBlocks{}) {
    HtInstance ht(s, lut, blocks);
    return ht.rc;
}

uint32_t feedColour(const std::function<void(HtSettings&)>& change, const std::function<void(HtBlocks&)>& blocks = {},
                    const std::function<void(CmLut&)>& lutChange = {}) {
    HtSettings s = test::htSettings(1, 1, 1);
    change(s);
    HtBlocks b;
    if (blocks) blocks(b);
    CmLut lut = colourLut().lut;
    if (lutChange) lutChange(lut);
    return feed(s, lut, b);
}

uint32_t feedMono(const std::function<void(HtSettings&)>& change, const std::function<void(HtBlocks&)>& blocks = {},
                  int32_t inkParam0 = 250, int32_t inkParam1 = 100) {
    HtSettings s = test::htSettings(1, 0, 1);
    change(s);
    HtBlocks b;
    if (blocks) blocks(b);
    test::MonoLut lut([](int v) { return 255 - v; }, inkParam0, inkParam1);
    return feed(s, lut.lut, b);
}

void none(HtSettings&) {}

// A further call on an instance fed `phases` calls.
uint32_t extraCall(const HtSettings& s, int phases, const Bytes& block, bool nullNext = false) {
    test::MonoLut lut([](int v) { return 255 - v; });
    HtInstance ht(s, lut.lut, HtBlocks{}, phases);
    uint32_t next = 0;
    return HalftoneSetResource(ht.ctx, block.data(), nullNext ? nullptr : &next);
}

// --- Halftone ----------------------------------------------------------------

struct Run {
    uint32_t planeStride = 64, bitOffset = 0, count = 8, startX = 0, reserved10 = 0, option11 = 0;
};

uint32_t halftoneOn(const HtSettings& s, const Run& r, int phases = -1) {
    test::MonoLut lut([](int v) { return 255 - v; });
    HtInstance ht(s, lut.lut, HtBlocks{}, phases);
    std::vector<uint8_t> src(s.width * 4, 128), dst(4 * 64, 0);
    return Halftone(ht.ctx, src.data(), dst.data(), r.planeStride, r.bitOffset, r.count, r.startX, 0, 0, r.reserved10,
                    r.option11);
}

// --- CmSetResource -----------------------------------------------------------

// The code of the first failing colour-management call of a whole job.
uint32_t colourJob(const std::function<void(test::JobFiles&)>& change, bool sized = true) {
    test::Job job(test::jobConfig("bad", 1, 1, 1, true), sized);
    change(job.files);
    job.runColour();
    return job.failedRc;
}

std::vector<Row> rows() {
    static int32_t gamma99 = 99;
    static test::JobFiles::Dir gammaDir;
    gammaDir.count = 1;
    gammaDir.entries[0] = ChunkEntry{1, &gamma99};
    const Bytes halfTerminator = {100, 0, 0xFF};

    return {
        // HalftoneNew: argument checks in their order, then the pixel layout.
        {"HalftoneNew reserved3 before settings", [] { return newWith(nullptr, true, 1); }, RC_ARG + 3},
        {"HalftoneNew settings null", [] { return newWith(nullptr); }, RC_ARG + 1},
        {"HalftoneNew lut null", [] { HtSettings s = test::htSettings(1, 0, 1); return newWith(&s, false); }, RC_ARG + 2},
        {"HalftoneNew gray input in colour", [] { return newWithSettings([](HtSettings& s) { s.inputFormat = 0; }); }, RC_ARG + 1},
        {"HalftoneNew colour input in mono", [] { return newWithSettings([](HtSettings& s) { s.inputFormat = 3; }, 0); }, RC_ARG + 1},
        {"HalftoneNew inputFormat 1", [] { return newWithSettings([](HtSettings& s) { s.inputFormat = 1; }); }, RC_ARG + 1},
        {"HalftoneNew inputFormat 7", [] { return newWithSettings([](HtSettings& s) { s.inputFormat = 7; }); }, RC_ARG + 1},
        {"HalftoneNew six-byte pixels", [] { return newWithSettings([](HtSettings& s) { s.inputFormat = 6; }); }, RC_ARG + 1},
        {"HalftoneNew outputBits 0", [] { return newWithSettings([](HtSettings& s) { s.outputBits = 0; }); }, RC_ARG + 1},
        {"HalftoneNew outputBits 3", [] { return newWithSettings([](HtSettings& s) { s.outputBits = 3; }); }, RC_ARG + 1},
        {"HalftoneNew ink input accepted", [] { return newWithSettings([](HtSettings& s) { s.inputFormat = 4; }); }, RC_OK},

        // HalftoneSetResource.
        {"feed an instance with refused settings", [] { return feedMono([](HtSettings& s) { s.outputBits = 5; }); }, RC_ARG + 1},
        {"answer word null", [] { return extraCall(test::htSettings(1, 0, 1), 0, HtBlocks{}.requestList, true); }, RC_ARG + 3},
        {"request list null", [] {
             test::MonoLut lut([](int v) { return v; });
             HtInstance ht(test::htSettings(1, 0, 1), lut.lut, HtBlocks{}, 0);
             uint32_t next = 0;
             return HalftoneSetResource(ht.ctx, nullptr, &next);
         }, RC_ARG + 2},
        {"sixteen request ids", [] {
             return feedMono(none, [](HtBlocks& b) { b.requestList = test::requestListBlock({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}); });
         }, RC_DATA},
        {"class id is the terminator", [] {
             return feedMono([](HtSettings& s) { s.resolutionX = 720; s.resolutionY = 360; },
                             [](HtBlocks& b) { b.requestList = test::requestListBlock({100, 101}); });
         }, RC_DATA},
        {"sized request list cut in its terminator", [=] {
             test::MonoLut lut([](int v) { return v; });
             HtInstance ht(test::htSettings(1, 0, 1), lut.lut, HtBlocks{}, 0);
             uint32_t next = 0;
             return HalftoneSetResourceSized(ht.ctx, halfTerminator.data(), 3, &next);
         }, RC_DATA},
        {"colour grid missing", [] { return feedColour(none, {}, [](CmLut& l) { l.lutData = nullptr; }); }, RC_ARG + 1},
        {"colour grid of three inks", [] { return feedColour(none, {}, [](CmLut& l) { l.channels = 3; }); }, RC_DATA},
        {"grid level count 31", [] {
             return feedColour(none, [](HtBlocks& b) { b.gridLevels = test::gridLevelBlock(test::evenLevels(32), 31); });
         }, RC_ARG + 2},
        {"grid levels falling", [] {
             return feedColour(none, [](HtBlocks& b) { std::swap(b.gridLevels[5], b.gridLevels[6]); });
         }, RC_ARG + 2},
        {"grid levels not ending at 255", [] {
             return feedColour(none, [](HtBlocks& b) { b.gridLevels[33] = 254; });
         }, RC_ARG + 2},
        {"matrix width 0", [] { return feedMono(none, [](HtBlocks& b) { b.matrix[0] = 0; }); }, RC_DATA},
        {"matrix height 0", [] { return feedMono(none, [](HtBlocks& b) { b.matrix[1] = 0; }); }, RC_DATA},
        {"matrix width 12", [] {
             return feedMono(none, [](HtBlocks& b) { b.matrix = test::thresholdMatrixBlock(12, 4, test::rampValues(48)); });
         }, RC_DATA},
        {"matrix of 256 x 256 cells", [] {
             return feedMono(none, [](HtBlocks& b) { b.matrix = test::thresholdMatrixBlock(255, 255, test::rampValues(65535)); });
         }, RC_DATA},
        {"one-bit inkParam 300", [] { return feedMono(none, {}, 300); }, RC_DATA},
        {"dot value 0 (inkParam[1] 0)", [] { return feedMono(none, {}, 250, 0); }, RC_DATA},
        {"two-bit in class General", [] {
             return feedMono([](HtSettings& s) { s.outputBits = 2; s.resolutionX = 600; s.resolutionY = 400; });
         }, RC_ARG + 1},
        {"two-bit without descriptor", [] {
             HtSettings s = test::htSettings(1, 0, 2);
             test::MonoLut lut([](int v) { return 255 - v; });
             lut.descriptor.clear();
             lut.refresh();
             return feed(s, lut.lut);
         }, RC_DATA},
        {"two-bit descriptor format 2", [] {
             HtSettings s = test::htSettings(1, 0, 2);
             test::MonoLut lut([](int v) { return 255 - v; });
             lut.descriptor = test::dotSplitDescriptor(test::kDotSplitId, 1, 2);
             lut.refresh();
             return feed(s, lut.lut);
         }, RC_DATA},
        {"dot-split row 85 85 86", [] {
             return feedMono([](HtSettings& s) { s.outputBits = 2; },
                             [](HtBlocks& b) { b.dotSplit = test::dotSplitBlock([](int r) {
                                 return r == 200 ? test::DotSplitRow{85, 85, 86} : test::layeredSplit(r); }); });
         }, RC_DATA},
        {"fourth call on a one-bit instance", [] { return extraCall(test::htSettings(1, 0, 1), 3, HtBlocks{}.dotSplit); }, RC_DATA},
        {"fifth call on a two-bit instance", [] { return extraCall(test::htSettings(1, 0, 2), 4, HtBlocks{}.dotSplit); }, RC_DATA},

        // Halftone: checks in order, then the kernel's own.
        {"run beyond the width", [] { Run r; r.count = 65; return halftoneOn(test::htSettings(1, 0, 1), r); }, RC_ARG + 6},
        {"run whose end wraps", [] { Run r; r.startX = 0xFFFFFFF8u; return halftoneOn(test::htSettings(1, 0, 1), r); }, RC_ARG + 6},
        {"reserved10 set", [] { Run r; r.reserved10 = 1; return halftoneOn(test::htSettings(1, 0, 1), r); }, RC_ARG + 10},
        {"one-bit bitOffset 8", [] { Run r; r.bitOffset = 8; return halftoneOn(test::htSettings(1, 0, 1), r); }, RC_ARG + 5},
        {"one-bit bitOffset far out", [] { Run r; r.bitOffset = 0x80000000u; return halftoneOn(test::htSettings(1, 0, 1), r); }, RC_ARG + 5},
        {"two-bit bitOffset 4", [] { Run r; r.bitOffset = 4; return halftoneOn(test::htSettings(0, 0, 2), r); }, RC_ARG + 5},
        {"unfed instance", [] { return halftoneOn(test::htSettings(1, 0, 1), Run{}, 2); }, RC_DATA},
        {"two-bit fixed threshold has no kernel", [] { return halftoneOn(test::htSettings(0, 0, 2), Run{}); }, RC_ARG},
        {"option11 on a monochrome diffusion kernel", [] { Run r; r.option11 = 1; return halftoneOn(test::htSettings(1, 0, 1), r); }, RC_ARG + 11},
        {"one-bit bitOffset 7 accepted", [] { Run r; r.bitOffset = 7; return halftoneOn(test::htSettings(1, 0, 1), r); }, RC_OK},

        // CmSetResource.
        {"index null", [] {
             test::JobFiles files(test::jobConfig("n", 1, 1, 1));
             CmContext* ctx = nullptr;
             uint32_t next = 0;
             CmNew(&files.s1, &files.s2, 0, &next, &ctx);
             const uint32_t rc = CmSetResource(ctx, nullptr, &next);
             CmDelete(ctx);
             return rc;
         }, RC_DATA},
        {"index of version 2", [] {
             return colourJob([](test::JobFiles& f) { Bytes& t = f.cmBlocks[0]; t[std::string(t.begin(), t.end()).find("//") + 2] = '2'; });
         }, RC_DATA},
        {"sized index of length 0", [] { return colourJob([](test::JobFiles& f) { f.cmBlocks[0].clear(); }); }, RC_DATA},
        {"curves demanded, none supplied", [] { return colourJob([](test::JobFiles& f) { f.s1.curveSource = 1; }); }, RC_ARG + 1},
        {"brightness 51", [] { return colourJob([](test::JobFiles& f) { f.s1.brightness = 51; }); }, RC_ARG + 1},
        {"offsetB -51", [] { return colourJob([](test::JobFiles& f) { f.s1.offsetB = -51; }); }, RC_ARG + 1},
        {"gamma 99", [] { return colourJob([](test::JobFiles& f) { f.s1.chunkDir = reinterpret_cast<const ChunkDirectory*>(&gammaDir); }); }, RC_ARG + 2},
        {"grid counts unequal", [] { return colourJob([](test::JobFiles& f) { f.cmBlocks[test::kJobTableBlock][73] = 4; }); }, RC_DATA},
        {"thirteen channels", [] { return colourJob([](test::JobFiles& f) { f.cmBlocks[test::kJobTableBlock][75] = 13; }); }, RC_DATA},
        {"routing record of 21 bytes", [] {
             return colourJob([](test::JobFiles& f) { f.cmBlocks[980] = Bytes(22, 1); f.cmBlocks[980].push_back(0xFE); f.cmBlocks[980].push_back(0xFF); });
         }, RC_DATA},
        {"table index without a match", [] {
             return colourJob([](test::JobFiles& f) { f.putText(900, "//3\r\nh\r\n//\r\n"); });
         }, RC_DATA},
        {"call after the end", [] {
             test::Job job(test::jobConfig("end", 1, 1, 1));
             if (!job.runColour()) return job.failedRc;
             uint32_t next = 0;
             const Bytes& block = job.files.cmBlocks[980];
             return CmSetResourceSized(job.cm, block.data(), static_cast<uint32_t>(block.size()), &next);
         }, RC_DATA},
    };
}

TEST(BadSettings, EveryOperationAnswersItsCode) {
    for (const Row& row : rows()) {
        test::MemoryWatch watch;
        EXPECT_EQ(row.call(), row.expected) << row.what;
    }
}

}  // namespace
}  // namespace inkdot
