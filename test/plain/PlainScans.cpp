#include "test/plain/PlainScans.h"

#include <algorithm>
#include <type_traits>

namespace plain {
template <class P>
P premultiply(Matte matte, const P& p) {
    using D = typename DepthOf<P>::D;
    Wide<D> w = load<D>(p);
    w.r = premultiplyChannel<D>(matte, w.r, w.a);
    w.g = premultiplyChannel<D>(matte, w.g, w.a);
    w.b = premultiplyChannel<D>(matte, w.b, w.a);
    return store<D>(w);
}

template <class P>
P unmultiplyCopy(Matte matte, const P& p) {
    using D = typename DepthOf<P>::D;
    Wide<D> w = load<D>(p);
    if constexpr (D::kReal) {
        if (w.a != 0.0f && D::zeroOrDenormal(w.a)) return {p.alpha, 1.0f, 1.0f, 1.0f};
    }
    w.r = unmultiplyChannel<D>(matte, w.r, w.a);
    w.g = unmultiplyChannel<D>(matte, w.g, w.a);
    w.b = unmultiplyChannel<D>(matte, w.b, w.a);
    return store<D>(w);
}

template <class P>
P unmultiplyInPlace(Matte matte, const P& p) {
    using D = typename DepthOf<P>::D;
    if (p.alpha == 0) return P{};
    if (p.alpha == D::W) return p;
    return unmultiplyCopy(matte, p);
}

template <class P>
void scan(Matte matte, bool forward, int count, const P* src, P* dst) {
    const bool in_place = src == nullptr || src == dst;
    for (int i = 0; i < count; ++i) {
        if (forward)
            dst[i] = premultiply(matte, in_place ? dst[i] : src[i]);
        else if (in_place)
            dst[i] = unmultiplyInPlace(matte, dst[i]);
        else
            dst[i] = unmultiplyCopy(matte, src[i]);
    }
}

template <class P>
void alphaMerge(int count, const P* src, decltype(P::red) opacity, const P* mask, P* dst) {
    using D = typename DepthOf<P>::D;
    if (opacity == 0) return;
    for (int i = 0; i < count; ++i) {
        typename D::N s = scaled<D>(src[i].alpha, opacity);
        if (mask != nullptr) s = D::mul(mask[i].alpha, s);
        dst[i].alpha = static_cast<typename D::Channel>(unite<D>(s, dst[i].alpha));
    }
}

// ---- Matte colours --------------------------------------------------------------------------------------

namespace {

template <class D>
typename D::N premulColourChannel(typename D::N c, typename D::N k, typename D::N a) {
    return D::keep(k + D::signedMul(c - k, a));
}
template <class D>
typename D::N unmulColourChannel(typename D::N c, typename D::N k, typename D::N a) {
    const typename D::N m = D::mul(k, D::inv(a));
    if constexpr (D::kReal) return D::div(a, c - m);
    return D::div(a, c > m ? c - m : 0);
}

}  // namespace

template <class P>
P premulColour(const P& p, const P& k) {
    using D = typename DepthOf<P>::D;
    if (p.alpha == D::W) return p;
    Wide<D> w = load<D>(p);
    w.r = premulColourChannel<D>(w.r, k.red, w.a);
    w.g = premulColourChannel<D>(w.g, k.green, w.a);
    w.b = premulColourChannel<D>(w.b, k.blue, w.a);
    return store<D>(w);
}

template <class P>
P unmulColour(const P& p, const P& k) {
    using D = typename DepthOf<P>::D;
    if (p.alpha == 0 || p.alpha == D::W) return p;
    Wide<D> w = load<D>(p);
    w.r = unmulColourChannel<D>(w.r, k.red, w.a);
    w.g = unmulColourChannel<D>(w.g, k.green, w.a);
    w.b = unmulColourChannel<D>(w.b, k.blue, w.a);
    return store<D>(w);
}

template <class Q, class P>
Q matteColour(const P* colour) {
    Q k{};
    if (colour == nullptr) return k;
    convert(*colour, k);
    if constexpr (std::is_same_v<Q, RK_PixelFloat> && std::is_same_v<P, RK_Pixel8>) {
        k.red = static_cast<float>(colour->red) * 0.003921569f;
        k.green = static_cast<float>(colour->green) * 0.003921569f;
        k.blue = static_cast<float>(colour->blue) * 0.003921569f;
    }
    return k;
}

Area premulColourArea(const GEO_Rect* rect, int64_t src_width, int64_t src_height, int64_t dst_width,
                      int64_t dst_height) {
    Area a{0, 0, dst_width, dst_height};
    if (rect != nullptr) a = {rect->left, rect->top, rect->right, rect->bottom};
    a.top = std::max<int64_t>(a.top, 0);
    a.bottom = std::min({a.bottom, src_height, dst_height});
    a.right = std::min({a.right, src_width, dst_width});
    if (a.left < 0 || a.left >= std::min(src_width, dst_width)) a.right = a.left;
    return a;
}

// ---- Rows of 8 bits -------------------------------------------------------------------------------------

void blackMatteBGRA(int count, uint8_t* row) {
    for (int i = 0; i < count; ++i, row += 4) {
        const uint8_t a = row[3];
        if (a == 0) row[0] = row[1] = row[2] = row[3] = 0;
        if (a == 0 || a == 255) continue;
        for (int c = 0; c < 3; ++c) row[c] = static_cast<uint8_t>(Int8::mul(row[c], a));
    }
}

void deBlackMatteBGRA(int count, uint8_t* row) {
    for (int i = 0; i < count; ++i, row += 4) {
        const uint8_t a = row[3];
        if (a == 0) row[0] = row[1] = row[2] = row[3] = 0;
        if (a == 0 || a == 255) continue;
        for (int c = 0; c < 3; ++c) row[c] = static_cast<uint8_t>(Int8::div(a, row[c]));
    }
}

RK_Pixel8 blackToColour(const RK_Pixel8& p, const RK_Pixel8& colour, bool forward) {
    if (p.alpha == 255) return p;
    const int64_t sign = forward ? 1 : -1;
    Wide<Int8> w = load<Int8>(p);
    w.r += sign * Int8::mul(colour.red, 255 - p.alpha);
    w.g += sign * Int8::mul(colour.green, 255 - p.alpha);
    w.b += sign * Int8::mul(colour.blue, 255 - p.alpha);
    return store<Int8>(w);
}

#define EACH_DEPTH(P)                                                        \
    template P premultiply(Matte, const P&);                                 \
    template P unmultiplyCopy(Matte, const P&);                              \
    template P unmultiplyInPlace(Matte, const P&);                           \
    template void scan(Matte, bool, int, const P*, P*);                      \
    template void alphaMerge(int, const P*, decltype(P::red), const P*, P*); \
    template P premulColour(const P&, const P&);                             \
    template P unmulColour(const P&, const P&);                              \
    template RK_Pixel8 matteColour(const P*);                                \
    template RK_Pixel16 matteColour(const P*);                               \
    template RK_PixelFloat matteColour(const P*);
EACH_DEPTH(RK_Pixel8)
EACH_DEPTH(RK_Pixel16)
EACH_DEPTH(RK_PixelFloat)
#undef EACH_DEPTH

}  // namespace plain
