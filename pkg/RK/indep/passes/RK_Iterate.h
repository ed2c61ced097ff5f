// The generic pixel pass: a function called for every pixel of a rectangle, rows top to bottom, pixels left
// to right, all on the calling thread.
#ifndef RK_ITERATE_H
#define RK_ITERATE_H

#include "RK/indep/frame/RK.h"

// Common to the passes over pixels:
//
// After row k of the pass, from 0, if progress_final is not 0 and the effect has a progress function, that
// gets progress_base + 1 + k (wrapping at 32 bits) and progress_final. 517 ends the pass. effect_data may be
// null.
//
// `src` may be null: then the pixel of `dst` is both in and out, at one address. Otherwise it has `dst`'s
// depth. `rect` is in `dst`'s coordinates; null is the whole of `dst`. It is cut to `dst`, and to `src` where
// told.
//
// The result is 0, also for an empty area, or the first non-zero result of a pixel function, or 517. What was
// written stays. 3 with a report, before anything is called: null `dst`, null `pixel_fn`, null data in `dst`
// or in a given `src`, unequal depths, an unknown depth.

// Cut to both worlds. An empty range of columns makes no pixel call but still reports each row's progress.
RK_API RK_Long RK_Iterate(RK_EffectData* effect_data, RK_Long progress_base, RK_Long progress_final,
                          RK_LayerDef* src, const GEO_Rect* rect, void* refcon, RK_PixelFunc* pixel_fn,
                          RK_LayerDef* dst);

// With `src` placed at `origin` in `dst`, null for 0, 0; cut to both. Without `src` the origin is not read.
RK_API RK_Long RK_IterateOrigin(RK_EffectData* effect_data, RK_Long progress_base, RK_Long progress_final,
                                RK_LayerDef* src, const GEO_Rect* rect, const Point* origin, void* refcon,
                                RK_PixelFunc* pixel_fn, RK_LayerDef* dst);

// Each channel through its table of 256; a null table changes nothing. Worlds with bit 0 of world_flags (16
// bits) give 3 with a report. No other depth is told apart: a column is 4 bytes, and in a float world the
// first quarter of each row changes byte by byte. The last row's progress result is the pass's.
RK_API RK_Long RK_IterateLUT(RK_EffectData* effect_data, RK_Long progress_base, RK_Long progress_final,
                             RK_LayerDef* src, const GEO_Rect* rect, const uint8_t* a_lut,
                             const uint8_t* r_lut, const uint8_t* g_lut, const uint8_t* b_lut,
                             RK_LayerDef* dst);

// fn(refcon, thread, i, iterations) for i in 0..iterations - 1 until one is not 0, which is the result. The
// slot's body may be a module's that spreads the calls over threads. -1 iterations is one call with i 0 of 1;
// other counts below 1 are none. A null fn is reported and gives 3.
RK_API RK_Long RK_IterateGeneric(RK_Long iterations, void* refcon, RK_GenericFunc* fn);

// ---- The default bodies behind the slots ----------------------------------------------------------------

RK_API RK_Long RK_Iterate_Static(RK_EffectData* effect_data, RK_Long progress_base, RK_Long progress_final,
                                 RK_LayerDef* src, const GEO_Rect* rect, void* refcon, RK_PixelFunc* pixel_fn,
                                 RK_LayerDef* dst);
RK_API RK_Long RK_IterateOrigin_Static(RK_EffectData* effect_data, RK_Long progress_base,
                                       RK_Long progress_final, RK_LayerDef* src, const GEO_Rect* rect,
                                       const Point* origin, void* refcon, RK_PixelFunc* pixel_fn,
                                       RK_LayerDef* dst);
// Cut to `dst` only: where `src` has no pixel, `in` is one of zeros. Reached through its slot alone.
RK_API RK_Long RK_IterateOriginUnclipped_Static(RK_EffectData* effect_data, RK_Long progress_base,
                                                RK_Long progress_final, RK_LayerDef* src,
                                                const GEO_Rect* rect, const Point* origin, void* refcon,
                                                RK_PixelFunc* pixel_fn, RK_LayerDef* dst);
RK_API RK_Long RK_IterateLUT_Static(RK_EffectData* effect_data, RK_Long progress_base, RK_Long progress_final,
                                    RK_LayerDef* src, const GEO_Rect* rect, const uint8_t* a_lut,
                                    const uint8_t* r_lut, const uint8_t* g_lut, const uint8_t* b_lut,
                                    RK_LayerDef* dst);
// Calls in sequence, always as thread 0.
RK_API RK_Long RK_IterateGeneric_Static(RK_Long iterations, void* refcon, RK_GenericFunc* fn);

#endif
