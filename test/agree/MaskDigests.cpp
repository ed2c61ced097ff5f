// The kept cases of masks: modes, fades, conversion, merges, blurred lines, track matte rows.
#include <memory>
#include <vector>

#include "RK/indep/composite/RK_TrackMatte.h"
#include "RK/indep/filter/RK_MergeMaskAlpha.h"
#include "RK/indep/filter/RK_UnoBlur.h"
#include "RK/indep/filter/RKp_UnoRows.h"
#include "test/agree/Digests.h"
#include "test/filter/Masks.h"

namespace digests {

namespace {

using test::Mask;

template <class S>
std::string depthOf() {
    return sizeof(S) == 1 ? "8" : sizeof(S) == 2 ? "16" : "float";
}
template <class S>
void add(Digests& digests, const std::string& name, const Mask<S>& mask) {
    Hash hash;
    for (const S s : mask.samples()) hash.channel(s);
    add(digests, "mask." + name, hash);
}

// ---- Modes ----------------------------------------------------------------------------------------------

template <class S>
void addModes(Digests& digests) {
    const GEO_Rect rect = {2, 1, 40, 66};
    const Point point = {3, 5};
    for (int32_t mode = 1; mode <= 7; ++mode) {
        const std::string tail = depthOf<S>() + "." + std::to_string(mode);
        const Mask<S> a(71, 43, 1);
        if constexpr (sizeof(S) < 4) {
            Mask<S> plain(77, 45, 2), weighted(77, 45, 2);
            EXPECT_EQ(0, RK_AccumulateUnoBuffers(nullptr, &a, mode, rect, point, &plain));
            EXPECT_EQ(0, RK_AccumulateUnoBuffers(nullptr, &a, mode, 0.9f, 0.6f, rect, point, &weighted));
            add(digests, "accumulate." + tail, plain);
            add(digests, "weighted." + tail, weighted);
        }
        const Mask<S> b(70, 47, 3);
        Mask<S> out(77, 45, 4);
        EXPECT_EQ(0, RK_TransferUnoBuffers(nullptr, &a, &b, mode, rect, point, &out));
        add(digests, "transfer." + tail, out);
    }
}

// From words of its own, whatever noise the package holds.
template <class S>
void addDither(Digests& digests) {
    test::Random r(5);
    std::vector<uint32_t> words(1009);
    for (uint32_t& word : words) word = r.next();
    RKp_NoiseTable noise = {words.data(), words.data() + 100, words.data() + words.size()};
    Mask<S> a(70, 40, 6), plain(70, 40, 7), weighted(70, 40, 8);
    for (int32_t y = 0; y < 40; ++y) {
        RKp_MaskAccumulate<S>(&noise, -1, 70, &a.at(0, y), &plain.at(0, y));
        const auto most = static_cast<int32_t>(test::kFullSample<S>);
        RKp_MaskAccumulateWeighted<S>(&noise, -1, most * 3 / 4, most / 2, 70, &a.at(0, y),
                                      &weighted.at(0, y));
    }
    add(digests, "dither." + depthOf<S>(), plain);
    add(digests, "dither.weighted." + depthOf<S>(), weighted);
}

// ---- One mask -------------------------------------------------------------------------------------------

template <class S>
void addChanges(Digests& digests) {
    Mask<S> faded(61, 33, 9), inverted(61, 33, 9);
    EXPECT_EQ(0, RK_FadeUnoBuffer(nullptr, 0.37f, &faded));
    add(digests, "fade." + depthOf<S>(), faded);
    EXPECT_EQ(0, RK_InvertAndFadeUnoBuffer(nullptr, 0xB123, &inverted));
    add(digests, "invert." + depthOf<S>(), inverted);
    for (const uint16_t divisor : {uint16_t{1}, uint16_t{4}, uint16_t{7}}) {
        Mask<uint16_t> deep(61, 33, 10);
        Mask<S> out(61, 33);
        EXPECT_EQ(0, RK_ConvertDeepUnoBuffer(nullptr, &deep, deep.rect(), divisor, &out));
        add(digests, "convert." + depthOf<S>() + ".by-" + std::to_string(divisor), out);
    }
}

template <class S>
using Scan = RK_Long(int32_t, RK_EffectRef, int32_t, int32_t, int32_t, const S*, S*);
template <class S>
void addBlurs(Digests& digests, const std::string& name, Scan<S>* scan, int32_t mode) {
    for (const int32_t radius : {0x4000, 0x18000, 0x2B333, 0x64000, 0x128000}) {
        Mask<S> mask(300, 3, 11), out(340, 3);
        for (int32_t y = 0; y < 3; ++y)
            EXPECT_EQ(0, scan(mode, nullptr, 12 * y, 300 - 7 * y, radius, &mask.at(0, y), &out.at(0, y)));
        add(digests, name + "." + depthOf<S>() + "." + std::to_string(radius), out);
    }
}

// ---- Pixels ---------------------------------------------------------------------------------------------

template <class M, class P>
void addMerge(Digests& digests) {
    Mask<M> mask(31, 19, 12);
    test::Picture<P> picture(40, 27);
    picture.fillRandom(13);
    RK_LayerDef record = picture.record();
    const std::unique_ptr<RK_World> world(RK_World::NewReference(&record));
    const GEO_Rect area = {1, 2, 26, 38};
    RK_MergeMaskAlpha(nullptr, 5, 4, &area, &mask, nullptr, world.get());
    Hash hash;
    hash.picture(picture);
    add(digests, "mask.merge." + depthOf<M>() + "." + depthName<P>(), hash);
}

template <class P>
void addMattes(Digests& digests) {
    for (RK_Long kind = 0; kind < 4; ++kind) {
        test::Picture<P> matte(50, 1), out(64, 1);
        matte.fillRandom(14);
        out.fillRandom(15);
        EXPECT_EQ(0, RK_PrepTrackMatteUniv(64, matte.row(0), 5, 50, kind, sizeof(P) == 8, out.row(0)));
        Hash hash;
        hash.picture(out);
        add(digests, "matte-row." + depthName<P>() + "." + std::to_string(kind), hash);
    }
}

}  // namespace

void addMasks(Digests& digests) {
    addModes<uint8_t>(digests);
    addModes<uint16_t>(digests);
    addModes<float>(digests);
    addDither<uint8_t>(digests);
    addDither<uint16_t>(digests);
    addChanges<uint8_t>(digests);
    addChanges<uint16_t>(digests);
    addChanges<float>(digests);
    addBlurs<uint8_t>(digests, "gauss", RK_GBlurUnoScan, 0);
    addBlurs<uint16_t>(digests, "gauss", RK_GBlurDeepUnoScan, 0);
    for (const int32_t mode : {0, 1, 2}) {
        addBlurs<uint8_t>(digests, "box" + std::to_string(mode), RK_BoxBlurUnoScan, mode);
        addBlurs<uint16_t>(digests, "box" + std::to_string(mode), RK_BoxBlurDeepUnoScan, mode);
    }
    addMerge<uint8_t, RK_Pixel8>(digests);
    addMerge<uint8_t, RK_Pixel16>(digests);
    addMerge<uint16_t, RK_Pixel16>(digests);
    addMerge<uint16_t, RK_PixelFloat>(digests);
    addMerge<uint8_t, RK_PixelFloat>(digests);
    addMattes<RK_Pixel8>(digests);
    addMattes<RK_Pixel16>(digests);
}

}  // namespace digests
