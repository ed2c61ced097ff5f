// The world transform once more: every pixel of every row on its own, with the host's geometry below it.
#ifndef TEST_PLAIN_TRANSFORM_H
#define TEST_PLAIN_TRANSFORM_H

#include "RK/host/GEO.h"
#include "RK/indep/sample/RK_TransformWorld.h"
#include "test/plain/PlainComposite.h"
#include "test/plain/PlainCopy.h"
#include "test/plain/PlainModes.h"

namespace plain {

// What a transform is asked for; worlds as records.
struct TransformCall {
    RK_ProgressInfo* progress;
    bool best;
    int field;
    const RK_LayerDef* src;
    RK_CompositeMode mode;
    const RK_Mask* mask;
    std::vector<GEO_Matrix3> matrices;
    bool src2dst;
    const GEO_Rect* dest_rect;
    bool sse2;
};

struct Edges {
    int64_t left, top, right, bottom;
    bool empty() const { return left >= right || top >= bottom; }
    bool holds(int64_t x, int64_t y) const { return x >= left && x < right && y >= top && y < bottom; }
};
inline Edges meet(const Edges& a, const Edges& b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}
inline Edges join(const Edges& a, const Edges& b) {
    if (a.empty()) return b;
    if (b.empty()) return a;
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
            std::max(a.bottom, b.bottom)};
}

inline int32_t wrap(int64_t v) { return static_cast<int32_t>(static_cast<uint32_t>(v)); }
inline int32_t fixed(double v) { return GEO_RoundDouble(std::min(std::max(v, -32767.0), 32766.0) * 65536); }

// One matrix both ways, its lengths and what the rows need of it.
struct Pose {
    GEO_Matrix3 to_dst, to_src;
    bool inverts;
    double sx, sy;
    GEO_Vector3 across, down;
    int32_t x, y, dx, dy, row_dx, row_dy, x_radius, y_radius;
    Pose(const GEO_Matrix3& m, bool src2dst) : to_dst(m), to_src(m), inverts(true) {
        inverts = GEO_InverseMatrixQuiet(&m, src2dst ? &to_src : &to_dst) == 0;
        const GEO_Matrix3& s = inverts ? to_dst : m;
        sx = std::sqrt(s.m[0][0] * s.m[0][0] + s.m[0][1] * s.m[0][1]);
        sy = std::sqrt(s.m[1][0] * s.m[1][0] + s.m[1][1] * s.m[1][1]);
    }
    bool degenerate() const { return GEO_RoundDouble(sx * 65536) == 0 || GEO_RoundDouble(sy * 65536) == 0; }
    void prepare(const Edges& working) {
        const GEO_Vector2T<double> corner = {static_cast<double>(working.left) + 0.5,
                                             static_cast<double>(working.top) + 0.5};
        GEO_Vector2T<double> at;
        GEO_TransformFloatPoints(&to_src, 1, &corner, &at);
        const GEO_Vector3 one_x = {1, 0, 0}, one_y = {0, 1, 0};
        GEO_TransformVector3(&to_src, &one_x, &across);
        GEO_TransformVector3(&to_src, &one_y, &down);
        x = fixed(at.x - 0.5), y = fixed(at.y - 0.5);
        dx = fixed(across.x), dy = fixed(across.y), row_dx = fixed(down.x), row_dy = fixed(down.y);
        x_radius = GEO_RoundDouble(std::min(0.5 / sx, 127.0) * 65536);
        y_radius = GEO_RoundDouble(std::min(0.5 / sy, 127.0) * 65536);
    }
    bool reduces() const { return x_radius > 0x8000 || y_radius > 0x8000; }
    int32_t px(int64_t column, int64_t row) const { return wrap(x + column * dx + row * row_dx); }
    int32_t py(int64_t column, int64_t row) const { return wrap(y + column * dy + row * row_dy); }
};

