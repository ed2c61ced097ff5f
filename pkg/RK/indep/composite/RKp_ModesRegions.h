// The three-region modes: both(s, d) is the colour where source and destination overlap. The destination's
// colour is its own, against no background.
#ifndef RKP_MODES_REGIONS_H
#define RKP_MODES_REGIONS_H

#include "RK/indep/composite/RKp_Shapes.h"

template <class P>
struct RKp_ModeDifference : RKp_ThreeRegions<P, RKp_ModeDifference<P>> {
    RKP_MODE_NAMES(P);
    static Wide both(Wide s, Wide d) { return D::magnitude(s - d); }
};

template <class P>
struct RKp_ModeDodge : RKp_ThreeRegions<P, RKp_ModeDodge<P>> {
    RKP_MODE_NAMES(P);
    static Wide both(Wide s, Wide d) { return d == 0 ? d : D::ratio(D::inv(s), d); }
};

template <class P>
struct RKp_ModeBurn : RKp_ThreeRegions<P, RKp_ModeBurn<P>> {
    RKP_MODE_NAMES(P);
    static Wide both(Wide s, Wide d) { return s == 0 && d == W ? d : D::inv(D::ratio(s, D::inv(d))); }
};

template <class P>
struct RKp_ModeLinearDodge : RKp_ThreeRegions<P, RKp_ModeLinearDodge<P>> {
    RKP_MODE_NAMES(P);
    static Wide both(Wide s, Wide d) { return D::atMostFull(s + d); }
};

template <class P>
struct RKp_ModeLinearBurn : RKp_ThreeRegions<P, RKp_ModeLinearBurn<P>> {
    RKP_MODE_NAMES(P);
    static Wide both(Wide s, Wide d) { return std::max(Wide{0}, s + d - W); }
};

template <class P>
struct RKp_ModeLinearLight : RKp_ThreeRegions<P, RKp_ModeLinearLight<P>> {
    RKP_MODE_NAMES(P);
    static Wide both(Wide s, Wide d) { return D::inRange(D::upperHalf(s) + d); }
};

// The ends of the source come first: black burns everything to 0, and full dodges everything, black too, to
// full.
template <class P>
struct RKp_ModeVividLight : RKp_ThreeRegions<P, RKp_ModeVividLight<P>> {
    RKP_MODE_NAMES(P);
    static Wide both(Wide s, Wide d) {
        if (s < H) return s == 0 ? Wide{0} : RKp_ModeBurn<P>::both(D::twiceBelow(s), d);
        if (s > H) return s == W ? W : RKp_ModeDodge<P>::both(D::twiceAbove(s), d);
        return d;
    }
};

template <class P>
struct RKp_ModePinLight : RKp_ThreeRegions<P, RKp_ModePinLight<P>> {
    RKP_MODE_NAMES(P);
    static Wide both(Wide s, Wide d) {
        if (s < H) return std::min(2 * s, d);
        if (s > H) return std::max(2 * (s - H), d);
        return d;
    }
};

template <class P>
struct RKp_ModeHardMix : RKp_ThreeRegions<P, RKp_ModeHardMix<P>> {
    RKP_MODE_NAMES(P);
    static Wide both(Wide s, Wide d) { return D::hardMix(s, d); }
};

#endif
