// Single channels between worlds and buffers of their own.
#ifndef RK_PLANES_H
#define RK_PLANES_H

#include "RK/indep/frame/RK.h"

struct RK_Chunk;

// Which channels: their values stand in this order, one byte each, for each pixel.
constexpr uint32_t RK_kPlaneAlpha = 1;
constexpr uint32_t RK_kPlaneRed = 2;
constexpr uint32_t RK_kPlaneGreen = 4;
constexpr uint32_t RK_kPlaneBlue = 8;

// Makes a handle that holds the masked channels of an 8-bit world, row after row of `*result_rowbytes`: room
// for 8 pixels more than the width, made even. The caller frees the handle with KIT_FreeHandle. A mask of 0
// gives rows of no planes. The depth is not asked: the rows of a deeper world are read as if they were of 8
// bits. 0; 3 (reported) for null arguments, null pixels and a mask above 15, nothing stored; 4 for memory,
// with null and 0 stored.
RK_API RK_Long RK_ExtractPlanes(RK_EffectRef effect_ref, RK_LayerDef* world, uint32_t mask,
                                char*** result_handle, int32_t* result_rowbytes);
// Writes the masked channels of all pixels of an 8-bit world from such a buffer, whose rows lie `rowbytes`
// apart; the other channels stay. 0, or 3 (reported) for null arguments, an empty handle and a mask above 15.
RK_API RK_Long RK_InsertPlanes(RK_EffectRef effect_ref, char** handle, RK_Long rowbytes, uint32_t mask,
                               RK_LayerDef* world);

// Copies a rectangle of one locked chunk to a rectangle of another, the nearest values where their sizes
// differ, as RK_CopyBits_Draft does with worlds; null is the whole chunk. A copied pixel has the bytes of the
// smaller of the two chunks' pixels; the rest of the destination's stays. `progress` is not read. 0, or 3
// (reported twice) for null chunks and chunks that are not locked.
RK_API RK_Long RK_ChannelCopy(RK_ProgressInfo* progress, const RK_Chunk* src_chunk, RK_Chunk* dst_chunk,
                              const GEO_Rect* src_rect, const GEO_Rect* dst_rect);

#endif
