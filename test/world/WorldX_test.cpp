// The life of worlds: sizes, pixels, gutter, failure, end.
#include "RK/indep/world/RK_WorldXT.h"

#include <memory>
#include <type_traits>

#include "RK/host/RAS.h"
#include "test/Pixels.h"
#include "test/Reports.h"

namespace {

class WorldX : public test::Tidy {};
using World = std::unique_ptr<RK_World>;

uint8_t* bytesOf(const RK_World& world) { return static_cast<uint8_t*>(world.record.data); }

// The last pixel of the last row, and one past it.
template <class P>
uint8_t* pixelsEnd(const RK_World& world) {
    return bytesOf(world) + (world.record.height - 1) * world.record.rowbytes +
           world.record.width * int(sizeof(P));
}

bool allBytes(const uint8_t* bytes, size_t count, uint8_t value) {
    for (size_t i = 0; i < count; ++i)
        if (bytes[i] != value) return false;
    return true;
}

template <class P>
void expectFreshHeapWorld(RK_Long width, RK_Long height) {
    const int64_t pixel = sizeof(P);
    RefHost::FailAllocation(0);
    const int64_t bytes_before = RefHost::Memory().bytes;
    World world(RK_World::New(width, height, int16_t(pixel * 2), RK_kWorldClear));
    ASSERT_NE(world, nullptr);
    EXPECT_EQ(RefHost::AllocationsSince(), 2) << "the object and its block";
    const int64_t padded = (width * pixel + 15) / 16 * 16;
    EXPECT_EQ(RefHost::Memory().bytes - bytes_before,
              int64_t(sizeof(RK_WorldX<P>)) + (height - 1) * padded + width * pixel + (padded - pixel) + 8)
        << "rows, the gutter, and room to align";
    const RK_LayerDef& r = world->record;
    const int64_t rowbytes = (width * pixel + 15) / 16 * 16;
    EXPECT_EQ(r.rowbytes, rowbytes);
    EXPECT_EQ(r.width, width);
    EXPECT_EQ(r.height, height);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(r.data) % 16, 0u);
    EXPECT_EQ(r.world_object, world.get());
    EXPECT_EQ(r.ras_world, nullptr);
    EXPECT_EQ(r.ownership_stamp, 0u);
    EXPECT_EQ(r.origin_x, 0);
    EXPECT_EQ(r.origin_y, 0);
    const GEO_Rect extent = {0, 0, int16_t(height), int16_t(width)};
    EXPECT_TRUE(test::sameBytes(r.extent, extent));
    EXPECT_EQ(r.world_flags, pixel == 4 ? 0u : pixel == 8 ? 0x01000001u : 0x02000000u);
    EXPECT_EQ(world->alloc_width, width);
    EXPECT_EQ(world->alloc_height, height);
    EXPECT_EQ(world->Depth(), pixel * 2);
    EXPECT_EQ(world->PixelSize(), pixel);
    EXPECT_FALSE(world->IsReference());
    EXPECT_FALSE(world->HasRASWorld());
    for (int64_t y = 0; y < height; ++y)
        ASSERT_TRUE(allBytes(bytesOf(*world) + y * rowbytes, size_t(width * pixel), 0)) << "row " << y;
    EXPECT_TRUE(allBytes(pixelsEnd<P>(*world), size_t(rowbytes - pixel), 0x55));
    EXPECT_FALSE(world->SubWorldSafetyGutterHasBeenOverWritten());
}

template <class P>
RK_Long makeAndDrop(RK_Long width, RK_Long height, RK_Long flags) {
    return test::thrownBy([&] { delete RK_World::New(width, height, int16_t(sizeof(P) * 2), flags); });
}

