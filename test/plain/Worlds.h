// Random worlds for the comparisons with plain twins: odd sizes, padded rows, some upside down, guards
// around.
#ifndef TEST_PLAIN_WORLDS_H
#define TEST_PLAIN_WORLDS_H

#include <string>

#include "test/GuardedRows.h"
#include "test/plain/Compare.h"
#include "test/plain/PlainArithmetic.h"

namespace test {

// Pixels with guards, and a record over them whose rows may run upwards.
template <class P>
struct World {
    Picture<P> picture;
    RK_LayerDef record;
    World(Random& r, int width, int height, bool wild = false)
        : picture(width, height, static_cast<int>(r.below(4))), record() {
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) picture.at(x, y) = wild ? wildPixel<P>(r) : pixel<P>(r);
        describe(r.below(4) == 0);
    }
    World(const World& o) : picture(o.picture), record(o.record) { describe(o.record.rowbytes < 0); }
    void describe(bool upside_down) {
        record = picture.record();
        if (!upside_down) return;
        record.data = picture.row(picture.height() - 1);
        record.rowbytes = -record.rowbytes;
    }
};

// Half of the worlds are taken in between pages that cannot be touched; their records then stand for their
// pixels.
template <class P>
void guardSome(Random& r, GuardedRows& rows, World<P>& world) {
    const bool guarded = r.below(2) == 0, against_end = r.below(2) == 0;
    if (guarded) rows.take<P>(world.record, against_end);
}

inline int side(Random& r) { return 1 + static_cast<int>(r.below(r.below(4) == 0 ? 70 : 20)); }
// A place within, before or beyond a side of `size`.
inline int16_t about(Random& r, int size) {
    return static_cast<int16_t>(static_cast<int>(r.below(static_cast<uint32_t>(size) * 2 + 8)) - size / 2 -
                                4);
}
// Partly or wholly outside now and then, now and then empty or reversed.
inline GEO_Rect randomRect(Random& r, int width, int height) {
    const int top = about(r, height), left = about(r, width);
    const int h = static_cast<int>(r.below(static_cast<uint32_t>(height) + 8)) - 2;
    const int w = static_cast<int>(r.below(static_cast<uint32_t>(width) + 8)) - 2;
    return {static_cast<int16_t>(top), static_cast<int16_t>(left), static_cast<int16_t>(top + h),
            static_cast<int16_t>(left + w)};
}
inline std::string show(const GEO_Rect& r) {
    return "top " + std::to_string(r.top) + ", left " + std::to_string(r.left) + ", bottom " +
           std::to_string(r.bottom) + ", right " + std::to_string(r.right);
}

// The first pixel where two worlds differ, told; empty when there is none and the guards are whole.
template <class P>
std::string difference(const World<P>& before, const World<P>& expected, const World<P>& got) {
    for (int y = 0; y < got.record.height; ++y)
        for (int x = 0; x < got.record.width; ++x) {
            const P& e = plain::at<P>(expected.record, x, y);
            const P& g = plain::at<P>(got.record, x, y);
            if (!samePixel(e, g))
                return "pixel (" + std::to_string(x) + ", " + std::to_string(y) + ") of " +
                       std::to_string(got.record.width) + " by " + std::to_string(got.record.height) +
                       "\n  on       " + show(plain::at<P>(before.record, x, y)) + "\n  expected " + show(e) +
                       "\n  got      " + show(g);
        }
    return got.picture.guardsWhole() ? "" : "bytes outside the pixels were written";
}

// A progress function that keeps what it was called with and stops the pass at call `stop_at`; 0 never.
struct Calls {
    std::vector<std::pair<RK_Long, RK_Long>> made;
    int stop_at = 0;
    static RK_Long progress(void* refcon, RK_Long current, RK_Long maximum) {
        Calls* const calls = static_cast<Calls*>(refcon);
        calls->made.emplace_back(current, maximum);
        return static_cast<int>(calls->made.size()) == calls->stop_at ? 517 : 0;
    }
};

}  // namespace test

#endif
