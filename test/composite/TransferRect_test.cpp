#include "RK/indep/composite/RK_TransferRect.h"

#include <cstring>
#include <functional>
#include <limits>
#include <thread>

#include "RK/indep/frame/RK_Birth.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "test/Reports.h"
#include "test/composite/ModeRows.h"
#include "test/world/OddWorld.h"

namespace {

using test::kFull;
using test::Picture;

constexpr RK_Long kFar[] = {70000,
                            65536,
                            -65536,
                            -70000,
                            RK_Long{INT32_MAX},
                            RK_Long{INT32_MIN},
                            std::numeric_limits<RK_Long>::max(),
                            std::numeric_limits<RK_Long>::min()};

// A call with everything at its plainest; a test changes what it is about.
struct Call {
    RK_ProgressInfo* progress = nullptr;
    RK_Long field = RK_kBothFields;
    const GEO_Rect* src_rect = nullptr;
    RK_CompositeModePlus mode = {RK_Xfer_Over, 1.0f, nullptr, false, 0};
    const RK_LayerDef* mask = nullptr;
    RK_BlendScratch* scratch = nullptr;
    RK_Long dst_x = 0, dst_y = 0;

    RK_Long run(const RK_LayerDef* src, RK_LayerDef* dst) const {
        return RK_TransferRect(progress, nullptr, nullptr, field, src_rect, src, &mode, nullptr, mask, dst_x,
                               dst_y, dst);
    }
    RK_Long runPlus(const RK_LayerDef* src, RK_LayerDef* dst) const {
        return RK_TransferRectPlus(progress, nullptr, nullptr, field, src_rect, src, &mode, nullptr, mask,
                                   scratch, dst_x, dst_y, dst);
    }
    template <class P>
    RK_Long run(Picture<P>& src, Picture<P>& dst) const {
        const RK_LayerDef from = src.record();
        RK_LayerDef to = dst.record();
        return run(&from, &to);
    }
    template <class P>
    RK_Long runPlus(Picture<P>& src, Picture<P>& dst) const {
        const RK_LayerDef from = src.record();
        RK_LayerDef to = dst.record();
        return runPlus(&from, &to);
    }
};
RK_CompositeModePlus modeOf(int32_t xfer, float opacity = 1.0f, bool rgb_only = false, RK_Long seed = 0) {
    return {xfer, opacity, nullptr, rgb_only, seed};
}

template <class P>
RK_Mask maskOf(Picture<P>& picture, int x, int y, uint32_t kind) {
    RK_Mask mask;
    mask.world = picture.record();
    mask.mask_y = static_cast<int16_t>(y);
    mask.mask_x = static_cast<int16_t>(x);
    mask.mask_kind = kind;
    return mask;
}
template <class P>
Picture<P> randomPicture(int width, int height, uint32_t seed, int padding = 1) {
    Picture<P> made(width, height, padding);
    made.fillRandom(seed);
    return made;
}

// Scratch of a caller's own, with rows for `pixels`.
template <class P>
class OwnScratch {
  public:
    explicit OwnScratch(size_t pixels) : alpha_(pixels), matte_(pixels), work_(pixels) {
        EXPECT_EQ(RK_AllocateMotionBlurScratch(&scratch.motion), 0);
        scratch.alpha_save = alpha_.data();
        scratch.matte_row = matte_.data();
        scratch.row_work = work_.data();
    }
    ~OwnScratch() { RK_DisposeMotionBlurScratch(&scratch.motion); }
    RK_BlendScratch scratch = {};

