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
constexpr RK_Long RK_kWorldDeep = 2;    // told with depth 16 by effect worlds; the depth itself decides
constexpr RK_Long RK_kWorldBitmap = 4;  // pixels live in a host bitmap

constexpr int32_t RK_kWorldSizeLimit = 30000;  // a new world's width and height are each 1 up to this

// Functions that make a world throw an RK_Long on failure: 516 for a size outside 1..30000 (reported), 4 for
// memory (reported), 3 for an unknown depth, or what the host's bitmap calls return. They return null when
// the object itself cannot be allocated. The other functions throw 3, after a report, for an argument that
// breaks their promise; a null argument does so everywhere unless null is given a meaning.
class RK_API RK_World : public RK_PixelContainerBase {
  public:
    RK_World(const RK_World&) = delete;
    RK_World& operator=(const RK_World&) = delete;

    // ---- Making --------------------------------------------------------------------------------------
    static RK_World* New(RK_Long width, RK_Long height, int16_t depth, RK_Long flags);
    // In the rectangle's size, with its left and top as origin.
    static RK_World* New(const GEO_LRect& rect, int16_t depth, RK_Long flags);
    // In the other's width, height and depth; the origin is not copied.
    static RK_World* NewMatchingWorld(const RK_World* other, RK_Long flags);

    // References own nothing; what they refer to must outlive them. They throw 3 for an unknown depth,
    // reported unless it is the caller's own number.
    static RK_World* NewReference(RAS_World** bitmap);
    // To a part of a bitmap, without keeping its handle. Null is the whole bitmap, handle included. The
    // rectangle is not checked: it must lie inside the bitmap.
    static RK_World* NewReference(RAS_World** bitmap, const GEO_Rect* rect);
    static RK_World* NewReference(RAS_World** bitmap, const GEO_Rect& rect);
    // To a part of another world. The rectangle is not checked: it must lie inside the source. The extent is
    // cut by the low 16 bits of its edges.
    static RK_World* NewReference(RK_World* source, const GEO_LRect& rect);
    static RK_World* NewReference(RK_World* source, const GEO_Rect& rect);
    static RK_World* NewReference(RK_LayerDef* source);
    static RK_World* NewReference(void* pixels, RK_Long width, RK_Long height, int16_t depth,
                                  RK_Long rowbytes);

    // ---- Virtual operations, in slot order -----------------------------------------------------------
    // True when the object owns no storage.
    virtual bool IsReference() const = 0;
    // Rectangles are clipped to the world; null is the whole world, and one without area is none of it. A
    // world with null data counts as one without pixels.

    // Zeroes the rectangle. When its rows span rowbytes it zeroes from its top row for the length of the
    // whole world, so such a rectangle must begin at row 0.
    virtual void Clear(const GEO_Rect* rect) = 0;
    // Zeroes everything outside the rectangle.
    virtual void ClearExceptRect(const GEO_Rect& rect) = 0;
    // Stores the colour, converted to the world's depth.
    virtual void Fill(const RK_PixelFloat& colour, const GEO_Rect* rect) = 0;
    virtual void Fill(const RK_Pixel16& colour, const GEO_Rect* rect) = 0;
    // Full alpha in every pixel; each alpha turned into what is missing from full.
    virtual void FillAlpha() = 0;
    virtual void InvertAlpha() = 0;
    // Between straight and premultiplied, by black or by a colour. A float world throws 3, without a report.
    virtual void Premultiply() = 0;
    virtual void Unmultiply() = 0;
    virtual void PremulColor(const RK_Pixel16& colour) = 0;
    virtual void UnmulColor(const RK_Pixel16& colour) = 0;
    // Copies the part of src_rect that lies in the source and lands, moved to dest_h, dest_v, in this world.
    // The depths must agree. A world may be copied within itself.
    virtual void CopyRect(const RK_World* src, const GEO_Rect& src_rect, int16_t dest_h, int16_t dest_v) = 0;
    // The same from a world of any depth, whose rows are converted. With `dither` the rows of 16 bits and float that
    // come to 8 bits take the package's noise. Checks in at every 64th row. A depth that is none of 8, 16 and 32 is
    // reported and throws 3.
    virtual void CopyRectPossiblyDifferentBitdepth(const RK_World* src, const GEO_Rect& src_rect, bool dither,
                                                   int16_t dest_h, int16_t dest_v, RK_ProgressInfo* progress) = 0;
    // True when something wrote past the last pixel of a heap world. A debugging aid; a bitmap world has no
    // gutter to look at and gives false.
    virtual bool SubWorldSafetyGutterHasBeenOverWritten() const = 0;
    // Makes this a world that owns nothing: its destructor leaves the pixels alone, and whoever took them
    // frees the block that owned_pixels named before.
    virtual void ReleaseOwnership() = 0;

    // ---- The rest ------------------------------------------------------------------------------------
    // Cuts the world down to the rectangle, whose edges must each lie inside; the block stays owned as it is.
    // Not for bitmap worlds.
    void ShrinkToSubRect(const GEO_Rect& rect);
    // Makes this world, of the same depth, refer to the other from the rectangle's corner on, in the other's
    // full size: the caller stays inside the other's pixels. A retargeted owner still frees its old pixels
    // when it dies.
    void ReReference(RK_World* other, const GEO_Rect& rect);
    // True when this reference has the other's rowbytes and depth, is no larger, and begins in one of its
    // rows. The column is not checked.
    bool RefersTo(const RK_World* other) const;

    // Fills a record that describes this world; null is ignored.
    void FillOutEffectWorld(RK_LayerDef* out) const;
    bool HasRASWorld() const { return record.ras_world != nullptr; }
    // Throws 513 when there is none.
    RAS_World** GetRASWorld();
    // The other's whole rectangle to 0, 0, through CopyRect; its edges stop at 32767.
    void CopyWorld(const RK_World* other);

    // ---- Fields --------------------------------------------------------------------------------------
    RK_LayerDef record;                 // its world_object points to this object
    int16_t alloc_width, alloc_height;  // as allocated; never changed later
    void* owned_pixels;                 // the raw block; BitmapPixels() for a bitmap world; null: a reference

    // What stands in owned_pixels where there is no block to free.
    static void* BitmapPixels() { return reinterpret_cast<void*>(uintptr_t{1}); }

  protected:
    RK_World() = default;
    // The bitmap that a bitmap world owns. The record's own handle is lost when the world is retargeted.
    RAS_World** owned_bitmap_;
};

#endif
