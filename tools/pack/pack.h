// Reading and writing pack files: block number → bytes.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "pack/byte_io.h"

namespace inkdot::tools {

// The blocks a pack is built from, by block number.
using BlockMap = std::map<uint32_t, Bytes>;

// Lays the blocks out as a pack file.
Bytes writePack(const BlockMap& blocks);

struct PackEntry {
    uint32_t number;
    std::span<const uint8_t> bytes;
};

// A validated pack. It views the bytes it was opened on (the embedded pack)
// or owns them (a pack read from a file).
class Pack {
public:
    // Checks everything and keeps a view of `bytes`, which must outlive the
    // pack. On failure returns false with a one-line reason in `error`.
    bool open(std::span<const uint8_t> bytes, std::string& error);
    // Takes ownership of a file's contents, then opens it.
    bool open(Bytes&& bytes, std::string& error);

    // The block with this number, or null when the pack has none.
    const PackEntry* find(uint32_t number) const;
    const std::vector<PackEntry>& entries() const { return entries_; }
    size_t size() const { return bytes_.size(); }
    uint32_t checksum() const { return checksum_; }

private:
    Bytes owned_;
    std::span<const uint8_t> bytes_;
    std::vector<PackEntry> entries_;
    uint32_t checksum_ = 0;
};

// Reads a whole file. On failure returns false with the reason in `error`.
bool readFile(const std::string& path, Bytes& out, std::string& error);

// The pack compiled into the tools.
std::span<const uint8_t> defaultPackBytes();

}  // namespace inkdot::tools
