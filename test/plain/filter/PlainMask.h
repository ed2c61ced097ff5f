// Single-channel masks once more: fills, fades, accumulation, transfer, conversion. Every
// operation asks of each sample of the destination by itself what becomes of it.
#ifndef TEST_PLAIN_FILTER_MASK_H
#define TEST_PLAIN_FILTER_MASK_H

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "test/plain/PlainArithmetic.h"

namespace plain {

// Samples in rows without padding, depth 8, 16 or 32.
struct Mask {
    int32_t width, height, depth;
    std::vector<uint8_t> bytes;

    Mask(int32_t w, int32_t h, int32_t bits)
        : width(w),
          height(h),
          depth(bits),
          bytes(static_cast<size_t>(w) * static_cast<size_t>(h) * static_cast<size_t>(bits / 8)) {}
    size_t rowBytes() const { return static_cast<size_t>(width) * static_cast<size_t>(depth / 8); }
    // Column x of row y counted in C, whatever the depth.
    template <class C>
    C get(int64_t x, int64_t y) const {
        C c;
        std::memcpy(&c, &bytes[static_cast<size_t>(y) * rowBytes() + static_cast<size_t>(x) * sizeof(C)],
                    sizeof c);
        return c;
    }
    template <class C>
    void set(int64_t x, int64_t y, C c) {
        std::memcpy(&bytes[static_cast<size_t>(y) * rowBytes() + static_cast<size_t>(x) * sizeof(C)], &c,
                    sizeof c);
    }
};

// A cursor in a table of noise: it moves, around the end too, and then reads.
struct Noise {
    const uint32_t* begin;
    const uint32_t* cursor;
    const uint32_t* end;
    uint32_t draw() {
        if (++cursor == end) cursor = begin;
        return *cursor;
    }
};

// The rectangle lies inside the mask.
template <class C>
void fillMask(C value, const GEO_Rect& rect, Mask& mask) {
    for (int y = rect.top; y < rect.bottom; ++y)
        for (int x = rect.left; x < rect.right; ++x) mask.set(x, y, value);
}

template <class C>
struct SampleDepth;
template <>
struct SampleDepth<uint8_t> {
    using D = Int8;
};
template <>
struct SampleDepth<uint16_t> {
    using D = Int16;
};
template <>
struct SampleDepth<float> {
    using D = Real;
};

// Replaces the first `rows` rows by change(sample).
template <class C, class Change>
void changeRows(Mask& mask, int64_t rows, Change change) {
    for (int64_t y = 0; y < std::min<int64_t>(rows, mask.height); ++y)
        for (int64_t x = 0; x < mask.width; ++x) mask.set(x, y, static_cast<C>(change(mask.get<C>(x, y))));
}
template <class C>
void invertAndFadeInteger(int32_t amount, Mask& mask, int64_t rows) {
    using D = typename SampleDepth<C>::D;
    const double full = static_cast<double>(D::W);
    const int64_t k = static_cast<int64_t>(amount * (1.0 / 65536.0) * full + 0.5);
    changeRows<C>(mask, rows, [&](int64_t s) { return D::keep(D::mul(D::W - s, k)); });
}
// `amount` in 16.16; floats stay as they are.
inline void invertAndFade(int32_t amount, Mask& mask, int64_t rows = INT64_MAX) {
    if (mask.depth == 8) invertAndFadeInteger<uint8_t>(amount, mask, rows);
    if (mask.depth == 16) invertAndFadeInteger<uint16_t>(amount, mask, rows);
}
inline void fade(float amount, Mask& mask) {
    const int64_t k8 = toInt(255.0f * amount + 0.5f), k16 = toInt(32768.0f * amount + 0.5f);
    if (mask.depth == 8)
        changeRows<uint8_t>(mask, INT64_MAX, [&](int64_t s) { return Int8::keep(Int8::mul(s, k8)); });
    if (mask.depth == 16)
        changeRows<uint16_t>(mask, INT64_MAX, [&](int64_t s) { return Int16::keep(Int16::mul(s, k16)); });
    if (mask.depth == 32) changeRows<float>(mask, INT64_MAX, [&](float s) { return s * amount; });
}

// ---- Combining two masks --------------------------------------------------------------------------------

// Source s and destination d under a mode; `noise` is drawn from for mode -1 alone.
template <class D>
typename D::N combined(int mode, typename D::N s, typename D::N d, Noise& noise) {
    using N = typename D::N;
    const N full = D::W, not_s = full - s, not_d = full - d;
    switch (mode) {
        case -1:
            if constexpr (D::kReal) {
                return full - not_s * not_d;
            } else if constexpr (D::W == 255) {
                const N u = not_s * not_d + (noise.draw() & 0xFF);
                return full - ((u + (u >> 8)) >> 8);
            } else {
                return full - ((not_s * not_d + (noise.draw() & 0x7FFF)) >> 15);
            }
        case 2: return D::mul(not_s, d);
        case 3: return D::mul(s, d);
        case 4: return s > d ? s : d;
        case 5: return s < d ? s : d;
        case 6: return std::abs(s - d);
        case 7: return s + d < full ? s + d : full;
        default: return full - D::mul(not_s, not_d);
    }
}
// The same at a share of the source, up to a limit, both in the depth's scale.
template <class D>
typename D::N weighted(int mode, typename D::N s, typename D::N d, typename D::N limit, typename D::N opacity,
                       Noise& noise) {
    using N = typename D::N;
    const N m = D::mul(s, opacity);
    if (mode != -1) return std::min<N>(D::W, d + m);
    if constexpr (D::W == 255) {
        const N u = m * (limit - d) + (noise.draw() & 0xFF);
        return d < limit ? d + ((u + (u >> 8)) >> 8) : d;
    } else {
        return d < limit ? d + ((m * (limit - d)) >> 15) : d;
    }
}

// Where two masks meet: `source` of the source lies at `source` moved by dx, dy in the destination.
struct Meeting {
    int64_t top, left, bottom, right;  // in the destination
    int64_t dx, dy;                    // from source to destination
    bool empty() const { return top >= bottom || left >= right; }
    bool holds(int64_t x, int64_t y) const { return y >= top && y < bottom && x >= left && x < right; }
};
inline Meeting meeting(const GEO_Rect& rect, Point point, const Mask& a, const Mask& b, const Mask& dst) {
    Meeting m{rect.top, rect.left, rect.bottom, rect.right, point.h - rect.left, point.v - rect.top};
    m.top = std::max<int64_t>({m.top, 0, -m.dy});
    m.left = std::max<int64_t>({m.left, 0, -m.dx});
    m.bottom = std::min<int64_t>({m.bottom, a.height, b.height, dst.height - m.dy});
    m.right = std::min<int64_t>({m.right, a.width, b.width, dst.width - m.dx});
    m.top += m.dy, m.bottom += m.dy, m.left += m.dx, m.right += m.dx;
    return m;
}
// Stores value(x, y) in the meeting; modes 3 and 5 clear all around it. A pass that ends after `rows` rows
// has not come to what lies below the last of them.
template <class C, class Value>
void storeMeeting(int mode, const Meeting& m, Mask& dst, int64_t rows, Value value) {
    if (m.empty()) return;
    const int64_t end = rows < m.bottom - m.top ? m.top + rows : dst.height;
    for (int64_t y = 0; y < end; ++y)
        for (int64_t x = 0; x < dst.width; ++x) {
            if (m.holds(x, y))
                dst.set(x, y, static_cast<C>(value(x, y)));
            else if (mode == 3 || mode == 5)
                dst.set(x, y, C(0));
        }
}

// 8 into 8, 16 into 16, 8 into 16 in mode 7; otherwise 3.
inline RK_Long accumulate(const Mask& src, int mode, float limit, float opacity, const GEO_Rect& rect,
                          Point point, Mask& dst, Noise& noise, int64_t rows = INT64_MAX) {
    const Meeting m = meeting(rect, point, src, src, dst);
    const float full = src.depth == 16 ? 32768.0f : 255.0f;
    const int64_t L = toInt(limit * full + 0.5f), O = toInt(opacity * full + 0.5f),
                  F = static_cast<int64_t>(full);
    const bool whole = L == F && O == F;
    if (src.depth == 8 && dst.depth == 8) {
        storeMeeting<uint8_t>(mode, m, dst, rows, [&](int64_t x, int64_t y) {
            const int64_t s = src.get<uint8_t>(x - m.dx, y - m.dy), d = dst.get<uint8_t>(x, y);
            return whole ? combined<Int8>(mode, s, d, noise) : weighted<Int8>(mode, s, d, L, O, noise);
        });
    } else if (src.depth == 16 && dst.depth == 16) {
        storeMeeting<uint16_t>(mode, m, dst, rows, [&](int64_t x, int64_t y) {
            const int64_t s = src.get<uint16_t>(x - m.dx, y - m.dy), d = dst.get<uint16_t>(x, y);
            return whole ? combined<Int16>(mode, s, d, noise) : weighted<Int16>(mode, s, d, L, O, noise);
        });
    } else if (src.depth == 8 && dst.depth == 16 && mode == 7) {
        storeMeeting<uint16_t>(mode, m, dst, rows, [&](int64_t x, int64_t y) {
            const int64_t s = src.get<uint8_t>(x - m.dx, y - m.dy), part = whole ? s : Int8::mul(s, O);
            return std::min<int64_t>(32768, dst.get<uint16_t>(x, y) + c8to16(static_cast<uint8_t>(part)));
        });
    } else {
        return 3;
    }
    return 0;
}
// Three equal depths; otherwise 3.
inline RK_Long transfer(const Mask& a, const Mask& b, int mode, const GEO_Rect& rect, Point point, Mask& dst,
                        Noise& noise, int64_t rows = INT64_MAX) {
    if (a.depth != dst.depth || b.depth != dst.depth) return 3;
    const Meeting m = meeting(rect, point, a, b, dst);
    const auto run = [&](auto sample) {
        using C = decltype(sample);
        storeMeeting<C>(mode, m, dst, rows, [&](int64_t x, int64_t y) {
            return combined<typename SampleDepth<C>::D>(mode, a.get<C>(x - m.dx, y - m.dy),
                                                        b.get<C>(x - m.dx, y - m.dy), noise);
        });
    };
    if (dst.depth == 8) run(uint8_t{});
    if (dst.depth == 16) run(uint16_t{});
    if (dst.depth == 32) run(float{});
    return 0;
}

// From 16 bits, divided; from other depths, and to others, nothing.
inline void convertMask(const Mask& src, const GEO_Rect& rect, uint16_t divisor, Mask& dst,
                        int64_t rows = INT64_MAX) {
    if (src.depth != 16 || divisor == 0) return;
    const Meeting m = meeting(rect, {rect.top, rect.left}, src, src, dst);
    for (int64_t y = m.top; y < std::min(m.bottom, rows < INT64_MAX ? m.top + rows : rows); ++y)
        for (int64_t x = m.left; x < m.right; ++x) {
            const int64_t v = src.get<uint16_t>(x, y) / divisor;
            if (dst.depth == 8) dst.set(x, y, static_cast<uint8_t>((v * 255 + 16384) >> 15));
            if (dst.depth == 16) dst.set(x, y, static_cast<uint16_t>(v));
            if (dst.depth == 32) dst.set(x, y, static_cast<float>(v) * 3.0517578e-5f);
        }
}

}  // namespace plain

#endif
