// Effect worlds: their making and disposal, and the way to their pixels.
#include "RK/indep/world/RK_EffectWorld.h"

#include <cstring>

#include "RK/indep/world/RK_WorldDepth.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "test/Pixels.h"
#include "test/Reports.h"
#include "test/world/OddWorld.h"

namespace {

constexpr uint32_t kSite = RK_kLocation | 3;
testing::AssertionResult onlyError(const std::string& text) {
    return test::onlyReport(RefHost::ReportKind::Error, kSite, text);
}
constexpr const char* kForeign = "effects modules should only dispose worlds they have allocated";

// A record full of what it must not keep.
RK_EffectWorld littered() {
    RK_EffectWorld record;
    std::memset(static_cast<void*>(&record), 0xA5, sizeof record);
    return record;
}
bool isZero(const RK_EffectWorld& record) {
    RK_EffectWorld none;
    std::memset(static_cast<void*>(&none), 0, sizeof none);
    return test::sameBytes(record, none);
}

class EffectWorldTest : public test::Tidy {};

TEST_F(EffectWorldTest, ANewWorldIsDescribedWholly) {
    for (const int depth : {8, 16, 32})
        for (const bool bitmap : {false, true}) {
            RK_EffectWorld record = littered();
            ASSERT_EQ(RK_NewEffectWorld(nullptr, 5, 3, depth, true, bitmap, &record), 0);
            EXPECT_EQ(worldsMade(), 1);
            ASSERT_NE(record.data, nullptr);
            EXPECT_EQ(record.width, 5);
            EXPECT_EQ(record.height, 3);
            EXPECT_EQ(record.extent.right, 5);
            EXPECT_EQ(record.extent.bottom, 3);
            EXPECT_EQ(record.ownership_stamp, 0xAAAABBBBu);
            EXPECT_EQ(record.ras_world != nullptr, bitmap);
            EXPECT_EQ(record.world_flags, depth == 8 ? 0u : depth == 16 ? 0x01000001u : 0x02000000u);
            EXPECT_EQ(RKp_WorldDepth(&record), depth);
            ASSERT_NE(record.world_object, nullptr);
            EXPECT_EQ(record.world_object->record.data, record.data);
            EXPECT_EQ(record.world_object->record.ownership_stamp, 0u);
            EXPECT_EQ(record.reserved0 | record.reserved1 | record.reserved2 | record.reserved3[0] |
                          record.reserved3[1] | record.reserved4[0] | record.reserved4[1],
                      0u);
            for (int y = 0; y < 3; ++y)
                for (int i = 0; i < 5 * depth / 2; ++i)
                    ASSERT_EQ(static_cast<const char*>(record.data)[y * record.rowbytes + i], 0);
            EXPECT_EQ(RK_DisposeEffectWorld(nullptr, &record), 0);
            EXPECT_TRUE(isZero(record));
            EXPECT_EQ(worldsMade(), 0);
        }
}

TEST_F(EffectWorldTest, NoResultIsNoWorldAndNoFailure) {
    EXPECT_EQ(RK_NewEffectWorld(nullptr, 5, 3, 8, true, false, nullptr), 0);
    EXPECT_EQ(RK_NewEffectWorld(nullptr, -5, 3, 77, true, false, nullptr), 0);
}

TEST_F(EffectWorldTest, SizesAndDepthsThatNoWorldHasLeaveTheRecordAsItWas) {
    const RK_EffectWorld before = littered();
    RK_EffectWorld record = before;
    const RK_Long sizes[][2] = {{0, 1},     {1, 0},         {-1, 1},       {30001, 1},
                                {1, 30001}, {INT32_MIN, 5}, {5, INT32_MAX}};
    for (const auto& size : sizes) {
        EXPECT_EQ(RK_NewEffectWorld(nullptr, size[0], size[1], 8, true, false, &record), 516);
        EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Error, RK_kLocation | 1, "invalid parameter"));
    }
    for (const RK_Long depth : {RK_Long{0}, RK_Long{-8}, RK_Long{24}, RK_Long{64}, RK_Long{65536 + 8},
                                RK_Long{32768}, RK_Long{INT32_MAX}, RK_Long{INT32_MIN} + 8}) {
        EXPECT_EQ(RK_NewEffectWorld(nullptr, 5, 3, depth, true, false, &record), 3) << depth;
        EXPECT_TRUE(test::noReports());
    }
    EXPECT_TRUE(test::sameBytes(record, before));
}

TEST_F(EffectWorldTest, EachFailedAllocationGives4AndLeavesNothing) {
    const RK_EffectWorld before = littered();
    for (const bool bitmap : {false, true}) {
        RK_EffectWorld record = before;
        RefHost::FailAllocation(0);
        ASSERT_EQ(RK_NewEffectWorld(nullptr, 5, 3, 16, true, bitmap, &record), 0);
        const int64_t made = RefHost::AllocationsSince();
        ASSERT_GE(made, 2);
        ASSERT_EQ(RK_DisposeEffectWorld(nullptr, &record), 0);
        for (int64_t n = 1; n <= made; ++n) {
            record = before;
            RefHost::FailAllocation(n);
            EXPECT_EQ(RK_NewEffectWorld(nullptr, 5, 3, 16, true, bitmap, &record), 4) << n << " of " << made;
            RefHost::TakeReports();
            EXPECT_TRUE(test::sameBytes(record, before));
            EXPECT_TRUE(tidy());
        }
    }
}

