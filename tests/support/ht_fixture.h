// Building halftone instances in tests through the real resource protocol,
// from hand-made blocks.
//
//   test::HtBlocks blocks;                      // defaults: a 16 x 16 matrix, 32 even levels
//   blocks.matrix = test::thresholdMatrixBlock(4, 4, test::rampValues(16));
//   test::MonoLut lut([](int v) { return 255 - v; });
//   test::HtInstance ht(settings, lut.lut, blocks);  // HalftoneNew and every phase
//   ASSERT_EQ(ht.rc, RC_OK);                    // first failing code, else RC_OK
//   ... Halftone(ht.ctx, ...) ...                // deleted when `ht` goes out of scope
//
// Colour instances read their source grid and dot-split descriptor through
// pointers into a ColourLut, which must outlive the protocol (as the
// colour-management instance must in real use).
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <numeric>
#include <vector>

#include "halftone/ht_context.h"
#include "inkdot/inkdot.h"
#include "support/memory_watch.h"

namespace inkdot::test {

using Bytes = std::vector<uint8_t>;

inline void putU16(Bytes& out, uint16_t v) {
    out.push_back(static_cast<uint8_t>(v));
    out.push_back(static_cast<uint8_t>(v >> 8));
}

// Request list: the ids in order, then the terminator 65535.
inline Bytes requestListBlock(const std::vector<uint16_t>& ids) {
    Bytes out;
    for (uint16_t id : ids) putU16(out, id);
    putU16(out, 65535);
    return out;
}

// The dot-split block's id, as colour management names it in the descriptor.
constexpr uint16_t kDotSplitId = 200;

// n levels spread evenly from 0 to 255 (level i = 255 i / (n - 1)).
inline Bytes evenLevels(unsigned n) {
    Bytes levels(n);
    for (unsigned i = 0; i < n; ++i) levels[i] = static_cast<uint8_t>(255 * i / (n - 1));
    return levels;
}

// Grid level block: the u16 count of levels, then the levels.
inline Bytes gridLevelBlock(const Bytes& levels) {
    Bytes out;
    putU16(out, static_cast<uint16_t>(levels.size()));
    out.insert(out.end(), levels.begin(), levels.end());
    return out;
}

// Threshold matrix block from the two size bytes (255 stands for 256) and the
// values row by row.
inline Bytes thresholdMatrixBlock(uint8_t widthByte, uint8_t heightByte, const std::vector<uint16_t>& values) {
    Bytes out{widthByte, heightByte, 0, 0};
    for (uint16_t v : values) putU16(out, v);
    return out;
}

// 0, 1, 2 ... cells - 1: every threshold once.
inline std::vector<uint16_t> rampValues(unsigned cells) {
    std::vector<uint16_t> values(cells);
    std::iota(values.begin(), values.end(), uint16_t{0});
    return values;
}

using DotSplitRow = std::array<uint8_t, 3>;  // small, medium, large

// Dot-split block: 256 rows from rowFor(level).
inline Bytes dotSplitBlock(const std::function<DotSplitRow(int)>& rowFor) {
    Bytes out;
    for (int r = 0; r < 256; ++r) {
        const DotSplitRow row = rowFor(r);
        out.insert(out.end(), row.begin(), row.end());
    }
    return out;
}

// A split that puts a level's ink into small dots up to 85, then medium, then large.
inline DotSplitRow layeredSplit(int level) {
    const auto layer = [level](int from) { return static_cast<uint8_t>(std::clamp(level - from, 0, 85)); };
    return {layer(0), layer(85), layer(170)};
}

// Dot-split descriptor as colour management keeps it in extraData: u32 present
// (1), u16 format (1), u16 block id.
inline Bytes dotSplitDescriptor(uint16_t blockId) {
    Bytes out{1, 0, 0, 0, 1, 0};
    putU16(out, blockId);
    return out;
}

// Monochrome CmLut: grayTable[v] = gray(v), the ink parameters, and a
// dot-split descriptor for two-bit instances. Not copyable: the CmLut points
// into `descriptor`.
struct MonoLut {
    CmLut lut{};
    Bytes descriptor = dotSplitDescriptor(kDotSplitId);

    explicit MonoLut(const std::function<int(int)>& gray, int32_t inkParam0 = 250, int32_t inkParam1 = 100) {
        for (int v = 0; v < 256; ++v) lut.grayTable[v] = static_cast<uint8_t>(gray(v));
        lut.channels = 4;
        lut.inkParam[0] = inkParam0;
        lut.inkParam[1] = inkParam1;
        lut.modelId = 7;
        lut.extraData = descriptor.data();
    }
    MonoLut(const MonoLut&) = delete;
    MonoLut& operator=(const MonoLut&) = delete;
};

// Colour CmLut with an n x n x n grid of four inks per node held in `nodes`,
// and a dot-split descriptor in `descriptor`. Not copyable: the CmLut points
// into the two vectors.
struct ColourLut {
    using Node = std::array<uint8_t, 4>;
    CmLut lut{};
    Bytes nodes;
    Bytes descriptor;

