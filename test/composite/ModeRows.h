// Shorthands over the modes: a row or a pixel under a mode, and pixels as text.
#ifndef TEST_MODE_ROWS_H
#define TEST_MODE_ROWS_H

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "RK/indep/composite/RK_BlendPipeline.h"
#include "RK/indep/composite/RK_Xfer.h"
#include "RK/indep/frame/RKp_Depth.h"
#include "refhost/RefHost.h"
#include "test/Pixels.h"

namespace test {

template <class P>
constexpr RK_Channel<P> kFull = static_cast<RK_Channel<P>>(RKp_Depth<P>::kFull);

template <class P>
std::string text(const P& p) {
    char line[128];
    std::snprintf(line, sizeof line, "(%.9g, %.9g, %.9g, %.9g)", double(p.alpha), double(p.red),
                  double(p.green), double(p.blue));
    return line;
}

struct ModeName {
    int32_t number;
    const char* name;
    RK_ModeClass mode_class;
};
// The 39 modes that have code.
inline const std::vector<ModeName>& modes() {
    static const std::vector<ModeName> list = [] {
        std::vector<ModeName> all;
        for (int32_t n = RK_kFirstMode; n <= RK_kLastMode; ++n) {
            RK_ModeInfo info;
            if (RK_GetModeInfo(n, &info) == 0 && info.mode_class != RK_kModeRefused)
                all.push_back({n, info.name, info.mode_class});
        }
        return all;
    }();
    return list;
}

template <class P>
RK_BlendingMode<P> blending(int32_t xfer, RK_Channel<P> opacity = kFull<P>, bool rgb_only = false,
                            int32_t seed = 0) {
    return {xfer, seed, opacity, rgb_only};
}

template <class P>
RK_RowFunc<P>* rowOf(int32_t xfer, bool has_matte = false, bool linear = false) {
    RK_InnerBlendingFunc<P> f = {nullptr};
    RK_Long (*const lookups[4])(RK_Long, RK_InnerBlendingFunc<P>*) = {
        RK_GetInnerBlendingFunc<P, false, false>, RK_GetInnerBlendingFunc<P, false, true>,
        RK_GetInnerBlendingFunc<P, true, false>, RK_GetInnerBlendingFunc<P, true, true>};
    EXPECT_EQ(lookups[2 * has_matte + linear](xfer, &f), 0);
    return f.func;
}

// One pixel through the mode's row function alone.
template <class P>
P rowPixel(RK_BlendingMode<P> mode, P s, P d, const P* matte = nullptr) {
    RK_BlendModeDescriptor<P> plan(mode, matte != nullptr, nullptr);
    EXPECT_EQ(plan.mode_func(1, &plan, nullptr, &s, matte, &d), 0);
    return d;
}
// A row, or one pixel, through the whole pipeline.
template <class P>
RK_Long compositeRow(RK_BlendingMode<P> mode, const std::vector<P>& s, const P* matte, std::vector<P>& d) {
    RK_BlendModeDescriptor<P> plan(mode, matte != nullptr, nullptr);
    std::vector<RK_Channel<P>> alpha(d.size());
    return RK_BlendPipeline<P>(nullptr, RK_Long(d.size()), &plan, s.data(), matte, alpha.data(), d.data());
}
template <class P>
P composite(RK_BlendingMode<P> mode, P s, P d, const P* matte = nullptr) {
    std::vector<P> row(1, d);
    EXPECT_EQ(compositeRow(mode, std::vector<P>(1, s), matte, row), 0);
    return row[0];
}
template <class P>
P composite(int32_t xfer, P s, P d) {
    return composite(blending<P>(xfer), s, d);
}

// The nine tables, by depth.
template <class P>
struct PixelTables;
template <>
struct PixelTables<RK_Pixel8> {
    static constexpr auto& plain = RKp_G_Xfer1_table8;
    static constexpr auto& opacity = RKp_G_Xfer1_Opacity_table8;
    static constexpr auto& opacity2 = RKp_G_Xfer1_Opacity2_table8;
};
template <>
struct PixelTables<RK_Pixel16> {
    static constexpr auto& plain = RKp_G_Xfer1_table16;
    static constexpr auto& opacity = RKp_G_Xfer1_Opacity_table16;
    static constexpr auto& opacity2 = RKp_G_Xfer1_Opacity2_table16;
};
template <>
struct PixelTables<RK_PixelFloat> {
    static constexpr auto& plain = RKp_G_Xfer1_tableF;
    static constexpr auto& opacity = RKp_G_Xfer1_Opacity_tableF;
    static constexpr auto& opacity2 = RKp_G_Xfer1_Opacity2_tableF;
};

// One pixel through the tables, with no, one or two opacities.
template <class P>
P alone(int32_t xfer, P s, P d) {
    PixelTables<P>::plain[xfer](&s, nullptr, &d);
    return d;
}
template <class P>
P alone(int32_t xfer, P s, P d, RK_Channel<P> opacity) {
    PixelTables<P>::opacity[xfer](&s, nullptr, opacity, &d);
    return d;
}
template <class P>
P alone(int32_t xfer, P s, P d, RK_Channel<P> opacity1, RK_Channel<P> opacity2) {
    PixelTables<P>::opacity2[xfer](&s, nullptr, opacity1, opacity2, &d);
    return d;
}

// FNV-1a over bytes, to compare builds with one another.
inline uint64_t digest(const void* data, size_t bytes, uint64_t h = 0xcbf29ce484222325u) {
    const uint8_t* p = static_cast<const uint8_t*>(data);
    for (size_t i = 0; i < bytes; ++i) h = (h ^ p[i]) * 0x100000001b3u;
    return h;
}

// The three depths as typed tests run over them.
using Depths = ::testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;

}  // namespace test

#endif
