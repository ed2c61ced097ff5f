// The life of a world: its pixels, its gutter, its end.
#include <limits>

#include "RK/host/RAS.h"
#include "RK/host/SHIM.h"
#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_Globals.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/world/RK_WorldDepth.h"
#include "RK/indep/world/RK_WorldXT.h"

namespace {

constexpr uint8_t kGutterByte = 0x55;

// Rows begin at multiples of 16 bytes.
constexpr int64_t PaddedRow(int64_t bytes) { return (bytes + 15) & ~int64_t{15}; }

// Blocks are aligned to 8: the pixels begin at the next multiple of 16.
uint8_t* AlignedPixels(void* block) {
    return static_cast<uint8_t*>(block) + (reinterpret_cast<uintptr_t>(block) & 8);
}

struct WindowCreationMode {
    WindowCreationMode() { SHIM_BeginGdiMinimalisticWindowCreationMode(); }
    ~WindowCreationMode() { SHIM_EndGdiMinimalisticWindowCreationMode(); }
    WindowCreationMode(const WindowCreationMode&) = delete;
    WindowCreationMode& operator=(const WindowCreationMode&) = delete;
};

}  // namespace

template <class P>
RK_WorldX<P>::RK_WorldX(RK_Long width, RK_Long height, RK_Long flags) {
    if (width < 1 || width > RK_kWorldSizeLimit || height < 1 || height > RK_kWorldSizeLimit) {
        KITp_ReportErrString(RK_kLocation | RKp_kSiteWorld, 8, RKp_Text(RK_kMsg_InvalidParameter));
        RKp_Throw(RK_kBadParamReported);
    }
    const int32_t w = static_cast<int32_t>(width);
    const int32_t h = static_cast<int32_t>(height);
    std::memset(&record, 0, sizeof record);
    owned_bitmap_ = nullptr;
    if (flags & RK_kWorldBitmap)
        MakeBitmapPixels(w, h);
    else
        MakeHeapPixels(w, h);

    record.width = w;
    record.height = h;
    record.extent = {0, 0, static_cast<int16_t>(h), static_cast<int16_t>(w)};
    alloc_width = static_cast<int16_t>(w);
    alloc_height = static_cast<int16_t>(h);
    RKp_SetWorldDepth(&record, kDepth);
    record.world_object = this;
    ++RKp_G_WorldCount;
    if (flags & RK_kWorldClear) Clear(nullptr);
}

template <class P>
void RK_WorldX<P>::MakeHeapPixels(int32_t width, int32_t height) {
    const int64_t pixel = sizeof(P);
    const int64_t rowbytes = PaddedRow(width * pixel);
    const int64_t used = (height - 1) * rowbytes + width * pixel;
    const int64_t gutter = rowbytes - pixel;
    const uint64_t bytes = static_cast<uint64_t>(used + gutter + 8);
    owned_pixels = bytes <= std::numeric_limits<size_t>::max()
                       ? KIT_AllocatePtrQuiet(static_cast<size_t>(bytes))
                       : nullptr;
    if (owned_pixels == nullptr) {
        RAS_ReportWorldAllocationFailure(RK_kOutOfMemory, static_cast<int32_t>(rowbytes), width, height,
                                         static_cast<int32_t>(pixel * 8));
        RKp_Throw(RK_kOutOfMemory);
    }
    uint8_t* pixels = AlignedPixels(owned_pixels);
    record.data = pixels;
    record.rowbytes = static_cast<int32_t>(rowbytes);
    std::memset(pixels + used, kGutterByte, static_cast<size_t>(gutter));
}

template <class P>
void RK_WorldX<P>::MakeBitmapPixels(int32_t width, int32_t height) {
    const WindowCreationMode mode;
    const GEO_Rect bounds = {0, 0, static_cast<int16_t>(height), static_cast<int16_t>(width)};
    RAS_World** bitmap = nullptr;
    RKp_ThrowIf(RAS_NewWorld(0, 0, 8, &bounds, sizeof(P) * 8, 0, 0, &bitmap));
    if (bitmap == nullptr || *bitmap == nullptr) RKp_Throw(RK_kBadParam);
    const RK_Long error = RAS_LoadLockPixels(1, bitmap, 0, 0);
    if (error != RK_kOK) {
        RAS_DisposeWorld(bitmap);
        RKp_Throw(error);
    }
    record.data = (*bitmap)->base != nullptr ? (*bitmap)->base : RASp_GetPixBaseAddr(bitmap);
    record.rowbytes = (*bitmap)->rowbytes;
    record.ras_world = owned_bitmap_ = bitmap;
    owned_pixels = BitmapPixels();
}

template <class P>
void RK_WorldX<P>::FreePixels() {
    if (owned_bitmap_ != nullptr) {
        RAS_UnlockPixels(owned_bitmap_);
        RAS_DisposeWorld(owned_bitmap_);
    } else {
        KIT_FreePtr(owned_pixels);
        owned_pixels = nullptr;
    }
    --RKp_G_WorldCount;
}

// The place is worked out from the allocation, because a world may have been cut down or retargeted since.
template <class P>
bool RK_WorldX<P>::SubWorldSafetyGutterHasBeenOverWritten() const {
    if (owned_pixels == nullptr || owned_bitmap_ != nullptr) return false;
    const int64_t pixel = sizeof(P);
    const int64_t rowbytes = PaddedRow(alloc_width * pixel);
    const uint8_t* gutter = AlignedPixels(owned_pixels) + (alloc_height - 1) * rowbytes + alloc_width * pixel;
    for (int64_t i = 0; i < rowbytes - pixel; ++i)
        if (gutter[i] != kGutterByte) return true;
    return false;
}

template <class P>
void RK_WorldX<P>::ReleaseOwnership() {
    if (owned_pixels != nullptr) --RKp_G_WorldCount;
    owned_pixels = nullptr;
    owned_bitmap_ = nullptr;
}

template class RK_WorldX<RK_Pixel8>;
template class RK_WorldX<RK_Pixel16>;
template class RK_WorldX<RK_PixelFloat>;
