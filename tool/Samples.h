// How one sample of a picture file becomes a channel of a world, and back.
//
// S is a file's sample: uint8_t (0..255), uint16_t (0..65535) or float. C is a world's channel: uint8_t
// (0..255), uint16_t (0..32768) or float. Values keep their place in 0..1.
//
// A 16-bit file has twice the steps of a 16-bit world, so a plain nearest value there and back would move
// about half of its 8-bit steps (multiples of 257) by one. Those steps therefore go by the library's rule
// from 8 to 16 bits, both ways: an 8-bit picture and its 16-bit copy make the same world, and every such step
// comes back.
#ifndef TOOL_SAMPLES_H
#define TOOL_SAMPLES_H

#include <algorithm>
#include <cstdint>
#include <type_traits>

inline uint16_t World16OfByte(uint32_t c) { return static_cast<uint16_t>((c * 32768u + 128u) / 255u); }
inline uint8_t ByteOfWorld16(uint32_t v) { return static_cast<uint8_t>((v * 255u + 16384u) >> 15); }

inline uint16_t World16OfFile16(uint32_t s) {
    if (s % 257u == 0) return World16OfByte(s / 257u);
    return static_cast<uint16_t>((s * 32768u + 32767u) / 65535u);
}
inline uint16_t File16OfWorld16(uint32_t v) {
    const uint32_t c = ByteOfWorld16(v);
    if (World16OfByte(c) == v) return static_cast<uint16_t>(c * 257u);
    return static_cast<uint16_t>((v * 65535u + 16384u) >> 15);
}

// The nearest of 0..full; below 0 and NaN give 0, above 1 gives full.
template <class T>
T FromUnit(float x, float full) {
    const float v = x * full;
    if (!(v >= 0.0f)) return 0;
    return static_cast<T>(v > full ? full : v + 0.5f);
}

template <class C, class S>
C ToChannel(S s) {
    constexpr bool from8 = std::is_same_v<S, uint8_t>, from16 = std::is_same_v<S, uint16_t>;
    if constexpr (std::is_same_v<C, uint8_t>) {
        if constexpr (from8)
            return s;
        else if constexpr (from16)
            return static_cast<C>((uint32_t{s} + 128u) / 257u);
        else
            return FromUnit<C>(s, 255.0f);
    } else if constexpr (std::is_same_v<C, uint16_t>) {
        if constexpr (from8)
            return World16OfByte(s);
        else if constexpr (from16)
            return World16OfFile16(s);
        else
            return FromUnit<C>(s, 32768.0f);
    } else {
        if constexpr (from8)
            return static_cast<float>(s * 0.00392156862745098);
        else if constexpr (from16)
            return static_cast<float>(s) / 65535.0f;
        else
            return s;
    }
}

template <class S, class C>
S ToSample(C c) {
    constexpr bool from8 = std::is_same_v<C, uint8_t>, from16 = std::is_same_v<C, uint16_t>;
    if constexpr (from8) {
        if constexpr (std::is_same_v<S, uint8_t>)
            return c;
        else if constexpr (std::is_same_v<S, uint16_t>)
            return static_cast<S>(c * 257u);
        else
            return static_cast<float>(c * 0.00392156862745098);
    } else if constexpr (from16) {
        const uint32_t v = std::min<uint32_t>(c, 32768u);
        if constexpr (std::is_same_v<S, uint8_t>)
            return ByteOfWorld16(v);
        else if constexpr (std::is_same_v<S, uint16_t>)
            return File16OfWorld16(v);
        else
            return static_cast<float>(v) * (1.0f / 32768.0f);
    } else {
        if constexpr (std::is_same_v<S, uint8_t>)
            return FromUnit<S>(c, 255.0f);
        else if constexpr (std::is_same_v<S, uint16_t>)
            return FromUnit<S>(c, 65535.0f);
        else
            return c;
    }
}

#endif
