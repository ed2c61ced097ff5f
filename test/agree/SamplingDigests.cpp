// The kept cases of samplers, transforms, copies, tables, decimation and behind scans. Numbers in them are
// written out: what a mathematical function gives in its last place is its library's affair.
#include <memory>
#include <vector>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/passes/RK_CopyBits.h"
#include "RK/indep/sample/RK_AreaSample.h"
#include "RK/indep/sample/RK_Batch.h"
#include "RK/indep/sample/RK_Decimate.h"
#include "RK/indep/sample/RK_SubpixelSample.h"
#include "RK/indep/sample/RK_SummedAreaTable.h"
#include "RK/indep/sample/RK_TransformWorld.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "test/SlotOverride.h"
#include "test/agree/Digests.h"

namespace digests {

namespace {

using test::Picture;
using test::SlotOverride;

// The three slots whose form the processor record picks, held to one of the two for as long as this stands.
class Forms {
  public:
    explicit Forms(bool vector)
        : no_clip_(61, vector ? &RKp_SubpixelSampleNoClip_SSE2 : &RK_SubpixelSampleNoClip_Straight),
          area_(5, vector ? &RKp_AreaSample8_Portable : &RKp_AreaSample8_Static),
          area16_(65, vector ? &RKp_AreaSample16_Portable : &RKp_AreaSample16_Static) {}

