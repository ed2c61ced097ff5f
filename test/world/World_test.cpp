// Making worlds and references through RK_World, and changing what they show.
#include "RK/indep/world/RK_World.h"

#include <memory>

#include "RK/host/RAS.h"
#include "RK/indep/world/RK_WorldDepth.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "test/Pixels.h"
#include "test/Reports.h"
#include "test/world/OddWorld.h"

namespace {

class WorldTest : public test::Tidy {};
using World = std::unique_ptr<RK_World>;

const uint8_t* bytesOf(const RK_World& world) { return static_cast<const uint8_t*>(world.record.data); }
const int16_t kDepths[] = {8, 16, 32};

testing::AssertionResult sameRect(const GEO_Rect& a, const GEO_Rect& b) {
    if (test::sameBytes(a, b)) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << a.top << ", " << a.left << ", " << a.bottom << ", " << a.right << " is not " << b.top << ", "
           << b.left << ", " << b.bottom << ", " << b.right;
}

// What every reference has in common.
void expectBareReference(const RK_World& world) {
    EXPECT_TRUE(world.IsReference());
    EXPECT_EQ(world.owned_pixels, nullptr);
    EXPECT_EQ(world.alloc_width, 0);
    EXPECT_EQ(world.alloc_height, 0);
    EXPECT_EQ(world.record.origin_x, 0);
    EXPECT_EQ(world.record.origin_y, 0);
    EXPECT_EQ(world.record.ownership_stamp, 0u);
    EXPECT_EQ(world.record.world_object, &world);
    EXPECT_FALSE(world.SubWorldSafetyGutterHasBeenOverWritten());
}

}  // namespace

// ---- New ------------------------------------------------------------------------------------------------

TEST_F(WorldTest, ARectanglesSizeMakesAWorldWithItsCornerAsOrigin) {
    const World world(RK_World::New(GEO_LRect{-70000, 123456, -69990, 123460}, 16, RK_kWorldClear));
    EXPECT_EQ(world->record.width, 10);
    EXPECT_EQ(world->record.height, 4);
    EXPECT_EQ(world->record.origin_x, -70000);
    EXPECT_EQ(world->record.origin_y, 123456);
    EXPECT_TRUE(sameRect(world->record.extent, {0, 0, 4, 10}));
    EXPECT_EQ(world->Depth(), 16);
}

TEST_F(WorldTest, ARectanglesSizeNeverWrapsIntoAnotherOne) {
    // Differences that are 5 modulo 2^32.
    const GEO_LRect rects[] = {{INT32_MAX, 0, INT32_MIN + 4, 5},
                               {0, INT32_MAX, 5, INT32_MIN + 4},
                               {INT32_MIN, 0, INT32_MAX, 5},
                               {5, 0, 0, 5},
                               {0, 5, 5, 5},
                               {0, 0, 30001, 5}};
    for (const GEO_LRect& rect : rects) {
        EXPECT_EQ(test::thrownBy([&] { RK_World::New(rect, 8, 0); }), 516);
        EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Error, RK_kLocation | 1, "invalid parameter"));
    }
    RefHost::FailAllocation(1);
    EXPECT_EQ(RK_World::New(GEO_LRect{0, 0, 5, 5}, 8, 0), nullptr);
}

TEST_F(WorldTest, AMatchingWorldHasTheOthersSizeAndDepthButNotItsOrigin) {
    for (const int16_t depth : kDepths) {
        const World other(RK_World::New(GEO_LRect{5, 6, 12, 9}, depth, 0));
        const World world(RK_World::NewMatchingWorld(other.get(), RK_kWorldBitmap));
        EXPECT_EQ(world->record.width, 7);
        EXPECT_EQ(world->record.height, 3);
        EXPECT_EQ(world->Depth(), depth);
        EXPECT_EQ(world->record.origin_x, 0);
        EXPECT_EQ(world->record.origin_y, 0);
        EXPECT_TRUE(world->HasRASWorld());
    }
    EXPECT_EQ(test::thrownBy([] { RK_World::NewMatchingWorld(nullptr, 0); }), 3);
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_World::NewMatchingWorld()"));
    test::OddWorld odd(24);
    EXPECT_EQ(test::thrownBy([&] { RK_World::NewMatchingWorld(&odd, 0); }), 3);
}

