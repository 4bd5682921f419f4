// Writing an 8-bit gray or RGB PNG row by row into an AtomicFile.
#pragma once

#include <png.h>

#include <cstdint>
#include <string>

#include "image/atomic_file.h"

namespace inkdot::tools {

class PngWriter {
public:
    ~PngWriter();
    bool open(const std::string& path, uint32_t width, uint32_t height, unsigned channels, std::string& error);
    bool writeRow(const uint8_t* row, std::string& error);
    // Ends the image and moves the file into place.
    bool finish(std::string& error);

private:
    AtomicFile file_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    char message_[200] = {};
};

}  // namespace inkdot::tools
