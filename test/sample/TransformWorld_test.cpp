#include "RK/indep/sample/RK_TransformWorld.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "refhost/RefHost.h"
#include "test/Reports.h"
#include "test/SlotOverride.h"
#include "test/sample/TransformTest.h"

namespace {

using test::kIdentity;
using test::modeOf;
using test::rotation;
using test::scaling;
using test::translation;

template <class P>
class Transform : public test::TransformTest<P> {};
using Depths = testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;
TYPED_TEST_SUITE(Transform, Depths, );

TYPED_TEST(Transform, ADraftTranslationWithAFractionIsATransferToo) {
    const auto wanted = this->copyOf(this->dst), got = this->copyOf(this->dst);
    RK_CompositeModePlus mode(modeOf<TypeParam>(RK_Xfer_Over));
    ASSERT_EQ(0, RK_TransferRect(nullptr, nullptr, nullptr, 0, nullptr, &this->src.record, &mode, nullptr,
                                 nullptr, 3, 1, &wanted->record));
    ASSERT_EQ(0, this->draw({translation(2.6, 1.4)}, *got, RK_Xfer_Over, RK_kDraft));
    EXPECT_TRUE(this->same(*wanted, *got));
}

TYPED_TEST(Transform, AMotionOfAFlatOpaquePictureKeepsItsColourInside) {
    const RK_Pixel16 colour = {32768, 8192, 16384, 32768};
    this->src.Fill(colour, nullptr);
    const TypeParam flat = this->src.row(0)[0];
    for (RK_Long quality : {RK_kDraft, RK_kBest}) {
        const auto got = this->copyOf(this->dst);
        ASSERT_EQ(0, this->draw({translation(0.5, 0.25), translation(2.5, 1.25), translation(4.5, 2.25)},
                                *got, RK_Xfer_Over, quality));
        const TypeParam& p = got->row(8)[10];
        EXPECT_NEAR(double(flat.alpha), double(p.alpha), 1);
        EXPECT_NEAR(double(flat.red), double(p.red), 1);
        EXPECT_NEAR(double(flat.blue), double(p.blue), 1);
    }
}

// The general path samples every matrix; turning steps send it there.
TYPED_TEST(Transform, AGeneralMotionOfAFlatOpaquePictureKeepsItsColourInside) {
    const RK_Pixel16 colour = {32768, 8192, 16384, 32768};
    this->src.Fill(colour, nullptr);
    const TypeParam flat = this->src.row(0)[0];
    ASSERT_EQ(0, this->draw({rotation(0, 10, 7), rotation(4, 10, 7), rotation(10, 10, 7)}, this->dst));
    const TypeParam& p = this->dst.row(7)[10];
    EXPECT_NEAR(double(flat.alpha), double(p.alpha), 1);
    EXPECT_NEAR(double(flat.red), double(p.red), 1);
}

TYPED_TEST(Transform, AZeroScaleDrawsNothingButAStencilClearsTheRectangle) {
    const auto before = this->copyOf(this->dst), got = this->copyOf(this->dst);
    ASSERT_EQ(0, this->draw({scaling(0, 1)}, *got));
    EXPECT_TRUE(this->same(*before, *got));
    const GEO_Rect rect = {2, 3, 9, 11};
    ASSERT_EQ(0, this->draw({scaling(0, 1)}, *got, RK_Xfer_StencilLuma, RK_kBest, 0, nullptr, &rect));
    for (int32_t y = 0; y < 18; ++y)
        for (int32_t x = 0; x < 24; ++x) {
            TypeParam wanted = before->row(y)[x];
            if (y >= 2 && y < 9 && x >= 3 && x < 11) wanted.alpha = 0;
            ASSERT_TRUE(test::sameBytes(wanted, got->row(y)[x])) << x << ", " << y;
        }
}

TYPED_TEST(Transform, ASampledStencilClearsTheRestOfItsRectangleAndNothingElse) {
    const auto got = this->copyOf(this->dst);
    const GEO_Rect rect = {0, 0, 18, 20};
    ASSERT_EQ(0, this->draw({scaling(0.4, 0.4)}, *got, RK_Xfer_StencilAlpha, RK_kBest, 0, nullptr, &rect));
    EXPECT_EQ(0, got->row(17)[5].alpha);
    EXPECT_EQ(this->dst.row(17)[5].red, got->row(17)[5].red);
    EXPECT_TRUE(test::sameBytes(this->dst.row(17)[22], got->row(17)[22]));
}

TYPED_TEST(Transform, FieldsAreRowsOfTheDestination) {
    const std::vector<GEO_Matrix3> all[] = {{rotation(8, 9, 6)},
                                            {scaling(0.6, 0.9)},
                                            {translation(2, 1)},
                                            {translation(0.5, 0), translation(1.5, 0.5), translation(2.5, 1)},
                                            {rotation(2, 9, 6), rotation(4, 9, 6), rotation(9, 9, 6)}};
    const GEO_Rect rect = {3, 0, 17, 24};
    const RK_TransformMask mask = {&this->src, 1, 2, RK_kMaskInvertedLuma};
    for (const auto& series : all) {
        for (const RK_Long quality : {RK_kDraft, RK_kBest}) {
            for (const RK_TransformMask* const with :
                 {static_cast<const RK_TransformMask*>(nullptr), &mask}) {
                const auto whole = this->copyOf(this->dst);
                ASSERT_EQ(0, this->draw(series, *whole, RK_Xfer_Over, quality, 0, with, &rect));
                for (const RK_Long field : {RK_kEvenField, RK_kOddField}) {
                    const auto got = this->copyOf(this->dst);
                    ASSERT_EQ(0, this->draw(series, *got, RK_Xfer_Over, quality, field, with, &rect));
                    for (int32_t y = 0; y < 18; ++y) {
                        const bool drawn = (y & 1) == (field == RK_kEvenField ? 0 : 1);
                        const auto& wanted = drawn ? *whole : this->dst;
                        for (int32_t x = 0; x < 24; ++x)
                            ASSERT_TRUE(test::sameBytes(wanted.row(y)[x], got->row(y)[x])) << y;
                    }
                }
            }
        }
    }
}

TYPED_TEST(Transform, AMaskLimitsTheDrawing) {
    typename TestFixture::World mask(5, 4, 0);
    const RK_Pixel16 white = {32768, 32768, 32768, 32768};
    mask.Fill(white, nullptr);
    for (RK_Long quality : {RK_kDraft, RK_kBest}) {
        const RK_TransformMask plain = {&mask, 6, 8, RK_kMaskAlpha};
        const auto whole = this->copyOf(this->dst), got = this->copyOf(this->dst);
        // Positions count from the drawn rectangle's corner, so the whole is drawn in the mask's rectangle
        // too.
        const GEO_Rect rect = {6, 8, 10, 13};
        ASSERT_EQ(0, this->draw({rotation(8, 9, 6)}, *whole, RK_Xfer_Over, quality, 0, nullptr, &rect));
        ASSERT_EQ(0, this->draw({rotation(8, 9, 6)}, *got, RK_Xfer_Over, quality, 0, &plain));
        for (int32_t y = 0; y < 18; ++y)
            for (int32_t x = 0; x < 24; ++x) {
                const bool inside = y >= 6 && y < 10 && x >= 8 && x < 13;
                const TypeParam &w = inside ? whole->row(y)[x] : this->dst.row(y)[x], &g = got->row(y)[x];
                ASSERT_TRUE(test::sameBytes(w, g)) << x << ", " << y;
            }
    }
}

TYPED_TEST(Transform, PartsFarOutsideAndWildMatricesAreSafe) {
    test::Random r(99);
    const double wild[] = {0, 1, -1, 1e-9, 1e9, 1e300, -1e300, std::nan(""), INFINITY, 0.003, 200};
    ASSERT_EQ(0, this->draw({rotation(5, 9, 6)}, this->dst));  // the process-wide scratch is made
    const auto before = RefHost::Memory();
    for (int i = 0; i < 3000; ++i) {
        GEO_Matrix3 a = kIdentity, b = kIdentity;
        for (int k = 0; k < 3; ++k) {
            a.m[r.below(3)][r.below(3)] = wild[r.below(11)];
            b.m[r.below(3)][r.below(3)] = wild[r.below(11)];
        }
        const RK_Long one = this->draw({a}, this->dst, RK_Xfer_Over, r.below(2));
        const RK_Long two = this->draw({a, kIdentity, b}, this->dst, RK_Xfer_Screen, r.below(2));
        ASSERT_EQ(0, one);
        ASSERT_TRUE(two == 0 || two == 1) << two;
        ASSERT_EQ(before.blocks, RefHost::Memory().blocks);
        ASSERT_EQ(before.bytes, RefHost::Memory().bytes);
    }
}

TEST(TransformWorld, BadArgumentsAreReportedAndGive3) {
    RK_WorldX<RK_Pixel8> a(4, 4, 0), b(4, 4, 0);
    RK_WorldX<RK_Pixel16> deep(4, 4, 0);
    const RK_CompositeMode mode = {RK_Xfer_Over, 0, 255, 0, 32768};
    const auto call = [&](const RK_World* src, const RK_CompositeMode* m, const GEO_Matrix3* matrix,
                          RK_Long count, RK_World* dst, const RK_TransformMask* mask = nullptr) {
        return RK_TransformWorld(nullptr, 1, 0, 0, src, m, nullptr, mask, matrix, count, 1, nullptr, dst);
    };
    RefHost::TakeReports();
    EXPECT_EQ(3, call(nullptr, &mode, &kIdentity, 1, &b));
    EXPECT_EQ(3, call(&a, nullptr, &kIdentity, 1, &b));
    EXPECT_EQ(3, call(&a, &mode, nullptr, 1, &b));
    EXPECT_EQ(3, call(&a, &mode, &kIdentity, 1, nullptr));
    EXPECT_EQ(4u, RefHost::TakeReports().size());
    EXPECT_EQ(3, call(&a, &mode, &kIdentity, 1, &deep));
    EXPECT_TRUE(
        test::onlyVerification("RK_TransformWorld requires src and dst worlds to have same bit depth"));
    EXPECT_EQ(0, call(&a, &mode, &kIdentity, 0, &b));
    EXPECT_EQ(0, call(&a, &mode, nullptr, -1, &b));
    const RK_CompositeMode refused = {RK_Xfer_None, 0, 255, 0, 32768};
    const GEO_Matrix3 turned = rotation(5, 2, 2);
    EXPECT_EQ(5, call(&a, &refused, &turned, 1, &b));
    EXPECT_EQ(1u, RefHost::TakeReports().size());
}

GEO_Rect g_passed;
RK_Long recordRect(RK_ProgressInfo*, RK_Long, RK_Long, RK_Long, const RK_World*, const RK_CompositeMode*,
                   const RK_LinearBlendingTables*, const RK_TransformMask*, const GEO_Matrix3*, RK_Long,
                   uint8_t, const GEO_Rect* rect, RK_World*) {
    g_passed = *rect;
    return 42;
}

TEST(TransformWorld, AnOverrideIsToldTheAffectedRectangle) {
    RK_WorldX<RK_Pixel8> src(10, 10, 0), dst(50, 50, 0);
    RK_CompositeMode mode = {RK_Xfer_Over, 0, 255, 0, 32768};
    const GEO_Matrix3 m = translation(20, 30);
    void* const before = RKp_G_OverFuncs[32];
    RK_SetOverrideFunc(32, reinterpret_cast<void*>(&recordRect));
    const auto call = [&] {
        return RK_TransformWorld(nullptr, 1, 0, 0, &src, &mode, nullptr, nullptr, &m, 1, 1, nullptr, &dst);
    };
    EXPECT_EQ(42, call());
    EXPECT_EQ(29, g_passed.top);
    EXPECT_EQ(19, g_passed.left);
    EXPECT_EQ(41, g_passed.bottom);
    EXPECT_EQ(31, g_passed.right);
    mode.xfer = RK_Xfer_StencilAlpha;
    EXPECT_EQ(42, call());
    EXPECT_EQ(0, g_passed.top);
    EXPECT_EQ(50, g_passed.right);
    RK_SetOverrideFunc(32, before);
}

// ---- Against one pixel after the other -------------------------------------------------------------------

// At rest, best quality: every pixel of the working rectangle by the clipped sampler, or the area one.
TYPED_TEST(Transform, AtRestEqualsTheSamplersPixelByPixel) {
    test::Random r(31);
    for (int i = 0; i < 60; ++i) {
        const double scale = i % 3 == 0 ? 0.3 + r.unit() * 0.3 : 1 + r.unit();
        GEO_Matrix3 m = rotation(r.unit() * 360, 8 + r.unit(), 7 + r.unit());
        for (auto& row : m.m) row[0] *= scale, row[1] *= scale;
        const auto got = this->copyOf(this->dst);
        ASSERT_EQ(0, this->draw({m}, *got, RK_Xfer_Replace));

        GEO_Matrix3 inverse;
        ASSERT_EQ(0, GEO_InverseMatrixQuiet(&m, &inverse));
        GEO_FloatRect box = {0, 0, 20, 14};
        GEO_TransformFloatRect(&m, &box, &box);
        const int32_t left = std::max(0, GEO_RoundDouble(box.left) - 1),
                      top = std::max(0, GEO_RoundDouble(box.top) - 1);
        const int32_t right = std::min(24, GEO_RoundDouble(box.right) + 1),
                      bottom = std::min(18, GEO_RoundDouble(box.bottom) + 1);
        GEO_Vector2T<double> corner = inverse.TransformPointAndDivide({left + 0.5, top + 0.5});
        const auto fixed = [](double v) { return GEO_RoundDouble(v * 65536); };
        const int32_t x0 = fixed(corner.x - 0.5), y0 = fixed(corner.y - 0.5);
        RK_SampPB pb{};
        pb.src = &this->src.record;
        pb.x_radius = fixed(0.5 / std::hypot(m.m[0][0], m.m[0][1]));
        pb.y_radius = fixed(0.5 / std::hypot(m.m[1][0], m.m[1][1]));
        const auto samplers = RKp_GetSamplerBundle<TypeParam>();
        const bool reduces = pb.x_radius > 0x8000 || pb.y_radius > 0x8000;
        for (int32_t y = top; y < bottom; ++y)
            for (int32_t x = left; x < right; ++x) {
                const int32_t sx =
                    x0 + (x - left) * fixed(inverse.m[0][0]) + (y - top) * fixed(inverse.m[1][0]);
                const int32_t sy =
                    y0 + (x - left) * fixed(inverse.m[0][1]) + (y - top) * fixed(inverse.m[1][1]);
                TypeParam wanted;
                (reduces ? samplers.area : samplers.clipped)(nullptr, sx, sy, &pb, &wanted);
                const TypeParam& p = got->row(y)[x];
                // Inside, the no-clip slot may hold another form, which differs by a unit.
                ASSERT_NEAR(double(wanted.alpha), double(p.alpha), 1) << x << ", " << y;
                if (double(wanted.alpha) > 1e-6 && double(p.alpha) > 1e-6) {
                    ASSERT_NEAR(double(wanted.red), double(p.red), 1);
                    ASSERT_NEAR(double(wanted.blue), double(p.blue), 1);
                }
            }
    }
}

}  // namespace
