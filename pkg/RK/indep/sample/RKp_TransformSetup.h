// What a transform decides before its first row: where it draws, and how it walks through the source.
#ifndef RKP_TRANSFORM_SETUP_H
#define RKP_TRANSFORM_SETUP_H

#include "RK/indep/sample/RK_SampleRow.h"

// ---- The question ---------------------------------------------------------------------------------------

struct RKp_TransformJob {
    int32_t src_width, src_height, dst_width, dst_height;  // 0 for worlds without pixels
    GEO_LRect dest;                                        // as asked, not clipped
    bool has_mask_rect;                                    // a mask that is not inverted limits the drawing
    GEO_LRect mask_rect;
    bool best, src2dst, stencil;
    const GEO_Matrix3* matrices;
    int64_t matrix_count;  // at least 1
};

// ---- The answer -----------------------------------------------------------------------------------------

enum class RKp_TransformPath {
    Nothing,
    Singular,      // fails with 1
    ClearStencil,  // nothing of the source survives: clear `dest`
    Transfer,      // a translation: RK_TransferRect
    AtRest,
    LinearMotion,
    GeneralMotion
};

// One matrix as the scans walk through it. 16.16; positions and steps wrap at 32 bits.
struct RKp_Walk {
    int32_t x, y;            // source position of the first pixel of the row
    int32_t dx, dy;          // per pixel
    int32_t row_dx, row_dy;  // per row
    int32_t x_radius, y_radius, area;

    bool reduces() const { return x_radius > RK_kHalfPixel || y_radius > RK_kHalfPixel; }
    void nextRow() {
        x = static_cast<int32_t>(static_cast<uint32_t>(x) + static_cast<uint32_t>(row_dx));
        y = static_cast<int32_t>(static_cast<uint32_t>(y) + static_cast<uint32_t>(row_dy));
    }
    RK_SampleWalk line() const { return {x, y, dx, dy}; }
};

struct RKp_TransformSetup {
    RKp_TransformPath path;
    GEO_LRect clip;      // `dest` inside the destination
    GEO_LRect work;      // what is drawn; inside `clip`
    int32_t dx, dy;      // Transfer: from source to destination
    RKp_Walk first, last;
    int32_t progress_mask;  // progress is told after rows whose number has none of these bits
};

RKp_TransformSetup RKp_SetUpTransform(const RKp_TransformJob& job, bool field);

// What a transform will affect: the working rectangle, or `dest` inside the destination where the matrices do not invert
// or the mode is a stencil. False, and nothing is written, when `dest`, destination and mask have nothing in common.
bool RKp_AffectedRect(const RKp_TransformJob& job, GEO_LRect* affected);

// The walk of one matrix of a GeneralMotion, from the working rectangle's corner. 1, and nothing is written, when it does
// not invert.
RK_Long RKp_MakeWalk(const GEO_Matrix3& matrix, bool src2dst, const GEO_LRect& work, RKp_Walk* walk);

// a intersected with b; empty rectangles come out as 0, 0, 0, 0.
GEO_LRect RKp_Intersect(const GEO_LRect& a, const GEO_LRect& b);
inline bool RKp_IsEmpty(const GEO_LRect& r) { return r.left >= r.right || r.top >= r.bottom; }

#endif
