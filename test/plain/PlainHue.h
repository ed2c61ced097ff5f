// The hue family and the whole-colour choosers, for plain twins.
#ifndef TEST_PLAIN_HUE_H
#define TEST_PLAIN_HUE_H

#include "test/plain/PlainBodies.h"

namespace plain {

template <class D>
typename D::N smallest(const Wide<D>& p) {
    return std::min(std::min(p.r, p.g), p.b);
}
template <class D>
typename D::N largest(const Wide<D>& p) {
    return std::max(std::max(p.r, p.g), p.b);
}
template <class D>
typename D::N saturation(const Wide<D>& p) {
    return largest(p) - smallest(p);
}

// Sorts by the stated tests: red against green, then blue against both ends.
template <class D>
void setSaturation(Wide<D>& p, typename D::N v) {
    typename D::N *low, *middle, *high;
    if (p.r < p.g) {
        low = &p.r;
        high = &p.g;
    } else {
        low = &p.g;
        high = &p.r;
    }
    if (p.b < *low) {
        middle = low;
        low = &p.b;
    } else if (p.b > *high) {
        middle = high;
        high = &p.b;
    } else {
        middle = &p.b;
    }
    const typename D::N range = *high - *low;
    if (range != 0) {
        *middle = ((*middle - *low) * v) / range;
        *high = v;
    } else {
        *middle = 0;
        *high = 0;
    }
    *low = 0;
}

template <class D>
void addToColour(Wide<D>& p, typename D::N delta) {
    p.r = p.r + delta;
    p.g = p.g + delta;
    p.b = p.b + delta;
}

// Pulls the colour into 0..W around its luma l: the low side first, then what that left on the high side.
template <class D>
void clip(Wide<D>& c, typename D::N l) {
    using N = typename D::N;
    const N m = smallest(c);
    if (m < 0 && l - m != 0) eachColour<D>(c, c, [&](N, N x) { return l + ((x - l) * l) / (l - m); });
    const N h = largest(c);
    if (h > D::W && h - l != 0)
        eachColour<D>(c, c, [&](N, N x) { return l + ((x - l) * (D::W - l)) / (h - l); });
}

// The colour part of a hue mode, over a destination that the source lies behind already.
template <class D>
void hueColour(int mode, const Wide<D>& s, Wide<D>& d) {
    using N = typename D::N;
    Wide<D> c{};
    N l = luma(d);
    switch (mode) {
        case RK_Xfer_Hue:
            c = s;
            setSaturation(c, saturation(d));
            addToColour(c, l - luma(c));
            break;
        case RK_Xfer_Saturation:
            c = d;
            setSaturation(c, saturation(s));
            addToColour(c, l - luma(c));
            break;
        case RK_Xfer_Colour:
            c = s;
            addToColour(c, N(-luma(s)));
            addToColour(c, l);
            break;
        case RK_Xfer_Luminosity:
            c = d;
            addToColour(c, luma(s));
            addToColour(c, N(-l));
            l = luma(s);
            break;
        default:
            std::abort();
    }
    clip(c, l);
    eachColour<D>(c, c, [](N, N x) { return D::keep(x); });
    if (s.a == D::W)
        eachColour<D>(c, d, [](N to, N) { return to; });
    else
        mixTowards(c, s.a, d);
}

template <class D>
void chooserColour(int mode, const Wide<D>& s, typename D::N ls, typename D::N ld, Wide<D>& d) {
    const bool acts = mode == RK_Xfer_LighterColour ? ls > ld : ls < ld;
    if (!acts) return;
    if (s.a == D::W)
        eachColour<D>(s, d, [](auto sc, auto) { return sc; });
    else
        mixTowards(s, s.a, d);
}

}  // namespace plain

#endif
