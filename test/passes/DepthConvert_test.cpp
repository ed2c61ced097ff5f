// Worlds moved to another depth: the rules that are its own, what is refused, what stays untouched.
#include "RK/indep/passes/RK_DepthConvert.h"

#include <memory>

#include "RK/indep/world/RK_WorldXT.h"
#include "RK/indep/world/RKp_ChannelConvert.h"
#include "test/Pixels.h"
#include "test/Reports.h"
#include "test/world/OddWorld.h"

namespace {

class DepthConvertTest : public test::Tidy {};

const char kSomewhere = 0;

// One pixel moved.
template <class To, class From>
To moved(const From& p) {
    test::Picture<From> from(1, 1);
    test::Picture<To> to(1, 1);
    from.at(0, 0) = p;
    const RK_LayerDef src = from.record(), dst = to.record();
    const RK_WorldX<From> src_world(&src, false);
    RK_WorldX<To> dst_world(&dst, false);
    RK_DepthConvertWorld(nullptr, &src_world, &dst_world);
    EXPECT_TRUE(to.guardsWhole());
    return to.at(0, 0);
}

TEST_F(DepthConvertTest, BytesWidenToSixteenBitsByAFormulaThatAgreesWithTheOtherPasses) {
    bool term_above_matters = false, term_below_matters = false;
    for (uint32_t c = 0; c < 256; ++c) {
        const auto b = static_cast<uint8_t>(c);
        const auto p = moved<RK_Pixel16>(RK_Pixel8{b, b, b, b});
        const uint32_t expected = static_cast<uint32_t>((uint64_t{c} * 0x808080 + 33200) >> 16);
        ASSERT_EQ(p.alpha, expected);
        ASSERT_EQ(p.red, expected);
        ASSERT_EQ(p.green, expected);
        ASSERT_EQ(p.blue, expected);
        ASSERT_EQ(p.alpha, RKp_8To16(b));
        term_above_matters = term_above_matters || expected != (uint64_t{c} * 0x808080 + 65535) >> 16;
        term_below_matters = term_below_matters || expected != (uint64_t{c} * 0x808080) >> 16;
    }
    EXPECT_TRUE(term_above_matters);
    EXPECT_TRUE(term_below_matters);
    EXPECT_EQ(moved<RK_Pixel16>(RK_Pixel8{255, 0, 0, 0}).alpha, 32768);
}

TEST_F(DepthConvertTest, SixteenBitsNarrowByTheRuleOfAllPasses) {
    for (uint32_t c = 0; c <= 65535; c += c < 32770 ? 1 : 771) {
        const auto w = static_cast<uint16_t>(c);
        const auto expected = static_cast<uint8_t>((c * 255 + 16384) >> 15);
        const auto p = moved<RK_Pixel8>(RK_Pixel16{w, w, w, w});
        ASSERT_EQ(p.alpha, expected);
        ASSERT_EQ(p.blue, expected);
        if (c == 0) c = 1;
    }
}

TEST_F(DepthConvertTest, AlphaOfBytesBecomesFloatByAFloatProduct) {
    bool differs = false;
    for (uint32_t c = 0; c < 256; ++c) {
        const auto b = static_cast<uint8_t>(c);
        const auto p = moved<RK_PixelFloat>(RK_Pixel8{b, b, b, b});
        const float alpha = static_cast<float>(c) * 0.003921569f;
        ASSERT_EQ(p.alpha, alpha);
        ASSERT_EQ(p.red, RKp_8ToFloat(b));
        ASSERT_EQ(p.green, RKp_8ToFloat(b));
        ASSERT_EQ(p.blue, RKp_8ToFloat(b));
        differs = differs || alpha != RKp_8ToFloat(b);
    }
    EXPECT_TRUE(differs);
}

TEST_F(DepthConvertTest, FloatColourIsHeldAndFloatAlphaIsNot) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const auto p = moved<RK_Pixel8>(RK_PixelFloat{1.5f, 1.5f, -1.0f, nan});
    EXPECT_EQ(p.alpha, 127);
    EXPECT_EQ(p.red, 255);
    EXPECT_EQ(p.green, 0);
    EXPECT_EQ(p.blue, 0);
    const auto q = moved<RK_Pixel16>(RK_PixelFloat{2.0f, 1.5f, 0.5f, nan});
    EXPECT_EQ(q.alpha, 0);
    EXPECT_EQ(q.red, 32768);
    EXPECT_EQ(q.green, 16384);
    EXPECT_EQ(q.blue, 0);
}

TEST_F(DepthConvertTest, EqualDepthsKeepEveryBit) {
    const auto p = moved<RK_Pixel16>(RK_Pixel16{65535, 40000, 1, 32769});
    EXPECT_TRUE(test::sameBytes(p, RK_Pixel16{65535, 40000, 1, 32769}));
    const RK_PixelFloat f = {-3.0f, 1e30f, -0.0f, std::numeric_limits<float>::infinity()};
    EXPECT_TRUE(test::sameBytes(moved<RK_PixelFloat>(f), f));
}

