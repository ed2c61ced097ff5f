// Plain twins of the row scans between straight and premultiplied, of the alpha merge and of the matte
// functions.
#ifndef TEST_PLAIN_SCANS_H
#define TEST_PLAIN_SCANS_H

#include "test/plain/PlainArithmetic.h"

namespace plain {

enum class Matte { Black, White, Grey };

// c: a colour channel; a: its alpha.
template <class D>
typename D::N premultiplyChannel(Matte matte, typename D::N c, typename D::N a) {
    switch (matte) {
        case Matte::Black:
            return D::mul(c, a);
        case Matte::White:
            return D::inv(D::mul(D::inv(c), a));
        case Matte::Grey:
            break;
    }
    if (c < D::H) return c + D::mul(D::inv(a), D::H - c);
    return D::mul(c - D::H, a) + D::H;
}
// A grey matte divides above or below the middle. Of a NaN the scans say that it is not above, the one-pixel
// modes that it is not below.
template <class D>
typename D::N unmultiplyGrey(bool above, typename D::N c, typename D::N a) {
    const typename D::N t = D::div(a, above ? c - D::H : D::H - c);
    if (above) return t < D::H ? t + D::H : D::W;
    return t < D::H ? D::H - t : 0;
}
template <class D>
typename D::N unmultiplyChannel(Matte matte, typename D::N c, typename D::N a) {
    switch (matte) {
        case Matte::Black:
            return D::div(a, c);
        case Matte::White:
            return D::inv(D::div(a, D::inv(c)));
        case Matte::Grey:
            break;
    }
    return unmultiplyGrey<D>(c >= D::H, c, a);
}

// One pixel against a matte. Only the in-place unmultiply has special alphas: 0 gives the zero pixel, full
// leaves the pixel. A denormal float alpha gives colours of 1 on both paths.
template <class P>
P premultiply(Matte matte, const P& p);
template <class P>
P unmultiplyCopy(Matte matte, const P& p);
template <class P>
P unmultiplyInPlace(Matte matte, const P& p);

// A row; src null or equal to dst is in place.
template <class P>
void scan(Matte matte, bool forward, int count, const P* src, P* dst);

// dst's alpha united with src's, scaled by opacity and then by the mask's alpha; opacity 0 does nothing.
template <class P>
void alphaMerge(int count, const P* src, decltype(P::red) opacity, const P* mask, P* dst);

// One pixel of the passes against a matte colour k, which has the pixel's depth.
template <class P>
P premulColour(const P& p, const P& k);
template <class P>
P unmulColour(const P& p, const P& k);
// The matte colour at the world's depth; from 8 bits to float it differs from other conversions.
template <class Q, class P>
Q matteColour(const P* colour);

// The area of a colour-matte pass: rows `top` to `bottom`, columns `left` to `right`.
struct Area {
    int64_t left, top, right, bottom;
};
Area premulColourArea(const GEO_Rect* rect, int64_t src_width, int64_t src_height, int64_t dst_width,
                      int64_t dst_height);

// 8-bit rows with alpha in the last byte.
void blackMatteBGRA(int count, uint8_t* row);
void deBlackMatteBGRA(int count, uint8_t* row);

// From a black matte to a matte of `colour` (forward) or back, on one 8-bit pixel; sums wrap.
RK_Pixel8 blackToColour(const RK_Pixel8& p, const RK_Pixel8& colour, bool forward);

}  // namespace plain

#endif
