#include "test/plain/PlainComposite.h"

#include <algorithm>
#include <vector>

#include "test/plain/PlainModes.h"

namespace plain {
namespace {

struct Box {
    int64_t left, top, right, bottom;
    bool empty() const { return left >= right || top >= bottom; }
};
Box intersect(const Box& a, const Box& b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}
// The whole of a world; one without pixels counts as nothing.
Box whole(const RK_LayerDef& w) {
    if (w.data == nullptr) return {0, 0, 0, 0};
    return {0, 0, w.width, w.height};
}
Box box(const GEO_Rect& r) { return {r.left, r.top, r.right, r.bottom}; }

// What will be composited, in destination coordinates; dx, dy lead there from source coordinates.
struct Placed {
    Box c;
    int64_t dx, dy;
};
Placed place(const GEO_Rect* src_rect, const RK_LayerDef& src, int64_t dst_x, int64_t dst_y,
             const RK_LayerDef& dst) {
    const Box asked = src_rect != nullptr ? box(*src_rect) : whole(src);
    const int64_t dx = dst_x - asked.left, dy = dst_y - asked.top;
    Box b = intersect(asked, whole(src));
    if (b.empty()) return {{0, 0, 0, 0}, dx, dy};
    b = {b.left + dx, b.top + dy, b.right + dx, b.bottom + dy};
    return {intersect(b, whole(dst)), dx, dy};
}

// The matte's alpha at destination (x, y). r, k: row and column of the mask's own.
template <class D>
typename D::N matteAlpha(const RK_Mask& mask, int64_t x, int64_t y) {
    using N = typename D::N;
    const int64_t r = y - mask.mask_y, k = x - mask.mask_x;
    const Box inside = whole(mask.world);
    // Outside its rows a mask shows everything, plain luma too; beside its columns plain luma shows nothing.
    if (r < 0 || r >= inside.bottom) return D::W;
    if (k < 0 || k >= inside.right) return mask.mask_kind == RK_kMaskLuma ? N(0) : D::W;
    const Wide<D> m = load<D>(at<typename D::Pixel>(mask.world, k, r));
    switch (mask.mask_kind) {
        case RK_kMaskAlpha:
            return m.a;
        case RK_kMaskInvertedAlpha:
            return D::inv(m.a);
        case RK_kMaskLuma:
            return D::mul(m.a, luma(m));
        default:
            return D::inv(D::mul(m.a, luma(m)));
    }
}

template <class P>
RK_BlendingMode<P> atDepth(const RK_CompositeModePlus& mode) {
    using D = typename DepthOf<P>::D;
    RK_BlendingMode<P> m{};
    m.xfer = mode.xfer;
    m.rand_seed = mode.rand_seed;
    m.rgb_only = mode.rgb_only != 0;
    if constexpr (D::kReal)
        m.opacity = mode.opacity;
    else
        m.opacity = static_cast<typename D::Channel>(alphaToInt(mode.opacity, static_cast<float>(D::W)));
    return m;
}

}  // namespace

template <class P>
void clearAlphaExcept(const GEO_Rect& keep, const RK_LayerDef& world) {
    for (int64_t y = 0; y < world.height; ++y)
        for (int64_t x = 0; x < world.width; ++x) {
            const bool kept = x >= keep.left && x < keep.right && y >= keep.top && y < keep.bottom;
            if (!kept) at<P>(world, x, y).alpha = 0;
        }
}

template <class P>
int transferRect(RK_ProgressInfo* progress, int field, const GEO_Rect* src_rect, const RK_LayerDef& src,
                 const RK_CompositeModePlus& mode, const RK_Mask* mask, int64_t dst_x, int64_t dst_y,
                 const RK_LayerDef& dst) {
    using D = typename DepthOf<P>::D;
    const Placed placed = place(src_rect, src, dst_x, dst_y, dst);
    Box c = placed.c;
    if (c.empty()) return 0;
    if (mask != nullptr && (mask->mask_kind & 1) == 0) {
        const Box m = whole(mask->world);
        c = intersect(c, {mask->mask_x, mask->mask_y, mask->mask_x + m.right, mask->mask_y + m.bottom});
        if (c.empty()) return 0;
    }
    RK_BlendingMode<P> m = atDepth<P>(mode);
    if (m.xfer == RK_Xfer_None || m.xfer < RK_kFirstMode || m.xfer > RK_kLastMode) return 5;
    if (m.xfer == RK_Xfer_StencilAlpha || m.xfer == RK_Xfer_StencilLuma)
        clearAlphaExcept<P>({static_cast<int16_t>(c.top), static_cast<int16_t>(c.left),
                             static_cast<int16_t>(c.bottom), static_cast<int16_t>(c.right)},
                            dst);

    uint32_t seed = static_cast<uint32_t>(mode.rand_seed) + static_cast<uint32_t>(c.left);
    for (int64_t y = c.top; y < c.bottom; ++y) {
        std::vector<P> from, matte, to;
        for (int64_t x = c.left; x < c.right; ++x) {
            from.push_back(at<P>(src, x - placed.dx, y - placed.dy));
            to.push_back(at<P>(dst, x, y));
            if (mask != nullptr) {
                P p{};
                p.alpha = static_cast<typename D::Channel>(matteAlpha<D>(*mask, x, y));
                matte.push_back(p);
            }
        }
        const bool odd = (y & 1) != 0;
        if (!(field == 1 && odd) && !(field == 2 && !odd)) {
            m.rand_seed = static_cast<int32_t>(seed);
            const int error = row<P>(m, mask != nullptr, static_cast<int>(to.size()), from.data(),
                                     mask != nullptr ? matte.data() : nullptr, to.data());
            if (error != 0) return error;
            for (size_t i = 0; i < to.size(); ++i) at<P>(dst, c.left + int64_t(i), y) = to[i];
        }
        if ((y & 127) == 0 && progress != nullptr && progress->progress_func != nullptr) {
            const RK_Long answer =
                progress->progress_func(progress->refcon, RK_Long(y - c.top), RK_Long(c.bottom - c.top));
            if (answer != 0) return static_cast<int>(answer);
        }
        seed += static_cast<uint32_t>(y) * 0x2FF9u;
    }
    return 0;
}

// ---- Composite rect ---------------------------------------------------------------------------------------

namespace {

// o: the opacity.
RK_Pixel8 straightBehind(const RK_Pixel8& s, int64_t o, const RK_Pixel8& d) {
    if (d.alpha == 255) return d;
    if (d.alpha == 0) return {static_cast<uint8_t>(Int8::mul(o, s.alpha)), s.red, s.green, s.blue};
    const int64_t e = int64_t{255 - d.alpha} * o * s.alpha;
    const int64_t g = int64_t{d.alpha} * 65025;
    const int64_t t = g + e;
    const auto mix = [&](int64_t sc, int64_t dc) { return static_cast<uint8_t>((sc * e + dc * g) / t); };
    return {static_cast<uint8_t>(t / 65025), mix(s.red, d.red), mix(s.green, d.green), mix(s.blue, d.blue)};
}

RK_Pixel8 premulBehind(const RK_Pixel8& s, int64_t o, const RK_Pixel8& d) {
    if (d.alpha == 255) return d;
    const auto channel = [&](int64_t sc, int64_t dc) {
        const int64_t q = Int8::mul(o, sc);
        return static_cast<uint8_t>(d.alpha == 0 ? q : dc + Int8::mul(255 - d.alpha, q));
    };
    return {channel(s.alpha, d.alpha), channel(s.red, d.red), channel(s.green, d.green),
            channel(s.blue, d.blue)};
}

}  // namespace

int compositeRect(bool premultiplied, RK_ProgressInfo* progress, const GEO_Rect* src_rect, uint8_t opacity,
                  const RK_LayerDef& src, int64_t dst_x, int64_t dst_y, int field, const RK_LayerDef& dst) {
    if (opacity == 0) return 0;
    const Placed placed = place(src_rect, src, dst_x, dst_y, dst);
    const Box& c = placed.c;
    if (c.empty()) return 0;
    for (int64_t y = c.top; y < c.bottom; ++y) {
        const bool odd = (y & 1) != 0;
        const bool blends = field == 0 || (field == 1 && !odd) || (field == 2 && odd);
        if (!blends) continue;
        if (((c.bottom - y) & 31) == 0 && progress != nullptr && progress->progress_func != nullptr) {
            const RK_Long answer =
                progress->progress_func(progress->refcon, RK_Long(c.bottom - y), RK_Long(c.bottom - c.top));
            if (answer != 0) return static_cast<int>(answer);
        }
        for (int64_t x = c.left; x < c.right; ++x) {
            const RK_Pixel8 s = at<RK_Pixel8>(src, x - placed.dx, y - placed.dy);
            RK_Pixel8& d = at<RK_Pixel8>(dst, x, y);
            d = premultiplied ? premulBehind(s, opacity, d) : straightBehind(s, opacity, d);
        }
    }
    return 0;
}

#define EACH_DEPTH(P)                                                                           \
    template void clearAlphaExcept<P>(const GEO_Rect&, const RK_LayerDef&);                     \
    template int transferRect<P>(RK_ProgressInfo*, int, const GEO_Rect*, const RK_LayerDef&,    \
                                 const RK_CompositeModePlus&, const RK_Mask*, int64_t, int64_t, \
                                 const RK_LayerDef&);
EACH_DEPTH(RK_Pixel8)
EACH_DEPTH(RK_Pixel16)
EACH_DEPTH(RK_PixelFloat)
#undef EACH_DEPTH

}  // namespace plain
