// The generic pixel pass: a function called for every pixel of a rectangle, rows top to bottom, pixels left to right,
// all on the calling thread.
#ifndef RK_ITERATE_H
#define RK_ITERATE_H

#include "RK/indep/frame/RK.h"

// Common to the passes over pixels
//   effect_data, progress_base, progress_final
//                After row k of the pass (from 0), if progress_final is not 0 and the effect has a progress function,
//                that gets progress_base + 1 + k (wrapping at 32 bits) and progress_final. 517 ends the pass.
//                effect_data may be null.
//   src          May be null: then the pixel of `dst` is both in and out, at one address. Otherwise of `dst`'s depth.
//   rect         In `dst`'s coordinates; null: the whole of `dst`. Cut to `dst`, and to `src` where that is told.
//   result       0, the first non-zero result of a pixel function, 517, or 3 with a report. What was written stays.
//                Kept: another result of the progress function stands until a pixel function's 0 takes its place, so
//                only that of the last row comes back.
// 3 with a report, before anything is called: null `dst`, null `pixel_fn`, null data in `dst` or in a given `src`,
// unequal depths, unknown depth. An empty area gives 0.

// Cut to both worlds. An empty range of columns makes no pixel call but still reports each row's progress.
RK_API RK_Long RK_Iterate(RK_EffectData* effect_data, RK_Long progress_base, RK_Long progress_final, RK_LayerDef* src,
                          const GEO_Rect* rect, void* refcon, RK_PixelFunc* pixel_fn, RK_LayerDef* dst);

// With `src` placed at `origin` in `dst`, null for 0, 0; cut to both. Without `src` the origin is not read.
RK_API RK_Long RK_IterateOrigin(RK_EffectData* effect_data, RK_Long progress_base, RK_Long progress_final,
                                RK_LayerDef* src, const GEO_Rect* rect, const Point* origin, void* refcon,
                                RK_PixelFunc* pixel_fn, RK_LayerDef* dst);

// Each channel through its table of 256; a null table changes nothing. Worlds with bit 0 of world_flags (16 bits) give
// 3 with a report. Kept: no other depth is told apart, so a column is 4 bytes, and in a float world the first quarter
// of each row changes byte by byte.
RK_API RK_Long RK_IterateLUT(RK_EffectData* effect_data, RK_Long progress_base, RK_Long progress_final,
                             RK_LayerDef* src, const GEO_Rect* rect, const uint8_t* a_lut, const uint8_t* r_lut,
                             const uint8_t* g_lut, const uint8_t* b_lut, RK_LayerDef* dst);

// fn(refcon, thread, i, iterations) for i in 0..iterations - 1 until one is not 0, which is the result. The slot's
// body may be a module's that spreads the calls over threads. -1 iterations is one call with i 0 of 1; other counts
// below 1 are none. A null fn is reported and gives 3.
RK_API RK_Long RK_IterateGeneric(RK_Long iterations, void* refcon, RK_GenericFunc* fn);

// ---- The default bodies behind the slots ----------------------------------------------------------------

RK_API RK_Long RK_Iterate_Static(RK_EffectData* effect_data, RK_Long progress_base, RK_Long progress_final,
                                 RK_LayerDef* src, const GEO_Rect* rect, void* refcon, RK_PixelFunc* pixel_fn,
                                 RK_LayerDef* dst);
RK_API RK_Long RK_IterateOrigin_Static(RK_EffectData* effect_data, RK_Long progress_base, RK_Long progress_final,
                                       RK_LayerDef* src, const GEO_Rect* rect, const Point* origin, void* refcon,
                                       RK_PixelFunc* pixel_fn, RK_LayerDef* dst);
// Cut to `dst` only: where `src` has no pixel, `in` is one of zeros. Reached through its slot alone.
RK_API RK_Long RK_IterateOriginUnclipped_Static(RK_EffectData* effect_data, RK_Long progress_base,
                                                RK_Long progress_final, RK_LayerDef* src, const GEO_Rect* rect,
                                                const Point* origin, void* refcon, RK_PixelFunc* pixel_fn,
                                                RK_LayerDef* dst);
RK_API RK_Long RK_IterateLUT_Static(RK_EffectData* effect_data, RK_Long progress_base, RK_Long progress_final,
                                    RK_LayerDef* src, const GEO_Rect* rect, const uint8_t* a_lut,
                                    const uint8_t* r_lut, const uint8_t* g_lut, const uint8_t* b_lut,
                                    RK_LayerDef* dst);
// Calls in sequence, always as thread 0.
RK_API RK_Long RK_IterateGeneric_Static(RK_Long iterations, void* refcon, RK_GenericFunc* fn);

#endif
