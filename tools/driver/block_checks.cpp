#include "driver/block_checks.h"

#include <algorithm>

#include "pack/byte_io.h"

namespace inkdot::tools {
namespace {

constexpr size_t kZeroTail = 64;          // covers a NUL for index texts and small over-reads
constexpr size_t kColourHeader = 76;      // fixed part of a colour table, up to the grid levels
constexpr size_t kCorrectionTablesSize = 21 * 256;
constexpr size_t kGridLevelsSize = 2 + 32;
constexpr size_t kMatrixHeader = 4;
constexpr size_t kDotSplitSize = 256 * 3;
constexpr size_t kMaxRequestIds = 15;
constexpr size_t kChannelsNeeded = 4;
constexpr size_t kInkParamAt = 48;           // big-endian signed 16-bit A, then B
constexpr size_t kDataAreaAt = 16;           // u32 offset, then u32 size
constexpr size_t kDescriptorSize = 8;        // u32 nonzero, u16 kind 1, u16 block id
constexpr uint16_t kDescriptorKind = 1;
constexpr int kOneBitDotWeights[] = {250, 350, 500};  // ink parameter A: the engine has spreads for these
constexpr int kMaxDotWeight = 1000;          // percent
constexpr unsigned kMaxDotSplitRowSum = 255; // a row's three amounts share one pixel

std::string shortBy(size_t have, uint64_t need) {
    return "holds " + std::to_string(have) + " bytes, its layout needs " + std::to_string(need);
}

std::string checkColourTable(std::span<const uint8_t> b) {
    if (b.size() < kColourHeader) return shortBy(b.size(), kColourHeader);
    const uint64_t n0 = b[72], n1 = b[73], n2 = b[74], channels = b[75];
    const uint64_t nodes = channels * n0 * n1 * n2;
    const uint64_t need = kColourHeader + 3 * n0 + nodes + n0 + n0 * channels;
    if (b.size() < need) return shortBy(b.size(), need);
    const uint64_t areaAt = readU32le(b, 16), areaSize = readU32le(b, 20);
    if (areaSize != 0 && areaAt + areaSize > b.size()) return "has its data area outside the block";
    return {};
}

std::string checkRouting(std::span<const uint8_t> b) {
    // Records end with 0xFE; a 0xFF where a record would start ends the list.
    size_t i = 0;
    while (i < b.size()) {
        if (b[i] == 0xFF) return {};
        while (i < b.size() && b[i] != 0xFE) ++i;
        ++i;
    }
    return "is not ended by 0xFF";
}

std::string checkRequestList(std::span<const uint8_t> b) {
    for (size_t i = 0; i + 1 < b.size() && i / 2 <= kMaxRequestIds; i += 2)
        if (readU16le(b, i) == 65535) return {};
    return "has no 65535 end mark within 16 ids";
}

std::string checkMatrix(std::span<const uint8_t> b) {
    if (b.size() < kMatrixHeader) return shortBy(b.size(), kMatrixHeader);
    const uint64_t w = b[0] == 255 ? 256 : b[0];  // the byte 255 stands for 256 cells
    const uint64_t h = b[1] == 255 ? 256 : b[1];
    if (w == 0 || h == 0 || w * h > 65535) return "has a matrix size the engine cannot hold";
    if ((w & (w - 1)) != 0) return "has a width of " + std::to_string(w) + " cells, which is no power of two";
    const uint64_t need = kMatrixHeader + 2 * w * h;
    if (b.size() < need) return shortBy(b.size(), need);
    return {};
}

std::string atLeast(std::span<const uint8_t> b, size_t need) {
    return b.size() < need ? shortBy(b.size(), need) : std::string{};
}

std::string checkDotSplit(std::span<const uint8_t> b) {
    if (b.size() < kDotSplitSize) return shortBy(b.size(), kDotSplitSize);
    for (size_t row = 0; row < 256; ++row)
        if (unsigned{b[3 * row]} + b[3 * row + 1] + b[3 * row + 2] > kMaxDotSplitRowSum)
            return "has row " + std::to_string(row) + ", whose dot amounts add up to more than 255";
    return {};
}

int16_t inkParam(std::span<const uint8_t> table, int i) {
    return static_cast<int16_t>(table[kInkParamAt + 2 * i] << 8 | table[kInkParamAt + 2 * i + 1]);
}

}  // namespace

const char* roleName(BlockRole role) {
    switch (role) {
        case BlockRole::IndexText: return "index text";
        case BlockRole::ColourTable: return "colour table";
        case BlockRole::Routing: return "routing table";
        case BlockRole::BaseWeights: return "base weights";
        case BlockRole::CorrectionTables: return "correction tables";
        case BlockRole::RequestList: return "request list";
        case BlockRole::GridLevels: return "grid levels";
        case BlockRole::ThresholdMatrix: return "threshold matrix";
        case BlockRole::DotSplit: return "dot-split table";
    }
    return "block";
}

std::string checkBlock(BlockRole role, std::span<const uint8_t> bytes) {
    switch (role) {
        case BlockRole::IndexText: return atLeast(bytes, 1);
        case BlockRole::ColourTable: return checkColourTable(bytes);
        case BlockRole::Routing: return checkRouting(bytes);
        case BlockRole::BaseWeights: return atLeast(bytes, kChannelsNeeded);
        case BlockRole::CorrectionTables: return atLeast(bytes, kCorrectionTablesSize);
        case BlockRole::RequestList: return checkRequestList(bytes);
        case BlockRole::GridLevels: return atLeast(bytes, kGridLevelsSize);
        case BlockRole::ThresholdMatrix: return checkMatrix(bytes);
        case BlockRole::DotSplit: return checkDotSplit(bytes);
    }
    return {};
}

std::string checkHalftoneUse(std::span<const uint8_t> table, unsigned outputBits) {
    if (outputBits == 2) {
        const uint64_t at = readU32le(table, kDataAreaAt), size = readU32le(table, kDataAreaAt + 4);
        if (size < kDescriptorSize || at + size > table.size() || readU32le(table, at) == 0 ||
            readU16le(table, at + 4) != kDescriptorKind)
            return "names no dot-split block, which two-bit output needs";
        return {};
    }
    const int a = inkParam(table, 0), b = inkParam(table, 1);
    if (std::find(std::begin(kOneBitDotWeights), std::end(kOneBitDotWeights), a) == std::end(kOneBitDotWeights))
        return "has ink parameter A = " + std::to_string(a) + "; one-bit halftoning takes 250, 350 or 500";
    if (b < 1 || b > kMaxDotWeight)
        return "has ink parameter B = " + std::to_string(b) + "; one-bit halftoning takes 1 to 1000";
    return {};
}

std::vector<uint8_t> engineCopy(std::span<const uint8_t> bytes) {
    std::vector<uint8_t> copy(bytes.size() + kZeroTail, 0);
    std::copy(bytes.begin(), bytes.end(), copy.begin());
    return copy;
}

}  // namespace inkdot::tools
