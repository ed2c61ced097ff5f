// The pixel operations of a world object. They throw; the plain passes are their counterparts that return.
#include <algorithm>
#include <functional>
#include <type_traits>

#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_Depth.h"
#include "RK/indep/frame/RKp_Progress.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/passes/RK_Premul.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "RK/indep/world/RKp_ChannelConvert.h"
#include "RK/indep/world/RKp_Dither.h"
#include "RK/indep/world/RKp_FillRow.h"

namespace {

struct Area {
    int32_t left, top, right, bottom;
    bool empty() const { return right <= left || bottom <= top; }
};

// The part of the rectangle, or for null of the world, that has pixels.
Area Clipped(const RK_LayerDef& world, const GEO_Rect* rect) {
    if (world.data == nullptr) return {0, 0, 0, 0};
    if (rect == nullptr) return {0, 0, world.width, world.height};
    return {std::max<int32_t>(rect->left, 0), std::max<int32_t>(rect->top, 0),
            std::min<int32_t>(rect->right, world.width), std::min<int32_t>(rect->bottom, world.height)};
}

// Calls work with the first pixel of each row and the rows' length; not at all for an empty area.
template <class P, class Work>
void ForRows(RK_WorldX<P>& world, const Area& area, Work&& work) {
    if (area.empty()) return;
    for (int32_t y = area.top; y < area.bottom; ++y) work(world.row(y) + area.left, area.right - area.left);
}

template <class P>
void Zero(RK_WorldX<P>& world, const Area& area) {
    ForRows(world, area, [](P* row, int32_t count) {
        std::memset(static_cast<void*>(row), 0, static_cast<size_t>(count) * sizeof(P));
    });
}

template <class P>
void Store(RK_WorldX<P>& world, const Area& area, P pixel) {
    ForRows(world, area, [pixel](P* row, int32_t count) { RKp_FillRow(row, count, pixel); });
}

template <class P, class Change>
void ChangeAlphas(RK_WorldX<P>& world, Change&& change) {
    ForRows(world, Clipped(world.record, nullptr), [&](P* row, int32_t count) {
        for (int32_t x = 0; x < count; ++x) row[x].alpha = change(row[x].alpha);
    });
}

uint8_t Inverse(uint8_t a) { return static_cast<uint8_t>(~a); }
uint16_t Inverse(uint16_t a) { return static_cast<uint16_t>(32768 - a); }
float Inverse(float a) { return 1.0f - a; }

// Kept: a float world refuses all four moves, silently.
void MovePremul(RK_WorldX<RK_PixelFloat>&, RK_Long) { RKp_Throw(RK_kBadParam); }
template <class P>
void MovePremul(RK_WorldX<P>& world, RK_Long forward) {
    if (world.record.data != nullptr) RKp_ThrowIf(RK_Premul(nullptr, forward, &world.record));
}

void MovePremulColor(RK_WorldX<RK_Pixel8>& world, const RK_Pixel16& colour, RK_Long forward) {
    const RK_Pixel8 colour8 = RKp_ConvertPixel<RK_Pixel8>(colour);
    RKp_ThrowIf(RK_PremulColor(nullptr, &world.record, &colour8, forward, &world.record));
}
void MovePremulColor(RK_WorldX<RK_Pixel16>& world, const RK_Pixel16& colour, RK_Long forward) {
    RKp_ThrowIf(RK_PremulColor16(nullptr, &world.record, &colour, forward, &world.record));
}
void MovePremulColor(RK_WorldX<RK_PixelFloat>&, const RK_Pixel16&, RK_Long) { RKp_Throw(RK_kBadParam); }

// The part of a copied rectangle that lies in the source and lands in the destination, told in the
// destination's coordinates; dx, dy lead from a place in the source to the same in the destination.
struct Landing {
    Landing(const RK_LayerDef& src, const GEO_Rect& src_rect, const RK_LayerDef& dst, int16_t dest_h,
            int16_t dest_v)
        : dx(dest_h - src_rect.left), dy(dest_v - src_rect.top) {
        const Area whole = Clipped(dst, nullptr), there = Clipped(src, &src_rect);
        if (there.empty()) return;
        here = {std::max(there.left + dx, whole.left), std::max(there.top + dy, whole.top),
                std::min(there.right + dx, whole.right), std::min(there.bottom + dy, whole.bottom)};
    }
    int32_t dx, dy;
    Area here = {0, 0, 0, 0};
};

template <class To, class From>
void ConvertRow(const From* in, int32_t count, bool, To* out) {
    for (int32_t x = 0; x < count; ++x) out[x] = RKp_ConvertPixel<To>(in[x]);
}
void ConvertRow(const RK_Pixel16* in, int32_t count, bool dither, RK_Pixel8* out) {
    RKp_Row16To8(in, count, dither, out);
}
void ConvertRow(const RK_PixelFloat* in, int32_t count, bool dither, RK_Pixel8* out) {
    RKp_RowFloatTo8(in, count, dither, out);
}
template <class P>
void ConvertRow(const P* in, int32_t count, bool, P* out) {
    std::memmove(static_cast<void*>(out), in, static_cast<size_t>(count) * sizeof(P));
}

template <class To, class From>
void CopyRows(const RK_WorldX<From>& from, const Landing& landing, bool dither,
              const RK_ProgressInfo* progress, RK_WorldX<To>& to) {
    const Area& here = landing.here;
    if (here.empty()) return;
    const auto source = [&](int32_t y) { return from.row(y - landing.dy) + (here.left - landing.dx); };
    const auto target = [&](int32_t y) { return to.row(y) + here.left; };
    // The row that is written first is never one that is still to be read: a world can be copied within
    // itself. Between depths the rows go down, so that the noise falls on them in their order.
    const bool to_higher_address = std::less<const void*>()(source(here.top), target(here.top));
    const bool from_below = std::is_same_v<To, From> && to_higher_address == (to.record.rowbytes > 0);
    const int32_t rows = here.bottom - here.top;
    for (int32_t k = 0; k < rows; ++k) {
        RKp_CheckIn(progress, k, rows);
        const int32_t y = from_below ? here.bottom - 1 - k : here.top + k;
        ConvertRow(source(y), here.right - here.left, dither, target(y));
    }
}

}  // namespace

