// Planes of 8-bit worlds, values between chunks, and single channels of interleaved rows.
#include "RK/indep/passes/RK_Planes.h"

#include <limits>

#include "RK/host/KIT.h"
#include "RK/indep/passes/RK_InterleaveT.h"
#include "RK/indep/world/RK_Chunk.h"
#include "test/Pixels.h"
#include "test/Reports.h"

namespace {

class PlanesTest : public test::Tidy {};
using Picture8 = test::Picture<RK_Pixel8>;

KIT_Handle handleOf(char** handle) { return reinterpret_cast<KIT_Handle>(handle); }

// ---- RK_ExtractPlanes -----------------------------------------------------------------------------------

TEST_F(PlanesTest, ChannelsStandInTheOrderAlphaRedGreenBlue) {
    Picture8 picture(3, 2);
    for (int i = 0; i < 6; ++i) {
        const auto v = static_cast<uint8_t>(i * 10);
        picture.at(i % 3, i / 3) = {static_cast<uint8_t>(v + 1), static_cast<uint8_t>(v + 2),
                                    static_cast<uint8_t>(v + 3), static_cast<uint8_t>(v + 4)};
    }
    RK_LayerDef world = picture.record();
    constexpr int kCount[16] = {0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4};
    for (uint32_t mask = 0; mask < 16; ++mask) {
        char** planes = nullptr;
        int32_t rowbytes = -1;
        ASSERT_EQ(RK_ExtractPlanes(nullptr, &world, mask, &planes, &rowbytes), 0);
        ASSERT_NE(planes, nullptr);
        ASSERT_EQ(rowbytes, ((3 + 8) * kCount[mask] + 3) & ~1) << mask;
        EXPECT_EQ(KIT_GetHandleSize(handleOf(planes)), static_cast<size_t>(rowbytes) * 2);
        for (int y = 0; y < 2; ++y) {
            const char* next = *planes + y * rowbytes;
            for (int x = 0; x < 3; ++x)
                for (int c = 0; c < 4; ++c) {
                    if ((mask >> c & 1) == 0) continue;
                    ASSERT_EQ(*next++, (y * 3 + x) * 10 + c + 1) << mask;
                }
        }
        KIT_FreeHandle(handleOf(planes));
    }
    EXPECT_TRUE(picture.guardsWhole());
}

TEST_F(PlanesTest, AllPlanesOfAWidthOf1AreRowsOf38) {
    Picture8 picture(1, 4);
    RK_LayerDef world = picture.record();
    char** planes = nullptr;
    int32_t rowbytes = 0;
    ASSERT_EQ(RK_ExtractPlanes(nullptr, &world, 15, &planes, &rowbytes), 0);
    EXPECT_EQ(rowbytes, 38);
    KIT_FreeHandle(handleOf(planes));
}

TEST_F(PlanesTest, NoPlanesAreRowsOf2) {
    Picture8 picture(9, 4);
    RK_LayerDef world = picture.record();
    char** planes = nullptr;
    int32_t rowbytes = 0;
    ASSERT_EQ(RK_ExtractPlanes(nullptr, &world, 0, &planes, &rowbytes), 0);
    EXPECT_EQ(rowbytes, 2);
    EXPECT_EQ(KIT_GetHandleSize(handleOf(planes)), 8u);
    // And nothing of them goes back.
    const Picture8 before = picture;
    EXPECT_EQ(RK_InsertPlanes(nullptr, planes, rowbytes, 0, &world), 0);
    EXPECT_TRUE(picture == before);
    KIT_FreeHandle(handleOf(planes));
}

TEST_F(PlanesTest, AWorldWithoutRowsGivesAnEmptyBuffer) {
    Picture8 picture(9, 1);
    RK_LayerDef world = picture.record();
    for (const int32_t height : {0, -3, INT32_MIN}) {
        world.height = height;
        char** planes = nullptr;
        int32_t rowbytes = 0;
        ASSERT_EQ(RK_ExtractPlanes(nullptr, &world, 3, &planes, &rowbytes), 0);
        ASSERT_NE(planes, nullptr);
        EXPECT_EQ(rowbytes, (17 * 2 + 3) & ~1);
        EXPECT_EQ(KIT_GetHandleSize(handleOf(planes)), 0u);
        EXPECT_EQ(RK_InsertPlanes(nullptr, planes, rowbytes, 3, &world), 0);
        KIT_FreeHandle(handleOf(planes));
    }
    world.height = 1;
    world.width = -5;
    char** planes = nullptr;
    int32_t rowbytes = 0;
    ASSERT_EQ(RK_ExtractPlanes(nullptr, &world, 15, &planes, &rowbytes), 0);
    EXPECT_EQ(rowbytes, 34);
    EXPECT_EQ(RK_InsertPlanes(nullptr, planes, rowbytes, 15, &world), 0);
    KIT_FreeHandle(handleOf(planes));
}

TEST_F(PlanesTest, BadArgumentsOfExtractAreToldAndStoreNothing) {
    Picture8 picture(3, 2);
    RK_LayerDef world = picture.record(), empty = world;
    empty.data = nullptr;
    char* const litter = nullptr;
    char** const kept = const_cast<char**>(&litter);
    char** planes = kept;
    int32_t rowbytes = 77;
    EXPECT_EQ(RK_ExtractPlanes(nullptr, nullptr, 1, &planes, &rowbytes), 3);
    EXPECT_TRUE(test::onlyBadParam(4));
    EXPECT_EQ(RK_ExtractPlanes(nullptr, &empty, 1, &planes, &rowbytes), 3);
    EXPECT_TRUE(test::onlyBadParam(4));
    for (const uint32_t mask : {16u, 17u, 0x80000001u, UINT32_MAX}) {
        EXPECT_EQ(RK_ExtractPlanes(nullptr, &world, mask, &planes, &rowbytes), 3);
        EXPECT_TRUE(test::onlyBadParam(4));
    }
    EXPECT_EQ(RK_ExtractPlanes(nullptr, &world, 1, nullptr, &rowbytes), 3);
    EXPECT_TRUE(test::onlyBadParam(4));
    EXPECT_EQ(RK_ExtractPlanes(nullptr, &world, 1, &planes, nullptr), 3);
    EXPECT_TRUE(test::onlyBadParam(4));
    EXPECT_EQ(planes, kept);
    EXPECT_EQ(rowbytes, 77);
}

TEST_F(PlanesTest, MemoryThatCannotBeHadIsFourWithTheResultsCleared) {
    Picture8 picture(3, 2);
    RK_LayerDef world = picture.record();
    char* litter = nullptr;
    char** planes = &litter;
    int32_t rowbytes = 77;
    RefHost::FailAllocation(1);
    EXPECT_EQ(RK_ExtractPlanes(nullptr, &world, 1, &planes, &rowbytes), 4);
    EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Memory, 0, "image plane buffer"));
    EXPECT_EQ(planes, nullptr);
    EXPECT_EQ(rowbytes, 0);
    // Rows that do not fit a row's width, and rows that do but are too many.
    const int32_t sizes[][2] = {{INT32_MAX, 2}, {INT32_MAX / 4, INT32_MAX}, {INT32_MAX / 4 - 8, INT32_MAX}};
    for (const auto& size : sizes) {
        world.width = size[0];
        world.height = size[1];
        planes = &litter;
        rowbytes = 77;
        EXPECT_EQ(RK_ExtractPlanes(nullptr, &world, 15, &planes, &rowbytes), 4);
        RefHost::TakeReports();
        EXPECT_EQ(planes, nullptr);
        EXPECT_EQ(rowbytes, 0);
    }
}

