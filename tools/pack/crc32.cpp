#include "pack/crc32.h"

#include <array>

namespace inkdot::tools {
namespace {

constexpr uint32_t kReflectedPolynomial = 0xEDB88320u;

constexpr std::array<uint32_t, 256> makeTable() {
    std::array<uint32_t, 256> table{};
    for (uint32_t n = 0; n < 256; ++n) {
        uint32_t c = n;
        for (int bit = 0; bit < 8; ++bit) c = (c & 1) ? kReflectedPolynomial ^ (c >> 1) : c >> 1;
        table[n] = c;
    }
    return table;
}

constexpr auto kTable = makeTable();

}  // namespace

uint32_t crc32(std::span<const uint8_t> bytes) {
    uint32_t c = 0xFFFFFFFFu;  // preset and final inversion make leading zeros count
    for (uint8_t b : bytes) c = kTable[(c ^ b) & 0xFF] ^ (c >> 8);
    return c ^ 0xFFFFFFFFu;
}

}  // namespace inkdot::tools
