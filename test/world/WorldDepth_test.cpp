#include "RK/indep/world/RK_WorldDepth.h"

#include "RK/indep/world/RK_WorldXT.h"
#include "test/Pixels.h"
#include "test/Reports.h"
#include "test/world/OddWorld.h"

namespace {

class WorldDepth : public test::Tidy {};

RK_LayerDef withFlags(uint32_t flags) {
    RK_LayerDef record = {};
    record.world_flags = flags;
    return record;
}

}  // namespace

TEST_F(WorldDepth, AStandAloneRecordTellsByItsTopByte) {
    for (const uint32_t low : {0u, 1u, 0x00FFFFFFu}) {
        const RK_LayerDef r8 = withFlags(low), r16 = withFlags(0x01000000u | low),
                          r32 = withFlags(0x02000000u | low);
        EXPECT_EQ(RKp_WorldDepth(&r8), 8);
        EXPECT_EQ(RKp_WorldDepth(&r16), 16);
        EXPECT_EQ(RKp_WorldDepth(&r32), 32);
    }
}

TEST_F(WorldDepth, AnyOtherTopByteIsReportedAndCountsAs8) {
    for (uint32_t byte = 3; byte < 256; ++byte) {
        const RK_LayerDef record = withFlags(byte << 24);
        EXPECT_EQ(RKp_WorldDepth(&record), 8);
        EXPECT_TRUE(test::onlyVerification("Unknown pixel format")) << byte;
    }
}

TEST_F(WorldDepth, ANullRecordIsReportedAndCountsAs8) {
    EXPECT_EQ(RKp_WorldDepth(nullptr), 8);
    EXPECT_TRUE(test::onlyVerification("Unknown pixel format"));
}

TEST_F(WorldDepth, TheObjectDecidesWhateverTheFlagsSay) {
    test::Picture<RK_Pixel8> picture(2, 2);
    RK_LayerDef plain = picture.record();
    RK_WorldX<RK_Pixel16> world(&plain, false);
    world.record.world_flags = 0x07000000u;
    EXPECT_EQ(RKp_WorldDepth(&world.record), 16);
    test::OddWorld odd(24);
    EXPECT_EQ(RKp_WorldDepth(&odd.record), 24);
}

TEST_F(WorldDepth, AnObjectsDepthIsNarrowedTo16Bits) {
    const test::OddWorld far_off(65536 + 32), all_ones(0xFFFF);
    EXPECT_EQ(RKp_WorldDepth(&far_off.record), 32);
    EXPECT_EQ(RKp_WorldDepth(&all_ones.record), -1);
}

TEST_F(WorldDepth, TheDepthOfAnEffectWorldIsStored) {
    RK_LayerDef record = withFlags(0x02000000u);
    RK_Long depth = 0;
    EXPECT_EQ(RK_GetEffectWorldDepth(&record, &depth), 0);
    EXPECT_EQ(depth, 32);
    record.world_flags = 0x03000000u;
    EXPECT_EQ(RK_GetEffectWorldDepth(&record, &depth), 0);
    EXPECT_EQ(depth, 8);
    EXPECT_TRUE(test::onlyVerification("Unknown pixel format"));
}

