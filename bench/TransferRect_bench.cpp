// Transfer rect over a whole frame at every depth: without a mask, under one read in place, and under one
// computed.
#include "RK/indep/composite/RK_TransferRect.h"
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
    record.extent = {0, 0, kHeight, kWidth};
    return record;
}

enum class Mask { None, Alpha, InvertedLuma };

template <class P>
void run(benchmark::State& state, int32_t xfer, Mask masked, Alphas kind) {
    const RK_Long count = bench::kFrame.pixels;
    std::vector<P> src = bench::pixels<P>(count, kind), matte = bench::pixels<P>(count, Alphas::Halves);
    const std::vector<P> fresh = bench::pixels<P>(count, Alphas::Random);
    std::vector<P> dst(fresh.size());
    const RK_LayerDef from = recordOf(src);
    RK_LayerDef to = recordOf(dst);
    RK_Mask mask = {};
    mask.world = recordOf(matte);
    mask.mask_kind = masked == Mask::InvertedLuma ? RK_kMaskInvertedLuma : RK_kMaskAlpha;
    const RK_CompositeModePlus mode(xfer, 1.0f, nullptr, false, 0);
    const size_t bytes = sizeof(P) * static_cast<size_t>(count);
    RK_Long result = 0;
    bench::measureRenewed(
        state, count, bytes, [&] { std::memcpy(dst.data(), fresh.data(), bytes); },
        [&] {
            result |= RK_TransferRect(nullptr, nullptr, nullptr, RK_kBothFields, nullptr, &from, &mode,
                                      nullptr, masked == Mask::None ? nullptr : &mask.world, 0, 0, &to);
        });
    if (result != RK_kOK) state.SkipWithError("the transfer rect failed");
}

template <class P>
void add() {
    static const struct {
        const char* name;
        int32_t xfer;
    } modes[] = {{"Copy", RK_Xfer_Copy}, {"Over", RK_Xfer_Over}, {"Add", RK_Xfer_Add}, {"Hue", RK_Xfer_Hue}};
    static const struct {
        const char* name;
        Mask mask;
    } masks[] = {{"no_mask", Mask::None}, {"alpha_mask", Mask::Alpha}, {"luma_mask", Mask::InvertedLuma}};
    for (const auto& mode : modes) {
        for (const auto& mask : masks) {
            for (Alphas kind : bench::kAlphas) {
                const std::string name = std::string("transfer_rect/") + mode.name + "/" +
                                         std::to_string(sizeof(P) * 2) + "/" + mask.name + "/" +
                                         bench::name(kind);
                benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
                    run<P>(state, mode.xfer, mask.mask, kind);
                })->UseManualTime();
            }
        }
    }
}

const bool registered = [] {
    add<RK_Pixel8>();
    add<RK_Pixel16>();
    add<RK_PixelFloat>();
    return true;
}();

}  // namespace
