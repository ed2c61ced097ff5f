// The modes with a shape of their own.
#ifndef RKP_MODES_SPECIAL_H
#define RKP_MODES_SPECIAL_H

#include <cstring>

#include "RK/host/KIT.h"
#include "RK/indep/composite/RK_Rand.h"
#include "RK/indep/composite/RKp_RowVariants.h"
#include "RK/indep/composite/RKp_Shapes.h"

// No code: the lookups refuse it.
template <class P>
struct RKp_ModeNone {
    static constexpr RK_ModeClass kClass = RK_kModeRefused;
};

// ---- Over and its kin -----------------------------------------------------------------------------------

template <class P>
struct RKp_ModeBehind : RKp_SameOnRow<P, RKp_ModeBehind<P>> {
    static constexpr RK_ModeClass kClass = RK_kModePlain;
    static void alone(const P& s, typename RKp_Depth<P>::Wide sa, P& d) { RKp_LayBehind(s, sa, d); }
};

template <class P>
struct RKp_ModeOver {
    RKP_MODE_NAMES(P);
    static constexpr RK_ModeClass kClass = RK_kModeGuard;
    static constexpr bool kTestsClear = true;

    static void alone(const P& s, Wide sa, P& d) {
        const Wide da = d.alpha;
        if (sa == W || da == 0) {
            d = s;
            return RKp_SetAlpha(d, sa);
        }
        const Wide a = D::unite(sa, da);
        RKp_EachColour(s, d, [=](Wide sc, Wide dc) { return D::div(a, D::lerp(D::mul(dc, da), sc, sa)); });
        RKp_SetAlpha(d, a);
    }
    // Onto an opaque pixel there is nothing to divide.
    static void onRow(const P& s, Wide sa, P& d) {
        if (d.alpha == W && sa != W) return RKp_MixColour(s, sa, d);
        alone(s, sa, d);
    }
    template <bool has_matte>
    static RK_Long row(RK_Long count, const RK_BlendModeDescriptor<P>* plan,
                       const RK_LinearBlendingTables* tables, const P* src, const P* matte, P* out) {
        RK_RowFunc<P>* const vector = RKp_RowVariantsOf<P>().over_ssse3[has_matte];
        RK_RowFunc<P>* const body =
            vector != nullptr && KIT_G_CPU_DataP->has_ssse3 ? vector : &RKp_OverRow_Static<P, has_matte>;
        return body(count, plan, tables, src, matte, out);
    }
};

// The scalar row of Over; kRowTestsClear and the loop are those of every mode.
template <class P>
struct RKp_OverScalar : RKp_PixelRow<P, RKp_OverScalar<P>> {
    static void onRow(const P& s, typename RKp_Depth<P>::Wide sa, P& d) { RKp_ModeOver<P>::onRow(s, sa, d); }
};

// The source's colour is premultiplied already. Kept: the source alpha is never tested, and the opacity
// scales it but not the colour.
template <class P>
struct RKp_ModePremulOver : RKp_SameOnRow<P, RKp_ModePremulOver<P>> {
    RKP_MODE_NAMES(P);
    static constexpr RK_ModeClass kClass = RK_kModeGuard;
    static constexpr bool kTestsClear = false;
    static constexpr bool kRowTestsClear = false;

    static void alone(const P& s, Wide sa, P& d) {
        const Wide da = d.alpha, k = D::mul(D::inv(sa), da), a = D::unite(sa, da);
        RKp_EachColour(s, d, [=](Wide sc, Wide dc) { return D::div(a, D::atMostFull(sc + D::mul(dc, k))); });
        RKp_SetAlpha(d, a);
    }
};

// The result's alpha is the sum, not the union.
template <class P>
struct RKp_ModeAlphaAdd : RKp_SameOnRow<P, RKp_ModeAlphaAdd<P>> {
    RKP_MODE_NAMES(P);
    static constexpr RK_ModeClass kClass = RK_kModeGuard;

