// Writes the benchmarks' synthetic photograph as an RGB PNG, the input of the
// whole-job timings (scripts/job-timing.sh): an A4 page at 1440x720 is a
// 4134 x 5669 image printed with two columns per pixel.
//
//   inkdot_photo_png OUT.png [WIDTH HEIGHT]
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "image/png_writer.h"
#include "synthetic_photo.h"

int main(int argc, char** argv) {
    if (argc != 2 && argc != 4) {
        std::fprintf(stderr, "usage: inkdot_photo_png OUT.png [WIDTH HEIGHT]\n");
        return 2;
    }
    const uint32_t width = argc == 4 ? static_cast<uint32_t>(std::strtoul(argv[2], nullptr, 10)) : 4134;
    const uint32_t height = argc == 4 ? static_cast<uint32_t>(std::strtoul(argv[3], nullptr, 10)) : 5669;
    if (width == 0 || height == 0 || width > 100000 || height > 100000) {
        std::fprintf(stderr, "inkdot_photo_png: width and height must be 1..100000\n");
        return 2;
    }
    std::string error;
    inkdot::tools::PngWriter png;
    std::vector<uint8_t> line(size_t{width} * 3);
    bool ok = png.open(argv[1], width, height, 3, error);
    for (uint32_t y = 0; ok && y < height; ++y) {
        inkdot::bench::photoLine(line.data(), y, 3, width, height);
        ok = png.writeRow(line.data(), error);
    }
    if (!ok || !png.finish(error)) {
        std::fprintf(stderr, "inkdot_photo_png: %s\n", error.c_str());
        return 1;
    }
    return 0;
}
