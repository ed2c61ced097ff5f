#include "RK/indep/passes/RK_Planes.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "RK/host/KIT.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/passes/RK_InterleaveT.h"
#include "RK/indep/passes/RKp_CopyArea.h"
#include "RK/indep/world/RK_Chunk.h"

RK_INTERLEAVE_OF(, uint8_t)
RK_INTERLEAVE_OF(, uint16_t)
RK_INTERLEAVE_OF(, float)

namespace {

// ---- Planes of 8-bit worlds -----------------------------------------------------------------------------

// The bytes of a pixel that a mask takes.
struct Planes {
    explicit Planes(uint32_t mask) {
        for (int32_t c = 0; c < 4; ++c)
            if ((mask >> c & 1u) != 0) byte[count++] = c;
    }
    int32_t count = 0;
    int32_t byte[4] = {};
};

// One row; `planes` is a number at compile time, so that the inner loop is none.
template <int32_t planes>
void extractRow(const uint8_t* pixels, int32_t width, const Planes& p, uint8_t* out) {
    for (int32_t x = 0; x < width; ++x, pixels += 4)
        for (int32_t k = 0; k < planes; ++k) *out++ = pixels[p.byte[k]];
}
template <int32_t planes>
void insertRow(const uint8_t* in, int32_t width, const Planes& p, uint8_t* pixels) {
    for (int32_t x = 0; x < width; ++x, pixels += 4)
        for (int32_t k = 0; k < planes; ++k) pixels[p.byte[k]] = *in++;
}

void extractRow(const uint8_t* pixels, int32_t width, const Planes& p, uint8_t* out) {
    switch (p.count) {
        case 1: return extractRow<1>(pixels, width, p, out);
        case 2: return extractRow<2>(pixels, width, p, out);
        case 3: return extractRow<3>(pixels, width, p, out);
        case 4: std::memcpy(out, pixels, static_cast<size_t>(width) * 4); return;
        default: return;
    }
}
void insertRow(const uint8_t* in, int32_t width, const Planes& p, uint8_t* pixels) {
    switch (p.count) {
        case 1: return insertRow<1>(in, width, p, pixels);
        case 2: return insertRow<2>(in, width, p, pixels);
        case 3: return insertRow<3>(in, width, p, pixels);
        case 4: std::memcpy(pixels, in, static_cast<size_t>(width) * 4); return;
        default: return;
    }
}

bool isBad(const RK_LayerDef* world, uint32_t mask) {
    return world == nullptr || world->data == nullptr || mask > 15;
}

// ---- Chunks ---------------------------------------------------------------------------------------------

// As the copies of worlds see a chunk.
RK_LayerDef recordOf(const RK_Chunk& chunk) {
    RK_LayerDef record = {};
    record.data = chunk.locked_data;
    record.rowbytes = chunk.row_bytes;
    record.width = chunk.width;
    record.height = chunk.height;
    return record;
}

RK_Long pixelBytes(const RK_Chunk& chunk, int64_t* bytes) {
    uint16_t size = 0;
    const RK_Long error = RK_ChunkDataSize(chunk.data_type, &size);
    *bytes = int64_t{size} * chunk.channels;
    return error;
}

// A rectangle of a chunk, and how far its pixels and rows lie apart.
struct ChunkArea {
    RK_LayerDef record;
    GEO_LRect rect;
    int64_t pixel;

    char* at(int32_t column, int32_t row) const {
        return RKp_CopyRowOut(record, rect.top + row) +
               static_cast<ptrdiff_t>((rect.left + int64_t{column}) * pixel);
    }
    int32_t width() const { return rect.right - rect.left; }
    int32_t height() const { return rect.bottom - rect.top; }
};

// `size` is the bytes of a value where it is known at compile time, else 0.
template <size_t size>
void copyScaled(const ChunkArea& src, const ChunkArea& dst) {
    const auto bytes = size != 0 ? size : static_cast<size_t>(std::min(src.pixel, dst.pixel));
    RKp_Replicate(src.height(), dst.height(), [&](int32_t row, int32_t first, int32_t rows) {
        for (int32_t y = 0; y < rows; ++y) {
            const char* const from = src.at(0, row);
            char* out = dst.at(0, first + y);
            RKp_Replicate(src.width(), dst.width(), [&](int32_t column, int32_t, int32_t columns) {
                const char* const value = from + static_cast<ptrdiff_t>(column * src.pixel);
                // A chunk may be copied within itself.
                for (int32_t x = 0; x < columns; ++x, out += dst.pixel) std::memmove(out, value, bytes);
            });
        }
    });
}

void copyScaled(const ChunkArea& src, const ChunkArea& dst) {
    switch (std::min(src.pixel, dst.pixel)) {
        case 1: return copyScaled<1>(src, dst);
        case 2: return copyScaled<2>(src, dst);
        case 3: return copyScaled<3>(src, dst);
        case 4: return copyScaled<4>(src, dst);
        case 8: return copyScaled<8>(src, dst);
        case 16: return copyScaled<16>(src, dst);
        default: return copyScaled<0>(src, dst);
    }
}

}  // namespace

