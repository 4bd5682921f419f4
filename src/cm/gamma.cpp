#include "cm/gamma.h"

#include "cm/log_table.h"

namespace inkdot {
namespace {

constexpr int kSmallPrimes = 9;  // 2 .. 23; a remainder above 1 after them is a prime from 29 up

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
    if (v == 0 || v == 255) return v;
    // g is gamma / 100 in 2048ths. K = g * 5000 ln 255 - 2048 * 5000 ln 510
    // (27706 and 63855256 are those logarithms, the second already times 2048),
    // so 2048 L(m) + K > L(v) g  <=>  m / 2 > 255 (v / 255)^(gamma / 100).
    const int32_t g = (gamma * 2048) / 100;
    const int32_t k = 27706 * g - 63855256;
    const int32_t s = logOf(v) * g;
    if (s < k) return 0;
    int32_t m = 3;
    for (; m <= 511; m += 2) {  // at most 255 odd values
        if (2048 * logOf(m) + k > s) break;
    }
    const int32_t level = (m - 1) / 2;  // smallest odd m above twice the level: rounds to nearest
    return level > 255 ? 255 : level;
}

}  // namespace inkdot
