// The modes that look at a whole colour: the hue family and the two choosers by luma.
//
// Legend: S, D colours of source and destination; L the luma that a colour is clipped around.
#ifndef RKP_MODES_HUE_H
#define RKP_MODES_HUE_H

#include <utility>

#include "RK/indep/composite/RKp_Shapes.h"

// A colour on its way to its clip: channels may leave the range. Integer channels are int32, divisions
// truncate.
template <class P>
struct RKp_HueColour {
    RKP_MODE_NAMES(P);
    Wide r, g, b;

    static RKp_HueColour of(const P& p) {
        return {D::lowered(p.red), D::lowered(p.green), D::lowered(p.blue)};
    }
    Wide luma() const { return D::luma(r, g, b); }
    Wide smallest() const { return std::min(std::min(r, g), b); }
    Wide largest() const { return std::max(std::max(r, g), b); }
    Wide saturation() const { return largest() - smallest(); }

    template <class Formula>
    void each(Formula&& formula) {
        r = formula(r);
        g = formula(g);
        b = formula(b);
    }
    // Smallest to 0, largest to v, the middle in proportion. Red and green are compared first; blue takes an
    // end only strictly beyond it.
    void setSaturation(Wide v) {
        Wide *low = &g, *middle = &b, *high = &r;
        if (r < g) std::swap(low, high);
        if (b < *low)
            std::swap(low, middle);
        else if (b > *high)
            std::swap(high, middle);
        const Wide span = *high - *low;
        *middle = span != 0 ? (*middle - *low) * v / span : Wide{0};
        *high = span != 0 ? v : Wide{0};
        *low = 0;
    }
    void addLuma(Wide delta) {
        each([=](Wide c) { return c + delta; });
    }
    // Pulls channels below 0 and above W back towards L; the high side measures what the low side has left.
    // At the integer depths the divisors cannot be 0: L lies in 0..W.
    void clipAround(Wide L) {
        const Wide low = smallest(), below = L - low;
        if (low < 0 && below != 0) each([=](Wide c) { return L + (c - L) * L / below; });
        const Wide high = largest(), above = high - L;
        if (high > W && above != 0) each([=](Wide c) { return L + (c - L) * (W - L) / above; });
    }
};

// Formula: target(S, D, L), the colour that D becomes under a full source; L, which is luma(D) at first, may
// be moved.
template <class P, class Mode>
struct RKp_HueFamily : RKp_OverFirst<P, Mode> {
    RKP_MODE_NAMES(P);
    using Colour = RKp_HueColour<P>;
    using Channel = typename D::Channel;

    static void onRow(const P& s, Wide sa, P& d) {
        const Colour D0 = Colour::of(d);
        Wide L = D0.luma();
        Colour c = Mode::target(Colour::of(s), D0, L);
        c.clipAround(L);
        if (sa != W) {
            c.r = D::lerp(d.red, D::keep(c.r), sa);
            c.g = D::lerp(d.green, D::keep(c.g), sa);
            c.b = D::lerp(d.blue, D::keep(c.b), sa);
        }
        d.red = static_cast<Channel>(c.r);
        d.green = static_cast<Channel>(c.g);
        d.blue = static_cast<Channel>(c.b);
    }
};

template <class P>
struct RKp_ModeHue : RKp_HueFamily<P, RKp_ModeHue<P>> {
    using Colour = RKp_HueColour<P>;
    static Colour target(Colour S, const Colour& D, typename Colour::Wide L) {
        S.setSaturation(D.saturation());
        S.addLuma(L - S.luma());
        return S;
    }
};

template <class P>
struct RKp_ModeSaturation : RKp_HueFamily<P, RKp_ModeSaturation<P>> {
    using Colour = RKp_HueColour<P>;
    static Colour target(const Colour& S, Colour D, typename Colour::Wide L) {
        D.setSaturation(S.saturation());
        D.addLuma(L - D.luma());
        return D;
    }
};

template <class P>
struct RKp_ModeColour : RKp_HueFamily<P, RKp_ModeColour<P>> {
    using Colour = RKp_HueColour<P>;
    static Colour target(Colour S, const Colour&, typename Colour::Wide L) {
        const auto own = S.luma();
        S.each([=](typename Colour::Wide c) { return (c - own) + L; });
        return S;
    }
};

template <class P>
struct RKp_ModeLuminosity : RKp_HueFamily<P, RKp_ModeLuminosity<P>> {
    using Colour = RKp_HueColour<P>;
    static Colour target(const Colour& S, Colour D, typename Colour::Wide& L) {
        const auto own = L;
        L = S.luma();
        D.each([=](typename Colour::Wide c) { return (c + L) - own; });
        return D;
    }
};

// Formula: takes(source luma, destination luma): the source's colour goes onto the destination. Kept: one
// pixel alone compares the raw pixels, a row compares what the pass behind has left.
template <class P, class Mode>
struct RKp_LumaChooser : RKp_OverFirst<P, Mode> {
    RKP_MODE_NAMES(P);
    static void lay(bool taken, const P& s, Wide sa, P& d) {
        if (!taken) return;
        if (sa == W)
            RKp_CopyColour(s, d);
        else
            RKp_MixColour(s, sa, d);
    }
    static void onRow(const P& s, Wide sa, P& d) { lay(Mode::takes(RKp_Luma(s), RKp_Luma(d)), s, sa, d); }
    static void alone(const P& s, Wide sa, P& d) {
        const bool taken = Mode::takes(RKp_Luma(s), RKp_Luma(d));
        RKp_LayBehind(s, sa, d);
        lay(taken, s, sa, d);
    }
};

template <class P>
struct RKp_ModeLighterColour : RKp_LumaChooser<P, RKp_ModeLighterColour<P>> {
    template <class Wide>
    static bool takes(Wide source, Wide destination) {
        return source > destination;
    }
};
template <class P>
struct RKp_ModeDarkerColour : RKp_LumaChooser<P, RKp_ModeDarkerColour<P>> {
    template <class Wide>
    static bool takes(Wide source, Wide destination) {
        return source < destination;
    }
};

#endif