TEST_F(DepthConvertTest, WorldsOfDifferentSizesAreLeftAloneSilently) {
    const int sizes[][2] = {{4, 3}, {5, 2}, {3, 3}, {4, 2}};
    for (const auto& size : sizes) {
        const std::unique_ptr<RK_World> src(RK_World::New(5, 3, 8, RK_kWorldClear));
        const std::unique_ptr<RK_World> dst(RK_World::New(size[0], size[1], 16, 0));
        dst->Fill(RK_Pixel16{1, 2, 3, 4}, nullptr);
        RK_DepthConvertWorld(nullptr, src.get(), dst.get());
        EXPECT_EQ(static_cast<const RK_Pixel16*>(dst->record.data)->blue, 4);
        EXPECT_TRUE(test::noReports());
    }
    // The size is looked at first.
    test::OddWorld odd(24);
    const std::unique_ptr<RK_World> dst(RK_World::New(5, 3, 8, 0));
    RK_DepthConvertWorld(nullptr, &odd, dst.get());
    EXPECT_TRUE(test::noReports());
}

TEST_F(DepthConvertTest, UnknownDepthsAndNullWorldsAreToldAndChangeNothing) {
    const std::unique_ptr<RK_World> world(RK_World::New(5, 3, 8, RK_kWorldClear));
    for (const RK_Long depth : {RK_Long{0}, RK_Long{24}, RK_Long{64}, RK_Long{-8}}) {
        test::OddWorld odd(depth);
        odd.record.width = 5;
        odd.record.height = 3;
        RK_DepthConvertWorld(nullptr, &odd, world.get());
        EXPECT_TRUE(test::onlyVerification("Unknown bit depth attempting to depth convert."));
        RK_DepthConvertWorld(nullptr, world.get(), &odd);
        EXPECT_TRUE(test::onlyVerification("Unknown bit depth attempting to depth convert."));
    }
    RK_DepthConvertWorld(nullptr, nullptr, world.get());
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_DepthConvertWorld()"));
    RK_DepthConvertWorld(nullptr, world.get(), nullptr);
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_DepthConvertWorld()"));
    EXPECT_EQ(static_cast<const RK_Pixel8*>(world->record.data)->alpha, 0);
}

TEST_F(DepthConvertTest, WorldsWithoutPixelsAreNothing) {
    RK_LayerDef empty = {};
    const RK_WorldX<RK_Pixel8> src(&empty, false);
    RK_WorldX<RK_Pixel16> dst(&empty, false);
    RK_WorldX<RK_Pixel8> same(&empty, false);
    for (const int32_t height : {0, -1, 3}) {
        dst.record.height = same.record.height = height;
        const_cast<RK_WorldX<RK_Pixel8>&>(src).record.height = height;
        RK_DepthConvertWorld(nullptr, &src, &dst);
        RK_DepthConvertWorld(nullptr, &src, &same);
    }
    test::Picture<RK_Pixel8> picture(2, 2), other(2, 2);
    RK_LayerDef flat = picture.record(), flat_other = other.record();
    flat.height = flat_other.height = -2;
    const RK_WorldX<RK_Pixel8> none(&flat, false);
    RK_WorldX<RK_Pixel8> onto(&flat_other, false);
    RK_DepthConvertWorld(nullptr, &none, &onto);
    EXPECT_TRUE(other.guardsWhole());
}

TEST_F(DepthConvertTest, TablesAreLookedAtBetweenIntegersAndFloatOnly) {
    const auto* const tables = reinterpret_cast<const RK_LinearBlendingTables*>(&kSomewhere);
    for (const int16_t from : {int16_t{8}, int16_t{16}, int16_t{32}})
        for (const int16_t to : {int16_t{8}, int16_t{16}, int16_t{32}}) {
            const std::unique_ptr<RK_World> src(RK_World::New(2, 2, from, 0)),
                dst(RK_World::New(2, 2, to, 1));
            src->Fill(RK_PixelFloat{1.0f, 1.0f, 1.0f, 1.0f}, nullptr);
            RK_DepthConvertWorld(tables, src.get(), dst.get());
            const bool reads = (from == 32) != (to == 32);
            if (reads) {
                EXPECT_TRUE(test::onlyVerification("Invalid tables for linearized blending"));
            }
            bool written = false;
            for (int i = 0; i < to / 2; ++i)
                written = written || static_cast<const uint8_t*>(dst->record.data)[i] != 0;
            EXPECT_EQ(written, !reads) << from << " to " << to;
        }
}

}  // namespace
