#include "test/composite/ModeRows.h"

using namespace test;

namespace {

template <class P>
struct PixelTableTest : ::testing::Test {};
TYPED_TEST_SUITE(PixelTableTest, Depths);

}  // namespace

TYPED_TEST(PixelTableTest, SlotsOfModesAreFilledAndTheLastThreeAreNull) {
    using T = PixelTables<TypeParam>;
    for (int i = 0; i <= 36; ++i) {
        EXPECT_NE(T::plain[i], nullptr) << i;
        EXPECT_NE(T::opacity[i], nullptr) << i;
        EXPECT_NE(T::opacity2[i], nullptr) << i;
    }
    for (int i = 37; i <= 39; ++i) {
        EXPECT_EQ(T::plain[i], nullptr) << i;
        EXPECT_EQ(T::opacity[i], nullptr) << i;
        EXPECT_EQ(T::opacity2[i], nullptr) << i;
    }
    static_assert(sizeof T::plain / sizeof T::plain[0] == 40);
}

// What an opacity gives is what the scaled alpha gives.
TYPED_TEST(PixelTableTest, OpacityScalesTheSourceAlphaAndNothingElse) {
    using P = TypeParam;
    using D = RKp_Depth<P>;
    Random r(1);
    for (int n = 0; n <= 36; ++n)
        for (int i = 0; i < 400; ++i) {
            const P s = pixel<P>(r), d = pixel<P>(r), o = pixel<P>(r);
            const RK_Channel<P> o1 = i % 5 ? o.alpha : kFull<P>, o2 = i % 7 ? o.red : kFull<P>;
            P once = s, twice = s;
            once.alpha = RK_Channel<P>(D::mul(s.alpha, o1));
            twice.alpha = RK_Channel<P>(D::mul(once.alpha, o2));
            ASSERT_EQ(text(alone(n, s, d, o1)), text(alone(n, once, d))) << n << text(s) << text(d);
            ASSERT_EQ(text(alone(n, s, d, o1, o2)), text(alone(n, twice, d))) << n << text(s) << text(d);
        }
}

TYPED_TEST(PixelTableTest, AFullOpacityIsThePlainForm) {
    using P = TypeParam;
    Random r(2);
    for (int n = 0; n <= 36; ++n)
        for (int i = 0; i < 100; ++i) {
            const P s = pixel<P>(r), d = pixel<P>(r);
            ASSERT_EQ(text(alone(n, s, d, kFull<P>)), text(alone(n, s, d)));
            ASSERT_EQ(text(alone(n, s, d, kFull<P>, kFull<P>)), text(alone(n, s, d)));
        }
}

// Above full an opacity scales as any other.
TEST(PixelTables, OpacityAboveFullScalesUp) {
    const RK_Pixel16 s = {16384, 100, 200, 300}, d = {32768, 5, 6, 7};
    EXPECT_EQ(text(alone(RK_Xfer_Copy, s, d, 33096)), "(16548, 100, 200, 300)");
    const RK_PixelFloat sf = {0.5f, 0.25f, 0.5f, 0.75f}, df = {1.0f, 0.0f, 0.0f, 0.0f};
    EXPECT_EQ(text(alone(RK_Xfer_Copy, sf, df, 1.5f)), "(0.75, 0.25, 0.5, 0.75)");
    EXPECT_EQ(text(alone(RK_Xfer_Over, sf, df, 2.0f)), "(1, 0.25, 0.5, 0.75)");
}

TYPED_TEST(PixelTableTest, CopyStoresTheScaledAlphaAndSkipsAClearSource) {
    using P = TypeParam;
    const RK_Channel<P> half = RK_Channel<P>(RKp_Depth<P>::kGrey), W = kFull<P>;
    const P s = {W, 1, 0, W}, clear = {0, 1, 0, W}, d = {1, 0, 0, 1};
    EXPECT_EQ(text(alone(RK_Xfer_Copy, s, d, half)), text(P{half, 1, 0, W}));
    EXPECT_EQ(text(alone(RK_Xfer_Copy, s, d, RK_Channel<P>(0))), text(d));
    EXPECT_EQ(text(alone(RK_Xfer_Copy, clear, d)), text(d));
    EXPECT_EQ(text(alone(RK_Xfer_Copy, s, d)), text(s));
    EXPECT_EQ(text(alone(RK_Xfer_Copy, s, d, W, RK_Channel<P>(0))), text(d));
}

// PremulOver never tests the alpha; the row of StencilAlpha does not either.
TYPED_TEST(PixelTableTest, AClearSourceChangesNothingButUnderPremulOver) {
    using P = TypeParam;
    Random r(3);
    for (int n = 0; n <= 36; ++n) {
        if (n == RK_Xfer_PremulOver) continue;
        for (int i = 0; i < 100; ++i) {
            P s = pixel<P>(r);
            const P d = pixel<P>(r);
            ASSERT_EQ(text(alone(n, s, d, RK_Channel<P>(0))), text(d)) << n;
            ASSERT_EQ(text(alone(n, s, d, kFull<P>, RK_Channel<P>(0))), text(d)) << n;
            s.alpha = 0;
            ASSERT_EQ(text(alone(n, s, d)), text(d)) << n;
        }
    }
}

TYPED_TEST(PixelTableTest, WithTablesReportsAndLeavesThePixelUntilThereAreCurves) {
    using P = TypeParam;
    const auto* tables = reinterpret_cast<const RK_LinearBlendingTables*>(&kFull<P>);
    for (int n = 0; n <= 36; ++n) {
        const P s = {1, 1, 0, 1};
        P d = {0, 1, 1, 0};
        PixelTables<P>::plain[n](&s, tables, &d);
        PixelTables<P>::opacity[n](&s, tables, 1, &d);
        PixelTables<P>::opacity2[n](&s, tables, 1, 1, &d);
        EXPECT_EQ(text(d), text(P{0, 1, 1, 0})) << n;
        const auto reports = RefHost::TakeReports();
        ASSERT_EQ(reports.size(), 3u) << n;
        EXPECT_EQ(reports[2].text, "Invalid tables for linearized blending");
    }
}

TYPED_TEST(PixelTableTest, SourceAndDestinationMayBeOnePixel) {
    using P = TypeParam;
    Random r(4);
    for (int n = 0; n <= 36; ++n)
        for (int i = 0; i < 100; ++i) {
            const P p = pixel<P>(r);
            P one = p;
            PixelTables<P>::plain[n](&one, nullptr, &one);
            ASSERT_EQ(text(one), text(alone(n, p, p))) << n;
        }
}
