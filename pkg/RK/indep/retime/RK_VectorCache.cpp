#include "RK/indep/retime/RK_VectorCache.h"

#include <algorithm>

#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/retime/FnBuffer.h"

namespace {

constexpr uint32_t kSite = 95;
constexpr int kGeometryWords = 13;
constexpr size_t kVectorBytes = 8, kLuminanceBytes = 4;

// ---- Words ----------------------------------------------------------------------------------------------

void Put(uint8_t* bytes, uint32_t word) {
    for (int i = 0; i < 4; ++i) bytes[i] = static_cast<uint8_t>(word >> (8 * i));
}
uint32_t Get(const uint8_t* bytes) {
    return bytes[0] | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16 | uint32_t{bytes[3]} << 24;
}
uint32_t BitsOf(float v) {
    uint32_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    return bits;
}
float FloatOf(uint32_t bits) {
    float v;
    std::memcpy(&v, &bits, sizeof v);
    return v;
}
int32_t SignedOf(uint32_t word) {
    int32_t v;
    std::memcpy(&v, &word, sizeof v);
    return v;
}

// ---- Geometries -----------------------------------------------------------------------------------------
// Row bytes, then per axis: size, float origin, edge mode, first, last, integer origin.

void WriteGeometry(DSK_File* file, const FnTexIndexer& map, size_t pixel_bytes) {
    uint8_t bytes[kGeometryWords * 4];
    uint8_t* at = bytes;
    auto put = [&at](uint32_t word) {
        Put(at, word);
        at += 4;
    };
    put(static_cast<uint32_t>(map.Width()) * static_cast<uint32_t>(pixel_bytes));
    for (const FnAxis& a : map.axis) {
        put(static_cast<uint32_t>(a.size));
        put(BitsOf(a.origin));
        put(static_cast<uint32_t>(a.edge_mode));
        put(static_cast<uint32_t>(a.first));
        put(static_cast<uint32_t>(a.last));
        put(static_cast<uint32_t>(a.int_origin));
    }
    RKp_ThrowIf(DSK_Write(file, bytes, sizeof bytes));
}

// Into the axes of a map of that size; throws 3 for one that does not fit it.
void ReadGeometry(DSK_File* file, int32_t width, int32_t height, size_t pixel_bytes, FnAxis axis[2]) {
    uint8_t bytes[kGeometryWords * 4];
    RKp_ThrowIf(DSK_Read(file, bytes, sizeof bytes));
    const uint8_t* at = bytes;
    auto get = [&at] {
        const uint32_t word = Get(at);
        at += 4;
        return word;
    };
    bool good = SignedOf(get()) == int64_t{width} * static_cast<int64_t>(pixel_bytes);
    for (int i = 0; i < 2; ++i) {
        FnAxis a{};
        a.size = SignedOf(get());
        a.origin = FloatOf(get());
        a.edge_mode = SignedOf(get());
        a.first = SignedOf(get());
        a.last = SignedOf(get());
        a.int_origin = SignedOf(get());
        const int32_t size = i == 0 ? width : height;
        const bool range = size == 0 ? a.first == 0 && a.last == -1 : a.first >= 0 && a.first <= a.last && a.last < size;
        good = good && a.size == size && a.edge_mode >= kFnTransparent && a.edge_mode <= kFnWrap && range;
        a.count = good ? a.last - a.first + 1 : 0;
        axis[i] = a;
    }
    if (!good) RKp_Throw(RK_kBadParam);
}

// ---- Vectors --------------------------------------------------------------------------------------------

void WriteVectors(DSK_File* file, const FnVectorMap& map) {
    FnBuffer<uint8_t> line;
    if (map.IsEmpty()) return;
    if (!line.Allocate(int64_t{map.Width()} * 8)) RKp_Throw(RK_kOutOfMemory);
    for (int32_t y = 0; y < map.Height(); ++y) {
        for (int32_t x = 0; x < map.Width(); ++x) {
            Put(&line[int64_t{x} * 8], BitsOf(map.Row(y)[x].x));
            Put(&line[int64_t{x} * 8 + 4], BitsOf(map.Row(y)[x].y));
        }
        RKp_ThrowIf(DSK_Write(file, line.data(), static_cast<size_t>(map.Width()) * kVectorBytes));
    }
}

void ReadVectors(DSK_File* file, const FnAxis axis[2], FnVectorMap* map) {
    if (!map->Resize(axis[0].size, axis[1].size)) RKp_Throw(RK_kOutOfMemory);
    std::copy(axis, axis + 2, map->axis);
    if (!map->HasPixels()) return;
    FnBuffer<uint8_t> line;
    if (!line.Allocate(int64_t{map->Width()} * 8)) RKp_Throw(RK_kOutOfMemory);
    for (int32_t y = 0; y < map->Height(); ++y) {
        RKp_ThrowIf(DSK_Read(file, line.data(), static_cast<size_t>(map->Width()) * kVectorBytes));
        for (int32_t x = 0; x < map->Width(); ++x)
            map->Row(y)[x] = {FloatOf(Get(&line[int64_t{x} * 8])), FloatOf(Get(&line[int64_t{x} * 8 + 4]))};
    }
}

FnFloatMap* NewLuminance(const FnAxis axis[2]) {
    FnFloatMap* map = new FnFloatMap;
    if (!map) RKp_Throw(RK_kOutOfMemory);
    if (!map->Resize(axis[0].size, axis[1].size)) {
        delete map;
        RKp_Throw(RK_kOutOfMemory);
    }
    std::copy(axis, axis + 2, map->axis);
    return map;
}

}  // namespace

