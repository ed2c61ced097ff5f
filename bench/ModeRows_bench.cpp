// The row of every mode at every depth, over four kinds of source alpha; Over and Copy in each of their
// forms.
#include "RK/indep/composite/RK_Xfer.h"
#include "RK/indep/composite/RKp_RowVariants.h"
#include "bench/Bench.h"

namespace {

using bench::Alphas;
using bench::Size;

// The row of `mode` without a matte and at full opacity, or with one and at half opacity.
template <class P>
RK_BlendModeDescriptor<P> makePlan(int32_t mode, bool has_matte) {
    RK_BlendingMode<P> record = RK_MakeBlendingMode<P>({mode, has_matte ? 0.5f : 1.0f, nullptr, false, 1});
    return {record, has_matte, nullptr};
}

// Onto random pixels. A row whose source alphas are mixed gets a fresh destination each time, as over and
// over again it would turn opaque; the others leave theirs alike, and a clock would cost as much as they do.
template <class P>
void runRow(benchmark::State& state, RK_RowFunc<P>* row, int32_t mode, bool has_matte, const Size& size,
            Alphas kind) {
    const RK_BlendModeDescriptor<P> plan = makePlan<P>(mode, has_matte);
    const std::vector<P> src = bench::pixels<P>(size.pixels, kind);
    const std::vector<P> fresh = bench::pixels<P>(size.pixels + 7, Alphas::Random);
    const std::vector<P> matte(fresh.rbegin(), fresh.rbegin() + size.pixels);
    std::vector<P> dst(fresh.begin() + 7, fresh.end());
    const size_t bytes = sizeof(P) * static_cast<size_t>(size.pixels);
    if (row == nullptr) row = plan.mode_func;
    const auto work = [&] {
        row(size.pixels, &plan, nullptr, src.data(), has_matte ? matte.data() : nullptr, dst.data());
    };
    if (kind == Alphas::Random || kind == Alphas::Halves)
        bench::measureRenewed(
            state, size.pixels, bytes, [&] { std::memcpy(dst.data(), fresh.data() + 7, bytes); }, work);
    else
        bench::measure(state, size.pixels, bytes, work);
}

template <class P>
void add(const char* name, const char* form, RK_RowFunc<P>* row, int32_t mode, bool has_matte,
         const Size& size) {
    for (Alphas kind : bench::kAlphas) {
        const bool renewed = kind == Alphas::Random || kind == Alphas::Halves;
        const std::string full = std::string("row/") + name + "/" + std::to_string(sizeof(P) * 2) + "/" +
                                 form + "/" + size.name + (has_matte ? "/matte/" : "/") + bench::name(kind);
        benchmark::internal::Benchmark* const made = benchmark::RegisterBenchmark(
            full.c_str(),
            [=](benchmark::State& state) { runRow<P>(state, row, mode, has_matte, size, kind); });
        if (renewed) made->UseManualTime();
    }
}

// As the plan picks it; MatteMix has no row without a matte.
template <class P>
void addMode(const char* name, int32_t mode) {
    add<P>(name, "picked", nullptr, mode, mode == RK_Xfer_MatteMix, bench::kRow);
}

template <class P>
void addForms() {
    for (const Size& size : {bench::kRow, bench::kFrame}) {
        for (bool has_matte : {false, true}) {
            const RKp_RowVariants<P>& forms = RKp_RowVariantsOf<P>();
            const auto over = has_matte ? RKp_OverRow_Static<P, true> : RKp_OverRow_Static<P, false>;
            const auto copy = has_matte ? RKp_CopyRow_Static<P, true> : RKp_CopyRow_Static<P, false>;
            add<P>("Over", "default", over, RK_Xfer_Over, has_matte, size);
            if (forms.over_ssse3[has_matte] && bench::machine().has_ssse3)
                add<P>("Over", "ssse3", forms.over_ssse3[has_matte], RK_Xfer_Over, has_matte, size);
            add<P>("Copy", "default", copy, RK_Xfer_Copy, has_matte, size);
            if (forms.copy_sse2[has_matte] && bench::machine().has_sse2)
                add<P>("Copy", "sse2", forms.copy_sse2[has_matte], RK_Xfer_Copy, has_matte, size);
        }
    }
}

const bool registered = [] {
#define RK_MODE(number, name, class_, flag, does) \
    if (RK_kMode##class_ != RK_kModeRefused) {    \
        addMode<RK_Pixel8>(#name, number);        \
        addMode<RK_Pixel16>(#name, number);       \
        addMode<RK_PixelFloat>(#name, number);    \
    }
#include "RK/indep/composite/RKp_Modes.def"
    addForms<RK_Pixel8>();
    addForms<RK_Pixel16>();
    addForms<RK_PixelFloat>();
    return true;
}();

}  // namespace
