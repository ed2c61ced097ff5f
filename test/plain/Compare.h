// What the comparisons of the library with its plain twins share: amounts, pools of pixels, equality,
// printing.
#ifndef TEST_PLAIN_COMPARE_H
#define TEST_PLAIN_COMPARE_H

#include <cmath>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "RK/host/KIT.h"
#include "RK/indep/composite/RK_Xfer.h"
#include "test/Pixels.h"

namespace test {

// How many cases to run of `full`: all of them where the processor record has every vector form, a tenth in
// the runs beside it, and few under a sanitizer. RK_TEST_FULL in the environment asks for all of them
// anywhere.
inline int amount(int full) {
#if defined(__SANITIZE_ADDRESS__)
    constexpr int kShare = 20;
#else
    constexpr int kShare = 1;
#endif
    if (std::getenv("RK_TEST_FULL") != nullptr) return full;
    const bool whole_record = KIT_G_CPU_DataP->has_sse2 != 0 && KIT_G_CPU_DataP->has_ssse3 != 0;
    return full / kShare / (whole_record ? 1 : 10) + 1;
}

inline bool sameChannel(uint8_t a, uint8_t b) { return a == b; }
inline bool sameChannel(uint16_t a, uint16_t b) { return a == b; }
// Equal bits, but any NaN is as good as any other: which payload survives a sum depends on operand order.
inline bool sameChannel(float a, float b) {
    return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}
template <class P>
bool samePixel(const P& a, const P& b) {
    return sameChannel(a.alpha, b.alpha) && sameChannel(a.red, b.red) && sameChannel(a.green, b.green) &&
           sameChannel(a.blue, b.blue);
}
// The first pixel that differs, or -1.
template <class P>
int firstDifference(const P* a, const P* b, int count) {
    if (std::memcmp(a, b, sizeof(P) * static_cast<size_t>(count)) == 0) return -1;
    for (int i = 0; i < count; ++i)
        if (!samePixel(a[i], b[i])) return i;
    return -1;
}

template <class C>
std::string showChannel(C c) {
    std::ostringstream out;
    if constexpr (sizeof(C) == 4)
        out << std::hexfloat << c << std::defaultfloat << " (" << c << ")";
    else
        out << int{c};
    return out.str();
}
template <class P>
std::string show(const P& p) {
    return "(" + showChannel(p.alpha) + "; " + showChannel(p.red) + ", " + showChannel(p.green) + ", " +
           showChannel(p.blue) + ")";
}

inline std::string modeName(int mode) {
    static const char* const names[] = {
#define RK_MODE(number, name, mode_class, flag, does) #name,
#include "RK/indep/composite/RKp_Modes.def"
    };
    return mode >= RK_kFirstMode && mode <= RK_kLastMode ? names[mode - RK_kFirstMode] : std::to_string(mode);
}

// Full, and opacities worth trying, a whole step above full among them where the channel can hold one.
template <class P>
constexpr RK_Channel<P> kFull = sizeof(P) == 4   ? RK_Channel<P>(255)
                                : sizeof(P) == 8 ? RK_Channel<P>(32768)
                                                 : RK_Channel<P>(1);
template <class P>
RK_Channel<P> opacity(Random& r) {
    using C = RK_Channel<P>;
    const C full = kFull<P>;
    switch (r.below(8)) {
        case 0:
        case 1:
        case 2:
            return full;
        case 3:
            return 0;
        case 4:
            return sizeof(P) == 4 ? C(254) : sizeof(P) == 8 ? C(33096) : C(1.01f);
        case 5:
            return static_cast<C>(full / 2);
        default:
            return alphaChannel(r, C{});
    }
}

// A pixel whose channels may be NaN, infinite, denormal or negative at float; as pixel() at the other depths.
template <class P>
P wildPixel(Random& r) {
    P p = pixel<P>(r);
    if constexpr (sizeof(P) == 16) {
        if (r.below(2) == 0) p.alpha = channel(r, 0.0f, true);
        p.red = channel(r, 0.0f, true);
        p.green = channel(r, 0.0f, true);
        p.blue = channel(r, 0.0f, true);
    }
    return p;
}

// Many pixels, made once per depth and kept; one in eight is wild. Sources, destinations and mattes are taken
// from it at different places, so that every mode sees other pairs.
template <class P>
const std::vector<P>& pool() {
    static const std::vector<P> pixels = [] {
        std::vector<P> v(static_cast<size_t>(amount(1 << 20)) + 4096);
        Random r(20 + sizeof(P));
        for (P& p : v) p = r.below(8) == 0 ? wildPixel<P>(r) : pixel<P>(r);
        return v;
    }();
    return pixels;
}

template <class P>
struct PixelTables;
template <>
struct PixelTables<RK_Pixel8> {
    static auto plain(int m) { return RKp_G_Xfer1_table8[m]; }
    static auto one(int m) { return RKp_G_Xfer1_Opacity_table8[m]; }
    static auto two(int m) { return RKp_G_Xfer1_Opacity2_table8[m]; }
};
template <>
struct PixelTables<RK_Pixel16> {
    static auto plain(int m) { return RKp_G_Xfer1_table16[m]; }
    static auto one(int m) { return RKp_G_Xfer1_Opacity_table16[m]; }
    static auto two(int m) { return RKp_G_Xfer1_Opacity2_table16[m]; }
};
template <>
struct PixelTables<RK_PixelFloat> {
    static auto plain(int m) { return RKp_G_Xfer1_tableF[m]; }
    static auto one(int m) { return RKp_G_Xfer1_Opacity_tableF[m]; }
    static auto two(int m) { return RKp_G_Xfer1_Opacity2_tableF[m]; }
};

}  // namespace test

#endif
