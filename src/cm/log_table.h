// Natural logarithms of the primes up to 509, scaled by 5000 and rounded,
// for the integer gamma function.
#pragma once

#include <array>
#include <cstdint>

namespace inkdot {

inline constexpr int kPrimeCount = 97;  // primes from 2 to 509

constexpr std::array<uint16_t, kPrimeCount> firstPrimes() {
    std::array<uint16_t, kPrimeCount> primes{};
    int count = 0;
    for (uint16_t n = 2; count < kPrimeCount; ++n) {
        bool prime = true;
        for (int i = 0; i < count && primes[i] * primes[i] <= n; ++i) {
            if (n % primes[i] == 0) { prime = false; break; }
        }
        if (prime) primes[count++] = n;
    }
    return primes;
}

inline constexpr std::array<uint16_t, kPrimeCount> kPrimes = firstPrimes();
static_assert(kPrimes[0] == 2 && kPrimes[9] == 29 && kPrimes[96] == 509);

// Entry j is round(5000 * ln p) for the j-th prime p; the table ends in a 0 entry.
inline constexpr std::array<uint32_t, kPrimeCount + 1> kLogTable = {
    3466,  5493,  8047,  9730,  11989, 12825, 14166, 14722, 15677, 16836,
    17170, 18055, 18568, 18806, 19251, 19851, 20388, 20554, 21023, 21313,
    21452, 21847, 22094, 22443, 22874, 23076, 23174, 23364, 23457, 23637,
    24221, 24376, 24600, 24672, 25020, 25086, 25281, 25469, 25590, 25766,
    25937, 25992, 26261, 26313, 26416, 26467, 26759, 27036, 27125, 27169,
    27255, 27382, 27424, 27627, 27745, 27861, 27974, 28011, 28120, 28192,
    28227, 28401, 28634, 28699, 28731, 28795, 29011, 29100, 29247, 29275,
    29332, 29417, 29527, 29608, 29688, 29740, 29818, 29920, 29970, 30069,
    30189, 30213, 30331, 30354, 30422, 30468, 30535, 30623, 30667, 30689,
    30732, 30859, 30941, 30982, 31063, 31103, 31162,
    0,
};

}  // namespace inkdot