    static void alone(const P& s, Wide sa, P& d) {
        const Wide da = d.alpha, b = sa + da;
        if (sa == W) {
            RKp_CopyColour(s, d);
            RKp_SetAlpha(d, W);
        } else if (b >= W) {
            RKp_EachColour(s, d, [=](Wide sc, Wide dc) { return D::mul(sc, sa) + D::mul(dc, D::inv(sa)); });
            RKp_SetAlpha(d, W);
        } else {
            RKp_EachColour(
                s, d, [=](Wide sc, Wide dc) { return D::div(b, D::keep(D::mul(sc, sa) + D::mul(dc, da))); });
            RKp_SetAlpha(d, b);
        }
    }
};

// ---- Replace and Copy -----------------------------------------------------------------------------------

// The row of both: the destination is never read. With rgb_only only colour is written.
template <class P, bool has_matte>
RK_Long RKp_CopyRow(RK_Long count, const RK_BlendModeDescriptor<P>* plan, const P* src, const P* matte,
                    P* out) {
    using Wide = typename RKp_Depth<P>::Wide;
    if (count < 1) return RK_kOK;
    if (plan->mode.rgb_only) {
        for (RK_Long i = 0; i < count; ++i) RKp_CopyColour(src[i], out[i]);
        return RK_kOK;
    }
    if (!has_matte && RKp_Depth<P>::isFullOpacity(plan->mode.opacity)) {
        std::memmove(out, src, static_cast<size_t>(count) * sizeof(P));
        return RK_kOK;
    }
    return RKp_ForRow<P, has_matte>(count, plan, src, matte, out, [](const P& s, Wide sa, P& d) {
        d = s;
        RKp_SetAlpha(d, sa);
    });
}

template <class P>
struct RKp_ModeReplace {
    static constexpr RK_ModeClass kClass = RK_kModePlain;
    template <bool has_matte>
    static RK_Long row(RK_Long count, const RK_BlendModeDescriptor<P>* plan, const RK_LinearBlendingTables*,
                       const P* src, const P* matte, P* out) {
        return RKp_CopyRow<P, has_matte>(count, plan, src, matte, out);
    }
};

template <class P>
struct RKp_ModeCopy {
    static constexpr RK_ModeClass kClass = RK_kModePlain;
    static constexpr bool kTestsClear = true;

    static void alone(const P& s, typename RKp_Depth<P>::Wide sa, P& d) {
        d = s;
        RKp_SetAlpha(d, sa);
    }
    template <bool has_matte>
    static RK_Long row(RK_Long count, const RK_BlendModeDescriptor<P>* plan,
                       const RK_LinearBlendingTables* tables, const P* src, const P* matte, P* out) {
        RK_RowFunc<P>* const vector = RKp_RowVariantsOf<P>().copy_sse2[has_matte];
        RK_RowFunc<P>* const body =
            vector != nullptr && KIT_G_CPU_DataP->has_sse2 ? vector : &RKp_CopyRow_Static<P, has_matte>;
        return body(count, plan, tables, src, matte, out);
    }
};

// ---- MatteMix -------------------------------------------------------------------------------------------

// A fade of d to s by the matte m alone: each alpha is weighted by its side of the matte, and colours by the
// weighted alphas.
inline void RKp_CrossFade(const RK_Pixel8& s, int32_t m, RK_Pixel8& d) {
    if (m >= 255) {
        d = s;
        return;
    }
    const int32_t a1 = s.alpha * m, a2 = (255 - m) * d.alpha, sum = a1 + a2;
    if (m == 0 || sum == 0) return;
    RKp_EachColour(s, d, [=](int32_t sc, int32_t dc) { return (sc * a1 + (sum >> 1) + dc * a2) / sum; });
    RKp_SetAlpha(d, (sum + 128) / 255);
}
// In 64 bits: a colour times a weight outgrows 32.
inline void RKp_CrossFade(const RK_Pixel16& s, int32_t m, RK_Pixel16& d) {
    if (m == 32768) {
        d = s;
        return;
    }
    const int64_t a1 = int64_t{s.alpha} * m, a2 = int64_t{32768 - m} * d.alpha, sum = a1 + a2;
    if (m == 0 || sum == 0) return;
    RKp_EachColour(s, d, [=](int64_t sc, int64_t dc) { return (sc * a1 + (sum >> 1) + dc * a2) / sum; });
    RKp_SetAlpha(d, static_cast<int32_t>((sum + 16384) >> 15));
}
inline void RKp_CrossFade(const RK_PixelFloat& s, float m, RK_PixelFloat& d) {
    if (m >= 1.0f) {
        d = s;
        return;
    }
    const float a1 = s.alpha * m, a2 = (1.0f - m) * d.alpha, sum = a1 + a2;
    if (m == 0.0f || sum == 0.0f) return;
    RKp_EachColour(s, d, [=](float sc, float dc) { return (sc * a1 + dc * a2) / sum; });
    d.alpha = sum;
}