// ---- References -----------------------------------------------------------------------------------------

TEST_F(WorldTest, AReferenceToABitmapKeepsItsHandle) {
    for (const int16_t depth : kDepths) {
        GEO_Rect bounds = {0, 0, 4, 6};
        RAS_World** bitmap = nullptr;
        ASSERT_EQ(RAS_NewWorld(0, 0, 8, &bounds, depth * 4, 0, 0, &bitmap), 0);
        {
            const GEO_Rect* whole = nullptr;
            for (const World& world :
                 {World(RK_World::NewReference(bitmap)), World(RK_World::NewReference(bitmap, whole))}) {
                expectBareReference(*world);
                EXPECT_EQ(world->Depth(), depth);
                EXPECT_EQ(world->GetRASWorld(), bitmap);
                EXPECT_EQ(world->record.data, RASp_GetPixBaseAddr(bitmap));
                EXPECT_EQ(world->record.rowbytes, (*bitmap)->rowbytes);
                EXPECT_EQ(world->record.width, 6);
                EXPECT_EQ(world->record.height, 4);
                EXPECT_TRUE(sameRect(world->record.extent, {0, 0, 4, 6}));
                EXPECT_EQ(worldsMade(), 0);
            }
        }
        RAS_DisposeWorld(bitmap);
    }
}

TEST_F(WorldTest, AReferenceToAPartOfABitmapForgetsTheHandle) {
    uint8_t pixels[4 * 48];
    for (const int16_t depth : kDepths) {
        test::Bitmap bitmap(3, 4, int16_t(depth * 4), pixels, 48);
        const World world(RK_World::NewReference(bitmap.handle(), GEO_Rect{1, 2, 4, 3}));
        expectBareReference(*world);
        EXPECT_EQ(world->Depth(), depth);
        EXPECT_FALSE(world->HasRASWorld());
        EXPECT_EQ(bytesOf(*world), pixels + 48 + 2 * depth / 2);
        EXPECT_EQ(world->record.width, 1);
        EXPECT_EQ(world->record.height, 3);
        EXPECT_TRUE(sameRect(world->record.extent, {0, 0, 3, 1}));
    }
    test::Bitmap empty(3, 4, 32, nullptr, 48);
    const World none(RK_World::NewReference(empty.handle(), GEO_Rect{1, 2, 4, 3}));
    EXPECT_EQ(none->record.data, nullptr) << "no pixels stay no pixels";
}

TEST_F(WorldTest, ABitmapOfOtherBitsOrNullCannotBeReferredTo) {
    uint8_t pixels[16];
    for (const int16_t bits : {0, 1, 8, 24, 33, 256, -32}) {
        test::Bitmap bitmap(2, 2, bits, pixels, 8);
        EXPECT_EQ(test::thrownBy([&] { RK_World::NewReference(bitmap.handle()); }), 3);
        EXPECT_TRUE(test::onlyVerification("Unexpected bitdepth in RK_World::NewReference()"));
        EXPECT_EQ(test::thrownBy([&] { RK_World::NewReference(bitmap.handle(), GEO_Rect{0, 0, 1, 1}); }), 3);
        EXPECT_TRUE(test::onlyVerification("Unexpected bitdepth in RK_World::NewReference()"));
    }
    RAS_World** no_handle = nullptr;
    RAS_World* no_bitmap = nullptr;
    EXPECT_EQ(test::thrownBy([&] { RK_World::NewReference(no_handle); }), 3);
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_World::NewReference()"));
    EXPECT_EQ(test::thrownBy([&] { RK_World::NewReference(&no_bitmap); }), 3);
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_World::NewReference()"));
}

