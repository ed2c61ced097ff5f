#include "RK/indep/sample/RK_Decimate.h"

#include <memory>

#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_Depth.h"
#include "RK/indep/world/RK_WorldXT.h"

namespace {

// ---- One output pixel -----------------------------------------------------------------------------------

template <class P>
P boxPair(const P& p, const P& q) {
    using D = RKp_Depth<P>;
    using C = typename RKp_Depth<P>::Channel;
    const uint32_t a0 = p.alpha, a1 = q.alpha;
    if (a0 == a1) {
        const auto mean = [&](C P::*c) { return static_cast<C>((uint32_t{p.*c} + uint32_t{q.*c}) >> 1); };
        return {p.alpha, mean(&P::red), mean(&P::green), mean(&P::blue)};
    }
    const uint32_t alpha = (a0 + a1) >> 1;
    const auto mean = [&](C P::*c) {
        // Kept: both terms take the first pixel's alpha.
        const auto m = static_cast<uint32_t>(D::mul(p.*c, p.alpha) + D::mul(q.*c, p.alpha)) >> 1;
        if constexpr (D::kBits == 8) {
            return static_cast<C>(D::div(static_cast<int32_t>(alpha), static_cast<int32_t>(m)));
        } else {
            if (m >= alpha) return static_cast<C>(D::kFull);
            return static_cast<C>((uint64_t{(a0 + a1) >> 2} + uint64_t{m} * 32768u) / alpha);
        }
    };
    return {static_cast<C>(alpha), mean(&P::red), mean(&P::green), mean(&P::blue)};
}

constexpr float kTaps[5] = {0.05f, 0.25f, 0.4f, 0.25f, 0.05f};

// The taps around source pixel `centre` of a line of `length` pixels; at(i) reads one.
template <class P, class At>
P gaussAt(int32_t centre, int32_t length, At&& at) {
    float A = 0, R = 0, G = 0, B = 0;
    for (int32_t k = 0; k < 5; ++k) {
        const int32_t i = centre + k - 2;
        if (i < 0 || i >= length) continue;
        const P& p = at(i);
        if (p.alpha == 0) continue;
        const float a = kTaps[k] * static_cast<float>(p.alpha);
        A += a;
        R += a * static_cast<float>(p.red);
        G += a * static_cast<float>(p.green);
        B += a * static_cast<float>(p.blue);
    }
    if (A == 0) return P{};
    const float reciprocal = 1.0f / A;
    const auto store = [](float v) { return static_cast<typename RKp_Depth<P>::Channel>(RKp_Truncate(v + 0.5f)); };
    return {store(A), store(R * reciprocal), store(G * reciprocal), store(B * reciprocal)};
}

// ---- One line's output i, from a line of `length` pixels ------------------------------------------------

struct Box {
    template <class P, class At>
    static void put(int32_t i, int32_t length, bool keep_odd, At&& at, P* out) {
        if (2 * i + 1 < length) {
            *out = boxPair(at(2 * i), at(2 * i + 1));
        } else if (keep_odd && 2 * i < length) {
            *out = at(2 * i);
            out->alpha = static_cast<typename RKp_Depth<P>::Channel>(out->alpha >> 1);
        }
    }
};
struct Gauss {
    template <class P, class At>
    static void put(int32_t i, int32_t length, bool, At&& at, P* out) {
        *out = gaussAt<P>(2 * i, length, at);
    }
};

template <class Filter, class P>
void rowsPass(const RK_WorldX<P>& src, bool keep_odd, RK_WorldX<P>& dst) {
    for (int32_t y = 0; y < dst.height() && y < src.height(); ++y) {
        const P* row = src.row(y);
        P* out = dst.row(y);
        const auto at = [row](int32_t i) -> const P& { return row[i]; };
        for (int32_t x = 0; x < dst.width(); ++x) Filter::template put<P>(x, src.width(), keep_odd, at, out + x);
    }
}
template <class Filter, class P>
void columnsPass(const RK_WorldX<P>& src, bool keep_odd, RK_WorldX<P>& dst) {
    for (int32_t y = 0; y < dst.height(); ++y) {
        P* out = dst.row(y);
        for (int32_t x = 0; x < dst.width() && x < src.width(); ++x) {
            const auto at = [&src, x](int32_t i) -> const P& { return src.row(i)[x]; };
            Filter::template put<P>(y, src.height(), keep_odd, at, out + x);
        }
    }
}

// The cheaper pass runs over the larger data.
template <class Filter, class P>
void decimate(const RK_WorldX<P>& src, bool keep_odd, RK_WorldX<P>& dst) {
    const int64_t w = src.width(), h = src.height(), W = dst.width(), H = dst.height();
    if (w < 1 || h < 1 || W < 1 || H < 1) return;
    if (h * W > w * H) {
        RK_WorldX<P> half(src.width(), dst.height(), RK_kWorldClear);
        columnsPass<Filter>(src, keep_odd, half);
        rowsPass<Filter>(half, keep_odd, dst);
    } else {
        RK_WorldX<P> half(dst.width(), src.height(), RK_kWorldClear);
        rowsPass<Filter>(src, keep_odd, half);
        columnsPass<Filter>(half, keep_odd, dst);
    }
}

template <class Filter>
void decimateWorld(const RK_World* src, bool keep_odd, RK_World* dst) {
    if (src == nullptr || dst == nullptr || src->Depth() != dst->Depth()) RKp_Throw(RK_kBadParam);
    const auto run = [&](auto pixel) {
        using P = decltype(pixel);
        RK_WorldX<P> out(&dst->record, false);
        decimate<Filter, P>(RK_WorldX<P>(&src->record, false), keep_odd, out);
    };
    switch (src->Depth()) {
        case 8: run(RK_Pixel8{}); return;
        case 16: run(RK_Pixel16{}); return;
        default: RKp_Throw(RK_kBadParam);
    }
}

template <class Filter>
void newDecimated(const RK_World* src, bool keep_odd, const RK_World** dst) {
    if (src == nullptr || dst == nullptr) return;
    if (src->Depth() != 8 && src->Depth() != 16) RKp_Throw(RK_kBadParam);
    const RK_LayerDef& record = src->record;
    const RK_Long width = (RK_Long{record.width} + keep_odd) / 2, height = (RK_Long{record.height} + keep_odd) / 2;
    std::unique_ptr<RK_World> made(RK_World::New(width, height, static_cast<int16_t>(src->Depth()), 0));
    if (made == nullptr) RKp_Throw(RK_kOutOfMemory);
    decimateWorld<Filter>(src, keep_odd, made.get());
    *dst = made.release();
}

}  // namespace

void RK_BoxFilteredDecimateByTwo(const RK_World* src, bool keep_odd, RK_World* dst) {
    decimateWorld<Box>(src, keep_odd, dst);
}
void RK_GaussFilteredDecimateByTwo(const RK_World* src, bool keep_odd, RK_World* dst) {
    decimateWorld<Gauss>(src, keep_odd, dst);
}
void RK_NewBoxFilteredDecimateByTwo(const RK_World* src, bool keep_odd, const RK_World** dst) {
    newDecimated<Box>(src, keep_odd, dst);
}
void RK_NewGaussFilteredDecimateByTwo(const RK_World* src, bool keep_odd, const RK_World** dst) {
    newDecimated<Gauss>(src, keep_odd, dst);
}