template <class P>
void expectSizeLimits(RK_Long flags) {
    const RK_Long bad[] = {0,
                           -1,
                           30001,
                           32768,
                           65537,
                           INT32_MIN,
                           INT32_MAX,
                           std::numeric_limits<RK_Long>::min(),
                           std::numeric_limits<RK_Long>::max()};
    for (const RK_Long size : bad) {
        EXPECT_EQ((makeAndDrop<P>(size, 1, flags)), 516) << size;
        EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Error, RK_kLocation | 1, "invalid parameter"));
        EXPECT_EQ((makeAndDrop<P>(1, size, flags)), 516) << size;
        EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Error, RK_kLocation | 1, "invalid parameter"));
    }
    EXPECT_EQ((makeAndDrop<P>(30000, 1, flags)), 0);
    EXPECT_EQ((makeAndDrop<P>(1, 30000, flags)), 0);
}

}  // namespace

static_assert(!std::is_copy_constructible_v<RK_WorldX<RK_Pixel8>> &&
                  !std::is_copy_assignable_v<RK_WorldX<RK_Pixel8>>,
              "two worlds would free one block");

// ---- Heap worlds ----------------------------------------------------------------------------------------

TEST_F(WorldX, AHeapWorldHasPaddedAlignedRowsAndAGutter) {
    for (const RK_Long width : {1, 2, 3, 4, 5, 16, 17})
        for (const RK_Long height : {1, 2, 7}) {
            expectFreshHeapWorld<RK_Pixel8>(width, height);
            expectFreshHeapWorld<RK_Pixel16>(width, height);
            expectFreshHeapWorld<RK_PixelFloat>(width, height);
        }
}

TEST_F(WorldX, AnEightBitWorldOfWidth3HasAGutterOf12Bytes) {
    const World world(RK_World::New(3, 2, 8, 0));
    EXPECT_EQ(world->record.rowbytes, 16);
    for (int i = 0; i < 12; ++i) {
        uint8_t& byte = pixelsEnd<RK_Pixel8>(*world)[i];
        byte ^= 1;
        EXPECT_TRUE(world->SubWorldSafetyGutterHasBeenOverWritten()) << i;
        byte ^= 1;
    }
    EXPECT_FALSE(world->SubWorldSafetyGutterHasBeenOverWritten());
}

TEST_F(WorldX, AOnePixelWideFloatWorldHasNoGutter) {
    const World world(RK_World::New(1, 3, 32, RK_kWorldClear));
    EXPECT_EQ(world->record.rowbytes, 16);
    EXPECT_FALSE(world->SubWorldSafetyGutterHasBeenOverWritten());
}

TEST_F(WorldX, PixelsMayBeWrittenWithoutTouchingTheGutter) {
    const World world(RK_World::New(5, 4, 16, 0));
    std::memset(bytesOf(*world), 0xAB, size_t(pixelsEnd<RK_Pixel16>(*world) - bytesOf(*world)));
    EXPECT_FALSE(world->SubWorldSafetyGutterHasBeenOverWritten());
}

TEST_F(WorldX, ABlockThatIsAlignedTo8HasItsGutter8BytesOn) {
    alignas(16) uint8_t block[64];
    std::memset(block, 0x55, sizeof block);
    RK_LayerDef plain = {};
    RK_WorldX<RK_Pixel8> world(&plain, false);
    world.record.rowbytes = 16;
    world.alloc_width = 3;
    world.alloc_height = 2;
    world.owned_pixels = block + 8;
    EXPECT_FALSE(world.SubWorldSafetyGutterHasBeenOverWritten());
    block[16 + 16 + 12 - 1] = 0;  // the last byte of the last pixel
    EXPECT_FALSE(world.SubWorldSafetyGutterHasBeenOverWritten());
    block[16 + 16 + 12] = 0;
    EXPECT_TRUE(world.SubWorldSafetyGutterHasBeenOverWritten());
    world.owned_pixels = nullptr;
}

TEST_F(WorldX, SizesReachFrom1To30000) {
    expectSizeLimits<RK_Pixel8>(0);
    expectSizeLimits<RK_Pixel16>(0);
    expectSizeLimits<RK_PixelFloat>(0);
    expectSizeLimits<RK_Pixel8>(RK_kWorldBitmap);
}

