// What every other figure is held against: memcpy and memset.
#include <algorithm>
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

// The best of nine, each of at least a millisecond.
double timeCopy(size_t bytes) {
    const std::vector<uint8_t> from(bytes, 1);
    std::vector<uint8_t> to(bytes, 2);
    const size_t rounds = std::max<size_t>(1, 8000000 / bytes);
    double best = 1e9;
    for (int i = 0; i < 9; ++i) {
        const auto start = std::chrono::steady_clock::now();
        for (size_t k = 0; k < rounds; ++k) {
            std::memcpy(to.data(), from.data(), bytes);
            benchmark::ClobberMemory();
        }
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        best = std::min(best, took.count() / static_cast<double>(rounds));
    }
    return best;
}

}  // namespace

double bench::memcpySeconds(size_t bytes) {
    static std::map<size_t, double> known;
    auto found = known.find(bytes);
    if (found == known.end()) found = known.emplace(bytes, timeCopy(bytes)).first;
    return found->second;
}
