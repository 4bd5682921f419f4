// Separate instances on separate threads at the same time: two instances of a
// job per kernel family, all started together, each give exactly the bytes the
// job gives alone: error carried between runs and lines never crosses
// instances. The thread-sanitizer build runs these cases (filter Threads.*).
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "pipeline.h"

namespace inkdot {
namespace {

using test::jobConfig;

test::JobConfig at(test::JobConfig c, uint32_t x, uint32_t y) {
    c.ht.resolutionX = x;
    c.ht.resolutionY = y;
    c.lines = 64;
    return c;
}

const test::JobConfig kConfigs[] = {
    at(jobConfig("mono one-bit diffusion", 1, 0, 1), 720, 720),
    at(jobConfig("mono one-bit diffusion 1440x720", 1, 0, 1, true), 1440, 720),
    at(jobConfig("mono one-bit dither", 3, 0, 1), 720, 1440),
    at(jobConfig("mono two-bit dither", 3, 0, 2), 720, 720),
    at(jobConfig("mono two-bit diffusion", 1, 0, 2), 720, 1440),
    at(jobConfig("colour one-bit diffusion", 1, 1, 1, true), 1440, 720),
    at(jobConfig("colour one-bit diffusion DoubleY", 1, 1, 1), 360, 720),
    at(jobConfig("colour one-bit dither", 3, 1, 1), 720, 720),
    at(jobConfig("colour fixed threshold", 0, 1, 1), 720, 720),
    at(jobConfig("colour two-bit dither", 3, 1, 2, true), 720, 720),
    at(jobConfig("colour two-bit diffusion", 1, 1, 2), 1440, 720),
};
constexpr size_t kJobs = sizeof kConfigs / sizeof kConfigs[0];

// The Halftone codes and the planes, or nothing when the job failed.
std::vector<uint8_t> outcome(const test::JobConfig& config) {
    test::Job job(config);
    if (!job.runAll()) return {};
    for (uint32_t code : job.halftoneCodes) job.output.push_back(static_cast<uint8_t>(code));
    return job.output;
}

TEST(Threads, SeparateInstancesGiveTheSequentialBytes) {
    std::vector<std::vector<uint8_t>> alone, together(2 * kJobs);
    for (const test::JobConfig& c : kConfigs) {
        alone.push_back(outcome(c));
        ASSERT_FALSE(alone.back().empty()) << c.name;
    }
    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    for (size_t t = 0; t < together.size(); ++t) {
        threads.emplace_back([&, t] {
            while (!go.load()) std::this_thread::yield();
            together[t] = outcome(kConfigs[t % kJobs]);
        });
    }
    go = true;
    for (std::thread& t : threads) t.join();
    for (size_t t = 0; t < together.size(); ++t)
        EXPECT_TRUE(together[t] == alone[t % kJobs]) << kConfigs[t % kJobs].name << ": thread " << t << " differs";
}

}  // namespace
}  // namespace inkdot
