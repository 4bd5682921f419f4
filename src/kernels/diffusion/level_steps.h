// What a one-bit diffusion plane's level decides before its error chain, for
// the pixel loops that keep the chain in registers (diffuseAgainstLimit,
// spreadByBand): the step's limit before the matrix perturbation moves it,
// the level less a dot, and the spread band on even and odd matrix cells.
// A kernel makes them from its own tables by a rule of the input byte; a
// long run makes all 256 first (withLevelSteps).
#pragma once

#include <cstdint>

#include "kernels/diffusion/pattern_choice.h"

namespace inkdot {

struct LevelStep {
    int32_t level;
    int32_t limit;  // 32 x (threshold - level)
    int32_t levelLessDot;
    uint8_t band[2];  // by matrix parity
};

// t4InclusiveOnEven: whether the lowest band's boundary includes T4 on even
// cells; on odd cells it never does.
inline LevelStep levelStep(int32_t level, int32_t threshold, int32_t dotValue, const SpreadThresholds& bands,
                           bool t4InclusiveOnEven) {
    return {level, 32 * (threshold - level), level - dotValue,
            {static_cast<uint8_t>(levelBand(level, bands, t4InclusiveOnEven)),
             static_cast<uint8_t>(levelBand(level, bands, false))}};
}

// The steps of every byte, made once.
class LevelStepTable {
public:
    template <class Rule>
    explicit LevelStepTable(const Rule& rule) {
        for (uint32_t b = 0; b < 256; ++b) steps_[b] = rule(static_cast<uint8_t>(b));
    }
    const LevelStep& operator()(uint8_t byte) const { return steps_[byte]; }

private:
    LevelStep steps_[256];
};

// A run shorter than this makes its steps byte by byte as they come; a
// longer one fills the table first, which costs about as much as diffusing
// 100 pixels.
inline constexpr uint32_t kTableRunLength = 512;

// f(steps) with the rule itself or with its table, by the run's length.
template <class Rule, class F>
void withLevelSteps(uint32_t count, const Rule& rule, F f) {
    if (count < kTableRunLength) f(rule);
    else f(LevelStepTable(rule));
}

}  // namespace inkdot