TEST_F(WorldTest, AReferenceToAPartOfAWorldSharesItsPixels) {
    for (const int16_t depth : kDepths) {
        const World source(RK_World::New(GEO_LRect{100, 200, 110, 208}, depth, RK_kWorldClear));
        source->record.extent = {1, 2, 7, 9};
        source->record.world_flags |= 0x00AB0000u;
        const World world(RK_World::NewReference(source.get(), GEO_LRect{3, 2, 8, 6}));
        expectBareReference(*world);
        EXPECT_EQ(world->Depth(), depth);
        EXPECT_EQ(bytesOf(*world), bytesOf(*source) + 2 * source->record.rowbytes + 3 * depth / 2);
        EXPECT_EQ(world->record.rowbytes, source->record.rowbytes);
        EXPECT_EQ(world->record.width, 5);
        EXPECT_EQ(world->record.height, 4);
        EXPECT_EQ(world->record.world_flags, source->record.world_flags);
        EXPECT_TRUE(sameRect(world->record.extent, {0, 0, 4, 5})) << "2..6 by 3..8, moved";
        const World same(RK_World::NewReference(source.get(), GEO_Rect{2, 3, 6, 8}));
        EXPECT_EQ(same->record.data, world->record.data);
        EXPECT_EQ(same->record.width, 5);
        EXPECT_EQ(same->record.height, 4);
    }
}

TEST_F(WorldTest, AnExtentThatMissesTheRectangleIsEmptiedAndStillMoved) {
    const World source(RK_World::New(10, 10, 8, 0));
    source->record.extent = {0, 0, 2, 2};
    const World world(RK_World::NewReference(source.get(), GEO_Rect{4, 3, 6, 8}));
    EXPECT_TRUE(sameRect(world->record.extent, {-4, -3, -4, -3}));
}

TEST_F(WorldTest, TheExtentIsCutByTheLow16BitsOfTheRectangle) {
    RK_LayerDef plain = {};
    plain.data = &plain;
    plain.width = plain.height = 200000;
    plain.extent = {0, 0, 100, 100};
    RK_WorldX<RK_Pixel8> source(&plain, false);
    const World world(
        RK_World::NewReference(&source, GEO_LRect{65536 + 10, 131072 + 20, 65536 + 30, 131072 + 40}));
    EXPECT_TRUE(sameRect(world->record.extent, {0, 0, 20, 20}));
    EXPECT_EQ(world->record.width, 20);
    // The extent's own edges wrap as 16-bit values do.
    source.record.extent = {-32768, -32768, 32767, 32767};
    const World far_off(RK_World::NewReference(&source, GEO_LRect{-32768, 1, 32767, 2}));
    EXPECT_TRUE(sameRect(far_off->record.extent, {0, 0, 1, -1}));
}

TEST_F(WorldTest, AReferenceTrustsItsRectangleWithoutOverflowing) {
    uint8_t pixel[4] = {};
    const World source(RK_World::NewReference(pixel, 1, 1, 8, INT32_MIN));
    const World world(
        RK_World::NewReference(source.get(), GEO_LRect{INT32_MIN, INT32_MAX, INT32_MAX, INT32_MIN}));
    EXPECT_EQ(world->record.width, -1);
    EXPECT_EQ(world->record.height, 1);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(world->record.data),
              reinterpret_cast<uintptr_t>(pixel) +
                  static_cast<uintptr_t>(int64_t{INT32_MAX} * INT32_MIN + int64_t{INT32_MIN} * 4));
}

