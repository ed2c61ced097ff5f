// Making worlds and references, and what does not depend on the pixel type.
#include "RK/indep/world/RK_World.h"

#include <algorithm>
#include <limits>
#include <type_traits>

#include "RK/host/RAS.h"
#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/world/RK_WorldDepth.h"
#include "RK/indep/world/RK_WorldXT.h"

// The record follows the virtual table pointer, so that a world's address leads to it; the three fields
// follow it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
RK_ASSERT_OFFSET(RK_World, record, 4, 8);
RK_ASSERT_OFFSET(RK_World, alloc_width, 80, 104);
RK_ASSERT_OFFSET(RK_World, alloc_height, 82, 106);
RK_ASSERT_OFFSET(RK_World, owned_pixels, 84, 112);
#pragma GCC diagnostic pop

namespace {

#define RKp_THROW_VERIFICATION(text) RKp_Throw(RKp_VERIFICATION(text))

template <class Kind>
using KindOf = std::remove_pointer_t<Kind>;

int16_t Low16(int64_t value) { return static_cast<int16_t>(static_cast<uint16_t>(value)); }

bool FitsInt32(RK_Long value) { return value >= INT32_MIN && value <= INT32_MAX; }

// Any number of int64_t that RK_Long cannot hold is out of every range that is asked of it.
RK_Long Saturated(int64_t value) {
    using Limits = std::numeric_limits<RK_Long>;
    return static_cast<RK_Long>(std::clamp<int64_t>(value, Limits::min(), Limits::max()));
}

void* Moved(void* data, int64_t offset) {
    if (data == nullptr) return nullptr;
    return reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(data) + static_cast<uintptr_t>(offset));
}

int64_t PixelOffset(const RK_LayerDef& record, int64_t left, int64_t top, RK_Long pixel_size) {
    return top * record.rowbytes + left * pixel_size;
}

// An extent as seen from the rectangle's corner. One that does not meet the rectangle is 0, 0, 0, 0, and is
// moved all the same.
GEO_Rect ExtentWithin(const GEO_Rect& extent, const GEO_Rect& rect) {
    GEO_Rect cut;
    GEO_SectRect(&extent, &rect, &cut);
    return {Low16(cut.top - rect.top), Low16(cut.left - rect.left), Low16(cut.bottom - rect.top),
            Low16(cut.right - rect.left)};
}

bool EdgesInside(const GEO_Rect& rect, const RK_LayerDef& record) {
    return rect.left >= 0 && rect.right <= record.width && rect.top >= 0 && rect.bottom <= record.height;
}

GEO_Rect WholeExtent(int32_t width, int32_t height) { return {0, 0, Low16(height), Low16(width)}; }

RK_World* MakeReference(const RK_LayerDef& record, RK_Long depth) {
    RK_World* world = nullptr;
    RK_WorldKinds::WithKind(depth, [&](auto* kind) { world = new KindOf<decltype(kind)>(&record, false); });
    return world;
}

}  // namespace

// ---- Making ---------------------------------------------------------------------------------------------

RK_World* RK_World::New(RK_Long width, RK_Long height, int16_t depth, RK_Long flags) {
    RK_World* world = nullptr;
    const bool known = RK_WorldKinds::WithKind(
        depth, [&](auto* kind) { world = new KindOf<decltype(kind)>(width, height, flags); });
    if (!known) RKp_Throw(RK_kBadParam);
    return world;
}

RK_World* RK_World::New(const GEO_LRect& rect, int16_t depth, RK_Long flags) {
    RK_World* world = New(Saturated(int64_t{rect.right} - rect.left),
                          Saturated(int64_t{rect.bottom} - rect.top), depth, flags);
    if (world != nullptr) {
        world->record.origin_x = rect.left;
        world->record.origin_y = rect.top;
    }
    return world;
}

RK_World* RK_World::NewMatchingWorld(const RK_World* other, RK_Long flags) {
    if (other == nullptr) RKp_THROW_VERIFICATION("Bad parameter to RK_World::NewMatchingWorld()");
    return New(other->record.width, other->record.height, Low16(other->Depth()), flags);
}

