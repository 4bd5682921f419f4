// Builds resource index texts for tests: records, the three name lists and
// the framing lines, as the driver's index files lay them out.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace inkdot::test {

// One record's tokens as text, so tests can write odd values; `trailing`: extra tokens after the ninth.
struct IndexEntry {
    std::string blockNo, tableId, name1, name2, key5, key6, name3, key8, key9, trailing;
};

struct IndexTextWriter {
    std::vector<IndexEntry> records;
    std::vector<std::string> list1{"L0", "L1", "L2", "L3"};
    std::optional<int32_t> list2Base;  // written before list 2's names when set
    std::vector<std::string> list2{"Plain", "Photo"};
    std::vector<std::string> list3{"M0", "M1", "M2", "M3", "M4"};
    std::string blankLines;  // inserted between sections ("\r\n\r\n" to test that they vanish)
    std::string lead;        // written before every token (blanks to test skipping)

    void add(int32_t block, int32_t table, std::string n1, std::string n2, int32_t k5, int32_t k6,
             std::string n3, int32_t k8, int32_t k9) {
        using std::to_string;
        records.push_back({to_string(block), to_string(table), std::move(n1), std::move(n2), to_string(k5),
                           to_string(k6), std::move(n3), to_string(k8), to_string(k9), ""});
    }

    // The text, NUL-terminated (c_str of the result).
    std::string text() const {
        const auto names = [this](const std::vector<std::string>& list) {
            std::string line;
            for (const std::string& n : list) line += lead + n + " ";
            return line + "\r\n";
        };
        std::string out = "; colour table index\r\n//3 index\r\n; block table name1 name2 k5 k6 name3 k8 k9\r\n";
        out += blankLines;
        for (const IndexEntry& r : records) {
            for (const std::string* t : {&r.blockNo, &r.tableId, &r.name1, &r.name2, &r.key5, &r.key6, &r.name3,
                                         &r.key8, &r.key9})
                out += lead + *t + " ";
            out += r.trailing + "\r\n";
        }
        out += "//\r\n" + blankLines + names(list1) + blankLines;
        if (list2Base) out += lead + std::to_string(*list2Base) + " ";
        return out + names(list2) + blankLines + names(list3) + blankLines + "1\r\n";
    }
};

}  // namespace inkdot::test