inline bool componentsDiffer(double a, double b) {
    double hi = std::max(a, b), lo = std::min(a, b);
    if (hi < 0) {
        const double negated = -lo;
        lo = -hi;
        hi = negated;
    }
    return hi - lo >= std::max(std::fabs(hi) * 1e-12, 1.000088900582341e-12);
}
inline bool directionsDiffer(const GEO_Vector3& a, const GEO_Vector3& b) {
    const double la = std::sqrt(a.x * a.x + a.y * a.y), lb = std::sqrt(b.x * b.x + b.y * b.y);
    const double ka = la == 0 ? 1 : la, kb = lb == 0 ? 1 : lb;
    return componentsDiffer(a.x / ka, b.x / kb) || componentsDiffer(a.y / ka, b.y / kb);
}
// Whether the motion turns, scales one way, or changes its pace.
inline bool generalMotion(const std::vector<GEO_Matrix3>& matrices, const Pose& first, const Pose& last) {
    if (directionsDiffer(first.across, last.across) || directionsDiffer(first.down, last.down)) return true;
    const GEO_Vector2T<double> origin = {0, 0};
    GEO_Vector2T<double> before = matrices[0].TransformPointAndDivide(origin), first_step = {0, 0};
    for (size_t i = 1; i < matrices.size(); ++i) {
        const GEO_Vector2T<double> p = matrices[i].TransformPointAndDivide(origin);
        const GEO_Vector2T<double> step = {p.x - before.x, p.y - before.y};
        if (i == 1) first_step = step;
        if (std::fabs(step.x - first_step.x) >= 0.9 || std::fabs(step.y - first_step.y) >= 0.9) return true;
        before = p;
    }
    return false;
}

// The mean of samples along a motion.
template <class P>
struct MotionSums {
    using D = typename DepthOf<P>::D;
    using N = typename D::N;
    N A = 0, R = 0, G = 0, B = 0;
    void add(const P& p) {
        const N a = p.alpha;
        if (a == 0) return;
        A += a;
        R += static_cast<N>(p.red) * a;
        G += static_cast<N>(p.green) * a;
        B += static_cast<N>(p.blue) * a;
    }
    P mean(int samples) const {
        using C = typename D::Channel;
        if (A == 0) return {};
        const N n = static_cast<N>(samples);
        const auto colour = [&](N sum) {
            if constexpr (!D::kReal)
                if (A == n * D::W) {
                    const N c = sum / n;
                    return static_cast<C>(sizeof(P) == 4 ? (c + 128 + ((c + 128) >> 8)) >> 8
                                                         : (c + 16383) >> 15);
                }
            return static_cast<C>(sum / A);
        };
        return {static_cast<C>(A / n), colour(R), colour(G), colour(B)};
    }
};

template <class P>
P bilinearClipped(int32_t x, int32_t y, const RK_LayerDef& src, const double* weights = nullptr) {
    if constexpr (sizeof(P) == 16)
        return bilinearPortable<P>(x, y, src, weights);
    else
        return bilinearDefault<P>(x, y, src, weights);
}
template <class P>
P bestSample(const TransformCall& call, const Pose& pose, bool area, int32_t x, int32_t y) {
    RK_SampPB pb{};
    pb.src = call.src;
    pb.x_radius = pose.x_radius;
    pb.y_radius = pose.y_radius;
    return sampled(x, y, pb, area, call.sse2, static_cast<P*>(nullptr));
}
// At rest the half pixel is part of the position, which wraps.
template <class P>
P draftSample(const RK_LayerDef& src, int32_t x, int32_t y) {
    const int32_t column = wrap(int64_t{x} + 0x8000) >> 16, row = wrap(int64_t{y} + 0x8000) >> 16;
    if (column < 0 || column >= src.width || row < 0 || row >= src.height) return {};
    return at<P>(src, column, row);
}

// ---- The rows -------------------------------------------------------------------------------------------

