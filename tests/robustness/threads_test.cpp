// Separate instances on separate threads at the same time: each thread runs
// a whole job (both protocols and many Halftone lines) and must produce
// exactly the bytes the same job gives when run alone. The suite's
// thread-sanitizer build runs these cases (gtest filter Threads.*).
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "pipeline.h"

namespace inkdot {
namespace {

using test::Job;
using test::JobConfig;
using test::jobConfig;

JobConfig at(JobConfig c, uint32_t x, uint32_t y) {
    c.ht.resolutionX = x;
    c.ht.resolutionY = y;
    c.lines = 64;
    return c;
}

// One job per kernel family: the threads run different kernels side by side
// and, through the repeats below, the same kernel on separate instances.
const JobConfig kConfigs[] = {
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

struct Outcome {
    bool ran = false;
    std::vector<uint32_t> codes;
    test::Bytes output;
};

Outcome runAlone(const JobConfig& config) {
    Job job(config);
    const bool ran = job.runAll();
    return {ran, job.halftoneCodes, job.output};
}

TEST(Threads, SeparateInstancesGiveTheSequentialBytes) {
    constexpr size_t kConfigCount = sizeof kConfigs / sizeof kConfigs[0];
    std::vector<Outcome> sequential;
    for (const JobConfig& c : kConfigs) {
        sequential.push_back(runAlone(c));
        ASSERT_TRUE(sequential.back().ran) << c.name;
        ASSERT_FALSE(sequential.back().output.empty()) << c.name;
    }

    // Two instances of every job, all started together: error carried between
    // runs and lines must never cross instances of the same kernel.
    constexpr size_t kRepeats = 2;
    std::vector<Outcome> parallel(kConfigCount * kRepeats);
    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    for (size_t t = 0; t < parallel.size(); ++t) {
        threads.emplace_back([&, t] {
            while (!go.load()) std::this_thread::yield();
            parallel[t] = runAlone(kConfigs[t % kConfigCount]);
        });
    }
    go = true;
    for (std::thread& t : threads) t.join();

    for (size_t t = 0; t < parallel.size(); ++t) {
        const JobConfig& c = kConfigs[t % kConfigCount];
        const Outcome& alone = sequential[t % kConfigCount];
        EXPECT_TRUE(parallel[t].ran && parallel[t].codes == alone.codes) << c.name;
        EXPECT_TRUE(parallel[t].output == alone.output) << c.name << ": thread " << t << " differs";
    }
}

}  // namespace
}  // namespace inkdot
