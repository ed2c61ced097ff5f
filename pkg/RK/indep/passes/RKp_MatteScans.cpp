// Legend: c a colour channel, a the pixel's alpha, W full, H the grey middle.
#include "RK/indep/passes/RKp_MatteScans.h"

#include <type_traits>

#include "RK/indep/frame/RKp_Depth.h"

namespace {

// A matte: how one channel comes to it and leaves it again.
struct Black {
    template <class D, class W>
    static W premultiply(W c, W a) {
        return D::mul(c, a);
    }
    template <class D, class W>
    static W unmultiply(W c, W a) {
        return D::div(a, c);
    }
};
struct White {
    template <class D, class W>
    static W premultiply(W c, W a) {
        return D::inv(D::mul(D::inv(c), a));
    }
    template <class D, class W>
    static W unmultiply(W c, W a) {
        return D::inv(D::div(a, D::inv(c)));
    }
};
// The distance from the middle is scaled, on the side where c lies; a NaN lies below.
struct Grey {
    template <class D, class W>
    static W premultiply(W c, W a) {
        if (c >= D::kGrey) return D::mul(c - D::kGrey, a) + D::kGrey;
        return c + D::mul(D::inv(a), D::kGrey - c);
    }
    template <class D, class W>
    static W unmultiply(W c, W a) {
        if (c >= D::kGrey) {
            const W d = D::div(a, c - D::kGrey);
            return d < D::kGrey ? d + D::kGrey : D::kFull;
        }
        const W d = D::div(a, D::kGrey - c);
        return d < D::kGrey ? D::kGrey - d : 0;
    }
};

// step(0), step(1), ... step(count - 1), eight to a round.
template <class Step>
inline void forEach(RK_Long count, Step step) {
    RK_Long i = 0;
    for (; count - i >= 8; i += 8) {
        step(i), step(i + 1), step(i + 2), step(i + 3);
        step(i + 4), step(i + 5), step(i + 6), step(i + 7);
    }
    for (; i < count; ++i) step(i);
}

template <class P, class Channel>
inline P pixel(typename RKp_Depth<P>::Channel alpha, Channel red, Channel green, Channel blue) {
    using C = typename RKp_Depth<P>::Channel;
    return {alpha, static_cast<C>(red), static_cast<C>(green), static_cast<C>(blue)};
}

template <class Matte, class P>
inline P premultiplied(const P& p) {
    using D = RKp_Depth<P>;
    using W = typename D::Wide;
    const W a = p.alpha;
    return pixel<P>(p.alpha, Matte::template premultiply<D, W>(p.red, a),
                    Matte::template premultiply<D, W>(p.green, a),
                    Matte::template premultiply<D, W>(p.blue, a));
}

template <class Matte, class P>
inline P unmultiplied(const P& p) {
    using D = RKp_Depth<P>;
    using W = typename D::Wide;
    const W a = p.alpha;
    if constexpr (std::is_floating_point_v<W>) {
        if (RKp_IsDenormal(a)) return {a, 1.0f, 1.0f, 1.0f};
    }
    return pixel<P>(p.alpha, Matte::template unmultiply<D, W>(p.red, a),
                    Matte::template unmultiply<D, W>(p.green, a),
                    Matte::template unmultiply<D, W>(p.blue, a));
}

template <class Matte, class P>
RK_Long premultiply(RK_Long count, const P* src, P* dst) {
    if (src == nullptr) src = dst;
    forEach(count, [=](RK_Long i) { dst[i] = premultiplied<Matte>(src[i]); });
    return RK_kOK;
}

template <class Matte, class P>
RK_Long unmultiply(RK_Long count, const P* src, P* dst) {
    using D = RKp_Depth<P>;
    if (src != nullptr && src != dst) {
        forEach(count, [=](RK_Long i) { dst[i] = unmultiplied<Matte>(src[i]); });
        return RK_kOK;
    }
    forEach(count, [=](RK_Long i) {
        const P p = dst[i];
        if (p.alpha == D::kFull) return;
        dst[i] = p.alpha == 0 ? P{} : unmultiplied<Matte>(p);
    });
    return RK_kOK;
}

}  // namespace

// clang-format off
template <class P> RK_Long RKp_Premul_Black(RK_Long count, const P* src, P* dst) { return premultiply<Black>(count, src, dst); }
template <class P> RK_Long RKp_Unmul_Black(RK_Long count, const P* src, P* dst) { return unmultiply<Black>(count, src, dst); }
template <class P> RK_Long RKp_Premul_White(RK_Long count, const P* src, P* dst) { return premultiply<White>(count, src, dst); }
template <class P> RK_Long RKp_Unmul_White(RK_Long count, const P* src, P* dst) { return unmultiply<White>(count, src, dst); }
template <class P> RK_Long RKp_Premul_Grey(RK_Long count, const P* src, P* dst) { return premultiply<Grey>(count, src, dst); }
template <class P> RK_Long RKp_Unmul_Grey(RK_Long count, const P* src, P* dst) { return unmultiply<Grey>(count, src, dst); }
// clang-format on
RKP_MATTE_SCANS(template, RK_Pixel8)
RKP_MATTE_SCANS(template, RK_Pixel16)
RKP_MATTE_SCANS(template, RK_PixelFloat)