TEST_F(PlanesTest, ADeepWorldIsReadAsPixelsOfFourBytes) {
    test::Picture<RK_Pixel16> picture(4, 1);
    picture.at(0, 0) = {0x0102, 0x0304, 0x0506, 0x0708};
    RK_LayerDef world = picture.record();
    char** planes = nullptr;
    int32_t rowbytes = 0;
    ASSERT_EQ(RK_ExtractPlanes(nullptr, &world, RK_kPlaneAlpha | RK_kPlaneGreen, &planes, &rowbytes), 0);
    const uint8_t* bytes = reinterpret_cast<const uint8_t*>(picture.row(0));
    for (int x = 0; x < 4; ++x) {
        EXPECT_EQ(static_cast<uint8_t>((*planes)[2 * x]), bytes[4 * x]);
        EXPECT_EQ(static_cast<uint8_t>((*planes)[2 * x + 1]), bytes[4 * x + 2]);
    }
    KIT_FreeHandle(handleOf(planes));
}

// ---- RK_InsertPlanes ------------------------------------------------------------------------------------

TEST_F(PlanesTest, WhatIsExtractedGoesBackAndTheOtherChannelsStay) {
    for (uint32_t mask = 0; mask < 16; ++mask) {
        Picture8 picture(13, 5), target(13, 5);
        picture.fillRandom(mask);
        target.fillRandom(mask + 100);
        const Picture8 before = target;
        RK_LayerDef world = picture.record(), to = target.record();
        char** planes = nullptr;
        int32_t rowbytes = 0;
        ASSERT_EQ(RK_ExtractPlanes(nullptr, &world, mask, &planes, &rowbytes), 0);
        ASSERT_EQ(RK_InsertPlanes(nullptr, planes, rowbytes, mask, &to), 0);
        KIT_FreeHandle(handleOf(planes));
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < 13; ++x)
                for (int c = 0; c < 4; ++c) {
                    const Picture8& from = (mask >> c & 1) != 0 ? picture : before;
                    ASSERT_EQ((&target.at(x, y).alpha)[c], (&from.at(x, y).alpha)[c]) << mask;
                }
        EXPECT_TRUE(target.guardsWhole());
    }
}