TEST_F(WorldX, WithoutTheClearFlagOnlyTheGutterIsWritten) {
    // The block of the world before, freed and taken again, is as good as any other content: nothing is
    // promised.
    const World world(RK_World::New(6, 3, 8, 2));
    EXPECT_TRUE(allBytes(pixelsEnd<RK_Pixel8>(*world), 32 - 4, 0x55));
}

TEST_F(WorldX, TheLargestWorldsAreExactOrOutOfMemory) {
    // 30000 x 30000 float pixels need 14.4 GB: more than a 32-bit size can say.
    RefHost::FailAllocation(sizeof(void*) == 4 ? 0 : 2);
    EXPECT_EQ((makeAndDrop<RK_PixelFloat>(30000, 30000, 0)), 4);
    EXPECT_TRUE(
        test::onlyReport(RefHost::ReportKind::WorldAllocation, 0,
                         "no memory for a world of 30000 x 30000 pixels, 128 bits each, 480000 bytes a row"));
}

// ---- Failure --------------------------------------------------------------------------------------------

TEST_F(WorldX, EveryAllocationOfAHeapWorldMayFail) {
    for (const int16_t depth : {int16_t{8}, int16_t{16}, int16_t{32}}) {
        RefHost::FailAllocation(1);
        EXPECT_EQ(RK_World::New(3, 2, depth, 0), nullptr) << "no object: null and no report";
        EXPECT_TRUE(test::noReports());
        RefHost::FailAllocation(2);
        EXPECT_EQ(test::thrownBy([&] { RK_World::New(3, 2, depth, 0); }), 4);
        EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::WorldAllocation, 0,
                                     "no memory for a world of 3 x 2 pixels, " + std::to_string(depth * 4) +
                                         " bits each, " + std::to_string((3 * depth / 2 + 15) / 16 * 16) +
                                         " bytes a row"));
        EXPECT_TRUE(tidy());
        RefHost::FailAllocation(3);
        World(RK_World::New(3, 2, depth, 0));
        EXPECT_EQ(RefHost::AllocationsSince(), 2);
    }
}

TEST_F(WorldX, EveryAllocationOfABitmapWorldMayFail) {
    RefHost::FailAllocation(1);
    EXPECT_EQ(RK_World::New(3, 2, 8, RK_kWorldBitmap), nullptr);
    for (int n = 2; n <= 3; ++n) {
        RefHost::FailAllocation(n);
        EXPECT_EQ((makeAndDrop<RK_Pixel8>(3, 2, RK_kWorldBitmap)), 4);
        EXPECT_EQ(RefHost::AllocationsSince(), n);
        EXPECT_TRUE(tidy());
        EXPECT_EQ(RefHost::MinimalisticBrackets(), 0);
    }
    EXPECT_TRUE(test::noReports()) << "a bitmap's failure is thrown as it is";
}

TEST_F(WorldX, AFailingBitmapCallIsThrownAsItIsAndLeavesNothing) {
    for (const char* call : {"RAS_NewWorld", "RAS_LoadLockPixels"}) {
        RefHost::FailCall(call, 1234);
        EXPECT_EQ((makeAndDrop<RK_Pixel16>(3, 2, RK_kWorldBitmap)), 1234) << call;
        EXPECT_TRUE(tidy()) << call;
        EXPECT_EQ(RefHost::MinimalisticBrackets(), 0) << call;
    }
}

TEST_F(WorldX, AnUnknownDepthIsThrownWithoutAReport) {
    for (const int16_t depth : {0, 1, 4, 24, 64, -8, INT16_MAX, INT16_MIN})
        EXPECT_EQ(test::thrownBy([&, d = depth] { RK_World::New(3, 2, int16_t(d), 0); }), 3) << depth;
    EXPECT_EQ(test::thrownBy([&] { RK_World::New(0, 0, 24, 0); }), 3) << "before the size";
}

