// The bandwidth floor a kernel is measured against: reading a line of input
// and writing its output planes once, as plain copies of the same byte counts.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

namespace {

constexpr size_t kPixels = 10000;

void BM_CopyBaseline(benchmark::State& state) {
    const size_t inBytes = kPixels * static_cast<size_t>(state.range(0));
    const size_t outBytes = (kPixels * static_cast<size_t>(state.range(1)) + 7) / 8 * static_cast<size_t>(state.range(2));
    std::vector<unsigned char> in(inBytes, 77), out(outBytes), sink(inBytes);
    for (auto _ : state) {
        std::memcpy(sink.data(), in.data(), inBytes);
        std::memset(out.data(), sink[inBytes / 2], outBytes);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kPixels));
}
// {bytes per input pixel, bits per output pixel, planes}
BENCHMARK(BM_CopyBaseline)->Args({1, 1, 1})->Args({3, 1, 4})->Args({3, 2, 4})->Args({1, 2, 1});

}  // namespace