TEST_F(WorldTest, OnlyAConcreteWorldCanBeReferredTo) {
    for (const RK_Long depth : {8, 16, 32, 24, 0}) {
        test::OddWorld odd(depth);
        EXPECT_EQ(test::thrownBy([&] { RK_World::NewReference(&odd, GEO_Rect{0, 0, 1, 1}); }), 3) << depth;
        EXPECT_TRUE(test::onlyVerification("Unexpected bitdepth in RK_World::NewReference()"));
    }
    RK_World* none = nullptr;
    EXPECT_EQ(test::thrownBy([&] { RK_World::NewReference(none, GEO_Rect{0, 0, 1, 1}); }), 3);
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_World::NewReference()"));
}

TEST_F(WorldTest, AReferenceToARecordTakesItAsAWrapDoes) {
    for (const uint32_t flags : {0u, 0x01000001u, 0x02000000u, 0x00000001u}) {
        uint8_t pixels[64];
        RK_LayerDef plain = {};
        plain.world_flags = flags;
        plain.data = pixels;
        plain.rowbytes = -32;
        plain.width = 2;
        plain.height = 2;
        plain.extent = {5, 6, 7, 8};
        plain.origin_x = 4;
        RAS_World* nothing = nullptr;
        plain.ras_world = &nothing;
        const World world(RK_World::NewReference(&plain));
        expectBareReference(*world);
        EXPECT_EQ(world->Depth(), RKp_WorldDepth(&plain));
        EXPECT_EQ(world->record.data, pixels);
        EXPECT_EQ(world->record.rowbytes, -32);
        EXPECT_EQ(world->record.world_flags, flags);
        EXPECT_TRUE(sameRect(world->record.extent, plain.extent));
        EXPECT_FALSE(world->HasRASWorld());
    }
}

TEST_F(WorldTest, ARecordOfOddDepthCannotBeReferredTo) {
    test::OddWorld odd(24);
    EXPECT_EQ(test::thrownBy([&] { RK_World::NewReference(&odd.record); }), 3);
    EXPECT_TRUE(test::onlyVerification("Unexpected bitdepth in RK_World::NewReference(RK_EffectWorld)"));
    RK_LayerDef plain = {};
    plain.world_flags = 0x03000000u;
    EXPECT_EQ(World(RK_World::NewReference(&plain))->Depth(), 8) << "an unknown byte counts as 8";
    EXPECT_TRUE(test::onlyVerification("Unknown pixel format"));
    RK_LayerDef* none = nullptr;
    EXPECT_EQ(test::thrownBy([&] { RK_World::NewReference(none); }), 3);
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_World::NewReference()"));
}

TEST_F(WorldTest, AReferenceToRawPixelsTakesWhatItIsGiven) {
    uint8_t pixels[16];
    const uint32_t flags[] = {0u, 0x01000001u, 0x02000000u};
    for (int i = 0; i < 3; ++i) {
        const World world(RK_World::NewReference(pixels, 40, 30, kDepths[i], 7));
        expectBareReference(*world);
        EXPECT_EQ(world->Depth(), kDepths[i]);
        EXPECT_EQ(world->record.world_flags, flags[i]);
        EXPECT_EQ(world->record.data, pixels);
        EXPECT_EQ(world->record.rowbytes, 7);
        EXPECT_TRUE(sameRect(world->record.extent, {0, 0, 30, 40}));
    }
    const World nonsense(RK_World::NewReference(nullptr, INT32_MIN, INT32_MAX, 8, INT32_MIN));
    EXPECT_EQ(nonsense->record.width, INT32_MIN);
    EXPECT_EQ(nonsense->record.height, INT32_MAX);
}

TEST_F(WorldTest, RawPixelsOfUnknownDepthAreRefusedWithoutAReport) {
    uint8_t pixels[16];
    for (const int depth : {0, 4, 24, 64, -8})
        EXPECT_EQ(test::thrownBy([&] { RK_World::NewReference(pixels, 1, 1, int16_t(depth), 16); }), 3);
}

