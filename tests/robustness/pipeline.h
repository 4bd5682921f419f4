// A whole print job as a driver runs it: the colour-management protocol from
// writer-built blocks, a halftone instance fed from the CmLut, and raster
// lines through Halftone. The colour-management and robustness tests run it
// whole or in part, sized or unsized, with faults injected, on several threads.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cm/cm_context.h"
#include "inkdot/inkdot.h"
#include "support/cm_fixture.h"
#include "support/ht_fixture.h"

namespace inkdot::test {

inline constexpr uint32_t kJobTableBlock = 100;
inline constexpr uint32_t kJobCorrectionBlock = 4321;

struct JobConfig {
    const char* name;
    HtSettings ht;
    bool channelTables = false;  // the chunk directory carries a channel-weight record
    uint32_t lines = 64;
};

inline JobConfig jobConfig(const char* name, uint32_t method, uint32_t colourMode, uint32_t outputBits,
                           bool channelTables = false, uint32_t resX = 720, uint32_t resY = 720, int32_t scaleMode = 0,
                           uint32_t ditherMode = 1, uint32_t width = 96) {
    JobConfig c{name, htSettings(method, colourMode, outputBits, width, resX, resY), channelTables};
    c.ht.scaleMode = scaleMode;
    c.ht.ditherMode = ditherMode;
    return c;
}

// Every block a driver holds for a job: by number for colour management, in
// protocol order for the halftone instance. Index texts are kept without a
// terminator: the sized calls get their exact length, the unsized calls a copy
// with a NUL.
struct JobFiles : CmSettings {
    std::vector<uint8_t> weights;
    ChunkDir dir;
    ColourTableWriter table;
    std::map<uint32_t, Bytes> cmBlocks;
    HtBlocks htBlocks;

    explicit JobFiles(const JobConfig& config) {
        if (config.channelTables) useWeights(channelWeightRecord(7, {56, 44, 50, 61}));
        putIndex(0, kJobTableBlock, 317, 1, 3);
        ColourTableWriter t;
        t.gridCount[0] = t.gridCount[1] = t.gridCount[2] = 5;
        t.inkParam[0] = 250;  // ink parameters the one-bit halftone tables accept
        t.blackMode = 1;
        t.extraData = dotSplitDescriptor(kDotSplitId);
        putTable(t);
        cmBlocks[980] = {7, 1, 0, 3, 2, 0xFE, 9, 0, 0, 0, 0, 0xFE, 0xFF};  // key 7 swaps rows 0/1 and 2/3
        cmBlocks[990] = {50, 50, 50, 50};
        putIndex(900, kJobCorrectionBlock, 1, 1, 0);  // searched with selectC 0
        Bytes tables(21 * 256);  // table d adds 3 d, limited to 255
        for (int d = 0; d < 21; ++d)
            for (int x = 0; x < 256; ++x) tables[d * 256 + x] = static_cast<uint8_t>(std::min(255, x + 3 * d));
        cmBlocks[kJobCorrectionBlock] = tables;
    }

    void useWeights(std::vector<uint8_t> record) {
        weights = std::move(record);
        dir = ChunkDir{};
        dir.add(512, weights.data());
        s1.chunkDir = dir.get();
    }
    void putTable(const ColourTableWriter& w) {
        table = w;
        cmBlocks[kJobTableBlock] = w.build();
    }
    // An index whose one record matches CmSettings with the given selectA and selectC.
    void putIndex(uint32_t number, int32_t block, int32_t tableId, uint32_t selectA, int selectC) {
        IndexTextWriter w;
        w.add(block, tableId, "L" + std::to_string(selectA), "Photo", 5, 6, "M" + std::to_string(selectC), 8, 9);
        putText(number, w.text());
    }
    void putText(uint32_t number, const std::string& text) { cmBlocks[number] = Bytes(text.begin(), text.end()); }
};

// Drives one job. The first failing call stops it (a driver deletes a failed instance).
struct Job {
    JobConfig config;
    JobFiles files;
    bool sized = true;
    CmContext* cm = nullptr;
    std::optional<HtInstance> halftone;
    HtContext* ht = nullptr;  // halftone's instance
    std::vector<uint32_t> cmAsked;
    uint32_t failedRc = RC_OK;
    std::string failedAt;  // "CmNew", "CmSetResource 2", ... for messages
    uint32_t failedPhase = 0;
    Bytes output;  // the code (low byte) of every Halftone call and the planes of every line, in order

