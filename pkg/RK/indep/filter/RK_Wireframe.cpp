#include "RK/indep/filter/RK_Wireframe.h"

#include <algorithm>
#include <cstring>

#include "RK/host/SEQ.h"
#include "RK/host/SHIM.h"
#include "RK/indep/filter/RKp_LockedBitmap.h"
#include "RK/indep/frame/RKp_Report.h"

namespace {

RK_Long badParam() { return RKp_ReportBadParam(RKp_kSiteWireframe); }

// A list of points that is disposed of unless it is taken.
class Points {
  public:
    Points() { RKp_ThrowIf(SEQ_NewSized(sizeof(Point), 16, 16, &list_)); }
    ~Points() { SEQ_Dispose(list_); }
    Points(const Points&) = delete;
    Points& operator=(const Points&) = delete;

    int32_t Count() const { return SEQ_Count(list_); }
    void SetCount(int32_t count) { RKp_ThrowIf(SEQ_SetCount(list_, count)); }
    void Add(int32_t x, int32_t y) {
        const Point point = {static_cast<int16_t>(y), static_cast<int16_t>(x)};
        RKp_ThrowIf(SEQ_Insert(list_, &point));
    }
    void GiveTo(uint32_t flags, RK_Wireframe* out) {
        out->flags = flags;
        out->count = Count();
        out->points = list_;
        list_ = nullptr;
    }

  private:
    SEQ_List* list_ = nullptr;
};

// ---- Generation -----------------------------------------------------------------------------------------

// Whether alpha is one half or more.
bool covered(const RK_LayerDef& world, int32_t x, int32_t y) {
    const auto* row = static_cast<const char*>(world.data) + static_cast<ptrdiff_t>(y) * world.rowbytes;
    return reinterpret_cast<const RK_Pixel8*>(row)[x].alpha >= 0x80;
}

// Adds the corners, if wanted, and the grid's points; false as soon as they are too many.
bool addPoints(const RK_LayerDef& world, const GEO_Rect& area, int32_t step, int32_t max_points, bool corners,
               Points& points) {
    const auto fits = [&] { return points.Count() <= max_points; };
    if (corners) {
        points.Add(area.left, area.top);
        points.Add(area.right, area.top);
        points.Add(area.right, area.bottom);
        points.Add(area.left, area.bottom);
    }
    const int32_t h = std::max(step >> 1, 1), f = std::max(step - h, 1);
    for (int32_t y = area.top + step; y < area.bottom - step && fits(); y += step) {
        for (int32_t x = area.left + step; x < area.right - step && fits(); x += step) {
            if (covered(world, x - h, y) != covered(world, x + f, y) ||
                covered(world, x, y - h) != covered(world, x, y + f))
                points.Add(x, y);
        }
    }
    return fits();
}

void generate(const RK_LayerDef& world, const GEO_Rect* rect, int32_t step, int32_t max_points, bool corners,
              RK_Wireframe* out) {
    // A bitmap's size is 16 bits wide, and a step beyond that leaves no grid.
    GEO_Rect area = {0, 0, static_cast<int16_t>(world.height), static_cast<int16_t>(world.width)};
    if (rect != nullptr) GEO_SectRect(rect, &area, &area);
    step = std::clamp(step, 1, int32_t{INT16_MAX});
    Points points;
    while (!addPoints(world, area, step, max_points, corners, points)) {
        const bool grid = 2 * step < std::min(area.right - area.left, area.bottom - area.top);
        if (!grid) RKp_Throw(badParam());
        points.SetCount(0);
        ++step;
    }
    points.GiveTo(RK_kWireframeHasPoints, out);
}

// ---- Transformation -------------------------------------------------------------------------------------

bool agrees(const RK_Wireframe& wireframe) { return SEQ_Count(wireframe.points) == wireframe.count; }

// transform(count, points): in place.
template <class Transform>
RK_Long transformPoints(const RK_Wireframe* wireframe, RK_Wireframe* target, Transform&& transform) {
    if (wireframe == nullptr || target == nullptr || !agrees(*wireframe)) return badParam();
    return RKp_AtBorder([&]() -> RK_Long {
        if (target->points == nullptr && target->count == 0) {
            Points points;
            points.SetCount(wireframe->count);
            points.GiveTo(wireframe->flags, target);
        }
        if (target->count != wireframe->count) return RK_kWireframeCounts;
        if (!agrees(*target)) return badParam();
        if (target->count == 0) return RK_kOK;
        auto* moved = static_cast<Point*>(SEQ_Records(target->points));
        std::memmove(moved, SEQ_Records(wireframe->points),
                     static_cast<size_t>(target->count) * sizeof(Point));
        transform(target->count, moved);
        return RK_kOK;
    });
}

}  // namespace

RK_Long RK_AllocWireframe(int32_t count, uint32_t flags, RK_Wireframe* out) {
    if (out == nullptr) return badParam();
    *out = {};
    if (count < 0) return badParam();
    return RKp_AtBorder([&] {
        Points points;
        points.SetCount(count);
        points.GiveTo(flags, out);
    });
}

RK_Long RK_GenerateWireframe(RK_EffectRef, RAS_World** bitmap, int32_t step, int32_t max_points,
                             uint32_t flags, const GEO_Rect* rect, RK_Wireframe* out) {
    if (out == nullptr) return badParam();
    *out = {};
    if (!RKp_LockedBitmap::Takes(bitmap)) return badParam();
    return RKp_AtBorder([&] {
        const RKp_LockedBitmap pixels(bitmap);
        generate(pixels.Record(), rect, step, max_points, (flags & RK_kWireframeCorners) != 0, out);
    });
}

RK_Long RK_TransformWireframe2D(const RK_Wireframe* wireframe, const GEO_Matrix3* matrix,
                                RK_Wireframe* target) {
    if (matrix == nullptr) return badParam();
    return transformPoints(wireframe, target, [&](int32_t count, Point* points) {
        GEO_TransformPoints(matrix, count, points, points);
    });
}
RK_Long RK_TransformWireframe3D(const RK_Wireframe* wireframe, const GEO_Matrix4* matrix,
                                RK_Wireframe* target) {
    if (matrix == nullptr) return badParam();
    return transformPoints(wireframe, target, [&](int32_t count, Point* points) {
        GEO_3DTransform2DPoints(matrix, count, points, points);
    });
}

RK_Long RK_DrawWireframe(const RK_Wireframe* wireframe) {
    if (wireframe == nullptr) return badParam();
    if ((wireframe->flags & RK_kWireframeHasPoints) == 0) return RK_kOK;
    if (!agrees(*wireframe)) return badParam();
    for (int32_t i = wireframe->count; i-- > 0;) {
        Point point;
        if (const RK_Long error = SEQ_Get(wireframe->points, i, &point)) return error;
        MoveTo(point.h, point.v);
        Line(0, 0);
    }
    return RK_kOK;
}

RK_Long RK_DisposeWireframe(RK_Wireframe* wireframe) {
    if (wireframe == nullptr) return badParam();
    RK_Long first = RK_kOK;
    for (SEQ_List* list :
         {wireframe->points, wireframe->xform_points[0], wireframe->xform_points[1], wireframe->extra}) {
        const RK_Long error = list != nullptr ? SEQ_Dispose(list) : RK_kOK;
        if (first == RK_kOK) first = error;
    }
    *wireframe = {};
    return first;
}