  private:
    std::vector<RK_Channel<P>> alpha_;
    std::vector<P> matte_, work_;
};

template <class P>
class TransferRect : public testing::Test {
  protected:
    void SetUp() override { RefHost::TakeReports(); }
    void TearDown() override {
        RefHost::FailAllocation(0);
        EXPECT_TRUE(test::noReports());
    }
};
TYPED_TEST_SUITE(TransferRect, test::Depths);
class TransferRectArguments : public TransferRect<RK_Pixel8> {};

// ---- Against a look at every pixel ----------------------------------------------------------------------

// The matte of a mask at a destination pixel, by itself. `covered` is false where a mask that does not invert
// cuts.
template <class P>
P mattePixel(const Picture<P>& mask, int x, int y, uint32_t kind, bool* covered) {
    using D = RKp_Depth<P>;
    P matte = {kFull<P>, 0, 0, 0};
    *covered = x >= 0 && y >= 0 && x < mask.width() && y < mask.height();
    if (*covered) {
        const P& m = mask.at(x, y);
        typename D::Wide value = m.alpha;
        if (kind & 2) value = D::mul(value, D::luma(m.red, m.green, m.blue));
        if (kind & 1) value = D::inv(value);
        matte.alpha = static_cast<RK_Channel<P>>(value);
    }
    if (kind & 1) *covered = true;
    return matte;
}

TYPED_TEST(TransferRect, EveryModeAsALookAtEveryPixel) {
    using P = TypeParam;
    test::Random r(17);
    const auto about = [&](int low, int high) { return low + int(r.below(uint32_t(high - low + 1))); };
    const std::vector<test::ModeName>& modes = test::modes();
    int covered_pixels = 0;
    for (int i = 0; i < 20000; ++i) {
        const test::ModeName& m = modes[r.below(uint32_t(modes.size()))];
        // Its noise depends on the place of a pixel in the rectangle; it has tests of its own.
        if (m.number == RK_Xfer_Dissolve) continue;
        Picture<P> src = randomPicture<P>(about(1, 8), about(1, 7), r.next(), 2);
        Picture<P> dst = randomPicture<P>(about(1, 8), about(1, 7), r.next(), 3);
        Picture<P> mask_picture = randomPicture<P>(about(1, 7), about(1, 6), r.next());
        const Picture<P> before = dst;
        const GEO_Rect rect = {int16_t(about(-2, 3)), int16_t(about(-2, 3)), int16_t(about(1, 9)),
                               int16_t(about(1, 9))};
        const bool whole = r.below(3) == 0, masked = m.number == RK_Xfer_MatteMix || r.below(2) == 0;
        const GEO_Rect used = whole ? GEO_Rect{0, 0, int16_t(src.height()), int16_t(src.width())} : rect;
        const uint32_t kind = r.below(4);
        const RK_Mask mask = maskOf(mask_picture, about(-5, 7), about(-5, 7), kind);
        Call call;
        call.field = about(0, 2);
        call.src_rect = whole ? nullptr : &rect;
        call.mode = modeOf(m.number, r.below(2) ? 1.0f : r.unit(), r.below(3) == 0);
        call.mask = masked ? &mask.world : nullptr;
        call.dst_x = about(-4, 6);
        call.dst_y = about(-4, 6);
        ASSERT_EQ(r.below(2) ? call.run(src, dst) : call.runPlus(src, dst), 0) << m.name;

        const RK_BlendingMode<P> mode = RK_MakeBlendingMode<P>(call.mode);
        const bool stencil = m.number == RK_Xfer_StencilAlpha || m.number == RK_Xfer_StencilLuma;
        Picture<P> wanted = before;
        std::vector<bool> inside(size_t(dst.width() * dst.height()), false);
        bool any = false;
        for (int y = 0; y < dst.height(); ++y) {
            for (int x = 0; x < dst.width(); ++x) {
                const int sx = x - int(call.dst_x) + used.left, sy = y - int(call.dst_y) + used.top;
                if (sx < used.left || sx >= used.right || sy < used.top || sy >= used.bottom) continue;
                if (sx < 0 || sy < 0 || sx >= src.width() || sy >= src.height()) continue;
                bool covered = true;
                P matte = {};
                if (masked)
                    matte = mattePixel(mask_picture, x - mask.mask_x, y - mask.mask_y, kind, &covered);
                if (!covered) continue;
                any = true;
                inside[size_t(y * dst.width() + x)] = true;
                if ((call.field == 1 && y % 2 == 1) || (call.field == 2 && y % 2 == 0)) continue;
                wanted.at(x, y) =
                    test::composite(mode, src.at(sx, sy), before.at(x, y), masked ? &matte : nullptr);
            }
        }
        for (int y = 0; y < dst.height(); ++y) {
            for (int x = 0; x < dst.width(); ++x) {
                if (stencil && any && !inside[size_t(y * dst.width() + x)]) wanted.at(x, y).alpha = 0;
                ASSERT_TRUE(test::sameBytes(dst.at(x, y), wanted.at(x, y)))
                    << i << ": " << m.name << " at " << x << ", " << y << ": " << test::text(dst.at(x, y))
                    << ", expected " << test::text(wanted.at(x, y)) << (masked ? " under a mask" : "");
                covered_pixels += inside[size_t(y * dst.width() + x)];
            }
        }
        ASSERT_TRUE(dst.guardsWhole() && src.guardsWhole() && mask_picture.guardsWhole());
    }
    EXPECT_GT(covered_pixels, 15000);
}

// Rows of every width, so that vector rows begin and end everywhere.
TYPED_TEST(TransferRect, RowsOfEveryWidthAndPlace) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(80, 2, 1), mask_picture = randomPicture<P>(80, 2, 3);
    const Picture<P> before = randomPicture<P>(80, 2, 2);
    const RK_Mask mask = maskOf(mask_picture, 0, 0, RK_kMaskAlpha);
    for (int32_t xfer : {int32_t{RK_Xfer_Over}, int32_t{RK_Xfer_Copy}, int32_t{RK_Xfer_Add}}) {
        for (int width = 1; width <= 67; ++width) {
            Picture<P> dst = before;
            const GEO_Rect rect = {0, 3, 2, int16_t(3 + width)};
            Call call;
            call.src_rect = &rect;
            call.mode = modeOf(xfer, width % 2 ? 1.0f : 0.6f);
            call.dst_x = 1 + width % 5;
            call.mask = width % 3 ? nullptr : &mask.world;
            ASSERT_EQ(call.run(src, dst), 0);
            const RK_BlendingMode<P> mode = RK_MakeBlendingMode<P>(call.mode);
            for (int y = 0; y < 2; ++y) {
                for (int x = 0; x < 80; ++x) {
                    const int sx = x - int(call.dst_x) + 3;
                    const bool inside = sx >= 3 && sx < 3 + width;
                    const P* const matte = call.mask ? &mask_picture.at(x, y) : nullptr;
                    const P wanted = inside ? test::composite(mode, src.at(sx, y), before.at(x, y), matte)
                                            : before.at(x, y);
                    ASSERT_TRUE(test::sameBytes(dst.at(x, y), wanted))
                        << xfer << " width " << width << " at " << x;
                }
            }
        }
    }
}

// ---- Clip -----------------------------------------------------------------------------------------------

TYPED_TEST(TransferRect, APlaceFarOffTouchesNothing) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(4, 4, 1), dst = randomPicture<P>(4, 4, 2);
    const Picture<P> before = dst;
    for (RK_Long far : kFar) {
        Call call;
        call.dst_x = far;
        EXPECT_EQ(call.run(src, dst), 0);
        std::swap(call.dst_x, call.dst_y);
        EXPECT_EQ(call.run(src, dst), 0);
        call.dst_x = far;
        call.mode = modeOf(RK_Xfer_StencilAlpha);
        EXPECT_EQ(call.runPlus(src, dst), 0);
    }
    EXPECT_EQ(dst, before);
}

TYPED_TEST(TransferRect, AReversedOrEmptyRectangleTouchesNothing) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(4, 4, 1), dst = randomPicture<P>(4, 4, 2);
    const Picture<P> before = dst;
    for (const GEO_Rect& rect :
         {GEO_Rect{3, 3, 1, 1}, GEO_Rect{0, 3, 4, 1}, GEO_Rect{2, 2, 2, 2}, GEO_Rect{0, 4, 4, 8},
          GEO_Rect{-4, 0, 0, 4}, GEO_Rect{INT16_MAX, INT16_MAX, INT16_MIN, INT16_MIN}}) {
        Call call;
        call.src_rect = &rect;
        EXPECT_EQ(call.run(src, dst), 0);
    }
    EXPECT_EQ(dst, before);
}

