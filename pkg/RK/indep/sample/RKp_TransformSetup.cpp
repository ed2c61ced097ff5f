#include "RK/indep/sample/RKp_TransformSetup.h"

#include <algorithm>
#include <cmath>

namespace {

// A matrix both ways.
struct Pair {
    GEO_Matrix3 src2dst, dst2src;
    bool inverts;
    const GEO_Matrix3& caller(bool is_src2dst) const { return is_src2dst ? src2dst : dst2src; }
};

Pair makePair(const GEO_Matrix3& matrix, bool is_src2dst) {
    Pair pair;
    GEO_Matrix3& inverse = is_src2dst ? pair.dst2src : pair.src2dst;
    (is_src2dst ? pair.src2dst : pair.dst2src) = matrix;
    inverse = matrix;  // read only where it inverts, or for the lengths of one that does not
    pair.inverts = GEO_InverseMatrixQuiet(&matrix, &inverse) == 0;
    return pair;
}

int32_t fixed(double v) { return GEO_RoundDouble(v * 65536); }
int32_t clampedFixed(double v) {
    return std::isnan(v) ? fixed(v) : fixed(std::clamp(v, -32767.0, 32766.0));
}

// How long a source pixel's two sides are in the destination.
struct Lengths {
    double x, y;
    bool degenerate() const { return fixed(x) == 0 || fixed(y) == 0; }
};
Lengths lengthsOf(const Pair& pair) {
    const auto& m = pair.src2dst.m;
    return {RK_Hypot(m[0][0], m[0][1]), RK_Hypot(m[1][0], m[1][1])};
}

RKp_Walk makeWalk(const Pair& pair, const GEO_LRect& work) {
    RKp_Walk walk;
    GEO_Vector2T<double> corner = {work.left + 0.5, work.top + 0.5};
    GEO_TransformFloatPoints(&pair.dst2src, 1, &corner, &corner);
    walk.x = clampedFixed(corner.x - 0.5);
    walk.y = clampedFixed(corner.y - 0.5);

    // Steps are never divided by the third coordinate: a perspective is linearised at the corner.
    GEO_Vector3 pixel = {1, 0, 0}, row = {0, 1, 0};
    GEO_TransformVector3(&pair.dst2src, &pixel, &pixel);
    GEO_TransformVector3(&pair.dst2src, &row, &row);
    walk.dx = clampedFixed(pixel.x);
    walk.dy = clampedFixed(pixel.y);
    walk.row_dx = clampedFixed(row.x);
    walk.row_dy = clampedFixed(row.y);

    const Lengths lengths = lengthsOf(pair);
    const double rx = std::min(0.5 / lengths.x, 127.0), ry = std::min(0.5 / lengths.y, 127.0);
    walk.x_radius = fixed(rx);
    walk.y_radius = fixed(ry);
    const double area = std::min(rx * ry * 4 * 65536, 2147483647.0);
    walk.area = area >= 0 ? static_cast<int32_t>(area) : INT32_MIN;  // an inverse may hold what is not a number
    return walk;
}

int32_t edge(double v) {
    return std::isnan(v) ? INT32_MIN : GEO_RoundDouble(std::clamp(v, -2147483648.0, 2147483647.0));
}
int32_t moved(int32_t edge, int32_t by) {
    return static_cast<int32_t>(std::clamp<int64_t>(int64_t{edge} + by, INT32_MIN, INT32_MAX));
}

// Where the source comes to lie, grown by a pixel.
GEO_LRect reach(const GEO_Matrix3& src2dst, const RKp_TransformJob& job) {
    GEO_FloatRect r = {0, 0, static_cast<double>(job.src_width), static_cast<double>(job.src_height)};
    GEO_TransformFloatRect(&src2dst, &r, &r);
    return {moved(edge(r.left), -1), moved(edge(r.top), -1), moved(edge(r.right), 1), moved(edge(r.bottom), 1)};
}

GEO_LRect workingRect(const RKp_TransformJob& job, const GEO_LRect& limit) {
    GEO_LRect work = {0, 0, 0, 0};
    for (int64_t i = 0; i < job.matrix_count; ++i) {
        GEO_Matrix3 src2dst = job.matrices[i];
        if (!job.src2dst && GEO_InverseMatrixQuiet(&src2dst, &src2dst) != 0) continue;
        const GEO_LRect part = RKp_Intersect(reach(src2dst, job), limit);
        if (RKp_IsEmpty(part)) continue;
        if (RKp_IsEmpty(work)) {
            work = part;
        } else {
            work = {std::min(work.left, part.left), std::min(work.top, part.top), std::max(work.right, part.right),
                    std::max(work.bottom, part.bottom)};
        }
    }
    return work;
}

// ---- Linear or general motion ----------------------------------------------------------------------------

bool differ(double a, double b) {
    double hi = std::max(a, b), lo = std::min(a, b);
    if (hi < 0) {
        const double swapped = -lo;
        lo = -hi;
        hi = swapped;
    }
    return hi - lo >= std::max(std::fabs(hi) * 1e-12, 1.000088900582341e-12);
}

bool directionsDiffer(const Pair& first, const Pair& last, const GEO_Vector3& axis) {
    const auto direction = [&axis](const GEO_Matrix3& m) {
        GEO_Vector3 v;
        GEO_TransformVector3(&m, &axis, &v);
        const double length = RK_Hypot(v.x, v.y);
        return length == 0 ? GEO_Vector2T<double>{0, 0} : GEO_Vector2T<double>{v.x / length, v.y / length};
    };
    const auto a = direction(first.dst2src), b = direction(last.dst2src);
    return differ(a.x, b.x) || differ(a.y, b.y);
}

// Does the origin move by unequal steps through the series?
bool stepsDiffer(const RKp_TransformJob& job) {
    const auto at = [&job](int64_t i) { return job.matrices[i].TransformPointAndDivide({0, 0}); };
    if (job.matrix_count < 3) return false;
    auto previous = at(1);
    const auto origin = at(0);
    const GEO_Vector2T<double> step = {previous.x - origin.x, previous.y - origin.y};
    for (int64_t i = 2; i < job.matrix_count; ++i) {
        const auto now = at(i);
        if (std::fabs(now.x - previous.x - step.x) >= 0.9 || std::fabs(now.y - previous.y - step.y) >= 0.9) return true;
        previous = now;
    }
    return false;
}

bool allInvert(const RKp_TransformJob& job) {
    for (int64_t i = 0; i < job.matrix_count; ++i)
        if (!makePair(job.matrices[i], job.src2dst).inverts) return false;
    return true;
}

int32_t progressMask(const RKp_TransformJob& job, bool field) {
    const int32_t mask = job.matrix_count == 1 ? (job.best ? 31 : 63) : 7;
    return field ? mask * 2 + 1 : mask;
}

}  // namespace

