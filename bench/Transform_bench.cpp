// The world transform over a whole frame at every depth, with the function table of each processor record.
// Pixels are those drawn; "source_pixels" counts, for reductions, the pixels of the source that the
// footprints cover.
#include "RK/indep/sample/RK_TransformWorld.h"
#include "bench/Worlds.h"

namespace {

using bench::Alphas;
using bench::kHeight;
using bench::kWidth;

struct Job {
    std::string name;
    std::vector<GEO_Matrix3> matrices;  // from source to destination
    RK_Long drawn;                      // pixels of the frame that the source reaches
    int32_t xfer = RK_Xfer_Copy;
    bool best = true;
    double covered = 0;  // source pixels to a drawn one; 0: not told
    uint8_t opacity = 255;
};

template <class P>
void run(benchmark::State& state, const Job& job, Alphas kind, const bench::Record& record) {
    const bench::WithRecord with(record);
    RK_WorldX<P> src(kWidth, kHeight, 0), dst(kWidth, kHeight, 0), fresh(kWidth, kHeight, 0);
    bench::paint(src, kind);
    bench::paint(fresh, Alphas::Random);
    const RK_CompositeMode mode = {job.xfer, 1, job.opacity, 0,
                                   static_cast<uint16_t>(job.opacity == 255 ? 32768 : 32640)};
    const auto count = static_cast<RK_Long>(job.matrices.size());
    const size_t bytes = sizeof(P) * static_cast<size_t>(job.drawn);
    RK_Long result = 0;
    bench::measureRenewed(
        state, job.drawn, bytes, [&] { dst.CopyWorld(&fresh); },
        [&] {
            result |=
                RK_TransformWorld(nullptr, job.best ? RK_kBest : RK_kDraft, 0, RK_kBothFields, &src, &mode,
                                  nullptr, nullptr, job.matrices.data(), count, 1, nullptr, &dst);
        });
    if (result != RK_kOK) state.SkipWithError("the transform failed");
    if (job.covered > 0)
        state.counters["source_pixels"] = benchmark::Counter(job.covered * static_cast<double>(job.drawn),
                                                             benchmark::Counter::kIsIterationInvariantRate);
}

// `count` + 1 poses from one to the other; the fraction of a series stays within one pixel.
std::vector<GEO_Matrix3> series(int count, double degrees, double scale, double x, double y) {
    std::vector<GEO_Matrix3> made;
    for (int k = 0; k <= count; ++k) {
        const double t = static_cast<double>(k) / count;
        made.push_back(bench::pose(degrees * t, 1 + (scale - 1) * t, x * t + 0.3, y * t + 0.6));
    }
    return made;
}

std::vector<Job> jobs() {
    constexpr RK_Long frame = bench::kFrame.pixels;
    const auto part = [](double scale) { return static_cast<RK_Long>(frame * scale * scale); };
    std::vector<Job> all = {
        {"bilinear_7deg", {bench::pose(7, 1 / 0.9, 0, 0)}, frame},
        {"area_7deg_0.9", {bench::pose(7, 0.9, 0, 0)}, part(0.9)},
        {"scale_x2", {bench::pose(0, 2, 0, 0)}, frame},
        {"span", {bench::pose(0, 1, 0.3, 0.6)}, frame},
        {"draft_7deg", {bench::pose(7, 1 / 0.9, 0, 0)}, frame},
        {"whole_pixels", {bench::pose(0, 1, 3, 2)}, frame},
        {"turned_45deg_0.3", {bench::pose(45, 0.3, 0, 0)}, part(0.3)},
    };
    all[4].best = false;
    for (const int n : {2, 3, 8}) {
        all.push_back({"area_1_" + std::to_string(n), {bench::pose(0, 1.0 / n, 0, 0)}, part(1.0 / n)});
        all.back().covered = n * n;
    }
    for (const int n : {8, 16}) {
        const std::string samples = "_" + std::to_string(n);
        all.push_back({"motion_shift" + samples, series(n, 0, 1, 6, 4), frame});
        all.push_back({"motion_zoom" + samples, series(n, 0, 1.05, 6, 4), frame});
        all.push_back({"motion_turn" + samples, series(n, 3, 1.05, 6, 4), frame});
        all.push_back({"motion_draft" + samples, series(n, 3, 1.05, 6, 4), frame});
        all.back().best = false;
    }
    return all;
}

template <class P>
void add(const Job& job, Alphas kind, const bench::Record& record) {
    const std::string name =
        "transform/" + job.name + "/" + bench::depthName<P>() + "/" + bench::name(kind) + "/" + record.name;
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        run<P>(state, job, kind, record);
    })->UseManualTime();
}
template <class P>
void add() {
    for (const bench::Record& record : bench::recordsOf<P>()) {
        for (const Job& job : jobs())
            for (const Alphas kind : {Alphas::Random, Alphas::Opaque}) add<P>(job, kind, record);
        // What the finish of a row saves: rows of no alpha and of full alpha under Over are not blended.
        Job over = {"over_7deg", {bench::pose(7, 1.3, 0, 0)}, bench::kFrame.pixels, RK_Xfer_Over};
        for (const Alphas kind : {Alphas::Random, Alphas::Opaque, Alphas::Clear}) add<P>(over, kind, record);
        // The same in draft, where little else is done; at an opacity below full opaque rows are blended.
        over.name = "over_draft_7deg";
        over.best = false;
        for (const Alphas kind : {Alphas::Random, Alphas::Opaque, Alphas::Clear}) add<P>(over, kind, record);
        over.name = "over_draft_7deg_faded";
        over.opacity = 254;
        add<P>(over, Alphas::Opaque, record);
    }
}

const bool registered = [] {
    add<RK_Pixel8>();
    add<RK_Pixel16>();
    add<RK_PixelFloat>();
    return true;
}();

}  // namespace
