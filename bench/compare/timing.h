// Timing for the comparison: every task runs `reps` times and reports its
// median, so one disturbed run on a shared machine does not decide the
// result. The clock is the process's CPU time by default: other load on the
// machine then lengthens no figure, and every library runs on one thread.
// With ImageMagick on several threads wall time is the fair clock.
#pragma once

#include <time.h>

#include <algorithm>
#include <functional>
#include <vector>

namespace inkdot::compare {

enum class Clock { cpu, wall };

inline Clock& clockInUse() {
    static Clock clock = Clock::cpu;
    return clock;
}

inline double now() {
    timespec t{};
    clock_gettime(clockInUse() == Clock::cpu ? CLOCK_PROCESS_CPUTIME_ID : CLOCK_MONOTONIC, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

inline double seconds(const std::function<void()>& work) {
    const double start = now();
    work();
    return now() - start;
}

inline double median(std::vector<double> samples) {
    if (samples.empty()) return -1;
    std::sort(samples.begin(), samples.end());
    return samples[samples.size() / 2];
}

// Median of `reps` timed calls of `work`, after one untimed warm-up call.
inline double medianSeconds(unsigned reps, const std::function<void()>& work) {
    work();
    std::vector<double> samples;
    for (unsigned r = 0; r < reps; ++r) samples.push_back(seconds(work));
    return median(samples);
}

// Median of `reps` calls of a run that times itself (negative: failed).
inline double medianOfTimed(unsigned reps, const std::function<double()>& timedRun) {
    if (timedRun() < 0) return -1;
    std::vector<double> samples;
    for (unsigned r = 0; r < reps; ++r) {
        const double s = timedRun();
        if (s < 0) return -1;
        samples.push_back(s);
    }
    return median(samples);
}

}  // namespace inkdot::compare
