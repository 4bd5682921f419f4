// The pack file: round trip and refusal of damaged packs (mistakes in a pack
// description are in cli_test).
#include <gtest/gtest.h>

#include "pack/crc32.h"
#include "pack/pack.h"
#include "pack/pack_format.h"

namespace inkdot::tools {
namespace {

BlockMap sampleBlocks() {
    BlockMap blocks;
    blocks[0] = {'/', '/', '3'};
    blocks[7] = {};  // an empty block is allowed
    blocks[1000] = {1, 2, 3, 4, 5};
    blocks[65534] = Bytes(300, 0xAB);
    return blocks;
}

// Re-seals a pack after a test changed its directory, so that only the
// change under test is wrong.
void reseal(Bytes& pack) { putU32le(pack, packformat::kCrcAt, crc32(std::span(pack).subspan(packformat::kHeaderSize))); }

TEST(Pack, RoundTripKeepsEveryBlock) {
    EXPECT_EQ(crc32({reinterpret_cast<const uint8_t*>("123456789"), 9}), 0xCBF43926u) << "the standard check value";
    const BlockMap blocks = sampleBlocks();
    const Bytes bytes = writePack(blocks);
    Pack pack;
    std::string error;
    ASSERT_TRUE(pack.open(std::span<const uint8_t>(bytes), error)) << error;
    ASSERT_EQ(pack.entries().size(), blocks.size());
    for (const auto& [number, content] : blocks) {
        const PackEntry* e = pack.find(number);
        ASSERT_TRUE(e && Bytes(e->bytes.begin(), e->bytes.end()) == content) << number;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(e->bytes.data()) % 4, reinterpret_cast<uintptr_t>(bytes.data()) % 4)
            << "blocks start at multiples of 4";
    }
    EXPECT_EQ(pack.find(1), nullptr);
}

// Each damage is refused with its reason and leaves no entries behind.
TEST(Pack, DamagedPacksAreRefusedWithAClearReason) {
    const struct { void (*apply)(Bytes&); const char* message; } cases[] = {
        {[](Bytes& b) { b[0] = 'X'; }, "bad magic"},
        {[](Bytes& b) { b.resize(10); }, "shorter than the header"},
        {[](Bytes& b) { b.resize(b.size() - 1); }, "truncated"},
        {[](Bytes& b) { b.push_back(0); }, "stray bytes"},
        {[](Bytes& b) { b[b.size() - 3] ^= 0x10; }, "checksum mismatch"},
        {[](Bytes& b) { putU32le(b, 8, 2); }, "unsupported pack version 2"},
        {[](Bytes& b) { putU32le(b, 12, 100000), reseal(b); }, "does not fit"},
        // Size of the last block, offset of the first, number of the second.
        {[](Bytes& b) { putU32le(b, 24 + 12 * 3 + 8, 100000), reseal(b); }, "outside its place"},
        {[](Bytes& b) { putU32le(b, 24 + 4, 24), reseal(b); }, "outside its place"},
        {[](Bytes& b) { putU32le(b, 24 + 12, 0), reseal(b); }, "rising block order"},
    };
    for (const auto& c : cases) {
        Bytes bytes = writePack(sampleBlocks());
        c.apply(bytes);
        Pack pack;
        std::string error;
        EXPECT_FALSE(pack.open(std::span<const uint8_t>(bytes), error)) << c.message;
        EXPECT_TRUE(error.find(c.message) != std::string::npos && pack.entries().empty()) << error;
    }
}

}  // namespace
}  // namespace inkdot::tools
