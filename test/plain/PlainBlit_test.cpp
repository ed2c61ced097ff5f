// Copies through a matrix, between bitmaps, and over a background against their plain twins.
#include <gtest/gtest.h>

#include <memory>

#include "RK/host/RAS.h"
#include "RK/indep/passes/RK_CopyBits.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "test/Reports.h"
#include "test/plain/PlainBlit.h"
#include "test/plain/SampleWorlds.h"

namespace {

using test::randomRect;
using test::side;
using test::World;

struct Aborts {
    int calls = 0, stop_at = 0;
    static RK_Long abort(void* refcon) {
        Aborts* const a = static_cast<Aborts*>(refcon);
        return ++a->calls == a->stop_at ? 521 : 0;
    }
};

// ---- Through a matrix -----------------------------------------------------------------------------------

GEO_Matrix3 anyMatrix(test::Random& r) {
    const auto number = [&r](double range) { return (static_cast<double>(r.unit()) * 2 - 1) * range; };
    GEO_Matrix3 m = {{{number(2), number(1), 0}, {number(1), number(2), 0}, {number(20), number(20), 1}}};
    if (r.below(3) == 0) m.m[0][1] = m.m[1][0] = 0;
    if (r.below(4) == 0) m.m[0][2] = number(0.05), m.m[1][2] = number(0.05);
    if (r.below(4) == 0) m = {{{1, 0, 0}, {0, 1, 0}, {std::floor(number(9)), std::floor(number(9)), 1}}};
    static const double wild[] = {0, 1e-9, 1e300, -1e9, INFINITY, std::nan("")};
    if (r.below(8) == 0) m.m[r.below(3)][r.below(3)] = wild[r.below(6)];
    return m;
}

template <class P>
void throughMany() {
    test::Random r(sizeof(P) + 1);
    test::GuardedRows src_rows, dst_rows;
    const int count = test::amount(5000);
    for (int i = 0; i < count; ++i) {
        World<P> src(r, side(r), side(r));
        const World<P> dst(r, side(r), r.below(8) == 0 ? 150 : side(r));
        World<P> expected(dst), got(dst);
        test::guardSome(r, src_rows, src);
        test::guardSome(r, dst_rows, got);
        const GEO_Rect s = randomRect(r, src.record.width, src.record.height);
        const GEO_Rect d = randomRect(r, dst.record.width, dst.record.height);
        const GEO_Rect *const src_rect = r.below(2) == 0 ? &s : nullptr, *const dst_rect =
                                                                             r.below(2) == 0 ? &d : nullptr;
        const GEO_Matrix3 matrix = anyMatrix(r);
        const bool src2dst = r.below(2) == 0;
        Aborts a{0, static_cast<int>(r.below(8))}, b = a;
        RK_ProgressInfo expected_progress{&a, Aborts::abort, nullptr},
            got_progress{&b, Aborts::abort, nullptr};
        GEO_Matrix3 dst_to_src = matrix;
        int error = 0;
        if (!src2dst || GEO_InverseMatrixQuiet(&matrix, &dst_to_src) == 0)
            error = plain::copyThrough<P>(&expected_progress, src.record, expected.record, dst_to_src,
                                          src_rect, dst_rect);
        ASSERT_EQ(RK_CopyBits3_LO_Straight(&got_progress, &src.record, &got.record, src2dst, &matrix,
                                           src_rect, dst_rect),
                  error);
        ASSERT_EQ(test::difference(dst, expected, got), "") << (src2dst ? "src2dst" : "dst2src");
        ASSERT_EQ(a.calls, b.calls);
    }
}
TEST(BlitsAgainstPlain, ThroughAMatrix) {
    throughMany<RK_Pixel8>();
    throughMany<RK_Pixel16>();
    throughMany<RK_PixelFloat>();
}

// ---- Over a background ----------------------------------------------------------------------------------

template <class P>
void showMany() {
    test::Random r(sizeof(P) + 2);
    test::GuardedRows src_rows, dst_rows;
    const int count = test::amount(4000);
    for (int i = 0; i < count; ++i) {
        World<P> src(r, side(r), side(r), r.below(4) == 0);
        const World<RK_Pixel8> dst(r, side(r), side(r));
        World<RK_Pixel8> expected(dst), got(dst);
        test::guardSome(r, src_rows, src);
        test::guardSome(r, dst_rows, got);
        const GEO_Rect rect = randomRect(r, dst.record.width, dst.record.height);
        plain::Showing how{test::about(r, src.record.width),
                           test::about(r, src.record.height),
                           1 + static_cast<int>(r.below(4)),
                           1 + static_cast<int>(r.below(4)),
                           r.below(2) == 0,
                           KIT_G_CPU_DataP->has_sse2 != 0,
                           test::pixel<RK_PixelFloat>(r),
                           test::pixel<RK_PixelFloat>(r)};
        if (r.below(8) == 0) how.origin_x = INT32_MAX - 3;
        if (r.below(8) == 0) how.step_y = INT32_MAX;
        plain::show<P>(src.record, how, rect, expected.record);
        RK_LayerDef src_record = src.record;
        const std::unique_ptr<RK_World> src_object(RK_World::NewReference(&src_record));
        RK_WorldX<RK_Pixel8> dst_object(&got.record, false);
        const GEO_LPoint origin = {static_cast<int32_t>(how.origin_x), static_cast<int32_t>(how.origin_y)};
        const GEO_LPoint step = {static_cast<int32_t>(how.step_x), static_cast<int32_t>(how.step_y)};
        ASSERT_EQ(RK_SpecialCasePixelBlit(src_object.get(), origin, how.checkered, step, how.even, how.odd,
                                          rect, &dst_object),
                  0);
        ASSERT_EQ(test::difference(dst, expected, got), "") << test::show(rect);
    }
}
TEST(BlitsAgainstPlain, OverABackground) {
    showMany<RK_Pixel8>();
    showMany<RK_Pixel16>();
    showMany<RK_PixelFloat>();
}

// ---- Between bitmaps ------------------------------------------------------------------------------------

// A locked bitmap of the depth of P and a record over its pixels.
template <class P>
struct Bitmap {
    Bitmap(test::Random& r, int width, int height, int32_t order) : pixels(r, width, height) {
        const GEO_Rect bounds = {0, 0, static_cast<int16_t>(height), static_cast<int16_t>(width)};
        EXPECT_EQ(RAS_NewWorld(0, 0, 8, &bounds, sizeof(P) * 8, 0, 0, &handle), 0);
        EXPECT_EQ(RAS_LoadLockPixels(1, handle, 0, 0), 0);
        RAS_SetChannelOrder(handle, order);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) plain::at<P>(record(), x, y) = plain::at<P>(pixels.record, x, y);
    }
    ~Bitmap() {
        RAS_UnlockPixels(handle);
        RAS_DisposeWorld(handle);
    }
    Bitmap(const Bitmap&) = delete;
    Bitmap& operator=(const Bitmap&) = delete;
    RK_LayerDef record() const {
        RK_LayerDef d = pixels.record;
        d.data = RASp_GetPixBaseAddr(handle);
        d.rowbytes = (*handle)->rowbytes;
        return d;
    }
    World<P> pixels;  // what was in it at first
    RAS_World** handle = nullptr;
};