bool RK_QuillonCache_Stuff::IsLess(const STASH_Stuff& other) const {
    const RK_QuillonCache_Stuff* that = dynamic_cast<const RK_QuillonCache_Stuff*>(&other);
    if (!that) {
        KITp_ReportErrString(RK_kLocation | kSite, 8, "Stuff should be Quillon Cache Stuff");
        RKp_Throw(RK_kBadParam);
    }
    if (!(first_time == that->first_time)) return first_time < that->first_time;
    return second_time < that->second_time;
}

int32_t RK_QuillonCache_Stuff::SizeInBytes() const {
    if (!holder) return 0;
    const int64_t bytes = (int64_t{holder->width} * holder->height + 34) * 24;
    return static_cast<int32_t>(std::min<int64_t>(bytes, INT32_MAX));
}

bool RK_QuillonCache_Stuff::Purge() {
    const bool had = static_cast<bool>(holder);
    holder = RKp_HolderRef();
    return had;
}

void RK_QuillonCache_Stuff::WriteToDisk(DSK_File* file) const {
    if (!holder) RKp_Throw(RK_kBadParam);
    uint8_t sizes[8];
    Put(sizes, static_cast<uint32_t>(holder->width));
    Put(sizes + 4, static_cast<uint32_t>(holder->height));
    RKp_ThrowIf(DSK_Write(file, sizes, sizeof sizes));
    FnTexIndexer missing(holder->width, holder->height);
    missing.SetEdgeModes(kFnClamp, kFnClamp);
    for (const FnFloatMap* map : {holder->first_luminance, holder->second_luminance}) {
        const FnTexIndexer* geometry = map;
        WriteGeometry(file, geometry ? *geometry : missing, kLuminanceBytes);
    }
    WriteGeometry(file, holder->first_field, kVectorBytes);
    WriteGeometry(file, holder->second_field, kVectorBytes);
    WriteVectors(file, holder->first_field);
    WriteVectors(file, holder->second_field);
}

void RK_QuillonCache_Stuff::ReadFromDisk(DSK_File* file) {
    Purge();
    uint8_t sizes[8];
    RKp_ThrowIf(DSK_Read(file, sizes, sizeof sizes));
    const int32_t width = SignedOf(Get(sizes)), height = SignedOf(Get(sizes + 4));
    if (width < 0 || height < 0) RKp_Throw(RK_kBadParam);
    FnAxis axes[4][2];
    for (int i = 0; i < 4; ++i) ReadGeometry(file, width, height, i < 2 ? kLuminanceBytes : kVectorBytes, axes[i]);
    // Before anything is allocated, so that a bogus size costs nothing. The product of two positive int32 and 16 may
    // not fit; a quotient does.
    const int64_t pixels = DSK_BytesLeft(file) / (2 * static_cast<int64_t>(kVectorBytes));
    if (int64_t{width} * height > pixels) RKp_Throw(RK_kBadParam);

    RKp_HolderRef made(new FnMotionEstimateMapStackHolder);
    if (!made) RKp_Throw(RK_kOutOfMemory);
    made->width = width;
    made->height = height;
    made->lacks_luminance = true;
    made->first_luminance = NewLuminance(axes[0]);
    made->second_luminance = NewLuminance(axes[1]);
    ReadVectors(file, axes[2], &made->first_field);
    ReadVectors(file, axes[3], &made->second_field);
    holder = made;
}

// Both times in lowest terms, since equal times name one entry; then the key, which tells sources apart.
size_t RK_QuillonCache_Stuff::DiskIdentity(uint8_t* bytes, size_t room) const {
    if (room < 20) return 0;
    uint8_t* at = bytes;
    for (const TM_Time& time : {first_time, second_time}) {
        int64_t a = time.value < 0 ? -int64_t{time.value} : time.value, b = time.scale;
        while (b != 0) {
            const int64_t rest = a % b;
            a = b;
            b = rest;
        }
        const int64_t divisor = a == 0 ? 1 : a;
        Put(at, static_cast<uint32_t>(time.value / divisor));
        Put(at + 4, static_cast<uint32_t>(time.scale / divisor));
        at += 8;
    }
    Put(at, sort_key);
    return 20;
}

STASH_Stuff* RK_QuillonCache_Stuff::NewLike() const {
    return new RK_QuillonCache_Stuff(sort_key, first_time, second_time, RKp_HolderRef());
}
