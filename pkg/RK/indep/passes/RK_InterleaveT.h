// One channel between planes and rows of four-channel values.
#ifndef RK_INTERLEAVET_H
#define RK_INTERLEAVET_H

#include <cstring>

#include "RK/indep/frame/RK.h"

// For T of uint8_t, uint16_t and float. Rows are told in bytes, which may be negative; offsets and sizes in
// values of a plane and pixels of a picture. An area without width or height is nothing. Source and
// destination must not overlap.

// Copies the area of `size` that begins at `src_offset` of a plane into channel `channel` (0 to 3) of pixels
// of four values. `dst` is the first of them; `dst_step.x` bytes lie between pixels and `dst_step.y` between
// rows: four values and the picture's rowbytes.
template <class T>
void RK_Interleave1to4(const T* src, RK_Long src_rowbytes, RK_Long channel, GEO_Vector2T<RK_Long> src_offset,
                       GEO_Vector2T<RK_Long> dst_step, GEO_Vector2T<RK_Long> size, T* dst) {
    const char* from = reinterpret_cast<const char*>(src + src_offset.x) + src_offset.y * src_rowbytes;
    char* to = reinterpret_cast<char*>(dst + channel);
    for (RK_Long y = 0; y < size.y; ++y, from += src_rowbytes, to += dst_step.y)
        for (RK_Long x = 0; x < size.x; ++x)
            std::memcpy(to + x * dst_step.x, from + x * static_cast<RK_Long>(sizeof(T)), sizeof(T));
}

// Copies channel `channel` of the pixels of four values in the area of `size` that begins at `src_offset` to
// `dst_offset` of a plane.
template <class T>
void RK_Deinterleave1(const T* src, RK_Long src_rowbytes, RK_Long channel, RK_Long dst_rowbytes,
                      GEO_Vector2T<RK_Long> src_offset, GEO_Vector2T<RK_Long> dst_offset,
                      GEO_Vector2T<RK_Long> size, T* dst) {
    constexpr RK_Long kPixel = 4 * sizeof(T);
    const char* from =
        reinterpret_cast<const char*>(src + 4 * src_offset.x + channel) + src_offset.y * src_rowbytes;
    char* to = reinterpret_cast<char*>(dst + dst_offset.x) + dst_offset.y * dst_rowbytes;
    for (RK_Long y = 0; y < size.y; ++y, from += src_rowbytes, to += dst_rowbytes)
        for (RK_Long x = 0; x < size.x; ++x)
            std::memcpy(to + x * static_cast<RK_Long>(sizeof(T)), from + x * kPixel, sizeof(T));
}

#define RK_INTERLEAVE_OF(prefix, T)                                                                          \
    prefix template RK_API void RK_Interleave1to4(const T*, RK_Long, RK_Long, GEO_Vector2T<RK_Long>,         \
                                                  GEO_Vector2T<RK_Long>, GEO_Vector2T<RK_Long>, T*);         \
    prefix template RK_API void RK_Deinterleave1(const T*, RK_Long, RK_Long, RK_Long, GEO_Vector2T<RK_Long>, \
                                                 GEO_Vector2T<RK_Long>, GEO_Vector2T<RK_Long>, T*);
RK_INTERLEAVE_OF(extern, uint8_t)
RK_INTERLEAVE_OF(extern, uint16_t)
RK_INTERLEAVE_OF(extern, float)

#endif
