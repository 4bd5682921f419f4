#include "driver/band_pipeline.h"

#ifdef __linux__
#include <sched.h>
#endif

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

namespace inkdot::tools {
namespace {

// Three bands in flight: one being read, one halftoned, one written. More
// would only hold memory; a stage that runs ahead waits for a free band.
constexpr unsigned kBandsInFlight = 3;

enum class BandState { Free, Read, Halftoned };

struct Band {
    std::vector<uint8_t> input;
    std::vector<uint8_t> printed;
    uint32_t first = 0;  // first input line
    uint32_t count = 0;  // input lines
    BandState state = BandState::Free;
};

struct PageShape {
    BandPlan plan;
    size_t inputLineBytes;
    size_t printedLineBytes;
    uint32_t bands;

    PageShape(const Job& job, const BandPlan& p)
        : plan(p),
          inputLineBytes(size_t{job.inputWidth()} * job.inputBytesPerPixel()),
          printedLineBytes(job.planeCount() * job.planeStride()),
          bands((p.inputLines + p.bandLines - 1) / p.bandLines) {}

    void allocate(Band& band) const {
        band.input.resize(inputLineBytes * plan.bandLines);
        band.printed.resize(printedLineBytes * plan.bandLines * plan.lineRepeat);
    }
    void place(Band& band, uint32_t index) const {
        band.first = index * plan.bandLines;
        band.count = std::min(plan.bandLines, plan.inputLines - band.first);
    }
    bool read(const BandStages& stages, Band& band, std::string& error) const {
        return stages.read(band.input.data(), band.first, band.count, error);
    }
    bool halftone(Job& job, Band& band, std::string& error) const {
        for (uint32_t i = 0; i < band.count; ++i)
            for (unsigned r = 0; r < plan.lineRepeat; ++r)
                if (!job.halftoneLine(band.input.data() + i * inputLineBytes,
                                      band.printed.data() + (size_t{i} * plan.lineRepeat + r) * printedLineBytes,
                                      error))
                    return false;
        return true;
    }
    bool write(const BandStages& stages, const Band& band, std::string& error) const {
        return stages.write(band.printed.data(), band.first * plan.lineRepeat, band.count * plan.lineRepeat, error);
    }
};

bool runSerial(Job& job, const PageShape& shape, const BandStages& stages, std::string& error) {
    Band band;
    shape.allocate(band);
    for (uint32_t b = 0; b < shape.bands; ++b) {
        shape.place(band, b);
        error.clear();
        if (!shape.read(stages, band, error) || !shape.halftone(job, band, error) || !shape.write(stages, band, error))
            return false;
    }
    return true;
}

// The bands in flight and who may touch which: a stage waits until the band
// it needs next reaches its state, works on it unlocked, and hands it on.
class Flight {
public:
    explicit Flight(const PageShape& shape) : bands_(shape.bands) {
        for (Band& band : slots_) shape.allocate(band);
    }

    // The band with this index once it is in `state`; null when the page
    // ended before it or a stage failed.
    Band* await(uint32_t index, BandState state) {
        std::unique_lock lock(mutex_);
        Band& band = slots_[index % kBandsInFlight];
        changed_.wait(lock, [&] { return failed_ || index >= bands_ || band.state == state; });
        return failed_ || index >= bands_ ? nullptr : &band;
    }
    void handOn(Band& band, BandState next) {
        {
            std::lock_guard lock(mutex_);
            band.state = next;
        }
        changed_.notify_all();
    }
    // The reader stopped on purpose before band `index`.
    void endBefore(uint32_t index) {
        {
            std::lock_guard lock(mutex_);
            bands_ = std::min(bands_, index);
            readerStopped_ = true;
        }
        changed_.notify_all();
    }
    // The first failure's reason is the page's.
    void fail(const std::string& why) {
        {
            std::lock_guard lock(mutex_);
            if (!failed_) error_ = why;
            failed_ = true;
        }
        changed_.notify_all();
    }
    bool outcome(std::string& error) {
        std::lock_guard lock(mutex_);
        error = failed_ ? error_ : std::string();
        return !failed_ && !readerStopped_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    Band slots_[kBandsInFlight];
    uint32_t bands_;
    bool failed_ = false;
    bool readerStopped_ = false;
    std::string error_;
};

// Runs a stage's loop, turning an escaping exception into the page's failure.
template <typename Loop>
void guarded(Flight& flight, Loop loop) {
    try {
        loop();
    } catch (const std::bad_alloc&) {
        flight.fail("out of memory");
    } catch (const std::exception& e) {
        flight.fail(e.what());
    }
}

bool runOverlapped(Job& job, const PageShape& shape, const BandStages& stages, std::string& error) {
    Flight flight(shape);
    auto writer = [&] {
        std::string why;
        for (uint32_t b = 0; Band* band = flight.await(b, BandState::Halftoned); ++b) {
            if (!shape.write(stages, *band, why)) return flight.fail(why);
            flight.handOn(*band, BandState::Free);
        }
    };
    auto reader = [&] {
        std::string why;
        for (uint32_t b = 0; Band* band = flight.await(b, BandState::Free); ++b) {
            shape.place(*band, b);
            why.clear();
            if (!shape.read(stages, *band, why)) return why.empty() ? flight.endBefore(b) : flight.fail(why);
            flight.handOn(*band, BandState::Read);
        }
    };
    // The writer starts first: until the reader runs, nothing of the page is
    // consumed, so a reader that cannot start leaves the page to the serial path.
    std::thread writing;
    try {
        writing = std::thread([&] { guarded(flight, writer); });
    } catch (const std::system_error&) {
        return runSerial(job, shape, stages, error);
    }
    std::thread reading;
    try {
        reading = std::thread([&] { guarded(flight, reader); });
    } catch (const std::system_error&) {
        flight.fail("");
        writing.join();
        return runSerial(job, shape, stages, error);
    }
    guarded(flight, [&] {
        std::string why;
        for (uint32_t b = 0; Band* band = flight.await(b, BandState::Read); ++b) {
            if (!shape.halftone(job, *band, why)) return flight.fail(why);
            flight.handOn(*band, BandState::Halftoned);
        }
    });
    reading.join();
    writing.join();
    return flight.outcome(error);
}

}  // namespace

bool runBands(Job& job, const BandPlan& plan, const BandStages& stages, std::string& error) {
    BandPlan checked = plan;
    checked.bandLines = std::max<uint32_t>(1, plan.bandLines);
    checked.lineRepeat = std::max(1u, plan.lineRepeat);
    const PageShape shape(job, checked);
    error.clear();
    if (checked.overlapped && shape.bands > 1) return runOverlapped(job, shape, stages, error);
    return runSerial(job, shape, stages, error);
}

bool severalCores() {
#ifdef __linux__
    cpu_set_t set;
    CPU_ZERO(&set);
    if (sched_getaffinity(0, sizeof set, &set) == 0) return CPU_COUNT(&set) > 1;
#endif
    return std::thread::hardware_concurrency() > 1;
}

}  // namespace inkdot::tools
