// World transforms against their plain twin: at rest and in motion, draft and best, every mode, masks of
// every kind, fields, reflections, perspective, no extent.
#include <memory>

#include <gtest/gtest.h>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/world/RK_World.h"
#include "refhost/RefHost.h"
#include "test/plain/PlainTransform.h"
#include "test/plain/SampleWorlds.h"

namespace {

using test::about;
using test::Calls;
using test::randomRect;
using test::side;
using test::World;

// A placement of the source's centre: turned, scaled, sheared by a perspective.
struct Placement {
    double x, y, degrees, sx, sy, perspective;
    double cx, cy;
    GEO_Matrix3 matrix() const {
        const double a = degrees * 3.14159265358979323846 / 180;
        const double c = degrees == 0 ? 1 : std::cos(a), s = degrees == 0 ? 0 : std::sin(a);
        GEO_Matrix3 m = {{{sx * c, sx * s, perspective}, {-sy * s, sy * c, perspective / 2}, {0, 0, 1}}};
        m.m[2][0] = x + cx - cx * m.m[0][0] - cy * m.m[1][0];
        m.m[2][1] = y + cy - cx * m.m[0][1] - cy * m.m[1][1];
        return m;
    }
};
double amountOf(test::Random& r, double range) { return (r.unit() * 2.0 - 1.0) * range; }
double scaleOf(test::Random& r) {
    static const double special[] = {1, -1, 0.5, 2, 0.37, 0.003, 0.1, 3.5};
    return r.below(2) == 0 ? special[r.below(8)] : amountOf(r, 2.5);
}
Placement placementOf(test::Random& r, const RK_LayerDef& src, const RK_LayerDef& dst) {
    Placement p{amountOf(r, dst.width), amountOf(r, dst.height), 0, 1, 1, 0,
                src.width / 2.0,        src.height / 2.0};
    if (r.below(3) == 0) p.x = std::floor(p.x), p.y = std::floor(p.y);
    if (r.below(4) == 0) p.x = std::floor(p.x * 2) / 2;
    if (r.below(3) != 0) p.sx = scaleOf(r), p.sy = r.below(2) == 0 ? p.sx : scaleOf(r);
    if (r.below(2) == 0) p.degrees = r.below(4) == 0 ? 90 : amountOf(r, 180);
    if (r.below(8) == 0) p.perspective = amountOf(r, 0.002);
    if (r.below(24) == 0) (r.below(2) == 0 ? p.sx : p.sy) = 0;
    return p;
}
// What no placement has: numbers of no size, of any size, and none.
void spoil(test::Random& r, GEO_Matrix3& m) {
    static const double wild[] = {0,     -0.0,   1e-9, 1e-300, 1e9,  -1e9,     1e300,
                                  0.003, -200.0, 2e4,  -4e4,   1e-5, INFINITY, std::nan("")};
    for (uint32_t i = r.below(3) + 1; i > 0; --i) m.m[r.below(3)][r.below(3)] = wild[r.below(14)];
}
// At rest, moving evenly, turning, growing, or staying where it is.
std::vector<GEO_Matrix3> seriesOf(test::Random& r, const Placement& from, bool moves) {
    if (!moves) {
        std::vector<GEO_Matrix3> v(1, from.matrix());
        if (r.below(10) == 0) spoil(r, v[0]);
        return v;
    }
    Placement step{amountOf(r, 3), amountOf(r, 3), 0, 0, 0, 0, 0, 0};
    const uint32_t kind = r.below(5);
    if (kind == 1) step.degrees = amountOf(r, 10);
    if (kind == 2) step.sx = step.sy = 0.03;
    if (kind == 3) step.x = std::floor(step.x), step.y = 0;
    if (kind == 4 && r.below(2) == 0) step.x = step.y = 0;
    std::vector<GEO_Matrix3> v;
    Placement p = from;
    const uint32_t count = 2 + r.below(7);
    for (uint32_t i = 0; i < count; ++i) {
        v.push_back(p.matrix());
        p.x += step.x * (kind == 0 ? i : 1), p.y += step.y;
        p.degrees += step.degrees, p.sx += step.sx, p.sy += step.sy;
    }
    // A pose between the ends that cannot be turned back.
    if (count > 2 && r.below(12) == 0) {
        GEO_Matrix3& m = v[1 + r.below(count - 2)];
        m.m[0][0] = m.m[0][1] = m.m[0][2] = 0;
    }
    if (r.below(12) == 0) spoil(r, v[r.below(count)]);
    return v;
}

template <class P>
RK_CompositeMode modeOf(test::Random& r, int xfer) {
    const uint8_t o8 = test::opacity<RK_Pixel8>(r);
    const uint16_t o16 = static_cast<uint16_t>((o8 * 32768 + 127) / 255);
    return {xfer, static_cast<int32_t>(r.next()), o8, static_cast<uint8_t>(r.below(4) == 0), o16};
}

struct Guards {
    test::GuardedRows src, dst, mask, alpha_save, matte_row, row_work;
    // A caller's own, of exactly the rows that a destination of this width needs.
    template <class P>
    RK_BlendScratch scratch(int width, bool against_end) {
        const size_t row = static_cast<size_t>(width) * sizeof(P);
        return {alpha_save.room(row / 4, against_end), matte_row.room(row, against_end),
                row_work.room(row, against_end), RK_MotionBlurScratch{}};
    }
};

// Shows the last columns and rows of a source that is longer than positions reach.
std::vector<GEO_Matrix3> farSeries(test::Random& r, const RK_LayerDef& src, bool moves) {
    std::vector<GEO_Matrix3> v;
    GEO_Matrix3 m = {{{1.0625, amountOf(r, 0.01), 0}, {amountOf(r, 0.01), 1.25, 0}, {0, 0, 1}}};
    if (r.below(4) == 0) m.m[0][0] = m.m[1][1] = 0.4375;
    if (r.below(4) == 0) m.m[0][0] = -m.m[0][0];
    if (r.below(3) == 0) m.m[0][1] = m.m[1][0] = 0;
    const double x = std::min(src.width, 32767) - 8 - amountOf(r, 10);
    const double y = std::min(src.height, 32767) - 8 - amountOf(r, 10);
    for (int i = 0; i < (moves ? 4 : 1); ++i) {
        m.m[2][0] = 6 + i - x * m.m[0][0] - y * m.m[1][0];
        m.m[2][1] = 6 + i * 0.5 - x * m.m[0][1] - y * m.m[1][1];
        v.push_back(m);
    }
    return v;
}

template <class P>
void transformOne(test::Random& r, Guards& guards, bool moves, int xfer, bool far = false) {
    int width = side(r), height = side(r);
    if (far) {
        width = height = 12;
        (r.below(2) == 0 ? width : height) = 32740 + static_cast<int>(r.below(60));
    }
    // At float now and then with infinities and what is no number.
    const bool wild = r.below(4) == 0;
    World<P> src = test::sampleWorld<P>(r, width, height), mask_world(r, side(r), side(r), wild);
    const World<P> dst(r, side(r), side(r), wild);
    test::guardSome(r, guards.src, src);
    test::guardSome(r, guards.mask, mask_world);
    RK_Mask mask{mask_world.record, about(r, dst.record.height), about(r, dst.record.width), r.below(4)};
    if (r.below(2) == 0) mask.mask_x = mask.mask_y = 0;
    const bool has_mask = xfer == RK_Xfer_MatteMix || r.below(2) == 0, has_rect = r.below(2) == 0;
    const GEO_Rect rect = randomRect(r, dst.record.width, dst.record.height);
    const bool best = r.below(3) != 0, src2dst = r.below(2) == 0;
    const int field = r.below(2) == 0 ? 0 : static_cast<int>(r.below(4));
    std::vector<GEO_Matrix3> matrices =
        far ? farSeries(r, src.record, moves) : seriesOf(r, placementOf(r, src.record, dst.record), moves);
    if (!src2dst)
        for (GEO_Matrix3& m : matrices) GEO_InverseMatrixQuiet(&m, &m);

    World<P> expected(dst), got(dst);
    test::guardSome(r, guards.dst, got);
    Calls expected_calls{{}, r.below(4) == 0 ? 1 + static_cast<int>(r.below(6)) : 0},
        got_calls = expected_calls;
    RK_ProgressInfo expected_progress{&expected_calls, nullptr, Calls::progress};
    RK_ProgressInfo got_progress{&got_calls, nullptr, Calls::progress};
    const plain::TransformCall call{&expected_progress,
                                    best,
                                    field,
                                    &src.record,
                                    modeOf<P>(r, xfer),
                                    has_mask ? &mask : nullptr,
                                    matrices,
                                    src2dst,
                                    has_rect ? &rect : nullptr,
                                    KIT_G_CPU_DataP->has_sse2 != 0};
    const int expected_error = plain::transform<P>(call, expected.record);

    RK_LayerDef src_record = src.record, mask_record = mask_world.record;
    const std::unique_ptr<RK_World> src_object(RK_World::NewReference(&src_record));
    const std::unique_ptr<RK_World> mask_object(RK_World::NewReference(&mask_record));
    const std::unique_ptr<RK_World> dst_object(RK_World::NewReference(&got.record));
    const RK_TransformMask product_mask{mask_object.get(), mask.mask_y, mask.mask_x, mask.mask_kind};
    const RK_TransformMask* const mask_argument = has_mask ? &product_mask : nullptr;
    const RK_Long quality = best ? RK_kBest : RK_kDraft, count = static_cast<RK_Long>(matrices.size());
    const bool own_scratch = r.below(3) == 0;
    RK_Long error;
    if (own_scratch) {
        RK_BlendScratch scratch = guards.scratch<P>(got.record.width, r.below(2) == 0);
        error = RK_TransformWorldPlus(&got_progress, quality, 0, field, src_object.get(), &call.mode, nullptr,
                                      mask_argument, &scratch, matrices.data(), count, src2dst,
                                      call.dest_rect, dst_object.get());
    } else {
        error = RK_TransformWorld(&got_progress, quality, 0, field, src_object.get(), &call.mode, nullptr,
                                  mask_argument, matrices.data(), count, src2dst, call.dest_rect,
                                  dst_object.get());
    }
    const std::string wrong = test::difference(dst, expected, got);
    if (wrong.empty() && error == expected_error && got_calls.made == expected_calls.made) return;
    std::ostringstream told;
    told << test::modeName(xfer) << (best ? ", best" : ", draft") << ", field " << field << ", opacity "
         << int{call.mode.opacity} << (call.mode.rgb_only ? ", rgb_only" : "") << (src2dst ? ", src2dst" : "")
         << (own_scratch ? ", own scratch" : "") << "\n  source " << width << " by " << height << ", "
         << (has_rect ? test::show(rect) : "whole");
    if (has_mask)
        told << "\n  mask " << mask.world.width << " by " << mask.world.height << " at " << mask.mask_x
             << ", " << mask.mask_y << ", kind " << mask.mask_kind;
    told.precision(17);
    for (const GEO_Matrix3& m : matrices) {
        told << "\n ";
        for (const auto& row : m.m) told << " " << row[0] << " " << row[1] << " " << row[2] << ";";
    }
    FAIL() << told.str() << "\n  result " << error << ", expected " << expected_error << "; progress calls "
           << got_calls.made.size() << ", expected " << expected_calls.made.size() << "\n  " << wrong;
}

template <class P>
void transformMany(bool moves) {
    test::Random r(sizeof(P) + (moves ? 70 : 60));
    Guards guards;
    const int count = test::amount(moves ? 8000 : 12000);
    for (int i = 0; i < count && !testing::Test::HasFatalFailure(); ++i) {
        int mode = RK_kFirstMode + i % (RK_kLastMode - RK_kFirstMode + 1);
        if (mode == RK_Xfer_None || r.below(4) == 0) mode = RK_Xfer_Over;
        transformOne<P>(r, guards, moves, mode);
    }
}
TEST(TransformsAgainstPlain, AtRestAt8Bits) { transformMany<RK_Pixel8>(false); }
TEST(TransformsAgainstPlain, AtRestAt16Bits) { transformMany<RK_Pixel16>(false); }
TEST(TransformsAgainstPlain, AtRestAtFloat) { transformMany<RK_PixelFloat>(false); }
TEST(TransformsAgainstPlain, InMotionAt8Bits) { transformMany<RK_Pixel8>(true); }
TEST(TransformsAgainstPlain, InMotionAt16Bits) { transformMany<RK_Pixel16>(true); }
TEST(TransformsAgainstPlain, InMotionAtFloat) { transformMany<RK_PixelFloat>(true); }

// Rows whose positions leave 16 bits, and wrap.
template <class P>
void transformFar() {
    test::Random r(sizeof(P) + 80);
    Guards guards;
    const int count = test::amount(24);
    for (int i = 0; i < count && !testing::Test::HasFatalFailure(); ++i)
        transformOne<P>(r, guards, i % 3 == 0, i % 2 == 0 ? RK_Xfer_Copy : RK_Xfer_Over, true);
}
TEST(TransformsAgainstPlain, BeyondTheReachOfPositions) {
    transformFar<RK_Pixel8>();
    transformFar<RK_Pixel16>();
    transformFar<RK_PixelFloat>();
}

// ---- What a replaced body is told -----------------------------------------------------------------------

struct Told {
    bool called;
    GEO_Rect rect;
    const GEO_Matrix3* matrices;
};
Told g_told;
RK_Long tell(RK_ProgressInfo*, RK_Long, RK_Long, RK_Long, const RK_World*, const RK_CompositeMode*,
             const RK_LinearBlendingTables*, const RK_TransformMask*, const GEO_Matrix3* matrices, RK_Long,
             uint8_t, const GEO_Rect* rect, RK_World*) {
    g_told = {true, *rect, matrices};
    return 7001;
}

TEST(TransformsAgainstPlain, AReplacedBodyIsGivenTheAffectedRectangle) {
    void* const before = RKp_G_OverFuncs[32];
    RK_SetOverrideFunc(32, reinterpret_cast<void*>(&tell));
    test::Random r(17);
    const int count = test::amount(20000);
    for (int i = 0; i < count && !HasFailure(); ++i) {
        RK_LayerDef src{}, dst{}, mask_record{};
        for (RK_LayerDef* world : {&src, &dst, &mask_record}) {
            world->data = &src;  // not read
            world->width = side(r);
            world->height = side(r);
            world->rowbytes = world->width * 4;
        }
        RK_Mask mask{mask_record, about(r, dst.height), about(r, dst.width), r.below(4)};
        const bool has_mask = r.below(2) == 0, has_rect = r.below(2) == 0, src2dst = r.below(2) == 0;
        const GEO_Rect rect = randomRect(r, dst.width, dst.height);
        std::vector<GEO_Matrix3> matrices = seriesOf(r, placementOf(r, src, dst), r.below(2) == 0);
        if (!src2dst)
            for (GEO_Matrix3& m : matrices) GEO_InverseMatrixQuiet(&m, &m);
        const RK_CompositeMode mode{r.below(6) == 0 ? RK_Xfer_StencilLuma : RK_Xfer_Over, 0, 255, 0, 32768};
        const plain::TransformCall call{nullptr,  true,    0,
                                        &src,     mode,    has_mask ? &mask : nullptr,
                                        matrices, src2dst, has_rect ? &rect : nullptr,
                                        true};
        plain::Edges wanted;
        const bool called = plain::affected(call, dst, wanted);

        const std::unique_ptr<RK_World> src_object(RK_World::NewReference(&src));
        const std::unique_ptr<RK_World> dst_object(RK_World::NewReference(&dst));
        const std::unique_ptr<RK_World> mask_object(RK_World::NewReference(&mask_record));
        const RK_TransformMask product_mask{mask_object.get(), mask.mask_y, mask.mask_x, mask.mask_kind};
        g_told = {};
        EXPECT_EQ(RK_TransformWorld(nullptr, 1, 0, 0, src_object.get(), &mode, nullptr,
                                    has_mask ? &product_mask : nullptr, matrices.data(),
                                    static_cast<RK_Long>(matrices.size()), src2dst, call.dest_rect,
                                    dst_object.get()),
                  called ? 7001 : 0);
        EXPECT_EQ(g_told.called, called);
        if (!called) continue;
        EXPECT_EQ(g_told.matrices, matrices.data());
        const plain::Edges got{g_told.rect.left, g_told.rect.top, g_told.rect.right, g_told.rect.bottom};
        if (wanted.empty() && got.empty()) continue;
        EXPECT_TRUE(got.left == wanted.left && got.top == wanted.top && got.right == wanted.right &&
                    got.bottom == wanted.bottom)
            << test::show(g_told.rect) << "\n  expected top " << wanted.top << ", left " << wanted.left
            << ", bottom " << wanted.bottom << ", right " << wanted.right;
    }
    RK_SetOverrideFunc(32, before);
}

}  // namespace
