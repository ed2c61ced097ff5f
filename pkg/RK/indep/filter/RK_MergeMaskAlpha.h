// A mask multiplied into the alpha of a world.
#ifndef RK_MERGE_MASK_ALPHA_H
#define RK_MERGE_MASK_ALPHA_H

#include "RK/indep/filter/RK_UnoBuffer.h"
#include "RK/indep/world/RK_World.h"

// Multiplies the alpha of `world` by `mask`, whose sample (0, 0) lies at pixel (x, y), in the part of
// `mask_area` (null: the whole world) that lies in the world and in `area` (null: all of it), both in world
// coordinates. Where the mask has no sample there, alpha becomes 0. Colour, and all pixels outside that part,
// stay.
//
// Masks of 8 bits go on worlds of every depth, those of 16 bits on worlds of 16 bits and float. Throws 3,
// reported and nothing written, for another pair and for a null world; and what `progress` (null: none)
// answers when its abort_func is asked before a row, rows done staying done. A wrong magic in the mask is
// reported and the merge goes on; with a null mask, or one without a store, it is reported and nothing is
// written.
RK_API void RK_MergeMaskAlpha(RK_ProgressInfo* progress, int16_t x, int16_t y, const GEO_Rect* area,
                              const RK_UnoBuffer* mask, const GEO_Rect* mask_area, RK_World* world);

#endif
