// The retiming engine with default parameters, each stage and the whole: the first picture of a frame pair
// and later ones, whose vector fields are kept. Pixels are those of the picture, whatever size a stage works
// at. One thread's times are its processor time; two threads' are the wall's, so that other programs count.
#include <cmath>
#include <memory>

#include "RK/indep/retime/FnCandidates.h"
#include "RK/indep/retime/FnFrameBlender.h"
#include "RK/indep/retime/FnMotionPyramid.h"
#include "RK/indep/retime/FnSmoothVectors.h"
#include "RK/indep/retime/RK_AdvancedFrameBlending.h"
#include "RK/indep/retime/RK_VectorCache.h"
#include "RK/indep/world/RK_World.h"
#include "bench/Worlds.h"

namespace {

using bench::kHeight;
using bench::kWidth;
constexpr RK_Long kPixels = RK_Long{kWidth} * kHeight;
constexpr float kTime = 0.5f;

// Waves and dots without a common period; a quarter of the frame moves against the rest.
template <class P>
void paintMoving(RK_WorldX<P>& world, int32_t moved) {
    auto value = [](float x, float y, uint32_t seed) {
        const float k = static_cast<float>(seed);
        const float wave =
            std::sin(x * 0.031f + k) + std::sin(y * 0.027f + x * 0.011f) + std::sin((x + y) * 0.073f) * 0.7f;
        const uint32_t cell = (static_cast<uint32_t>(static_cast<int32_t>(x) >> 3) * 73856093u) ^
                              (static_cast<uint32_t>(static_cast<int32_t>(y) >> 3) * 19349663u) ^
                              (seed * 83492791u);
        return 0.5f + 0.12f * wave + 0.1f * static_cast<float>((cell >> 7) & 255u) / 255.0f;
    };
    for (int32_t y = 0; y < world.height(); ++y)
        for (int32_t x = 0; x < world.width(); ++x) {
            const bool inner = std::abs(x - world.width() / 2) < world.width() / 4 &&
                               std::abs(y - world.height() / 2) < world.height() / 4;
            const int32_t step = inner ? -moved : moved;
            const float px = static_cast<float>(x + 2000 - step * 9),
                        py = static_cast<float>(y + 2000 + step * 4);
            P& p = world.row(y)[x];
            p.alpha = static_cast<typename RKp_Depth<P>::Channel>(RKp_Depth<P>::kFull);
            bench::scale(value(px, py, 1), &p.red);
            bench::scale(value(px, py, 2), &p.green);
            bench::scale(value(px, py, 3), &p.blue);
        }
}

template <class P>
struct Engine;
template <>
struct Engine<RK_Pixel8> {
    using Pixel = FnPixel8;
    static constexpr int kScale = 0xFF;
};
template <>
struct Engine<RK_Pixel16> {
    using Pixel = FnPixel16;
    static constexpr int kScale = 0x8000;
};
template <>
struct Engine<RK_PixelFloat> {
    using Pixel = FnPixelFloat;
    static constexpr int kScale = 1;
};

// What each stage starts from.
template <class P>
struct Stages {
    using Pixel = typename Engine<P>::Pixel;
    static constexpr int kScale = Engine<P>::kScale;
    using Picture = FnPicture<Pixel>;

    RK_WorldX<P> worlds[3] = {{kWidth, kHeight, 0}, {kWidth, kHeight, 0}, {kWidth, kHeight, 0}};
    std::unique_ptr<Picture> pictures[3];
    InterruptRecord interrupt;
    FnMotionEstimateMapStackHolder holder;
    FnVectorMap blocky;
    FnTweenResult tweened;

