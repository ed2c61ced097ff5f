// One mask combined into another, and two into a third.
#include <algorithm>
#include <cstring>
#include <type_traits>

#include "RK/indep/filter/RKp_UnoModes.h"
#include "RK/indep/filter/RKp_UnoPass.h"
#include "RK/indep/filter/RKp_UnoRows.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/passes/RK_Iterate.h"

namespace {

// Work of fewer samples than this stays on the calling thread.
constexpr int64_t kWorthThreads = 76800;

// ---- The clip -------------------------------------------------------------------------------------------

// The samples that are combined: where they lie in the sources and in the destination.
struct Area {
    int32_t src_x, src_y, dst_x, dst_y, width, height;
};

struct Range {
    int64_t first, end;
    void cut(int64_t low, int64_t high) {
        first = std::max(first, low);
        end = std::min(end, high);
    }
};

// The part of first..end inside the sources, of `src_size`, and, moved by `shift`, inside the destination.
Range clipped(int32_t first, int32_t end, int32_t src_size, int32_t shift, int32_t dst_size) {
    Range range = {first, end};
    range.cut(0, src_size);
    range.cut(-int64_t{shift}, int64_t{dst_size} - shift);
    return range;
}

// False, and `area` is not written, when nothing is left.
bool clip(const GEO_Rect& rect, const Point& point, int32_t src_width, int32_t src_height,
          const RK_UnoBuffer& dst, Area* area) {
    const int32_t dx = point.h - rect.left, dy = point.v - rect.top;
    const Range x = clipped(rect.left, rect.right, src_width, dx, dst.width);
    const Range y = clipped(rect.top, rect.bottom, src_height, dy, dst.height);
    if (x.end <= x.first || y.end <= y.first) return false;
    *area = {static_cast<int32_t>(x.first),         static_cast<int32_t>(y.first),
             static_cast<int32_t>(x.first + dx),    static_cast<int32_t>(y.first + dy),
             static_cast<int32_t>(x.end - x.first), static_cast<int32_t>(y.end - y.first)};
    return true;
}

// ---- What lies around the area --------------------------------------------------------------------------

// Against nothing these two modes leave nothing.
bool clearsAround(int32_t mode) { return mode == RK_kUnoIntersect || mode == RK_kUnoDarken; }

template <class S>
void clear(S* first, int64_t count) {
    if (count > 0) std::memset(static_cast<void*>(first), 0, static_cast<size_t>(count) * sizeof(S));
}

template <class S>
void clearRows(const RK_UnoBuffer& dst, int32_t first, int32_t end) {
    clear(dst.Row<S>(first), int64_t{end - first} * dst.width);
}

template <class S>
void clearBeside(const RK_UnoBuffer& dst, const Area& area, S* row) {
    clear(row, area.dst_x);
    const int32_t end = area.dst_x + area.width;
    clear(row + end, int64_t{dst.width} - end);
}

// ---- Noise ----------------------------------------------------------------------------------------------

// The noise of a pass, row by row: row i has the words that it would have if the rows before it had run, so
// that threads do not change a result. Afterwards the package's cursor stands behind the rows that ran.
class Noise {
  public:
    explicit Noise(int64_t draws_per_row) : start_(RKp_G_Noise), draws_(draws_per_row) {}
    Noise(const Noise&) = delete;
    ~Noise() {
        if (draws_ > 0) RKp_G_Noise.cursor = after(rows_).cursor;
    }
    RKp_NoiseTable row(int32_t i) {
        if (draws_ > 0) ++rows_;
        return after(i);
    }

  private:
    RKp_NoiseTable after(int64_t rows) const {
        RKp_NoiseTable moved = start_;
        if (draws_ > 0)
            moved.cursor =
                start_.begin + (start_.cursor - start_.begin + rows * draws_) % (start_.end - start_.begin);
        return moved;
    }
    const RKp_NoiseTable start_;
    const int64_t draws_;
    std::atomic<int32_t> rows_{0};
};

// ---- Passes ---------------------------------------------------------------------------------------------

// combine(noise, i, out) for each row of the area, with what is around it cleared where the mode asks for
// that.
template <class S, class Combine>
RK_Long forRows(RKp_IterateGenericFunc* iterate, const RK_ProgressInfo* progress, int32_t mode, bool draws,
                const Area& area, const RK_UnoBuffer& dst, Combine combine) {
    const bool around = clearsAround(mode);
    if (around) clearRows<S>(dst, 0, area.dst_y);
    Noise noise(draws ? area.width : 0);
    const RK_Long result = RKp_ForUnoRows(iterate, progress, area.height, [&](int32_t i) {
        S* row = dst.Row<S>(area.dst_y + i);
        if (around) clearBeside(dst, area, row);
        RKp_NoiseTable words = noise.row(i);
        combine(&words, i, row + area.dst_x);
    });
    if (result == RK_kOK && around) clearRows<S>(dst, area.dst_y + area.height, dst.height);
    return result;
}

struct Weights {
    int32_t limit, opacity;
    bool plain;
};
Weights weightsOf(float limit, float opacity, int32_t full) {
    const auto scale = static_cast<float>(full);
    const float l = limit * scale, o = opacity * scale;
    const Weights weights = {RKp_Truncate(l + 0.5f), RKp_Truncate(o + 0.5f), false};
    return {weights.limit, weights.opacity, weights.limit == full && weights.opacity == full};
}

// The row functions of the two depths that take every mode.
RKp_MaskAccumulateFunc<uint8_t>* plainRow(uint8_t) { return RKp_Slot<RKp_kSlot_MaskAccumulate8>(); }
RKp_MaskAccumulateFunc<uint16_t>* plainRow(uint16_t) { return RKp_Slot<RKp_kSlot_MaskAccumulate16>(); }
RKp_MaskAccumulateWeightedFunc<uint8_t>* weightedRow(uint8_t) {
    return RKp_Slot<RKp_kSlot_MaskAccumulateWeighted8>();
}
RKp_MaskAccumulateWeightedFunc<uint16_t>* weightedRow(uint16_t) {
    return RKp_Slot<RKp_kSlot_MaskAccumulateWeighted16>();
}

// Behind the tests.
struct Accumulation {
    RKp_IterateGenericFunc* iterate;
    const RK_ProgressInfo* progress;
    const RK_UnoBuffer &src, &dst;
    int32_t mode;
    Area area;