TYPED_TEST(TransferRect, TheWidestRectangleIsCutToTheWorlds) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(4, 4, 1), dst = randomPicture<P>(4, 4, 2);
    const GEO_Rect widest = {INT16_MIN, INT16_MIN, INT16_MAX, INT16_MAX};
    Call call;
    call.src_rect = &widest;
    call.mode = modeOf(RK_Xfer_Copy);
    call.dst_x = INT16_MIN + 1;
    call.dst_y = INT16_MIN;
    EXPECT_EQ(call.run(src, dst), 0);
    for (int x = 1; x < 4; ++x) EXPECT_TRUE(test::sameBytes(dst.at(x, 2), src.at(x - 1, 2)));
}

TYPED_TEST(TransferRect, WorldsOfNonsenseSizeAreEmpty) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(4, 4, 1), dst = randomPicture<P>(4, 4, 2), mask_picture(4, 4);
    const Picture<P> before = dst;
    const RK_LayerDef from = src.record(), to = dst.record();
    for (int which = 0; which < 3; ++which) {
        for (int fault = 0; fault < 5; ++fault) {
            RK_LayerDef records[3] = {from, to, {}};
            RK_Mask mask = maskOf(mask_picture, 0, 0, RK_kMaskLuma);
            records[2] = mask.world;
            RK_LayerDef& bad = records[which];
            if (fault == 0) bad.data = nullptr;
            if (fault == 1) bad.width = -1;
            if (fault == 2) bad.height = INT32_MIN;
            if (fault == 3) bad.width = 0;
            if (fault == 4) bad.height = 0;
            mask.world = records[2];
            Call call;
            call.mask = &mask.world;
            EXPECT_EQ(call.run(&records[0], &records[1]), 0) << which << fault;
        }
    }
    EXPECT_EQ(dst, before);
}

TYPED_TEST(TransferRect, NegativeRowbytesRunUpwards) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(3, 3, 1), dst = randomPicture<P>(3, 3, 2);
    RK_LayerDef from = src.record(), to = dst.record();
    from.data = src.row(2);
    from.rowbytes = -from.rowbytes;
    Call call;
    call.mode = modeOf(RK_Xfer_Copy);
    EXPECT_EQ(call.run(&from, &to), 0);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 3; ++x) EXPECT_TRUE(test::sameBytes(dst.at(x, y), src.at(x, 2 - y)));
}

TYPED_TEST(TransferRect, AWorldOntoItself) {
    using P = TypeParam;
    const Picture<P> before = randomPicture<P>(40, 3, 1);
    for (const test::ModeName& m : test::modes()) {
        if (m.number == RK_Xfer_MatteMix || m.number == RK_Xfer_Dissolve) continue;
        Picture<P> both = before;
        Call call;
        call.mode = modeOf(m.number);
        ASSERT_EQ(call.run(both, both), 0);
        // A wrapped mode's first scan moves the source too, so only the others are as from a copy.
        if (m.mode_class != RK_kModePlain && m.mode_class != RK_kModeGuard) continue;
        Picture<P> apart = before, from = before;
        ASSERT_EQ(call.run(from, apart), 0);
        EXPECT_EQ(both, apart) << m.name;
    }
}

// ---- Masks ----------------------------------------------------------------------------------------------

TYPED_TEST(TransferRect, ASmallInvertedMaskShowsTheSourceFullyOutside) {
    using P = TypeParam;
    Picture<P> src(6, 6), mask_picture(2, 2);
    src.fill({kFull<P>, 1, 1, 1});
    mask_picture.fill({kFull<P>, kFull<P>, kFull<P>, kFull<P>});
    for (uint32_t kind : {uint32_t{RK_kMaskInvertedAlpha}, uint32_t{RK_kMaskInvertedLuma}}) {
        Picture<P> dst(6, 6);
        const RK_Mask mask = maskOf(mask_picture, 2, 3, kind);
        Call call;
        call.mask = &mask.world;
        EXPECT_EQ(call.run(src, dst), 0);
        for (int y = 0; y < 6; ++y)
            for (int x = 0; x < 6; ++x)
                EXPECT_EQ(dst.at(x, y).alpha, x >= 2 && x < 4 && y >= 3 && y < 5 ? 0 : kFull<P>)
                    << x << ", " << y;
    }
}

TYPED_TEST(TransferRect, AMaskWithoutPixelsHidesAllAndInvertedHidesNothing) {
    using P = TypeParam;
    Picture<P> src(3, 3), mask_picture(3, 3);
    src.fill({kFull<P>, 1, 1, 1});
    for (uint32_t kind = 0; kind < 4; ++kind) {
        Picture<P> dst(3, 3);
        RK_Mask mask = maskOf(mask_picture, 0, 0, kind);
        mask.world.data = nullptr;
        Call call;
        call.mask = &mask.world;
        EXPECT_EQ(call.run(src, dst), 0);
        EXPECT_EQ(dst.at(1, 1).alpha, kind & 1 ? kFull<P> : 0);
    }
}

TYPED_TEST(TransferRect, AnAlphaMaskNeedsNoRowToBeCopiedInto) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(30, 5, 1), mask_picture = randomPicture<P>(30, 5, 3);
    const Picture<P> before = randomPicture<P>(30, 5, 2), mask_before = mask_picture;
    const RK_Mask mask = maskOf(mask_picture, 0, 0, RK_kMaskAlpha);
    RK_BlendScratch nothing = {};
    Picture<P> with = before, without = before;
    Call call;
    call.mask = &mask.world;
    ASSERT_EQ(call.run(src, with), 0);
    call.scratch = &nothing;
    ASSERT_EQ(call.runPlus(src, without), 0);
    EXPECT_EQ(with, without);
    EXPECT_EQ(mask_picture, mask_before);
}

