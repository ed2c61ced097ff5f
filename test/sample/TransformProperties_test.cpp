// What holds of every transform: translations are transfers, turns and mirrors come back, identities copy,
// flat pictures keep their pixels, and a series that stands still is a still picture.
#include <gtest/gtest.h>

#include "refhost/RefHost.h"
#include "test/plain/Compare.h"
#include "test/sample/TransformTest.h"

namespace {

using test::kIdentity;
using test::modeOf;
using test::rotation;
using test::scaling;
using test::translation;

template <class P>
class TransformProperty : public test::TransformTest<P> {
  protected:
    using World = RK_WorldX<P>;
    // No alpha so small that its reciprocal is no number.
    TransformProperty() { tame(this->src); }
    static void tame(World& w) {
        for (int32_t y = 0; y < w.height(); ++y)
            for (int32_t x = 0; x < w.width(); ++x)
                if (static_cast<double>(w.row(y)[x].alpha) < 1e-6) w.row(y)[x].alpha = 0;
    }
    // `from` drawn under Copy into a clear world of the size.
    static std::unique_ptr<World> drawn(const World& from, const GEO_Matrix3& m, int32_t width,
                                        int32_t height, RK_Long quality = RK_kBest) {
        auto to = std::make_unique<World>(width, height, RK_kWorldClear);
        const RK_CompositeMode mode = modeOf<P>(RK_Xfer_Copy);
        EXPECT_EQ(0, RK_TransformWorld(nullptr, quality, 0, 0, &from, &mode, nullptr, nullptr, &m, 1, 1,
                                       nullptr, to.get()));
        return to;
    }
};
using Depths = testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;
TYPED_TEST_SUITE(TransformProperty, Depths, );

// ---- Whole pixels ---------------------------------------------------------------------------------------

// Every mode, under every kind of mask that does not limit the drawing, with fields and without; both senses
// of the matrix, and a series that does not move. Partly and wholly outside too.
TYPED_TEST(TransformProperty, AWholePixelTranslationEqualsTransferRect) {
    static const int places[][2] = {{0, 0}, {6, -3}, {-19, 13}, {23, 17}, {-20, 2}, {5, 400}, {-3, -13}};
    typename TestFixture::World mask_world(11, 30, 0);
    this->randomise(mask_world, 9);
    test::Random r(11);
    for (int32_t xfer = RK_kFirstMode; xfer <= RK_kLastMode; ++xfer) {
        if (xfer == RK_Xfer_None) continue;
        for (int form = 0; form < 7; ++form) {
            const int x = places[form][0], y = places[form][1];
            const bool has_mask = xfer == RK_Xfer_MatteMix || form % 2 == 1;
            const uint32_t kind = form % 4 < 2 ? RK_kMaskInvertedAlpha : RK_kMaskInvertedLuma;
            const RK_Mask mask = {mask_world.record, 2, 3, kind};
            const RK_TransformMask transform_mask = {&mask_world, 2, 3, kind};
            RK_CompositeMode mode = modeOf<TypeParam>(xfer);
            if (form >= 3)
                mode = {xfer, static_cast<int32_t>(r.next()), 100, static_cast<uint8_t>(form % 2), 12850};
            const RK_Long field = form % 3;
            const bool src2dst = form % 2 == 0;
            const GEO_Matrix3 m = src2dst ? translation(x, y) : translation(-x, -y);
            const std::vector<GEO_Matrix3> series(form == 4 ? 3 : 1, m);
            const RK_Long quality = form == 5 ? RK_kDraft : RK_kBest;

            const auto wanted = this->copyOf(this->dst), got = this->copyOf(this->dst);
            RK_CompositeModePlus plus(mode);
            plus.tables = nullptr;
            const RK_Long told =
                RK_TransferRect(nullptr, nullptr, nullptr, field, nullptr, &this->src.record, &plus, nullptr,
                                has_mask ? &mask.world : nullptr, x, y, &wanted->record);
            ASSERT_EQ(told,
                      RK_TransformWorld(nullptr, quality, 0, field, &this->src, &mode, nullptr,
                                        has_mask ? &transform_mask : nullptr, series.data(),
                                        static_cast<RK_Long>(series.size()), src2dst, nullptr, got.get()));
            ASSERT_TRUE(this->same(*wanted, *got)) << test::modeName(xfer) << ", form " << form;
        }
    }
}

TYPED_TEST(TransformProperty, AWholePixelTranslationIntoARectangleEqualsTransferRectOfItsPart) {
    const GEO_Rect rect = {4, 5, 13, 19};
    for (const int32_t xfer :
         {RK_Xfer_Over, RK_Xfer_Copy, RK_Xfer_Replace, RK_Xfer_StencilAlpha, RK_Xfer_Dissolve}) {
        for (const int x : {-2, 0, 9}) {
            const auto wanted = this->copyOf(this->dst), got = this->copyOf(this->dst);
            // The rectangle as far as the source, grown by a pixel, comes to lie in it.
            const auto edge = [](int v) { return static_cast<int16_t>(v); };
            const int left = std::max<int>(rect.left, x - 1), right = std::min<int>(rect.right, x + 21);
            const int top = std::max<int>(rect.top, 3 - 1), bottom = std::min<int>(rect.bottom, 3 + 15);
            const GEO_Rect part = {edge(top - 3), edge(left - x), edge(bottom - 3), edge(right - x)};
            RK_CompositeModePlus plus(modeOf<TypeParam>(xfer));
            plus.tables = nullptr;
            ASSERT_EQ(0, RK_TransferRect(nullptr, nullptr, nullptr, 0, &part, &this->src.record, &plus,
                                         nullptr, nullptr, left, top, &wanted->record));
            ASSERT_EQ(0, this->draw({translation(x, 3)}, *got, xfer, RK_kBest, 0, nullptr, &rect));
            ASSERT_TRUE(this->same(*wanted, *got)) << test::modeName(xfer) << " at " << x;
        }
    }
}

TYPED_TEST(TransformProperty, AnIdentityIsACopy) {
    for (const RK_Long quality : {RK_kDraft, RK_kBest}) {
        const auto copy = this->drawn(this->src, kIdentity, 20, 14, quality);
        EXPECT_TRUE(this->same(this->src, *copy));
    }
    // Over whatever there was, when it is opaque.
    for (int32_t y = 0; y < 14; ++y)
        for (int32_t x = 0; x < 20; ++x) this->src.row(y)[x].alpha = test::kFull<TypeParam>;
    ASSERT_EQ(0, this->draw({kIdentity}, this->dst));
    for (int32_t y = 0; y < 14; ++y)
        for (int32_t x = 0; x < 20; ++x)
            ASSERT_TRUE(test::sameBytes(this->src.row(y)[x], this->dst.row(y)[x])) << x << ", " << y;
}

// ---- There and back -------------------------------------------------------------------------------------

// Float samples go through their weights at whole positions too, which costs colours a unit in the last
// place.
template <class P>
testing::AssertionResult cameBack(const RK_WorldX<P>& wanted, const RK_WorldX<P>& got) {
    for (int32_t y = 0; y < wanted.height(); ++y)
        for (int32_t x = 0; x < wanted.width(); ++x) {
            const P &w = wanted.row(y)[x], &g = got.row(y)[x];
            bool same = test::sameBytes(w, g);
            if constexpr (sizeof(P) == 16) {
                const auto near = [](float a, float b) { return std::fabs(a - b) <= std::fabs(a) * 1e-6f; };
                same = w.alpha == g.alpha &&
                       (w.alpha < 1e-6f ||
                        (near(w.red, g.red) && near(w.green, g.green) && near(w.blue, g.blue)));
            }
            if (!same)
                return testing::AssertionFailure() << "at " << x << ", " << y << " " << test::show(w)
                                                   << " came back as " << test::show(g);
        }
    return testing::AssertionSuccess();
}

TYPED_TEST(TransformProperty, FourQuarterTurnsGiveThePictureBack) {
    for (const int32_t size : {1, 15, 16}) {
        typename TestFixture::World picture(size, size, 0);
        this->randomise(picture, static_cast<uint32_t>(size));
        this->tame(picture);
        for (const double degrees : {90.0, -90.0, 270.0}) {
            auto turned = this->copyOf(picture);
            for (int i = 0; i < 4; ++i)
                turned = this->drawn(*turned, rotation(degrees, size / 2.0, size / 2.0), size, size);
            EXPECT_TRUE(cameBack(picture, *turned)) << size << " by " << size << ", " << degrees;
        }
    }
}
// Each turn on its own, so that four wrong ones do not make a right one.
TYPED_TEST(TransformProperty, AQuarterTurnPutsEveryPixelWhereItBelongs) {
    typename TestFixture::World wanted(14, 20, 0);
    for (int32_t y = 0; y < 20; ++y)
        for (int32_t x = 0; x < 14; ++x) wanted.row(y)[x] = this->src.row(13 - x)[y];
    const auto turned = this->drawn(this->src, {{{0, 1, 0}, {-1, 0, 0}, {14, 0, 1}}}, 14, 20);
    EXPECT_TRUE(cameBack(wanted, *turned));
}
TYPED_TEST(TransformProperty, AMirrorTurnsEveryRowAround) {
    typename TestFixture::World wanted(20, 14, 0);
    for (int32_t y = 0; y < 14; ++y)
        for (int32_t x = 0; x < 20; ++x) wanted.row(y)[x] = this->src.row(13 - y)[19 - x];
    const GEO_Matrix3 both = {{{-1, 0, 0}, {0, -1, 0}, {20, 14, 1}}};
    for (const RK_Long quality : {RK_kDraft, RK_kBest}) {
        const auto mirrored = this->drawn(this->src, both, 20, 14, quality);
        EXPECT_TRUE(cameBack(wanted, *mirrored));
        EXPECT_TRUE(cameBack(this->src, *this->drawn(*mirrored, both, 20, 14, quality)));
    }
}

TYPED_TEST(TransformProperty, DoublingAndHalvingAFlatPictureKeepsIt) {
    test::Random r(21);
    for (int i = 0; i < 20; ++i) {
        TypeParam flat = test::pixel<TypeParam>(r);
        flat.alpha = i % 2 == 0 ? test::kFull<TypeParam>
                                : static_cast<RK_Channel<TypeParam>>(test::kFull<TypeParam> / 2);
        typename TestFixture::World picture(12, 10, 0);
        for (int32_t y = 0; y < 10; ++y) std::fill_n(picture.row(y), 12, flat);
        const auto doubled = this->drawn(picture, scaling(2, 2), 24, 20);
        const auto halved = this->drawn(*doubled, scaling(0.5, 0.5), 12, 10);
        const auto inside = [&flat](const typename TestFixture::World& w, int32_t margin) {
            typename TestFixture::World middle(w.width() - 2 * margin, w.height() - 2 * margin, 0);
            typename TestFixture::World wanted(middle.width(), middle.height(), 0);
            for (int32_t y = 0; y < middle.height(); ++y) {
                std::fill_n(wanted.row(y), middle.width(), flat);
                std::copy_n(w.row(y + margin) + margin, middle.width(), middle.row(y));
            }
            return cameBack(wanted, middle);
        };
        EXPECT_TRUE(inside(*doubled, 2));
        EXPECT_TRUE(inside(*halved, 2));
    }
}

// ---- A series that stands still -------------------------------------------------------------------------

TYPED_TEST(TransformProperty, ASeriesOfEqualMatricesEqualsTheStillPicture) {
    typename TestFixture::World mask_world(15, 12, 0);
    this->randomise(mask_world, 4);
    const GEO_Matrix3 matrices[] = {rotation(17, 9, 6), scaling(0.3, 0.4), translation(2.5, 1),
                                    translation(3, 2), scaling(1.7, -1.2)};
    int i = 0;
    for (const GEO_Matrix3& m : matrices) {
        for (int32_t xfer = RK_kFirstMode; xfer <= RK_kLastMode; ++xfer, ++i) {
            if (xfer == RK_Xfer_None) continue;
            const RK_TransformMask mask = {&mask_world, 3, 2, static_cast<uint32_t>(i % 4)};
            const RK_TransformMask* const has_mask = xfer == RK_Xfer_MatteMix || i % 3 == 0 ? &mask : nullptr;
            const RK_Long quality = i % 2, field = i % 5;
            const auto still = this->copyOf(this->dst), series = this->copyOf(this->dst);
            ASSERT_EQ(0, this->draw({m}, *still, xfer, quality, field, has_mask));
            ASSERT_EQ(0, this->draw({m, m, m, m}, *series, xfer, quality, field, has_mask));
            ASSERT_TRUE(this->same(*still, *series)) << test::modeName(xfer);
        }
    }
}

// The first and last matrices decide; those between only widen what is drawn.
TYPED_TEST(TransformProperty, MatricesBetweenTwoEqualOnesAreNotSampled) {
    const GEO_Matrix3 m = rotation(5, 9, 6);
    for (const RK_Long quality : {RK_kDraft, RK_kBest}) {
        const auto still = this->copyOf(this->dst), series = this->copyOf(this->dst);
        const GEO_Rect rect = {4, 4, 10, 14};  // inside both, so that both start from its corner
        ASSERT_EQ(0, this->draw({m}, *still, RK_Xfer_Over, quality, 0, nullptr, &rect));
        ASSERT_EQ(0,
                  this->draw({m, rotation(80, 9, 6), m}, *series, RK_Xfer_Over, quality, 0, nullptr, &rect));
        EXPECT_TRUE(this->same(*still, *series));
    }
}

}  // namespace