TEST_F(WorldX, ABitmapsSizeIsCheckedBeforeTheHostIsAsked) {
    RefHost::FailCall("RAS_NewWorld", 1234);
    EXPECT_EQ((makeAndDrop<RK_Pixel8>(65537, 1, RK_kWorldBitmap)), 516);
    EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Error, RK_kLocation | 1, "invalid parameter"));
    EXPECT_EQ((makeAndDrop<RK_Pixel8>(1, 1, RK_kWorldBitmap)), 1234) << "the failure was still waiting";
}

// ---- Bitmap worlds --------------------------------------------------------------------------------------

TEST_F(WorldX, ABitmapWorldTakesItsPixelsFromTheLockedBitmap) {
    for (const int16_t depth : {int16_t{8}, int16_t{16}, int16_t{32}}) {
        World world(RK_World::New(5, 3, depth, RK_kWorldBitmap | RK_kWorldClear));
        ASSERT_NE(world, nullptr);
        ASSERT_TRUE(world->HasRASWorld());
        RAS_World** bitmap = world->GetRASWorld();
        EXPECT_EQ(bitmap, world->record.ras_world);
        EXPECT_EQ((*bitmap)->lock_count, 1);
        EXPECT_EQ((*bitmap)->bits_per_pixel, depth * 4);
        EXPECT_EQ((*bitmap)->width, 5);
        EXPECT_EQ((*bitmap)->height, 3);
        EXPECT_EQ(world->record.data, (*bitmap)->base);
        EXPECT_EQ(world->record.rowbytes, (*bitmap)->rowbytes);
        EXPECT_EQ(world->owned_pixels, RK_World::BitmapPixels());
        EXPECT_FALSE(world->IsReference());
        EXPECT_FALSE(world->SubWorldSafetyGutterHasBeenOverWritten());
        EXPECT_EQ(worldsMade(), 1);
        for (int y = 0; y < 3; ++y)
            EXPECT_TRUE(allBytes(bytesOf(*world) + y * world->record.rowbytes, size_t(5 * depth / 2), 0));
        world.reset();
        EXPECT_TRUE(tidy());
    }
}

TEST_F(WorldX, ARetargetedBitmapWorldStillGivesItsBitmapBack) {
    World bitmap(RK_World::New(5, 3, 8, RK_kWorldBitmap));
    const World other(RK_World::New(5, 3, 8, 0));
    bitmap->ReReference(other.get(), {0, 0, 3, 5});
    EXPECT_FALSE(bitmap->HasRASWorld());
    EXPECT_FALSE(bitmap->IsReference());
    EXPECT_FALSE(bitmap->SubWorldSafetyGutterHasBeenOverWritten());
}

// ---- Ownership ------------------------------------------------------------------------------------------

TEST_F(WorldX, TheWorldCountFollowsTheOwners) {
    World a(RK_World::New(4, 4, 8, 0));
    EXPECT_EQ(worldsMade(), 1);
    World b(RK_World::New(4, 4, 32, RK_kWorldBitmap));
    EXPECT_EQ(worldsMade(), 2);
    const World reference(RK_World::NewReference(a.get(), GEO_Rect{0, 0, 2, 2}));
    {
        const RK_WorldX<RK_Pixel8> wrap(&a->record, false);
        EXPECT_EQ(worldsMade(), 2) << "references and wraps own nothing";
    }
    EXPECT_EQ(worldsMade(), 2);
    b.reset();
    EXPECT_EQ(worldsMade(), 1);
}

TEST_F(WorldX, AReleasedWorldLeavesItsBlockToWhoeverTookIt) {
    World world(RK_World::New(4, 4, 16, 0));
    void* block = world->owned_pixels;
    world->ReleaseOwnership();
    EXPECT_TRUE(world->IsReference());
    EXPECT_EQ(world->owned_pixels, nullptr);
    EXPECT_EQ(worldsMade(), 0) << "it owns no storage any more";
    world->ReleaseOwnership();
    EXPECT_EQ(worldsMade(), 0);
    const void* data = world->record.data;
    world.reset();
    EXPECT_EQ(data, block);
    std::memset(block, 0, 16);
    KIT_FreePtr(block);
}

