#include <algorithm>
#include <utility>

#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/passes/RK_CopyBits.h"
#include "RK/indep/passes/RKp_CopyArea.h"
#include "RK/indep/sample/RK_AreaSample.h"
#include "RK/indep/sample/RK_SampleRow.h"
#include "RK/indep/sample/RK_SubpixelSample.h"
#include "RK/indep/world/RKp_ForDepth.h"

namespace {

// The sampler of a depth for a copy that shrinks an axis, or does not.
template <class P>
RK_Sampler<P>* samplerFor(bool premultiplied, bool shrinks);
template <>
RK_Sampler<RK_Pixel8>* samplerFor<RK_Pixel8>(bool premultiplied, bool shrinks) {
    if (premultiplied)
        return shrinks ? RKp_Slot<RKp_kSlot_AreaSample_Premul>() : RKp_Slot<RKp_kSlot_SubpixelSample_Premul>();
    return shrinks ? RKp_Slot<RKp_kSlot_AreaSample>() : RKp_Slot<RKp_kSlot_SubpixelSample_Straight>();
}
template <>
RK_Sampler<RK_Pixel16>* samplerFor<RK_Pixel16>(bool, bool shrinks) {
    return shrinks ? RKp_Slot<RKp_kSlot_AreaSample16>() : RKp_Slot<RKp_kSlot_SubpixelSample_Straight16>();
}
template <>
RK_Sampler<RK_PixelFloat>* samplerFor<RK_PixelFloat>(bool, bool shrinks) {
    return shrinks ? &RK_AreaSampleFloat : &RK_SubpixelCPlusPlusFloat;
}

// 16.16 positions and steps keep the low 32 bits of exact values.
int32_t low32(int64_t v) { return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(v))); }

// One axis: the step in source pixels per destination pixel, and the first destination pixel's position, which is
// centred. A destination that begins outside is cut and the position moves along.
struct Axis {
    Axis(int32_t src_low, int64_t src_size, int32_t& dst_low, int64_t dst_size)
        : step(low32((src_size << 16) / dst_size)) {
        int64_t first = int64_t{src_low} * 65536 + step / 2 - 32768;
        if (dst_low < 0) {
            first += -int64_t{dst_low} * step;
            dst_low = 0;
        }
        start = low32(first);
    }
    int32_t step, start;
};

// Do the rows of the two have bytes in common?
bool overlap(const RK_LayerDef& a, const RK_LayerDef& b) {
    const auto ends = [](const RK_LayerDef& world) {
        const auto pitch = static_cast<uintptr_t>(static_cast<ptrdiff_t>(world.rowbytes));
        const auto first = reinterpret_cast<uintptr_t>(world.data);
        const auto last = first + (static_cast<uintptr_t>(world.height) - 1) * pitch;
        const auto row = world.rowbytes < 0 ? 0 - pitch : pitch;
        return std::make_pair(std::min(first, last), std::max(first, last) + row);
    };
    const auto [a_low, a_high] = ends(a);
    const auto [b_low, b_high] = ends(b);
    return a_low < b_high && b_low < a_high;
}

template <class P>
RK_Long copySampled(RK_ProgressInfo* progress, bool premultiplied, const RK_LayerDef& src, const RKp_CopyRect& s,
                    const RK_LayerDef& dst, RKp_CopyRect d) {
    const int64_t sw = s.width(), sh = s.height(), dw = d.width(), dh = d.height();
    const Axis x_axis(s.rect.left, sw, d.rect.left, dw), y_axis(s.rect.top, sh, d.rect.top, dh);
    d.rect.right = std::min(d.rect.right, dst.width);
    d.rect.bottom = std::min(d.rect.bottom, dst.height);

    const bool shrinks = x_axis.step > RK_kOnePixel || y_axis.step > RK_kOnePixel;
    RK_Sampler<P>* const sampler = samplerFor<P>(premultiplied, shrinks);
    RK_SampPB pb{};
    pb.src = &src;
    pb.x_radius = x_axis.step / 2;
    pb.y_radius = y_axis.step / 2;
    // Steps that have lost their high bits may be negative.
    pb.area = static_cast<int32_t>(std::clamp(static_cast<double>(x_axis.step) * static_cast<double>(y_axis.step) *
                                                  1.52587890625e-5,
                                              -2147483648.0, 2147483647.0));
    // A copy within one world may read what it has drawn, so there pixel follows pixel.
    RK_RowSampler<P>* const sample = overlap(src, dst) ? RKp_RowCalled<P> : RKp_GetRowSampler(sampler);
    RK_SampleWalk line = {x_axis.start, y_axis.start, x_axis.step, 0};
    const RK_SampleWalk down = {0, y_axis.start, 0, y_axis.step};
    for (int32_t row = d.rect.top; row < d.rect.bottom; ++row) {
        if (progress != nullptr && progress->abort_func != nullptr && ((row - d.rect.top) & 63) == 0) {
            const RK_Long stop = progress->abort_func(progress->refcon);
            if (stop != RK_kOK) return stop;
        }
        P* out = reinterpret_cast<P*>(RKp_CopyRowOut(dst, row));
        line.y = down.from(row - d.rect.top).y;
        sample(sampler, &pb, line, int64_t{d.rect.right} - d.rect.left, out + d.rect.left);
    }
    return RK_kOK;
}

