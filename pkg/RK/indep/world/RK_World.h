// Image objects: a world owns its pixels, or refers to those of another.
#ifndef RK_WORLD_H
#define RK_WORLD_H

#include "RK/host/KIT.h"
#include "RK/indep/frame/RK.h"

class RK_API RK_PixelContainerBase : public KIT_MemTrackedObject {
  public:
    virtual ~RK_PixelContainerBase() = default;
    // 8, 16 or 32.
    virtual RK_Long Depth() const = 0;
    // Bytes per pixel.
    RK_Long PixelSize() const { return Depth() / 2; }
};

// Flags of RK_World::New.
constexpr RK_Long RK_kWorldClear = 1;   // pixels start as zero
constexpr RK_Long RK_kWorldBitmap = 4;  // pixels live in a host bitmap

// Functions that make a world throw an RK_Long on failure: 516 for a size outside 1..30000 (reported), 4 for
// memory (reported), 3 for an unknown depth, or what the host's bitmap calls return. They return null when the
// object itself cannot be allocated. The other functions throw 3 for an argument that breaks their promise.
class RK_API RK_World : public RK_PixelContainerBase {
  public:
    // ---- Making --------------------------------------------------------------------------------------
    static RK_World* New(RK_Long width, RK_Long height, int16_t depth, RK_Long flags);
    // In the rectangle's size, with its left and top as origin.
    static RK_World* New(const GEO_LRect& rect, int16_t depth, RK_Long flags);
    // In the other's width, height and depth; the origin is not copied.
    static RK_World* NewMatchingWorld(const RK_World* other, RK_Long flags);

    // References own nothing; what they refer to must outlive them.
    static RK_World* NewReference(RAS_World** bitmap);
    static RK_World* NewReference(RAS_World** bitmap, const GEO_Rect& rect);
    // The rectangle is not checked: it must lie inside the source.
    static RK_World* NewReference(RK_World* source, const GEO_LRect& rect);
    static RK_World* NewReference(RK_World* source, const GEO_Rect& rect);
    static RK_World* NewReference(RK_LayerDef* record);
    static RK_World* NewReference(void* pixels, RK_Long width, RK_Long height, int16_t depth, RK_Long rowbytes);

    // ---- Virtual operations, in slot order -----------------------------------------------------------
    // True when the object owns no storage.
    virtual bool IsReference() const = 0;
    // Zeroes the clipped rectangle. Kept: when its rows span rowbytes it zeroes from its top row for the length
    // of the whole world, so such a rectangle must begin at row 0.
    virtual void Clear(const GEO_Rect* rect) = 0;
    virtual void ClearExceptRect(const GEO_Rect& rect) = 0;
    virtual void Fill(const RK_PixelFloat& colour, const GEO_Rect* rect) = 0;
    virtual void Fill(const RK_Pixel16& colour, const GEO_Rect* rect) = 0;
    virtual void FillAlpha() = 0;
    virtual void InvertAlpha() = 0;
    virtual void Premultiply() = 0;
    virtual void Unmultiply() = 0;
    virtual void PremulColor(const RK_Pixel16& colour) = 0;
    virtual void UnmulColor(const RK_Pixel16& colour) = 0;
    virtual void CopyRect(const RK_World* src, const GEO_Rect& src_rect, int16_t dest_h, int16_t dest_v) = 0;
    // True when something wrote past the last pixel of a heap world. A debugging aid; not for bitmap worlds.
    virtual bool SubWorldSafetyGutterHasBeenOverWritten() const = 0;
    // The destructor will leave the pixels alone.
    virtual void ReleaseOwnership() = 0;

    // ---- The rest ------------------------------------------------------------------------------------
    // Cuts the world down to the rectangle, which must lie inside; the block stays owned as it is.
    void ShrinkToSubRect(const GEO_Rect& rect);
    // Makes this world refer to the other from the rectangle's corner on, in the other's full size: the caller
    // stays inside the other's pixels. A retargeted owner still frees its old block.
    void ReReference(RK_World* other, const GEO_Rect& rect);
    // True when this reference's first row lies among the other's rows. The column is not checked.
    bool RefersTo(const RK_World* other) const;

    // Fills a record that describes this world; null is ignored.
    void FillOutEffectWorld(RK_LayerDef* out) const;
    bool HasRASWorld() const { return record.ras_world != nullptr; }
    // Throws 513 when there is none.
    RAS_World** GetRASWorld();
    void CopyWorld(const RK_World* other);

    // ---- Fields --------------------------------------------------------------------------------------
    RK_LayerDef record;                  // its world_object points to this object
    int16_t alloc_width, alloc_height;   // as allocated; never changed later
    void* owned_pixels;                  // the raw block; RK_kBitmapPixels for a bitmap world; null: a reference

  protected:
    RK_World() = default;
};

#endif
