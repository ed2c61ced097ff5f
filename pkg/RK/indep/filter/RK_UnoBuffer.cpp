#include "RK/indep/filter/RK_UnoBuffer.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "RK/indep/filter/RKp_UnoPass.h"
#include "RK/indep/filter/RKp_UnoRows.h"
#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_OverFuncs.h"

namespace {

// What the allocator is asked for; a size that the build cannot name becomes one that nobody has.
size_t storeBytes(int32_t width, int32_t height, int32_t depth) {
    const int64_t area = int64_t{width} * height;
    const int64_t bytes = depth == 0 ? 2 : depth == 1 ? 1 : depth / 8;
    if (area == 0 || bytes == 0) return 0;
    if ((area < 0) != (bytes < 0)) return SIZE_MAX;
    // Both signs are equal: a product of magnitudes.
    const uint64_t a = static_cast<uint64_t>(area < 0 ? -area : area);
    const uint64_t b = static_cast<uint64_t>(bytes < 0 ? -bytes : bytes);
    return a > uint64_t{SIZE_MAX} / b ? SIZE_MAX : static_cast<size_t>(a * b);
}

RK_Long make(int32_t width, int32_t height, int32_t depth, RK_UnoBuffer** out) {
    if (out == nullptr) return RKp_ReportBadParam(RKp_kSiteUno);
    *out = nullptr;
    void* place = KIT_AllocatePtr(sizeof(RK_UnoBuffer), RKp_Text(RK_kMsg_MaskMemory));
    if (place == nullptr) return RK_kOutOfMemory;
    const RK_Long error = RKp_AtBorder([&] { *out = new (place) RK_UnoBuffer(width, height, depth); });
    if (error != RK_kOK) KIT_FreePtr(place);
    return error;
}

// ---- Fills ----------------------------------------------------------------------------------------------

template <class Value>
void fillSpan(void* at, int64_t count, Value value) {
    if constexpr (sizeof(Value) == 1) {
        std::memset(at, value, static_cast<size_t>(count));
    } else {
        // The store may hold samples of another type.
        uint8_t* bytes = static_cast<uint8_t*>(at);
        for (int64_t i = 0; i < count; ++i)
            std::memcpy(bytes + static_cast<size_t>(i) * sizeof value, &value, sizeof value);
    }
}

struct Area {
    int32_t left, top, right, bottom;
};

template <class Value>
RK_Long fill(Value value, const Area* given, RK_UnoBuffer* buffer) {
    if (!RKp_CheckUno(buffer)) return RK_kBadParam;
    // A byte fits every buffer that has bytes of its own.
    const bool known =
        buffer->depth == 0 || buffer->depth == 1 || (buffer->depth > 0 && buffer->depth % 8 == 0);
    if (!known || (sizeof(Value) > 1 && static_cast<int32_t>(sizeof(Value)) * 8 > buffer->depth))
        return RK_kBadParam;
    if (!RKp_HasSamples(*buffer)) return RK_kOK;
    const Area area = given ? *given : Area{0, 0, buffer->width, buffer->height};
    const int64_t columns = int64_t{area.right} - area.left, rows = int64_t{area.bottom} - area.top;
    if (columns < 1 || rows < 1) return RK_kOK;
    const bool unbroken = columns == buffer->width && buffer->Rowbytes() == columns * int64_t{sizeof(Value)};
    const auto place = [&](int32_t y) {
        return buffer->Row<uint8_t>(y) +
               static_cast<ptrdiff_t>(area.left) * static_cast<ptrdiff_t>(sizeof(Value));
    };
    if (unbroken && area.left == 0)
        fillSpan(place(area.top), columns * rows, value);
    else
        for (int32_t y = area.top; y < area.bottom; ++y) fillSpan(place(y), columns, value);
    return RK_kOK;
}
template <class Value>
RK_Long fillRect(Value value, const GEO_Rect& rect, RK_UnoBuffer* buffer) {
    const Area area = {rect.left, rect.top, rect.right, rect.bottom};
    return fill(value, &area, buffer);
}

// ---- Inversion ------------------------------------------------------------------------------------------

template <class S>
RK_Long invert(const RK_ProgressInfo* progress, int32_t amount, double full, const RK_UnoBuffer& buffer) {
    // At most 2^15 times full: it fits.
    const auto k = static_cast<int32_t>(amount * (1.0 / 65536.0) * full + 0.5);
    return RKp_ForUnoRows(RKp_Slot<RKp_kSlot_IterateGeneric>(), progress, buffer.height,
                          [&](int32_t y) { RKp_MaskInvertAndFade(k, buffer.width, buffer.Row<S>(y)); });
}

template <class S>
void fade(float amount, float full, const RK_UnoBuffer& buffer) {
    const float scaled = amount * full;
    RKp_MaskFade(RKp_Truncate(scaled + 0.5f), int64_t{buffer.width} * buffer.height, buffer.Row<S>(0));
}

}  // namespace

