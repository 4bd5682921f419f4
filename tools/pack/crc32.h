// CRC-32 (the IEEE polynomial, reflected, as in zip and PNG) over a byte span.
#pragma once

#include <cstdint>
#include <span>

namespace inkdot::tools {

uint32_t crc32(std::span<const uint8_t> bytes);

}  // namespace inkdot::tools
