// The pack file: round trip and refusal of damaged packs (mistakes in a pack
// description are in cli_test).
#include <gtest/gtest.h>

#include "pack/crc32.h"
#include "pack/pack.h"
#include "pack/pack_format.h"

namespace inkdot::tools {
namespace {

// Re-seals a pack after a test changed its directory, so that only the
// change under test is wrong.
void reseal(Bytes& pack) { putU32le(pack, packformat::kCrcAt, crc32(std::span(pack).subspan(packformat::kHeaderSize))); }

// The pack as written reads back every block; each damage is refused with its
// reason and leaves no entries behind.
TEST(Pack, ReadsWhatItWroteAndRefusesDamage) {
    EXPECT_EQ(crc32({reinterpret_cast<const uint8_t*>("123456789"), 9}), 0xCBF43926u) << "the standard check value";
    const BlockMap blocks = {{0, {'/', '/', '3'}}, {7, {}}, {1000, {1, 2, 3, 4, 5}}, {65534, Bytes(300, 0xAB)}};  // 7: empty is allowed
    const struct { void (*apply)(Bytes&); const char* message; } cases[] = {
        {[](Bytes&) {}, ""},
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
        Bytes bytes = writePack(blocks);
        c.apply(bytes);
        Pack pack;
        std::string error;
        EXPECT_EQ(pack.open(std::span<const uint8_t>(bytes), error), *c.message == 0) << c.message;
        EXPECT_NE(error.find(c.message), std::string::npos) << error;
        EXPECT_EQ(pack.entries().size(), *c.message == 0 ? blocks.size() : 0) << c.message;
        for (const PackEntry& e : pack.entries()) {
            EXPECT_EQ(Bytes(e.bytes.begin(), e.bytes.end()), blocks.at(e.number)) << e.number;
            EXPECT_EQ(reinterpret_cast<uintptr_t>(e.bytes.data()) % 4, reinterpret_cast<uintptr_t>(bytes.data()) % 4)
                << "blocks start at multiples of 4";
        }
        EXPECT_EQ(pack.find(1), nullptr);
    }
}

}  // namespace
}  // namespace inkdot::tools
