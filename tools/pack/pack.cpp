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

bool Pack::open(std::span<const uint8_t> bytes, std::string& error) {
    entries_.clear();
    bytes_ = {};
    if (bytes.size() < kHeaderSize) {
        error = "not an inkdot pack: " + number(bytes.size()) + " bytes is shorter than the header";
        return false;
    }
    if (std::memcmp(bytes.data(), kMagic, sizeof kMagic) != 0) {
        error = "not an inkdot pack: bad magic";
        return false;
    }
    const uint32_t version = readU32le(bytes, kVersionAt);
    if (version != kVersion) {
        error = "unsupported pack version " + number(version) + " (this build reads version 1)";
        return false;
    }
    const uint32_t totalSize = readU32le(bytes, kTotalSizeAt);
    if (totalSize > bytes.size()) {
        error = "pack is truncated: the header says " + number(totalSize) + " bytes, there are " +
                number(bytes.size());
        return false;
    }
    if (totalSize < bytes.size()) {
        error = "pack has " + number(bytes.size() - totalSize) + " stray bytes behind its end";
        return false;
    }
    const uint32_t storedCrc = readU32le(bytes, kCrcAt);
    const uint32_t actualCrc = crc32(bytes.subspan(kHeaderSize));
    if (storedCrc != actualCrc) {
        char text[96];
        std::snprintf(text, sizeof text, "pack checksum mismatch (stored %08x, computed %08x)",
                      static_cast<unsigned>(storedCrc), static_cast<unsigned>(actualCrc));
        error = text;
        return false;
    }
    const uint32_t count = readU32le(bytes, kCountAt);
    if (count > (bytes.size() - kHeaderSize) / kEntrySize) {
        error = "pack directory of " + number(count) + " blocks does not fit the file";
        return false;
    }
    const uint64_t directoryEnd = kHeaderSize + uint64_t{count} * kEntrySize;
    uint64_t previousEnd = directoryEnd;
    for (uint32_t i = 0; i < count; ++i) {
        const size_t at = kHeaderSize + i * kEntrySize;
        const uint32_t blockNo = readU32le(bytes, at);
        const uint64_t offset = readU32le(bytes, at + 4);
        const uint64_t size = readU32le(bytes, at + 8);
        if (!entries_.empty() && blockNo <= entries_.back().number) {
            error = "pack directory is not in rising block order at block " + number(blockNo);
            entries_.clear();
            return false;
        }
        if (offset < previousEnd || offset % kBlockAlignment != 0 || offset + size > bytes.size()) {
            error = "pack block " + number(blockNo) + " lies outside its place in the file";
            entries_.clear();
            return false;
        }
        previousEnd = offset + size;
        entries_.push_back({blockNo, bytes.subspan(offset, size)});
    }
    bytes_ = bytes;
    checksum_ = storedCrc;
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
