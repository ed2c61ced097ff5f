// Masks of 1920 x 1080: fills, fades, every accumulation mode plain and weighted, transfer, conversion, the
// merge into a world's alpha, and the blurs of their lines.
//   rk_bench --benchmark_filter='^mask/accumulate/8/'
#include <memory>

#include "RK/indep/filter/RK_MergeMaskAlpha.h"
#include "RK/indep/filter/RK_UnoBlur.h"
#include "bench/Worlds.h"

namespace {

using bench::kHeight;
using bench::kWidth;

constexpr GEO_Rect kAll = {0, 0, kHeight, kWidth};
constexpr Point kOrigin = {0, 0};
constexpr RK_Long kSamples = RK_Long{kWidth} * kHeight;

template <class S>
struct Mask {
    explicit Mask(uint32_t seed) : buffer(kWidth, kHeight, static_cast<int32_t>(sizeof(S)) * 8) {
        test::Random random(seed);
        S* const samples = buffer.template Row<S>(0);
        for (RK_Long i = 0; i < kSamples; ++i) bench::scale(random.unit(), &samples[i]);
    }
    RK_UnoBuffer buffer;
};

template <class S>
std::string depthOf() {
    return std::to_string(sizeof(S) * 8);
}

// work(state) makes its masks, and measures.
template <class Work>
void add(const std::string& name, Work work) {
    benchmark::RegisterBenchmark(("mask/" + name).c_str(), work)->Unit(benchmark::kMicrosecond);
}
// A pass over a mask of samples S, in memcpys of it.
template <class S, class Pass>
void measure(benchmark::State& state, Pass pass) {
    RK_Long result = 0;
    bench::measure(state, kSamples, sizeof(S) * static_cast<size_t>(kSamples), [&] { result |= pass(); });
    if (result != RK_kOK) state.SkipWithError("the pass failed");
}

struct NamedMode {
    const char* name;
    int32_t mode;
};
constexpr NamedMode kModes[] = {{"dither", RK_kUnoDither},         {"union", RK_kUnoUnion},
                                {"subtract", RK_kUnoSubtract},     {"intersect", RK_kUnoIntersect},
                                {"lighten", RK_kUnoLighten},       {"darken", RK_kUnoDarken},
                                {"difference", RK_kUnoDifference}, {"add", RK_kUnoAdd}};

template <class S>
void addCombining() {
    for (const NamedMode& m : kModes) {
        const int32_t mode = m.mode;
        if constexpr (sizeof(S) < 4)
            for (const bool weighted : {false, true})
                add("accumulate/" + depthOf<S>() + "/" + m.name + (weighted ? "/weighted" : ""),
                    [=](benchmark::State& state) {
                        const Mask<S> src(1);
                        Mask<S> dst(2);
                        const float weight = weighted ? 0.7f : 1.0f;
                        measure<S>(state, [&] {
                            return RK_AccumulateUnoBuffers(nullptr, &src.buffer, mode, weight, weight, kAll,
                                                           kOrigin, &dst.buffer);
                        });
                    });
        add("transfer/" + depthOf<S>() + "/" + m.name, [=](benchmark::State& state) {
            const Mask<S> a(1), b(2);
            Mask<S> dst(3);
            measure<S>(state, [&] {
                return RK_TransferUnoBuffers(nullptr, &a.buffer, &b.buffer, mode, kAll, kOrigin, &dst.buffer);
            });
        });
    }
}

template <class S>
void addAlone() {
    const std::string depth = depthOf<S>();
    add("fill/" + depth, [](benchmark::State& state) {
        Mask<S> mask(1);
        measure<S>(state, [&] {
            if constexpr (sizeof(S) == 1) return RK_FillUnoBuffer(7, &mask.buffer);
            if constexpr (sizeof(S) == 2) return RK_FillDeepUnoBuffer(7, &mask.buffer);
            if constexpr (sizeof(S) == 4) return RK_FillFloatUnoBuffer(0.5f, &mask.buffer);
        });
    });
    if constexpr (sizeof(S) < 4)
        add("fill/" + depth + "/rect", [](benchmark::State& state) {
            Mask<S> mask(1);
            const GEO_Rect inner = {0, 1, kHeight, kWidth - 1};
            measure<S>(state, [&] {
                if constexpr (sizeof(S) == 1) return RK_FillUnoBuffer(7, inner, &mask.buffer);
                if constexpr (sizeof(S) == 2) return RK_FillDeepUnoBuffer(7, inner, &mask.buffer);
            });
        });
    add("fade/" + depth, [](benchmark::State& state) {
        Mask<S> mask(1);
        measure<S>(state, [&] { return RK_FadeUnoBuffer(nullptr, 1.0f, &mask.buffer); });
    });
    if constexpr (sizeof(S) < 4) {
        add("invert/" + depth, [](benchmark::State& state) {
            Mask<S> mask(1);
            measure<S>(state, [&] { return RK_InvertUnoBuffer(nullptr, &mask.buffer); });
        });
        add("invert_and_fade/" + depth, [](benchmark::State& state) {
            Mask<S> mask(1);
            measure<S>(state, [&] { return RK_InvertAndFadeUnoBuffer(nullptr, 0xC000, &mask.buffer); });
        });
    }
    for (const uint16_t divisor : {uint16_t{4}, uint16_t{3}})
        add("convert/16/" + depth + "/by_" + std::to_string(divisor), [=](benchmark::State& state) {
            const Mask<uint16_t> src(1);
            Mask<S> dst(2);
            measure<uint16_t>(state, [&] {
                return RK_ConvertDeepUnoBuffer(nullptr, &src.buffer, kAll, divisor, &dst.buffer);
            });
        });
}

// In memcpys of the world.
template <class M, class P>
void addMerge() {
    add("merge/" + depthOf<M>() + "/" + bench::depthName<P>(), [](benchmark::State& state) {
        const Mask<M> mask(1);
        const std::unique_ptr<RK_World> world(
            RK_World::New(kWidth, kHeight, static_cast<int16_t>(sizeof(P) * 2), 0));
        bench::paint(static_cast<RK_WorldX<P>&>(*world), bench::Alphas::Random);
        bench::measure(state, kSamples, sizeof(P) * static_cast<size_t>(kSamples), [&] {
            RK_MergeMaskAlpha(nullptr, 0, 0, nullptr, &mask.buffer, nullptr, world.get());
        });
    });
}

// Every row of a mask, in memcpys of it.
template <class S>
using BlurScan = RK_Long(int32_t, RK_EffectRef, int32_t, int32_t, int32_t, const S*, S*);
template <class S>
void addBlur(const std::string& name, BlurScan<S>* scan, int32_t mode) {
    for (const double radius : {1.5, 3.0, 12.0, 50.0})
        add(name + "/" + depthOf<S>() + "/radius:" + std::to_string(radius).substr(0, 4),
            [=](benchmark::State& state) {
                const Mask<S> src(1);
                std::vector<S> line(kWidth + 64);
                measure<S>(state, [&] {
                    RK_Long result = 0;
                    for (int32_t y = 0; y < kHeight; ++y)
                        result |= scan(mode, nullptr, 0, kWidth, static_cast<int32_t>(radius * 65536),
                                       src.buffer.template Row<S>(y), line.data());
                    return result;
                });
            });
}

const bool registered = [] {
    addAlone<uint8_t>();
    addAlone<uint16_t>();
    addAlone<float>();
    addCombining<uint8_t>();
    addCombining<uint16_t>();
    addCombining<float>();
    add("accumulate/8/16/add", [](benchmark::State& state) {
        const Mask<uint8_t> src(1);
        Mask<uint16_t> dst(2);
        measure<uint16_t>(state, [&] {
            return RK_AccumulateUnoBuffers(nullptr, &src.buffer, RK_kUnoAdd, kAll, kOrigin, &dst.buffer);
        });
    });
    addMerge<uint8_t, RK_Pixel8>();
    addMerge<uint8_t, RK_Pixel16>();
    addMerge<uint16_t, RK_Pixel16>();
    addMerge<uint16_t, RK_PixelFloat>();
    addMerge<uint8_t, RK_PixelFloat>();
    addBlur<uint8_t>("gauss", RK_GBlurUnoScan, 0);
    addBlur<uint16_t>("gauss", RK_GBlurDeepUnoScan, 0);
    addBlur<uint8_t>("box", RK_BoxBlurUnoScan, 0);
    addBlur<uint16_t>("box", RK_BoxBlurDeepUnoScan, 0);
    addBlur<uint8_t>("single_box", RK_BoxBlurUnoScan, 1);
    addBlur<uint16_t>("single_box", RK_BoxBlurDeepUnoScan, 1);
    return true;
}();

}  // namespace
