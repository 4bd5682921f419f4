// The built-in test chart, drawn row by row: a continuous gray ramp and gray
// steps, cyan, magenta and yellow ramps, red, green and blue ramps, a hue
// sweep from white through full colour to black, skin tones and dark tones.
#pragma once

#include <cstdint>
#include <string>

namespace inkdot::tools {

// The RGB colour of the chart at (x, y) for a chart of width × height.
void chartPixel(uint32_t x, uint32_t y, uint32_t width, uint32_t height, uint8_t rgb[3]);

bool writeChart(const std::string& path, uint32_t width, uint32_t height, std::string& error);

}  // namespace inkdot::tools