TYPED_TEST(TransferRect, NothingBeforeTheMasksRecordIsRead) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(3, 3, 1), dst = randomPicture<P>(3, 3, 2), mask_picture(3, 3);
    // On the heap, where a sanitizer sees what reads in front of it.
    const std::unique_ptr<RK_Mask> mask(new RK_Mask(maskOf(mask_picture, 0, 0, RK_kMaskInvertedLuma)));
    Call call;
    call.mask = &mask->world;
    EXPECT_EQ(call.run(src, dst), 0);
}

// ---- Fields ---------------------------------------------------------------------------------------------

TYPED_TEST(TransferRect, AFieldBlendsItsOwnRowsOfTheDestination) {
    using P = TypeParam;
    Picture<P> src(2, 6);
    src.fill({kFull<P>, 1, 1, 1});
    for (RK_Long field = 0; field <= 3; ++field) {
        for (int top : {2, 3}) {
            Picture<P> dst(2, 12);
            Call call;
            call.field = field;
            call.dst_y = top;
            EXPECT_EQ(call.run(src, dst), 0);
            for (int y = 0; y < 12; ++y) {
                const bool blended =
                    y >= top && y < top + 6 && !(field == 1 && y % 2) && !(field == 2 && y % 2 == 0);
                EXPECT_EQ(dst.at(1, y).alpha, blended ? kFull<P> : 0) << "field " << field << " row " << y;
            }
        }
    }
}

// ---- Dissolve -------------------------------------------------------------------------------------------

template <class P>
Picture<P> dissolved(int x, int y, RK_Long field = 0, RK_Long seed = 7) {
    Picture<P> src(64, 40), dst(100, 100);
    src.fill({static_cast<RK_Channel<P>>(RKp_Depth<P>::kGrey), 1, 1, 1});
    Call call;
    call.mode = modeOf(RK_Xfer_Dissolve, 1.0f, false, seed);
    call.dst_x = x;
    call.dst_y = y;
    call.field = field;
    EXPECT_EQ(call.run(src, dst), 0);
    return dst;
}

TYPED_TEST(TransferRect, TheSeedBeginsAtTheLeftEdgeAndGainsWithEveryRow) {
    using P = TypeParam;
    const std::vector<P> src(64, P{static_cast<RK_Channel<P>>(RKp_Depth<P>::kGrey), 1, 1, 1});
    for (RK_Long given : {RK_Long{7}, RK_Long{INT32_MAX}, RK_Long{INT32_MIN}, RK_Long{-1}}) {
        for (int top : {0, 5, 60}) {
            const Picture<P> got = dissolved<P>(11, top, 0, given);
            uint32_t seed = static_cast<uint32_t>(given) + 11u;
            for (int y = top; y < top + 40; ++y) {
                std::vector<P> row(64);
                ASSERT_EQ(
                    test::compositeRow(test::blending<P>(RK_Xfer_Dissolve, kFull<P>, false, int32_t(seed)),
                                       src, static_cast<const P*>(nullptr), row),
                    0);
                ASSERT_EQ(0, std::memcmp(row.data(), &got.at(11, y), 64 * sizeof(P))) << "row " << y;
                seed += static_cast<uint32_t>(y) * 12281u;
            }
        }
    }
}

TYPED_TEST(TransferRect, TheSeedCountsFromTheClippedEdge) {
    using P = TypeParam;
    const Picture<P> cut = dissolved<P>(-10, 0), plain = dissolved<P>(0, 0);
    for (int y = 0; y < 40; ++y) EXPECT_EQ(0, std::memcmp(&cut.at(0, y), &plain.at(0, y), 54 * sizeof(P)));
}

TYPED_TEST(TransferRect, NoiseDiffersBetweenPlacesButNotInTheFirstRow) {
    using P = TypeParam;
    const Picture<P> a = dissolved<P>(10, 20), lower = dissolved<P>(10, 21), right = dissolved<P>(11, 20);
    int differ_down = 0, differ_right = 0;
    for (int y = 0; y < 40; ++y) {
        for (int x = 0; x < 64; ++x) {
            differ_down += !test::sameBytes(a.at(10 + x, 20 + y), lower.at(10 + x, 21 + y));
            differ_right += !test::sameBytes(a.at(10 + x, 20 + y), right.at(11 + x, 20 + y));
        }
        if (y == 0) {
            EXPECT_EQ(differ_down, 0);
        }
    }
    EXPECT_GT(differ_down, 100);
    EXPECT_GT(differ_right, 100);
}

TYPED_TEST(TransferRect, TheSeedMovesOnOverRowsThatAFieldSkips) {
    using P = TypeParam;
    const Picture<P> both = dissolved<P>(10, 21), even = dissolved<P>(10, 21, 1),
                     odd = dissolved<P>(10, 21, 2);
    for (int y = 21; y < 61; ++y) {
        const Picture<P>& blended = y % 2 ? odd : even;
        const Picture<P>& skipped = y % 2 ? even : odd;
        EXPECT_EQ(0, std::memcmp(both.row(y), blended.row(y), 100 * sizeof(P))) << y;
        for (int x = 0; x < 100; ++x) EXPECT_EQ(skipped.at(x, y).alpha, 0);
    }
}

// ---- Stencils -------------------------------------------------------------------------------------------

TYPED_TEST(TransferRect, AStencilClearsOutsideItsAreaOnBothFields) {
    using P = TypeParam;
    Picture<P> src(4, 4), mask_picture(2, 4);
    src.fill({kFull<P>, kFull<P>, kFull<P>, kFull<P>});
    mask_picture.fill({kFull<P>, kFull<P>, kFull<P>, kFull<P>});
    const RK_Mask mask = maskOf(mask_picture, 3, 0, RK_kMaskAlpha);
    for (int32_t xfer = RK_Xfer_StencilAlpha; xfer <= RK_Xfer_SilhouetteLuma; ++xfer) {
        const bool stencil = xfer <= RK_Xfer_StencilLuma;
        for (int bits = 0; bits < 12; ++bits) {
            const bool masked = bits & 1, rgb_only = bits & 2;
            Picture<P> dst(8, 8);
            dst.fill({kFull<P>, 1, 2, 3});
            Call call;
            call.mode = modeOf(xfer, 1.0f, rgb_only);
            call.field = bits / 4;
            call.mask = masked ? &mask.world : nullptr;
            call.dst_x = call.dst_y = 2;
            ASSERT_EQ(call.run(src, dst), 0);
            for (int y = 0; y < 8; ++y) {
                for (int x = 0; x < 8; ++x) {
                    const bool inside =
                        y >= 2 && y < (masked ? 4 : 6) && x >= (masked ? 3 : 2) && x < (masked ? 5 : 6);
                    const P& p = dst.at(x, y);
                    if (!inside) {
                        EXPECT_EQ(p.alpha, stencil ? 0 : kFull<P>) << x << ", " << y;
                    } else if (stencil) {
                        EXPECT_NEAR(double(p.alpha), double(kFull<P>), 1e-6);
                    }
                    EXPECT_TRUE(p.red == 1 && p.green == 2 && p.blue == 3) << "colour stays";
                }
            }
        }
    }
}