    template <class S>
    const S* from(int32_t i) const {
        return src.Row<S>(area.src_y + i) + area.src_x;
    }

    template <class S>
    RK_Long run(const Weights& weights) const {
        const bool dithers = mode == RK_kUnoDither;
        if (weights.plain)
            return forRows<S>(iterate, progress, mode, dithers, area, dst,
                              [&, row = plainRow(S{})](RKp_NoiseTable* noise, int32_t i, S* out) {
                                  row(noise, mode, area.width, from<S>(i), out);
                              });
        return forRows<S>(iterate, progress, mode, dithers && sizeof(S) == 1, area, dst,
                          [&, row = weightedRow(S{})](RKp_NoiseTable* noise, int32_t i, S* out) {
                              row(noise, mode, weights.limit, weights.opacity, area.width, from<S>(i), out);
                          });
    }
    RK_Long widen(const Weights& weights) const {
        return forRows<uint16_t>(
            iterate, progress, mode, false, area, dst,
            [&, row = RKp_Slot<RKp_kSlot_MaskAdd8To16>()](RKp_NoiseTable*, int32_t i, uint16_t* out) {
                row(weights.opacity, area.width, from<uint8_t>(i), out);
            });
    }
};

template <class S>
RK_Long transfer(const RK_ProgressInfo* progress, const RK_UnoBuffer& a, const RK_UnoBuffer& b, int32_t mode,
                 const Area& area, const RK_UnoBuffer& dst) {
    const bool draws = mode == RK_kUnoDither && !std::is_floating_point_v<S>;
    return forRows<S>(RKp_Slot<RKp_kSlot_IterateGeneric>(), progress, mode, draws, area, dst,
                      [&](RKp_NoiseTable* noise, int32_t i, S* out) {
                          RKp_MaskTransfer(noise, mode, area.width, a.Row<S>(area.src_y + i) + area.src_x,
                                           b.Row<S>(area.src_y + i) + area.src_x, out);
                      });
}

}  // namespace

RK_Long RK_AccumulateUnoBuffers(RK_ProgressInfo* progress, const RK_UnoBuffer* src, int32_t mode,
                                const GEO_Rect& rect, const Point& point, RK_UnoBuffer* dst) {
    return RK_AccumulateUnoBuffers(progress, src, mode, 1.0f, 1.0f, rect, point, dst);
}

RK_Long RK_AccumulateUnoBuffers(RK_ProgressInfo* progress, const RK_UnoBuffer* src, int32_t mode, float limit,
                                float opacity, const GEO_Rect& rect, const Point& point, RK_UnoBuffer* dst) {
    const bool src_stored = RKp_CheckUno(src), dst_stored = RKp_CheckUno(dst);
    if (!src_stored || !dst_stored) return RK_kBadParam;
    const bool widens = src->depth == 8 && dst->depth == 16 && mode == RK_kUnoAdd;
    const bool equal = src->depth == dst->depth && (src->depth == 8 || src->depth == 16);
    if (!equal && !widens) return RK_kBadParam;

    Area area;
    if (!clip(rect, point, src->width, src->height, *dst, &area)) return RK_kOK;
    const bool threads = int64_t{area.width} * area.height >= kWorthThreads;
    const Accumulation pass = {threads ? RKp_Slot<RKp_kSlot_IterateGeneric>() : RK_IterateGeneric_Static,
                               progress,
                               *src,
                               *dst,
                               mode,
                               area};
    const Weights weights = weightsOf(limit, opacity, src->depth == 16 ? 32768 : 255);
    if (widens) return pass.widen(weights);
    return src->depth == 8 ? pass.run<uint8_t>(weights) : pass.run<uint16_t>(weights);
}

RK_Long RK_TransferUnoBuffers(RK_ProgressInfo* progress, const RK_UnoBuffer* src_a, const RK_UnoBuffer* src_b,
                              int32_t mode, const GEO_Rect& rect, const Point& point, RK_UnoBuffer* dst) {
    const bool a_stored = RKp_CheckUno(src_a), b_stored = RKp_CheckUno(src_b), dst_stored = RKp_CheckUno(dst);
    if (!a_stored || !b_stored || !dst_stored) return RK_kBadParam;
    if (src_a->depth != dst->depth || src_b->depth != dst->depth) return RK_kBadParam;
    if (dst->depth != 8 && dst->depth != 16 && dst->depth != 32) return RK_kBadParam;

    Area area;
    if (!clip(rect, point, std::min(src_a->width, src_b->width), std::min(src_a->height, src_b->height), *dst,
              &area))
        return RK_kOK;
    switch (dst->depth) {
        case 8: return transfer<uint8_t>(progress, *src_a, *src_b, mode, area, *dst);
        case 16: return transfer<uint16_t>(progress, *src_a, *src_b, mode, area, *dst);
        default: return transfer<float>(progress, *src_a, *src_b, mode, area, *dst);
    }
}