TEST_F(WorldTest, NumbersThatNoRecordHoldsAreRefused) {
    if (sizeof(RK_Long) == 4) return;  // every RK_Long fits there
    const RK_Long wide = static_cast<RK_Long>((int64_t{1} << 32) + 4);
    uint8_t pixels[64];
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(test::thrownBy([&] {
                      RK_World::NewReference(pixels, i == 0 ? wide : 4, i == 1 ? wide : 4, 8,
                                             i == 2 ? wide : 16);
                  }),
                  3);
        EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_World::NewReference()"));
    }
}

TEST_F(WorldTest, AReferenceWhoseObjectFindsNoMemoryIsNull) {
    GEO_Rect bounds = {0, 0, 2, 2};
    RAS_World** bitmap = nullptr;
    ASSERT_EQ(RAS_NewWorld(0, 0, 8, &bounds, 64, 0, 0, &bitmap), 0);
    const World source(RK_World::New(2, 2, 16, 0));
    RK_LayerDef plain = source->record;
    plain.world_object = nullptr;
    const GEO_Rect rect = {0, 0, 1, 1};
    const auto failing = [](auto make) {
        RefHost::FailAllocation(1);
        const RK_World* world = make();
        EXPECT_EQ(world, nullptr);
        EXPECT_EQ(RefHost::AllocationsSince(), 1);
    };
    failing([&] { return RK_World::NewReference(bitmap); });
    failing([&] { return RK_World::NewReference(bitmap, rect); });
    failing([&] { return RK_World::NewReference(source.get(), rect); });
    failing([&] { return RK_World::NewReference(source.get(), GEO_LRect{0, 0, 1, 1}); });
    failing([&] { return RK_World::NewReference(&plain); });
    failing([&] { return RK_World::NewReference(plain.data, 2, 2, 16, 16); });
    RAS_DisposeWorld(bitmap);
}

// ---- Shrinking ------------------------------------------------------------------------------------------

TEST_F(WorldTest, AShrunkWorldShowsTheRectangleAndKeepsItsBlock) {
    for (const int16_t depth : kDepths) {
        const World world(RK_World::New(10, 8, depth, RK_kWorldClear));
        const uint8_t* data = bytesOf(*world);
        void* const block = world->owned_pixels;
        world->record.extent = {1, 1, 5, 9};
        world->ShrinkToSubRect({2, 3, 7, 8});
        EXPECT_EQ(bytesOf(*world), data + 2 * world->record.rowbytes + 3 * depth / 2);
        EXPECT_EQ(world->record.width, 5);
        EXPECT_EQ(world->record.height, 5);
        EXPECT_TRUE(sameRect(world->record.extent, {0, 0, 3, 5}));
        EXPECT_EQ(world->owned_pixels, block);
        EXPECT_EQ(world->alloc_width, 10);
        EXPECT_EQ(world->alloc_height, 8);
        EXPECT_FALSE(world->SubWorldSafetyGutterHasBeenOverWritten());
        const_cast<uint8_t*>(data)[7 * world->record.rowbytes + 10 * depth / 2] = 0;
        EXPECT_TRUE(world->SubWorldSafetyGutterHasBeenOverWritten());
        // Again, in what is left, by its own extent.
        world->ShrinkToSubRect(world->record.extent);
        EXPECT_EQ(world->record.height, 3);
        EXPECT_TRUE(sameRect(world->record.extent, {0, 0, 3, 5}));
    }
}

TEST_F(WorldTest, AShrinkByTheWorldsOwnMovedExtentReadsItBeforeItChanges) {
    const World world(RK_World::New(10, 8, 8, 0));
    const uint8_t* data = bytesOf(*world);
    world->record.extent = {2, 3, 6, 9};
    world->ShrinkToSubRect(world->record.extent);
    EXPECT_EQ(bytesOf(*world), data + 2 * world->record.rowbytes + 3 * 4);
    EXPECT_EQ(world->record.width, 6);
    EXPECT_EQ(world->record.height, 4);
    EXPECT_TRUE(sameRect(world->record.extent, {0, 0, 4, 6}));
}

