// Showing a world of any depth over a background.
#include <algorithm>
#include <cstring>

#include "RK/indep/frame/RKp_Deferred.h"
#include "RK/indep/frame/RKp_Depth.h"
#include "RK/indep/frame/RKp_HostBlock.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/passes/RK_CopyBits.h"
#include "RK/indep/passes/RK_Iterate.h"
#include "RK/indep/world/RKp_ChannelConvert.h"
#include "RK/indep/world/RK_WorldXT.h"

namespace {

// The source column of each destination column of the rectangle; -1 where there is none.
class Columns {
  public:
    Columns(int32_t count, int64_t first, int64_t step, int32_t limit) : block_(count, RK_kMsg_ImageBuffer) {
        for (int32_t i = 0; i < count; ++i) {
            const int64_t at = first + i * step;
            block_[i] = at >= 0 && at < limit ? static_cast<int32_t>(at) : -1;
        }
    }
    int32_t operator[](int32_t i) const { return block_[i]; }

  private:
    RKp_HostBlock<int32_t> block_;
};

struct Blit {
    const RK_World* src;
    RK_WorldX<RK_Pixel8>* dst;
    GEO_LRect rect;
    GEO_LPoint origin, step;  // of the cut rectangle
    bool checkered, sse2;
    RK_Pixel8 even, odd;
    const Columns* columns;

    const RK_Pixel8& background(int32_t x, int32_t y) const {
        return checkered && (((x >> 3) ^ (y >> 3)) & 1) != 0 ? odd : even;
    }
};

// A channel as the vector conversion rounds it: held to 0..255, to nearest, ties to even.
uint8_t nearest(float x) {
    const float v = x * 255.0f;
    if (!(v > 0.0f)) return 0;
    if (v >= 255.0f) return 255;
    const float pushed = v + 8388608.0f;  // the fraction falls off
    uint32_t bits;
    std::memcpy(&bits, &pushed, sizeof bits);
    return static_cast<uint8_t>(bits & 0xFF);
}
template <class P>
RK_Pixel8 converted(const P& p, bool) {
    return RKp_ConvertPixel<RK_Pixel8>(p);
}
// Kept: with SSE2 float pixels round otherwise, and their alpha is held too.
RK_Pixel8 converted(const RK_PixelFloat& p, bool sse2) {
    if (!sse2) return RKp_ConvertPixel<RK_Pixel8>(p);
    return {nearest(p.alpha), nearest(p.red), nearest(p.green), nearest(p.blue)};
}

// The straight pixel over an opaque background.
template <class P>
RK_Pixel8 shown(const P& p, bool sse2, const RK_Pixel8& under) {
    using D = RKp_Depth<RK_Pixel8>;
    RK_Pixel8 over = converted(p, sse2);
    if (p.alpha == RKp_Depth<P>::kFull) {
        over.alpha = 255;
        return over;
    }
    const auto mix = [a = int32_t{over.alpha}](int32_t d, int32_t s) { return static_cast<uint8_t>(D::lerp(d, s, a)); };
    return {255, mix(under.red, over.red), mix(under.green, over.green), mix(under.blue, over.blue)};
}

// Part i of n takes rows i * (rows / n) up to (i + 1) * (rows / n), the last one the rest too.
template <class P>
RK_Long blitRows(void* refcon, RK_Long, RK_Long i, RK_Long n) {
    const Blit& b = *static_cast<const Blit*>(refcon);
    const RK_WorldX<P> src(&b.src->record, false);
    const RK_Long rows = b.rect.bottom - b.rect.top, slice = rows / n;
    const RK_Long end = i == n - 1 ? rows : (i + 1) * slice;
    for (RK_Long k = i * slice; k < end; ++k) {
        const int32_t y = b.rect.top + static_cast<int32_t>(k);
        const int64_t from = b.origin.y + int64_t{k} * b.step.y;
        const P* in = from >= 0 && from < src.height() ? src.row(static_cast<int32_t>(from)) : nullptr;
        RK_Pixel8* out = b.dst->row(y);
        for (int32_t x = b.rect.left; x < b.rect.right; ++x) {
            const int32_t column = in != nullptr ? (*b.columns)[x - b.rect.left] : -1;
            const RK_Pixel8& under = b.background(x, y);
            out[x] = column >= 0 ? shown(in[column], b.sse2, under) : under;
        }
    }
    return RK_kOK;
}

RK_Long run(Blit& blit) {
    constexpr const char* kBadDepth = "Unknown world bitdepth in SpecialCasePixelBlit";
    RK_GenericFunc* body;
    switch (blit.src->Depth()) {
        case 8: body = &blitRows<RK_Pixel8>; break;
        case 16: body = &blitRows<RK_Pixel16>; break;
        case 32: body = &blitRows<RK_PixelFloat>; break;
        default: return RKp_BAD_DEPTH(kBadDepth);
    }
    // The table must be had or not before anything is shown.
    return RKp_WithReportsDeferred([&] {
        const Columns columns(blit.rect.right - blit.rect.left, blit.origin.x, blit.step.x, blit.src->record.width);
        blit.columns = &columns;
        return RK_IterateGeneric(-1, &blit, body);
    });
}

}  // namespace

RK_Long RK_SpecialCasePixelBlit(const RK_World* src, const GEO_LPoint& origin, bool checkered, const GEO_LPoint& step,
                                const RK_PixelFloat& even, const RK_PixelFloat& odd, const GEO_Rect& rect,
                                RK_WorldX<RK_Pixel8>* dst) {
    if (src == nullptr || dst == nullptr || src->record.data == nullptr || dst->record.data == nullptr || step.x < 1 ||
        step.y < 1)
        return RKp_ReportBadParam(RKp_kSiteCopyDraft);
    Blit blit{};
    blit.src = src;
    blit.dst = dst;
    blit.rect = {std::max<int32_t>(rect.left, 0), std::max<int32_t>(rect.top, 0),
                 std::min<int32_t>(rect.right, dst->width()), std::min<int32_t>(rect.bottom, dst->height())};
    if (blit.rect.left >= blit.rect.right || blit.rect.top >= blit.rect.bottom) return RK_kOK;
    const auto moved = [](int32_t at, int32_t by, int32_t step_by) {
        const int64_t to = at + int64_t{by} * step_by;
        // Beyond 32 bits there is no source.
        return static_cast<int32_t>(std::clamp<int64_t>(to, INT32_MIN, INT32_MAX));
    };
    blit.origin = {moved(origin.x, blit.rect.left - rect.left, step.x), moved(origin.y, blit.rect.top - rect.top, step.y)};
    blit.step = step;
    blit.checkered = checkered;
    blit.sse2 = KIT_G_CPU_DataP->has_sse2 != 0;
    blit.even = RKp_ConvertPixel<RK_Pixel8>(even);
    blit.odd = RKp_ConvertPixel<RK_Pixel8>(odd);
    blit.even.alpha = blit.odd.alpha = 255;
    return run(blit);
}
