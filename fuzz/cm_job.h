// The colour-management settings a fuzz input chooses, shared by the
// protocol harness and the seed generator so that seeds match the keys.
#pragma once

#include <cstdint>
#include <vector>

#include "support/cm_fixture.h"

namespace inkdot::fuzz {

// Input header of the protocol harness, in this order.
struct CmHeader {
    uint8_t flags;    // bit 0 channel weights; 1 pixelFormat 0; 2-3 processMode; 4-5 selectA; 6 blackScaling; 7 gamma chunk
    uint8_t levels;   // bits 0-1 processLevel; 2 neutralSetting 50; 3 inkScaleGate 1; 4 ready-made curves; 5 curveSource set
    uint8_t gamma;    // gamma chunk value - 60 (so that values outside 100..300 occur)
    uint8_t key;      // routing key of the channel-weight record
    uint8_t weights[20];
    uint8_t halftone; // bit 0 colour, bit 1 two-bit, bits 2-3 method
};
inline constexpr unsigned kCmHeaderBytes = sizeof(CmHeader);
static_assert(kCmHeaderBytes == 25);

// Everything the settings point to lives here, so it outlives the instance.
// The keys the settings start from match the record of the seeds' indexes.
struct CmJob : test::CmSettings {
    int32_t gamma = 0;
    uint8_t curves[768] = {};
    std::vector<uint8_t> weightRecord;  // exactly as long as the record, for the sanitizers
    test::ChunkDir dir;

    explicit CmJob(const CmHeader& h) {
        static const uint32_t processModes[4] = {0, 1, 2, 4};
        static const uint32_t selectAs[4] = {1, 2, 0, 3};
        s2.pixelFormat = h.flags & 2 ? 0 : 1;
        s1.processMode = processModes[(h.flags >> 2) & 3];
        s2.selectA = selectAs[(h.flags >> 4) & 3];
        s2.blackScaling = h.flags & 64 ? 1 : 0;
        s1.processLevel = h.levels & 3;
        s1.neutralSetting = h.levels & 4 ? 50 : 40;
        s2.inkScaleGate = h.levels & 8 ? 1 : 2;
        s1.curveSource = h.levels & 32 ? 1 : 0;
        if (h.flags & 128) {
            gamma = 60 + h.gamma;
            dir.add(1, &gamma);
        }
        if (h.levels & 16) {
            for (int i = 0; i < 768; ++i) curves[i] = static_cast<uint8_t>((i % 256) * (200 + i / 256 * 20) / 255);
            dir.add(256, curves);
        }
        s1.chunkDir = dir.get();  // an empty directory holds nothing
    }

    // The channel-weight record for a table of `channels` inks; the loader
    // reads it when the colour table has been read, so the harness writes it
    // (once) before that call, when the table's channel count is known.
    void setWeights(const CmHeader& h, uint32_t channels) {
        if (!(h.flags & 1)) return;
        std::vector<uint8_t> weights;
        for (uint32_t c = 0; c < channels && c < 20; ++c) weights.push_back(static_cast<uint8_t>(30 + h.weights[c] % 41));
        weightRecord = test::channelWeightRecord(h.key, weights);
        dir.add(512, weightRecord.data());
    }
};

}  // namespace inkdot::fuzz
