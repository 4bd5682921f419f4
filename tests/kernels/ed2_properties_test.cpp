// Properties of the two-bit error-diffusion kernels over whole patches and
// random runs: the printed dots follow the ink amount, and halving agrees
// with the plain reading of the smaller bytes of each pair.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "support/hand_context.h"

namespace inkdot::test {
namespace {

constexpr uint32_t kPatchWidth = 256;
constexpr uint32_t kPatchLines = 64;

// Tables as the resource protocol would build them for a 64 x 64 matrix:
// tone 16 i reaching 4096 at 255, split rows that move from small to medium
// to large dots as the amount grows, thresholds near the middle.
void realisticTables(Ed2Hand& h) {
    h.setMatrix(64, 64, permutationMatrix(64, 3));
    for (uint32_t i = 0; i < 255; ++i) h.tone[i] = static_cast<uint16_t>(16 * i);
    h.tone[255] = 4096;
    for (uint32_t a = 0; a < 256; ++a) {
        const uint32_t large = a > 170 ? a - 170 : 0;
        const uint32_t medium = a > 85 ? std::min(a, 170u) - 85 : 0;
        h.setSplit(static_cast<uint8_t>(a), static_cast<uint8_t>(a - medium - large), static_cast<uint8_t>(medium),
                   static_cast<uint8_t>(large));
        h.edThreshold[a] = static_cast<int16_t>((128 + 2 * a) / 3);
    }
}

// Flat patches in the three classes: each diffused plane prints about as
// often as its amount asks (dot value 255); plane 2, dithered by the matrix,
// as often as its split's tone over the matrix's 4096 cells. Monochrome
// patches read the amount through the curve.
TEST(Ed2Density, DotsFollowTheAmount) {
    struct Case { uint32_t colourMode; Ink ink; };
    const Case cases[] = {{0, {10}}, {0, {40}}, {0, {100}}, {0, {160}}, {0, {230}},
                          {1, {20, 60, 120, 200}}, {1, {200, 120, 60, 20}}, {1, {90, 90, 250, 140}}, {1, {5, 30, 10, 250}}};
    constexpr uint32_t kStride = kPatchWidth / 4;
    for (const Case& c : cases) {
        for (auto [resX, resY] : {std::pair{720u, 720u}, {1440u, 720u}, {360u, 720u}}) {
            SCOPED_TRACE(testing::Message() << "colour " << c.colourMode << ", amount " << int{c.ink.v0} << ", class " << resX);
            Ed2Hand h(ed2Settings(c.colourMode, c.colourMode ? 4 : 0, resX, resY, kPatchWidth));
            realisticTables(h);
            const uint32_t planes = c.colourMode ? 4 : 1;
            std::vector<uint8_t> in;
            for (uint32_t i = 0; i < kPatchWidth; ++i) {
                if (c.colourMode) in.insert(in.end(), {c.ink.v0, c.ink.v1, c.ink.v2, c.ink.v3});
                else in.push_back(100);
            }
            h.mapGray(100, c.ink.v0);
            std::vector<uint8_t> out(4 * kStride);
            uint32_t dots[4] = {};
            for (uint32_t y = 0; y < kPatchLines; ++y) {
                ASSERT_EQ(h.run(in.data(), out.data(), kStride, 0, kPatchWidth, 0, y), RC_OK);
                for (unsigned k = 0; k < planes; ++k)
                    for (uint32_t i = 0; i < kPatchWidth; ++i) dots[k] += codeAt(out.data() + k * kStride, i) != 0;
            }
            const uint8_t amounts[4] = {c.ink.v0, c.ink.v1, c.ink.v2, c.ink.v3};
            for (unsigned k = 0; k < planes; ++k) {
                const double share = static_cast<double>(dots[k]) / (kPatchWidth * kPatchLines);
                if (k == 2) EXPECT_NEAR(share, h.ctx.splitToneTotal[amounts[2]] / 4096.0, 0.01);
                else EXPECT_NEAR(share, amounts[k] / 255.0, 0.02) << "plane " << k;
            }
        }
    }
}

// Random tables for the sister checks: any content the kernels accept.
void randomTables(Ed2Hand& h, std::mt19937& rng) {
    std::uniform_int_distribution<uint32_t> byte(0, 255);
    std::vector<uint16_t> cells(32 * 32);
    for (auto& c : cells) c = static_cast<uint16_t>(rng() % 1024);
    h.setMatrix(32, 32, cells);
    for (uint32_t i = 0; i < 256; ++i) h.tone[i] = static_cast<uint16_t>(4 * i + rng() % 4);
    for (uint32_t r = 0; r < 256; ++r) {
        const uint32_t s = byte(rng) / 3, m = byte(rng) / 3, l = byte(rng) / 3;
        h.setSplit(static_cast<uint8_t>(r), static_cast<uint8_t>(s), static_cast<uint8_t>(m), static_cast<uint8_t>(l));
        h.edThreshold[r] = static_cast<int16_t>(byte(rng) - 64);
        h.setGridCell(static_cast<uint8_t>(r), static_cast<uint8_t>(r / 9), static_cast<uint8_t>(byte(rng)));
    }
    for (auto& node : h.conversion) node = rng();
    h.monoCurve()[0] = 6;
    for (uint32_t e = 1; e < 6 + 257; ++e) h.monoCurve()[e] = static_cast<uint16_t>(byte(rng));
}

// Feeds random lines to two instances: one sees each pixel as it is, the
// other (halving) a pair whose smaller bytes are the pixel: the pixel and a
// twin with every byte a little larger.
void compareHalving(Ed2Hand& plain, Ed2Hand& sister, uint32_t bytesPerPixel, uint32_t planes, std::mt19937& rng) {
    constexpr uint32_t kCount = 61;
    const uint32_t stride = 16;
    for (uint32_t y = 0; y < 8; ++y) {
        std::vector<uint8_t> pixels(kCount * bytesPerPixel);
        for (auto& b : pixels) b = rng() % 5 == 0 ? (bytesPerPixel == 4 ? 0 : 255) : static_cast<uint8_t>(rng());
        std::vector<uint8_t> pairs;
        for (uint32_t i = 0; i < kCount; ++i) {
            const uint8_t* p = &pixels[i * bytesPerPixel];
            pairs.insert(pairs.end(), p, p + bytesPerPixel);
            for (uint32_t b = 0; b < bytesPerPixel; ++b) pairs.push_back(static_cast<uint8_t>(std::min(255, p[b] + 7)));
        }
        std::vector<uint8_t> a(planes * stride, 0x99), b(planes * stride, 0x99);
        ASSERT_EQ(plain.run(pixels.data(), a.data(), stride, 1, kCount, 2, y), RC_OK);
        ASSERT_EQ(sister.run(pairs.data(), b.data(), stride, 1, kCount, 2, y), RC_OK);
        ASSERT_EQ(a, b) << "line " << y;
        for (unsigned k = 0; k < 3; ++k) ASSERT_EQ(plain.errorLines[k], sister.errorLines[k]) << "line " << y;
    }
}

struct SisterCase {
    uint32_t colourMode, inputFormat, resX, resY;
    int32_t scaleMode;
};
class Ed2Sisters : public ::testing::TestWithParam<SisterCase> {};

TEST_P(Ed2Sisters, HalvedInputEqualsThePlainReadingOfTheSmallerBytes) {
    const SisterCase& c = GetParam();
    Ed2Hand plain(ed2Settings(c.colourMode, c.inputFormat, c.resX, c.resY, 128, 0));
    Ed2Hand sister(ed2Settings(c.colourMode, c.inputFormat, c.resX, c.resY, 128, c.scaleMode));
    std::mt19937 tablesA(7), tablesB(7), pixels(11);
    randomTables(plain, tablesA);
    randomTables(sister, tablesB);
    compareHalving(plain, sister, c.colourMode ? colourPixelBytes(c.inputFormat) : 1u, c.colourMode ? 4u : 1u, pixels);
}

INSTANTIATE_TEST_SUITE_P(Kernels, Ed2Sisters,
                         ::testing::Values(SisterCase{0, 0, 360, 720, -1}, SisterCase{1, 4, 360, 720, -1},
                                           SisterCase{1, 2, 360, 720, -1}));

}  // namespace
}  // namespace inkdot::test