template <class P>
void RK_WorldX<P>::Clear(const GEO_Rect* rect) {
    const Area area = Clipped(record, rect);
    if (area.empty()) return;
    const int64_t pixel = sizeof(P);
    // Kept: the span is as long as the whole world wherever it begins.
    if ((area.right - area.left) * pixel == record.rowbytes)
        std::memset(static_cast<void*>(row(area.top)), 0,
                    static_cast<size_t>(record.width * pixel * record.height));
    else
        Zero(*this, area);
}

template <class P>
void RK_WorldX<P>::ClearExceptRect(const GEO_Rect& rect) {
    const Area whole = Clipped(record, nullptr);
    const Area kept = Clipped(record, &rect);
    if (kept.empty()) return Zero(*this, whole);
    Zero(*this, {0, 0, whole.right, kept.top});
    Zero(*this, {0, kept.top, kept.left, kept.bottom});
    Zero(*this, {kept.right, kept.top, whole.right, kept.bottom});
    Zero(*this, {0, kept.bottom, whole.right, whole.bottom});
}

template <class P>
void RK_WorldX<P>::Fill(const RK_PixelFloat& colour, const GEO_Rect* rect) {
    Store(*this, Clipped(record, rect), RKp_ConvertPixel<P>(colour));
}

template <class P>
void RK_WorldX<P>::Fill(const RK_Pixel16& colour, const GEO_Rect* rect) {
    Store(*this, Clipped(record, rect), RKp_ConvertPixel<P>(colour));
}

template <class P>
void RK_WorldX<P>::FillAlpha() {
    using Channel = typename RKp_Depth<P>::Channel;
    ChangeAlphas(*this, [](Channel) { return static_cast<Channel>(RKp_Depth<P>::kFull); });
}

