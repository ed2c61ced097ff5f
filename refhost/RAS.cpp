// Bitmaps whose pixels are at hand only while they are locked.
#include "RK/host/RAS.h"

#include <cstdio>

#include "refhost/Internal.h"

namespace {

// One block holds the handle's pointer and the record; the pixels are a second one, kept in `store`.
struct Bitmap {
    RAS_World* record_pointer;  // what a RAS_World** points at
    RAS_World record;
};
Bitmap* bitmapOf(RAS_World** world) { return reinterpret_cast<Bitmap*>(world); }

bool knownBits(int32_t bits) {
    return bits == 8 || bits == 16 || bits == 24 || bits == 32 || bits == 64 || bits == 128;
}

}  // namespace

RK_Long RAS_NewWorld(int32_t, int32_t, int32_t, const GEO_Rect* bounds, int32_t bits_per_pixel, int32_t,
                     int32_t, RAS_World*** out) {
    if (!bounds || !out || !knownBits(bits_per_pixel)) return 3;
    if (const RK_Long code = RefHost::FailingCall("RAS_NewWorld")) return code;
    const int32_t width = int32_t{bounds->right} - bounds->left;
    const int32_t height = int32_t{bounds->bottom} - bounds->top;
    if (width < 1 || height < 1 || width > INT16_MAX || height > INT16_MAX) return 3;

    const int32_t rowbytes = (width * (bits_per_pixel / 8) + 15) & ~15;
    Bitmap* bitmap = static_cast<Bitmap*>(RefHost::AllocateBlock(sizeof(Bitmap)));
    if (!bitmap) return 4;
    const uint64_t bytes = uint64_t(rowbytes) * uint64_t(height);
    void* pixels = bytes <= SIZE_MAX ? RefHost::AllocateBlock(static_cast<size_t>(bytes)) : nullptr;
    if (!pixels) {
        RefHost::FreeBlock(bitmap);
        return 4;
    }
    bitmap->record_pointer = &bitmap->record;
    bitmap->record = {static_cast<int16_t>(width),
                      static_cast<int16_t>(height),
                      static_cast<int16_t>(bits_per_pixel),
                      0,
                      nullptr,
                      rowbytes,
                      pixels,
                      0};
    *out = &bitmap->record_pointer;
    return 0;
}

RK_Long RAS_LoadLockPixels(int32_t, RAS_World** world, int32_t, int32_t) {
    if (!world) return 3;
    if (const RK_Long code = RefHost::FailingCall("RAS_LoadLockPixels")) return code;
    RAS_World& record = **world;
    if (record.lock_count == INT16_MAX) return 3;
    ++record.lock_count;
    record.base = record.store;
    return 0;
}

void RAS_UnlockPixels(RAS_World** world) {
    if (!world || (*world)->lock_count == 0) return;
    if (--(*world)->lock_count == 0) (*world)->base = nullptr;
}

void RAS_DisposeWorld(RAS_World** world) {
    if (!world) return;
    RefHost::FreeBlock((*world)->store);
    RefHost::FreeBlock(bitmapOf(world));
}

int32_t RAS_GetChannelOrder(RAS_World** world) { return world ? (*world)->channel_order : 0; }
void RAS_SetChannelOrder(RAS_World** world, int32_t order) {
    if (world) (*world)->channel_order = order;
}

void* RASp_GetPixBaseAddr(RAS_World** world) { return world ? (*world)->store : nullptr; }

void RAS_ReportWorldAllocationFailure(RK_Long code, int32_t rowbytes, int32_t width, int32_t height,
                                      int32_t bits_per_pixel) {
    char text[160];
    std::snprintf(text, sizeof text, "no memory for a world of %d x %d pixels, %d bits each, %d bytes a row",
                  width, height, bits_per_pixel, rowbytes);
    RefHost::Record(RefHost::ReportKind::WorldAllocation, 0, static_cast<int32_t>(code), text);
}

RK_Long RAS_CheckVersions(RK_Long, RK_Long version) { return RefHost::CheckPackage("RAS", version); }
