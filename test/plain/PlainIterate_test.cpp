// The iterate family against its plain twin: the same calls, in the same order, at every depth.
#include <gtest/gtest.h>

#include "RK/indep/frame/RK_OverFuncs.h"
#include "test/plain/PlainIterate.h"
#include "test/plain/Worlds.h"

namespace {

using plain::Visit;

// What a pass called, told in world coordinates from the addresses it handed over.
struct Recorder {
    const RK_LayerDef *src, *dst;
    int pixel_size;
    int64_t stop_pixel, stop_progress;  // the call that stops the pass; 0: none
    int64_t pixels, progresses;
    std::vector<Visit> visits;
    bool zero_was_zero;

    static bool locate(const RK_LayerDef& w, int pixel_size, const void* p, int32_t& x, int32_t& y) {
        for (y = 0; y < w.height; ++y) {
            const char* row = static_cast<const char*>(w.data) + std::ptrdiff_t{y} * w.rowbytes;
            const char* q = static_cast<const char*>(p);
            if (q < row || q >= row + std::ptrdiff_t{w.width} * pixel_size) continue;
            x = static_cast<int32_t>((q - row) / pixel_size);
            return true;
        }
        return false;
    }
    static RK_Long pixel(void* refcon, RK_Long x, RK_Long y, void* in, void* out) {
        Recorder& me = *static_cast<Recorder*>(refcon);
        Visit v{Visit::Zero, static_cast<int32_t>(x), static_cast<int32_t>(y), 0, 0};
        int32_t ox = -1, oy = -1;
        locate(*me.dst, me.pixel_size, out, ox, oy);
        if (ox != x || oy != y) v.x = v.y = -99999;  // `out` is not the pixel it is said to be
        if (me.src != nullptr && locate(*me.src, me.pixel_size, in, v.in_x, v.in_y)) {
            v.in = Visit::Source;
        } else if (locate(*me.dst, me.pixel_size, in, v.in_x, v.in_y)) {
            v.in = Visit::Destination;
        } else {
            v.in_x = v.in_y = 0;
            for (int i = 0; i < me.pixel_size; ++i)
                if (static_cast<const char*>(in)[i] != 0) me.zero_was_zero = false;
        }
        me.visits.push_back(v);
        return ++me.pixels == me.stop_pixel ? 41 : 0;
    }
    static RK_Long progress(RK_EffectRef effect_ref, RK_Long current, RK_Long maximum) {
        Recorder& me = *static_cast<Recorder*>(effect_ref);
        me.visits.push_back(
            {Visit::Progress, static_cast<int32_t>(current), static_cast<int32_t>(maximum), 0, 0});
        return ++me.progresses == me.stop_progress ? 517 : 0;
    }
};

using Iterate = RK_Long(RK_EffectData*, RK_Long, RK_Long, RK_LayerDef*, const GEO_Rect*, void*, RK_PixelFunc*,
                        RK_LayerDef*);
using IterateOrigin = RK_Long(RK_EffectData*, RK_Long, RK_Long, RK_LayerDef*, const GEO_Rect*, const Point*,
                              void*, RK_PixelFunc*, RK_LayerDef*);

// The calls up to the one that stops the pass, and what the pass returns then.
RK_Long cut(std::vector<Visit>& visits, int32_t final, int64_t stop_pixel, int64_t stop_progress) {
    int64_t pixels = 0, progresses = 0;
    for (size_t i = 0; i < visits.size(); ++i) {
        Visit& v = visits[i];
        const bool is_progress = v.in == Visit::Progress;
        if (is_progress) v.y = final;
        const bool stops = is_progress ? ++progresses == stop_progress : ++pixels == stop_pixel;
        if (!stops) continue;
        for (size_t k = i + 1; k < visits.size();) visits.pop_back();
        return is_progress ? 517 : 41;
    }
    return 0;
}

template <class P>
void compareWalks(int slot) {
    test::Random r(sizeof(P) + static_cast<uint32_t>(slot));
    const int count = test::amount(3000);
    for (int i = 0; i < count; ++i) {
        test::World<P> src{r, 1 + int(r.below(12)), 1 + int(r.below(12))};
        test::World<P> dst{r, 1 + int(r.below(12)), 1 + int(r.below(12))};
        const bool has_src = r.below(4) != 0, has_rect = r.below(4) != 0, has_origin = r.below(4) != 0;
        const GEO_Rect rect = test::randomRect(r, dst.record.width, dst.record.height);
        const int16_t origin_v = test::about(r, dst.record.height),
                      origin_h = test::about(r, dst.record.width);
        const Point origin{origin_v, origin_h};
        const auto base = static_cast<int32_t>(r.below(8) == 0 ? 0x7FFFFFFEu : r.below(100));
        const int32_t final = r.below(4) == 0 ? 0 : 100;

        Recorder got{};
        got.src = has_src ? &src.record : nullptr;
        got.dst = &dst.record;
        got.pixel_size = int{sizeof(P)};
        got.stop_pixel = r.below(8) == 0 ? 1 + r.below(30) : 0;
        got.stop_progress = r.below(8) == 0 ? 1 + r.below(5) : 0;
        got.zero_was_zero = true;
        RK_EffectData effect{};
        effect.progress_func = Recorder::progress;
        effect.effect_ref = &got;

        const plain::Size src_size{src.record.width, src.record.height};
        const plain::Size dst_size{dst.record.width, dst.record.height};
        const plain::Size* from = has_src ? &src_size : nullptr;
        const GEO_Rect* area = has_rect ? &rect : nullptr;
        const Point* at = has_origin ? &origin : nullptr;
        RK_LayerDef* const source = has_src ? &src.record : nullptr;
        std::vector<Visit> expected;
        RK_Long error;
        void* const body = RKp_G_OverFuncs[slot];
        ASSERT_NE(body, nullptr);
        if (slot == 42) {
            expected = plain::iterate(base, final, from, area, dst_size);
            error = reinterpret_cast<Iterate*>(body)(&effect, base, final, source, area, &got,
                                                     Recorder::pixel, &dst.record);
        } else {
            expected = plain::iterateOrigin(base, final, from, area, at, dst_size, slot == 43);
            error = reinterpret_cast<IterateOrigin*>(body)(&effect, base, final, source, area, at, &got,
                                                           Recorder::pixel, &dst.record);
        }
        const RK_Long expected_error = cut(expected, final, got.stop_pixel, got.stop_progress);
        const bool same = expected == got.visits && error == expected_error && got.zero_was_zero;
        ASSERT_TRUE(same)
            << "slot " << slot << ", depth " << test::kDepth<P> << ", source "
            << (has_src ? std::to_string(src_size.width) + " by " + std::to_string(src_size.height) : "none")
            << ", destination " << dst_size.width << " by " << dst_size.height << ", "
            << (has_rect ? test::show(rect) : "whole") << ", origin "
            << (has_origin ? std::to_string(origin.h) + ", " + std::to_string(origin.v) : "null")
            << ", progress from " << base << " of " << final << "\n  calls " << got.visits.size()
            << ", expected " << expected.size() << "; result " << error << ", expected " << expected_error
            << "; outside pixels zero: " << got.zero_was_zero;
    }
}

class IterateAgainstPlain : public testing::TestWithParam<int> {};
TEST_P(IterateAgainstPlain, CallsTheSameInTheSameOrder) {
    compareWalks<RK_Pixel8>(GetParam());
    compareWalks<RK_Pixel16>(GetParam());
    compareWalks<RK_PixelFloat>(GetParam());
}
INSTANTIATE_TEST_SUITE_P(Slots, IterateAgainstPlain, testing::Values(42, 43, 51));

}  // namespace
