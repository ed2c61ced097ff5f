#include "RK/indep/world/RK_Chunk.h"

#include <cstring>
#include <limits>

#include "RK/indep/frame/RKp_Globals.h"
#include "RK/indep/frame/RKp_Report.h"

namespace {

RK_Long refuse() {
    KITp_ReportErrString(RK_kLocation | RKp_kSiteChunk, 8, RKp_Text(RK_kMsg_InvalidParameter));
    return RK_kBadParamReported;
}

uint16_t valueSize(RK_Long data_type) {
    // By its 32 bits: a code handed over as a signed number counts too.
    switch (static_cast<int32_t>(data_type)) {
        case RK_kChunkDouble: return 8;
        case RK_kChunkFloat:
        case RK_kChunkLong:
        case RK_kChunkFixed:
        case RK_kChunkUnsignedFixed: return 4;
        case RK_kChunkRGB: return 3;
        case RK_kChunkShort:
        case RK_kChunkUnsignedShort: return 2;
        default: return 1;
    }
}

constexpr RK_Long kMost = std::numeric_limits<int32_t>::max();

// size * width * channels; 0 when that does not fit. Each is above 0.
int32_t rowBytes(int64_t size, RK_Long width, RK_Long channels) {
    if (width > kMost / size || channels > kMost / (size * width)) return 0;
    return static_cast<int32_t>(size * width * channels);
}

// The handle of a new chunk's data, or null.
KIT_Handle newData(int32_t row_bytes, RK_Long height) {
    constexpr size_t kMostBytes = std::numeric_limits<size_t>::max() / 2;
    const auto row = static_cast<size_t>(row_bytes);
    if (row == 0 || height > kMost || static_cast<size_t>(height) > kMostBytes / row) return nullptr;
    return KIT_AllocateHandleClear(row * static_cast<size_t>(height), RKp_Text(RK_kMsg_ChannelChunkMemory));
}

}  // namespace

RK_Long RK_NewChunk(RK_Long width, RK_Long height, RK_Long channels, RK_Long data_type, RK_Chunk* chunk) {
    if (width < 1 || height < 1 || channels < 1 || chunk == nullptr) return refuse();
    std::memset(chunk, 0, sizeof *chunk);
    chunk->width = static_cast<int32_t>(width);
    chunk->height = static_cast<int32_t>(height);
    chunk->channels = static_cast<int32_t>(channels);
    chunk->data_type = static_cast<int32_t>(data_type);
    chunk->row_bytes = rowBytes(valueSize(data_type), width, channels);
    chunk->handle = newData(chunk->row_bytes, height);
    if (chunk->handle == nullptr) return RK_kOutOfMemory;
    const RK_Long error = RK_LockChunk(chunk);
    if (error != RK_kOK) {
        KIT_FreeHandle(chunk->handle);
        chunk->handle = nullptr;
        return error;
    }
    ++RKp_G_ChunkCount;
    return RK_kOK;
}

RK_Long RK_LockChunk(RK_Chunk* chunk) {
    if (chunk == nullptr || chunk->handle == nullptr) return refuse();
    chunk->locked_data = *chunk->handle;
    return RK_kOK;
}

RK_Long RK_UnlockChunk(RK_Chunk* chunk) {
    if (chunk == nullptr || chunk->locked_data == nullptr) return refuse();
    chunk->locked_data = nullptr;
    return RK_kOK;
}

RK_Long RK_DisposeChunk(RK_Chunk* chunk) {
    if (chunk == nullptr) return refuse();
    if (chunk->handle != nullptr) {
        KIT_FreeHandle(chunk->handle);
        --RKp_G_ChunkCount;
    }
    std::memset(chunk, 0, sizeof *chunk);
    return RK_kOK;
}

RK_Long RK_ChunkDataSize(RK_Long data_type, uint16_t* size) {
    if (size == nullptr) return refuse();
    *size = valueSize(data_type);
    return RK_kOK;
}
