// Reading a fuzzer's byte string as the choices and blocks of a harness.
// Every read past the end gives zeros or an empty block, so a harness always
// runs to its end; blocks come as a 16-bit little-endian length and that
// many bytes, copied into an allocation of exactly that length so the
// sanitizers see any read behind a block.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "inkdot/inkdot.h"
#include "support/ht_fixture.h"

namespace inkdot::fuzz {

class FuzzInput {
public:
    FuzzInput(const uint8_t* data, size_t size) : data_(data), size_(size) {}

    bool empty() const { return at_ >= size_; }

    uint8_t u8() { return at_ < size_ ? data_[at_++] : 0; }
    uint16_t u16() { return static_cast<uint16_t>(u8() | u8() << 8); }

    // The next length-prefixed block.
    std::vector<uint8_t> block() {
        const size_t length = std::min<size_t>(u16(), empty() ? 0 : size_ - at_);
        std::vector<uint8_t> out(data_ + at_, data_ + at_ + length);
        at_ += length;
        return out;
    }

    // Fills `out` from the input, repeating a ramp once the input is used up.
    void fill(uint8_t* out, size_t n) {
        for (size_t i = 0; i < n; ++i) out[i] = empty() ? static_cast<uint8_t>(i * 37) : u8();
    }

private:
    const uint8_t* data_;
    size_t size_;
    size_t at_ = 0;
};

// A block in an allocation of exactly its length (never null).
struct ExactBlock {
    std::unique_ptr<uint8_t[]> bytes;
    uint32_t length;
    explicit ExactBlock(const std::vector<uint8_t>& from)
        : bytes(new uint8_t[from.size()]), length(static_cast<uint32_t>(from.size())) {
        std::copy(from.begin(), from.end(), bytes.get());
    }
    const uint8_t* data() const { return bytes.get(); }
};

// Appends a length-prefixed block (seed writing).
inline void putBlock(std::vector<uint8_t>& out, const std::vector<uint8_t>& block) {
    test::putU16(out, static_cast<uint16_t>(block.size()));
    out.insert(out.end(), block.begin(), block.end());
}

// A valid 5 x 5 x 5 four-ink grid: CMY the complement of RGB, K a quarter
// of the complement of red.
inline const CmLut& colourGrid() {
    static const test::ColourLut grid(test::evenLevels(5), [](int r, int g, int b) {
        return test::ColourLut::Node{uint8_t(255 - r), uint8_t(255 - g), uint8_t(255 - b), uint8_t((255 - r) / 4)};
    });
    return grid.lut;
}

// Gives an instance the tests' default halftone blocks (built once: they do
// not depend on the input) as it asks for them; the last call's result code.
inline uint32_t setDefaultBlocks(HtContext* ctx) {
    static const test::HtBlocks blocks;
    uint32_t next = 0, rc = RC_OK;
    for (const test::Bytes* b : {&blocks.requestList, &blocks.gridLevels, &blocks.matrix, &blocks.dotSplit}) {
        if (rc != RC_OK || next == INKDOT_NO_MORE_BLOCKS) break;
        rc = HalftoneSetResourceSized(ctx, b->data(), static_cast<uint32_t>(b->size()), &next);
    }
    return rc;
}

}  // namespace inkdot::fuzz
