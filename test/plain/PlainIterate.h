// Plain twin of the iterate family's walk: the list of what is called, in order.
#ifndef TEST_PLAIN_ITERATE_H
#define TEST_PLAIN_ITERATE_H

#include <vector>

#include "test/plain/PlainArithmetic.h"

namespace plain {

// A call of the pixel function at (x, y), or of the progress function.
struct Visit {
    enum In { Source, Destination, Zero, Progress };
    In in;               // where the `in` pixel comes from
    int32_t x, y;        // of `out`; of a progress call x is `current`
    int32_t in_x, in_y;  // of `in`, in its own world
    bool operator==(const Visit& o) const {
        return in == o.in && x == o.x && y == o.y && in_x == o.in_x && in_y == o.in_y;
    }
};

struct Size {
    int32_t width, height;
};

// `rect` and `src` may be null. With `progress_final` 0 no progress is called.
std::vector<Visit> iterate(int32_t progress_base, int32_t progress_final, const Size* src,
                           const GEO_Rect* rect, Size dst);

// The source stands at `origin` (null: 0, 0). Clipped to it, or reading a zero pixel outside.
std::vector<Visit> iterateOrigin(int32_t progress_base, int32_t progress_final, const Size* src,
                                 const GEO_Rect* rect, const Point* origin, Size dst, bool clip);

}  // namespace plain

#endif