GEO_LRect RKp_Intersect(const GEO_LRect& a, const GEO_LRect& b) {
    const GEO_LRect both = {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
                            std::min(a.bottom, b.bottom)};
    return RKp_IsEmpty(both) ? GEO_LRect{0, 0, 0, 0} : both;
}

RK_Long RKp_MakeWalk(const GEO_Matrix3& matrix, bool src2dst, const GEO_LRect& work, RKp_Walk* walk) {
    const Pair pair = makePair(matrix, src2dst);
    if (!pair.inverts) return 1;
    *walk = makeWalk(pair, work);
    return RK_kOK;
}

bool RKp_AffectedRect(const RKp_TransformJob& job, GEO_LRect* affected) {
    const bool inverts = makePair(job.matrices[0], job.src2dst).inverts &&
                         makePair(job.matrices[job.matrix_count - 1], job.src2dst).inverts;
    const GEO_LRect clip = RKp_Intersect(job.dest, {0, 0, job.dst_width, job.dst_height});
    const GEO_LRect limit = job.has_mask_rect ? RKp_Intersect(clip, job.mask_rect) : clip;
    if (inverts && RKp_IsEmpty(limit)) return false;
    *affected = inverts && !job.stencil ? workingRect(job, limit) : clip;
    return true;
}

RKp_TransformSetup RKp_SetUpTransform(const RKp_TransformJob& job, bool field) {
    RKp_TransformSetup setup{};
    setup.path = RKp_TransformPath::Nothing;
    setup.progress_mask = progressMask(job, field);
    setup.clip = RKp_Intersect(job.dest, {0, 0, job.dst_width, job.dst_height});

    const GEO_Matrix3 &first_matrix = job.matrices[0], &last_matrix = job.matrices[job.matrix_count - 1];
    const bool motion = job.matrix_count > 1 && !GEO_EqualMatrixWithinEpsilon(&first_matrix, &last_matrix, 1e-12);
    const Pair first = makePair(first_matrix, job.src2dst);
    const Pair last = motion ? makePair(last_matrix, job.src2dst) : first;
    const bool inverts = first.inverts && last.inverts;

    const GEO_LRect limit = job.has_mask_rect ? RKp_Intersect(setup.clip, job.mask_rect) : setup.clip;
    if (inverts && RKp_IsEmpty(limit)) return setup;
    if (lengthsOf(first).degenerate() || lengthsOf(last).degenerate()) {
        if (job.stencil) setup.path = RKp_TransformPath::ClearStencil;
        return setup;
    }
    if (!inverts) return setup;
    setup.work = workingRect(job, limit);

    const auto& translation = first.src2dst.m[2];
    const int32_t fixed_x = fixed(translation[0]), fixed_y = fixed(translation[1]);
    const bool whole = ((fixed_x | fixed_y) & 0xFFFF) == 0;
    if (!motion && GEO_GetMatrixType(&first.src2dst) <= 1 && (!job.best || whole)) {
        setup.dx = static_cast<int32_t>((int64_t{fixed_x} + 0x8000) >> 16);
        setup.dy = static_cast<int32_t>((int64_t{fixed_y} + 0x8000) >> 16);
        if (!RKp_IsEmpty(setup.work)) setup.path = RKp_TransformPath::Transfer;
        return setup;
    }
    const bool general = motion && job.best &&
                         (directionsDiffer(first, last, {1, 0, 0}) || directionsDiffer(first, last, {0, 1, 0}) ||
                          stepsDiffer(job));
    if (RKp_IsEmpty(setup.work)) {
        // A series that needs all of its matrices fails before anything is cleared.
        if (general && !allInvert(job)) {
            setup.path = RKp_TransformPath::Singular;
        } else if (job.stencil) {
            setup.path = RKp_TransformPath::ClearStencil;
        }
        return setup;
    }
    setup.first = makeWalk(first, setup.work);
    setup.last = makeWalk(last, setup.work);
    setup.path = !motion   ? RKp_TransformPath::AtRest
                 : general ? RKp_TransformPath::GeneralMotion
                           : RKp_TransformPath::LinearMotion;
    return setup;
}
