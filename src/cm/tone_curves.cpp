#include "cm/tone_curves.h"

#include "cm/byte_read.h"
#include "cm/chunk_directory.h"
#include "cm/gamma.h"
#include "frame/memory.h"

namespace inkdot {
namespace {

constexpr int32_t kNeutralGamma = 150;  // what chunk 1 holding 0, or no chunk 1, means
constexpr int32_t kSettingLimit = 50;
constexpr int64_t kCubeScale = 6553600;  // the cubic pieces' A carries 65536 x 100

int32_t clampLevel(int32_t v) { return v < 0 ? 0 : (v > 255 ? 255 : v); }

int32_t cube(int32_t v) { return v * v * v; }  // |v| <= 256, fits 32 bits

// The cubic pieces: their products need more than 32 bits for strong
// settings, so they are formed in 64 bits and only the quotient comes back.
int32_t cubic(int32_t a, int32_t v) { return static_cast<int32_t>(static_cast<int64_t>(a) * cube(v) / kCubeScale); }

void limitAll(int32_t t[256]) {
    for (int i = 0; i < 256; ++i) t[i] = clampLevel(t[i]);
}

// The linear and cubic pieces meet at P with equal slope: a positive b lifts
// the curve with slope D / 100 from black and eases into white.
void applyBrightness(int32_t b, int32_t t[256]) {
    if (b > 0) {
        const int32_t d = 10000 / (100 - b);
        const int32_t p = ((300 - d) * 256) / (2 * d);
        const int32_t a = (d * 65536) / (3 * (p - 256) * (p - 256));
        for (int32_t i = 0; i < 256; ++i) {
            t[i] = i < p ? (d * t[i]) / 100 : cubic(a, t[i] - 256) + 256;
        }
    } else if (b < 0) {
        const int32_t d = 10000 / (b + 100);
        const int32_t p = (3 * (d - 100) * 256) / (2 * d);
        const int32_t a = (d * 65536) / (3 * p * p);
        for (int32_t i = 0; i < 256; ++i) {
            t[i] = i < p ? cubic(a, t[i]) : ((t[i] - 256) * d + 25600) / 100;
        }
    } else {
        return;
    }
    limitAll(t);
}

// A positive k steepens the middle around 128 with cubic shoulders at both
// ends; a negative k flattens it linearly.
void applyContrast(int32_t k, int32_t t[256]) {
    if (k > 0) {
        const int32_t d = 10000 / (100 - k);
        const int32_t p1 = (3 * (d - 100) * 128) / (2 * d);
        const int32_t a1 = (d * 65536) / (3 * p1 * p1);
        const int32_t p2 = ((d + 300) * 128) / (2 * d);
        const int32_t a2 = (d * 65536) / (3 * (p2 - 256) * (p2 - 256));
        for (int32_t i = 0; i < 256; ++i) {
            if (i < p1) {
                t[i] = cubic(a1, t[i]);
            } else if (i < p2) {
                t[i] = ((t[i] - 128) * d + 12800) / 100;
            } else {
                t[i] = cubic(a2, t[i] - 256) + 256;
            }
        }
    } else if (k < 0) {
        for (int32_t i = 0; i < 256; ++i) t[i] = ((t[i] - 128) * (k + 100) + 12800) / 100;
    } else {
        return;
    }
    limitAll(t);
}

// In place, left to right, so entry k - 1 already holds its smoothed value.
// Entries 0, 254 and 255 stay as they are.
void smooth(int32_t c[256]) {
    for (int k = 1; k <= 253; ++k) c[k] = (c[k - 1] + c[k] + c[k + 1]) / 3;
}

bool outsideSetting(int32_t v) { return v < -kSettingLimit || v > kSettingLimit; }

uint32_t computeCurves(const CmSettings1& s, int32_t gamma, CurveRecord& rec) {
    if (s.curveSource != 0) return RC_ARG + 1;
    const int32_t checked[] = {s.brightness, s.contrast, s.saturation, s.offsetR, s.offsetG, s.offsetB};
    for (int32_t v : checked) {
        if (outsideSetting(v)) return RC_ARG + 1;
    }
    if (gamma < 100 || gamma > 300) return RC_ARG + 2;

    int32_t t[256];
    brightnessContrastCurve(s.brightness, s.contrast, t);
    const int32_t offsets[3] = {s.offsetR, s.offsetG, s.offsetB};
    int32_t shifted[256] = {};
    int32_t neutral[256] = {};
    if (gamma != kNeutralGamma) {
        gammaLevels(gamma, shifted);
        gammaLevels(kNeutralGamma, neutral);
    }
    for (int32_t i = 0; i < 256; ++i) {
        const int32_t d = shifted[i] - neutral[i];  // 0 when gamma is 150
        for (int c = 0; c < 3; ++c) rec.curve[c][i] = clampLevel(t[i] + d + offsets[c]);
    }
    for (auto& c : rec.curve) smooth(c);
    return RC_OK;
}

}  // namespace

void brightnessContrastCurve(int32_t brightness, int32_t contrast, int32_t out[256]) {
    for (int32_t i = 0; i < 256; ++i) out[i] = i;
    applyBrightness(brightness, out);
    applyContrast(contrast, out);
}

void spreadSaturation(int32_t saturation, int32_t& r, int32_t& g, int32_t& b) {
    if (saturation == 0 || (r == g && g == b)) return;
    // 64-bit so that an unchecked saturation (ready-made curves skip the
    // checks) cannot overflow; results are clamped to 0..255 on both sides:
    // for saturations of -50..50 they never fall below the smallest component.
    const int64_t k1 = 100 + static_cast<int64_t>(saturation);
    const int64_t k2 = 100 + (80 * static_cast<int64_t>(saturation)) / 100;  // blue smallest: weaker
    auto spread = [](int32_t v, int32_t from, int64_t k) {
        const int64_t x = (static_cast<int64_t>(v - from) * k) / 100 + from;
        return static_cast<int32_t>(x < 0 ? 0 : (x > 255 ? 255 : x));
    };
    if (r <= g && b >= r) {
        g = spread(g, r, k1);
        b = spread(b, r, k1);
    } else if (r > g && b >= g) {
        r = spread(r, g, k1);
        b = spread(b, g, k1);
    } else {
        const int32_t from = b;
        r = spread(r, from, k2);
        g = spread(g, from, k2);
    }
}

uint32_t buildCurves(const CmSettings1& settings, const CurveLayout& layout, CurveRecord** out) {
    void* block = nullptr;
    if (const uint32_t rc = obtainBlock(sizeof(CurveRecord), false, &block); rc != RC_OK) return rc;
    auto* rec = static_cast<CurveRecord*>(block);

    int32_t gamma = kNeutralGamma;
    const uint8_t* readyMade = nullptr;
    if (settings.chunkDir != nullptr) {
        if (const auto* g = static_cast<const uint8_t*>(lookupChunk(settings.chunkDir, kChunkGamma))) {
            const auto value = static_cast<int32_t>(readU32le(g));
            gamma = value == 0 ? kNeutralGamma : value;
        }
        readyMade = static_cast<const uint8_t*>(lookupChunk(settings.chunkDir, kChunkToneCurves));
    }
    if (readyMade != nullptr) {
        for (int c = 0; c < 3; ++c) {
            for (int i = 0; i < 256; ++i) rec->curve[c][i] = readyMade[c * 256 + i];
        }
    } else if (const uint32_t rc = computeCurves(settings, gamma, *rec); rc != RC_OK) {
        releaseBlock(block);
        return rc;
    }
    rec->curveSource = settings.curveSource;
    rec->saturation = settings.saturation;
    rec->pixelBytes = layout.pixelBytes;
    for (int c = 0; c < 3; ++c) rec->componentPos[c] = layout.componentPos[c];
    rec->selfBlock = block;
    *out = rec;
    return RC_OK;
}

uint32_t applyCurves(const CurveRecord& rec, uint32_t count, const uint8_t* src, uint8_t* dst) {
    const uint32_t pr = rec.componentPos[0];
    const uint32_t pg = rec.componentPos[1];
    const uint32_t pb = rec.componentPos[2];
    for (uint32_t n = 0; n < count; ++n, src += rec.pixelBytes, dst += rec.pixelBytes) {
        int32_t r = src[pr];
        int32_t g = src[pg];
        int32_t b = src[pb];
        spreadSaturation(rec.saturation, r, g, b);
        dst[pr] = static_cast<uint8_t>(rec.curve[0][r]);
        dst[pg] = static_cast<uint8_t>(rec.curve[1][g]);
        dst[pb] = static_cast<uint8_t>(rec.curve[2][b]);
    }
    return RC_OK;
}

uint32_t releaseCurves(CurveRecord* record) { return releaseBlock(record->selfBlock); }

}  // namespace inkdot