TEST_F(WorldDepth, NullArgumentsAreReportedAndStoreNothing) {
    RK_LayerDef record = withFlags(0);
    RK_Long depth = 77;
    uint32_t code = 77;
    int32_t depth32 = 77;
    EXPECT_EQ(RK_GetEffectWorldDepth(nullptr, &depth), 3);
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_GetEffectWorldDepth()"));
    EXPECT_EQ(RK_GetEffectWorldDepth(&record, nullptr), 3);
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_GetEffectWorldDepth()"));
    EXPECT_EQ(RKp_GetPixelFormat(nullptr, &code), 3);
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RKp_GetPixelFormat()"));
    EXPECT_EQ(RKp_GetPixelFormat(&record, nullptr), 3);
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RKp_GetPixelFormat()"));
    EXPECT_EQ(RKp_DepthOfPixelFormat(RK_kFormat8, nullptr), 3);
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RKp_DepthOfPixelFormat()"));
    EXPECT_EQ(RKp_SetWorldDepth(nullptr, 8), 3);
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RKp_SetWorldDepth()"));
    EXPECT_EQ(RK_DepthOfRASWorld(nullptr), 0);
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_DepthOfRASWorld()"));
    RAS_World* empty = nullptr;
    EXPECT_EQ(RK_DepthOfRASWorld(&empty), 0);
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_DepthOfRASWorld()"));
    EXPECT_EQ(depth, 77);
    EXPECT_EQ(code, 77u);
    EXPECT_EQ(depth32, 77);
}

TEST_F(WorldDepth, PixelFormatCodesSpellTheirNamesLowestByteFirst) {
    const auto spell = [](uint32_t code) {
        return std::string{char(code), char(code >> 8), char(code >> 16), char(code >> 24)};
    };
    EXPECT_EQ(spell(RK_kFormat8), "argb");
    EXPECT_EQ(spell(RK_kFormat16), "rv16");
    EXPECT_EQ(spell(RK_kFormatFloat), "rv32");
    const std::pair<uint32_t, uint32_t> known[] = {
        {0u, RK_kFormat8}, {0x01000001u, RK_kFormat16}, {0x02000000u, RK_kFormatFloat}};
    for (const auto& [flags, expected] : known) {
        const RK_LayerDef record = withFlags(flags);
        uint32_t code = 0;
        int32_t depth = 0;
        EXPECT_EQ(RKp_GetPixelFormat(&record, &code), 0);
        EXPECT_EQ(code, expected);
        EXPECT_EQ(RKp_DepthOfPixelFormat(code, &depth), 0);
        EXPECT_EQ(depth, RKp_WorldDepth(&record));
    }
}

TEST_F(WorldDepth, AnUnknownDepthHasNoPixelFormat) {
    const test::OddWorld odd(24);
    uint32_t code = 77;
    EXPECT_EQ(RKp_GetPixelFormat(&odd.record, &code), 3);
    EXPECT_TRUE(test::onlyVerification("Unsupported pixel depth in RKp_GetPixelFormat()"));
    EXPECT_EQ(code, 77u);
}

TEST_F(WorldDepth, AnUnknownPixelFormatHasNoDepth) {
    for (const uint32_t code : {0u, RK_kFormat8 ^ 1u, RK_kFormatFloat + 1u, 0xFFFFFFFFu}) {
        int32_t depth = 77;
        EXPECT_EQ(RKp_DepthOfPixelFormat(code, &depth), 3);
        EXPECT_TRUE(test::onlyVerification("Unsupported RK_PixelFormat"));
        EXPECT_EQ(depth, 77);
    }
}

TEST_F(WorldDepth, SettingADepthOrsItsIndexAndBit0For16) {
    const std::pair<int32_t, uint32_t> known[] = {{8, 0u}, {16, 0x01000001u}, {32, 0x02000000u}};
    for (const auto& [depth, flags] : known) {
        RK_LayerDef record = withFlags(0);
        EXPECT_EQ(RKp_SetWorldDepth(&record, depth), 0);
        EXPECT_EQ(record.world_flags, flags);
        record.world_flags = 0x00123450u;
        EXPECT_EQ(RKp_SetWorldDepth(&record, depth), 0);
        EXPECT_EQ(record.world_flags, flags | 0x00123450u) << "other bits are carried along";
    }
}

TEST_F(WorldDepth, SettingAnUnknownDepthLeavesTheFlagsUnindexed) {
    for (const int32_t depth : {0, 1, 15, 17, 24, 64, -8, INT32_MIN, INT32_MAX}) {
        RK_LayerDef record = withFlags(0x40u);
        EXPECT_EQ(RKp_SetWorldDepth(&record, depth), 3);
        EXPECT_TRUE(test::onlyVerification("Unknown pixel format"));
        EXPECT_EQ(record.world_flags, 0x40u);
    }
}

