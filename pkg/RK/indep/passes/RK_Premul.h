// Whole worlds and rows between straight and premultiplied colour.
//
// `effect_ref` is not used. `forward` non-zero premultiplies, zero unmultiplies. A rectangle that is null
// means the whole world. A result of 3 for a null world or row comes with the bad-parameter report.
#ifndef RK_PREMUL_H
#define RK_PREMUL_H

#include "RK/indep/frame/RK.h"

// ---- Against black, in place ----------------------------------------------------------------------------

// At any depth; unmultiplying zeroes pixels of alpha 0. The rectangle is not clipped and must lie inside the
// world; without width or height nothing happens. 0, or 3 for an unknown depth (reported).
RK_API RK_Long RK_Premul(RK_EffectRef effect_ref, RK_Long forward, RK_LayerDef* world);
RK_API RK_Long RK_PremulRect(RK_EffectRef effect_ref, RK_Long forward, const GEO_Rect* rect,
                             RK_LayerDef* world);
// The default body behind both.
RK_API RK_Long RK_PremulRect_S(RK_EffectRef effect_ref, RK_Long forward, const GEO_Rect* rect,
                               RK_LayerDef* world);

// ---- Against a colour, from src to dst ------------------------------------------------------------------

// The colour, null for black, is converted to the worlds' depth; its alpha is not read. `src` and `dst` may
// be one world. Pixels at the same place correspond; a rectangle whose left lies outside either world does
// nothing, and otherwise what lies outside is left out. Unmultiplying copies pixels of alpha 0. At 8 and 16
// bits a colour below the matte's share counts as that share. 0, or 3 (reported) for worlds of unequal or
// unknown depth, null worlds or null pixels.
RK_API RK_Long RK_PremulColor(RK_EffectRef effect_ref, RK_LayerDef* src, const RK_Pixel8* color,
                              RK_Long forward, RK_LayerDef* dst);
RK_API RK_Long RK_PremulColorRect(RK_EffectRef effect_ref, RK_LayerDef* src, const RK_Pixel8* color,
                                  RK_Long forward, const GEO_Rect* rect, RK_LayerDef* dst);
RK_API RK_Long RK_PremulColor16(RK_EffectRef effect_ref, RK_LayerDef* src, const RK_Pixel16* color,
                                RK_Long forward, RK_LayerDef* dst);
RK_API RK_Long RK_PremulColorRect16(RK_EffectRef effect_ref, RK_LayerDef* src, const RK_Pixel16* color,
                                    RK_Long forward, const GEO_Rect* rect, RK_LayerDef* dst);
RK_API RK_Long RK_PremulColorFloat(RK_EffectRef effect_ref, RK_LayerDef* src, const RK_PixelFloat* color,
                                   RK_Long forward, RK_LayerDef* dst);
RK_API RK_Long RK_PremulColorRectFloat(RK_EffectRef effect_ref, RK_LayerDef* src, const RK_PixelFloat* color,
                                       RK_Long forward, const GEO_Rect* rect, RK_LayerDef* dst);

// ---- 8-bit rows, against black --------------------------------------------------------------------------

// `src` null, or equal to `dst`: in place. Only in place does unmultiplying zero the pixels of alpha 0; from
// row to row their colours become 255. A count below 1 does nothing.
RK_API RK_Long RK_BlackMatte(RK_EffectRef effect_ref, RK_Long count, const RK_Pixel8* src, RK_Pixel8* dst);
RK_API RK_Long RK_DeBlackMatte(RK_EffectRef effect_ref, RK_Long count, const RK_Pixel8* src, RK_Pixel8* dst);

// In place. A BGRA pixel is four bytes: blue, green, red, alpha. Pixels of alpha 0 become zero, but for
// RK_BlackMatteARGB only in their colour, which is the same.
RK_API RK_Long RK_BlackMatteARGB(RK_EffectRef effect_ref, RK_Long count, RK_Pixel8* row);
RK_API RK_Long RK_DeBlackMatteARGB(RK_EffectRef effect_ref, RK_Long count, RK_Pixel8* row);
RK_API RK_Long RK_BlackMatteBGRA(RK_EffectRef effect_ref, RK_Long count, uint8_t* row);
RK_API RK_Long RK_DeBlackMatteBGRA(RK_EffectRef effect_ref, RK_Long count, uint8_t* row);

// ---- The matte of a premultiplied 8-bit world -----------------------------------------------------------

// Moves a world that is premultiplied against black to the colour's matte, or back. Null counts as black, and
// black changes nothing. Sums wrap: backward, the world must really be premultiplied against that colour. 0,
// or 3 for another depth or a null world (reported).
RK_API RK_Long RK_MatteBlackToMatteColorARGB(RK_LayerDef* world, const RK_Pixel8* color, RK_Long forward);
// The same on pixels whose alpha comes last. `color` is an RK_Pixel8 all the same.
RK_API RK_Long RK_MatteBlackToMatteColorBGRA(RK_LayerDef* world, const RK_Pixel8* color, RK_Long forward);

#endif
