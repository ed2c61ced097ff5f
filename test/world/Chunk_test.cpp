// Channel chunks: sizes of values, making, locking, disposal, and what is refused.
#include "RK/indep/world/RK_Chunk.h"

#include <cstring>
#include <limits>

#include "test/Pixels.h"
#include "test/Reports.h"

namespace {

testing::AssertionResult onlyInvalid() {
    return test::onlyReport(RefHost::ReportKind::Error, RK_kLocation | 0x4A, "invalid parameter");
}
testing::AssertionResult onlyNoMemory() {
    return test::onlyReport(RefHost::ReportKind::Memory, 0, "out of memory for channel chunk");
}

class ChunkTest : public test::Tidy {
  protected:
    void SetUp() override {
        Tidy::SetUp();
        chunks_ = RKp_G_ChunkCount;
    }
    void TearDown() override {
        EXPECT_EQ(chunksMade(), 0);
        Tidy::TearDown();
    }
    int32_t chunksMade() const { return RKp_G_ChunkCount - chunks_; }

  private:
    int32_t chunks_ = 0;
};

RK_Chunk littered() {
    RK_Chunk chunk;
    std::memset(static_cast<void*>(&chunk), 0xA5, sizeof chunk);
    return chunk;
}
bool isZero(const RK_Chunk& chunk) {
    RK_Chunk none;
    std::memset(static_cast<void*>(&none), 0, sizeof none);
    return test::sameBytes(chunk, none);
}

struct Kind {
    RK_Long type;
    int size;
};
const Kind kKinds[] = {
    {RK_kChunkFloat, 4},
    {RK_kChunkDouble, 8},
    {RK_kChunkLong, 4},
    {RK_kChunkShort, 2},
    {RK_kChunkFixed, 4},
    {RK_kChunkChar, 1},
    {RK_kChunkUnsignedByte, 1},
    {RK_kChunkUnsignedShort, 2},
    {RK_kChunkRGB, 3},
    {0x55465834, 4},
    {0x464C5435, 1},
    {0, 1},
    {-1, 1},
    {INT32_MIN, 1},
};

TEST_F(ChunkTest, TheCodesAreFourCharactersFromTheTopByteDown) {
    EXPECT_EQ(RK_kChunkFloat, 0x464C5434);
    EXPECT_EQ(RK_kChunkRGB, 0x52474220);
    EXPECT_EQ(RK_kChunkUnsignedFixed, 0x55465834);
}

TEST_F(ChunkTest, EveryCodeHasItsSizeAndAnUnknownOneIsAByte) {
    for (const Kind& kind : kKinds) {
        uint16_t size = 999;
        EXPECT_EQ(RK_ChunkDataSize(kind.type, &size), 0);
        EXPECT_EQ(size, kind.size) << kind.type;
    }
    EXPECT_EQ(RK_ChunkDataSize(RK_kChunkFloat, nullptr), 516);
    EXPECT_TRUE(onlyInvalid());
}

TEST_F(ChunkTest, ANewChunkIsLockedAndZero) {
    for (const Kind& kind : kKinds)
        for (const int channels : {1, 3, 4}) {
            RK_Chunk chunk = littered();
            ASSERT_EQ(RK_NewChunk(7, 5, channels, kind.type, &chunk), 0);
            EXPECT_EQ(chunksMade(), 1);
            for (const uint32_t word : chunk.reserved) EXPECT_EQ(word, 0u);
            EXPECT_EQ(chunk.width, 7);
            EXPECT_EQ(chunk.height, 5);
            EXPECT_EQ(chunk.channels, channels);
            EXPECT_EQ(chunk.row_bytes, 7 * channels * kind.size);
            EXPECT_EQ(chunk.data_type, static_cast<int32_t>(kind.type));
            ASSERT_NE(chunk.handle, nullptr);
            ASSERT_EQ(KIT_GetHandleSize(chunk.handle), static_cast<size_t>(chunk.row_bytes) * 5);
            ASSERT_EQ(chunk.locked_data, *chunk.handle);
            for (int i = 0; i < chunk.row_bytes * 5; ++i)
                ASSERT_EQ(static_cast<const char*>(chunk.locked_data)[i], 0);
            EXPECT_EQ(RK_DisposeChunk(&chunk), 0);
            EXPECT_TRUE(isZero(chunk));
            EXPECT_EQ(chunksMade(), 0);
        }
}

TEST_F(ChunkTest, TwoPixelsOfOneRGBValueAreSixBytesWide) {
    RK_Chunk chunk;
    ASSERT_EQ(RK_NewChunk(2, 1, 1, RK_kChunkRGB, &chunk), 0);
    EXPECT_EQ(chunk.row_bytes, 6);
    EXPECT_EQ(RK_DisposeChunk(&chunk), 0);
}

TEST_F(ChunkTest, SidesAndChannelsBelowOneAreRefused) {
    const RK_Chunk before = littered();
    RK_Chunk chunk = before;
    const RK_Long least = std::numeric_limits<RK_Long>::min();
    const RK_Long refused[][3] = {{0, 1, 1},  {1, 0, 1},     {1, 1, 0},     {-1, 1, 1},   {1, -1, 1},
                                  {1, 1, -1}, {least, 1, 1}, {1, least, 1}, {1, 1, least}};
    for (const auto& r : refused) {
        EXPECT_EQ(RK_NewChunk(r[0], r[1], r[2], RK_kChunkChar, &chunk), 516);
        EXPECT_TRUE(onlyInvalid());
    }
    EXPECT_TRUE(test::sameBytes(chunk, before));
    EXPECT_EQ(RK_NewChunk(1, 1, 1, RK_kChunkChar, nullptr), 516);
    EXPECT_TRUE(onlyInvalid());
}

TEST_F(ChunkTest, SizesThatDoNotFitMakeNoChunk) {
    const RK_Long most = std::numeric_limits<RK_Long>::max();
    const RK_Long sizes[][4] = {
        {INT32_MAX, 1, 2, RK_kChunkChar},
        {0x40000000, 1, 1, RK_kChunkShort},
        {0x10000000, 1, 1, RK_kChunkDouble},
        {65536, 1, 32768, RK_kChunkChar},
        {65536, 1, 65536, RK_kChunkChar},
        {1, 1, INT32_MAX, RK_kChunkShort},
        {INT32_MAX, 1, INT32_MAX, RK_kChunkDouble},
        {most, 1, 1, RK_kChunkLong},
        {1, 1, most, RK_kChunkLong},
        {most, most, most, RK_kChunkDouble},
    };
    for (const auto& s : sizes) {
        RK_Chunk chunk = littered();
        EXPECT_EQ(RK_NewChunk(s[0], s[1], s[2], s[3], &chunk), 4) << s[0] << " by " << s[2];
        EXPECT_EQ(chunk.handle, nullptr);
        EXPECT_EQ(chunk.locked_data, nullptr);
        EXPECT_EQ(chunk.row_bytes, 0);
        EXPECT_EQ(chunksMade(), 0);
        EXPECT_TRUE(test::noReports());
        EXPECT_EQ(RK_DisposeChunk(&chunk), 0);
    }
}

// One byte short of the limit on a row; the block itself is too large to be had.
TEST_F(ChunkTest, RowsThatFitMayStillBeTooManyToBeHad) {
    for (const RK_Long height : {RK_Long{INT32_MAX}, std::numeric_limits<RK_Long>::max()}) {
        RK_Chunk chunk = littered();
        EXPECT_EQ(RK_NewChunk(INT32_MAX, height, 1, RK_kChunkChar, &chunk), 4);
        RefHost::TakeReports();
        EXPECT_EQ(chunk.row_bytes, INT32_MAX);
        EXPECT_EQ(chunk.handle, nullptr);
        EXPECT_EQ(chunk.locked_data, nullptr);
        EXPECT_EQ(chunksMade(), 0);
    }
}

TEST_F(ChunkTest, AFailedAllocationGives4) {
    RK_Chunk chunk = littered();
    RefHost::FailAllocation(1);
    EXPECT_EQ(RK_NewChunk(7, 5, 3, RK_kChunkFloat, &chunk), 4);
    EXPECT_TRUE(onlyNoMemory());
    EXPECT_EQ(chunk.row_bytes, 84);
    EXPECT_EQ(chunk.handle, nullptr);
    EXPECT_EQ(chunk.locked_data, nullptr);
    EXPECT_EQ(RK_LockChunk(&chunk), 516);
    EXPECT_TRUE(onlyInvalid());
    EXPECT_EQ(RK_DisposeChunk(&chunk), 0);
    EXPECT_EQ(chunksMade(), 0);
}

TEST_F(ChunkTest, UnlockingASecondTimeIsRefused) {
    RK_Chunk chunk;
    ASSERT_EQ(RK_NewChunk(2, 2, 1, RK_kChunkFloat, &chunk), 0);
    EXPECT_EQ(RK_UnlockChunk(&chunk), 0);
    EXPECT_EQ(chunk.locked_data, nullptr);
    EXPECT_EQ(RK_UnlockChunk(&chunk), 516);
    EXPECT_TRUE(onlyInvalid());
    EXPECT_EQ(RK_LockChunk(&chunk), 0);
    EXPECT_EQ(chunk.locked_data, *chunk.handle);
    EXPECT_EQ(RK_LockChunk(&chunk), 0);
    // A locked chunk can be disposed, and an emptied one again.
    EXPECT_EQ(RK_DisposeChunk(&chunk), 0);
    EXPECT_EQ(chunksMade(), 0);
    EXPECT_EQ(RK_DisposeChunk(&chunk), 0);
    EXPECT_EQ(chunksMade(), 0);
}

TEST_F(ChunkTest, LockingTakesTheHandlesPresentPlace) {
    RK_Chunk chunk;
    ASSERT_EQ(RK_NewChunk(2, 2, 1, RK_kChunkFloat, &chunk), 0);
    ASSERT_EQ(KIT_ResizeHandle(chunk.handle, 4096, "longer"), 0);
    EXPECT_EQ(RK_LockChunk(&chunk), 0);
    EXPECT_EQ(chunk.locked_data, *chunk.handle);
    EXPECT_EQ(RK_DisposeChunk(&chunk), 0);
}

TEST_F(ChunkTest, NullIsRefusedEverywhere) {
    for (const auto call : {&RK_LockChunk, &RK_UnlockChunk, &RK_DisposeChunk}) {
        EXPECT_EQ(call(nullptr), 516);
        EXPECT_TRUE(onlyInvalid());
    }
}

}  // namespace