// ---- Making ---------------------------------------------------------------------------------------------

RK_UnoBuffer::RK_UnoBuffer(int32_t wide, int32_t high, int32_t bits)
    : magic(RK_kUnoMagic),
      width(wide),
      height(high),
      reserved(0),
      pixels(KIT_AllocateHandle(storeBytes(wide, high, bits), RKp_Text(RK_kMsg_MaskMemory))),
      depth(bits) {
    if (pixels == nullptr) RKp_Throw(RK_kOutOfMemory);
}

RK_UnoBuffer::~RK_UnoBuffer() {
    RKp_CheckUno(this);
    KIT_FreeHandle(pixels);
    magic = 0;
}

RK_Long RK_NewUnoBuffer(int32_t width, int32_t height, RK_UnoBuffer** out) {
    return make(width, height, 8, out);
}
RK_Long RK_NewDeepUnoBuffer(int32_t width, int32_t height, RK_UnoBuffer** out) {
    return make(width, height, 16, out);
}

RK_Long RK_DisposeUnoBuffer(RK_UnoBuffer* buffer) {
    if (buffer == nullptr) return RK_kOK;
    const bool stored = buffer->pixels != nullptr && *buffer->pixels != nullptr;
    buffer->~RK_UnoBuffer();
    KIT_FreePtr(buffer);
    return stored ? RK_kOK : RK_kBadParam;
}

// ---- Filling --------------------------------------------------------------------------------------------

RK_Long RK_FillUnoBuffer(uint8_t value, RK_UnoBuffer* buffer) { return fill(value, nullptr, buffer); }
RK_Long RK_FillUnoBuffer(uint8_t value, const GEO_Rect& rect, RK_UnoBuffer* buffer) {
    return fillRect(value, rect, buffer);
}
RK_Long RK_FillDeepUnoBuffer(uint16_t value, RK_UnoBuffer* buffer) { return fill(value, nullptr, buffer); }
RK_Long RK_FillDeepUnoBuffer(uint16_t value, const GEO_Rect& rect, RK_UnoBuffer* buffer) {
    return fillRect(value, rect, buffer);
}
RK_Long RK_FillFloatUnoBuffer(float value, RK_UnoBuffer* buffer) { return fill(value, nullptr, buffer); }

// ---- Fading and inverting -------------------------------------------------------------------------------

RK_Long RK_InvertUnoBuffer(RK_ProgressInfo* progress, RK_UnoBuffer* buffer) {
    return RK_InvertAndFadeUnoBuffer(progress, 0x10000, buffer);
}

RK_Long RK_InvertAndFadeUnoBuffer(RK_ProgressInfo* progress, int32_t amount, RK_UnoBuffer* buffer) {
    if (!RKp_CheckUno(buffer)) return RK_kBadParam;
    if (buffer->depth != 8 && buffer->depth != 16) return buffer->depth == 32 ? RK_kOK : RK_kBadParam;
    if (!RKp_HasSamples(*buffer)) return RK_kOK;
    return buffer->depth == 8 ? invert<uint8_t>(progress, amount, 255.0, *buffer)
                              : invert<uint16_t>(progress, amount, 32768.0, *buffer);
}

RK_Long RK_FadeUnoBuffer(RK_ProgressInfo*, float amount, RK_UnoBuffer* buffer) {
    if (!RKp_CheckUno(buffer)) return RK_kBadParam;
    const bool samples = RKp_HasSamples(*buffer);
    switch (buffer->depth) {
        case 8:
            if (samples) fade<uint8_t>(amount, 255.0f, *buffer);
            return RK_kOK;
        case 16:
            if (samples) fade<uint16_t>(amount, 32768.0f, *buffer);
            return RK_kOK;
        case 32:
            if (samples) {
                float* row = buffer->Row<float>(0);
                const int64_t count = int64_t{buffer->width} * buffer->height;
                for (int64_t i = 0; i < count; ++i) row[i] *= amount;
            }
            return RK_kOK;
        default: return RK_kBadParam;
    }
}
