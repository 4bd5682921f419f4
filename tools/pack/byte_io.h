// Little- and big-endian byte helpers for the resource blocks and the pack file.
// Writers append to a byte vector; readers take a span and an offset that the
// caller has already checked against the span's size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace inkdot::tools {

using Bytes = std::vector<uint8_t>;

inline void appendU8(Bytes& out, unsigned v) { out.push_back(static_cast<uint8_t>(v)); }

inline void appendU16le(Bytes& out, unsigned v) {
    out.push_back(static_cast<uint8_t>(v));
    out.push_back(static_cast<uint8_t>(v >> 8));
}

inline void appendU32le(Bytes& out, uint32_t v) {
    for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<uint8_t>(v >> shift));
}

inline void putU32le(Bytes& out, size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i) out[at + i] = static_cast<uint8_t>(v >> (8 * i));
}

inline uint16_t readU16le(std::span<const uint8_t> in, size_t at) {
    return static_cast<uint16_t>(in[at] | (in[at + 1] << 8));
}

inline uint32_t readU32le(std::span<const uint8_t> in, size_t at) {
    return static_cast<uint32_t>(in[at]) | (static_cast<uint32_t>(in[at + 1]) << 8) |
           (static_cast<uint32_t>(in[at + 2]) << 16) | (static_cast<uint32_t>(in[at + 3]) << 24);
}

inline int16_t readBe16(std::span<const uint8_t> in, size_t at) {
    return static_cast<int16_t>((in[at] << 8) | in[at + 1]);
}

}  // namespace inkdot::tools
