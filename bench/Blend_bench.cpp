// Crossfades of whole frames, premultiplied and straight, and one channel moved towards a constant.
#include "RK/indep/composite/RK_Blend.h"

#include <algorithm>

#include "bench/Bench.h"

namespace {

using bench::Alphas;

constexpr int32_t kWidth = 1920, kHeight = 1080;

template <class P>
RK_LayerDef recordOf(std::vector<P>& pixels) {
    RK_LayerDef record = {};
    record.world_flags = sizeof(P) == 4 ? 0u : sizeof(P) == 8 ? 0x01000001u : 0x02000000u;
    record.data = pixels.data();
    record.rowbytes = kWidth * static_cast<int32_t>(sizeof(P));
    record.width = kWidth;
    record.height = kHeight;
    return record;
}

template <class P>
void crossfade(benchmark::State& state, bool premultiplied, RK_Long ratio, Alphas kind) {
    const RK_Long count = bench::kFrame.pixels;
    std::vector<P> one = bench::pixels<P>(count, kind), two = bench::pixels<P>(count, kind), made(one.size());
    std::rotate(two.begin(), two.begin() + 1000, two.end());
    const RK_LayerDef src1 = recordOf(one), src2 = recordOf(two);
    RK_LayerDef dst = recordOf(made);
    RK_Long result = 0;
    bench::measure(state, count, sizeof(P) * static_cast<size_t>(count), [&] {
        result |= (premultiplied ? RK_Blend_Premul : RK_Blend_Straight)(nullptr, &src1, &src2, ratio, &dst);
    });
    if (result != RK_kOK) state.SkipWithError("the blend failed");
}

template <class P>
void oneChannel(benchmark::State& state) {
    using C = typename RKp_Depth<P>::Channel;
    std::vector<P> row = bench::pixels<P>(bench::kFrame.pixels, Alphas::Random), weight = row;
    const auto full = static_cast<C>(RKp_Depth<P>::kFull), half = static_cast<C>(RKp_Depth<P>::kGrey);
    bench::measure(state, bench::kFrame.pixels, sizeof(P) * row.size(), [&] {
        RK_BlendSingleChannel(bench::kFrame.pixels * 4, full, half, &weight[0].alpha, row.data());
    });
}

template <class P>
void add() {
    const std::string depth = std::to_string(sizeof(P) * 2);
    for (const bool premultiplied : {true, false}) {
        for (const Alphas kind : bench::kAlphas) {
            const std::string name =
                "crossfade/" + depth + (premultiplied ? "/premul/" : "/straight/") + bench::name(kind);
            benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
                crossfade<P>(state, premultiplied, 20000, kind);
            })->Unit(benchmark::kMillisecond);
        }
    }
    benchmark::RegisterBenchmark(("crossfade/" + depth + "/all_of_one").c_str(), [](benchmark::State& state) {
        crossfade<P>(state, false, 0, Alphas::Random);
    })->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("blend_single_channel/" + depth).c_str(), oneChannel<P>)
        ->Unit(benchmark::kMillisecond);
}

const bool registered = [] {
    add<RK_Pixel8>();
    add<RK_Pixel16>();
    add<RK_PixelFloat>();
    return true;
}();

}  // namespace
