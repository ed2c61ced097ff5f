// What the tests of the blurs share: worlds with origins over guarded pixels, and calls with everything at
// its plainest.
#ifndef TEST_FILTER_BLURS_H
#define TEST_FILTER_BLURS_H

#include <algorithm>
#include <memory>

#include "RK/indep/filter/RK_BoxBlur.h"
#include "RK/indep/filter/RK_GaussianBlur.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "test/Pixels.h"
#include "test/Reports.h"

namespace test {

template <class P>
constexpr auto kWhole = static_cast<decltype(P::alpha)>(sizeof(P) == 4   ? 255
                                                        : sizeof(P) == 8 ? 32768
                                                                         : 1);

template <class P>
class Canvas {
  public:
    Canvas(int width, int height, int padding = 1) : picture(width, height, padding) { wrap(); }
    Canvas(const Canvas& other) : picture(other.picture) {
        wrap();
        world->record.origin_x = other.world->record.origin_x;
        world->record.origin_y = other.world->record.origin_y;
    }
    Canvas& at(int32_t x, int32_t y) {
        world->record.origin_x = x;
        world->record.origin_y = y;
        return *this;
    }
    int width() const { return picture.width(); }
    int height() const { return picture.height(); }
    P& operator()(int x, int y) { return picture.at(x, y); }
    const P& operator()(int x, int y) const { return picture.at(x, y); }

    // Random; premultiplied colours stay below their alpha.
    Canvas& random(uint32_t seed, bool premultiplied = true) {
        Random r(seed);
        for (int y = 0; y < height(); ++y)
            for (int x = 0; x < width(); ++x) {
                P p = pixel<P>(r);
                const auto clamp = [&](auto& c) {
                    if (premultiplied) c = std::min(c, p.alpha);
                    if (sizeof(P) == 16) c = std::max<decltype(P::red)>(c, 0);
                };
                clamp(p.red), clamp(p.green), clamp(p.blue);
                (*this)(x, y) = p;
            }
        return *this;
    }

    Picture<P> picture;
    std::unique_ptr<RK_WorldX<P>> world;

  private:
    void wrap() {
        const RK_LayerDef record = picture.record();
        world = std::make_unique<RK_WorldX<P>>(&record, false);
    }
};

// The arguments that most calls leave alone.
struct Blur {
    float radius = 2;
    int32_t passes = 1;  // 0: the Gaussian
    uint32_t flags = RK_kBlurAllChannels;
    int32_t src_direction = 0, src_premultiplied = 1, dst_direction = 0, dst_premultiplied = 1;
    uint8_t force_copy = 0;
    const RK_ProgressInfo* progress = nullptr;

    RK_Long operator()(const RK_World* src, RK_World* dst) const {
        if (passes == 0)
            return RK_GaussianBlur1D(progress, src, radius, flags, src_direction, src_premultiplied,
                                     dst_direction, dst_premultiplied, force_copy, dst);
        return RK_BoxBlur1D(progress, src, radius, passes, flags, src_direction, src_premultiplied,
                            dst_direction, dst_premultiplied, force_copy, dst);
    }
    template <class P>
    RK_Long operator()(const Canvas<P>& src, Canvas<P>& dst) const {
        return (*this)(src.world.get(), dst.world.get());
    }
    // In both directions the same.
    Blur& columns(bool on = true) {
        src_direction = dst_direction = on;
        return *this;
    }
};

template <class P>
Canvas<P> transposed(const Canvas<P>& of) {
    Canvas<P> out(of.height(), of.width());
    for (int y = 0; y < of.height(); ++y)
        for (int x = 0; x < of.width(); ++x) out(y, x) = of(x, y);
    return out;
}

// The largest difference of any channel.
template <class P>
double apart(const Canvas<P>& a, const Canvas<P>& b) {
    double most = 0;
    const auto see = [&](auto p, auto q) {
        most = std::max(most, std::abs(static_cast<double>(p) - static_cast<double>(q)));
    };
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            see(a(x, y).alpha, b(x, y).alpha), see(a(x, y).red, b(x, y).red);
            see(a(x, y).green, b(x, y).green), see(a(x, y).blue, b(x, y).blue);
        }
    return most;
}

}  // namespace test

#endif
