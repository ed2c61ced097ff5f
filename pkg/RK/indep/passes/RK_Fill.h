// A rectangle of a world in one colour.
#ifndef RK_FILL_H
#define RK_FILL_H

#include "RK/indep/frame/RK.h"

// The three differ in the colour's own depth; each writes to a world of any depth, converting the colour once
// and storing it as it is, straight or premultiplied. A null colour is transparent black. A null rectangle is
// the whole world; one given upside down means the same area, and what lies outside the world is cut off.
// `effect_ref` is not used. Only data, size and depth of the record are read. 0, or 3 with a report and no
// pixel touched: a world of unknown depth, a null world, a world with null data.
RK_API RK_Long RK_Fill(RK_EffectRef effect_ref, const RK_Pixel8* color, const GEO_Rect* rect,
                       RK_LayerDef* world);
RK_API RK_Long RK_Fill16(RK_EffectRef effect_ref, const RK_Pixel16* color, const GEO_Rect* rect,
                         RK_LayerDef* world);
// From float, colour is clamped and alpha is not: an alpha of 2.0 at 16 bits is stored as the low bits of
// 65536, 0.
RK_API RK_Long RK_FillFloat(RK_EffectRef effect_ref, const RK_PixelFloat* color, const GEO_Rect* rect,
                            RK_LayerDef* world);

#endif
