// Bounded readers for the resource blocks the driver hands over.
//
// A block is a view of bytes with a length. The sized operations give the
// length the driver passed; the unsized ones cannot know it and give
// kUnboundedBlock, so that the same code serves both and a valid block reads
// the same either way. Reads outside the block see zeros, so a reader can
// never leave the block; the format checks still refuse a block that is
// shorter than its format needs (holds() before reading), because a zero
// read past the end is no data. Multi-byte values are little-endian, except
// the 16-bit parameters of the colour table block (be16).
#pragma once

#include <cstddef>
#include <cstdint>

namespace inkdot {

inline constexpr size_t kUnboundedBlock = SIZE_MAX;

struct ByteView {
    const uint8_t* data = nullptr;
    size_t size = 0;

    ByteView() = default;
    // A bare pointer is a block of unknown length.
    ByteView(const uint8_t* bytes, size_t length = kUnboundedBlock) : data(bytes), size(length) {}

    bool isNull() const { return data == nullptr; }

    // True when `count` bytes from `offset` lie inside the block. Written so
    // that no sum can wrap, also for the unbounded length.
    bool holds(size_t offset, size_t count) const { return offset <= size && count <= size - offset; }

    // The part of the block from `offset` on (empty past the end).
    ByteView from(size_t offset) const {
        return offset <= size ? ByteView(data + offset, size - offset) : ByteView(data + size, 0);
    }

    uint8_t u8(size_t offset) const { return offset < size ? data[offset] : 0; }
    int16_t s8(size_t offset) const { return static_cast<int8_t>(u8(offset)); }
    uint16_t u16le(size_t offset) const {
        return static_cast<uint16_t>(u8(offset) | u8(offset + 1) << 8);
    }
    uint32_t u32le(size_t offset) const {
        return static_cast<uint32_t>(u16le(offset)) | static_cast<uint32_t>(u16le(offset + 2)) << 16;
    }
    // Big-endian signed 16-bit value, sign-extended.
    int32_t be16(size_t offset) const { return static_cast<int16_t>(static_cast<uint16_t>(u8(offset) << 8 | u8(offset + 1))); }
};

// Readers for data whose length travels elsewhere (a chunk the driver points
// to, an area colour management keeps at a known minimum size).
inline uint16_t readU16le(const uint8_t* p) { return ByteView(p).u16le(0); }
inline uint32_t readU32le(const uint8_t* p) { return ByteView(p).u32le(0); }

}  // namespace inkdot
