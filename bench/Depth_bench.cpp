// Worlds of a frame moved between depths, and rows taken down to 8 bits with and without noise.
#include "RK/indep/passes/RK_DepthConvert.h"
#include "RK/indep/world/RKp_Dither.h"
#include "bench/Worlds.h"

namespace {

template <class S, class D>
void convert(benchmark::State& state) {
    test::Picture<S> from(bench::kWidth, bench::kHeight);
    test::Picture<D> to(bench::kWidth, bench::kHeight);
    from.fillRandom(1);
    const RK_LayerDef src = from.record(), dst = to.record();
    const RK_WorldX<S> source(&src, false);
    RK_WorldX<D> target(&dst, false);
    constexpr size_t kPixels = size_t{bench::kWidth} * bench::kHeight;
    bench::measure(state, kPixels, kPixels * (sizeof(S) + sizeof(D)) / 2,
                   [&] { RK_DepthConvertWorld(nullptr, &source, &target); });
}

template <class P>
void row(benchmark::State& state, void (*form)(const P*, int32_t, bool, RK_Pixel8*), bool dither) {
    const std::vector<P> from = bench::pixels<P>(bench::kRow.pixels, bench::Alphas::Random);
    std::vector<RK_Pixel8> to(from.size());
    bench::measure(state, bench::kRow.pixels, from.size() * (sizeof(P) + 4) / 2,
                   [&] { form(from.data(), static_cast<int32_t>(from.size()), dither, to.data()); });
}

template <class S>
void from(const std::string& name) {
    benchmark::RegisterBenchmark(("depth/" + name + "_to_8").c_str(), convert<S, RK_Pixel8>);
    benchmark::RegisterBenchmark(("depth/" + name + "_to_16").c_str(), convert<S, RK_Pixel16>);
    benchmark::RegisterBenchmark(("depth/" + name + "_to_float").c_str(), convert<S, RK_PixelFloat>);
}

const bool registered = [] {
    from<RK_Pixel8>("8");
    from<RK_Pixel16>("16");
    from<RK_PixelFloat>("float");
    for (const bool dither : {false, true}) {
        const std::string end = dither ? "/dithered" : "/plain";
        benchmark::RegisterBenchmark(("depth_row/16_to_8" + end).c_str(), row<RK_Pixel16>, RKp_Row16To8,
                                     dither);
        benchmark::RegisterBenchmark(("depth_row/float_to_8" + end).c_str(), row<RK_PixelFloat>,
                                     RKp_RowFloatTo8_Static, dither);
        benchmark::RegisterBenchmark(("depth_row/float_to_8_sse2" + end).c_str(), row<RK_PixelFloat>,
                                     RKp_RowFloatTo8_SSE2, dither);
    }
    return true;
}();

}  // namespace