  private:
    SlotOverride no_clip_, area_, area16_;
};
// Calls render(suffix of the names) for each form that the depth knows.
template <class P, class Render>
void overForms(Render render) {
    for (const bool vector : {false, true}) {
        if (sizeof(P) == 16 && vector) continue;
        const Forms forms(vector);
        render(sizeof(P) == 16 ? "" : vector ? ".vector" : ".scalar");
    }
}

// ---- Samplers -------------------------------------------------------------------------------------------

// Many positions in a source of special and random pixels; `inside` keeps all four neighbours there.
template <class P>
struct Positions {
    Positions() : picture(23, 19), record() {
        picture.fillRandom(30);
        record = picture.record();
        pb.src = &record;
        pb.x_radius = 0x1A000;
        pb.y_radius = 0xC800;
        pb.area = 0x28A00;
    }
    template <class Sample>
    Hash over(bool inside, Sample sample) const {
        Hash hash;
        test::Random r(31);
        for (int i = 0; i < 3000; ++i) {
            const auto at = [&](int size) {
                const uint32_t room = static_cast<uint32_t>(inside ? size - 1 : size + 4) << 16;
                const auto v = static_cast<int32_t>(r.below(room)) - (inside ? 0 : 0x20000);
                return i % 8 == 0 ? v & ~0xFFFF : i % 8 == 1 ? v & ~0x7FFF : v;
            };
            const int32_t x = at(23), y = at(19);
            sample(hash, x, y);
        }
        return hash;
    }
    Picture<P> picture;
    RK_LayerDef record;
    RK_SampPB pb{};
};

template <class P>
void addSamplers(Digests& digests) {
    const Positions<P> positions;
    const RK_SampPB* const pb = &positions.pb;
    const auto plain = [&](const std::string& name, bool inside, RK_Sampler<P>* sampler) {
        add(digests, "sampler." + name + "." + depthName<P>(),
            positions.over(inside, [&](Hash& hash, int32_t x, int32_t y) {
                P out;
                EXPECT_EQ(sampler(nullptr, x, y, pb, &out), 0);
                hash.pixels(&out, 1);
            }));
    };
    const auto plus = [&](RK_SamplerPlus<P>* sampler) {
        add(digests, "sampler.plus." + depthName<P>(),
            positions.over(false, [&](Hash& hash, int32_t x, int32_t y) {
                P out;
                uint8_t all_inside;
                EXPECT_EQ(sampler(nullptr, x, y, pb, &all_inside, &out), 0);
                hash.channel(all_inside);
                hash.pixels(&out, 1);
            }));
    };
    const auto translate = [&](RK_SamplerTranslate<P>* sampler) {
        add(digests, "sampler.translate." + depthName<P>(),
            positions.over(true, [&](Hash& hash, int32_t x, int32_t y) {
                double weights[4];
                RK_SubpixelSampleComputeWeight(static_cast<uint16_t>(x & 0xFFFF),
                                               static_cast<uint16_t>(y & 0xFFFF), weights);
                P out;
                EXPECT_EQ(sampler(nullptr, x, y, weights, pb, &out), 0);
                hash.bytes(weights, sizeof weights);
                hash.pixels(&out, 1);
            }));
    };
    const auto span = [&](const std::string& name, RK_SamplerSpan<P>* sampler) {
        add(digests, "sampler." + name + "." + depthName<P>(),
            positions.over(true, [&](Hash& hash, int32_t x, int32_t y) {
                std::vector<P> out(23);
                RK_AlphaSum<P> sum = 0;
                const int count = 22 - (x >> 16);
                EXPECT_EQ(sampler(nullptr, count, x, y, pb, &sum, out.data()), 0);
                hash.pixels(out.data(), count);
                hash.bytes(&sum, sizeof sum);
            }));
    };
    if constexpr (sizeof(P) == 4) {
        plain("clipped", false, RK_SubpixelSample_Straight);
        plain("clipped.portable", false, RK_SubpixelCPlusPlus);
        plain("premultiplied", false, RK_SubpixelSample_Premul);
        plain("no-clip", true, RK_SubpixelSampleNoClip_Straight);
        plain("no-clip.vector", true, RKp_SubpixelSampleNoClip_SSE2);
        plain("no-clip.portable", true, RK_SubpixelCPlusPlusNoClip);
        plain("nearest", false, RK_NNSample);
        plain("area", false, RKp_AreaSample8_Static);
        plain("area.portable", false, RKp_AreaSample8_Portable);
        plain("area.premultiplied", false, RK_AreaSample_Premul);
        plus(RK_SubpixelSamplePlus_Straight);
        translate(RK_SubpixelSampleTranslateNoClip_Straight);
        span("span", RK_SubpixelSpanSampleTranslateNoClip_Straight);
        span("span.portable", RK_SubpixelSpanSampleCPlusPlus);
        add(digests, "sampler.four.8", positions.over(true, [&](Hash& hash, int32_t x, int32_t y) {
            const int32_t xy[8] = {x, y, x ^ 0x5555, y, x, y ^ 0x1234, x & ~0xFFFF, y & ~0xFFFF};
            double weights[16];
            for (int k = 0; k < 4; ++k)
                RK_SubpixelSampleComputeWeight(static_cast<uint16_t>(xy[2 * k] & 0xFFFF),
                                               static_cast<uint16_t>(xy[2 * k + 1] & 0xFFFF),
                                               weights + 4 * k);
            RK_Pixel8 out[8];
            EXPECT_EQ(RK_SubpixelSampleNoClip_Straight_4(nullptr, xy, pb, out), 0);
            EXPECT_EQ(RK_SubpixelSampleTranslateNoClip_Straight_4(nullptr, xy, weights, pb, out + 4), 0);
            hash.pixels(out, 8);
        }));
    } else if constexpr (sizeof(P) == 8) {
        plain("clipped", false, RK_SubpixelSample_Straight16);
        plain("clipped.portable", false, RK_SubpixelCPlusPlus16);
        plain("no-clip", true, RK_SubpixelSampleNoClip_Straight16);
        plain("no-clip.portable", true, RK_SubpixelCPlusPlusNoClip16);
        plain("nearest", false, RK_NNSample16);
        plain("area", false, RKp_AreaSample16_Static);
        plain("area.portable", false, RKp_AreaSample16_Portable);
        plus(RK_SubpixelSamplePlus_Straight16);
        translate(RK_SubpixelSampleTranslateNoClip_Straight16);
        span("span", RK_SubpixelSpanSampleTranslateNoClip_Straight16);
        span("span.portable", RK_SubpixelSpanSampleCPlusPlus16);
    } else {
        plain("clipped", false, RK_SubpixelCPlusPlusFloat);
        plain("no-clip", true, RK_SubpixelCPlusPlusNoClipFloat);
        plain("nearest", false, RK_NNSampleFloat);
        plain("area", false, RK_AreaSampleFloat);
        plus(RK_SubpixelSpanSampleAllInCPlusPlusFloat);
        translate(RK_SubpixelSampleTranslateNoClipCPlusPlusFloat);
        span("span", RK_SubpixelSpanSampleCPlusPlusFloat);
    }
}

// ---- Transforms -----------------------------------------------------------------------------------------

struct Path {
    const char* name;
    RK_Long quality;
    std::vector<GEO_Matrix3> matrices;
};
GEO_Matrix3 affine(double a, double b, double c, double d, double x, double y) {
    return {{{a, b, 0}, {c, d, 0}, {x, y, 1}}};
}
std::vector<Path> paths() {
    const GEO_Matrix3 turned = affine(0.8, 0.6, -0.6, 0.8, 12.25, -3.5);
    const std::vector<GEO_Matrix3> slides = {affine(1, 0, 0, 1, 2.25, 1.5), affine(1, 0, 0, 1, 3.5, 1.75),
                                             affine(1, 0, 0, 1, 4.75, 2), affine(1, 0, 0, 1, 6, 2.25)};
    const std::vector<GEO_Matrix3> grows = {affine(0.75, 0, 0, 1.25, 4, 2), affine(0.875, 0, 0, 1.5, 4, 2),
                                            affine(1, 0, 0, 1.75, 4, 2)};
    const std::vector<GEO_Matrix3> turns = {turned, affine(0.96, 0.28, -0.28, 0.96, 8, 2),
                                            affine(1, 0, 0, 1, 5, 4), affine(0.96, -0.28, 0.28, 0.96, 1, 8)};
    std::vector<GEO_Matrix3> shrinking_turns = turns;
    for (GEO_Matrix3& m : shrinking_turns)
        for (int row = 0; row < 2; ++row) m.m[row][0] *= 0.375, m.m[row][1] *= 0.375;
    return {
        {"turned", RK_kBest, {turned}},
        {"turned-draft", RK_kDraft, {turned}},
        {"mirrored", RK_kBest, {affine(-1.25, 0, 0, 0.9375, 36, 1.5)}},
        {"enlarged", RK_kBest, {affine(2.5, 0, 0, 1.75, -9.5, -4)}},
        {"reduced", RK_kBest, {affine(0.3125, 0.125, -0.0625, 0.4375, 9, 5)}},
        {"reduced-across", RK_kBest, {affine(0.375, 0, 0, 1.5, 9, 1)}},
        {"perspective", RK_kBest, {GEO_Matrix3{{{1.5, 0.25, 0.0625}, {-0.25, 1.25, 0.03125}, {3, 2, 1}}}}},
        {"moved", RK_kBest, {affine(1, 0, 0, 1, 3.3125, 2.625)}},
        {"moved-whole", RK_kBest, {affine(1, 0, 0, 1, -3, 5)}},
        {"moved-draft", RK_kDraft, {affine(1, 0, 0, 1, 3.3125, 2.625)}},
        {"sliding", RK_kBest, slides},
        {"sliding-draft", RK_kDraft, slides},
        {"growing", RK_kBest, grows},
        {"turning", RK_kBest, turns},
        {"turning-draft", RK_kDraft, turns},
        {"turning-reduced", RK_kBest, shrinking_turns}};
}

template <class P>
void addTransforms(Digests& digests) {
    Picture<P> src(31, 27), dst(41, 37, 3), mask_picture(25, 21);
    src.fillRandom(32);
    dst.fillRandom(33);
    mask_picture.fillRandom(34);
    RK_LayerDef src_record = src.record(), mask_record = mask_picture.record();
    const std::unique_ptr<RK_World> source(RK_World::NewReference(&src_record));
    const std::unique_ptr<RK_World> mask_world(RK_World::NewReference(&mask_record));
    overForms<P>([&](const std::string& suffix) {
        uint32_t kind = 0;
        for (const Path& path : paths()) {
            const auto render = [&](const std::string& how, const RK_CompositeMode& mode, RK_Long field,
                                    const RK_TransformMask* mask, const GEO_Rect* rect) {
                Picture<P> out(dst);
                RK_LayerDef record = out.record();
                const std::unique_ptr<RK_World> to(RK_World::NewReference(&record));
                EXPECT_EQ(RK_TransformWorld(nullptr, path.quality, 0, field, source.get(), &mode, nullptr,
                                            mask, path.matrices.data(),
                                            static_cast<RK_Long>(path.matrices.size()), 1, rect, to.get()),
                          0);
                Hash hash;
                hash.picture(out);
                add(digests,
                    std::string("transform.") + path.name + "." + depthName<P>() + "." + how + suffix, hash);
            };
            const RK_TransformMask mask = {mask_world.get(), 5, 7, kind++ % 4};
            const GEO_Rect rect = {3, 4, 30, 36};
            render("over", {RK_Xfer_Over, 0, 255, 0, 32768}, 0, nullptr, nullptr);
            render("screen-masked", {RK_Xfer_Screen, 0, 200, 0, 25700}, 1, &mask, nullptr);
            render("dissolve-rectangle", {RK_Xfer_Dissolve, 1234, 128, 1, 16448}, 0, nullptr, &rect);
            render("stencil", {RK_Xfer_StencilLuma, 0, 255, 0, 32768}, 0, nullptr, &rect);
        }
    });
}

// ---- Copies ---------------------------------------------------------------------------------------------

template <class From, class To>
void addDraftCopies(Digests& digests) {
    Picture<From> src(29, 23);
    src.fillRandom(35);
    const GEO_Rect from = {-2, 3, 20, 40}, to = {1, -4, 36, 33};
    Picture<To> dst(41, 37);
    dst.fillRandom(36);
    const RK_LayerDef src_record = src.record();
    RK_LayerDef dst_record = dst.record();
    EXPECT_EQ(RK_CopyBits_Draft(nullptr, &src_record, &dst_record, nullptr, nullptr), 0);
    Hash hash;
    hash.picture(dst);
    EXPECT_EQ(RK_CopyBits_Draft(nullptr, &src_record, &dst_record, &from, &to), 0);
    hash.picture(dst);
    add(digests, "copy.draft." + depthName<From>() + "-to-" + depthName<To>(), hash);
}

template <class P>
void addCopies(Digests& digests) {
    Picture<P> src(29, 23);
    src.fillRandom(37);
    const RK_LayerDef src_record = src.record();
    const auto copied = [&](const std::string& name, int width, int height, const GEO_Rect* from,
                            const GEO_Rect* to, auto copy) {
        Picture<P> dst(width, height, 2);
        dst.fillRandom(38);
        RK_LayerDef dst_record = dst.record();
        EXPECT_EQ(copy(nullptr, &src_record, &dst_record, from, to), 0);
        Hash hash;
        hash.picture(dst);
        add(digests, "copy." + name + "." + depthName<P>(), hash);
    };
    const GEO_Rect part = {2, 3, 21, 26}, place = {-3, 4, 30, 51};
    overForms<P>([&](const std::string& suffix) {
        for (const bool premultiplied : {false, true}) {
            auto* const copy = premultiplied ? RK_CopyBits_HQ_Premul : RK_CopyBits_HQ_Straight;
            const std::string form = premultiplied ? "premul" : "straight";
            copied(form + ".enlarged" + suffix, 47, 41, nullptr, nullptr, copy);
            copied(form + ".reduced" + suffix, 11, 9, nullptr, nullptr, copy);
            copied(form + ".mixed" + suffix, 53, 7, nullptr, nullptr, copy);
            copied(form + ".part" + suffix, 47, 41, &part, &place, copy);
        }
    });
    const GEO_Matrix3 m = {{{0.8, 0.6, 0}, {-0.6, 0.8, 0.015625}, {12.25, 1.5, 1}}};
    copied("matrix", 41, 37, &part, nullptr,
           [&m](RK_ProgressInfo* progress, const RK_LayerDef* from, RK_LayerDef* to, const GEO_Rect* s,
                const GEO_Rect* d) { return RK_CopyBits3_LO_Straight(progress, from, to, 1, &m, s, d); });
}

// ---- Tables, decimation, behind scans -------------------------------------------------------------------

template <class P, class Entry>
void addTables(Digests& digests) {
    Picture<P> picture(37, 29);
    picture.fillRandom(39);
    RK_LayerDef record = picture.record();
    const std::unique_ptr<RK_World> world(RK_World::NewReference(&record));
    const RK_SummedAreaTable table(world.get());
    const auto* const cells = sizeof(Entry) == sizeof(RK_PixelFloat)
                                  ? reinterpret_cast<const Entry*>(table.float_table)
                                  : reinterpret_cast<const Entry*>(table.double_table);
    Hash built, sampled;
    built.bytes(cells, sizeof(Entry) * 37 * 29);
    add(digests, "table.cells." + depthName<P>(), built);
    test::Random r(40);
    for (int i = 0; i < 2000; ++i) {
        const auto edge = [&r](int size) {
            return static_cast<int32_t>(r.below(static_cast<uint32_t>(size) + 9)) - 4;
        };
        const int32_t l = edge(37), t = edge(29), right = edge(37), b = edge(29);
        const auto smooth = [&r](int32_t v) {
            return static_cast<float>(v) + static_cast<float>(r.below(64)) / 64.0f;
        };
        P out[2];
        RK_SummedAreaTable_SampleDraft<P, Entry>(37, 29, cells, l, t, right, b, out);
        const float fl = smooth(l), ft = smooth(t), fr = smooth(right), fb = smooth(b);
        RK_SummedAreaTable_SampleAA<P, Entry>(37, 29, cells, fl, ft, fr, fb, out + 1);
        sampled.pixels(out, 2);
    }
    add(digests, "table.boxes." + depthName<P>(), sampled);
}

template <class P>
void addDecimation(Digests& digests) {
    for (const auto& [width, height] : {std::pair<int, int>{31, 23}, {18, 40}}) {
        Picture<P> picture(width, height);
        picture.fillRandom(41);
        RK_LayerDef record = picture.record();
        const std::unique_ptr<RK_World> world(RK_World::NewReference(&record));
        for (const bool gauss : {false, true})
            for (const bool keep_odd : {false, true}) {
                const RK_World* made = nullptr;
                (gauss ? RK_NewGaussFilteredDecimateByTwo : RK_NewBoxFilteredDecimateByTwo)(world.get(),
                                                                                            keep_odd, &made);
                const std::unique_ptr<const RK_World> half(made);
                Hash hash;
                for (int y = 0; y < half->record.height; ++y)
                    hash.pixels(reinterpret_cast<const P*>(static_cast<const char*>(half->record.data) +
                                                           y * half->record.rowbytes),
                                half->record.width);
                add(digests,
                    std::string("decimate.") + (gauss ? "gauss." : "box.") + depthName<P>() + "." +
                        std::to_string(width) + "x" + std::to_string(height) + (keep_odd ? ".odd-kept" : ""),
                    hash);
            }
    }
}

template <class P>
void addBehind(Digests& digests, const std::string& name, RK_BehindScan<P>* scan) {
    Picture<P> src(27, 21), row(200, 1);
    src.fillRandom(42);
    const RK_LayerDef record = src.record();
    RK_SampPB pb{};
    pb.src = &record;
    pb.x_radius = 0xC000;
    pb.y_radius = 0xA000;
    pb.motion_samples = 5;
    pb.fcm_table = RKp_G_fcm_table;
    const int32_t line[4] = {-0x18000, 0x4000, 0x28000, 0xC000}, steps[4] = {0x2800, 0x1700, 0x2400, 0x1800};
    overForms<P>([&](const std::string& suffix) {
        Hash hash;
        for (const int opacity : {255, 100}) {
            pb.comp_mode = {RK_Xfer_Behind, 0, static_cast<uint8_t>(opacity), 0,
                            static_cast<uint16_t>(opacity == 255 ? 32768 : 12850)};
            row.fillRandom(43);
            EXPECT_EQ(scan(nullptr, 200, line, steps, &pb, row.row(0)), 0);
            hash.picture(row);
        }
        add(digests, "behind." + name + "." + depthName<P>() + suffix, hash);
    });
}

}  // namespace

void addSampling(Digests& digests) {
    addSamplers<RK_Pixel8>(digests);
    addSamplers<RK_Pixel16>(digests);
    addSamplers<RK_PixelFloat>(digests);
    addTransforms<RK_Pixel8>(digests);
    addTransforms<RK_Pixel16>(digests);
    addTransforms<RK_PixelFloat>(digests);
    addDraftCopies<RK_Pixel8, RK_Pixel8>(digests);
    addDraftCopies<RK_Pixel8, RK_Pixel16>(digests);
    addDraftCopies<RK_Pixel8, RK_PixelFloat>(digests);
    addDraftCopies<RK_Pixel16, RK_Pixel8>(digests);
    addDraftCopies<RK_Pixel16, RK_Pixel16>(digests);
    addDraftCopies<RK_Pixel16, RK_PixelFloat>(digests);
    addDraftCopies<RK_PixelFloat, RK_Pixel8>(digests);
    addDraftCopies<RK_PixelFloat, RK_Pixel16>(digests);
    addDraftCopies<RK_PixelFloat, RK_PixelFloat>(digests);
    addCopies<RK_Pixel8>(digests);
    addCopies<RK_Pixel16>(digests);
    addCopies<RK_PixelFloat>(digests);
    addTables<RK_Pixel8, RK_PixelFloat>(digests);
    addTables<RK_Pixel16, RK_PixelFloat>(digests);
    addTables<RK_PixelFloat, RK_PixelDouble>(digests);
    addDecimation<RK_Pixel8>(digests);
    addDecimation<RK_Pixel16>(digests);
    addBehind<RK_Pixel8>(digests, "nearest", RKp_BehindNearest);
    addBehind<RK_Pixel8>(digests, "bilinear", RKp_BehindBilinear);
    addBehind<RK_Pixel8>(digests, "area", RKp_BehindArea);
    addBehind<RK_Pixel16>(digests, "nearest", RKp_BehindNearest16);
    addBehind<RK_Pixel16>(digests, "bilinear", RKp_BehindBilinear16);
    addBehind<RK_Pixel16>(digests, "area", RKp_BehindArea16);
}

}  // namespace digests