TYPED_TEST(TransferRect, AStencilWithAnEmptyAreaLeavesTheDestination) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(4, 4, 1), dst = randomPicture<P>(8, 8, 2), mask_picture(2, 2);
    const Picture<P> before = dst;
    Call call;
    call.mode = modeOf(RK_Xfer_StencilAlpha);
    call.dst_x = 8;
    EXPECT_EQ(call.run(src, dst), 0);
    const RK_Mask mask = maskOf(mask_picture, 5, 5, RK_kMaskAlpha);
    call.dst_x = 0;
    call.mask = &mask.world;
    EXPECT_EQ(call.run(src, dst), 0);
    EXPECT_EQ(dst, before);
}

// ---- Progress -------------------------------------------------------------------------------------------

struct Calls {
    std::vector<std::pair<RK_Long, RK_Long>> all;
    size_t abort_at = SIZE_MAX;
    RK_Long answer = 517;
    bool throws = false;
    std::function<void()> also;
};
RK_Long note(void* refcon, RK_Long current, RK_Long maximum) {
    Calls& calls = *static_cast<Calls*>(refcon);
    calls.all.push_back({current, maximum});
    if (calls.also) calls.also();
    if (calls.all.size() - 1 != calls.abort_at) return 0;
    if (calls.throws) throw calls.answer;
    return calls.answer;
}
RK_Long neverAsked(void*) {
    ADD_FAILURE() << "abort_func was called";
    return 1;
}

TYPED_TEST(TransferRect, ProgressIsToldEvery128thRowOfTheDestination) {
    using P = TypeParam;
    Picture<P> src(1, 400), dst(1, 600);
    Calls calls;
    RK_ProgressInfo progress = {&calls, neverAsked, note};
    Call call;
    call.progress = &progress;
    call.dst_y = 100;
    for (RK_Long field = 0; field <= 2; ++field) {
        calls.all.clear();
        call.field = field;
        EXPECT_EQ(call.run(src, dst), 0);
        const std::vector<std::pair<RK_Long, RK_Long>> wanted = {{28, 400}, {156, 400}, {284, 400}};
        EXPECT_EQ(calls.all, wanted) << "on rows that a field skips too";
    }
    calls.all.clear();
    call.dst_y = 0;
    EXPECT_EQ(call.runPlus(src, dst), 0);
    const std::vector<std::pair<RK_Long, RK_Long>> wanted = {{0, 400}, {128, 400}, {256, 400}, {384, 400}};
    EXPECT_EQ(calls.all, wanted);
    progress.progress_func = nullptr;
    EXPECT_EQ(call.run(src, dst), 0);
}

TYPED_TEST(TransferRect, AnAbortAtEveryCallKeepsTheRowsDone) {
    using P = TypeParam;
    Picture<P> src(2, 400);
    src.fill({kFull<P>, 1, 1, 1});
    for (size_t at = 0; at < 4; ++at) {
        for (RK_Long answer : {RK_Long{517}, RK_Long{-1}, RK_Long{42}}) {
            for (bool throws : {false, true}) {
                Picture<P> dst(2, 400);
                Calls calls;
                calls.abort_at = at;
                calls.answer = answer;
                calls.throws = throws;
                RK_ProgressInfo progress = {&calls, nullptr, note};
                Call call;
                call.progress = &progress;
                ASSERT_EQ(call.run(src, dst), answer);
                ASSERT_EQ(calls.all.size(), at + 1);
                for (int y = 0; y < 400; ++y)
                    ASSERT_EQ(dst.at(1, y).alpha, y <= int(at) * 128 ? kFull<P> : 0) << y;
            }
        }
    }
}

TYPED_TEST(TransferRect, AHostMayFreeScratchWhileItIsToldOfProgress) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(5000, 140, 1), mask_picture = randomPicture<P>(5000, 140, 3);
    const RK_Mask mask = maskOf(mask_picture, 0, 0, RK_kMaskInvertedLuma);
    const Picture<P> before = randomPicture<P>(5000, 140, 2);
    Picture<P> calm = before, shaken = before;
    Call call;
    call.mode = modeOf(RK_Xfer_Add, 0.5f, true);
    call.mask = &mask.world;
    ASSERT_EQ(call.run(src, calm), 0);
    Calls calls;
    calls.also = [] { EXPECT_EQ(RK_FreeUpSomeMemory(), 0); };
    RK_ProgressInfo progress = {&calls, nullptr, note};
    call.progress = &progress;
    ASSERT_EQ(call.run(src, shaken), 0);
    EXPECT_EQ(calls.all.size(), 2u);
    EXPECT_EQ(calm, shaken);
    // When there is no memory to take up again, the pass ends there.
    calls.also = [] {
        EXPECT_EQ(RK_FreeUpSomeMemory(), 0);
        RefHost::FailAllocation(1);
    };
    EXPECT_EQ(call.run(src, shaken), 4);
    EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Memory, 0, "blending scratch buffer"));
}

// ---- Modes ----------------------------------------------------------------------------------------------