enum class Form { kDraft, kStraight, kPremul };
using CopyBitmaps = RK_Long(RK_ProgressInfo*, RAS_World**, RAS_World**, const GEO_Rect*, const GEO_Rect*);
struct BitmapCopy {
    CopyBitmaps* copy;
    Form form;
    bool matches_order;
};
const BitmapCopy kBitmapCopies[] = {
    {RK_WorldCopy, Form::kDraft, true},
    {RK_WorldCopy_Static, Form::kDraft, false},
    {RK_WorldCopy_HQ, Form::kStraight, false},
    {RK_WorldCopy_HQ_Straight, Form::kStraight, false},
    {RK_WorldCopy_HQ_Static, Form::kStraight, false},
    {RK_WorldCopy_HQ_Straight_Static, Form::kStraight, false},
    {RK_WorldCopy_HQ_Premul, Form::kPremul, false},
};

template <class P>
P sampleFor(Form form, int32_t x, int32_t y, const RK_SampPB& pb, bool area) {
    if constexpr (sizeof(P) == 4)
        if (form == Form::kPremul)
            return area ? plain::areaPremul(x, y, pb) : plain::bilinearPremul(x, y, *pb.src);
    return plain::sampled(x, y, pb, area, KIT_G_CPU_DataP->has_sse2 != 0, static_cast<P*>(nullptr));
}