TEST_F(WorldTest, ARectangleOutsideTheWorldDoesNotShrinkIt) {
    const World world(RK_World::New(10, 8, 8, 0));
    const RK_LayerDef before = world->record;
    const GEO_Rect bad[] = {
        {-1, 0, 8, 10}, {0, -1, 8, 10}, {0, 0, 9, 10}, {0, 0, 8, 11}, {0, -32768, 8, 32767}};
    for (const GEO_Rect& rect : bad) {
        EXPECT_EQ(test::thrownBy([&] { world->ShrinkToSubRect(rect); }), 3);
        EXPECT_TRUE(test::onlyVerification("bad sub rect in ShrinkToSubRect"));
        EXPECT_TRUE(test::sameBytes(world->record, before));
    }
}

TEST_F(WorldTest, AReversedRectangleShrinksToANegativeSize) {
    const World world(RK_World::New(10, 8, 8, 0));
    const uint8_t* data = bytesOf(*world);
    world->ShrinkToSubRect({6, 9, 2, 1});
    EXPECT_EQ(world->record.width, -8);
    EXPECT_EQ(world->record.height, -4);
    EXPECT_EQ(bytesOf(*world), data + 6 * world->record.rowbytes + 9 * 4);
    EXPECT_TRUE(sameRect(world->record.extent, {-6, -9, -6, -9}));
}

TEST_F(WorldTest, ABitmapWorldCannotShrink) {
    const World world(RK_World::New(10, 8, 8, RK_kWorldBitmap));
    EXPECT_EQ(test::thrownBy([&] { world->ShrinkToSubRect({0, 0, 4, 4}); }), 3);
    EXPECT_TRUE(test::onlyVerification("Can't Shrink a RK_World which is backed by a RAS_World"));
    EXPECT_EQ(test::thrownBy([&] { world->ShrinkToSubRect({0, 0, 9, 4}); }), 3);
    EXPECT_TRUE(test::onlyVerification("bad sub rect in ShrinkToSubRect")) << "the rectangle comes first";
    EXPECT_EQ(world->record.width, 10);
}

// ---- Retargeting ----------------------------------------------------------------------------------------

TEST_F(WorldTest, ARetargetedReferenceTakesTheOthersFullSize) {
    for (const int16_t depth : kDepths) {
        const World a(RK_World::New(10, 8, depth, 0)), b(RK_World::New(20, 16, depth, 0));
        const World world(RK_World::NewReference(a.get(), GEO_Rect{0, 0, 4, 4}));
        world->record.origin_x = 5;
        world->record.ownership_stamp = 6;
        b->record.extent = {4, 4, 12, 30};
        b->record.world_flags |= 0x00100000u;
        world->ReReference(b.get(), {2, 3, 10, 12});
        expectBareReference(*world);
        EXPECT_EQ(world->record.width, 20) << "whatever the rectangle is";
        EXPECT_EQ(world->record.height, 16);
        EXPECT_EQ(world->record.rowbytes, b->record.rowbytes);
        EXPECT_EQ(bytesOf(*world), bytesOf(*b) + 2 * b->record.rowbytes + 3 * depth / 2);
        EXPECT_EQ(world->record.world_flags, b->record.world_flags);
        EXPECT_TRUE(sameRect(world->record.extent, {2, 1, 8, 9}));
        EXPECT_EQ(world->record.ras_world, nullptr);
    }
}

TEST_F(WorldTest, ARetargetReadsItsRectangleBeforeItClearsTheRecord) {
    const World a(RK_World::New(10, 8, 8, 0)), b(RK_World::New(20, 16, 8, 0));
    const World world(RK_World::NewReference(a.get(), GEO_Rect{0, 0, 8, 10}));
    world->record.extent = {2, 3, 6, 9};
    world->ReReference(b.get(), world->record.extent);
    EXPECT_EQ(bytesOf(*world), bytesOf(*b) + 2 * b->record.rowbytes + 3 * 4);
    EXPECT_TRUE(sameRect(world->record.extent, {0, 0, 4, 6}));
}

