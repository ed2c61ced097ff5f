// What the benchmarks share: sizes, pixels of four alpha kinds, and the measuring loop.
#ifndef BENCH_BENCH_H
#define BENCH_BENCH_H

#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

#include "RK/indep/frame/RK.h"
#include "RK/indep/frame/RKp_Depth.h"
#include "refhost/RefHost.h"
#include "test/Pixels.h"

namespace bench {

// A row stays in the nearest cache; a frame does not.
struct Size {
    const char* name;
    RK_Long pixels;
};
constexpr Size kRow = {"row", 1920};
constexpr Size kFrame = {"frame", 1920 * 1080};

enum class Alphas { Random, Opaque, Clear, Halves };
constexpr Alphas kAlphas[] = {Alphas::Random, Alphas::Opaque, Alphas::Clear, Alphas::Halves};
inline const char* name(Alphas kind) {
    static const char* const names[] = {"random", "opaque", "clear", "halves"};
    return names[static_cast<int>(kind)];
}

inline void scale(float unit, uint8_t* out) { *out = static_cast<uint8_t>(unit * 255.0f); }
inline void scale(float unit, uint16_t* out) { *out = static_cast<uint16_t>(unit * 32768.0f); }
inline void scale(float unit, float* out) { *out = unit; }

// Random colours. Halves: left half opaque, right half clear, in rows of 1920.
template <class P>
std::vector<P> pixels(RK_Long count, Alphas kind) {
    using Channel = typename RKp_Depth<P>::Channel;
    const auto full = static_cast<Channel>(RKp_Depth<P>::kFull);
    test::Random random(1);
    std::vector<P> made(static_cast<size_t>(count));
    for (size_t i = 0; i < made.size(); ++i) {
        P& p = made[i];
        scale(random.unit(), &p.red);
        scale(random.unit(), &p.green);
        scale(random.unit(), &p.blue);
        switch (kind) {
            case Alphas::Random: scale(random.unit(), &p.alpha); break;
            case Alphas::Opaque: p.alpha = full; break;
            case Alphas::Clear: p.alpha = 0; break;
            case Alphas::Halves: p.alpha = i % 1920 < 960 ? full : Channel{0}; break;
        }
    }
    return made;
}

// Processor time of this thread: what other programs take does not count.
double threadSeconds();

// Seconds that a memcpy of so many bytes takes now.
double memcpySeconds(size_t bytes);

// The bytes and pixels a second of work that took so long in all, and its time in memcpys of the same bytes.
inline void report(benchmark::State& state, RK_Long pixels, size_t bytes, double took, double copy) {
    const auto rounds = static_cast<double>(state.iterations());
    state.SetBytesProcessed(static_cast<int64_t>(rounds * static_cast<double>(bytes)));
    state.SetItemsProcessed(static_cast<int64_t>(rounds * static_cast<double>(pixels)));
    state.counters["memcpys"] = took / rounds / copy;
}

// Runs work() over and over.
template <class Work>
void measure(benchmark::State& state, RK_Long pixels, size_t bytes, Work&& work) {
    const double copy = memcpySeconds(bytes);
    const double start = threadSeconds();
    for (auto _ : state) {
        work();
        benchmark::ClobberMemory();
    }
    report(state, pixels, bytes, threadSeconds() - start, copy);
}

// The same for work that changes its own input: `renew()` is called before every round, and not counted. The
// clock is read twice a round, so a round should take some microseconds. For benchmarks with UseManualTime.
template <class Renew, class Work>
void measureRenewed(benchmark::State& state, RK_Long pixels, size_t bytes, Renew&& renew, Work&& work) {
    const double copy = memcpySeconds(bytes);
    double took = 0;
    for (auto _ : state) {
        renew();
        benchmark::ClobberMemory();
        const double start = threadSeconds();
        work();
        benchmark::ClobberMemory();
        const double round = threadSeconds() - start;
        state.SetIterationTime(round);
        took += round;
    }
    report(state, pixels, bytes, took, copy);
}

// What the machine has, whatever processor record the package started with.
inline KIT_CPU_Data machine() {
    static const KIT_CPU_Data facts = RefHost::DetectCPU();
    return facts;
}

}  // namespace bench

#endif