TYPED_TEST(TransferRect, ARefusedModeGivesFiveWithOneReportAndTouchesNothing) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(3, 300, 1), dst = randomPicture<P>(3, 300, 2);
    const Picture<P> before = dst;
    Calls calls;
    RK_ProgressInfo progress = {&calls, nullptr, note};
    for (RK_Long xfer : {RK_Long{-1}, RK_Long{-4}, RK_Long{37}, std::numeric_limits<RK_Long>::max(),
                         std::numeric_limits<RK_Long>::min()}) {
        Call call;
        call.progress = &progress;
        call.mode = {xfer, 1.0f, nullptr, true, 0};
        EXPECT_EQ(call.run(src, dst), 5);
        EXPECT_TRUE(
            test::onlyReport(RefHost::ReportKind::Error, RK_kLocation, "unimplemented blending mode."));
        // The clip comes first.
        call.dst_x = 3;
        EXPECT_EQ(call.run(src, dst), 0);
        EXPECT_TRUE(test::noReports());
    }
    EXPECT_EQ(dst, before);
    EXPECT_TRUE(calls.all.empty());
}

TYPED_TEST(TransferRect, MatteMixWithoutAMaskGivesThreeInSilence) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(3, 3, 1), dst = randomPicture<P>(3, 3, 2);
    const Picture<P> before = dst;
    Call call;
    call.mode = modeOf(RK_Xfer_MatteMix);
    EXPECT_EQ(call.run(src, dst), 3);
    EXPECT_EQ(dst, before);
}

TYPED_TEST(TransferRect, TheModesOwnTablesAreNotRead) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(9, 3, 1), plain = randomPicture<P>(9, 3, 2);
    Picture<P> odd = plain;
    Call call;
    EXPECT_EQ(call.run(src, plain), 0);
    std::memset(&call.mode.tables, 0x5A, sizeof call.mode.tables);
    EXPECT_EQ(call.run(src, odd), 0);
    EXPECT_EQ(plain, odd);
}

TYPED_TEST(TransferRect, AnyNonZeroByteMeansColourOnly) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(9, 3, 1);
    const Picture<P> before = randomPicture<P>(9, 3, 2);
    Picture<P> one = before, odd = before;
    Call call;
    call.mode = modeOf(RK_Xfer_Add, 1.0f, true);
    EXPECT_EQ(call.run(src, one), 0);
    call.mode.rgb_only = 0xF0;
    EXPECT_EQ(call.run(src, odd), 0);
    EXPECT_EQ(one, odd);
    for (int x = 0; x < 9; ++x) EXPECT_EQ(one.at(x, 1).alpha, before.at(x, 1).alpha);
}

TYPED_TEST(TransferRect, OpacitiesOfAnyValueAreSafe) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(20, 2, 1), dst = randomPicture<P>(20, 2, 2);
    for (const test::ModeName& m : test::modes()) {
        if (m.number == RK_Xfer_MatteMix) continue;
        for (float opacity : {-1.0f, 1.01f, 3e38f, -3e38f, std::numeric_limits<float>::quiet_NaN(),
                              std::numeric_limits<float>::infinity(), 1e-45f}) {
            Call call;
            call.mode = modeOf(m.number, opacity);
            EXPECT_EQ(call.run(src, dst), 0) << m.name;
        }
    }
    EXPECT_TRUE(dst.guardsWhole());
}

// ---- Memory ---------------------------------------------------------------------------------------------

TYPED_TEST(TransferRect, ASteadyCompositeAllocatesNothing) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(200, 20, 1), dst = randomPicture<P>(200, 20, 2), mask_picture = dst;
    const auto all = [&] {
        for (const test::ModeName& m : test::modes()) {
            for (uint32_t kind = 0; kind < 4; ++kind) {
                const RK_Mask mask = maskOf(mask_picture, 3, 3, kind);
                Call call;
                call.mode = modeOf(m.number, 0.7f, kind & 1);
                call.mask = &mask.world;
                ASSERT_EQ(call.run(src, dst), 0);
            }
        }
    };
    all();
    RefHost::FailAllocation(0);
    all();
    EXPECT_EQ(RefHost::AllocationsSince(), 0);
}

TYPED_TEST(TransferRect, EveryAllocationFailedGivesFourAndTouchesNothing) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(9, 9, 1), dst = randomPicture<P>(9, 9, 2);
    const Picture<P> before = dst;
    RKp_DisposeScratch();
    const RefHost::MemoryUse held = RefHost::Memory();
    int64_t failed = 0;
    for (int64_t n = 1;; ++n) {
        RefHost::FailAllocation(n);
        const RK_Long result = Call().run(src, dst);
        if (RefHost::AllocationsSince() < n) {
            EXPECT_EQ(result, 0);
            break;
        }
        ++failed;
        EXPECT_EQ(result, 4);
        EXPECT_EQ(RefHost::TakeReports().size(), 1u);
        EXPECT_EQ(dst, before);
        RKp_DisposeScratch();
        EXPECT_EQ(RefHost::Memory().blocks, held.blocks);
        EXPECT_EQ(RefHost::Memory().bytes, held.bytes);
    }
    EXPECT_EQ(failed, 10);
    EXPECT_NE(dst, before);
}

TYPED_TEST(TransferRect, WantOfScratchIsSeenBeforeTheClip) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(9, 9, 1), dst = randomPicture<P>(9, 9, 2);
    ASSERT_EQ(RKp_ReallocScratch(1, 1, true, nullptr), 0);
    Call call;
    call.dst_x = 100;
    RefHost::FailAllocation(1);
    EXPECT_EQ(call.run(src, dst), 4);
    EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Memory, 0, "blending scratch buffer"));
    RefHost::FailAllocation(0);
    EXPECT_EQ(call.run(src, dst), 0);
}

// ---- A caller's own scratch -----------------------------------------------------------------------------

TYPED_TEST(TransferRect, WithItsOwnScratchACallNeedsNothingOfTheProcess) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(30, 9, 1), dst = randomPicture<P>(30, 9, 2), mask_picture = src;
    const RK_Mask mask = maskOf(mask_picture, 0, 0, RK_kMaskLuma);
    OwnScratch<P> own(30);
    RKp_DisposeScratch();
    Call call;
    call.mode = modeOf(RK_Xfer_Add, 0.5f, true);
    call.mask = &mask.world;
    call.scratch = &own.scratch;
    RefHost::FailAllocation(0);
    EXPECT_EQ(call.runPlus(src, dst), 0);
    EXPECT_EQ(RefHost::AllocationsSince(), 0);
    call.scratch = nullptr;
    EXPECT_EQ(call.runPlus(src, dst), 0);
    EXPECT_EQ(RefHost::AllocationsSince(), 10);
}

