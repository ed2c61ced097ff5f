// Channel chunks: per-channel buffers of any kind of value that plug-ins and host share.
#ifndef RK_CHUNK_H
#define RK_CHUNK_H

#include "RK/host/KIT.h"
#include "RK/indep/frame/RK.h"

struct RK_Chunk {
    uint32_t reserved[8];  // zero
    int32_t width, height;
    int32_t channels;   // values per pixel
    int32_t row_bytes;  // size of a value * width * channels
    int32_t data_type;  // four characters, the first in the top byte
    KIT_Handle handle;
    void* locked_data;  // null while unlocked
};
RK_ASSERT_OFFSET(RK_Chunk, width, 32, 32);
RK_ASSERT_OFFSET(RK_Chunk, height, 36, 36);
RK_ASSERT_OFFSET(RK_Chunk, channels, 40, 40);
RK_ASSERT_OFFSET(RK_Chunk, row_bytes, 44, 44);
RK_ASSERT_OFFSET(RK_Chunk, data_type, 48, 48);
RK_ASSERT_OFFSET(RK_Chunk, handle, 52, 56);
RK_ASSERT_OFFSET(RK_Chunk, locked_data, 56, 64);
static_assert(sizeof(RK_Chunk) == (sizeof(void*) == 4 ? 60 : 72), "RK_Chunk has changed its size");

constexpr RK_Long RK_ChunkType(const char (&code)[5]) {
    int32_t type = 0;
    for (int i = 0; i < 4; ++i) type = type * 256 + code[i];
    return type;
}
// Any other code counts as one byte.
constexpr RK_Long RK_kChunkFloat = RK_ChunkType("FLT4");
constexpr RK_Long RK_kChunkDouble = RK_ChunkType("DBL8");
constexpr RK_Long RK_kChunkLong = RK_ChunkType("LON4");
constexpr RK_Long RK_kChunkShort = RK_ChunkType("SHT2");
constexpr RK_Long RK_kChunkFixed = RK_ChunkType("FIX4");
constexpr RK_Long RK_kChunkChar = RK_ChunkType("CHR1");
constexpr RK_Long RK_kChunkUnsignedByte = RK_ChunkType("UBT1");
constexpr RK_Long RK_kChunkUnsignedShort = RK_ChunkType("UST2");
constexpr RK_Long RK_kChunkUnsignedFixed = RK_ChunkType("UFX4");
constexpr RK_Long RK_kChunkRGB = RK_ChunkType("RGB ");

// Failures of all: 516, reported, for null arguments and for what each says.

// Fills the record, whatever it held, with a locked chunk of zeros. 516 for a width, height or count of
// channels below 1, the record untouched. 4 when its bytes cannot be had; the record has neither handle nor
// data then.
RK_API RK_Long RK_NewChunk(RK_Long width, RK_Long height, RK_Long channels, RK_Long data_type,
                           RK_Chunk* chunk);
// Sets locked_data; 516 for a chunk without a handle.
RK_API RK_Long RK_LockChunk(RK_Chunk* chunk);
// Clears locked_data; 516 for a chunk that is not locked.
RK_API RK_Long RK_UnlockChunk(RK_Chunk* chunk);
// Frees the handle, where there is one, and clears the record.
RK_API RK_Long RK_DisposeChunk(RK_Chunk* chunk);
// Stores the bytes of a value.
RK_API RK_Long RK_ChunkDataSize(RK_Long data_type, uint16_t* size);

#endif
