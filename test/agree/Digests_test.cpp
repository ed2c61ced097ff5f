// A fixed corpus of rendered cases, hashed and kept in test/digests.txt: every build, of either width and by
// any compiler, gives the same pixels.
//
// A line is a case's name and the FNV-1a hash, 64 bits, of its pixels' bytes row by row. After a wanted
// change:
//   RK_WRITE_DIGESTS=test/digests.txt rk_tests --gtest_filter=Digests.*
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <map>

#include "RK/indep/composite/RK_CompositeRect.h"
#include "RK/indep/composite/RK_TransferRect.h"
#include "RK/indep/frame/RK_OverFuncs.h"
#include "RK/indep/passes/RK_Fill.h"
#include "RK/indep/passes/RK_Premul.h"
#include "test/agree/Digests.h"
#include "test/plain/Compare.h"

namespace {

using digests::add;
using digests::depthName;
using digests::Digests;
using digests::Hash;

// Every mode without a mask and under a mask of each kind, with fields, rgb_only and opacities spread over
// them.
template <class P>
void addTransfers(Digests& digests) {
    static const float opacities[] = {1.0f, 0.5f, 0.75f, 0.999f, 0.25f, 1.0f};
    test::Picture<P> src(41, 23), dst(37, 29, 3), mask_picture(19, 17);
    src.fillRandom(1);
    dst.fillRandom(2);
    mask_picture.fillRandom(3);
    for (int mode = RK_kFirstMode; mode <= RK_kLastMode; ++mode) {
        if (mode == RK_Xfer_None) continue;
        for (int form = 0; form < 6; ++form) {
            const bool has_mask = form >= 1 && form <= 4;
            if (mode == RK_Xfer_MatteMix && !has_mask) continue;
            test::Picture<P> out(dst);
            const RK_LayerDef from = src.record();
            RK_LayerDef to = out.record();
            const RK_Mask mask{mask_picture.record(), 4, 6, static_cast<uint32_t>(form - 1)};
            const RK_CompositeModePlus how(mode, opacities[form], nullptr, form >= 4, 1000 + form);
            const RK_Long field = form == 3 ? 1 : form == 5 ? 2 : 0;
            const RK_Long error =
                RK_TransferRect(nullptr, nullptr, nullptr, field, nullptr, &from, &how, nullptr,
                                has_mask ? &mask.world : nullptr, form - 3, 2 - form, &to);
            EXPECT_EQ(error, 0) << test::modeName(mode);
            Hash hash;
            hash.picture(out);
            const std::string with = has_mask    ? "mask" + std::to_string(form - 1)
                                     : form == 0 ? "plain"
                                                 : "odd-field-rgb-only";
            add(digests, "transfer." + test::modeName(mode) + "." + depthName<P>() + "." + with, hash);
        }
    }
}

template <class P>
void addPixels(Digests& digests) {
    for (int mode = 0; mode <= RK_kLastMode; ++mode) {
        test::Random r(static_cast<uint32_t>(mode) + 10);
        Hash hash;
        for (int i = 0; i < 600; ++i) {
            const P source = test::pixel<P>(r);
            P out = test::pixel<P>(r);
            const RK_Channel<P> o1 = test::opacity<P>(r), o2 = test::opacity<P>(r);
            test::PixelTables<P>::two(mode)(&source, nullptr, o1, o2, &out);
            hash.pixels(&out, 1);
        }
        add(digests, "pixel." + test::modeName(mode) + "." + depthName<P>(), hash);
    }
}

template <class P>
void addScans(Digests& digests) {
    static const char* const names[] = {"premultiply.black", "unmultiply.black", "premultiply.white",
                                        "unmultiply.white",  "premultiply.grey", "unmultiply.grey"};
    constexpr int first_slot = sizeof(P) == 4 ? 35 : sizeof(P) == 8 ? 72 : 106;
    test::Picture<P> src(1021, 1), dst(1021, 1);
    src.fillRandom(4);
    for (int k = 0; k < 6; ++k) {
        auto* const scan =
            reinterpret_cast<RK_Long (*)(RK_Long, const P*, P*)>(RKp_G_OverFuncs[first_slot + k]);
        for (const bool in_place : {false, true}) {
            dst.fillRandom(5);
            scan(1021, in_place ? nullptr : src.row(0), dst.row(0));
            Hash hash;
            hash.picture(dst);
            add(digests,
                std::string("scan.") + names[k] + "." + depthName<P>() +
                    (in_place ? ".in-place" : ".copying"),
                hash);
        }
    }
    auto* const merge = reinterpret_cast<RK_Long (*)(RK_Long, const P*, RK_Channel<P>, const P*, P*)>(
        RKp_G_OverFuncs[first_slot + 6]);
    for (const bool masked : {false, true}) {
        dst.fillRandom(6);
        merge(1000, src.row(0), static_cast<RK_Channel<P>>(test::kFull<P> / 2),
              masked ? src.row(0) + 20 : nullptr, dst.row(0));
        Hash hash;
        hash.picture(dst);
        add(digests, std::string("scan.alpha-merge.") + depthName<P>() + (masked ? ".masked" : ".plain"),
            hash);
    }
}

template <class P>
void addFills(Digests& digests) {
    test::Picture<P> picture(64, 48);
    picture.fillRandom(7);
    RK_LayerDef world = picture.record();
    test::Random r(8);
    for (int i = 0; i < 40; ++i) {
        const auto x = static_cast<int16_t>(r.below(60)), y = static_cast<int16_t>(r.below(44));
        const GEO_Rect rect{y, x, static_cast<int16_t>(y + 5), static_cast<int16_t>(x + 7)};
        const RK_Pixel8 c8 = test::pixel<RK_Pixel8>(r);
        const RK_Pixel16 c16 = test::pixel<RK_Pixel16>(r);
        const RK_PixelFloat real = test::pixel<RK_PixelFloat>(r);
        EXPECT_EQ(RK_Fill(nullptr, &c8, &rect, &world), 0);
        const GEO_Rect right{y, static_cast<int16_t>(x + 2), rect.bottom, rect.right};
        EXPECT_EQ(RK_Fill16(nullptr, &c16, &right, &world), 0);
        const GEO_Rect end{y, static_cast<int16_t>(x + 4), rect.bottom, rect.right};
        EXPECT_EQ(RK_FillFloat(nullptr, &real, &end, &world), 0);
    }
    Hash hash;
    hash.picture(picture);
    add(digests, "fill." + depthName<P>(), hash);
}

void addCompositeRects(Digests& digests) {
    test::Picture<RK_Pixel8> src(41, 43), dst(37, 49);
    src.fillRandom(9);
    const RK_LayerDef from = src.record();
    for (const uint8_t opacity : {uint8_t{255}, uint8_t{128}, uint8_t{1}})
        for (const bool premultiplied : {false, true}) {
            dst.fillRandom(10);
            RK_LayerDef to = dst.record();
            auto* const composite =
                premultiplied ? RK_CompositeRectBest_Premul : RK_CompositeRectBest_Straight;
            EXPECT_EQ(composite(nullptr, nullptr, opacity, &from, -2, 3, 0, nullptr, &to), 0);
            Hash hash;
            hash.picture(dst);
            add(digests,
                std::string("composite-rect.") + (premultiplied ? "premul." : "straight.") +
                    std::to_string(opacity),
                hash);
        }
}

Digests render() {
    Digests digests;
    addTransfers<RK_Pixel8>(digests);
    addTransfers<RK_Pixel16>(digests);
    addTransfers<RK_PixelFloat>(digests);
    addPixels<RK_Pixel8>(digests);
    addPixels<RK_Pixel16>(digests);
    addPixels<RK_PixelFloat>(digests);
    addScans<RK_Pixel8>(digests);
    addScans<RK_Pixel16>(digests);
    addScans<RK_PixelFloat>(digests);
    addFills<RK_Pixel8>(digests);
    addFills<RK_Pixel16>(digests);
    addFills<RK_PixelFloat>(digests);
    addCompositeRects(digests);
    digests::addSampling(digests);
    digests::addMasks(digests);
    return digests;
}

std::string hex(uint64_t value) {
    char text[20];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(value));
    return text;
}

TEST(Digests, EveryBuildRendersTheKeptCorpus) {
    const Digests digests = render();
    EXPECT_GE(digests.size(), 500u);
    if (const char* path = std::getenv("RK_WRITE_DIGESTS")) {
        std::ofstream out(path);
        for (const auto& [name, value] : digests) out << name << ' ' << hex(value) << '\n';
        ASSERT_TRUE(out.good()) << path;
        return;
    }
    std::ifstream in(RK_TEST_SOURCE_DIR "/test/digests.txt");
    ASSERT_TRUE(in.good()) << "test/digests.txt cannot be read";
    std::map<std::string, std::string> kept;
    for (std::string name, value; in >> name >> value;) kept[name] = value;
    EXPECT_EQ(kept.size(), digests.size());
    for (const auto& [name, value] : digests) EXPECT_EQ(hex(value), kept[name]) << name;
}

}  // namespace