TYPED_TEST(TransferRect, AMissingRowOfScratchIsABadParameterWhereItIsNeeded) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(9, 9, 1), dst = randomPicture<P>(9, 9, 2), mask_picture = src;
    const Picture<P> before = dst;
    RK_BlendScratch nothing = {};
    Call call;
    call.scratch = &nothing;
    const RK_Mask mask = maskOf(mask_picture, 0, 0, RK_kMaskLuma);
    call.mask = &mask.world;
    EXPECT_EQ(call.runPlus(src, dst), 3);
    EXPECT_TRUE(test::onlyBadParam(13));
    call.mask = nullptr;
    call.mode = modeOf(RK_Xfer_Add, 1.0f, true);
    EXPECT_EQ(call.runPlus(src, dst), 3);
    EXPECT_TRUE(test::onlyBadParam(13));
    EXPECT_EQ(dst, before);
    call.mode = modeOf(RK_Xfer_Add);
    EXPECT_EQ(call.runPlus(src, dst), 0);
}

TYPED_TEST(TransferRect, TwoThreadsWithTheirOwnScratchGiveTheSameBytes) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(150, 140, 1), mask_picture = randomPicture<P>(150, 140, 3);
    const Picture<P> before = randomPicture<P>(150, 140, 2);
    const auto work = [&](Picture<P>& dst, RK_BlendScratch* scratch) {
        const RK_LayerDef from = src.record();
        RK_LayerDef to = dst.record();
        for (const test::ModeName& m : test::modes()) {
            for (uint32_t kind = 0; kind < 4; ++kind) {
                RK_Mask mask = {};
                mask.world = mask_picture.record();
                mask.mask_kind = kind;
                Call call;
                call.mode = modeOf(m.number, 0.8f, kind == 2, 5);
                call.mask = &mask.world;
                call.scratch = scratch;
                if (call.runPlus(&from, &to) != 0) return false;
            }
        }
        return true;
    };
    Picture<P> alone = before, one = before, two = before;
    ASSERT_TRUE(work(alone, nullptr));
    OwnScratch<P> scratch1(150), scratch2(150);
    bool ok1 = false, ok2 = false;
    std::thread first([&] { ok1 = work(one, &scratch1.scratch); });
    std::thread second([&] { ok2 = work(two, &scratch2.scratch); });
    first.join();
    second.join();
    EXPECT_TRUE(ok1 && ok2);
    EXPECT_EQ(one, alone);
    EXPECT_EQ(two, alone);
}

// ---- Arguments ------------------------------------------------------------------------------------------

TYPED_TEST(TransferRect, WithoutARectangleTheWholeSourceGoes) {
    using P = TypeParam;
    Picture<P> src = randomPicture<P>(5, 4, 1), dst(7, 7), wanted(7, 7);
    Call call;
    call.mode = modeOf(RK_Xfer_Copy);
    call.dst_x = 1;
    call.dst_y = 2;
    EXPECT_EQ(call.run(src, dst), 0);
    const GEO_Rect all = {0, 0, 4, 5};
    call.src_rect = &all;
    EXPECT_EQ(call.run(src, wanted), 0);
    EXPECT_EQ(dst, wanted);
    EXPECT_TRUE(test::sameBytes(dst.at(1, 2), src.at(0, 0)));
}

TEST_F(TransferRectArguments, ANullWorldOrModeIsABadParameter) {
    Picture<RK_Pixel8> src = randomPicture<RK_Pixel8>(3, 3, 1), dst = randomPicture<RK_Pixel8>(3, 3, 2);
    const Picture<RK_Pixel8> before = dst;
    const RK_LayerDef from = src.record();
    RK_LayerDef to = dst.record();
    const RK_CompositeModePlus mode = modeOf(RK_Xfer_Over);
    for (int bits = 0; bits < 7; ++bits) {
        const RK_LayerDef* const s = bits & 1 ? &from : nullptr;
        const RK_CompositeModePlus* const m = bits & 2 ? &mode : nullptr;
        RK_LayerDef* const d = bits & 4 ? &to : nullptr;
        EXPECT_EQ(RK_TransferRect(nullptr, nullptr, nullptr, 0, nullptr, s, m, nullptr, nullptr, 0, 0, d), 3);
        EXPECT_TRUE(test::onlyBadParam(13));
        EXPECT_EQ(RK_TransferRectPlus(nullptr, nullptr, nullptr, 0, nullptr, s, m, nullptr, nullptr, nullptr,
                                      0, 0, d),
                  3);
        EXPECT_TRUE(test::onlyBadParam(13));
    }
    EXPECT_EQ(dst, before);
}

template <class P, class Q>
void expectDepthsDiffer() {
    Picture<P> one = randomPicture<P>(4, 4, 1);
    Picture<Q> other = randomPicture<Q>(4, 4, 2);
    const Picture<Q> before = other;
    const RK_LayerDef from = one.record();
    RK_LayerDef to = other.record();
    EXPECT_EQ(Call().run(&from, &to), 3);
    EXPECT_TRUE(test::onlyVerification("RK_TransferRect requires src and dst worlds to have same bit depth"));
    EXPECT_EQ(Call().runPlus(&from, &to), 3);
    EXPECT_TRUE(
        test::onlyVerification("RK_TransferRectPlus requires src and dst worlds to have same bit depth"));
    // A mask of another depth counts as one.
    const RK_Mask mask = maskOf(one, 0, 0, RK_kMaskAlpha);
    Call call;
    call.mask = &mask.world;
    EXPECT_EQ(call.run(other, other), 3);
    EXPECT_TRUE(test::onlyVerification("RK_TransferRect requires src and dst worlds to have same bit depth"));
    EXPECT_EQ(call.runPlus(other, other), 3);
    EXPECT_TRUE(
        test::onlyVerification("RK_TransferRectPlus requires src and dst worlds to have same bit depth"));
    EXPECT_EQ(other, before);
}
TEST_F(TransferRectArguments, DifferingDepthsAreReported) {
    expectDepthsDiffer<RK_Pixel8, RK_Pixel16>();
    expectDepthsDiffer<RK_Pixel8, RK_PixelFloat>();
    expectDepthsDiffer<RK_Pixel16, RK_Pixel8>();
    expectDepthsDiffer<RK_Pixel16, RK_PixelFloat>();
    expectDepthsDiffer<RK_PixelFloat, RK_Pixel8>();
    expectDepthsDiffer<RK_PixelFloat, RK_Pixel16>();
}

