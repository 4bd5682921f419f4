#include "pack/pack.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "pack/crc32.h"
#include "pack/pack_format.h"

namespace inkdot::tools {

using namespace packformat;

namespace {

size_t alignUp(size_t n) { return (n + kBlockAlignment - 1) / kBlockAlignment * kBlockAlignment; }

std::string number(uint64_t v) { return std::to_string(v); }

}  // namespace

Bytes writePack(const BlockMap& blocks) {
    Bytes out(kHeaderSize + kEntrySize * blocks.size(), 0);
    std::memcpy(out.data(), kMagic, sizeof kMagic);
    putU32le(out, kVersionAt, kVersion);
    putU32le(out, kCountAt, static_cast<uint32_t>(blocks.size()));
    size_t entryAt = kHeaderSize;
    for (const auto& [blockNo, bytes] : blocks) {
        out.resize(alignUp(out.size()), 0);
        putU32le(out, entryAt, blockNo);
        putU32le(out, entryAt + 4, static_cast<uint32_t>(out.size()));
        putU32le(out, entryAt + 8, static_cast<uint32_t>(bytes.size()));
        out.insert(out.end(), bytes.begin(), bytes.end());
        entryAt += kEntrySize;
    }
    putU32le(out, kTotalSizeAt, static_cast<uint32_t>(out.size()));
    putU32le(out, kCrcAt, crc32(std::span(out).subspan(kHeaderSize)));
    return out;
}

bool Pack::open(Bytes&& bytes, std::string& error) {
    owned_ = std::move(bytes);
    return open(std::span<const uint8_t>(owned_), error);
}

namespace {

// Why `bytes` cannot be a pack as a whole (header, size, checksum), or "".
std::string headerProblem(std::span<const uint8_t> bytes) {
    if (bytes.size() < kHeaderSize)
        return "not an inkdot pack: " + number(bytes.size()) + " bytes is shorter than the header";
    if (std::memcmp(bytes.data(), kMagic, sizeof kMagic) != 0) return "not an inkdot pack: bad magic";
    const uint32_t version = readU32le(bytes, kVersionAt);
    if (version != kVersion)
        return "unsupported pack version " + number(version) + " (this build reads version 1)";
    const uint32_t totalSize = readU32le(bytes, kTotalSizeAt);
    if (totalSize > bytes.size())
        return "pack is truncated: the header says " + number(totalSize) + " bytes, there are " +
               number(bytes.size());
    if (totalSize < bytes.size()) return "pack has " + number(bytes.size() - totalSize) + " stray bytes behind its end";
    const uint32_t storedCrc = readU32le(bytes, kCrcAt);
    const uint32_t actualCrc = crc32(bytes.subspan(kHeaderSize));
    if (storedCrc != actualCrc) {
        char text[96];
        std::snprintf(text, sizeof text, "pack checksum mismatch (stored %08x, computed %08x)",
                      static_cast<unsigned>(storedCrc), static_cast<unsigned>(actualCrc));
        return text;
    }
    return {};
}

// The directory's blocks, in rising number, each aligned, after the directory
// and the block before it, and inside the file; "" when it is sound.
std::string readDirectory(std::span<const uint8_t> bytes, std::vector<PackEntry>& entries) {
    const uint32_t count = readU32le(bytes, kCountAt);
    if (count > (bytes.size() - kHeaderSize) / kEntrySize)
        return "pack directory of " + number(count) + " blocks does not fit the file";
    uint64_t previousEnd = kHeaderSize + uint64_t{count} * kEntrySize;
    for (uint32_t i = 0; i < count; ++i) {
        const size_t at = kHeaderSize + i * kEntrySize;
        const uint32_t blockNo = readU32le(bytes, at);
        const uint64_t offset = readU32le(bytes, at + 4);
        const uint64_t size = readU32le(bytes, at + 8);
        if (!entries.empty() && blockNo <= entries.back().number)
            return "pack directory is not in rising block order at block " + number(blockNo);
        if (offset < previousEnd || offset % kBlockAlignment != 0 || offset + size > bytes.size())
            return "pack block " + number(blockNo) + " lies outside its place in the file";
        previousEnd = offset + size;
        entries.push_back({blockNo, bytes.subspan(offset, size)});
    }
    return {};
}

}  // namespace

bool Pack::open(std::span<const uint8_t> bytes, std::string& error) {
    entries_.clear();
    bytes_ = {};
    std::string problem = headerProblem(bytes);
    if (problem.empty()) problem = readDirectory(bytes, entries_);
    if (!problem.empty()) {
        error = problem;
        entries_.clear();
        return false;
    }
    bytes_ = bytes;
    checksum_ = readU32le(bytes, kCrcAt);
    return true;
}

const PackEntry* Pack::find(uint32_t blockNo) const {
    for (const PackEntry& e : entries_)
        if (e.number == blockNo) return &e;
    return nullptr;
}

bool readFile(const std::string& path, Bytes& out, std::string& error) {
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) {
        error = "cannot open " + path + ": " + std::strerror(errno);
        return false;
    }
    out.clear();
    uint8_t buffer[65536];
    size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, f)) > 0) out.insert(out.end(), buffer, buffer + got);
    const bool failed = std::ferror(f) != 0;
    std::fclose(f);
    if (failed) {
        error = "cannot read " + path;
        return false;
    }
    return true;
}

}  // namespace inkdot::tools
