// The pack file: numbered resource blocks in one checked file.
//
//   offset  size  content
//   0       8     magic "INKDPACK"
//   8       4     format version (1)
//   12      4     block count
//   16      4     total size of the file in bytes
//   20      4     CRC-32 of bytes 24 .. total size (directory and data)
//   24      12×n  directory, by rising block number: {number, offset, size}
//   ...           block data; each block starts at a multiple of 4
//
// All words are little-endian. The reader refuses a file whose magic, version,
// size, checksum or directory does not hold together.
#pragma once

#include <cstddef>
#include <cstdint>

namespace inkdot::tools::packformat {

inline constexpr char kMagic[8] = {'I', 'N', 'K', 'D', 'P', 'A', 'C', 'K'};
inline constexpr uint32_t kVersion = 1;
inline constexpr size_t kVersionAt = 8;
inline constexpr size_t kCountAt = 12;
inline constexpr size_t kTotalSizeAt = 16;
inline constexpr size_t kCrcAt = 20;
inline constexpr size_t kHeaderSize = 24;
inline constexpr size_t kEntrySize = 12;
inline constexpr size_t kBlockAlignment = 4;  // keeps u16 and u32 tables aligned in memory

}  // namespace inkdot::tools::packformat