TEST_F(TransferRectArguments, AnUnknownDepthIsReported) {
    Picture<RK_Pixel8> picture = randomPicture<RK_Pixel8>(3, 3, 1);
    const Picture<RK_Pixel8> before = picture;
    test::OddWorld odd(24);
    odd.record.data = picture.row(0);
    odd.record.width = odd.record.height = 3;
    odd.record.rowbytes = 16;
    EXPECT_EQ(Call().run(&odd.record, &odd.record), 3);
    EXPECT_TRUE(test::onlyBadDepth("Unknown world bitdepth in##CONDITIONNAME"));
    EXPECT_EQ(Call().runPlus(&odd.record, &odd.record), 3);
    EXPECT_TRUE(test::onlyBadDepth("Unknown world bitdepth in##CONDITIONNAME"));
    EXPECT_EQ(picture, before);
}

// ---- The table ------------------------------------------------------------------------------------------

const void* g_passed[10];
RK_Long g_numbers[3];

RK_Long passed(RK_ProgressInfo* progress, void* r1, void* r2, RK_Long field, const GEO_Rect* rect,
               const RK_LayerDef* src, const RK_CompositeModePlus* mode,
               const RK_LinearBlendingTables* tables, const RK_LayerDef* mask, RK_Long x, RK_Long y,
               RK_LayerDef* dst) {
    const void* all[] = {progress, r1, r2, rect, src, mode, tables, mask, nullptr, dst};
    std::memcpy(g_passed, all, sizeof all);
    g_numbers[0] = field, g_numbers[1] = x, g_numbers[2] = y;
    return 4711;
}
RK_Long passedPlus(RK_ProgressInfo* progress, void* r1, void* r2, RK_Long field, const GEO_Rect* rect,
                   const RK_LayerDef* src, const RK_CompositeModePlus* mode,
                   const RK_LinearBlendingTables* tables, const RK_LayerDef* mask, RK_BlendScratch* scratch,
                   RK_Long x, RK_Long y, RK_LayerDef* dst) {
    passed(progress, r1, r2, field, rect, src, mode, tables, mask, x, y, dst);
    g_passed[8] = scratch;
    return 4712;
}

TEST_F(TransferRectArguments, TheExportsHandEverythingToTheirSlots) {
    char places[10];
    const auto at = [&](int i) { return static_cast<void*>(&places[i]); };
    void* const held31 = RKp_G_OverFuncs[31];
    void* const held47 = RKp_G_OverFuncs[47];
    ASSERT_EQ(RK_SetOverrideFunc(31, reinterpret_cast<void*>(passed)), 0);
    ASSERT_EQ(RK_SetOverrideFunc(47, reinterpret_cast<void*>(passedPlus)), 0);
    EXPECT_EQ(RK_TransferRect(
                  static_cast<RK_ProgressInfo*>(at(0)), at(1), at(2), 11, static_cast<const GEO_Rect*>(at(3)),
                  static_cast<const RK_LayerDef*>(at(4)), static_cast<const RK_CompositeModePlus*>(at(5)),
                  static_cast<const RK_LinearBlendingTables*>(at(6)), static_cast<const RK_LayerDef*>(at(7)),
                  12, 13, static_cast<RK_LayerDef*>(at(9))),
              4711);
    for (int i : {0, 1, 2, 3, 4, 5, 6, 7, 9}) EXPECT_EQ(g_passed[i], at(i)) << i;
    EXPECT_TRUE(g_numbers[0] == 11 && g_numbers[1] == 12 && g_numbers[2] == 13);
    EXPECT_EQ(RK_TransferRectPlus(
                  static_cast<RK_ProgressInfo*>(at(9)), at(8), at(7), 21, static_cast<const GEO_Rect*>(at(6)),
                  static_cast<const RK_LayerDef*>(at(5)), static_cast<const RK_CompositeModePlus*>(at(4)),
                  static_cast<const RK_LinearBlendingTables*>(at(3)), static_cast<const RK_LayerDef*>(at(2)),
                  static_cast<RK_BlendScratch*>(at(1)), 22, 23, static_cast<RK_LayerDef*>(at(0))),
              4712);
    for (int i = 0; i < 8; ++i) EXPECT_EQ(g_passed[i], at(9 - i)) << i;
    EXPECT_EQ(g_passed[8], at(1));
    EXPECT_EQ(g_passed[9], at(0));
    EXPECT_TRUE(g_numbers[0] == 21 && g_numbers[1] == 22 && g_numbers[2] == 23);
    RK_SetOverrideFunc(31, held31);
    RK_SetOverrideFunc(47, held47);
}

TEST_F(TransferRectArguments, TheTwoReservedArgumentsAreNotRead) {
    Picture<RK_Pixel8> src = randomPicture<RK_Pixel8>(3, 3, 1), dst = randomPicture<RK_Pixel8>(3, 3, 2);
    const RK_LayerDef from = src.record();
    RK_LayerDef to = dst.record();
    const RK_CompositeModePlus mode = modeOf(RK_Xfer_Over);
    void* const nowhere = reinterpret_cast<void*>(uintptr_t{1});
    EXPECT_EQ(
        RK_TransferRect(nullptr, nowhere, nowhere, 0, nullptr, &from, &mode, nullptr, nullptr, 0, 0, &to), 0);
}

}  // namespace
