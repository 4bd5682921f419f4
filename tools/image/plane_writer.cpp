#include "image/plane_writer.h"

namespace inkdot::tools {

bool PlaneWriter::open(const std::string& path, uint32_t width, uint32_t height, unsigned bits, std::string& error) {
    width_ = width;
    bits_ = bits;
    if (!file_.open(path, error)) return false;
    const std::string header = (bits == 1 ? "P4\n" : "P5\n") + std::to_string(width) + " " +
                               std::to_string(height) + (bits == 1 ? "\n" : "\n3\n");
    return file_.write(header.data(), header.size(), error);
}

bool PlaneWriter::writeLine(const uint8_t* packed, std::string& error) {
    if (bits_ == 1) return file_.write(packed, (width_ + 7) / 8, error);
    levels_.resize(width_);
    for (uint32_t x = 0; x < width_; ++x) {
        const unsigned code = (packed[x / 4] >> (6 - 2 * (x % 4))) & 3;  // first pixel in the top two bits
        levels_[x] = static_cast<uint8_t>(3 - code);
    }
    return file_.write(levels_.data(), levels_.size(), error);
}

bool PlaneWriter::finish(std::string& error) { return file_.commit(error); }

}  // namespace inkdot::tools
