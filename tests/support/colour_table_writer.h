// Builds colour table blocks for tests: header parameters, grid levels, node
// data from a function of the node's input colour, the two neutral lists and
// an optional data area appended at the end. Neutral node i holds 10 i + c in channel c.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <vector>

namespace inkdot::test {

struct ColourTableWriter {
    uint8_t gridCount[3] = {3, 3, 3};
    uint8_t channels = 4;
    std::vector<uint8_t> levels[3];  // empty: evenly spaced from 0 to 255
    uint8_t tableMode = 0;
    uint8_t blackMode = 0;
    uint8_t adjustDominant[3] = {};
    int8_t adjustHue[3] = {};
    int8_t saturationOffset = 0;
    int8_t adjustMinimum[3] = {};
    int16_t inkParam[5] = {100, 100, 0, 0, 0};
    std::vector<uint8_t> extraData;  // optional data area
    std::vector<uint8_t> neutralList;   // n values; empty: 200 + i
    // Ink bytes of a node from its red, green, blue levels. Empty: a simple CMYK
    // separation, c, m, y = 255 - r, g, b and black their minimum / 2.
    std::function<void(uint8_t r, uint8_t g, uint8_t b, uint8_t* inks)> node;

    size_t nodeDataOffset() const { return 76 + 3u * gridCount[0]; }

    std::vector<uint8_t> build() const {
        const int n = gridCount[0];
        std::vector<uint8_t> out(76, 0);
        out[15] = tableMode;
        out[24] = blackMode;
        for (int i = 0; i < 3; ++i) {
            out[32 + i] = adjustDominant[i];
            out[36 + i] = static_cast<uint8_t>(adjustHue[i]);
            out[42 + i] = static_cast<uint8_t>(adjustMinimum[i]);
        }
        out[39] = static_cast<uint8_t>(saturationOffset);
        for (int i = 0; i < 10; ++i) out[48 + i] = static_cast<uint8_t>(uint16_t(inkParam[i / 2]) >> (i % 2 ? 0 : 8));
        for (int i = 0; i < 3; ++i) out[72 + i] = gridCount[i];
        out[75] = channels;
        std::vector<uint8_t> lv[3];
        for (int a = 0; a < 3; ++a) {
            lv[a] = levels[a];
            for (int i = 0; levels[a].empty() && i < n; ++i) lv[a].push_back(uint8_t(n > 1 ? i * 255 / (n - 1) : 0));
            out.insert(out.end(), lv[a].begin(), lv[a].end());
            lv[a].resize(std::max<size_t>(lv[a].size(), n));  // a short axis reads as 0 beyond its levels
        }
        // Node data in lutData order, built from the first n levels of each
        // axis (a table with unequal counts still gets n^3 nodes).
        const auto fill = node ? node : [this](uint8_t r, uint8_t g, uint8_t b, uint8_t* inks) {
            const uint8_t cmy[3] = {uint8_t(255 - r), uint8_t(255 - g), uint8_t(255 - b)};
            for (uint8_t i = 0; i < channels; ++i) inks[i] = i < 3 ? cmy[i] : 0;
            if (channels > 3) inks[channels - 1] = static_cast<uint8_t>(std::min({cmy[0], cmy[1], cmy[2]}) / 2);
        };
        std::vector<uint8_t> inks(channels > 0 ? channels : 1);
        for (int i0 = 0; i0 < n; ++i0)
            for (int i1 = 0; i1 < n; ++i1)
                for (int i2 = 0; i2 < n; ++i2) {
                    fill(lv[0][i0], lv[1][i1], lv[2][i2], inks.data());
                    out.insert(out.end(), inks.begin(), inks.begin() + channels);
                }
        for (int i = 0; i < n; ++i) out.push_back(neutralList.empty() ? static_cast<uint8_t>(200 + i) : neutralList[i]);
        for (int i = 0; i < n; ++i)
            for (int c = 0; c < channels; ++c)
                out.push_back(static_cast<uint8_t>(10 * i + c));
        if (!extraData.empty()) {
            const uint32_t where[2] = {static_cast<uint32_t>(out.size()), static_cast<uint32_t>(extraData.size())};
            for (int i = 0; i < 8; ++i) out[16 + i] = static_cast<uint8_t>(where[i / 4] >> (8 * (i % 4)));
            out.insert(out.end(), extraData.begin(), extraData.end());
        }
        return out;
    }
};

}  // namespace inkdot::test