template <class P>
RK_Long copyHQ(RK_ProgressInfo* progress, bool premultiplied, const RK_LayerDef& src, RKp_CopyRect s,
               const RK_LayerDef& dst, RKp_CopyRect d) {
    if (s.width() != d.width() || s.height() != d.height())
        return copySampled<P>(progress, premultiplied, src, s, dst, d);
    if (s.whole && d.whole) {
        RKp_MoveWorld(src, dst, sizeof(P));
    } else if (RKp_CutCopyRects(src, dst, &s.rect, &d.rect)) {
        RKp_MoveRows(src, s.rect, dst, d.rect, sizeof(P));
    }
    return RK_kOK;
}

RK_Long run(uint32_t site, bool premultiplied, RK_ProgressInfo* progress, const RK_LayerDef* src, RK_LayerDef* dst,
            const GEO_Rect* src_rect, const GEO_Rect* dst_rect) {
    if (src == nullptr || dst == nullptr || src->data == nullptr || dst->data == nullptr)
        return RKp_ReportBadParam(site);
    const int32_t depth = RKp_WorldDepth(src);
    // Kept: the premultiplied body has the straight body's text.
    if (depth != RKp_WorldDepth(dst))
        return RKp_VERIFICATION("RK_CopyBits_HQ_Straight_Static requires src and dst worlds to have same bit depth");
    return RKp_ForDepth(depth, RKp_kBadDepthText, [&](auto tag) -> RK_Long {
        RKp_CopyRect s, d;
        if (!RKp_PrepareCopyRect(src_rect, *src, &s) || !RKp_PrepareCopyRect(dst_rect, *dst, &d)) return RK_kOK;
        return copyHQ<typename decltype(tag)::Pixel>(progress, premultiplied, *src, s, *dst, d);
    });
}

}  // namespace

RK_Long RK_CopyBits_HQ_Straight_Static(RK_ProgressInfo* progress, const RK_LayerDef* src, RK_LayerDef* dst,
                                       const GEO_Rect* src_rect, const GEO_Rect* dst_rect) {
    return run(RKp_kSiteCopyStraight, false, progress, src, dst, src_rect, dst_rect);
}
RK_Long RK_CopyBits_HQ_Premul_Static(RK_ProgressInfo* progress, const RK_LayerDef* src, RK_LayerDef* dst,
                                     const GEO_Rect* src_rect, const GEO_Rect* dst_rect) {
    return run(RKp_kSiteCopyPremul, true, progress, src, dst, src_rect, dst_rect);
}
RK_Long RK_CopyBits_HQ_Straight(RK_ProgressInfo* progress, const RK_LayerDef* src, RK_LayerDef* dst,
                                const GEO_Rect* src_rect, const GEO_Rect* dst_rect) {
    return RKp_Slot<RKp_kSlot_CopyBits_HQ_Straight>()(progress, src, dst, src_rect, dst_rect);
}
RK_Long RK_CopyBits_HQ_Premul(RK_ProgressInfo* progress, const RK_LayerDef* src, RK_LayerDef* dst,
                              const GEO_Rect* src_rect, const GEO_Rect* dst_rect) {
    return RKp_Slot<RKp_kSlot_CopyBits_HQ_Premul>()(progress, src, dst, src_rect, dst_rect);
}