RK_World* RK_World::NewReference(RAS_World** bitmap) { return NewReference(bitmap, nullptr); }

RK_World* RK_World::NewReference(RAS_World** bitmap, const GEO_Rect& rect) {
    return NewReference(bitmap, &rect);
}

RK_World* RK_World::NewReference(RAS_World** bitmap, const GEO_Rect* rect) {
    if (bitmap == nullptr || *bitmap == nullptr)
        RKp_THROW_VERIFICATION("Bad parameter to RK_World::NewReference()");
    const int32_t bits = (*bitmap)->bits_per_pixel;
    if (bits != 32 && bits != 64 && bits != 128)
        RKp_THROW_VERIFICATION("Unexpected bitdepth in RK_World::NewReference()");
    RK_LayerDef plain;
    RKp_ThrowIf(RK_EffectWorldFromRASWorld(bitmap, &plain));
    if (rect != nullptr) {
        plain.data = Moved(plain.data, PixelOffset(plain, rect->left, rect->top, bits / 8));
        plain.width = rect->right - rect->left;
        plain.height = rect->bottom - rect->top;
    }
    plain.extent = WholeExtent(plain.width, plain.height);
    RK_World* world = MakeReference(plain, bits / 4);
    if (world != nullptr && rect == nullptr) world->record.ras_world = bitmap;
    return world;
}

RK_World* RK_World::NewReference(RK_World* source, const GEO_LRect& rect) {
    if (source == nullptr) RKp_THROW_VERIFICATION("Bad parameter to RK_World::NewReference()");
    RK_World* world = nullptr;
    const bool concrete = RK_WorldKinds::WithKind(source->Depth(), [&](auto* kind) {
        const auto* same = dynamic_cast<decltype(kind)>(source);
        if (same == nullptr) RKp_THROW_VERIFICATION("Unexpected bitdepth in RK_World::NewReference()");
        RK_LayerDef plain = same->record;
        plain.data = Moved(plain.data, PixelOffset(plain, rect.left, rect.top, source->PixelSize()));
        plain.width =
            static_cast<int32_t>(static_cast<uint32_t>(rect.right) - static_cast<uint32_t>(rect.left));
        plain.height =
            static_cast<int32_t>(static_cast<uint32_t>(rect.bottom) - static_cast<uint32_t>(rect.top));
        const GEO_Rect low = {Low16(rect.top), Low16(rect.left), Low16(rect.bottom), Low16(rect.right)};
        plain.extent = ExtentWithin(plain.extent, low);
        world = new KindOf<decltype(kind)>(&plain, false);
    });
    if (!concrete) RKp_THROW_VERIFICATION("Unexpected bitdepth in RK_World::NewReference()");
    return world;
}

RK_World* RK_World::NewReference(RK_World* source, const GEO_Rect& rect) {
    return NewReference(source, GEO_LRect{rect.left, rect.top, rect.right, rect.bottom});
}

RK_World* RK_World::NewReference(RK_LayerDef* source) {
    if (source == nullptr) RKp_THROW_VERIFICATION("Bad parameter to RK_World::NewReference()");
    const int32_t depth = RKp_WorldDepth(source);
    if (depth != 8 && depth != 16 && depth != 32)
        RKp_THROW_VERIFICATION("Unexpected bitdepth in RK_World::NewReference(RK_EffectWorld)");
    return MakeReference(*source, depth);
}

RK_World* RK_World::NewReference(void* pixels, RK_Long width, RK_Long height, int16_t depth,
                                 RK_Long rowbytes) {
    if (depth != 8 && depth != 16 && depth != 32) RKp_Throw(RK_kBadParam);
    if (!FitsInt32(width) || !FitsInt32(height) || !FitsInt32(rowbytes))
        RKp_THROW_VERIFICATION("Bad parameter to RK_World::NewReference()");
    RK_LayerDef plain;
    std::memset(&plain, 0, sizeof plain);
    RKp_ThrowIf(RKp_SetWorldDepth(&plain, depth));
    plain.data = pixels;
    plain.rowbytes = static_cast<int32_t>(rowbytes);
    plain.width = static_cast<int32_t>(width);
    plain.height = static_cast<int32_t>(height);
    plain.extent = WholeExtent(plain.width, plain.height);
    return MakeReference(plain, depth);
}

