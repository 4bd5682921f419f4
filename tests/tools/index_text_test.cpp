// The index texts of the default pack: version-3 format, and for every key
// combination the driver can send exactly one record, naming a block the pack
// holds.
#include <gtest/gtest.h>

#include <sstream>

#include "driver/pack_keys.h"
#include "pack/pack.h"

namespace inkdot::tools {
namespace {

// A reading of the index format for checking texts: records of nine tokens
// between the heading line and a '/' line, then three name lists (the
// second may start with a base number) and a flag token.
struct IndexRecord {
    long blockNo, tableId;
    std::string name1, name2;
    long key5, key6;
    std::string name3;
    long key8, key9;
};

struct IndexText {
    std::string versionLine;
    std::vector<IndexRecord> records;
    std::vector<std::string> list1, list2, list3;
    long base2 = 0;
    std::string flag;

    long position(const std::vector<std::string>& list, const std::string& name) const {
        for (size_t i = list.size(); i-- > 0;)
            if (list[i] == name) return static_cast<long>(i);
        return -1;
    }
};

std::vector<std::string> tokens(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> out;
    for (std::string t; in >> t;) out.push_back(t);
    return out;
}

IndexText readIndex(std::span<const uint8_t> bytes) {
    std::string text(bytes.begin(), bytes.end());
    text = text.substr(0, text.find('\0'));
    std::istringstream in(text);
    IndexText index;
    std::string line;
    std::getline(in, index.versionLine);
    std::getline(in, line);  // heading
    while (std::getline(in, line)) {
        const auto t = tokens(line);
        if (t.empty()) continue;
        if (t[0][0] == '/') break;
        EXPECT_EQ(t.size(), 9u) << line;
        if (t.size() < 9) continue;
        index.records.push_back({std::stol(t[0]), std::stol(t[1]), t[2], t[3], std::stol(t[4]), std::stol(t[5]), t[6],
                                 std::stol(t[7]), std::stol(t[8])});
    }
    auto next = [&] {
        while (std::getline(in, line))
            if (!tokens(line).empty()) return tokens(line);
        return std::vector<std::string>{};
    };
    index.list1 = next();
    index.list2 = next();
    if (!index.list2.empty() && index.list2[0][0] != 'P') {
        index.base2 = std::stol(index.list2[0]);
        index.list2.erase(index.list2.begin());
    }
    index.list3 = next();
    const auto flag = next();
    index.flag = flag.empty() ? "" : flag[0];
    return index;
}

class DefaultIndex : public ::testing::TestWithParam<uint32_t> {
protected:
    void SetUp() override {
        std::string error;
        ASSERT_TRUE(pack.open(defaultPackBytes(), error)) << error;
        const PackEntry* e = pack.find(GetParam());
        ASSERT_NE(e, nullptr);
        index = readIndex(e->bytes);
    }
    Pack pack;
    IndexText index;
};

TEST_P(DefaultIndex, FollowsTheVersion3Format) {
    EXPECT_EQ(index.versionLine.substr(0, 3), "//3");
    EXPECT_FALSE(index.records.empty());
    EXPECT_LE(index.records.size(), 100u);
    EXPECT_LE(index.list1.size(), 12u);
    EXPECT_LE(index.list2.size(), 32u);
    EXPECT_LE(index.list3.size(), 12u);
    EXPECT_FALSE(index.flag.empty());
    for (const auto& r : index.records) {
        EXPECT_GT(r.blockNo, 0);
        for (const auto* name : {&r.name1, &r.name2, &r.name3}) EXPECT_LE(name->size(), 11u) << *name;
        EXPECT_GE(index.position(index.list1, r.name1), 0) << r.name1;
        EXPECT_GE(index.position(index.list2, r.name2), 0) << r.name2;
        EXPECT_GE(index.position(index.list3, r.name3), 0) << r.name3;
    }
}

TEST_P(DefaultIndex, HasOneRecordForEveryDriverSetting) {
    for (Resolution res : {Resolution::R720x720, Resolution::R1440x720, Resolution::R360x720, Resolution::R720x360})
        for (uint32_t mode : {keys::kColour, keys::kMono}) {
            int matches = 0;
            for (const auto& r : index.records) {
                const bool match = index.position(index.list1, r.name1) == long(keys::kMediaPlain) &&
                                   index.base2 + index.position(index.list2, r.name2) == long(keys::resolutionKey(res)) &&
                                   index.position(index.list3, r.name3) == 0 && r.key5 == long(mode) &&
                                   r.key6 == 0 && r.key8 == 0 && r.key9 == 0;
                if (!match) continue;
                ++matches;
                EXPECT_NE(pack.find(static_cast<uint32_t>(r.blockNo)), nullptr) << "record names block " << r.blockNo;
                EXPECT_FALSE(r.tableId >= 300 && r.tableId <= 399) << "table ids 300-399 would scale the whole table";
            }
            EXPECT_EQ(matches, 1) << "resolution key " << keys::resolutionKey(res) << ", mode " << mode;
        }
}

INSTANTIATE_TEST_SUITE_P(Blocks, DefaultIndex, ::testing::Values(0u, 900u));

}  // namespace
}  // namespace inkdot::tools
