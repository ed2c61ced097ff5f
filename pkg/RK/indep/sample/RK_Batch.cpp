#include "RK/indep/sample/RK_Batch.h"

#include "RK/indep/frame/RKp_Depth.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/sample/RKp_NNSampleT.h"

namespace {

// Where one depth departs: its opacity, and a replaced pixel's alpha.
struct Behind8 {
    using Pixel = RK_Pixel8;
    static constexpr int64_t kFull = 255;
    static int64_t opacity(const RK_SampPB& pb) { return pb.comp_mode.opacity; }
    // Full opacity does not read the table.
    static uint8_t scaled(const RK_SampPB& pb, uint8_t a) {
        return pb.comp_mode.opacity < 255 ? pb.fcm_table[pb.comp_mode.opacity * 256 + a] : a;
    }
};
struct Behind16 {
    using Pixel = RK_Pixel16;
    static constexpr int64_t kFull = 32768;
    static int64_t opacity(const RK_SampPB& pb) { return pb.comp_mode.opacity16; }
    static uint16_t scaled(const RK_SampPB& pb, uint16_t a) {
        const uint16_t o = pb.comp_mode.opacity16;
        return o < kFull ? static_cast<uint16_t>(RKp_Depth<RK_Pixel16>::mul(o, a)) : a;
    }
};

struct Path {
    int32_t x, y, end_x, end_y;

    void advance(const int32_t steps[4]) {
        const auto add = [](int32_t& at, int32_t step) {
            at = static_cast<int32_t>(static_cast<uint32_t>(at) + static_cast<uint32_t>(step));
        };
        add(x, steps[0]);
        add(y, steps[1]);
        add(end_x, steps[2]);
        add(end_y, steps[3]);
    }
};

// The mean of the samples along the path, colours weighted by alpha.
template <class P, class Sample>
P meanOf(const Path& path, int32_t samples, Sample&& sample) {
    const int64_t dx = (int64_t{path.end_x} - path.x) / samples, dy = (int64_t{path.end_y} - path.y) / samples;
    int64_t A = 0, R = 0, G = 0, B = 0;
    for (int64_t k = 0; k < samples; ++k) {
        const P p = sample(static_cast<int32_t>(path.x + k * dx), static_cast<int32_t>(path.y + k * dy));
        const int64_t a = p.alpha;
        A += a;
        R += p.red * a;
        G += p.green * a;
        B += p.blue * a;
    }
    if (A == 0) return P{};
    using C = RK_Channel<P>;
    return {static_cast<C>(A / samples), static_cast<C>(R / A), static_cast<C>(G / A), static_cast<C>(B / A)};
}

template <class Depth, class Sample>
RK_Long behind(int16_t count, const int32_t line[4], const int32_t steps[4], const RK_SampPB& pb,
               typename Depth::Pixel* pixels, Sample&& sample) {
    using P = typename Depth::Pixel;
    using C = RK_Channel<P>;
    constexpr int64_t W = Depth::kFull;
    if (pb.motion_samples < 1) return RK_kOK;
    Path path = {line[0], line[1], line[2], line[3]};
    for (int32_t i = 0; i < count; ++i, path.advance(steps)) {
        P& out = pixels[i];
        const int64_t da = out.alpha;
        if (da >= W) continue;
        P p = meanOf<P>(path, pb.motion_samples, sample);
        if (da == 0) {
            p.alpha = Depth::scaled(pb, p.alpha);
            out = p;
        } else if (p.alpha != 0) {
            const int64_t s = p.alpha * Depth::opacity(pb) * (W - da), t = da * (W * W);
            const auto mix = [s, t](C c, C d) { return static_cast<C>((c * s + d * t) / (s + t)); };
            out = {static_cast<C>((s + t) / (W * W)), mix(p.red, out.red), mix(p.green, out.green),
                   mix(p.blue, out.blue)};
        }
    }
    return RK_kOK;
}

template <class Depth>
RK_Long behindNearest(int16_t count, const int32_t line[4], const int32_t steps[4], const RK_SampPB& pb,
                      typename Depth::Pixel* pixels) {
    return behind<Depth>(count, line, steps, pb, pixels, [&pb](int32_t x, int32_t y) {
        return RKp_NearestPixel<typename Depth::Pixel>(x, y, *pb.src);
    });
}
template <class Depth>
RK_Long behindSampled(int16_t count, const int32_t line[4], const int32_t steps[4], const RK_SampPB& pb,
                      typename Depth::Pixel* pixels, RK_Sampler<typename Depth::Pixel>* sampler) {
    return behind<Depth>(count, line, steps, pb, pixels, [&pb, sampler](int32_t x, int32_t y) {
        typename Depth::Pixel p;
        sampler(nullptr, x, y, &pb, &p);
        return p;
    });
}

}  // namespace

RK_Long RKp_BehindNearest(void*, int16_t count, const int32_t line[4], const int32_t steps[4], const RK_SampPB* pb,
                          RK_Pixel8* pixels) {
    return behindNearest<Behind8>(count, line, steps, *pb, pixels);
}
RK_Long RKp_BehindBilinear(void*, int16_t count, const int32_t line[4], const int32_t steps[4], const RK_SampPB* pb,
                           RK_Pixel8* pixels) {
    return behindSampled<Behind8>(count, line, steps, *pb, pixels, RKp_Slot<RKp_kSlot_SubpixelSample_Straight>());
}
RK_Long RKp_BehindArea(void*, int16_t count, const int32_t line[4], const int32_t steps[4], const RK_SampPB* pb,
                       RK_Pixel8* pixels) {
    return behindSampled<Behind8>(count, line, steps, *pb, pixels, RKp_Slot<RKp_kSlot_AreaSample>());
}
RK_Long RKp_BehindNearest16(void*, int16_t count, const int32_t line[4], const int32_t steps[4], const RK_SampPB* pb,
                            RK_Pixel16* pixels) {
    return behindNearest<Behind16>(count, line, steps, *pb, pixels);
}
RK_Long RKp_BehindBilinear16(void*, int16_t count, const int32_t line[4], const int32_t steps[4],
                             const RK_SampPB* pb, RK_Pixel16* pixels) {
    return behindSampled<Behind16>(count, line, steps, *pb, pixels, RKp_Slot<RKp_kSlot_SubpixelSample_Straight16>());
}
RK_Long RKp_BehindArea16(void*, int16_t count, const int32_t line[4], const int32_t steps[4], const RK_SampPB* pb,
                         RK_Pixel16* pixels) {
    return behindSampled<Behind16>(count, line, steps, *pb, pixels, RKp_Slot<RKp_kSlot_AreaSample16>());
}