// ---- Changing what a world shows ------------------------------------------------------------------------
// A caller may pass the world's own extent as the rectangle.

void RK_World::ShrinkToSubRect(const GEO_Rect& rect) {
    if (!EdgesInside(rect, record)) RKp_THROW_VERIFICATION("bad sub rect in ShrinkToSubRect");
    if (HasRASWorld()) RKp_THROW_VERIFICATION("Can't Shrink a RK_World which is backed by a RAS_World");
    // Kept: a reversed rectangle passes, and its negative size is stored.
    record.width = rect.right - rect.left;
    record.height = rect.bottom - rect.top;
    record.data = Moved(record.data, PixelOffset(record, rect.left, rect.top, PixelSize()));
    record.extent = ExtentWithin(record.extent, rect);
}

void RK_World::ReReference(RK_World* other, const GEO_Rect& sub_rect) {
    const GEO_Rect rect = sub_rect;  // which the clearing below may reach
    if (other == nullptr) RKp_THROW_VERIFICATION("Bad parameter to RK_World::ReReference()");
    if (other->Depth() != Depth()) RKp_THROW_VERIFICATION("can't change bit depth in ReReference");
    if (!EdgesInside(rect, other->record)) RKp_THROW_VERIFICATION("bad sub rect in ReReference");
    if (other == this) RKp_THROW_VERIFICATION("can't ReReference self");
    // Kept: the full size of the other, whatever the rectangle is.
    const RK_LayerDef& from = other->record;
    std::memset(&record, 0, sizeof record);
    record.width = from.width;
    record.height = from.height;
    record.rowbytes = from.rowbytes;
    record.data = Moved(from.data, PixelOffset(from, rect.left, rect.top, PixelSize()));
    record.world_flags = from.world_flags;
    record.extent = ExtentWithin(from.extent, rect);
    record.world_object = this;
}

// ---- Questions ------------------------------------------------------------------------------------------

bool RK_World::RefersTo(const RK_World* other) const {
    if (other == nullptr || !IsReference()) return false;
    const RK_LayerDef& theirs = other->record;
    if (Depth() != other->Depth() || record.rowbytes != theirs.rowbytes || record.rowbytes == 0) return false;
    if (record.width > theirs.width || theirs.height < record.height) return false;
    const intptr_t distance = static_cast<intptr_t>(reinterpret_cast<uintptr_t>(record.data) -
                                                    reinterpret_cast<uintptr_t>(theirs.data));
    return distance >= 0 && distance / record.rowbytes < theirs.height;
}

void RK_World::FillOutEffectWorld(RK_LayerDef* out) const {
    if (out == nullptr) return;
    const RK_LayerDef own = record;  // which `out` may be
    const RK_Long depth = Depth();
    std::memset(out, 0, sizeof *out);
    out->data = own.data;
    out->rowbytes = own.rowbytes;
    out->width = own.width;
    out->height = own.height;
    out->extent = own.extent;
    RKp_ThrowIf(RKp_SetWorldDepth(out, FitsInt32(depth) ? static_cast<int32_t>(depth) : 0));
    out->world_object = const_cast<RK_World*>(this);
    out->ras_world = own.ras_world;
}

RAS_World** RK_World::GetRASWorld() {
    if (!HasRASWorld()) RKp_Throw(RK_kNoBitmap);
    return record.ras_world;
}

void RK_World::CopyWorld(const RK_World* other) {
    if (other == nullptr) RKp_THROW_VERIFICATION("Bad parameter to RK_World::CopyWorld()");
    const int16_t height = static_cast<int16_t>(std::clamp(other->record.height, 0, 32767));
    const int16_t width = static_cast<int16_t>(std::clamp(other->record.width, 0, 32767));
    CopyRect(other, GEO_Rect{0, 0, height, width}, 0, 0);
}