    explicit Job(const JobConfig& c, bool useSized = true) : config(c), files(c), sized(useSized) {}
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;
    ~Job() {
        halftone.reset();  // before the colour-management instance it was built from
        if (cm != nullptr) CmDelete(cm);
    }
    const CmLut& lut() const { return *CmGetLut(cm); }

    bool fail(uint32_t rc, const std::string& where, uint32_t phase = 0) {
        failedRc = rc;
        failedAt = where;
        failedPhase = phase;
        return false;
    }

    // Colour management to its end, or `calls` resource calls; false at the first failing call.
    bool runColour(uint32_t calls = 8) {
        uint32_t next = 0xDEAD;
        if (const uint32_t rc = CmNew(&files.s1, &files.s2, 0, &next, &cm); rc != RC_OK) {
            cm = nullptr;
            return fail(rc, "CmNew");
        }
        for (uint32_t phase = 1; phase <= calls; ++phase) {
            cmAsked.push_back(next);
            if (files.cmBlocks.count(next) == 0) return fail(0xDEAD, "CmSetResource asks for an unknown block", phase);
            Bytes block = files.cmBlocks.at(next);
            if (!sized && block.size() > 1 && block[0] == '/' && block[1] == '/') block.push_back(0);  // an index text
            const uint32_t rc = sized ? CmSetResourceSized(cm, start(block), static_cast<uint32_t>(block.size()), &next)
                                      : CmSetResource(cm, block.data(), &next);
            if (rc != RC_OK) return fail(rc, "CmSetResource " + std::to_string(phase), phase);
            if (next == INKDOT_NO_MORE_BLOCKS) return true;
        }
        return calls < 8 || fail(0xBEEF, "CmSetResource never ends");
    }

    // The halftone instance from the CmLut, fed to its end.
    bool runHalftone() {
        ht = halftone.emplace(config.ht, *CmGetLut(cm), files.htBlocks, -1, sized).ctx;
        const size_t calls = halftone->answers.size();
        return halftone->rc == RC_OK ||
               fail(halftone->rc, calls ? "HalftoneSetResource " + std::to_string(calls) : "HalftoneNew", calls);
    }

    // Every line as two runs, the second starting inside the byte the first
    // ended in (the split moves from line to line); planes appended to `output`.
    void runLines() {
        const uint32_t width = config.ht.width, bpp = bytesPerPixel(config.ht.inputFormat);
        const uint32_t planes = config.ht.colourMode == 0 ? 1 : 4, bits = config.ht.outputBits == 2 ? 2 : 1;
        const uint32_t stride = (width * bits + 7) / 8 + 1, pixelsPerByte = 8 / bits;
        for (uint32_t y = 0; y < config.lines; ++y) {
            Bytes src(static_cast<size_t>(width) * bpp * 2);
            for (uint32_t i = 0; i < src.size(); ++i) {  // ramps and noise
                const uint32_t p = i / bpp, c = i % bpp, h = (y * 131u + p * 29u + c * 71u) * 2654435761u;
                src[i] = static_cast<uint8_t>((p * 255u / 95u + (h >> 27) + c * 40u + y * 3u) & 0xFF);
            }
            Bytes dst(static_cast<size_t>(stride) * planes, 0);
            const uint32_t split = (width / 3 + y * 8) % width;
            output.push_back(static_cast<uint8_t>(Halftone(ht, src.data(), dst.data(), stride, 0, split, 0, 0, y, 0, 0)));
            output.push_back(static_cast<uint8_t>(Halftone(ht, src.data() + split * bpp, dst.data() + split / pixelsPerByte,
                                                           stride, split % pixelsPerByte, width - split, split, 0, y, 0, 0)));
            output.insert(output.end(), dst.begin(), dst.end());
        }
    }

    bool runAll() {
        if (!runColour() || !runHalftone()) return false;
        runLines();
        return true;
    }
};

}  // namespace inkdot::test