TEST_F(PlanesTest, RowsOfTheBufferLieAsFarApartAsTold) {
    // Two values a row, the rows from the last up.
    char bytes[] = {5, 6, 0, 3, 4, 0, 1, 2, 0};
    char* last = bytes + 6;
    Picture8 picture(2, 3);
    RK_LayerDef world = picture.record();
    ASSERT_EQ(RK_InsertPlanes(nullptr, &last, -3, RK_kPlaneGreen, &world), 0);
    for (int i = 0; i < 6; ++i) EXPECT_EQ(picture.at(i % 2, i / 2).green, i + 1);
}

TEST_F(PlanesTest, BadArgumentsOfInsertAreToldAndChangeNothing) {
    Picture8 picture(3, 2);
    RK_LayerDef world = picture.record(), empty = world;
    empty.data = nullptr;
    char bytes[64] = {1};
    char *buffer = bytes, *none = nullptr;
    const Picture8 before = picture;
    EXPECT_EQ(RK_InsertPlanes(nullptr, nullptr, 8, 1, &world), 3);
    EXPECT_TRUE(test::onlyBadParam(4));
    EXPECT_EQ(RK_InsertPlanes(nullptr, &none, 8, 1, &world), 3);
    EXPECT_TRUE(test::onlyBadParam(4));
    EXPECT_EQ(RK_InsertPlanes(nullptr, &buffer, 8, 1, nullptr), 3);
    EXPECT_TRUE(test::onlyBadParam(4));
    EXPECT_EQ(RK_InsertPlanes(nullptr, &buffer, 8, 1, &empty), 3);
    EXPECT_TRUE(test::onlyBadParam(4));
    for (const uint32_t mask : {16u, UINT32_MAX}) {
        EXPECT_EQ(RK_InsertPlanes(nullptr, &buffer, 8, mask, &world), 3);
        EXPECT_TRUE(test::onlyBadParam(4));
    }
    EXPECT_TRUE(picture == before);
}

// ---- RK_ChannelCopy -------------------------------------------------------------------------------------

class ChannelCopyTest : public test::Tidy {};

// A chunk of bytes that count up from 1.
struct Chunk {
    RK_Chunk chunk;
    Chunk(int width, int height, int channels, RK_Long type, bool counting) {
        EXPECT_EQ(RK_NewChunk(width, height, channels, type, &chunk), 0);
        for (int i = 0; counting && i < chunk.row_bytes * height; ++i)
            bytes()[i] = static_cast<uint8_t>(i + 1);
    }
    ~Chunk() { RK_DisposeChunk(&chunk); }
    Chunk(const Chunk&) = delete;
    uint8_t* bytes() { return static_cast<uint8_t*>(chunk.locked_data); }
};

TEST_F(ChannelCopyTest, AChunkIsCopiedWhole) {
    Chunk src(3, 2, 2, RK_kChunkShort, true), dst(3, 2, 2, RK_kChunkShort, false);
    ASSERT_EQ(RK_ChannelCopy(nullptr, &src.chunk, &dst.chunk, nullptr, nullptr), 0);
    EXPECT_EQ(std::memcmp(src.bytes(), dst.bytes(), 24), 0);
}

TEST_F(ChannelCopyTest, AValueHasTheBytesOfTheSmallerPixel) {
    Chunk two(2, 2, 1, RK_kChunkShort, true), three(2, 2, 1, RK_kChunkRGB, false);
    ASSERT_EQ(RK_ChannelCopy(nullptr, &two.chunk, &three.chunk, nullptr, nullptr), 0);
    const uint8_t wider[] = {1, 2, 0, 3, 4, 0, 5, 6, 0, 7, 8, 0};
    EXPECT_EQ(std::memcmp(three.bytes(), wider, 12), 0);

    Chunk five(2, 1, 5, RK_kChunkChar, true), four(2, 1, 1, RK_kChunkFloat, false);
    ASSERT_EQ(RK_ChannelCopy(nullptr, &five.chunk, &four.chunk, nullptr, nullptr), 0);
    const uint8_t narrower[] = {1, 2, 3, 4, 6, 7, 8, 9};
    EXPECT_EQ(std::memcmp(four.bytes(), narrower, 8), 0);
}

