// A whole print job as a driver runs it: the colour-management protocol from
// writer-built blocks, a halftone instance fed from the CmLut, and raster
// lines through Halftone. The robustness tests run it whole, with sized or
// unsized calls, with faults injected, and on several threads at once.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "cm/cm_context.h"
#include "inkdot/inkdot.h"
#include "support/cm_fixture.h"
#include "support/ht_fixture.h"

namespace inkdot::test {

inline constexpr uint32_t kJobTableBlock = 100;
inline constexpr uint32_t kJobCorrectionBlock = 4321;

// One configuration of a job.
struct JobConfig {
    const char* name;
    HtSettings ht;
    bool channelTables = false;  // the chunk directory carries a channel-weight record
    uint32_t lines = 24;
};

inline JobConfig jobConfig(const char* name, uint32_t method, uint32_t colourMode, uint32_t outputBits,
                           bool channelTables = false, uint32_t width = 96) {
    JobConfig c{name, htSettings(method, colourMode, outputBits, width), channelTables};
    return c;
}

// Every block a driver holds for a job, by number (colour management) or id
// (halftone). Index texts are kept without a terminator: the sized calls are
// given their exact length, and the unsized calls get a copy with a NUL.
struct JobFiles : CmSettings {
    std::vector<uint8_t> weights;
    ChunkDir dir;
    std::map<uint32_t, Bytes> cmBlocks;
    std::map<uint32_t, Bytes> htBlocks;
    std::map<uint32_t, bool> isText;  // colour-management blocks that are index texts

    explicit JobFiles(const JobConfig& config) {
        if (config.channelTables) {
            weights = channelWeightRecord(7, {56, 44, 50, 61});
            dir.add(512, weights.data());
            s1.chunkDir = dir.get();
        }

        putText(0, matchingIndex(static_cast<int32_t>(kJobTableBlock), 317).text());

        ColourTableWriter table;
        table.gridCount[0] = table.gridCount[1] = table.gridCount[2] = 5;
        table.inkParam[0] = 250;  // ink parameters the one-bit halftone tables accept
        table.inkParam[1] = 100;
        table.blackMode = 1;
        table.extraData = dotSplitDescriptor(kDotSplitId);
        cmBlocks[kJobTableBlock] = table.build();

        cmBlocks[980] = {7, 1, 0, 3, 2, 0xFE, 9, 0, 0, 0, 0, 0xFE, 0xFF};  // key 7 swaps rows 0/1 and 2/3
        cmBlocks[990] = {50, 50, 50, 50};
        IndexTextWriter tableIndex;
        tableIndex.add(static_cast<int32_t>(kJobCorrectionBlock), 1, "L1", "Photo", 5, 6, "M0", 8, 9);
        putText(900, tableIndex.text());
        Bytes tables(21 * 256);
        for (int d = 0; d < 21; ++d)
            for (int x = 0; x < 256; ++x) tables[d * 256 + x] = static_cast<uint8_t>(std::min(255, x + 3 * (d - 10) + 30));
        cmBlocks[kJobCorrectionBlock] = tables;

        HtBlocks ht;
        htBlocks[0] = ht.requestList;  // the first halftone block has no id of its own
        htBlocks[kGridLevelsId] = ht.gridLevels;
        for (uint32_t id = kMatrixGeneralId; id <= kMatrixDoubleYId; ++id) htBlocks[id] = ht.matrix;
        htBlocks[kDotSplitId] = ht.dotSplit;
    }

    void putText(uint32_t number, const std::string& text) {
        cmBlocks[number] = Bytes(text.begin(), text.end());
        isText[number] = true;
    }
};

// Drives one job. Every call's code is kept; the first failing call stops
// the job (a driver deletes a failed instance).
struct Job {
    JobConfig config;
    JobFiles files;
    bool sized = true;
    CmContext* cm = nullptr;
    HtContext* ht = nullptr;
    std::vector<uint32_t> cmAsked;
    std::vector<uint32_t> htAsked;
    uint32_t failedRc = RC_OK;
    std::string failedAt;  // "CmNew", "CmSetResource 2", ... for messages
    uint32_t failedPhase = 0;
    Bytes output;            // the planes of every Halftone call, in order
    std::vector<uint32_t> halftoneCodes;

    explicit Job(const JobConfig& c, bool useSized = true) : config(c), files(c), sized(useSized) {}
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;
    ~Job() { release(); }

    void release() {
        if (ht != nullptr) HalftoneDelete(ht);
        if (cm != nullptr) CmDelete(cm);
        ht = nullptr;
        cm = nullptr;
    }