template <class P>
std::vector<P> stillRow(const TransformCall& call, const Pose& pose, int64_t row, int64_t width) {
    std::vector<P> line(static_cast<size_t>(width));
    const auto inside = [&](int64_t i) {
        const int32_t x = pose.px(i, row), y = pose.py(i, row);
        return !whole(x, y) && Neighbours<P>(*call.src, x, y).all_inside;
    };
    const auto leaves = [&](int32_t from, int32_t step) {
        const double end = from + static_cast<double>(step) * static_cast<double>(width);
        return end < -32768.0 * 65536 || end > 32767.0 * 65536;
    };
    // The middle of the row, at the ends of which all neighbours are inside.
    int64_t from = 0, to = width - 1;
    while (from < width && !inside(from)) ++from;
    while (to > from && !inside(to)) --to;
    const bool tested = leaves(pose.px(0, row), pose.dx) || leaves(pose.py(0, row), pose.dy);
    const bool span = pose.dx == 0x10000 && pose.dy == 0;
    for (int64_t i = 0; i < width; ++i) {
        const int32_t x = pose.px(i, row), y = pose.py(i, row);
        P& p = line[static_cast<size_t>(i)];
        if (!call.best)
            p = draftSample<P>(*call.src, x, y);
        else if (pose.reduces())
            p = bestSample<P>(call, pose, true, x, y);
        else
            p = bilinearClipped<P>(x, y, *call.src);
        if constexpr (sizeof(P) == 4)
            if (call.best && !pose.reduces() && call.sse2 && !span && !tested && i > from && i < to)
                p = bilinearNested(x, y, *call.src);
    }
    return line;
}

template <class P>
std::vector<P> linearRow(const TransformCall& call, const Pose& first, const Pose& last, int64_t row,
                         int64_t width) {
    const int samples = static_cast<int>(call.matrices.size()) - 1;
    const bool prepared =
        !first.reduces() && first.dx == 0x10000 && first.dy == 0 && last.dx == 0x10000 && last.dy == 0;
    std::vector<P> line;
    for (int64_t i = 0; i < width; ++i) {
        const int64_t x = first.px(i, row), y = first.py(i, row);
        const int64_t step_x = (last.px(i, row) - x) / samples, step_y = (last.py(i, row) - y) / samples;
        MotionSums<P> sums;
        for (int k = 0; k < samples; ++k) {
            const int32_t sx = wrap(x + k * step_x), sy = wrap(y + k * step_y);
            if (!call.best)
                sums.add(nearest<P>(sx, sy, *call.src));
            else if (prepared && Neighbours<P>(*call.src, sx, sy).all_inside)
                sums.add(bilinearClipped<P>(sx, sy, *call.src, Weights<double>(sx, sy).w));
            else
                sums.add(bestSample<P>(call, first, first.reduces(), sx, sy));
        }
        line.push_back(sums.mean(samples));
    }
    return line;
}

template <class P>
std::vector<P> generalRow(const TransformCall& call, const std::vector<Pose>& poses, int64_t row,
                          int64_t width) {
    bool area = false;
    for (const Pose& p : poses) area = area || p.reduces();
    std::vector<P> line;
    for (int64_t i = 0; i < width; ++i) {
        MotionSums<P> sums;
        for (size_t k = poses.size(); k-- > 0;)
            sums.add(bestSample<P>(call, poses[k], area, poses[k].px(i, row), poses[k].py(i, row)));
        line.push_back(sums.mean(static_cast<int>(poses.size())));
    }
    return line;
}

template <class D>
typename D::N maskAlpha(const RK_Mask& mask, int64_t x, int64_t y) {
    using N = typename D::N;
    const bool inverted = (mask.mask_kind & 1) != 0;
    const int64_t row = y - mask.mask_y, column = x - mask.mask_x;
    if (row < 0 || row >= mask.world.height) return D::W;
    if (column < 0 || column >= mask.world.width) return inverted ? D::W : N(0);
    const Wide<D> m = load<D>(at<typename D::Pixel>(mask.world, column, row));
    const N value = (mask.mask_kind & 2) != 0 ? D::mul(luma(m), m.a) : m.a;
    return inverted ? D::inv(value) : value;
}

