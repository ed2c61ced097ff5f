// What every other figure is held against: memcpy and memset.
#include <time.h>

#include <algorithm>
#include <iterator>
#include <map>

#include "bench/Bench.h"

namespace {

void copyBench(benchmark::State& state, size_t bytes) {
    const std::vector<uint8_t> from(bytes, 1);
    std::vector<uint8_t> to(bytes, 2);
    bench::measure(state, 0, bytes, [&] { std::memcpy(to.data(), from.data(), bytes); });
}

void setBench(benchmark::State& state, size_t bytes) {
    std::vector<uint8_t> to(bytes, 2);
    bench::measure(state, 0, bytes, [&] { std::memset(to.data(), 0, bytes); });
}

const bool registered = [] {
    for (const bench::Size& size : {bench::kRow, bench::kFrame}) {
        for (size_t pixel : {sizeof(RK_Pixel8), sizeof(RK_Pixel16), sizeof(RK_PixelFloat)}) {
            const size_t bytes = pixel * static_cast<size_t>(size.pixels);
            const std::string tail = std::to_string(pixel * 2) + "/" + size.name;
            benchmark::RegisterBenchmark(("memcpy/" + tail).c_str(), copyBench, bytes);
            benchmark::RegisterBenchmark(("memset/" + tail).c_str(), setBench, bytes);
        }
    }
    return true;
}();

}  // namespace

double bench::threadSeconds() {
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// The median of five, each of some milliseconds. Measured anew each time, since the machine's memory is not
// always equally busy.
double bench::memcpySeconds(size_t bytes) {
    struct Buffers {
        std::vector<uint8_t> from, to;
    };
    static std::map<size_t, Buffers> kept;
    Buffers& buffers = kept[bytes];
    buffers.from.resize(bytes, 1);
    buffers.to.resize(bytes, 2);
    const size_t rounds = std::max<size_t>(1, 8000000 / std::max<size_t>(bytes, 1));
    double times[5];
    for (double& time : times) {
        const double start = threadSeconds();
        for (size_t k = 0; k < rounds; ++k) {
            std::memcpy(buffers.to.data(), buffers.from.data(), bytes);
            benchmark::ClobberMemory();
        }
        time = (threadSeconds() - start) / static_cast<double>(rounds);
    }
    std::sort(std::begin(times), std::end(times));
    return times[2];
}
