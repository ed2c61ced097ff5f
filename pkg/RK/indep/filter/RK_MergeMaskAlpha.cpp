#include "RK/indep/filter/RK_MergeMaskAlpha.h"

#include <algorithm>

#include "RK/indep/filter/RKp_UnoPass.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/world/RK_WorldXT.h"

namespace {

// The scan of a pair, or null.
RKp_MaskMergeFunc<uint8_t, RK_Pixel8>* scanOf(uint8_t, RK_Pixel8) {
    return RKp_Slot<RKp_kSlot_MaskMerge8To8>();
}
RKp_MaskMergeFunc<uint8_t, RK_Pixel16>* scanOf(uint8_t, RK_Pixel16) {
    return RKp_Slot<RKp_kSlot_MaskMerge8To16>();
}
RKp_MaskMergeFunc<uint16_t, RK_Pixel16>* scanOf(uint16_t, RK_Pixel16) {
    return RKp_Slot<RKp_kSlot_MaskMerge16To16>();
}
RKp_MaskMergeFunc<uint16_t, RK_PixelFloat>* scanOf(uint16_t, RK_PixelFloat) {
    return RKp_Slot<RKp_kSlot_MaskMerge16ToFloat>();
}
RKp_MaskMergeFunc<uint8_t, RK_PixelFloat>* scanOf(uint8_t, RK_PixelFloat) {
    return RKp_Slot<RKp_kSlot_MaskMerge8ToFloat>();
}
RKp_MaskMergeFunc<uint16_t, RK_Pixel8>* scanOf(uint16_t, RK_Pixel8) { return nullptr; }

struct Area {
    int32_t left, top, right, bottom;
    void cut(const GEO_Rect* rect) {
        if (rect == nullptr) return;
        left = std::max<int32_t>(left, rect->left);
        top = std::max<int32_t>(top, rect->top);
        right = std::min<int32_t>(right, rect->right);
        bottom = std::min<int32_t>(bottom, rect->bottom);
    }
    bool empty() const { return right <= left || bottom <= top; }
};

template <class M, class P>
struct Merge {
    const RK_ProgressInfo* progress;
    RKp_MaskMergeFunc<M, P>* scan;
    const RK_UnoBuffer& mask;
    int32_t x, y;
    Area area;
    RK_WorldX<P>& world;

    // The start of mask row m as a row that begins at the area's left edge: columns outside the mask are not
    // read.
    const M* maskRow(int32_t m) const {
        const int64_t shift = (int64_t{area.left} - x) * static_cast<int64_t>(sizeof(M));
        return reinterpret_cast<const M*>(reinterpret_cast<uintptr_t>(mask.Row<M>(m)) +
                                          static_cast<uintptr_t>(shift));
    }
    void row(int32_t v) const {
        const int64_t width = int64_t{area.right} - area.left, m = int64_t{v} - y;
        P* pixels = world.row(v) + area.left;
        RK_Long first = static_cast<RK_Long>(width), last = first;
        const M* samples = nullptr;
        if (m >= 0 && m < mask.height) {
            const int64_t start = std::clamp<int64_t>(int64_t{x} - area.left, 0, width);
            first = static_cast<RK_Long>(start);
            last = static_cast<RK_Long>(
                std::clamp<int64_t>(int64_t{x} + std::max(mask.width, 0) - area.left, start, width));
            samples = maskRow(static_cast<int32_t>(m));
        }
        scan(nullptr, first, last, samples, pixels);
        const RK_Long rest = static_cast<RK_Long>(width) - last;
        if (rest > 0) scan(nullptr, rest, rest, nullptr, pixels + last);
    }
    static RK_Long one(void* refcon, RK_Long thread, RK_Long i, RK_Long) {
        return RKp_AtBorder([&] {
            const Merge& all = *static_cast<const Merge*>(refcon);
            const RK_ProgressInfo* info = all.progress;
            if (thread == 0 && info != nullptr && info->abort_func != nullptr)
                RKp_ThrowIf(info->abort_func(info->refcon));
            all.row(all.area.top + static_cast<int32_t>(i));
        });
    }
    RK_Long run() { return RKp_Slot<RKp_kSlot_IterateGeneric>()(area.bottom - area.top, this, one); }
};

}  // namespace

void RK_MergeMaskAlpha(RK_ProgressInfo* progress, int16_t x, int16_t y, const GEO_Rect* area,
                       const RK_UnoBuffer* mask, const GEO_Rect* mask_area, RK_World* world) {
    if (world == nullptr) RKp_Throw(RKp_ReportBadParam(RKp_kSiteUno));
    if (!RKp_CheckUno(mask) || world->record.data == nullptr) return;
    Area part = {0, 0, world->record.width, world->record.height};
    part.cut(mask_area);
    part.cut(area);
    if (part.empty()) return;

    bool merged = false;
    RK_WorldKinds::WithKind(world->Depth(), [&](auto* kind) {
        using Kind = std::remove_pointer_t<decltype(kind)>;
        const auto with = [&](auto sample) {
            auto* scan = scanOf(sample, typename Kind::Pixel{});
            if (scan == nullptr) return;
            merged = true;
            Merge<decltype(sample), typename Kind::Pixel> merge = {
                progress, scan, *mask, x, y, part, static_cast<Kind&>(*world)};
            RKp_ThrowIf(merge.run());
        };
        if (mask->depth == 8) with(uint8_t{});
        if (mask->depth == 16) with(uint16_t{});
    });
    if (!merged) RKp_Throw(RKp_VERIFICATION("Unexpected bitdepth in RKp_MergeMaskAlphaScanIter()"));
}