    uint32_t cmSet(uint32_t number, uint32_t* next) {
        Bytes block = files.cmBlocks.at(number);
        if (!sized && files.isText[number]) block.push_back(0);
        return sized ? CmSetResourceSized(cm, block.data(), static_cast<uint32_t>(block.size()), next)
                     : CmSetResource(cm, block.data(), next);
    }
    uint32_t htSet(uint32_t id, uint32_t* next) {
        const Bytes& block = files.htBlocks.at(id);
        return sized ? HalftoneSetResourceSized(ht, block.data(), static_cast<uint32_t>(block.size()), next)
                     : HalftoneSetResource(ht, block.data(), next);
    }

    bool fail(uint32_t rc, const std::string& where, uint32_t phase = 0) {
        failedRc = rc;
        failedAt = where;
        failedPhase = phase;
        return false;
    }

    // Colour management to its end; false at the first failing call.
    bool runColour() {
        uint32_t next = 0xDEAD;
        if (const uint32_t rc = CmNew(&files.s1, &files.s2, 0, &next, &cm); rc != RC_OK) {
            cm = nullptr;
            return fail(rc, "CmNew");
        }
        for (uint32_t phase = 1; phase <= 8; ++phase) {
            cmAsked.push_back(next);
            if (files.cmBlocks.count(next) == 0) return fail(0xDEAD, "CmSetResource asks for an unknown block", phase);
            if (const uint32_t rc = cmSet(next, &next); rc != RC_OK) {
                return fail(rc, "CmSetResource " + std::to_string(phase), phase);
            }
            if (next == INKDOT_NO_MORE_BLOCKS) return true;
        }
        return fail(0xBEEF, "CmSetResource never ends");
    }

    // The halftone instance from the CmLut, fed to its end.
    bool runHalftone() {
        uint32_t model = 0;
        if (const uint32_t rc = HalftoneNew(&config.ht, CmGetLut(cm), 0, &model, &ht); rc != RC_OK) {
            if (rc != RC_ARG + 1) ht = nullptr;  // only the settings refusal hands a record back
            return fail(rc, "HalftoneNew");
        }
        uint32_t next = 0;
        for (uint32_t phase = 1; phase <= 4; ++phase) {
            htAsked.push_back(next);
            if (files.htBlocks.count(next) == 0) return fail(0xDEAD, "HalftoneSetResource asks for an unknown block", phase);
            if (const uint32_t rc = htSet(next, &next); rc != RC_OK) {
                return fail(rc, "HalftoneSetResource " + std::to_string(phase), phase);
            }
            if (next == INKDOT_NO_MORE_BLOCKS) return true;
        }
        return fail(0xBEEF, "HalftoneSetResource never ends");
    }

    // Input pixel i of line y: a deterministic mix of ramps and noise.
    static uint8_t sample(uint32_t y, uint32_t i, uint32_t channel) {
        uint32_t h = (y * 131u + i * 29u + channel * 71u) * 2654435761u;
        return static_cast<uint8_t>((i * 255u / 95u + (h >> 27) + channel * 40u + y * 3u) & 0xFF);
    }

    // Every line as two runs (the split moves from line to line), planes appended to `output`.
    void runLines() {
        const uint32_t width = config.ht.width;
        const uint32_t bpp = bytesPerPixel(config.ht.inputFormat);
        const uint32_t planes = config.ht.colourMode == 0 ? 1 : 4;
        const uint32_t bits = config.ht.outputBits == 2 ? 2 : 1;
        const uint32_t stride = (width * bits + 7) / 8 + 1;
        for (uint32_t y = 0; y < config.lines; ++y) {
            Bytes src(static_cast<size_t>(width) * bpp * 2);
            for (uint32_t i = 0; i < src.size(); ++i) src[i] = sample(y, i / bpp, i % bpp);
            Bytes dst(static_cast<size_t>(stride) * planes, 0);
            const uint32_t split = (width / 3 + y * 8) % width;
            const uint32_t pixelsPerByte = 8 / bits;
            // The second run starts inside the byte the first ended in.
            halftoneCodes.push_back(Halftone(ht, src.data(), dst.data(), stride, 0, split, 0, 0, y, 0, 0));
            halftoneCodes.push_back(Halftone(ht, src.data() + split * bpp, dst.data() + split / pixelsPerByte, stride,
                                             split % pixelsPerByte, width - split, split, 0, y, 0, 0));
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
