// Shapes: what every mode of a class does around its formulas.
//
// A mode is a struct over the pixel type, derived from its shape, which names it back. To the tables it shows
//   kClass             the class of its plan
//   row<has_matte>     its row function
//   kTestsClear        one pixel alone: a source of alpha 0 changes nothing
//   alone(s, sa, d)    its arithmetic for one pixel alone, sa not 0 where kTestsClear
// and its shape asks it for formulas over one colour channel (or more, where the shape says so).
//
// Legend: s, d colours of source and destination; sa, da their alphas, sa after opacity and matte; a the
// result's alpha; W the full value, H the neutral grey.
#ifndef RKP_SHAPES_H
#define RKP_SHAPES_H

#include "RK/indep/composite/RKp_BlendDepth.h"
#include "RK/indep/composite/RKp_RowFunctions.h"

// The names that a mode's formulas are written in.
#define RKP_MODE_NAMES(P)          \
    using D = RKp_BlendDepth<P>;   \
    using Wide = typename D::Wide; \
    static constexpr Wide W = D::kFull, H = D::kGrey

// d = formula(s, d) in each colour. Three calls: a loop over the channels is far slower.
template <class P, class Formula>
inline void RKp_EachColour(const P& s, P& d, Formula&& formula) {
    using Channel = typename RKp_Depth<P>::Channel;
    d.red = static_cast<Channel>(formula(s.red, d.red));
    d.green = static_cast<Channel>(formula(s.green, d.green));
    d.blue = static_cast<Channel>(formula(s.blue, d.blue));
}
template <class P>
inline void RKp_CopyColour(const P& s, P& d) {
    d.red = s.red;
    d.green = s.green;
    d.blue = s.blue;
}
template <class P>
inline void RKp_SetAlpha(P& d, typename RKp_Depth<P>::Wide a) {
    d.alpha = static_cast<typename RKp_Depth<P>::Channel>(a);
}
// Each colour of d moved towards that of s by sa.
template <class P>
inline void RKp_MixColour(const P& s, typename RKp_Depth<P>::Wide sa, P& d) {
    using Wide = typename RKp_Depth<P>::Wide;
    RKp_EachColour(s, d, [sa](Wide sc, Wide dc) { return RKp_Depth<P>::lerp(dc, sc, sa); });
}
template <class P>
inline typename RKp_Depth<P>::Wide RKp_Luma(const P& p) {
    return RKp_Depth<P>::luma(p.red, p.green, p.blue);
}

// One arithmetic for rows and for single pixels: alone(s, sa, d).
template <class P, class Mode>
struct RKp_SameOnRow : RKp_PixelRow<P, Mode> {
    template <class Wide>
    static void onRow(const P& s, Wide sa, P& d) {
        Mode::alone(s, sa, d);
    }
};

// ---- Wrap: blending against a neutral background --------------------------------------------------------
// onto(d, da) brings a colour against the background by its own alpha; off(v, a) is the way back.

template <class P>
struct RKp_Black {
    RKP_MODE_NAMES(P);
    static constexpr RK_ModeClass kClass = RK_kModeWrapBlack;
    static Wide onto(Wide d, Wide da) { return D::mul(d, da); }
    static Wide off(Wide v, Wide a) { return D::div(a, v); }
};
template <class P>
struct RKp_White {
    RKP_MODE_NAMES(P);
    static constexpr RK_ModeClass kClass = RK_kModeWrapWhite;
    static Wide onto(Wide d, Wide da) { return D::inv(D::mul(D::inv(d), da)); }
    static Wide off(Wide v, Wide a) { return D::inv(D::div(a, D::inv(v))); }
};
template <class P>
struct RKp_Grey {
    RKP_MODE_NAMES(P);
    static constexpr RK_ModeClass kClass = RK_kModeWrapGrey;
    static Wide onto(Wide d, Wide da) {
        return d < H ? d + D::mul(H - d, D::inv(da)) : D::mul(d - H, da) + H;
    }
    static Wide off(Wide v, Wide a) {
        const Wide t = D::div(a, v < H ? H - v : v - H);
        if (v < H) return t < H ? H - t : Wide{0};
        return t < H ? t + H : W;
    }
};

