// The functions for one pixel, and the tables of a depth made of them. RK_Pixels8.cpp and its kin instantiate
// them.
#ifndef RKP_PIXEL_FUNCTIONS_H
#define RKP_PIXEL_FUNCTIONS_H

#include "RK/indep/composite/RKp_LinearRows.h"

// The three forms differ in the alpha that the body runs on, and in nothing else.
template <class P, class Mode, int32_t mode>
struct RKp_PixelFunctions {
    using Wide = typename RKp_Depth<P>::Wide;
    using Channel = RK_Channel<P>;

    static void plain(const P* src, const RK_LinearBlendingTables* tables, P* dst) {
        body(*src, tables, src->alpha, *dst);
    }
    static void opacity(const P* src, const RK_LinearBlendingTables* tables, Channel opacity, P* dst) {
        body(*src, tables, scaled(src->alpha, opacity), *dst);
    }
    static void opacity2(const P* src, const RK_LinearBlendingTables* tables, Channel opacity1,
                         Channel opacity2, P* dst) {
        body(*src, tables, scaled(scaled(src->alpha, opacity1), opacity2), *dst);
    }

  private:
    static Wide scaled(Wide sa, Channel opacity) {
        return RKp_Depth<P>::isFullOpacity(opacity) ? sa : RKp_Scaled<P>(sa, opacity);
    }
    // One copy for the three forms.
    [[gnu::noinline]] static void body(const P& src, const RK_LinearBlendingTables* tables, Wide sa, P& dst) {
        if (tables != nullptr) return RKp_RunLinearPixel<P>(mode, &src, tables, sa, &dst);
        if (Mode::kTestsClear && sa == 0) return;
        // Copies: the two may be one pixel.
        const P source = src;
        P result = dst;
        Mode::alone(source, sa, result);
        dst = result;
    }
};

// What a line of the list gives in each table of the depth whose pixel type is named Pixel.
#define RKP_PIXEL_FORM(number, name, form) &RKp_PixelFunctions<Pixel, RKp_Mode##name<Pixel>, number>::form,
#define RKP_PIXEL_PLAIN(number, name, class_, flag, does) RKP_PIXEL_FORM(number, name, plain)
#define RKP_PIXEL_OPACITY(number, name, class_, flag, does) RKP_PIXEL_FORM(number, name, opacity)
#define RKP_PIXEL_OPACITY2(number, name, class_, flag, does) RKP_PIXEL_FORM(number, name, opacity2)
#define RKP_PIXEL_NONE(number, name, class_, flag, does)

#endif
