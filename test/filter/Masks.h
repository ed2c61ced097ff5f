// Masks for tests: buffers with samples to set and compare, and progress that is counted.
#ifndef TEST_FILTER_MASKS_H
#define TEST_FILTER_MASKS_H

#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <utility>
#include <vector>

#include "RK/indep/filter/RK_UnoBuffer.h"
#include "RK/indep/frame/RK_OverFuncs.h"
#include "test/Pixels.h"
#include "test/Reports.h"

namespace test {

template <class S>
constexpr int32_t kSampleBits = static_cast<int32_t>(sizeof(S)) * 8;
template <class S>
constexpr int64_t kFullSample = sizeof(S) == 1   ? 255
                                : sizeof(S) == 2 ? 32768
                                                 : 1;

inline uint8_t sample(Random& r, uint8_t) { return channel(r, uint8_t{}); }
inline uint16_t sample(Random& r, uint16_t) { return channel(r, uint16_t{}); }
inline float sample(Random& r, float) { return channel(r, float{}); }

// A mask of samples S.
template <class S>
class Mask {
  public:
    Mask(int32_t width, int32_t height, uint32_t seed = 0) : buffer_(width, height, kSampleBits<S>) {
        Random r(seed);
        for (int32_t y = 0; y < height; ++y)
            for (int32_t x = 0; x < width; ++x) at(x, y) = seed == 0 ? S{} : sample(r, S{});
    }
    RK_UnoBuffer* operator&() { return &buffer_; }
    const RK_UnoBuffer* operator&() const { return &buffer_; }
    RK_UnoBuffer* operator->() { return &buffer_; }
    S& at(int32_t x, int32_t y) { return buffer_.Row<S>(y)[x]; }
    int32_t width() const { return buffer_.width; }
    int32_t height() const { return buffer_.height; }
    GEO_Rect rect() const { return {0, 0, static_cast<int16_t>(height()), static_cast<int16_t>(width())}; }
    std::vector<S> samples() const {
        const S* first = buffer_.Row<S>(0);
        return std::vector<S>(first, first + static_cast<ptrdiff_t>(width()) * height());
    }
    void set(const std::vector<S>& samples) {
        if (!samples.empty()) std::memcpy(buffer_.Row<S>(0), samples.data(), samples.size() * sizeof(S));
    }
    void fill(S value) { set(std::vector<S>(samples().size(), value)); }

  private:
    RK_UnoBuffer buffer_;
};

inline testing::AssertionResult onlyDamagedMask() { return onlyVerification("damaged mask buffer"); }
inline testing::AssertionResult damagedMasks(size_t times) {
    const auto reports = RefHost::TakeReports();
    bool same = reports.size() == times;
    for (const RefHost::Report& r : reports)
        same = same && r.kind == RefHost::ReportKind::Verification && r.location == RK_kLocation &&
               r.text == "damaged mask buffer";
    if (same) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "expected " << times << " damaged masks, reported:\n"
                                       << describe(reports);
}

// Progress that notes its calls and answers `code` at the one numbered `stop_at`, from 1.
struct Watched {
    RK_ProgressInfo info = {this, nullptr, progress};
    std::vector<std::pair<RK_Long, RK_Long>> calls;
    size_t stop_at = 0;
    RK_Long code = RK_kUserAbort;

    // With abort_func alone.
    void abortsOnly() { info = {this, abort, nullptr}; }

  private:
    RK_Long note(RK_Long current, RK_Long maximum) {
        calls.emplace_back(current, maximum);
        return calls.size() == stop_at ? code : RK_kOK;
    }
    static RK_Long progress(void* refcon, RK_Long current, RK_Long maximum) {
        return static_cast<Watched*>(refcon)->note(current, maximum);
    }
    static RK_Long abort(void* refcon) { return static_cast<Watched*>(refcon)->note(-1, -1); }
};

// A function in a slot for as long as this lives.
class InSlot {
  public:
    InSlot(int32_t slot, void* function) : slot_(slot), before_(RKp_G_OverFuncs[slot]) {
        RKp_G_OverFuncs[slot] = function;
    }
    ~InSlot() { RKp_G_OverFuncs[slot_] = before_; }
    InSlot(const InSlot&) = delete;
    InSlot& operator=(const InSlot&) = delete;

  private:
    int32_t slot_;
    void* before_;
};

// A body for the slot of RK_IterateGeneric that spreads the calls over two threads: odd ones run as thread 1.
inline RK_Long onTwoThreads(RK_Long iterations, void* refcon, RK_GenericFunc* fn) {
    RK_Long results[2] = {RK_kOK, RK_kOK};
    const auto run = [&](RK_Long thread) {
        for (RK_Long i = thread; i < iterations && results[thread] == RK_kOK; i += 2)
            results[thread] = fn(refcon, thread, i, iterations);
    };
    std::thread other(run, 1);
    run(0);
    other.join();
    return results[0] != RK_kOK ? results[0] : results[1];
}

}  // namespace test

#endif