TEST_F(ChannelCopyTest, SizesThatDifferTakeTheNearestValues) {
    Chunk src(2, 2, 1, RK_kChunkChar, true), dst(4, 3, 1, RK_kChunkChar, false);
    ASSERT_EQ(RK_ChannelCopy(nullptr, &src.chunk, &dst.chunk, nullptr, nullptr), 0);
    // Three rows of two: the first is written once, the second twice.
    const uint8_t larger[] = {1, 1, 2, 2, 3, 3, 4, 4, 3, 3, 4, 4};
    EXPECT_EQ(std::memcmp(dst.bytes(), larger, 12), 0);
    Chunk back(2, 1, 1, RK_kChunkChar, false);
    ASSERT_EQ(RK_ChannelCopy(nullptr, &dst.chunk, &back.chunk, nullptr, nullptr), 0);
    EXPECT_EQ(back.bytes()[0], 3);
    EXPECT_EQ(back.bytes()[1], 4);
}

TEST_F(ChannelCopyTest, RectanglesAreCutToTheirChunks) {
    Chunk src(3, 3, 1, RK_kChunkChar, true), dst(3, 3, 1, RK_kChunkChar, false);
    const GEO_Rect from = {1, 1, 4, 4}, to = {0, 0, 3, 3};
    ASSERT_EQ(RK_ChannelCopy(nullptr, &src.chunk, &dst.chunk, &from, &to), 0);
    const uint8_t moved[] = {5, 6, 0, 8, 9, 0, 0, 0, 0};
    EXPECT_EQ(std::memcmp(dst.bytes(), moved, 9), 0);
    // Nothing in, or nothing of it left, is no failure.
    const GEO_Rect outside = {3, 0, 6, 3}, empty = {1, 1, 1, 2};
    for (const GEO_Rect& rect : {outside, empty}) {
        ASSERT_EQ(RK_ChannelCopy(nullptr, &src.chunk, &dst.chunk, &rect, nullptr), 0);
        ASSERT_EQ(RK_ChannelCopy(nullptr, &src.chunk, &dst.chunk, nullptr, &rect), 0);
    }
    EXPECT_EQ(std::memcmp(dst.bytes(), moved, 9), 0);
}

TEST_F(ChannelCopyTest, AChunkCanBeCopiedOntoItself) {
    Chunk chunk(4, 2, 1, RK_kChunkChar, true);
    const GEO_Rect from = {0, 0, 2, 2}, to = {0, 0, 2, 4};
    ASSERT_EQ(RK_ChannelCopy(nullptr, &chunk.chunk, &chunk.chunk, &from, &from), 0);
    for (int i = 0; i < 8; ++i) EXPECT_EQ(chunk.bytes()[i], i + 1);
    ASSERT_EQ(RK_ChannelCopy(nullptr, &chunk.chunk, &chunk.chunk, &from, &to), 0);
    EXPECT_EQ(chunk.bytes()[0], 1);
}

RK_Long mustNotBeAsked(void*) {
    ADD_FAILURE();
    return 1;
}

TEST_F(ChannelCopyTest, TheProgressIsNotRead) {
    Chunk src(1, 200, 1, RK_kChunkChar, true), dst(2, 200, 1, RK_kChunkChar, false);
    RK_ProgressInfo progress = {nullptr, mustNotBeAsked, nullptr};
    EXPECT_EQ(RK_ChannelCopy(&progress, &src.chunk, &dst.chunk, nullptr, nullptr), 0);
}

TEST_F(ChannelCopyTest, ChunksThatAreNotThereOrNotLockedAreToldTwice) {
    Chunk good(3, 2, 1, RK_kChunkChar, true), unlocked(3, 2, 1, RK_kChunkChar, true);
    ASSERT_EQ(RK_UnlockChunk(&unlocked.chunk), 0);
    const std::pair<const RK_Chunk*, RK_Chunk*> pairs[] = {{nullptr, &good.chunk},
                                                           {&good.chunk, nullptr},
                                                           {nullptr, nullptr},
                                                           {&unlocked.chunk, &good.chunk},
                                                           {&good.chunk, &unlocked.chunk}};
    for (const auto& [src, dst] : pairs) {
        EXPECT_EQ(RK_ChannelCopy(nullptr, src, dst, nullptr, nullptr), 3);
        const auto reports = RefHost::TakeReports();
        ASSERT_EQ(reports.size(), 2u);
        for (const auto& report : reports) {
            EXPECT_EQ(report.kind, RefHost::ReportKind::Error);
            EXPECT_EQ(report.location, RK_kLocation | 72u);
            EXPECT_EQ(report.text, "bad parameter passed to effect callback");
        }
    }
}