    Stages() {
        for (int32_t i = 0; i < 3; ++i) {
            if (i < 2) paintMoving(worlds[i], i);
            pictures[i] =
                std::make_unique<Picture>(worlds[i].row(0), kWidth, kHeight, worlds[i].record.rowbytes);
            pictures[i]->SetEdgeModes(kFnClamp, kFnClamp);
        }
        Luminance();
        blocky.Resize(holder.width, holder.height);
        for (FnVectorMap* field : {&holder.first_field, &holder.second_field}) {
            field->Resize(holder.width, holder.height);
            Estimate(field == &holder.second_field);
            Smooth(field, field == &holder.second_field);
        }
        Tween();
    }
    void Luminance() {
        FnMakeLuminance<Pixel, FnPixelFloat, kScale>(
            *pictures[0], *pictures[1], 0.2f, {0.2988804, 0.58676529, 0.11435428}, &interrupt, &holder);
    }
    FnFloatMap* Reference(bool second) const {
        return second ? holder.first_luminance : holder.second_luminance;
    }
    FnFloatMap* Target(bool second) const {
        return second ? holder.second_luminance : holder.first_luminance;
    }
    void Estimate(bool second) { EstimateField({}, Reference(second), Target(second), &interrupt, &blocky); }
    void Smooth(FnVectorMap* field, bool second) {
        FnMotionEstimateGradientSmoothVectorsParameters p;
        p.error_weight = NegativeWeight(500.0f);
        p.smooth_weight = PositiveWeight(500.0f);
        p.blocks = {6, 6, 2};
        p.reference = Reference(second);
        p.target = Target(second);
        FnPixelSmooth smooth(p);
        smooth.SetInterrupt(&interrupt);
        smooth.Process(field, &blocky);
    }
    void Tween() {
        tweened.a.ShapeLike(holder.first_field);
        tweened.b.ShapeLike(holder.first_field);
        tweened.classes.ShapeLike(holder.first_field);
        FnTweenParameters p;
        p.width = holder.width;
        p.height = holder.height;
        p.t = kTime;
        p.smooth_weight = PositiveWeight(500.0f);
        p.error_weight = NegativeWeight(500.0f);
        p.flags = kFnGivenClasses | kFnGivenResultA | kFnGivenResultB | kFnOwnsLists;
        p.fields[0] = &holder.first_field;
        p.fields[1] = &holder.second_field;
        p.frames[0] = p.frames[1] = holder.first_luminance;
        p.frames[2] = p.frames[3] = holder.second_luminance;
        p.classes = &tweened.classes;
        p.result_a = &tweened.a;
        p.result_b = &tweened.b;
        FnMotionEstimateGradientTweener<float, float, 1, float, float, 1> tweener(p);
        tweener.SetInterrupt(&interrupt);
        tweener.Process();
    }
    void Build() {
        FnBuildFrame<Pixel, FnPixelFloat, kScale>(pictures[2].get(), *pictures[0], *pictures[1], &tweened,
                                                  kTime, false, &interrupt);
    }
    RK_Long Render(STASH_SortDir* dir) {
        std::unique_ptr<RK_World> made[3];
        for (int32_t i = 0; i < 3; ++i) {
            const RK_LayerDef& r = worlds[i].record;
            made[i].reset(RK_World::NewReference(r.data, r.width, r.height,
                                                 static_cast<int16_t>(sizeof(P) * 2), r.rowbytes));
        }
        const RK_Quillon_OtherParams other = {{0, 25}, {1, 25}, {0, 25}, {1, 25}, static_cast<double>(kTime),
                                              dir,     7};
        return RK_AdvancedFrameBlending(other, {nullptr, nullptr})
            .Render(made[0].get(), made[1].get(), made[2].get());
    }
};

// work(stages) under a count of threads.
template <class P, class Work>
void add(const std::string& name, Work work) {
    for (const int32_t threads : {1, 2}) {
        auto* added = benchmark::RegisterBenchmark(
            ("retime/" + name + "/" + bench::depthName<P>() + "/threads_" + std::to_string(threads)).c_str(),
            [=](benchmark::State& state) {
                const int32_t before = FnThreadCount();
                FnSetThreadCount(threads);
                Stages<P> stages;
                work(state, stages);
                state.SetItemsProcessed(state.iterations() * kPixels);
                FnSetThreadCount(before);
            });
        added->Unit(benchmark::kMillisecond);
        if (threads > 1) added->UseRealTime();
    }
}
template <class P, class Work>
void addStage(const std::string& name, Work work) {
    add<P>(name, [=](benchmark::State& state, Stages<P>& stages) {
        for (auto _ : state) work(stages);
    });
}

template <class P>
void addWhole() {
    addStage<P>("first_picture", [](Stages<P>& s) { s.Render(nullptr); });
    add<P>("later_pictures", [](benchmark::State& state, Stages<P>& s) {
        STASH_SortDir* dir = STASH_NewSortDir("retime bench");
        s.Render(dir);
        for (auto _ : state) s.Render(dir);
        STASH_DisposeSortDir(dir);
    });
}

const bool kAdded = [] {
    using Eight = Stages<RK_Pixel8>;
    addStage<RK_Pixel8>("luminance", [](Eight& s) { s.Luminance(); });
    addStage<RK_Pixel8>("estimate", [](Eight& s) {
        s.Estimate(true);
        s.Estimate(false);
    });
    addStage<RK_Pixel8>("smooth", [](Eight& s) {
        FnVectorMap field(s.holder.width, s.holder.height);
        s.Smooth(&field, false);  // the field that stands in the map of blocks
        s.Smooth(&field, false);
    });
    addStage<RK_Pixel8>("tween", [](Eight& s) { s.Tween(); });
    addStage<RK_Pixel8>("build", [](Eight& s) { s.Build(); });
    addStage<RK_Pixel16>("build", [](Stages<RK_Pixel16>& s) { s.Build(); });
    addStage<RK_PixelFloat>("build", [](Stages<RK_PixelFloat>& s) { s.Build(); });
    addWhole<RK_Pixel8>();
    addWhole<RK_Pixel16>();
    addWhole<RK_PixelFloat>();
    return true;
}();

}  // namespace