TEST_F(EffectWorldTest, ABitmapThatFailsGivesItsOwnCode) {
    for (const char* const call : {"RAS_NewWorld", "RAS_LoadLockPixels"}) {
        const RK_EffectWorld before = littered();
        RK_EffectWorld record = before;
        RefHost::FailCall(call, 77);
        EXPECT_EQ(RK_NewEffectWorld(nullptr, 5, 3, 8, true, true, &record), 77);
        EXPECT_TRUE(test::sameBytes(record, before));
        EXPECT_TRUE(tidy());
    }
}

TEST_F(EffectWorldTest, OnlyWhatNewEffectWorldMadeIsDisposed) {
    EXPECT_EQ(RK_DisposeEffectWorld(nullptr, nullptr), 516);
    EXPECT_TRUE(onlyError("invalid parameter"));

    RK_EffectWorld record;
    ASSERT_EQ(RK_NewEffectWorld(nullptr, 5, 3, 8, true, false, &record), 0);
    for (const uint32_t stamp : {RK_kStampHost, 0u, 0xAAAABBBAu}) {
        RK_EffectWorld foreign = record;
        foreign.ownership_stamp = stamp;
        const RK_EffectWorld before = foreign;
        EXPECT_EQ(RK_DisposeEffectWorld(nullptr, &foreign), 516);
        EXPECT_TRUE(onlyError(kForeign));
        EXPECT_TRUE(test::sameBytes(foreign, before));
    }
    RK_EffectWorld empty = record;
    empty.world_object = nullptr;
    EXPECT_EQ(RK_DisposeEffectWorld(nullptr, &empty), 516);
    EXPECT_TRUE(onlyError(kForeign));

    EXPECT_EQ(RK_DisposeEffectWorld(nullptr, &record), 0);
    // A second time there is nothing to dispose.
    EXPECT_EQ(RK_DisposeEffectWorld(nullptr, &record), 516);
    EXPECT_TRUE(onlyError(kForeign));
}

// ---- Pixels ---------------------------------------------------------------------------------------------

template <class P>
RK_Long getPixels(RK_EffectWorld* world, void* pixels, P** result);
template <>
RK_Long getPixels(RK_EffectWorld* world, void* pixels, RK_Pixel8** result) {
    return RK_GetPixelData8(world, pixels, result);
}
template <>
RK_Long getPixels(RK_EffectWorld* world, void* pixels, RK_Pixel16** result) {
    return RK_GetPixelData16(world, pixels, result);
}
template <>
RK_Long getPixels(RK_EffectWorld* world, void* pixels, RK_PixelFloat** result) {
    return RK_GetPixelDataFloat(world, pixels, result);
}

template <class P>
class PixelDataTest : public EffectWorldTest {};
using Depths = testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;
TYPED_TEST_SUITE(PixelDataTest, Depths);

template <class P, class Of>
void askWorldOf() {
    test::Picture<Of> picture(3, 2);
    RK_LayerDef world = picture.record();
    Of other[1];
    P litter;
    constexpr bool same = sizeof(P) == sizeof(Of);
    P* result = &litter;
    EXPECT_EQ(getPixels<P>(&world, nullptr, &result), 0);
    EXPECT_EQ(static_cast<void*>(result), same ? world.data : nullptr);
    result = &litter;
    EXPECT_EQ(getPixels<P>(&world, other, &result), 0);
    EXPECT_EQ(static_cast<void*>(result), same ? other : nullptr);
    world.data = nullptr;
    result = &litter;
    EXPECT_EQ(getPixels<P>(&world, nullptr, &result), 0);
    EXPECT_EQ(result, nullptr);
}

TYPED_TEST(PixelDataTest, TheDepthOfTheFunctionDecides) {
    askWorldOf<TypeParam, RK_Pixel8>();
    askWorldOf<TypeParam, RK_Pixel16>();
    askWorldOf<TypeParam, RK_PixelFloat>();
}

TYPED_TEST(PixelDataTest, NullArgumentsAreToldAndClearTheResult) {
    const std::string text = sizeof(TypeParam) == 16 ? "bad parameter passed to RK_GetPixelDataFloat"
                                                     : "bad parameter passed to RK_GetPixelData8";
    TypeParam litter;
    TypeParam* result = &litter;
    EXPECT_EQ(getPixels<TypeParam>(nullptr, &litter, &result), 516);
    EXPECT_EQ(result, nullptr);
    EXPECT_TRUE(onlyError(text));
    RK_LayerDef world = test::Picture<TypeParam>(3, 2).record();
    EXPECT_EQ(getPixels<TypeParam>(&world, &litter, nullptr), 516);
    EXPECT_TRUE(onlyError(text));
    EXPECT_EQ(getPixels<TypeParam>(nullptr, nullptr, nullptr), 516);
    EXPECT_TRUE(onlyError(text));
}

TEST_F(EffectWorldTest, ARecordOfNoKnownFormatCountsAs8Bits) {
    test::Picture<RK_Pixel8> picture(3, 2);
    RK_LayerDef world = picture.record();
    world.world_flags = 0x03000000;
    RK_Pixel8* result = nullptr;
    EXPECT_EQ(RK_GetPixelData8(&world, nullptr, &result), 0);
    EXPECT_EQ(result, world.data);
    EXPECT_TRUE(test::onlyVerification("Unknown pixel format"));
    // An object's word counts more than the flags'.
    test::OddWorld odd(16);
    world.world_object = &odd;
    EXPECT_EQ(RK_GetPixelData8(&world, nullptr, &result), 0);
    EXPECT_EQ(result, nullptr);
}

}  // namespace