template <class S, class D>
void bitmapsMany() {
    test::Random r(sizeof(S) * 5 + sizeof(D));
    const int count = test::amount(600);
    for (int i = 0; i < count && !testing::Test::HasFatalFailure(); ++i) {
        const bool match = r.below(4) == 0;
        const Bitmap<S> src(r, side(r), side(r), static_cast<int32_t>(r.below(2)));
        const Bitmap<D> dst(r, match ? src.pixels.record.width : side(r),
                            match ? src.pixels.record.height : side(r), static_cast<int32_t>(r.below(2)));
        const GEO_Rect s = randomRect(r, src.pixels.record.width, src.pixels.record.height);
        const GEO_Rect d = randomRect(r, dst.pixels.record.width, dst.pixels.record.height);
        const GEO_Rect *const src_rect = r.below(2) == 0 ? &s : nullptr, *const dst_rect =
                                                                             r.below(2) == 0 ? &d : nullptr;
        const BitmapCopy& how = kBitmapCopies[r.below(7)];

        World<D> expected(dst.pixels);
        int error = 0;
        if (how.form == Form::kDraft) {
            plain::copyDraft<S, D>(src.pixels.record, expected.record, src_rect, dst_rect);
        } else if (sizeof(S) != sizeof(D)) {
            error = 3;
        } else {
            error = plain::copySampled<D>(nullptr, src.pixels.record, expected.record, src_rect, dst_rect,
                                          [&how](int32_t x, int32_t y, const RK_SampPB& pb, bool area) {
                                              return sampleFor<D>(how.form, x, y, pb, area);
                                          });
        }
        // Only bitmaps of 32 bits have an order.
        const int32_t src_order = sizeof(S) == 4 ? RAS_GetChannelOrder(src.handle) : 0;
        const int32_t dst_order = sizeof(D) == 4 ? RAS_GetChannelOrder(dst.handle) : 0;
        if (how.matches_order && src_order != dst_order) {
            if constexpr (sizeof(D) == 4) {
                const RK_LayerDef& w = expected.record;
                for (int y = 0; y < w.height; ++y)
                    for (int x = 0; x < w.width; ++x) {
                        if (dst_rect != nullptr && (x < d.left || x >= d.right || y < d.top || y >= d.bottom))
                            continue;
                        D& p = plain::at<D>(w, x, y);
                        p = {p.blue, p.green, p.red, p.alpha};
                    }
            } else {
                error = 5;
            }
        }
        RefHost::TakeReports();
        ASSERT_EQ(how.copy(nullptr, src.handle, dst.handle, src_rect, dst_rect), error);
        if (error == 0) {
            EXPECT_TRUE(test::noReports());
        } else if (error == 3) {
            EXPECT_TRUE(test::onlyVerification(
                "RK_CopyBits_HQ_Straight_Static requires src and dst worlds to have same bit depth"));
        } else {
            EXPECT_TRUE(
                test::onlyReport(RefHost::ReportKind::Error, RK_kLocation,
                                 "Flipping 32/16-bit worlds is not implemented. Source data 8-bit BGRA."));
        }
        World<D> got(dst.pixels);
        got.record = dst.record();
        ASSERT_EQ(test::difference(dst.pixels, expected, got), "")
            << "order " << src_order << " to " << dst_order << "; " << (src_rect ? test::show(s) : "whole")
            << " to " << (dst_rect ? test::show(d) : "whole");
    }
}
TEST(BlitsAgainstPlain, BetweenBitmapsOfOneDepth) {
    bitmapsMany<RK_Pixel8, RK_Pixel8>();
    bitmapsMany<RK_Pixel16, RK_Pixel16>();
    bitmapsMany<RK_PixelFloat, RK_PixelFloat>();
}
TEST(BlitsAgainstPlain, BetweenBitmapsOfTwoDepths) {
    bitmapsMany<RK_Pixel8, RK_Pixel16>();
    bitmapsMany<RK_Pixel8, RK_PixelFloat>();
    bitmapsMany<RK_Pixel16, RK_Pixel8>();
    bitmapsMany<RK_PixelFloat, RK_Pixel8>();
    bitmapsMany<RK_Pixel16, RK_PixelFloat>();
}

}  // namespace
