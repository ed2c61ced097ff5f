// Colour conversions and measures, pixel by pixel.
#include "RK/indep/colour/RK_ColorConvert.h"
#include "bench/Bench.h"

namespace {

using bench::Alphas;

constexpr RK_Long kPixels = bench::kRow.pixels * 16;

template <class P, class Out>
void run(benchmark::State& state, RK_Long (*f)(RK_EffectRef, const P*, Out*), int32_t per_pixel) {
    const std::vector<P> row = bench::pixels<P>(kPixels, Alphas::Opaque);
    std::vector<Out> out(row.size() * static_cast<size_t>(per_pixel));
    bench::measure(state, kPixels, sizeof(P) * row.size(), [&] {
        for (size_t i = 0; i < row.size(); ++i) f(nullptr, &row[i], &out[i * static_cast<size_t>(per_pixel)]);
    });
}
template <class P>
void back(benchmark::State& state, RK_Long (*forth)(RK_EffectRef, const P*, int32_t*),
          RK_Long (*f)(RK_EffectRef, const int32_t*, P*)) {
    const std::vector<P> row = bench::pixels<P>(kPixels, Alphas::Opaque);
    std::vector<P> out(row.size());
    std::vector<int32_t> in(row.size() * 3);
    for (size_t i = 0; i < row.size(); ++i) forth(nullptr, &row[i], &in[3 * i]);
    bench::measure(state, kPixels, sizeof(P) * row.size(), [&] {
        for (size_t i = 0; i < row.size(); ++i) f(nullptr, &in[3 * i], &out[i]);
    });
}

#define SPACE(space, form, P)                                                               \
    benchmark::RegisterBenchmark("colour/RGBto" #space "_" #form, [](benchmark::State& s) { \
        run<P, int32_t>(s, RK_RGBto##space##_##form, 3);                                    \
    });                                                                                     \
    benchmark::RegisterBenchmark("colour/" #space "toRGB_" #form, [](benchmark::State& s) { \
        back<P>(s, RK_RGBto##space##_##form, RK_##space##toRGB_##form);                     \
    });
#define MEASURE(name, form, P, Out)                         \
    benchmark::RegisterBenchmark("colour/" #name "_" #form, \
                                 [](benchmark::State& s) { run<P, Out>(s, RK_##name##_##form, 1); });
#define MEASURES(form, P, Out)       \
    MEASURE(Luminance, form, P, Out) \
    MEASURE(Hue, form, P, Out)       \
    MEASURE(Lightness, form, P, Out) \
    MEASURE(Saturation, form, P, Out)

const bool registered = [] {
    SPACE(HLS, Straight, RK_Pixel8)
    SPACE(HLS, Straight16, RK_Pixel16)
    SPACE(HLS, StraightFloat, RK_PixelFloat)
    SPACE(HLS, Premul, RK_Pixel8)
    SPACE(YIQ, Straight, RK_Pixel8)
    SPACE(YIQ, Straight16, RK_Pixel16)
    SPACE(YIQ, StraightFloat, RK_PixelFloat)
    SPACE(YIQ, Premul, RK_Pixel8)
    MEASURES(Straight, RK_Pixel8, uint32_t)
    MEASURES(Straight16, RK_Pixel16, uint32_t)
    MEASURES(StraightFloat, RK_PixelFloat, float)
    MEASURES(Premul, RK_Pixel8, uint32_t)
    return true;
}();

}  // namespace