TEST_F(WorldDepth, ABitmapsDepthIsItsBitsDividedBy4) {
    test::Bitmap bitmap(3, 2, 128, nullptr, 48);
    EXPECT_EQ(RK_DepthOfRASWorld(bitmap.handle()), 32);
    bitmap.record().bits_per_pixel = 24;
    EXPECT_EQ(RK_DepthOfRASWorld(bitmap.handle()), 6);
    bitmap.record().bits_per_pixel = -7;
    EXPECT_EQ(RK_DepthOfRASWorld(bitmap.handle()), -1);
}

TEST_F(WorldDepth, ABitmapFillsARecordWithoutARegionOfInterest) {
    const std::pair<int16_t, uint32_t> known[] = {{32, 0u}, {64, 0x01000001u}, {128, 0x02000000u}};
    for (const auto& [bits, flags] : known) {
        uint8_t pixels[1];
        test::Bitmap bitmap(7, 5, bits, pixels, 240);
        RK_LayerDef record;
        std::memset(&record, 0xEE, sizeof record);
        EXPECT_EQ(RK_EffectWorldFromRASWorld(bitmap.handle(), &record), 0);
        RK_LayerDef expected;
        std::memset(&expected, 0, sizeof expected);
        expected.world_flags = flags;
        expected.data = pixels;
        expected.rowbytes = 240;
        expected.width = 7;
        expected.height = 5;
        expected.ras_world = bitmap.handle();
        EXPECT_EQ(std::memcmp(&record, &expected, sizeof record), 0) << bits << " bits";
    }
}

TEST_F(WorldDepth, ABitmapWithoutABaseIsAskedForIt) {
    GEO_Rect bounds = {0, 0, 4, 3};
    RAS_World** bitmap = nullptr;
    ASSERT_EQ(RAS_NewWorld(0, 0, 8, &bounds, 64, 0, 0, &bitmap), 0);
    ASSERT_EQ((*bitmap)->base, nullptr);
    RK_LayerDef record;
    EXPECT_EQ(RK_EffectWorldFromRASWorld(bitmap, &record), 0);
    EXPECT_EQ(record.data, RASp_GetPixBaseAddr(bitmap));
    EXPECT_NE(record.data, nullptr);
    RAS_DisposeWorld(bitmap);
}

TEST_F(WorldDepth, ABitmapOfOtherBitsLeavesTheRecordUntouched) {
    RK_LayerDef record, before;
    std::memset(&record, 0xEE, sizeof record);
    before = record;
    for (const int16_t bits : {0, 1, 8, 16, 24, 31, 33, 96, 127, 129, -32, INT16_MAX}) {
        test::Bitmap bitmap(7, 5, bits, &record, 240);
        EXPECT_EQ(RK_EffectWorldFromRASWorld(bitmap.handle(), &record), 3);
        EXPECT_TRUE(test::onlyVerification("RK_Worlds can only be 128, 64 or 32 bits per pixel")) << bits;
    }
    RAS_World* empty = nullptr;
    EXPECT_EQ(RK_EffectWorldFromRASWorld(nullptr, &record), 3);
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_EffectWorldFromRASWorld()"));
    EXPECT_EQ(RK_EffectWorldFromRASWorld(&empty, &record), 3);
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_EffectWorldFromRASWorld()"));
    EXPECT_EQ(std::memcmp(&record, &before, sizeof record), 0);

    test::Bitmap bitmap(7, 5, 32, &record, 240);
    EXPECT_EQ(RK_EffectWorldFromRASWorld(bitmap.handle(), nullptr), 3);
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_EffectWorldFromRASWorld()"));
}
