#include "test/plain/PlainModes.h"

#include <vector>

#include "test/plain/PlainHue.h"

namespace plain {
namespace {

bool wrapped(int mode, Matte& neutral) {
    switch (mode) {
        case RK_Xfer_Add:
        case RK_Xfer_Screen:
        case RK_Xfer_Lighten:
        case RK_Xfer_ClassicDifference:
        case RK_Xfer_ClassicDodge:
        case RK_Xfer_Exclusion:
            neutral = Matte::Black;
            return true;
        case RK_Xfer_Multiply:
        case RK_Xfer_Darken:
        case RK_Xfer_ClassicBurn:
            neutral = Matte::White;
            return true;
        case RK_Xfer_Overlay:
        case RK_Xfer_SoftLight:
        case RK_Xfer_HardLight:
            neutral = Matte::Grey;
            return true;
        default:
            return false;
    }
}
bool threeRegions(int mode) { return mode >= RK_Xfer_Difference && mode <= RK_Xfer_HardMix; }
bool hueFamily(int mode) { return mode >= RK_Xfer_Hue && mode <= RK_Xfer_Luminosity; }
bool chooser(int mode) { return mode == RK_Xfer_LighterColour || mode == RK_Xfer_DarkerColour; }
bool stencil(int mode) { return mode >= RK_Xfer_StencilAlpha && mode <= RK_Xfer_SilhouetteLuma; }

}  // namespace

template <class P>
P pixel(int mode, const P& source, decltype(P::red) opacity1, decltype(P::red) opacity2,
        const P& destination) {
    using D = typename DepthOf<P>::D;
    Wide<D> s = load<D>(source), d = load<D>(destination);
    s.a = scaled<D>(scaled<D>(s.a, opacity1), opacity2);
    Matte neutral = Matte::Black;
    if (mode == RK_Xfer_Dissolve) return destination;
    if (mode == RK_Xfer_Copy) {
        if (s.a != 0) d = s;
    } else if (mode == RK_Xfer_Behind) {
        behind(s, d);
    } else if (mode == RK_Xfer_Over) {
        over(s, d);
    } else if (mode == RK_Xfer_PremulOver) {
        premulOver(s, d);
    } else if (mode == RK_Xfer_AlphaAdd) {
        alphaAdd(s, d);
    } else if (stencil(mode)) {
        if (s.a != 0) d.a = stencilAlpha(mode, s, d.a);
    } else if (hueFamily(mode)) {
        if (s.a == 0) return destination;
        behind(s, d);
        d = load<D>(store<D>(d));
        hueColour(mode, s, d);
    } else if (chooser(mode)) {
        if (s.a == 0) return destination;
        const auto ls = luma(s), ld = luma(d);
        behind(s, d);
        d = load<D>(store<D>(d));
        chooserColour<D>(mode, s, ls, ld, d);
    } else if (threeRegions(mode)) {
        regions(mode, s, d);
    } else if (wrapped(mode, neutral)) {
        wrappedPixel(mode, neutral, s, d);
    } else {
        std::abort();
    }
    return store<D>(d);
}

// ---- Rows -------------------------------------------------------------------------------------------------

template <class P>
int rowFunction(const RK_BlendingMode<P>& mode, bool has_matte, int count, const P* src, const P* matte,
                P* out) {
    using D = typename DepthOf<P>::D;
    const int xfer = mode.xfer;
    const bool rgb_only = mode.rgb_only != 0;
    uint32_t seed = static_cast<uint32_t>(mode.rand_seed);
    if (xfer == RK_Xfer_MatteMix && matte == nullptr && count > 0) return 3;
    for (int i = 0; i < count; ++i) {
        Wide<D> s = load<D>(src[i]), d = load<D>(out[i]);
        if (xfer != RK_Xfer_MatteMix) {
            s.a = scaled<D>(s.a, mode.opacity);
            if (has_matte) s.a = D::mul(matte[i].alpha, s.a);
        }
        Matte neutral = Matte::Black;
        if (xfer == RK_Xfer_Replace || xfer == RK_Xfer_Copy)
            replace(s, rgb_only, d);
        else if (xfer == RK_Xfer_MatteMix)
            matteMix<D>(s, matte[i].alpha, d);
        else if (xfer == RK_Xfer_Dissolve)
            dissolve(s, rgb_only, seed, d);
        else if (xfer == RK_Xfer_Behind)
            behind(s, d);
        else if (xfer == RK_Xfer_Over)
            overInRow(s, d);
        else if (xfer == RK_Xfer_PremulOver)
            premulOver(s, d);
        else if (xfer == RK_Xfer_AlphaAdd)
            alphaAdd(s, d);
        else if (xfer == RK_Xfer_StencilAlpha)
            d.a = s.a < D::W ? stencilAlpha(xfer, s, d.a) : d.a;
        else if (stencil(xfer))
            d.a = s.a != 0 ? stencilAlpha(xfer, s, d.a) : d.a;
        else if (threeRegions(xfer))
            regions(xfer, s, d);
        else if (s.a == 0)
            continue;
        else if (hueFamily(xfer))
            hueColour(xfer, s, d);
        else if (chooser(xfer))
            chooserColour<D>(xfer, s, luma(s), luma(d), d);
        else if (wrapped(xfer, neutral))
            separable(xfer, s, d);
        else
            std::abort();
        out[i] = store<D>(d);
    }
    return 0;
}

template <class P>
int row(const RK_BlendingMode<P>& mode, bool plan_has_matte, int count, const P* src, const P* matte,
        P* out) {
    Matte neutral = Matte::Black;
    const bool wraps = wrapped(mode.xfer, neutral);
    const bool over_first = hueFamily(mode.xfer) || chooser(mode.xfer);
    const bool guards = wraps || over_first || threeRegions(mode.xfer) || mode.xfer == RK_Xfer_Over ||
                        mode.xfer == RK_Xfer_PremulOver || mode.xfer == RK_Xfer_AlphaAdd;
    const std::vector<P> before(out, out + count);
    if (wraps) scan<P>(neutral, true, count, nullptr, out);
    if (over_first) {
        RK_BlendingMode<P> first = mode;
        first.xfer = RK_Xfer_Behind;
        rowFunction(first, plan_has_matte, count, src, matte, out);
    }
    const int error = rowFunction(mode, plan_has_matte, count, src, matte, out);
    if (error != 0) return error;
    if (wraps) {
        alphaMerge(count, src, mode.opacity, matte, out);
        scan<P>(neutral, false, count, nullptr, out);
    }
    if (guards && mode.rgb_only != 0)
        for (int i = 0; i < count; ++i) out[i].alpha = before[static_cast<size_t>(i)].alpha;
    return 0;
}

#define EACH_DEPTH(P)                                                                       \
    template P pixel(int, const P&, decltype(P::red), decltype(P::red), const P&);          \
    template int rowFunction(const RK_BlendingMode<P>&, bool, int, const P*, const P*, P*); \
    template int row(const RK_BlendingMode<P>&, bool, int, const P*, const P*, P*);
EACH_DEPTH(RK_Pixel8)
EACH_DEPTH(RK_Pixel16)
EACH_DEPTH(RK_PixelFloat)
#undef EACH_DEPTH

}  // namespace plain
