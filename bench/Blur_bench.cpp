// The one-axis blurs over a frame of 1920 x 1080. The box costs the same for every radius; the Gaussian does
// not.
//   rk_bench --benchmark_filter='^BoxBlur/8/'
#include "RK/indep/filter/RK_BoxBlur.h"
#include "RK/indep/filter/RK_GaussianBlur.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "bench/Bench.h"

namespace {

constexpr int kWidth = 1920, kHeight = 1080;

struct Case {
    float radius;
    int32_t passes;  // 0: the Gaussian
    uint32_t flags;
    bool columns;
    int32_t premultiplied;  // in and out
    bool vectors;
};

// The pixels of all cases of a depth: premultiplied.
template <class P>
struct Frames {
    Frames() : source(kWidth, kHeight), target(kWidth, kHeight) {
        const std::vector<P> made = bench::pixels<P>(kWidth * kHeight, bench::Alphas::Random);
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                P& p = source.at(x, y);
                p = made[static_cast<size_t>(y) * kWidth + static_cast<size_t>(x)];
                p.red = std::min(p.red, p.alpha);
                p.green = std::min(p.green, p.alpha);
                p.blue = std::min(p.blue, p.alpha);
            }
        }
    }
    static Frames& get() {
        static Frames frames;
        return frames;
    }
    test::Picture<P> source, target;
};

template <class P>
void blur(benchmark::State& state, const Case& c) {
    Frames<P>& frames = Frames<P>::get();
    const RK_LayerDef from = frames.source.record(), to = frames.target.record();
    const RK_WorldX<P> src(&from, false);
    RK_WorldX<P> dst(&to, false);
    const KIT_CPU_Data before = *KIT_G_CPU_DataP;
    RefHost::SetCPU(c.vectors ? bench::machine() : KIT_CPU_Data{});
    const int32_t columns = c.columns;
    bench::measure(state, kWidth * kHeight, sizeof(P) * kWidth * kHeight, [&] {
        if (c.passes == 0)
            RK_GaussianBlur1D(nullptr, &src, c.radius, c.flags, columns, c.premultiplied, columns,
                              c.premultiplied, 0, &dst);
        else
            RK_BoxBlur1D(nullptr, &src, c.radius, c.passes, c.flags, columns, c.premultiplied, columns,
                         c.premultiplied, 0, &dst);
    });
    RefHost::SetCPU(before);
}

template <class P>
void add(const std::string& tail, const Case& c) {
    char radius[16];
    std::snprintf(radius, sizeof radius, "%g", static_cast<double>(c.radius));
    const std::string name = std::string(c.passes == 0 ? "GaussianBlur/" : "BoxBlur/") +
                             std::to_string(sizeof(P) * 2) + "/radius:" + radius +
                             (c.passes > 1 ? "/passes:" + std::to_string(c.passes) : "") +
                             (c.columns ? "/columns" : "/rows") + tail;
    benchmark::RegisterBenchmark(name.c_str(), blur<P>, c)->Unit(benchmark::kMillisecond);
}

constexpr uint32_t kAll = RK_kBlurAllChannels, kEdges = RK_kBlurRenormalise;

template <class P>
void addDepth() {
    for (const bool columns : {false, true}) {
        for (const float radius : {2.0f, 8.5f, 50.0f})
            for (const int32_t passes : {1, 3}) {
                add<P>("/all", {radius, passes, kAll, columns, 1, true});
                add<P>("/alpha", {radius, passes, RK_kBlurAlpha, columns, 1, true});
            }
        add<P>("/all/plain", {8.5f, 1, kAll, columns, 1, false});
        add<P>("/all/edges", {8.3f, 1, kAll | kEdges, columns, 1, true});
        add<P>("/rgb", {8.5f, 1, kAll & ~RK_kBlurAlpha, columns, 1, true});
        add<P>("/all/straight", {8.5f, 1, kAll, columns, 0, true});
        for (const float radius : {3.0f, 20.0f}) {
            add<P>("/all", {radius, 0, kAll, columns, 1, true});
            add<P>("/alpha", {radius, 0, RK_kBlurAlpha, columns, 1, true});
        }
    }
}

const bool registered = [] {
    addDepth<RK_Pixel8>();
    addDepth<RK_Pixel16>();
    addDepth<RK_PixelFloat>();
    for (const bool columns : {false, true})
        for (const float radius : {1.0f, 5.0f, 20.0f, 100.0f, 500.0f})
            add<RK_Pixel8>("/all/edges/any_radius", {radius, 1, kAll | kEdges, columns, 1, true});
    return true;
}();

}  // namespace