// Needs the matte row, whatever variant was looked up: without one 3, and nothing is touched. Opacity and
// rgb_only play no part.
template <class P>
struct RKp_ModeMatteMix {
    static constexpr RK_ModeClass kClass = RK_kModePlain;
    template <bool has_matte>
    static RK_Long row(RK_Long count, const RK_BlendModeDescriptor<P>*, const RK_LinearBlendingTables*,
                       const P* src, const P* matte, P* out) {
        if (count < 1) return RK_kOK;
        if (matte == nullptr) return RK_kBadParam;
        for (RK_Long i = 0; i < count; ++i) RKp_CrossFade(src[i], matte[i].alpha, out[i]);
        return RK_kOK;
    }
};

// ---- Dissolve -------------------------------------------------------------------------------------------

// Made on rows only. The seed is a row's own copy; every pixel moves it on by one, one that draws nothing
// too.
template <class P>
struct RKp_ModeDissolve {
    RKP_MODE_NAMES(P);
    static constexpr RK_ModeClass kClass = RK_kModePlain;
    static constexpr bool kTestsClear = true;

    static void alone(const P&, Wide, P&) {}
    template <bool has_matte>
    static RK_Long row(RK_Long count, const RK_BlendModeDescriptor<P>* plan, const RK_LinearBlendingTables*,
                       const P* src, const P* matte, P* out) {
        uint32_t seed = static_cast<uint32_t>(plan->mode.rand_seed);
        const bool rgb_only = plan->mode.rgb_only != 0;
        return RKp_ForRow<P, has_matte>(count, plan, src, matte, out, [&](const P& s, Wide sa, P& d) {
            if (sa == W || (sa != 0 && D::wins(sa, static_cast<int32_t>(RK_Rand(&seed))))) {
                RKp_CopyColour(s, d);
                if (!rgb_only) RKp_SetAlpha(d, W);
            }
            ++seed;
        });
    }
};

// ---- Stencils and silhouettes ---------------------------------------------------------------------------

// Kept: on a row a clear source clears the destination's alpha; one pixel alone leaves it.
template <class P>
struct RKp_ModeStencilAlpha : RKp_AlphaOnly<P, RKp_ModeStencilAlpha<P>> {
    RKP_MODE_NAMES(P);
    static constexpr bool kRowTestsClear = false;
    static Wide alpha(const P&, Wide sa, Wide da) { return D::mul(sa, da); }
    static void onRow(const P& s, Wide sa, P& d) {
        if (sa < W) RKp_ModeStencilAlpha::alone(s, sa, d);
    }
};
template <class P>
struct RKp_ModeStencilLuma : RKp_AlphaOnly<P, RKp_ModeStencilLuma<P>> {
    RKP_MODE_NAMES(P);
    static Wide alpha(const P& s, Wide sa, Wide da) {
        return D::alphaProduct(D::mul(D::mul(sa, RKp_Luma(s)), da));
    }
};
template <class P>
struct RKp_ModeSilhouetteAlpha : RKp_AlphaOnly<P, RKp_ModeSilhouetteAlpha<P>> {
    RKP_MODE_NAMES(P);
    static Wide alpha(const P&, Wide sa, Wide da) { return D::mul(D::inv(sa), da); }
};
template <class P>
struct RKp_ModeSilhouetteLuma : RKp_AlphaOnly<P, RKp_ModeSilhouetteLuma<P>> {
    RKP_MODE_NAMES(P);
    static Wide alpha(const P& s, Wide sa, Wide da) {
        return D::alphaProduct(D::mul(D::inv(D::mul(sa, RKp_Luma(s))), da));
    }
};

#endif
