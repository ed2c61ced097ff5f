// Wireframes: a layer's outline as dots, for showing it while it is moved about.
#ifndef RK_WIREFRAME_H
#define RK_WIREFRAME_H

#include "RK/indep/frame/RK.h"

struct SEQ_List;

// A wireframe owns its lists. A clear record, all zero, is one without points.
struct RK_Wireframe {
    uint32_t flags;             // RK_kWireframeHasPoints
    int32_t count;              // points
    SEQ_List* points;           // of Point, in the pixels of the bitmap that they come from
    SEQ_List* xform_points[2];  // copies that the host keeps, moved to where the layer is shown; or null
    SEQ_List* extra;            // the host's own; or null
};
RK_ASSERT_OFFSET(RK_Wireframe, flags, 0, 0);
RK_ASSERT_OFFSET(RK_Wireframe, count, 4, 4);
RK_ASSERT_OFFSET(RK_Wireframe, points, 8, 8);
RK_ASSERT_OFFSET(RK_Wireframe, xform_points, 12, 16);
RK_ASSERT_OFFSET(RK_Wireframe, extra, 20, 32);
static_assert(sizeof(RK_Wireframe) == (sizeof(void*) == 4 ? 24 : 40), "RK_Wireframe has changed its size");

constexpr uint32_t RK_kWireframeHasPoints = 1;
// Of RK_GenerateWireframe: the area's four corners are points too.
constexpr uint32_t RK_kWireframeCorners = 0x10;
// Two wireframes that should have as many points have not.
constexpr RK_Long RK_kWireframeCounts = 52;

// All give 0; 3 with a report for a null argument (where null has no meaning) or a record whose list and
// count disagree; 4 for memory.

// Makes a wireframe of `count` points, all (0, 0), with these flags. `out` is filled whatever it held, and is
// clear after a failure. A negative count is a bad parameter.
RK_API RK_Long RK_AllocWireframe(int32_t count, uint32_t flags, RK_Wireframe* out);

// Makes the wireframe of a bitmap of 8 bits a channel, which is locked meanwhile: on a grid of `step` pixels
// (1 at least) within `rect` cut to the bitmap (null: all of it), the points about which alpha crosses one
// half from left to right or from above to below. With RK_kWireframeCorners in `flags` the area's corners
// come first, right and bottom exclusive. Where that makes more than `max_points` the grid is widened until
// it does not; 3 with a report when even the corners are too many. `out` is filled whatever it held, and is
// clear after a failure, which may be the host's in locking the bitmap. `effect_ref` is not used.
RK_API RK_Long RK_GenerateWireframe(RK_EffectRef effect_ref, RAS_World** bitmap, int32_t step,
                                    int32_t max_points, uint32_t flags, const GEO_Rect* rect,
                                    RK_Wireframe* out);

// Moves the points through a matrix into those of `target`, which may be the wireframe itself. A target
// without points is given them, and the wireframe's flags; one with another count gives 52. The target is
// untouched after a failure. Coordinates are rounded and held to 16 bits.
RK_API RK_Long RK_TransformWireframe2D(const RK_Wireframe* wireframe, const GEO_Matrix3* matrix,
                                       RK_Wireframe* target);
RK_API RK_Long RK_TransformWireframe3D(const RK_Wireframe* wireframe, const GEO_Matrix4* matrix,
                                       RK_Wireframe* target);

// Draws each point as a dot with the pen of the platform layer, the last one first. Nothing without
// RK_kWireframeHasPoints.
RK_API RK_Long RK_DrawWireframe(const RK_Wireframe* wireframe);

// Disposes of every list and clears the record; the first failure of the host's is the result.
RK_API RK_Long RK_DisposeWireframe(RK_Wireframe* wireframe);

#endif
