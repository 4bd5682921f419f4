// The pack file: round trip and refusal of damaged packs.
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

TEST(Crc32, MatchesTheStandardCheckValue) {
    const std::string text = "123456789";
    EXPECT_EQ(crc32({reinterpret_cast<const uint8_t*>(text.data()), text.size()}), 0xCBF43926u);
    EXPECT_EQ(crc32({}), 0u);
}

TEST(Pack, RoundTripKeepsEveryBlock) {
    const BlockMap blocks = sampleBlocks();
    const Bytes bytes = writePack(blocks);
    Pack pack;
    std::string error;
    ASSERT_TRUE(pack.open(std::span<const uint8_t>(bytes), error)) << error;
    ASSERT_EQ(pack.entries().size(), blocks.size());
    for (const auto& [number, content] : blocks) {
        const PackEntry* e = pack.find(number);
        ASSERT_NE(e, nullptr) << number;
        EXPECT_EQ(Bytes(e->bytes.begin(), e->bytes.end()), content) << number;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(e->bytes.data()) % 4, reinterpret_cast<uintptr_t>(bytes.data()) % 4)
            << "blocks start at multiples of 4";
    }
    EXPECT_EQ(pack.find(1), nullptr);
}

TEST(Pack, HeaderHoldsMagicVersionCountAndSizeAndOwnedBytesOpen) {
    const Bytes bytes = writePack(sampleBlocks());
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 8), "INKDPACK");
    EXPECT_EQ(readU32le(bytes, 8), 1u);
    EXPECT_EQ(readU32le(bytes, 12), 4u);
    EXPECT_EQ(readU32le(bytes, 16), bytes.size());
    Pack pack;
    std::string error;
    ASSERT_TRUE(pack.open(Bytes(bytes), error)) << error;
    EXPECT_EQ(pack.find(1000)->bytes.size(), 5u);
}

struct Damage {
    const char* what;
    void (*apply)(Bytes&);
    const char* message;
};

class DamagedPack : public ::testing::TestWithParam<Damage> {};

TEST_P(DamagedPack, IsRefusedWithAClearReason) {
    Bytes bytes = writePack(sampleBlocks());
    GetParam().apply(bytes);
    Pack pack;
    std::string error;
    EXPECT_FALSE(pack.open(std::span<const uint8_t>(bytes), error));
    EXPECT_NE(error.find(GetParam().message), std::string::npos) << error;
    EXPECT_TRUE(pack.entries().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Refusals, DamagedPack,
    ::testing::Values(
        Damage{"bad magic", [](Bytes& b) { b[0] = 'X'; }, "bad magic"},
        Damage{"empty file", [](Bytes& b) { b.clear(); }, "shorter than the header"},
        Damage{"header only", [](Bytes& b) { b.resize(10); }, "shorter than the header"},
        Damage{"truncated", [](Bytes& b) { b.resize(b.size() - 1); }, "truncated"},
        Damage{"stray bytes", [](Bytes& b) { b.push_back(0); }, "stray bytes"},
        Damage{"flipped data bit", [](Bytes& b) { b[b.size() - 3] ^= 0x10; }, "checksum mismatch"},
        Damage{"flipped directory bit", [](Bytes& b) { b[30] ^= 1; }, "checksum mismatch"},
        Damage{"future version", [](Bytes& b) { putU32le(b, 8, 2); }, "unsupported pack version 2"},
        Damage{"count too large",
               [](Bytes& b) {
                   putU32le(b, 12, 100000);
                   reseal(b);
               },
               "does not fit"},
        Damage{"block beyond the end",
               [](Bytes& b) {
                   putU32le(b, 24 + 12 * 3 + 8, 100000);  // size of the last block
                   reseal(b);
               },
               "outside its place"},
        Damage{"block inside the directory",
               [](Bytes& b) {
                   putU32le(b, 24 + 4, 24);  // offset of the first block
                   reseal(b);
               },
               "outside its place"},
        Damage{"blocks out of order",
               [](Bytes& b) {
                   putU32le(b, 24 + 12, 0);  // second block renumbered to 0, same as the first
                   reseal(b);
               },
               "rising block order"}),
    [](const auto& info) {
        std::string name = info.param.what;
        for (char& c : name)
            if (c == ' ') c = '_';
        return name;
    });

TEST(DefaultPack, OpensAndHoldsTheBlocksTheDriverStartsFrom) {
    Pack pack;
    std::string error;
    ASSERT_TRUE(pack.open(defaultPackBytes(), error)) << error;
    EXPECT_NE(pack.find(0), nullptr) << "colour index";
    EXPECT_NE(pack.find(900), nullptr) << "channel correction index";
    const PackEntry* list = pack.find(1000);
    ASSERT_NE(list, nullptr) << "request list";
    // Every id of the request list names a block of the pack.
    for (size_t i = 0; readU16le(list->bytes, i) != 65535; i += 2)
        EXPECT_NE(pack.find(readU16le(list->bytes, i)), nullptr) << "request list position " << i / 2;
}

}  // namespace
}  // namespace inkdot::tools
