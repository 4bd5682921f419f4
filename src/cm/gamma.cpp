#include "cm/gamma.h"

#include "cm/log_table.h"

namespace inkdot {
namespace {

constexpr int kSmallPrimes = 9;  // 2 .. 23; a remainder above 1 after them is a prime from 29 up
constexpr int32_t kLargestOdd = 511;
constexpr int kOddCount = (kLargestOdd - 3) / 2 + 1;  // odd m from 3 to 511: 255 values

// g is gamma / 100 in 2048ths. K = g * 5000 ln 255 - 2048 * 5000 ln 510
// (27706 and 63855256 are those logarithms, the second already times 2048),
// so 2048 L(m) + K > L(v) g  <=>  m / 2 > 255 (v / 255)^(gamma / 100).
struct GammaTerms {
    int32_t g;
    int32_t k;
};

GammaTerms termsOf(int32_t gamma) {
    const int32_t g = (gamma * 2048) / 100;
    return {g, 27706 * g - 63855256};
}

// The search over odd m, with scaledLog(m) giving 2048 L(m).
template <typename ScaledLog>
int32_t searchLevel(int32_t v, GammaTerms t, ScaledLog scaledLog) {
    if (v == 0 || v == 255) return v;
    const int32_t s = logOf(v) * t.g;
    if (s < t.k) return 0;
    int32_t m = 3;
    for (; m <= kLargestOdd; m += 2) {
        if (scaledLog(m) + t.k > s) break;
    }
    const int32_t level = (m - 1) / 2;  // smallest odd m above twice the level: rounds to nearest
    return level > 255 ? 255 : level;
}

}  // namespace

int32_t logOf(int32_t n) {
    int32_t sum = 0;
    for (int j = 0; j < kSmallPrimes && n > 1; ++j) {
        while (n % kPrimes[j] == 0) {
            n /= kPrimes[j];
            sum += static_cast<int32_t>(kLogTable[j]);
        }
    }
    if (n > 1) {
        // Count primes upward from 29 (entry 9) to find the remainder's entry.
        for (int j = kSmallPrimes; j < kPrimeCount; ++j) {
            if (kPrimes[j] == n) return sum + static_cast<int32_t>(kLogTable[j]);
        }
    }
    return sum;
}

int32_t gammaLevel(int32_t v, int32_t gamma) {
    return searchLevel(v, termsOf(gamma), [](int32_t m) { return 2048 * logOf(m); });
}

void gammaLevels(int32_t gamma, int32_t out[256]) {
    // The search evaluates the same odd logarithms for every level: form them once.
    int32_t scaled[kOddCount];
    for (int i = 0; i < kOddCount; ++i) scaled[i] = 2048 * logOf(3 + 2 * i);
    const GammaTerms t = termsOf(gamma);
    for (int32_t v = 0; v < 256; ++v) {
        out[v] = searchLevel(v, t, [&scaled](int32_t m) { return scaled[(m - 3) / 2]; });
    }
}

}  // namespace inkdot