TEST_F(WorldX, AReleasedBitmapWorldLeavesItsBitmapLocked) {
    World world(RK_World::New(4, 4, 16, RK_kWorldBitmap));
    RAS_World** bitmap = world->GetRASWorld();
    world->ReleaseOwnership();
    EXPECT_EQ(world->GetRASWorld(), bitmap);
    world.reset();
    EXPECT_EQ((*bitmap)->lock_count, 1);
    RAS_UnlockPixels(bitmap);
    RAS_DisposeWorld(bitmap);
}

// ---- Wraps ----------------------------------------------------------------------------------------------

TEST_F(WorldX, AWrapTakesTheRecordsPlaceSizeFlagsAndExtentOnly) {
    test::Picture<RK_Pixel16> picture(4, 3);
    RK_LayerDef plain = picture.record();
    plain.extent = {1, 2, 3, 4};
    plain.world_flags |= 0x00FF0000u;
    plain.ownership_stamp = 0xAAAABBBB;
    plain.origin_x = 9;
    plain.origin_y = 8;
    RAS_World* nothing = nullptr;
    plain.ras_world = &nothing;
    RefHost::FailAllocation(0);
    RK_WorldX<RK_Pixel16> world(&plain, false);
    EXPECT_EQ(RefHost::AllocationsSince(), 0);

    RK_LayerDef expected;
    std::memset(&expected, 0, sizeof expected);
    expected.data = plain.data;
    expected.rowbytes = plain.rowbytes;
    expected.width = 4;
    expected.height = 3;
    expected.world_flags = plain.world_flags;
    expected.extent = plain.extent;
    expected.world_object = &world;
    EXPECT_EQ(std::memcmp(&world.record, &expected, sizeof expected), 0);
    EXPECT_EQ(world.alloc_width, 0);
    EXPECT_EQ(world.alloc_height, 0);
    EXPECT_EQ(world.owned_pixels, nullptr);
    EXPECT_TRUE(world.IsReference());
    EXPECT_FALSE(world.SubWorldSafetyGutterHasBeenOverWritten());
}

TEST_F(WorldX, AKeepingWrapSetsTheSameFields) {
    test::Picture<RK_PixelFloat> picture(4, 3);
    const RK_LayerDef plain = picture.record();
    const RK_WorldX<RK_PixelFloat> world(&plain, true);
    EXPECT_EQ(world.record.data, plain.data);
    EXPECT_EQ(world.record.rowbytes, plain.rowbytes);
    EXPECT_EQ(world.record.width, 4);
    EXPECT_EQ(world.record.height, 3);
    EXPECT_EQ(world.record.world_flags, plain.world_flags);
    EXPECT_TRUE(test::sameBytes(world.record.extent, plain.extent));
    EXPECT_EQ(world.record.world_object, &world);
    EXPECT_EQ(world.record.ras_world, nullptr);
    EXPECT_EQ(world.owned_pixels, nullptr);
}

TEST_F(WorldX, RowsAreFoundPastTwoGigabytesAndBackwards) {
    RK_LayerDef plain = {};
    plain.data = reinterpret_cast<void*>(uintptr_t{4096});
    plain.rowbytes = 480000;
    const RK_WorldX<RK_PixelFloat> far_on(&plain, false);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(far_on.row(29999)),
              static_cast<uintptr_t>(4096 + 29999 * int64_t{480000}));
    plain.rowbytes = -16;
    const RK_WorldX<RK_PixelFloat> upside_down(&plain, false);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(upside_down.row(2)), 4096u - 32u);
    plain.rowbytes = INT32_MIN;
    const RK_WorldX<RK_PixelFloat> nonsense(&plain, false);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(nonsense.row(INT32_MIN)),
              static_cast<uintptr_t>(4096 + (uint64_t{1} << 62)));
}
