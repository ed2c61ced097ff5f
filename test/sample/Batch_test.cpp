#include "RK/indep/sample/RK_Batch.h"

#include <gtest/gtest.h>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "test/Pixels.h"

namespace {

struct Row8 {
    Row8() : picture(4, 4), record(picture.record()) {
        picture.fill({255, 100, 100, 100});
        pb.src = &record;
        pb.motion_samples = 2;
        pb.comp_mode = {RK_Xfer_Behind, 0, 255, 0, 32768};
    }
    RK_Pixel8 run(RK_Pixel8 out, RK_BehindScan<RK_Pixel8>* scan = RKp_BehindNearest) const {
        const int32_t line[4] = {0, 0, 0x20000, 0}, steps[4] = {0x10000, 0, 0x10000, 0};
        EXPECT_EQ(0, scan(nullptr, 1, line, steps, &pb, &out));
        return out;
    }
    test::Picture<RK_Pixel8> picture;
    RK_LayerDef record;
    RK_SampPB pb{};
};

TEST(Batch, AnOpaqueDestinationIsLeftAloneAndNotSampled) {
    Row8 row;
    row.pb.src = nullptr;  // a read would crash
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 1, 2, 3}, row.run({255, 1, 2, 3})));
}

TEST(Batch, FullOpacityDoesNotReadTheTable) {
    Row8 row;
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 100, 100, 100}, row.run({0, 9, 9, 9})));
}

TEST(Batch, AClearDestinationTakesTheSampleWithItsAlphaThroughTheTable) {
    Row8 row;
    row.pb.comp_mode.opacity = 128;
    row.pb.fcm_table = RKp_G_fcm_table;
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{128, 100, 100, 100}, row.run({0, 9, 9, 9})));
}

TEST(Batch, APartDestinationLiesOverTheSample) {
    Row8 row;
    // s = 255 * 255 * 127, t = 128 * 65025.
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 150, 100, 49}, row.run({128, 200, 100, 0})));
}

TEST(Batch, FewerThanOneSampleChangesNothing) {
    Row8 row;
    for (int32_t samples : {0, -1, INT32_MIN}) {
        row.pb.motion_samples = samples;
        EXPECT_TRUE(test::sameBytes(RK_Pixel8{7, 1, 2, 3}, row.run({7, 1, 2, 3})));
    }
}

TEST(Batch, EverySlotHoldsItsScanAndSamplesAlike) {
    Row8 row;
    for (int32_t slot : {17, 18, 19}) {
        auto* scan = reinterpret_cast<RK_BehindScan<RK_Pixel8>*>(RKp_G_OverFuncs[slot]);
        ASSERT_NE(nullptr, scan);
        row.pb.x_radius = row.pb.y_radius = 0x8000;
        EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 100, 100, 100}, row.run({0, 0, 0, 0}, scan))) << slot;
    }
    test::Picture<RK_Pixel16> deep(4, 4);
    deep.fill({32768, 1000, 2000, 3000});
    const RK_LayerDef record = deep.record();
    row.pb.src = &record;
    row.pb.comp_mode.opacity16 = 16384;
    for (int32_t slot : {20, 21, 22}) {
        auto* scan = reinterpret_cast<RK_BehindScan<RK_Pixel16>*>(RKp_G_OverFuncs[slot]);
        ASSERT_NE(nullptr, scan);
        const int32_t line[4] = {0, 0, 0x20000, 0}, steps[4] = {0x10000, 0, 0x10000, 0};
        RK_Pixel16 out = {0, 5, 5, 5};
        EXPECT_EQ(0, scan(nullptr, 1, line, steps, &row.pb, &out));
        EXPECT_TRUE(test::sameBytes(RK_Pixel16{16384, 1000, 2000, 3000}, out)) << slot;
        out = {32768, 5, 5, 5};
        EXPECT_EQ(0, scan(nullptr, 1, line, steps, &row.pb, &out));
        EXPECT_TRUE(test::sameBytes(RK_Pixel16{32768, 5, 5, 5}, out)) << slot;
    }
}

TEST(Batch, ANothingOfASampleLeavesAPartDestination) {
    Row8 row;
    row.picture.fill({0, 100, 100, 100});
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{128, 200, 100, 0}, row.run({128, 200, 100, 0})));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{}, row.run({0, 200, 100, 0})));
}

// Sums of 32768 * 32768 for each sample do not fit 32 bits.
TEST(Batch, ManyOpaqueSamplesAt16BitsAddUp) {
    test::Picture<RK_Pixel16> source(4, 4);
    source.fill({32768, 32768, 12345, 1});
    const RK_LayerDef record = source.record();
    RK_SampPB pb{};
    pb.src = &record;
    pb.motion_samples = 200;
    pb.comp_mode = {RK_Xfer_Behind, 0, 255, 0, 32768};
    const int32_t line[4] = {0, 0, 0x20000, 0x20000}, steps[4] = {0, 0, 0, 0};
    RK_Pixel16 out = {0, 9, 9, 9};
    EXPECT_EQ(0, RKp_BehindNearest16(nullptr, 1, line, steps, &pb, &out));
    EXPECT_TRUE(test::sameBytes(RK_Pixel16{32768, 32768, 12345, 1}, out));
}

TEST(Batch, ACountBelowOneDoesNothing) {
    Row8 row;
    RK_Pixel8 out = {0, 1, 2, 3};
    const int32_t line[4] = {0, 0, 0, 0}, steps[4] = {0, 0, 0, 0};
    for (const int16_t count : {int16_t{0}, int16_t{-7}}) {
        EXPECT_EQ(0, RKp_BehindNearest(nullptr, count, line, steps, &row.pb, &out));
        EXPECT_TRUE(test::sameBytes(RK_Pixel8{0, 1, 2, 3}, out));
    }
}

TEST(Batch, PixelsAdvanceAlongTheSteps) {
    Row8 row;
    row.pb.motion_samples = 1;
    for (int x = 0; x < 4; ++x) row.picture.at(x, 1) = {255, uint8_t(10 * x), 0, 0};
    const int32_t line[4] = {0, 0x10000, 0, 0x10000}, steps[4] = {0x10000, 0, 0x10000, 0};
    RK_Pixel8 out[6] = {{0, 0, 0, 0}, {255, 9, 9, 9}, {0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}, {3, 3, 3, 3}};
    EXPECT_EQ(0, RKp_BehindNearest(nullptr, 5, line, steps, &row.pb, out));
    EXPECT_EQ(0, out[0].red);
    EXPECT_EQ(9, out[1].red);
    EXPECT_EQ(20, out[2].red);
    EXPECT_EQ(30, out[3].red);
    EXPECT_EQ(0, out[4].alpha);
    EXPECT_EQ(3, out[5].alpha);
}

}  // namespace