template <class P>
void RK_WorldX<P>::InvertAlpha() {
    using Channel = typename RKp_Depth<P>::Channel;
    ChangeAlphas(*this, [](Channel a) { return Inverse(a); });
}

template <class P>
void RK_WorldX<P>::Premultiply() {
    MovePremul(*this, 1);
}

template <class P>
void RK_WorldX<P>::Unmultiply() {
    MovePremul(*this, 0);
}

template <class P>
void RK_WorldX<P>::PremulColor(const RK_Pixel16& colour) {
    MovePremulColor(*this, colour, 1);
}

template <class P>
void RK_WorldX<P>::UnmulColor(const RK_Pixel16& colour) {
    MovePremulColor(*this, colour, 0);
}

template <class P>
void RK_WorldX<P>::CopyRect(const RK_World* src, const GEO_Rect& src_rect, int16_t dest_h, int16_t dest_v) {
    if (src == nullptr) RKp_Throw(RKp_VERIFICATION("Bad parameter to RK_World::CopyRect()"));
    if (src->Depth() != kDepth)
        RKp_Throw(RKp_VERIFICATION("Src and dest bitdepths are different in RK_World::CopyRect"));
    const RK_WorldX<P> from(&src->record, false);
    CopyRows(from, Landing(src->record, src_rect, record, dest_h, dest_v), false, nullptr, *this);
}

template <class P>
void RK_WorldX<P>::CopyRectPossiblyDifferentBitdepth(const RK_World* src, const GEO_Rect& src_rect,
                                                     bool dither, int16_t dest_h, int16_t dest_v,
                                                     RK_ProgressInfo* progress) {
    if (src == nullptr)
        RKp_Throw(RKp_VERIFICATION("Bad parameter to RK_World::CopyRectPossiblyDifferentBitdepth()"));
    const Landing landing(src->record, src_rect, record, dest_h, dest_v);
    const bool known = RK_WorldKinds::WithKind(src->Depth(), [&](auto* kind) {
        const std::remove_pointer_t<decltype(kind)> from(&src->record, false);
        CopyRows(from, landing, dither, progress, *this);
    });
    if (known) return;
    KITp_ReportErrString(RK_kLocation | RKp_kSiteWorld, 8,
                         "Unknown bit depth in RK_World::CopyRectPossiblyDifferentBitdepths");
    RKp_Throw(RK_kBadParam);
}

#define RKp_INSTANTIATE_OPERATIONS(P)                                                                     \
    template void RK_WorldX<P>::Clear(const GEO_Rect*);                                                   \
    template void RK_WorldX<P>::ClearExceptRect(const GEO_Rect&);                                         \
    template void RK_WorldX<P>::Fill(const RK_PixelFloat&, const GEO_Rect*);                              \
    template void RK_WorldX<P>::Fill(const RK_Pixel16&, const GEO_Rect*);                                 \
    template void RK_WorldX<P>::FillAlpha();                                                              \
    template void RK_WorldX<P>::InvertAlpha();                                                            \
    template void RK_WorldX<P>::Premultiply();                                                            \
    template void RK_WorldX<P>::Unmultiply();                                                             \
    template void RK_WorldX<P>::PremulColor(const RK_Pixel16&);                                           \
    template void RK_WorldX<P>::UnmulColor(const RK_Pixel16&);                                            \
    template void RK_WorldX<P>::CopyRect(const RK_World*, const GEO_Rect&, int16_t, int16_t);             \
    template void RK_WorldX<P>::CopyRectPossiblyDifferentBitdepth(const RK_World*, const GEO_Rect&, bool, \
                                                                  int16_t, int16_t, RK_ProgressInfo*)

RKp_INSTANTIATE_OPERATIONS(RK_Pixel8);
RKp_INSTANTIATE_OPERATIONS(RK_Pixel16);
RKp_INSTANTIATE_OPERATIONS(RK_PixelFloat);