// Formulas: opaque(s, d') for sa of W, mixed(s, d', sa) below, d' against the background. On a row the scans
// of the pipeline go onto the background and off it, and its merge makes the alpha: the row function writes
// colour only.
template <class P, class Background, class Mode>
struct RKp_Wrap : RKp_PixelRow<P, Mode> {
    RKP_MODE_NAMES(P);
    static constexpr RK_ModeClass kClass = Background::kClass;

    static void onRow(const P& s, Wide sa, P& d) {
        if (sa == W)
            RKp_EachColour(s, d, [](Wide sc, Wide dc) { return Mode::opaque(sc, dc); });
        else
            RKp_EachColour(s, d, [sa](Wide sc, Wide dc) { return Mode::mixed(sc, dc, sa); });
    }
    static void alone(const P& s, Wide sa, P& d) {
        const Wide da = d.alpha;
        if (da != W) RKp_EachColour(d, d, [da](Wide dc, Wide) { return Background::onto(dc, da); });
        onRow(s, sa, d);
        const Wide a = sa == W ? W : D::unite(sa, da);
        if (a != W) RKp_EachColour(d, d, [a](Wide v, Wide) { return Background::off(v, a); });
        RKp_SetAlpha(d, a);
    }
};

// ---- Three regions: source alone, destination alone, and both -------------------------------------------
// Formula: both(s, d), the colour where the two overlap. o is the overlap's coverage.
template <class P, class Mode>
struct RKp_ThreeRegions : RKp_SameOnRow<P, Mode> {
    RKP_MODE_NAMES(P);
    static constexpr RK_ModeClass kClass = RK_kModeGuard;

    static void alone(const P& s, Wide sa, P& d) {
        const Wide da = d.alpha;
        if (sa == W) {
            RKp_EachColour(s, d, [da](Wide sc, Wide dc) { return D::lerp(sc, Mode::both(sc, dc), da); });
            return RKp_SetAlpha(d, W);
        }
        const Wide o = D::mul(sa, da), a = D::unite(sa, da);
        RKp_EachColour(s, d, [=](Wide sc, Wide dc) {
            const Wide v = D::mul(da, dc) - D::mul(dc, o) + D::mul(sa, sc) - D::mul(sc, o) +
                           D::mul(Mode::both(sc, dc), o);
            return D::div(a, D::keep(v));
        });
        RKp_SetAlpha(d, a);
    }
};

// ---- Over first: the source goes behind, then colour changes where it lies ------------------------------

// RK_Xfer_Behind. Kept: the source is premultiplied and the destination is the mixing term.
template <class P>
inline void RKp_LayBehind(const P& s, typename RKp_Depth<P>::Wide sa, P& d) {
    using D = RKp_Depth<P>;
    using Wide = typename D::Wide;
    const Wide da = d.alpha;
    if (da == D::kFull) return;
    const Wide a = D::unite(sa, da);
    RKp_EachColour(s, d, [=](Wide sc, Wide dc) { return D::div(a, D::lerp(D::mul(sc, sa), dc, da)); });
    RKp_SetAlpha(d, a);
}

// Formula: onRow(s, sa, d), which changes the colour of the whole pixel d. On a row the pipeline has laid the
// source behind already.
template <class P, class Mode>
struct RKp_OverFirst : RKp_PixelRow<P, Mode> {
    static constexpr RK_ModeClass kClass = RK_kModeOverFirst;

    static void alone(const P& s, typename RKp_Depth<P>::Wide sa, P& d) {
        RKp_LayBehind(s, sa, d);
        Mode::onRow(s, sa, d);
    }
};

// ---- Alpha only -----------------------------------------------------------------------------------------
// Formula: alpha(s, sa, da), the alpha that the destination is left with. Its colour stays, and no wrapper
// runs.
template <class P, class Mode>
struct RKp_AlphaOnly : RKp_SameOnRow<P, Mode> {
    static constexpr RK_ModeClass kClass = RK_kModePlain;

    static void alone(const P& s, typename RKp_Depth<P>::Wide sa, P& d) {
        RKp_SetAlpha(d, Mode::alpha(s, sa, d.alpha));
    }
};

#endif