    // nodeAt(r, g, b) gives the inks at the grid levels r, g, b.
    ColourLut(const Bytes& levels, const std::function<Node(int, int, int)>& nodeAt) : descriptor(dotSplitDescriptor(kDotSplitId)) {
        const auto n = static_cast<unsigned>(levels.size());
        for (unsigned i = 0; i < n * n * n; ++i) {
            const Node node = nodeAt(levels[i / n / n], levels[i / n % n], levels[i % n]);
            nodes.insert(nodes.end(), node.begin(), node.end());
        }
        lut.channels = 4;
        for (unsigned axis = 0; axis < 3; ++axis) {
            lut.gridCount[axis] = n;
            std::copy(levels.begin(), levels.end(), lut.grid[axis]);
        }
        lut.inkParam[0] = 250;
        lut.inkParam[1] = 100;
        lut.modelId = 9;
        lut.lutData = nodes.data();
        lut.lutDataBlock = nodes.data();  // owned here, never released by the halftone instance
        lut.extraData = descriptor.data();
    }
    ColourLut(const ColourLut&) = delete;
    ColourLut& operator=(const ColourLut&) = delete;
};

// The blocks of one instance, one per phase.
struct HtBlocks {
    // Position p names block 100 + p: grid levels, then the matrix of each resolution class.
    Bytes requestList = requestListBlock({100, 101, 102, 103, 104});
    Bytes gridLevels = gridLevelBlock(evenLevels(32));
    Bytes matrix = thresholdMatrixBlock(16, 16, rampValues(256));
    Bytes dotSplit = dotSplitBlock(layeredSplit);
};

// Settings with the usual defaults: dither mode 1, 720 x 720, 64 pixels wide.
inline HtSettings htSettings(uint32_t method, uint32_t colourMode, uint32_t outputBits, uint32_t width = 64,
                             uint32_t resolutionX = 720, uint32_t resolutionY = 720) {
    return HtSettings{.method = method, .ditherMode = 1, .inputFormat = colourMode == 0 ? 0u : 3u, .colourMode = colourMode,
                      .resolutionX = resolutionX, .resolutionY = resolutionY, .outputBits = outputBits, .width = width};
}

// An empty block's start: not null, with nothing behind it that the sanitizer lets a read reach.
inline const uint8_t* start(const Bytes& block) {
    static const uint8_t* const empty = new uint8_t[0];
    return block.empty() ? empty : block.data();
}

// An instance created by HalftoneNew and fed the blocks in protocol order,
// sized (each block's exact length) or unsized. `rc` is the first code other
// than RC_OK (or RC_OK), `answers` the next-block answers of the calls made.
// Deleted on destruction.
struct HtInstance {
    HtContext* ctx = nullptr;
    uint32_t rc = RC_OK;
    std::vector<uint32_t> answers;

    // Feeds `phases` calls (every phase the instance needs when negative).
    HtInstance(const HtSettings& settings, const CmLut& lut, const HtBlocks& blocks = HtBlocks{}, int phases = -1,
               bool sized = false) {
        uint32_t model = 0;
        rc = HalftoneNew(&settings, &lut, 0, &model, &ctx);
        if (rc != RC_OK) return;
        const Bytes* order[] = {&blocks.requestList, &blocks.gridLevels, &blocks.matrix, &blocks.dotSplit};
        if (phases < 0) phases = settings.outputBits == 2 ? 4 : 3;
        for (int p = 0; p < phases && p < 4 && rc == RC_OK; ++p) {
            uint32_t next = 0xDEADBEEF;  // shows whether the call wrote an answer
            const Bytes& b = *order[p];
            rc = sized ? HalftoneSetResourceSized(ctx, start(b), static_cast<uint32_t>(b.size()), &next)
                       : HalftoneSetResource(ctx, b.data(), &next);
            answers.push_back(next);
        }
    }
    ~HtInstance() { EXPECT_TRUE(ctx == nullptr || HalftoneDelete(ctx) == RC_OK); }
    HtInstance(const HtInstance&) = delete;
    HtInstance& operator=(const HtInstance&) = delete;
};

// A monochrome instance (ink 255 - v unless given) fed through the protocol
// under its own MemoryWatch, declared first so that it checks for leaks after
// the instance is deleted.
struct WatchedMono {
    MemoryWatch watch;
    MonoLut lut;
    HtInstance ht;
    explicit WatchedMono(const HtSettings& s, const HtBlocks& blocks = HtBlocks{}, int phases = -1,
                         const std::function<int(int)>& gray = [](int v) { return 255 - v; })
        : lut(gray), ht(s, lut.lut, blocks, phases) {}
    HtContext& ctx() { return *ht.ctx; }
};

}  // namespace inkdot::test
