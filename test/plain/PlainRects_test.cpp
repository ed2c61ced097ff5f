// Transfer rects, composite rects and the clearing of alpha against their plain twins: random rectangles of
// odd sizes, partly and wholly outside, masks of every kind, fields, negative rowbytes.
#include <gtest/gtest.h>

#include "RK/indep/composite/RK_CompositeRect.h"
#include "refhost/RefHost.h"
#include "test/plain/PlainComposite.h"
#include "test/plain/Worlds.h"

namespace {

using test::about;
using test::Calls;
using test::difference;
using test::randomRect;
using test::show;
using test::side;
using test::World;

template <class P>
void transferOne(test::Random& r, int mode) {
    const World<P> src{r, side(r), side(r), r.below(8) == 0}, dst{r, side(r), side(r)};
    const World<P> mask_world{r, side(r), side(r)};
    const GEO_Rect rect = randomRect(r, src.record.width, src.record.height);
    const bool has_rect = r.below(3) != 0, has_mask = r.below(2) == 0;
    RK_Mask mask{mask_world.record, about(r, dst.record.height), about(r, dst.record.width), r.below(4)};
    if (has_mask && r.below(2) == 0) mask.mask_x = mask.mask_y = 0;
    static const float opacities[] = {1.0f, 1.0f, 1.0f, 0.0f, 0.5f, 0.99f, 1.01f, 0.25f};
    const RK_CompositeModePlus how{mode, opacities[r.below(8)], nullptr, r.below(4) == 0,
                                   RK_Long{static_cast<int32_t>(r.next())}};
    const int field = static_cast<int>(r.below(6)) < 3 ? 0 : static_cast<int>(r.below(3));
    RK_Long x = about(r, dst.record.width), y = about(r, dst.record.height);
    if (r.below(32) == 0) x += r.below(2) == 0 ? 70000 : -70000;

    World<P> expected(dst), got(dst);
    Calls expected_calls{{}, r.below(8) == 0 ? 1 : 0}, got_calls = expected_calls;
    RK_ProgressInfo expected_progress{&expected_calls, nullptr, Calls::progress};
    RK_ProgressInfo got_progress{&got_calls, nullptr, Calls::progress};
    const GEO_Rect* src_rect = has_rect ? &rect : nullptr;
    const int expected_error = plain::transferRect<P>(&expected_progress, field, src_rect, src.record, how,
                                                      has_mask ? &mask : nullptr, x, y, expected.record);
    const RK_Long error = RK_TransferRect(&got_progress, nullptr, nullptr, field, src_rect, &src.record, &how,
                                          nullptr, has_mask ? &mask.world : nullptr, x, y, &got.record);
    const std::string wrong = difference(dst, expected, got);
    if (wrong.empty() && error == expected_error && got_calls.made == expected_calls.made) return;
    std::ostringstream told;
    told << test::modeName(mode) << ", depth " << test::kDepth<P> << ", opacity " << how.opacity
         << (how.rgb_only ? ", rgb_only" : "") << ", seed " << how.rand_seed << ", field " << field
         << "\n  source " << src.record.width << " by " << src.record.height << ", "
         << (has_rect ? show(rect) : "whole") << "\n  at " << x << ", " << y << " of " << dst.record.width
         << " by " << dst.record.height;
    if (has_mask)
        told << "\n  mask " << mask.world.width << " by " << mask.world.height << " at " << mask.mask_x
             << ", " << mask.mask_y << ", kind " << mask.mask_kind;
    FAIL() << told.str() << "\n  result " << error << ", expected " << expected_error << "; progress calls "
           << got_calls.made.size() << ", expected " << expected_calls.made.size() << "\n  " << wrong;
}

template <class P>
void transferMany() {
    test::Random r(sizeof(P) + 5);
    const int count = test::amount(4000);
    for (int i = 0; i < count && !testing::Test::HasFatalFailure(); ++i) {
        int mode = RK_kFirstMode + i % (RK_kLastMode - RK_kFirstMode + 1);
        if (mode == RK_Xfer_None && i % 200 != 2) mode = RK_Xfer_Over;
        transferOne<P>(r, mode);
        RefHost::TakeReports();  // of the refused mode
    }
}
TEST(TransferRectAgainstPlain, EqualAtEveryByteAt8Bits) { transferMany<RK_Pixel8>(); }
TEST(TransferRectAgainstPlain, EqualAtEveryByteAt16Bits) { transferMany<RK_Pixel16>(); }
TEST(TransferRectAgainstPlain, EqualAtEveryBitAtFloat) { transferMany<RK_PixelFloat>(); }

// Rows beyond the 128th, where progress is asked again.
TEST(TransferRectAgainstPlain, TallWorldsAskProgressAtTheSameRows) {
    test::Random r(9);
    const World<RK_Pixel8> src(r, 3, 400), dst(r, 3, 420);
    for (int top = -3; top < 30; top += 7)
        for (int stop_at = 0; stop_at < 5; ++stop_at) {
            World<RK_Pixel8> expected(dst), got(dst);
            Calls expected_calls{{}, stop_at}, got_calls{{}, stop_at};
            RK_ProgressInfo expected_progress{&expected_calls, nullptr, Calls::progress};
            RK_ProgressInfo got_progress{&got_calls, nullptr, Calls::progress};
            const RK_CompositeModePlus how(RK_Xfer_Dissolve, 0.5f, nullptr, false, 77);
            const int expected_error = plain::transferRect<RK_Pixel8>(
                &expected_progress, 0, nullptr, src.record, how, nullptr, 0, top, expected.record);
            EXPECT_EQ(RK_TransferRect(&got_progress, nullptr, nullptr, 0, nullptr, &src.record, &how, nullptr,
                                      nullptr, 0, top, &got.record),
                      expected_error);
            EXPECT_EQ(got_calls.made, expected_calls.made);
            EXPECT_EQ(difference(dst, expected, got), "") << "top " << top << ", stopped at call " << stop_at;
        }
}

// ---- Composite rect and clearing ------------------------------------------------------------------------

using CompositeRectFunc = decltype(RK_CompositeRectBest_Straight);

template <class P>
void compositeMany(bool premultiplied, CompositeRectFunc* function) {
    test::Random r(sizeof(P) + (premultiplied ? 100 : 0));
    const int count = test::amount(4000);
    for (int i = 0; i < count; ++i) {
        const World<P> src{r, side(r), side(r)}, dst{r, side(r), side(r)};
        const GEO_Rect rect = randomRect(r, src.record.width, src.record.height);
        const GEO_Rect* src_rect = r.below(3) != 0 ? &rect : nullptr;
        const uint8_t opacity = test::opacity<RK_Pixel8>(r);
        const int field = static_cast<int>(r.below(4));
        RK_Long x = about(r, dst.record.width), y = about(r, dst.record.height);
        if (r.below(32) == 0) y += r.below(2) == 0 ? 70000 : -70000;
        World<P> expected(dst), got(dst);
        Calls expected_calls{{}, r.below(8) == 0 ? 1 : 0}, got_calls = expected_calls;
        RK_ProgressInfo expected_progress{&expected_calls, nullptr, Calls::progress};
        RK_ProgressInfo got_progress{&got_calls, nullptr, Calls::progress};
        const int expected_error = plain::compositeRect(premultiplied, &expected_progress, src_rect, opacity,
                                                        src.record, x, y, field, expected.record);
        ASSERT_EQ(function(&got_progress, src_rect, opacity, &src.record, x, y, field, nullptr, &got.record),
                  expected_error);
        ASSERT_EQ(got_calls.made, expected_calls.made);
        ASSERT_EQ(difference(dst, expected, got), "")
            << (premultiplied ? "premultiplied" : "straight") << ", depth " << test::kDepth<P> << ", opacity "
            << int{opacity} << ", field " << field << ", at " << x << ", " << y << ", source "
            << (src_rect != nullptr ? show(rect) : "whole");
    }
}
TEST(CompositeRectAgainstPlain, StraightIsEqualAtEveryByte) {
    compositeMany<RK_Pixel8>(false, RK_CompositeRectBest_Straight);
    compositeMany<RK_Pixel8>(false, RK_CompositeRectDraft_Straight);
}
TEST(CompositeRectAgainstPlain, PremultipliedIsEqualAtEveryByte) {
    compositeMany<RK_Pixel8>(true, RK_CompositeRectBest_Premul);
    compositeMany<RK_Pixel8>(true, RK_CompositeRectDraft_Premul);
}
TEST(CompositeRectAgainstPlain, DeeperWorldsAreWalkedAsBytes) {
    compositeMany<RK_Pixel16>(false, RK_CompositeRectBest_Straight);
    compositeMany<RK_Pixel16>(true, RK_CompositeRectBest_Premul);
}

template <class P>
void clearMany() {
    test::Random r(sizeof(P) + 50);
    const int count = test::amount(1000);
    for (int i = 0; i < count; ++i) {
        const World<P> world{r, side(r), side(r)};
        const GEO_Rect keep = randomRect(r, world.record.width, world.record.height);
        World<P> expected(world), got(world);
        plain::clearAlphaExcept<P>(keep, expected.record);
        ASSERT_EQ(RK_ClearAlphaExceptRect(nullptr, &keep, &got.record), 0);
        ASSERT_EQ(difference(world, expected, got), "")
            << "clear alpha, depth " << test::kDepth<P> << ", " << show(keep);
    }
}
TEST(ClearAlphaAgainstPlain, EqualAtEveryDepth) {
    clearMany<RK_Pixel8>();
    clearMany<RK_Pixel16>();
    clearMany<RK_PixelFloat>();
}

}  // namespace