// ---- The whole ------------------------------------------------------------------------------------------

// What a transform would touch.
struct Extent {
    bool motion, inverts, stencil;
    bool nothing;  // the matrices invert, and there is no room to draw in
    Edges asked, working;
};
inline Extent extentOf(const TransformCall& call, const std::vector<Pose>& poses, const RK_LayerDef& dst) {
    Extent e{};
    e.motion = poses.size() > 1 &&
               !GEO_EqualMatrixWithinEpsilon(&call.matrices.front(), &call.matrices.back(), 1e-12);
    e.inverts = poses.front().inverts && (!e.motion || poses.back().inverts);
    e.stencil = call.mode.xfer == RK_Xfer_StencilAlpha || call.mode.xfer == RK_Xfer_StencilLuma;
    e.asked = {0, 0, dst.width, dst.height};
    if (const GEO_Rect* const r = call.dest_rect)
        e.asked = meet(e.asked, {r->left, r->top, r->right, r->bottom});
    if (!e.inverts) return e;
    Edges area = e.asked;
    if (call.mask != nullptr && (call.mask->mask_kind & 1) == 0)
        area = meet(area, {call.mask->mask_x, call.mask->mask_y, call.mask->mask_x + call.mask->world.width,
                           call.mask->mask_y + call.mask->world.height});
    e.nothing = area.empty();
    if (e.nothing) return e;
    for (const Pose& p : poses) {
        if (!call.src2dst && !p.inverts) continue;
        const GEO_FloatRect all = {0, 0, static_cast<double>(call.src->width),
                                   static_cast<double>(call.src->height)};
        GEO_FloatRect drawn;
        GEO_TransformFloatRect(&p.to_dst, &all, &drawn);
        const auto edge = [](double v) {
            return int64_t{GEO_RoundDouble(std::min(std::max(v, -2147483648.0), 2147483647.0))};
        };
        e.working = join(e.working, meet(area, {edge(drawn.left) - 1, edge(drawn.top) - 1,
                                                edge(drawn.right) + 1, edge(drawn.bottom) + 1}));
    }
    return e;
}
inline std::vector<Pose> posesOf(const TransformCall& call) {
    std::vector<Pose> poses;
    for (const GEO_Matrix3& m : call.matrices) poses.emplace_back(m, call.src2dst);
    return poses;
}
// The rectangle that a replaced body is given; false when it is not called.
inline bool affected(const TransformCall& call, const RK_LayerDef& dst, Edges& rect) {
    const Extent e = extentOf(call, posesOf(call), dst);
    rect = !e.inverts || e.stencil ? e.asked : e.working;
    return !e.nothing;
}