TEST_F(ChannelCopyTest, ChunksOfNoChannelsHoldNothingToCopy) {
    Chunk src(3, 2, 1, RK_kChunkChar, true), dst(3, 2, 1, RK_kChunkChar, false);
    for (const int32_t channels : {0, -1, INT32_MIN}) {
        src.chunk.channels = channels;
        EXPECT_EQ(RK_ChannelCopy(nullptr, &src.chunk, &dst.chunk, nullptr, nullptr), 0);
        EXPECT_EQ(dst.bytes()[0], 0);
    }
}

// ---- Interleaved rows -----------------------------------------------------------------------------------

template <class T>
class InterleaveTest : public testing::Test {};
using Channels = testing::Types<uint8_t, uint16_t, float>;
TYPED_TEST_SUITE(InterleaveTest, Channels);
using Vector = GEO_Vector2T<RK_Long>;

TYPED_TEST(InterleaveTest, AChannelComesOutAndGoesBack) {
    using T = TypeParam;
    constexpr RK_Long kSize = sizeof(T);
    // Pixels of 6 by 3, rows of 7; a plane of 5 by 4.
    constexpr int kRow = 28, kPlane = 5;
    for (RK_Long channel = 0; channel < 4; ++channel) {
        T pixels[kRow * 3], plane[kPlane * 4] = {}, back[kRow * 3] = {};
        for (int i = 0; i < kRow * 3; ++i) pixels[i] = static_cast<T>(i + 1);
        // The 3 by 2 pixels from (2, 1) on, to (1, 2) of the plane.
        RK_Deinterleave1<T>(pixels, kRow * kSize, channel, kPlane * kSize, Vector{2, 1}, Vector{1, 2},
                            Vector{3, 2}, plane);
        for (int i = 0; i < kPlane * 4; ++i) {
            const int x = i % kPlane - 1, y = i / kPlane - 2;
            const bool inside = x >= 0 && x < 3 && y >= 0;
            const auto of = static_cast<T>(inside ? pixels[(y + 1) * kRow + (x + 2) * 4 + channel] : T{0});
            ASSERT_EQ(plane[i], of) << i;
        }
        RK_Interleave1to4<T>(plane, kPlane * kSize, channel, Vector{1, 2}, Vector{4 * kSize, kRow * kSize},
                             Vector{3, 2}, back);
        for (int i = 0; i < kRow * 3; ++i) {
            const int x = i % kRow / 4, y = i / kRow;
            const bool inside = x < 3 && y < 2 && i % 4 == channel;
            ASSERT_EQ(back[i], inside ? pixels[(y + 1) * kRow + (x + 2) * 4 + channel] : T{0}) << i;
        }
    }
}

TYPED_TEST(InterleaveTest, AnAreaWithoutWidthOrHeightIsNothing) {
    using T = TypeParam;
    T from[16] = {}, to[16] = {};
    for (T& v : from) v = T{1};
    for (const Vector& size : {Vector{0, 2}, Vector{2, 0}, Vector{-1, 2}, Vector{2, -1}}) {
        RK_Deinterleave1<T>(from, 16, 0, 16, Vector{0, 0}, Vector{0, 0}, size, to);
        RK_Interleave1to4<T>(from, 16, 0, Vector{0, 0}, Vector{4, 16}, size, to);
    }
    for (const T& v : to) ASSERT_EQ(v, T{0});
}

TYPED_TEST(InterleaveTest, RowsMayRunUpwards) {
    using T = TypeParam;
    constexpr RK_Long kSize = sizeof(T);
    T pixels[16], plane[4] = {};
    for (int i = 0; i < 16; ++i) pixels[i] = static_cast<T>(i);
    RK_Deinterleave1<T>(pixels + 8, -8 * kSize, 3, -2 * kSize, Vector{0, 0}, Vector{0, 0}, Vector{2, 2},
                        plane + 2);
    EXPECT_EQ(plane[2], T{11});
    EXPECT_EQ(plane[3], T{15});
    EXPECT_EQ(plane[0], T{3});
    EXPECT_EQ(plane[1], T{7});
}

}  // namespace