TEST_F(WorldTest, ARetargetedOwnerStillFreesItsOldBlock) {
    const World other(RK_World::New(200, 3, 8, 0));
    World world(RK_World::New(3, 2, 8, 0));
    world->ReReference(other.get(), {0, 0, 3, 200});
    EXPECT_FALSE(world->IsReference());
    EXPECT_EQ(world->alloc_width, 3);
    EXPECT_FALSE(world->SubWorldSafetyGutterHasBeenOverWritten()) << "it looks at its own block";
    EXPECT_EQ(worldsMade(), 2);
    world.reset();
    EXPECT_EQ(worldsMade(), 1);
}

TEST_F(WorldTest, RetargetingTestsDepthThenRectangleThenItself) {
    const World a(RK_World::New(10, 8, 8, 0)), deep(RK_World::New(10, 8, 16, 0));
    const RK_LayerDef before = a->record;
    const GEO_Rect good = {0, 0, 8, 10}, bad = {0, 0, 9, 10};
    const auto refused = [&](RK_World* other, const GEO_Rect& rect, const char* text) {
        EXPECT_EQ(test::thrownBy([&] { a->ReReference(other, rect); }), 3);
        EXPECT_TRUE(test::onlyVerification(text));
        EXPECT_TRUE(test::sameBytes(a->record, before));
    };
    refused(deep.get(), bad, "can't change bit depth in ReReference");
    refused(deep.get(), good, "can't change bit depth in ReReference");
    refused(a.get(), bad, "bad sub rect in ReReference");
    refused(a.get(), good, "can't ReReference self");
    refused(nullptr, good, "Bad parameter to RK_World::ReReference()");
    const World b(RK_World::New(10, 8, 8, 0));
    for (const GEO_Rect& rect : {GEO_Rect{-1, 0, 8, 10}, GEO_Rect{0, -1, 8, 10}, GEO_Rect{0, 0, 8, 11}})
        refused(b.get(), rect, "bad sub rect in ReReference");
}

// ---- RefersTo -------------------------------------------------------------------------------------------

TEST_F(WorldTest, AReferenceRefersToTheWorldThatHoldsItsFirstRow) {
    const World source(RK_World::New(10, 8, 8, 0));
    const World whole(RK_World::NewReference(source.get(), GEO_Rect{0, 0, 8, 10}));
    const World part(RK_World::NewReference(source.get(), GEO_Rect{7, 9, 8, 10}));
    EXPECT_TRUE(whole->RefersTo(source.get()));
    EXPECT_TRUE(part->RefersTo(source.get()));
    EXPECT_TRUE(part->RefersTo(whole.get()));
    EXPECT_FALSE(whole->RefersTo(part.get())) << "wider than the other";
    EXPECT_FALSE(source->RefersTo(source.get())) << "no reference";
    EXPECT_FALSE(source->RefersTo(whole.get()));
    EXPECT_FALSE(whole->RefersTo(nullptr));
}

