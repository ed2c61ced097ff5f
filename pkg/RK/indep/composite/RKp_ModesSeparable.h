// The modes that blend each channel by itself against a neutral background. d stands for the destination's
// colour on that background.
#ifndef RKP_MODES_SEPARABLE_H
#define RKP_MODES_SEPARABLE_H

#include "RK/indep/composite/RKp_Shapes.h"
#include "RK/indep/composite/RKp_SoftLight.h"

template <class P>
struct RKp_ModeAdd : RKp_Wrap<P, RKp_Black<P>, RKp_ModeAdd<P>> {
    RKP_MODE_NAMES(P);
    static Wide opaque(Wide s, Wide d) { return D::atMostFull(d + s); }
    static Wide mixed(Wide s, Wide d, Wide sa) { return D::atMostFull(d + D::mul(s, sa)); }
};

template <class P>
struct RKp_ModeMultiply : RKp_Wrap<P, RKp_White<P>, RKp_ModeMultiply<P>> {
    RKP_MODE_NAMES(P);
    static Wide opaque(Wide s, Wide d) { return d - D::mul(D::inv(s), d); }
    static Wide mixed(Wide s, Wide d, Wide sa) { return d - D::mul(D::mul(D::inv(s), d), sa); }
};

template <class P>
struct RKp_ModeScreen : RKp_Wrap<P, RKp_Black<P>, RKp_ModeScreen<P>> {
    RKP_MODE_NAMES(P);
    static Wide opaque(Wide s, Wide d) { return D::inv(D::mul(D::inv(s), D::inv(d))); }
    static Wide mixed(Wide s, Wide d, Wide sa) { return opaque(D::mul(s, sa), d); }
};

template <class P>
struct RKp_ModeOverlay : RKp_Wrap<P, RKp_Grey<P>, RKp_ModeOverlay<P>> {
    RKP_MODE_NAMES(P);
    static Wide opaque(Wide s, Wide d) {
        if (d < H) return 2 * D::mul(s, d);
        return D::inv(D::mul(D::inv(s), D::keep(2 * D::inv(d))));
    }
    static Wide mixed(Wide s, Wide d, Wide sa) { return D::lerp(d, opaque(s, d), sa); }
};

template <class P>
struct RKp_ModeSoftLight : RKp_Wrap<P, RKp_Grey<P>, RKp_ModeSoftLight<P>> {
    RKP_MODE_NAMES(P);
    using Curve = RKp_SoftLight<P>;
    static Wide opaque(Wide s, Wide d) {
        if (s < H) return d - D::mul(D::lowerHalf(s), Curve::darker(d));
        return d + D::mul(D::upperHalf(s), Curve::brighter(d));
    }
    static Wide mixed(Wide s, Wide d, Wide sa) {
        if (s < H) return d - D::mul(D::mul(D::lowerHalf(s), Curve::darker(d)), sa);
        return d + D::mul(D::mul(D::upperHalf(s), Curve::brighter(d)), sa);
    }
};

template <class P>
struct RKp_ModeHardLight : RKp_Wrap<P, RKp_Grey<P>, RKp_ModeHardLight<P>> {
    RKP_MODE_NAMES(P);
    static Wide opaque(Wide s, Wide d) {
        if (s < H) return d - D::mul(D::lowerHalf(s), d);
        return d + D::mul(D::inv(d), D::upperHalf(s));
    }
    static Wide mixed(Wide s, Wide d, Wide sa) {
        if (s < H) return d - D::mul(D::mul(D::lowerHalf(s), d), sa);
        return d + D::mul(D::mul(D::inv(d), D::upperHalf(s)), sa);
    }
};

template <class P>
struct RKp_ModeDarken : RKp_Wrap<P, RKp_White<P>, RKp_ModeDarken<P>> {
    RKP_MODE_NAMES(P);
    static Wide opaque(Wide s, Wide d) { return s < d ? s : d; }
    static Wide mixed(Wide s, Wide d, Wide sa) { return s < d ? d - D::mul(d - s, sa) : d; }
};

template <class P>
struct RKp_ModeLighten : RKp_Wrap<P, RKp_Black<P>, RKp_ModeLighten<P>> {
    RKP_MODE_NAMES(P);
    static Wide opaque(Wide s, Wide d) { return s > d ? s : d; }
    static Wide mixed(Wide s, Wide d, Wide sa) { return s > d ? d + D::mul(s - d, sa) : d; }
};

template <class P>
struct RKp_ModeClassicDifference : RKp_Wrap<P, RKp_Black<P>, RKp_ModeClassicDifference<P>> {
    RKP_MODE_NAMES(P);
    static Wide opaque(Wide s, Wide d) { return D::magnitude(s - d); }
    static Wide mixed(Wide s, Wide d, Wide sa) { return opaque(D::mul(s, sa), d); }
};

template <class P>
struct RKp_ModeClassicDodge : RKp_Wrap<P, RKp_Black<P>, RKp_ModeClassicDodge<P>> {
    RKP_MODE_NAMES(P);
    static Wide opaque(Wide s, Wide d) { return D::div(D::inv(s), d); }
    static Wide mixed(Wide s, Wide d, Wide sa) { return opaque(D::mul(s, sa), d); }
};

template <class P>
struct RKp_ModeClassicBurn : RKp_Wrap<P, RKp_White<P>, RKp_ModeClassicBurn<P>> {
    RKP_MODE_NAMES(P);
    static Wide opaque(Wide s, Wide d) { return D::inv(D::div(s, D::inv(d))); }
    static Wide mixed(Wide s, Wide d, Wide sa) { return opaque(D::inv(D::mul(D::inv(s), sa)), d); }
};

template <class P>
struct RKp_ModeExclusion : RKp_Wrap<P, RKp_Black<P>, RKp_ModeExclusion<P>> {
    RKP_MODE_NAMES(P);
    static Wide opaque(Wide s, Wide d) { return s + d - 2 * D::mul(s, d); }
    static Wide mixed(Wide s, Wide d, Wide sa) { return d + D::signedMul(s - 2 * D::mul(s, d), sa); }
};

#endif
