// The passes over whole worlds: Fill in both its paths, the Iterate family, a world's making, a record's
// wrap.
#include "RK/indep/passes/RK_Fill.h"
#include "RK/indep/passes/RK_Iterate.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "bench/Bench.h"

namespace {

constexpr int kWidth = 1920, kHeight = 1080;

template <class P>
size_t bytesOf(const test::Picture<P>& picture) {
    return sizeof(P) * static_cast<size_t>(picture.width()) * static_cast<size_t>(picture.height());
}

// A fill to hold against memset/DEPTH/SIZE.
template <class P>
void fill(benchmark::State& state, int height, bool zero) {
    test::Picture<P> picture(kWidth, height);
    RK_LayerDef world = picture.record();
    const RK_PixelFloat colour = {1.0f, 0.25f, 0.5f, 0.75f};
    bench::measure(state, kWidth * height, bytesOf(picture),
                   [&] { RK_FillFloat(nullptr, zero ? nullptr : &colour, nullptr, &world); });
}

template <class P>
RK_Long invert(void*, RK_Long, RK_Long, void* in, void* out) {
    const P p = *static_cast<const P*>(in);
    *static_cast<P*>(out) = {p.alpha, p.blue, p.green, p.red};
    return RK_kOK;
}

template <class P>
void iterate(benchmark::State& state) {
    test::Picture<P> source(kWidth, kHeight), target(kWidth, kHeight);
    source.fillRandom(1);
    RK_LayerDef src = source.record(), dst = target.record();
    bench::measure(state, kWidth * kHeight, bytesOf(source),
                   [&] { RK_Iterate(nullptr, 0, 0, &src, nullptr, nullptr, invert<P>, &dst); });
}

void lookUp(benchmark::State& state) {
    test::Picture<RK_Pixel8> source(kWidth, kHeight), target(kWidth, kHeight);
    source.fillRandom(1);
    RK_LayerDef src = source.record(), dst = target.record();
    uint8_t table[256];
    for (int i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(255 - i);
    bench::measure(state, kWidth * kHeight, bytesOf(source),
                   [&] { RK_IterateLUT(nullptr, 0, 0, &src, nullptr, table, table, table, table, &dst); });
}

void wrap(benchmark::State& state) {
    test::Picture<RK_Pixel8> picture(4, 4);
    const RK_LayerDef plain = picture.record();
    for (auto _ : state) {
        RK_WorldX<RK_Pixel8> world(&plain, false);
        benchmark::DoNotOptimize(world.row(1));
    }
}

void make(benchmark::State& state) {
    for (auto _ : state) delete RK_World::New(64, 64, 8, 0);
}

template <class P>
void add() {
    const std::string depth = std::to_string(sizeof(P) * 2);
    for (const bool zero : {true, false}) {
        const std::string name = std::string(zero ? "FillZero/" : "FillColour/") + depth;
        benchmark::RegisterBenchmark((name + "/row").c_str(), fill<P>, 1, zero);
        benchmark::RegisterBenchmark((name + "/frame").c_str(), fill<P>, kHeight, zero);
    }
    benchmark::RegisterBenchmark(("Iterate/" + depth + "/frame").c_str(), iterate<P>);
}

const bool registered = [] {
    add<RK_Pixel8>();
    add<RK_Pixel16>();
    add<RK_PixelFloat>();
    benchmark::RegisterBenchmark("IterateLUT/8/frame", lookUp);
    benchmark::RegisterBenchmark("WorldWrap", wrap);
    benchmark::RegisterBenchmark("WorldNew/64x64", make);
    return true;
}();

}  // namespace
