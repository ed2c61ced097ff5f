// Every mode at every depth: its row function alone, and a row through the whole pipeline.
#include "RK/indep/composite/RK_BlendPipeline.h"
#include "bench/Bench.h"

namespace {

using bench::Alphas;

template <class P>
void add(int32_t mode_number, const std::string& name, Alphas kind) {
    const RK_Long count = bench::kRow.pixels;
    const size_t bytes = sizeof(P) * static_cast<size_t>(count);
    const auto bench = [=](benchmark::State& state, bool whole) {
        const auto full = static_cast<RK_Channel<P>>(RKp_Depth<P>::kFull);
        RK_BlendingMode<P> mode = {mode_number, 1, full, 0};
        const RK_BlendModeDescriptor<P> plan(mode, false, nullptr);
        const std::vector<P> src = bench::pixels<P>(count, kind),
                             fresh = bench::pixels<P>(count, Alphas::Random);
        const std::vector<P> matte = bench::pixels<P>(count, Alphas::Random);
        std::vector<P> out(fresh.size());
        bench::measureRenewed(
            state, count, bytes, [&] { std::memcpy(out.data(), fresh.data(), bytes); },
            [&] {
                if (whole)
                    RK_BlendPipeline<P>(nullptr, count, &plan, src.data(), matte.data(), nullptr, out.data());
                else
                    plan.mode_func(count, &plan, nullptr, src.data(), matte.data(), out.data());
            });
    };
    const std::string tail = "/" + std::to_string(sizeof(P) * 2) + "/" + bench::name(kind);
    for (const bool whole : {false, true})
        benchmark::RegisterBenchmark((name + (whole ? "/pipeline" : "/row") + tail).c_str(), bench, whole)
            ->UseManualTime();
}

const bool registered = [] {
    for (int32_t mode = RK_kFirstMode; mode <= RK_kLastMode; ++mode) {
        RK_ModeInfo info;
        if (RK_GetModeInfo(mode, &info) != RK_kOK || info.mode_class == RK_kModeRefused) continue;
        for (Alphas kind : bench::kAlphas) {
            const std::string name = std::string("Mode/") + info.name;
            add<RK_Pixel8>(mode, name, kind);
            add<RK_Pixel16>(mode, name, kind);
            add<RK_PixelFloat>(mode, name, kind);
        }
    }
    return true;
}();

}  // namespace