template <class P>
int transform(const TransformCall& call, const RK_LayerDef& dst) {
    using D = typename DepthOf<P>::D;
    using N = typename D::N;
    const size_t count = call.matrices.size();
    if (count == 0) return 0;
    std::vector<Pose> poses = posesOf(call);
    Pose &first = poses.front(), &last = poses.back();
    const Extent extent = extentOf(call, poses, dst);
    if (extent.nothing) return 0;
    const bool motion = extent.motion, stencil = extent.stencil;
    const Edges asked = extent.asked, working = extent.working;
    const auto clearOutside = [&](const Edges& kept) {
        for (int64_t y = asked.top; y < asked.bottom; ++y)
            for (int64_t x = asked.left; x < asked.right; ++x)
                if (!kept.holds(x, y)) at<P>(dst, x, y).alpha = 0;
    };

    if (first.degenerate() || (motion && last.degenerate())) {
        if (stencil) clearOutside({0, 0, 0, 0});
        return 0;
    }
    if (!extent.inverts) return 0;

    const RK_CompositeModePlus plus(call.mode);
    if (!motion && GEO_GetMatrixType(&first.to_dst) <= 1) {
        const int64_t tx = GEO_RoundDouble(first.to_dst.m[2][0] * 65536);
        const int64_t ty = GEO_RoundDouble(first.to_dst.m[2][1] * 65536);
        if (!call.best || ((tx | ty) & 0xFFFF) == 0) {
            if (working.empty()) return 0;
            const int64_t ox = (tx + 0x8000) >> 16, oy = (ty + 0x8000) >> 16;
            const GEO_Rect from = {
                static_cast<int16_t>(working.top - oy), static_cast<int16_t>(working.left - ox),
                static_cast<int16_t>(working.bottom - oy), static_cast<int16_t>(working.right - ox)};
            return transferRect<P>(call.progress, call.field, &from, *call.src, plus, call.mask, working.left,
                                   working.top, dst);
        }
    }

    for (Pose& p : poses)
        if (p.inverts) p.prepare(working);
    const bool general = motion && call.best && generalMotion(call.matrices, first, last);
    if (general)
        for (const Pose& p : poses)
            if (!p.inverts) return 1;
    if (stencil) clearOutside(working);
    if (working.empty()) return 0;

    RK_BlendingMode<P> mode = RK_MakeBlendingMode<P>(plus);
    uint32_t seed = static_cast<uint32_t>(call.mode.rand_seed) + static_cast<uint32_t>(working.left);
    int64_t progress_mask = count != 1 ? 7 : call.best ? 31 : 63;
    if (call.field != 0) progress_mask = progress_mask * 2 + 1;
    const int64_t width = working.right - working.left;
    for (int64_t y = working.top; y < working.bottom; ++y) {
        const int64_t row_index = y - working.top;
        if (!(call.field == 1 && (y & 1) != 0) && !(call.field == 2 && (y & 1) == 0)) {
            const std::vector<P> line = general  ? generalRow<P>(call, poses, row_index, width)
                                        : motion ? linearRow<P>(call, first, last, row_index, width)
                                                 : stillRow<P>(call, first, row_index, width);
            N sum = 0;
            for (const P& p : line) sum += p.alpha;
            std::vector<P> matte, out;
            for (int64_t x = working.left; x < working.right; ++x) {
                out.push_back(at<P>(dst, x, y));
                P m{};
                if (call.mask != nullptr)
                    m.alpha = static_cast<typename D::Channel>(maskAlpha<D>(*call.mask, x, y));
                matte.push_back(m);
            }
            const bool drawn_when_empty =
                stencil || mode.xfer == RK_Xfer_Replace || mode.xfer == RK_Xfer_PremulOver;
            if (mode.xfer == RK_Xfer_Over && call.mask == nullptr && !mode.rgb_only &&
                D::opacityIsFull(mode.opacity) && sum == static_cast<N>(width) * D::W) {
                out = line;
            } else if (sum != 0 || drawn_when_empty) {
                mode.rand_seed = static_cast<int32_t>(seed);
                const int error =
                    plain::row<P>(mode, call.mask != nullptr, static_cast<int>(width), line.data(),
                                  call.mask != nullptr ? matte.data() : nullptr, out.data());
                if (error != 0) return error;
            }
            for (int64_t i = 0; i < width; ++i) at<P>(dst, working.left + i, y) = out[static_cast<size_t>(i)];
        }
        if ((y & progress_mask) == 0 && call.progress != nullptr && call.progress->progress_func != nullptr) {
            const RK_Long answer = call.progress->progress_func(call.progress->refcon, RK_Long(row_index),
                                                                RK_Long(working.bottom - working.top));
            if (answer != 0) return static_cast<int>(answer);
        }
        seed += static_cast<uint32_t>(y) * 12281u;
    }
    return 0;
}

}  // namespace plain

#endif
