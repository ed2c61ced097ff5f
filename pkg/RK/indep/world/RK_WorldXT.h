// The concrete worlds, one per pixel type. On the stack they wrap a record; on the heap RK_World's functions
// make them.
#ifndef RK_WORLDXT_H
#define RK_WORLDXT_H

#include <cstring>

#include "RK/indep/world/RK_World.h"

template <class P>
class RK_API RK_WorldX final : public RK_World {
  public:
    using Pixel = P;
    static constexpr RK_Long kDepth = sizeof(P) * 2;

    // A world that owns its pixels, as RK_World::New says.
    RK_WorldX(RK_Long width, RK_Long height, RK_Long flags);

    // Wraps a record, which must not be null, without owning anything: `RK_WorldX<P> world(record, false);`.
    // Only data, size, flags and extent are taken. With `keep`, the fields that a wrap does not set are left
    // as the memory holds them; otherwise they are zero.
    RK_WorldX(const RK_LayerDef* source, bool keep) {
        if (!keep) {
            std::memset(&record, 0, sizeof record);
            alloc_width = alloc_height = 0;
        }
        record.data = source->data;
        record.rowbytes = source->rowbytes;
        record.width = source->width;
        record.height = source->height;
        record.world_flags = source->world_flags;
        record.extent = source->extent;
        record.world_object = this;
        record.ras_world = nullptr;
        owned_pixels = nullptr;
        owned_bitmap_ = nullptr;
    }
    ~RK_WorldX() override {
        if (owned_pixels != nullptr) FreePixels();
    }

    // ---- What the drivers read -----------------------------------------------------------------------
    int32_t width() const { return record.width; }
    int32_t height() const { return record.height; }
    // The first pixel of row y, in pointer-wide arithmetic.
    P* row(int32_t y) { return static_cast<P*>(RowAddress(y)); }
    const P* row(int32_t y) const { return static_cast<const P*>(RowAddress(y)); }

    // ---- RK_World's operations -----------------------------------------------------------------------
    RK_Long Depth() const override { return kDepth; }
    bool IsReference() const override { return owned_pixels == nullptr; }
    void Clear(const GEO_Rect* rect) override;
    void ClearExceptRect(const GEO_Rect& rect) override;
    void Fill(const RK_PixelFloat& colour, const GEO_Rect* rect) override;
    void Fill(const RK_Pixel16& colour, const GEO_Rect* rect) override;
    void FillAlpha() override;
    void InvertAlpha() override;
    void Premultiply() override;
    void Unmultiply() override;
    void PremulColor(const RK_Pixel16& colour) override;
    void UnmulColor(const RK_Pixel16& colour) override;
    void CopyRect(const RK_World* src, const GEO_Rect& src_rect, int16_t dest_h, int16_t dest_v) override;
    void CopyRectPossiblyDifferentBitdepth(const RK_World* src, const GEO_Rect& src_rect, bool dither, int16_t dest_h,
                                           int16_t dest_v, RK_ProgressInfo* progress) override;
    bool SubWorldSafetyGutterHasBeenOverWritten() const override;
    void ReleaseOwnership() override;

  private:
    void* RowAddress(int32_t y) const {
        const int64_t offset = int64_t{y} * record.rowbytes;
        return reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(record.data) +
                                       static_cast<uintptr_t>(offset));
    }
    void MakeHeapPixels(int32_t width, int32_t height);
    void MakeBitmapPixels(int32_t width, int32_t height);
    void FreePixels();
};

extern template class RK_API RK_WorldX<RK_Pixel8>;
extern template class RK_API RK_WorldX<RK_Pixel16>;
extern template class RK_API RK_WorldX<RK_PixelFloat>;

// The concrete kinds of pixel container, told apart by depth.
template <class... Kinds>
struct RK_PixelContainer {
    // Calls work with a null pointer of the kind that has the depth; false, and no call, when none has it.
    template <class Work>
    static bool WithKind(RK_Long depth, Work&& work) {
        return ((depth == Kinds::kDepth && (work(static_cast<Kinds*>(nullptr)), true)) || ...);
    }
};
using RK_WorldKinds =
    RK_PixelContainer<RK_WorldX<RK_Pixel8>, RK_WorldX<RK_Pixel16>, RK_WorldX<RK_PixelFloat>>;

#endif