RK_Long RK_ExtractPlanes(RK_EffectRef, RK_LayerDef* world, uint32_t mask, char*** result_handle,
                         int32_t* result_rowbytes) {
    if (isBad(world, mask) || result_handle == nullptr || result_rowbytes == nullptr)
        return RKp_ReportBadParam(RKp_kSitePlanes);
    *result_handle = nullptr;
    *result_rowbytes = 0;
    const Planes planes(mask);
    const int32_t width = std::max(world->width, 0), height = std::max(world->height, 0);
    // Eight pixels more than the row, made even.
    const int64_t rowbytes = ((int64_t{width} + 8) * planes.count + 3) & ~int64_t{1};
    // Both factors are below 2^34.
    if (rowbytes > std::numeric_limits<int32_t>::max() ||
        static_cast<uint64_t>(rowbytes * height) > std::numeric_limits<size_t>::max() / 2)
        return RK_kOutOfMemory;
    KIT_Handle handle =
        KIT_AllocateHandle(static_cast<size_t>(rowbytes * height), RKp_Text(RK_kMsg_ImagePlaneBuffer));
    if (handle == nullptr) return RK_kOutOfMemory;
    auto* out = static_cast<uint8_t*>(*handle);
    for (int32_t y = 0; y < height; ++y)
        extractRow(reinterpret_cast<const uint8_t*>(RKp_CopyRow(*world, y)), width, planes,
                   out + static_cast<size_t>(rowbytes) * static_cast<size_t>(y));
    *result_handle = reinterpret_cast<char**>(handle);
    *result_rowbytes = static_cast<int32_t>(rowbytes);
    return RK_kOK;
}

RK_Long RK_InsertPlanes(RK_EffectRef, char** handle, RK_Long rowbytes, uint32_t mask, RK_LayerDef* world) {
    if (isBad(world, mask) || handle == nullptr || *handle == nullptr)
        return RKp_ReportBadParam(RKp_kSitePlanes);
    const Planes planes(mask);
    for (int32_t y = 0; y < world->height; ++y)
        insertRow(reinterpret_cast<const uint8_t*>(*handle + static_cast<ptrdiff_t>(int64_t{y} * rowbytes)),
                  std::max(world->width, 0), planes, reinterpret_cast<uint8_t*>(RKp_CopyRowOut(*world, y)));
    return RK_kOK;
}

RK_Long RK_ChannelCopy(RK_ProgressInfo*, const RK_Chunk* src_chunk, RK_Chunk* dst_chunk,
                       const GEO_Rect* src_rect, const GEO_Rect* dst_rect) {
    if (src_chunk == nullptr || dst_chunk == nullptr || src_chunk->locked_data == nullptr ||
        dst_chunk->locked_data == nullptr) {
        // Kept: the user is told twice.
        RKp_ReportBadParam(RKp_kSiteChannelCopy);
        return RKp_ReportBadParam(RKp_kSiteChannelCopy);
    }
    ChunkArea src = {recordOf(*src_chunk), {}, 0}, dst = {recordOf(*dst_chunk), {}, 0};
    RK_Long error = pixelBytes(*src_chunk, &src.pixel);
    if (error == RK_kOK) error = pixelBytes(*dst_chunk, &dst.pixel);
    if (error != RK_kOK) return error;
    RKp_CopyRect s, d;
    if (!RKp_PrepareCopyRect(src_rect, src.record, &s) || !RKp_PrepareCopyRect(dst_rect, dst.record, &d) ||
        !RKp_CutCopyRects(src.record, dst.record, &s.rect, &d.rect) || src.pixel < 1 || dst.pixel < 1)
        return RK_kOK;
    src.rect = s.rect;
    dst.rect = d.rect;
    if (src.pixel == dst.pixel && src.width() == dst.width() && src.height() == dst.height())
        RKp_MoveRows(src.record, src.rect, dst.record, dst.rect, static_cast<size_t>(src.pixel));
    else
        copyScaled(src, dst);
    return RK_kOK;
}
