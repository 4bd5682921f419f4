#include "image/plane_writer.h"

#include <array>
#include <cstring>

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
    // A whole byte's four samples at a time; the last byte's may run past the
    // width into the spare room and are not written.
    levels_.resize(size_t{width_ + 3} / 4 * 4);
    static const std::array<std::array<uint8_t, 4>, 256> kSamples = [] {
        std::array<std::array<uint8_t, 4>, 256> samples{};
        for (unsigned byte = 0; byte < 256; ++byte)
            for (unsigned k = 0; k < 4; ++k)
                samples[byte][k] = static_cast<uint8_t>(3 - ((byte >> (6 - 2 * k)) & 3));  // first pixel in the top two bits
        return samples;
    }();
    for (size_t i = 0; i < levels_.size() / 4; ++i) std::memcpy(&levels_[4 * i], kSamples[packed[i]].data(), 4);
    return file_.write(levels_.data(), width_, error);
}

bool PlaneWriter::finish(std::string& error) { return file_.commit(error); }

}  // namespace inkdot::tools
