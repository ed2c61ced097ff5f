// Convolution of a whole frame: kernels of 3, 5 and 15 entries each way, with vector code and without, and of
// entries too large for it.
#include "RK/indep/filter/RK_Convolve.h"

#include "RK/host/KIT.h"
#include "bench/Bench.h"

namespace {

constexpr int32_t kWidth = 1920, kHeight = 1080;

template <class P>
void run(benchmark::State& state, int32_t size, uint32_t flags, int32_t entry, bool vector) {
    test::Picture<P> source(kWidth, kHeight), target(kWidth, kHeight);
    source.fillRandom(1);
    RK_LayerDef src = source.record(), dst = target.record();
    const std::vector<int32_t> kernel(static_cast<size_t>(size * size), entry);
    const int32_t* const k = kernel.data();
    const KIT_CPU_Data before = *KIT_G_CPU_DataP;
    RefHost::SetCPU({vector ? bench::machine().has_sse2 : 0u, 0});
    RK_Long result = 0;
    bench::measure(state, kWidth * kHeight, sizeof(P) * size_t{kWidth} * kHeight,
                   [&] { result |= RK_Convolve(nullptr, &src, nullptr, flags, size, k, k, k, k, &dst); });
    RefHost::SetCPU(before);
    if (result != RK_kOK) state.SkipWithError("the convolution failed");
}

template <class P>
void add() {
    const std::string depth = std::to_string(sizeof(P) * 2);
    const auto one = [&](const std::string& name, int32_t size, uint32_t flags, int32_t entry, bool vector) {
        benchmark::RegisterBenchmark(
            ("convolve/" + depth + "/" + name).c_str(),
            [=](benchmark::State& state) { run<P>(state, size, flags, entry, vector); })
            ->Unit(benchmark::kMillisecond);
    };
    for (int32_t size : {3, 5, 15}) {
        const std::string name = std::to_string(size) + "x" + std::to_string(size);
        one(name, size, RK_KERNEL_NORMALISE, 7, true);
        if (sizeof(P) < 16) one(name + "/plain", size, RK_KERNEL_NORMALISE, 7, false);
    }
    one("15_across", 15, RK_KERNEL_NORMALISE | RK_KERNEL_1D, 7, true);
    one("15_down", 15, RK_KERNEL_NORMALISE | RK_KERNEL_1D | RK_KERNEL_VERTICAL, 7, true);
    if (sizeof(P) < 16) one("5x5/large_entries", 5, RK_KERNEL_NORMALISE, 70000, true);
}

const bool registered = [] {
    add<RK_Pixel8>();
    add<RK_Pixel16>();
    add<RK_PixelFloat>();
    return true;
}();

}  // namespace
