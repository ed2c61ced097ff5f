// Copies of a rectangle of one world to a rectangle of another, scaled where their sizes differ.
#ifndef RK_COPY_BITS_H
#define RK_COPY_BITS_H

#include "RK/indep/frame/RK.h"

template <class P>
class RK_WorldX;

// Common to the copies
//   progress            Null for none; only the sampled copies and the one through a matrix ask it: its abort_func,
//                       before every 64th row that is drawn, from the first on. A non-zero answer ends the copy and is
//                       the result.
//   src_rect, dst_rect  Null: the whole world. Empty or reversed ones, and ones outside their world, draw nothing.
//   result              0; 3 with a report for null worlds or pixels, unknown depths, or depths that the copy does not
//                       join. Nothing is drawn before these tests. Source and destination are distinct worlds.

// Draft: the nearest pixels, between any two depths. Parts outside the worlds are cut, and the other rectangle with
// them in proportion.
RK_API RK_Long RK_CopyBits_Draft(RK_ProgressInfo* progress, const RK_LayerDef* src, RK_LayerDef* dst,
                                 const GEO_Rect* src_rect, const GEO_Rect* dst_rect);
// High quality: bilinear, or the mean of each footprint where an axis shrinks; one depth. Pixels beside the source
// rectangle take part, the world's edge fades. Equal sizes are copied as they are.
RK_API RK_Long RK_CopyBits_HQ_Straight(RK_ProgressInfo* progress, const RK_LayerDef* src, RK_LayerDef* dst,
                                       const GEO_Rect* src_rect, const GEO_Rect* dst_rect);
// For premultiplied pixels at 8 bits. Kept: the deeper bodies sample as the straight ones do.
RK_API RK_Long RK_CopyBits_HQ_Premul(RK_ProgressInfo* progress, const RK_LayerDef* src, RK_LayerDef* dst,
                                     const GEO_Rect* src_rect, const GEO_Rect* dst_rect);

// The default bodies behind slots 23, 24 and 25.
RK_API RK_Long RK_CopyBits_Draft_Static(RK_ProgressInfo* progress, const RK_LayerDef* src, RK_LayerDef* dst,
                                        const GEO_Rect* src_rect, const GEO_Rect* dst_rect);
RK_API RK_Long RK_CopyBits_HQ_Straight_Static(RK_ProgressInfo* progress, const RK_LayerDef* src, RK_LayerDef* dst,
                                              const GEO_Rect* src_rect, const GEO_Rect* dst_rect);
RK_API RK_Long RK_CopyBits_HQ_Premul_Static(RK_ProgressInfo* progress, const RK_LayerDef* src, RK_LayerDef* dst,
                                            const GEO_Rect* src_rect, const GEO_Rect* dst_rect);

// ---- Between host bitmaps of 32, 64 or 128 bits per pixel; another gives 3 with a report -----------------

// Draft, and then the destination's channel order: where the orders differ, a 32-bit destination's rectangle is swapped
// to its own; with any other the difference is reported and gives 5.
RK_API RK_Long RK_WorldCopy(RK_ProgressInfo* progress, RAS_World** src, RAS_World** dst, const GEO_Rect* src_rect,
                            const GEO_Rect* dst_rect);
RK_API RK_Long RK_WorldCopy_HQ(RK_ProgressInfo* progress, RAS_World** src, RAS_World** dst, const GEO_Rect* src_rect,
                               const GEO_Rect* dst_rect);
RK_API RK_Long RK_WorldCopy_HQ_Straight(RK_ProgressInfo* progress, RAS_World** src, RAS_World** dst,
                                        const GEO_Rect* src_rect, const GEO_Rect* dst_rect);
RK_API RK_Long RK_WorldCopy_HQ_Premul(RK_ProgressInfo* progress, RAS_World** src, RAS_World** dst,
                                      const GEO_Rect* src_rect, const GEO_Rect* dst_rect);
// Past the slots, straight to the default bodies.
RK_API RK_Long RK_WorldCopy_Static(RK_ProgressInfo* progress, RAS_World** src, RAS_World** dst,
                                   const GEO_Rect* src_rect, const GEO_Rect* dst_rect);
RK_API RK_Long RK_WorldCopy_HQ_Static(RK_ProgressInfo* progress, RAS_World** src, RAS_World** dst,
                                      const GEO_Rect* src_rect, const GEO_Rect* dst_rect);
RK_API RK_Long RK_WorldCopy_HQ_Straight_Static(RK_ProgressInfo* progress, RAS_World** src, RAS_World** dst,
                                               const GEO_Rect* src_rect, const GEO_Rect* dst_rect);

// ---- With a geometry of their own ------------------------------------------------------------------------

// Draft through a matrix: every pixel of `dst_rect` whose centre comes from a pixel of `src_rect` takes it; the others
// stay. The matrix goes from source to destination when `src2dst` is non-zero and is inverted; otherwise it goes the
// other way. One depth. A matrix that does not invert draws nothing and gives 0.
RK_API RK_Long RK_CopyBits3_LO_Straight(RK_ProgressInfo* progress, const RK_LayerDef* src, RK_LayerDef* dst,
                                        RK_Long src2dst, const GEO_Matrix3* matrix, const GEO_Rect* src_rect,
                                        const GEO_Rect* dst_rect);

// For showing a world of any depth: fills `rect` of an 8-bit world with opaque pixels. Destination pixel (x, y) of the
// rectangle shows source pixel origin + (x - left, y - top) * step, laid over a background that also shows where there
// is no source: squares of 8 by 8 of the colours `even` and `odd` when `checkered`, else `even` alone. A step below 1
// is a bad parameter. Float pixels become 8-bit ones as the processor record says: with SSE2 each channel is held to
// 0..255 and rounded to nearest, without it as everywhere. Throws nothing; 3 with a report for an unknown depth, null worlds or null pixels, 4 for memory.
RK_API RK_Long RK_SpecialCasePixelBlit(const RK_World* src, const GEO_LPoint& origin, bool checkered,
                                       const GEO_LPoint& step, const RK_PixelFloat& even, const RK_PixelFloat& odd,
                                       const GEO_Rect& rect, RK_WorldX<RK_Pixel8>* dst);

#endif
