// Every sampler and behind scan of the slot list, and the portable forms, one call after the other along
// slanted rows.
#include "RK/indep/frame/RKp_SlotBodies.h"
#include "bench/Worlds.h"

namespace {

using bench::Alphas;
using bench::kHeight;
using bench::kWidth;

constexpr int32_t kRows = 32, kColumns = 1800;
constexpr int32_t kStepX = 0xF000, kStepY = 0x1D00;  // within one pixel, so that no row leaves the source

// sample(x, y, pb, out) takes one.
template <class P, class Sample>
void walk(benchmark::State& state, Alphas kind, double radius, Sample&& sample) {
    RK_WorldX<P> src(kWidth, kHeight, 0);
    bench::paint(src, kind);
    RK_SampPB pb{};
    pb.src = &src.record;
    pb.x_radius = pb.y_radius = static_cast<int32_t>(radius * 65536);
    pb.area = static_cast<int32_t>(radius * radius * 4 * 65536);
    std::vector<P> out(kColumns);
    constexpr RK_Long count = RK_Long{kRows} * kColumns;
    bench::measure(state, count, sizeof(P) * count, [&] {
        for (int32_t row = 0; row < kRows; ++row) {
            int32_t x = 0x84321, y = (row * 8 + 8) * 0x10000 + 0x5678;
            for (int32_t i = 0; i < kColumns; ++i, x += kStepX, y += kStepY)
                sample(x, y, &pb, &out[size_t(i)]);
        }
    });
}

template <class P, class Sample>
void add(const std::string& name, double radius, Sample sample) {
    for (const Alphas kind : {Alphas::Random, Alphas::Opaque, Alphas::Clear})
        benchmark::RegisterBenchmark((name + "/" + bench::name(kind)).c_str(),
                                     [=](benchmark::State& state) { walk<P>(state, kind, radius, sample); });
}

// ---- One shape of sampler each ----------------------------------------------------------------------------

template <class P>
void add(const std::string& name, RK_Sampler<P>* sampler) {
    // The area samplers' four cases are told by the radii; the others do not read them.
    const bool area = name.find("Area") != std::string::npos;
    for (const double radius : area ? std::vector<double>{0.5, 0.6, 1, 1.5, 4} : std::vector<double>{0.5}) {
        const std::string tail = area ? "/radius_" + std::to_string(radius).substr(0, 3) : "";
        add<P>("sample/" + name + tail, radius, [sampler](int32_t x, int32_t y, const RK_SampPB* pb, P* out) {
            sampler(nullptr, x, y, pb, out);
        });
    }
}
template <class P>
void add(const std::string& name, RK_SamplerPlus<P>* sampler) {
    add<P>("sample/" + name, 0.5, [sampler](int32_t x, int32_t y, const RK_SampPB* pb, P* out) {
        uint8_t all_inside;
        sampler(nullptr, x, y, pb, &all_inside, out);
    });
}
template <class P>
void add(const std::string& name, RK_SamplerTranslate<P>* sampler) {
    double weights[4];
    RK_SubpixelSampleComputeWeight(0x1234, 0xABCD, weights);
    const double w00 = weights[0], w10 = weights[1], w01 = weights[2], w11 = weights[3];
    add<P>("sample/" + name, 0.5, [=](int32_t x, int32_t y, const RK_SampPB* pb, P* out) {
        const double w[4] = {w00, w10, w01, w11};
        sampler(nullptr, x, y, w, pb, out);
    });
}
// A whole row in one call.
template <class P>
void add(const std::string& name, RK_SamplerSpan<P>* span) {
    for (const Alphas kind : {Alphas::Random, Alphas::Opaque, Alphas::Clear})
        benchmark::RegisterBenchmark(
            ("sample/" + name + "/" + bench::name(kind)).c_str(), [=](benchmark::State& state) {
                RK_WorldX<P> src(kWidth, kHeight, 0);
                bench::paint(src, kind);
                RK_SampPB pb{};
                pb.src = &src.record;
                std::vector<P> out(kColumns);
                bench::measure(state, RK_Long{kRows} * kColumns, sizeof(P) * kRows * kColumns, [&] {
                    for (int32_t row = 0; row < kRows; ++row) {
                        RK_AlphaSum<P> sum = 0;
                        span(nullptr, kColumns, 0x84321, row * 0x10000 + 0x5678, &pb, &sum, out.data());
                        benchmark::DoNotOptimize(sum);
                    }
                });
            });
}
// Onto a row of half alpha; the path is six pixels long.
template <class P>
void add(const std::string& name, RK_BehindScan<P>* scan) {
    for (const int32_t samples : {8, 16})
        for (const Alphas kind : {Alphas::Random, Alphas::Opaque})
            benchmark::RegisterBenchmark(
                ("behind/" + name + "/samples_" + std::to_string(samples) + "/" + bench::name(kind)).c_str(),
                [=](benchmark::State& state) {
                    RK_WorldX<P> src(kWidth, kHeight, 0);
                    bench::paint(src, kind);
                    RK_SampPB pb{};
                    pb.src = &src.record;
                    pb.x_radius = pb.y_radius = 0xC000;
                    pb.motion_samples = samples;
                    pb.comp_mode = {RK_Xfer_Behind, 0, 255, 0, 32768};
                    const std::vector<P> fresh = bench::pixels<P>(kColumns, Alphas::Random);
                    std::vector<P> out(fresh.size());
                    const int32_t line[4] = {0x84321, 0x85678, 0xE4321, 0xA5678};
                    const int32_t steps[4] = {kStepX, kStepY, kStepX, kStepY};
                    bench::measureRenewed(
                        state, kColumns, sizeof(P) * kColumns,
                        [&] { std::memcpy(out.data(), fresh.data(), fresh.size() * sizeof(P)); },
                        [&] { scan(nullptr, kColumns, line, steps, &pb, out.data()); });
                })
                ->UseManualTime();
}

template <class... Arguments>
void add(const std::string&, RK_Long (*)(Arguments...)) {}
template <class... Arguments>
void add(const std::string&, void (*)(Arguments...)) {}
inline void add(const std::string&, RK_Long (*)(...)) {}

// ---- The list ---------------------------------------------------------------------------------------------

template <class Function>
void addForms(const char* name, Function* body, Function* sse2) {
    if (body != nullptr) add(std::string(name) + "/default", body);
    if (sse2 != nullptr && bench::machine().has_sse2) add(std::string(name) + "/sse2", sse2);
}

const bool registered = [] {
#define RK_SLOT(number, name, type, body, sse2, ssse3) addForms<type>(#name, body, sse2);
#include "RK/indep/frame/RKp_Slots.def"
#define PORTABLE(P, name) add<P>(#name "/portable", name);
    PORTABLE(RK_Pixel8, RK_SubpixelCPlusPlus)
    PORTABLE(RK_Pixel16, RK_SubpixelCPlusPlus16)
    PORTABLE(RK_PixelFloat, RK_SubpixelCPlusPlusFloat)
    PORTABLE(RK_Pixel8, RK_SubpixelCPlusPlusNoClip)
    PORTABLE(RK_Pixel16, RK_SubpixelCPlusPlusNoClip16)
    PORTABLE(RK_PixelFloat, RK_SubpixelCPlusPlusNoClipFloat)
    PORTABLE(RK_PixelFloat, RK_SubpixelSampleTranslateNoClipCPlusPlusFloat)
    PORTABLE(RK_Pixel8, RK_SubpixelSpanSampleCPlusPlus)
    PORTABLE(RK_Pixel16, RK_SubpixelSpanSampleCPlusPlus16)
    PORTABLE(RK_PixelFloat, RK_SubpixelSpanSampleCPlusPlusFloat)
    PORTABLE(RK_PixelFloat, RK_AreaSampleFloat)
#undef PORTABLE
    return true;
}();

}  // namespace