TEST_F(WorldTest, RefersToTellsDepthRowbytesSizeAndPlaceApart) {
    alignas(16) uint8_t pixels[16 * 16];
    const auto at = [&](int64_t offset, RK_Long width, RK_Long height, int16_t depth, RK_Long rowbytes) {
        return World(RK_World::NewReference(pixels + offset, width, height, depth, rowbytes));
    };
    const World other = at(64, 4, 4, 8, 16);
    EXPECT_TRUE(at(64, 4, 4, 8, 16)->RefersTo(other.get()));
    EXPECT_TRUE(at(64 + 63, 4, 4, 8, 16)->RefersTo(other.get()))
        << "a column past the row's end is not checked";
    EXPECT_FALSE(at(64 + 64, 4, 4, 8, 16)->RefersTo(other.get())) << "one row below";
    EXPECT_FALSE(at(63, 4, 4, 8, 16)->RefersTo(other.get())) << "one byte before";
    EXPECT_FALSE(at(64, 2, 4, 16, 16)->RefersTo(other.get()));
    EXPECT_FALSE(at(64, 4, 4, 8, 32)->RefersTo(other.get()));
    EXPECT_FALSE(at(64, 5, 4, 8, 16)->RefersTo(other.get()));
    EXPECT_FALSE(at(64, 4, 5, 8, 16)->RefersTo(other.get()));
    EXPECT_TRUE(at(64, 3, 3, 8, 16)->RefersTo(other.get()));
    const World flat = at(64, 4, 4, 8, 0);
    EXPECT_FALSE(at(64, 4, 4, 8, 0)->RefersTo(flat.get())) << "rows without length";
    const World upward = at(64, 4, 4, 8, -16);
    EXPECT_TRUE(at(64, 4, 4, 8, -16)->RefersTo(upward.get()));
    EXPECT_FALSE(at(48, 4, 4, 8, -16)->RefersTo(upward.get())) << "the difference is negative";
}

TEST_F(WorldTest, TheDistanceOfFarApartWorldsIsPointerWide) {
    if (sizeof(void*) == 4) return;
    const World near_by(RK_World::NewReference(reinterpret_cast<void*>(uintptr_t{4096}), 4, 4, 8, 16));
    const World far_off(RK_World::NewReference(
        reinterpret_cast<void*>(static_cast<uintptr_t>(4096 + (uint64_t{1} << 32))), 4, 4, 8, 16));
    EXPECT_FALSE(far_off->RefersTo(near_by.get()));
    EXPECT_FALSE(near_by->RefersTo(far_off.get()));
}

// ---- Records of worlds ----------------------------------------------------------------------------------

TEST_F(WorldTest, AFilledRecordDescribesTheWorld) {
    for (const int16_t depth : kDepths) {
        const World world(RK_World::New(GEO_LRect{3, 4, 8, 7}, depth, RK_kWorldBitmap));
        world->record.extent = {1, 2, 3, 4};
        world->record.world_flags |= 0x00770000u;
        RK_LayerDef record;
        std::memset(&record, 0xEE, sizeof record);
        world->FillOutEffectWorld(&record);
        RK_LayerDef expected;
        std::memset(&expected, 0, sizeof expected);
        expected.data = world->record.data;
        expected.rowbytes = world->record.rowbytes;
        expected.width = 5;
        expected.height = 3;
        expected.extent = {1, 2, 3, 4};
        expected.world_flags = depth == 8 ? 0u : depth == 16 ? 0x01000001u : 0x02000000u;
        expected.world_object = world.get();
        expected.ras_world = world->record.ras_world;
        EXPECT_TRUE(test::sameBytes(record, expected));
        world->FillOutEffectWorld(&world->record);
        EXPECT_TRUE(test::sameBytes(world->record, expected)) << "a world may fill its own record";
        world->FillOutEffectWorld(nullptr);
    }
}

TEST_F(WorldTest, AWorldOfOddDepthThrowsWhenItFillsARecord) {
    for (const int64_t depth : {int64_t{24}, (int64_t{1} << 32) + 8}) {
        const test::OddWorld odd(static_cast<RK_Long>(depth));
        if (odd.Depth() == 8) continue;  // where RK_Long has 32 bits
        RK_LayerDef record;
        EXPECT_EQ(test::thrownBy([&] { odd.FillOutEffectWorld(&record); }), 3);
        EXPECT_TRUE(test::onlyVerification("Unknown pixel format"));
        EXPECT_EQ(record.world_flags, 0u);
    }
}

TEST_F(WorldTest, AWorldWithoutABitmapThrows513WhenAskedForIt) {
    const World world(RK_World::New(2, 2, 8, 0));
    EXPECT_FALSE(world->HasRASWorld());
    EXPECT_EQ(test::thrownBy([&] { world->GetRASWorld(); }), 513);
}
