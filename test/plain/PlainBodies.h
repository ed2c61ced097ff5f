// What each mode does to one pixel, for plain twins.
// s, d: source and destination pixel; s.a is the source's alpha after opacity and matte.
#ifndef TEST_PLAIN_BODIES_H
#define TEST_PLAIN_BODIES_H

#include "test/plain/PlainFormulas.h"
#include "test/plain/PlainScans.h"

namespace plain {

template <class D, class F>
void eachColour(const Wide<D>& s, Wide<D>& d, F f) {
    d.r = f(s.r, d.r);
    d.g = f(s.g, d.g);
    d.b = f(s.b, d.b);
}
template <class D>
void mixTowards(const Wide<D>& c, typename D::N sa, Wide<D>& d) {
    eachColour<D>(c, d, [&](auto to, auto from) { return lerp<D>(from, to, sa); });
}

// ---- Modes that are alike for a pixel and in a row --------------------------------------------------------

template <class D>
void behind(const Wide<D>& s, Wide<D>& d) {
    if (s.a == 0 || d.a == D::W) return;
    const auto a = unite<D>(s.a, d.a);
    eachColour<D>(s, d, [&](auto sc, auto dc) {
        const auto p = D::mul(sc, s.a);
        return D::div(a, D::keep(p + D::signedMul(dc - p, d.a)));
    });
    d.a = a;
}

template <class D>
void over(const Wide<D>& s, Wide<D>& d) {
    if (s.a == 0) return;
    if (s.a == D::W || d.a == 0) {
        d = s;
        return;
    }
    const auto a = unite<D>(s.a, d.a);
    eachColour<D>(s, d, [&](auto sc, auto dc) {
        const auto p = D::mul(dc, d.a);
        return D::div(a, D::keep(p + D::signedMul(sc - p, s.a)));
    });
    d.a = a;
}

// A row has a case of its own over an opaque pixel, without a division.
template <class D>
void overInRow(const Wide<D>& s, Wide<D>& d) {
    if (s.a == 0 || s.a == D::W || d.a != D::W) return over(s, d);
    mixTowards(s, s.a, d);
}

template <class D>
void premulOver(const Wide<D>& s, Wide<D>& d) {
    using N = typename D::N;
    const N k = D::mul(D::inv(s.a), d.a);
    const N a = unite<D>(s.a, d.a);
    eachColour<D>(s, d, [&](N sc, N dc) {
        const N v = sc + D::mul(dc, k);
        return D::div(a, D::kReal ? v : std::min<N>(D::W, v));
    });
    d.a = a;
}

template <class D>
void alphaAdd(const Wide<D>& s, Wide<D>& d) {
    using N = typename D::N;
    if (s.a == 0) return;
    if (s.a == D::W) {
        d = s;
        return;
    }
    const N b = s.a + d.a;
    if (b >= D::W) {
        eachColour<D>(s, d, [&](N sc, N dc) { return D::mul(sc, s.a) + D::mul(dc, D::inv(s.a)); });
        d.a = D::W;
    } else {
        eachColour<D>(s, d,
                      [&](N sc, N dc) { return D::div(b, D::keep(D::mul(sc, s.a) + D::mul(dc, d.a))); });
        d.a = b;
    }
}

template <class D>
void regions(int mode, const Wide<D>& s, Wide<D>& d) {
    using N = typename D::N;
    if (s.a == 0) return;
    if (s.a == D::W) {
        eachColour<D>(
            s, d, [&](N sc, N dc) { return D::keep(sc + D::signedMul(overlap<D>(mode, sc, dc) - sc, d.a)); });
        d.a = D::W;
        return;
    }
    const N o = D::mul(s.a, d.a);
    const N a = unite<D>(s.a, d.a);
    eachColour<D>(s, d, [&](N sc, N dc) {
        const N v = D::mul(d.a, dc) - D::mul(dc, o) + D::mul(s.a, sc) - D::mul(sc, o) +
                    D::mul(overlap<D>(mode, sc, dc), o);
        return D::div(a, D::keep(v));
    });
    d.a = a;
}

// ---- Stencils and silhouettes
// -------------------------------------------------------------------------------

// The new destination alpha, without any test of s.a.
template <class D>
typename D::N stencilAlpha(int mode, const Wide<D>& s, typename D::N da) {
    using N = typename D::N;
    switch (mode) {
        case RK_Xfer_StencilAlpha:
            return D::mul(s.a, da);
        case RK_Xfer_SilhouetteAlpha:
            return D::mul(D::inv(s.a), da);
        default:
            break;
    }
    N t = D::mul(s.a, luma(s));
    if (mode == RK_Xfer_SilhouetteLuma) t = D::inv(t);
    const N p = D::mul(t, da);
    if constexpr (D::kReal) {
        if (p > 1.0f) return 1.0f;
        if (!(p >= 1e-30f)) return 0.0f;
    }
    return p;
}

// ---- Modes against a neutral background, on one pixel ---------------------------------------------------

// The colour alone; d stands against the neutral background already.
template <class D>
void separable(int mode, const Wide<D>& s, Wide<D>& d) {
    using N = typename D::N;
    if (s.a == D::W)
        eachColour<D>(s, d, [&](N sc, N dc) { return D::keep(separableOpaque<D>(mode, sc, dc)); });
    else
        eachColour<D>(s, d, [&](N sc, N dc) { return D::keep(separableMixed<D>(mode, sc, dc, s.a)); });
}

template <class D>
void wrappedPixel(int mode, Matte neutral, const Wide<D>& s, Wide<D>& d) {
    using N = typename D::N;
    if (s.a == 0) return;
    const N a = s.a == D::W ? D::W : unite<D>(s.a, d.a);
    if (d.a != D::W) d = load<D>(premultiply(neutral, store<D>(d)));
    separable(mode, s, d);
    // At a denormal float alpha the quotient is 1 and the neutral's rule goes on.
    if (a != D::W)
        eachColour<D>(s, d, [&](N, N v) {
            return neutral == Matte::Grey ? unmultiplyGrey<D>(!(v < D::H), v, a)
                                          : unmultiplyChannel<D>(neutral, v, a);
        });
    d.a = a;
}

// ---- Modes of rows alone
// ------------------------------------------------------------------------------------

// Replace and Copy. The destination is never read; rgb_only keeps its alpha.
template <class D>
void replace(const Wide<D>& s, bool rgb_only, Wide<D>& d) {
    const auto kept = d.a;
    d = s;
    if (rgb_only) d.a = kept;
}

// m: the matte's alpha. The opacity plays no part.
template <class D>
void matteMix(const Wide<D>& s, typename D::N m, Wide<D>& d) {
    using N = typename D::N;
    if (D::W == N(32768) ? m == D::W : m >= D::W) {
        d = s;
        return;
    }
    const N a1 = s.a * m, a2 = (D::W - m) * d.a;
    const N sum = a1 + a2;
    if (m == 0 || sum == 0) return;
    if constexpr (D::kReal) {
        eachColour<D>(s, d, [&](N sc, N dc) { return (sc * a1 + dc * a2) / sum; });
        d.a = sum;
    } else {
        eachColour<D>(s, d, [&](N sc, N dc) { return (sc * a1 + (sum >> 1) + dc * a2) / sum; });
        d.a = D::W == 255 ? (sum + 128) / 255 : (sum + 16384) >> 15;
    }
}

// The dissolve's generator: moves the seed on, gives 15 bits.
inline uint32_t random(uint32_t& seed) {
    const uint32_t high = seed / 44488u, low = seed % 44488u;
    uint32_t next = high * 3399u + low * 48271u;
    if (next == 0) next = 0x7FFFFFFFu;
    seed = next;
    return (next >> 7) & 0x7FFFu;
}

template <class D>
void dissolve(const Wide<D>& s, bool rgb_only, uint32_t& seed, Wide<D>& d) {
    bool takes = s.a == D::W;
    if (!takes && s.a != 0) {
        const uint32_t r = random(seed);
        if constexpr (D::kReal)
            takes = static_cast<double>(s.a) >= static_cast<double>(r) * 3.0518509447574615e-5;
        else
            takes = s.a >= (D::W == 255 ? r & 255u : r);
    }
    if (takes) {
        const auto kept = d.a;
        d = s;
        d.a = rgb_only ? kept : D::W;
    }
    seed += 1;
}

}  // namespace plain

#endif
