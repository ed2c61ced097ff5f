// The picture of an in-between time, from two frames and the vectors that lead to them.
#ifndef BUILD_PICTURE_T_H
#define BUILD_PICTURE_T_H

#include <algorithm>

#include "RK/indep/frame/RK.h"
#include "RK/indep/retime/FnEnlargedRows.h"
#include "RK/indep/retime/FnLanes.h"
#include "RK/indep/retime/FnTexture.h"
#include "RK/indep/retime/FnTweener.h"

// Windowed-sinc taps of one axis.
struct FnSincTaps {
    static constexpr int32_t kRadius = 10;
    static constexpr int32_t kCount = 2 * kRadius + 1;
    int64_t first;  // pixel under the first tap
    float taps[kCount];
    // Around pixel-centre position p, normalised.
    explicit FnSincTaps(float p);
};

// Whether a sinc sample is taken as bilinear: both fractions of the position within 0.01 of a whole number.
// Kept: it looks at the position itself, so that a whole-pixel displacement, which ends in .5, runs the sinc.
bool FnSincIsBilinear(float px, float py);

// Where a group of pixels lies in a frame along its vectors.
template <int32_t Count>
struct FnBilinearPlaces {
    int32_t x[Count], y[Count];  // of the upper left of the four pixels read
    float fu[Count], fv[Count];

    // False when a vector is missing or one of the pixels read is not the frame's own.
    template <class Picture>
    bool Find(const Picture& frame, const HvVec2* v, float k, int32_t at_x, int32_t at_y) {
        constexpr int32_t kExact = 1 << 24;  // floats hold whole numbers up to it
        const FnAxis &ax = frame.axis[0], &ay = frame.axis[1];
        const FnLanes left = FnSpread(static_cast<float>(ax.first)),
                      top = FnSpread(static_cast<float>(ay.first));
        const FnLanes right = FnSpread(static_cast<float>(std::min(ax.last, kExact)));
        const FnLanes bottom = FnSpread(static_cast<float>(std::min(ay.last, kExact)));
        const FnLanes half = FnSpread(0.5f), none = FnSpread(FLT_MAX), zero = {}, scale = FnSpread(k);
        const FnLanes row = FnSpread(static_cast<float>(at_y) + 0.5f);
        if (!frame.HasPixels() || ax.first > kExact || ay.first > kExact) return false;
        FnLaneInts inside = {-1, -1, -1, -1};
        for (int32_t i = 0; i < Count; i += 4) {
            FnLanes low, high;
            std::memcpy(&low, v + i, sizeof low);
            std::memcpy(&high, v + i + 2, sizeof high);
            const FnLanes across = __builtin_shufflevector(low, high, 0, 2, 4, 6);
            const FnLanes down = __builtin_shufflevector(low, high, 1, 3, 5, 7);
            const FnLaneInts columns = FnLaneInts{0, 1, 2, 3} + (at_x + i);
            const FnLanes px = __builtin_convertvector(columns, FnLanes) + half - across * scale;
            const FnLanes py = row + down * scale;
            const FnLanes u = px - half, w = py - half;
            inside &= (across != none) & (u >= left) & (u < right) & (w >= top) & (w < bottom);
            const FnLaneInts whole_x = __builtin_convertvector(u, FnLaneInts);
            const FnLaneInts whole_y = __builtin_convertvector(w, FnLaneInts);
            const FnLanes part_x = (u - __builtin_convertvector(whole_x, FnLanes)) + zero;
            const FnLanes part_y = (w - __builtin_convertvector(whole_y, FnLanes)) + zero;
            std::memcpy(x + i, &whole_x, sizeof whole_x);
            std::memcpy(y + i, &whole_y, sizeof whole_y);
            std::memcpy(fu + i, &part_x, sizeof part_x);
            std::memcpy(fv + i, &part_y, sizeof part_y);
        }
        return (inside[0] & inside[1] & inside[2] & inside[3]) != 0;
    }
};

// Per pixel, with q1 and q2 of the two vector maps in output size: F2 along q1 and F1 along q2, composed by
// class and t.
template <class Stored, class Computed, int Scale>
class FnMotionEstimateGradientTweenerBuildPicture : public FnTweenParameters, public FnImgProc {
  public:
    using Picture = FnTexture<Stored, Computed>;
    explicit FnMotionEstimateGradientTweenerBuildPicture(const FnTweenParameters& p) : FnTweenParameters(p) {}
    FnEnlargedRows* rows = nullptr;  // or three maps in output size, which softening needs
    const FnIntMap* class_map = nullptr;
    const FnVectorMap* v1 = nullptr;
    const FnVectorMap* v2 = nullptr;
    const Picture* f1 = nullptr;
    const Picture* f2 = nullptr;
    const Picture* p1 = nullptr;  // probes, which may be null, classify each pixel anew
    const Picture* p2 = nullptr;
    float vector_scale = 1.0f;
    bool nearer_only = false;  // one source only where both are valid
    bool probe_sense = false;  // a low probe counts, rather than a high one
    bool soften = false;       // a second pass over the edges between classes

    void Prepare() override { this->SetPassCount(soften ? 2 : 1); }
    void PassStart() override {
        if (rows && !rows->Reserve(this->Threads())) this->Abort(RK_kOutOfMemory);
    }
    void ProcessBand() override {
        const FnBand band = this->Band();
        for (int32_t y = band.start; y < band.end && this->Check() == 0; ++y) {
            Stored* out = static_cast<Picture*>(this->Map())->Row(y);
            if (this->Pass() == 0)
                BuildRow(y, rows ? rows->Row(y, FnThreadNumber()) : RowOfMaps(y), out);
            else
                for (int32_t x = 0; x < this->Map()->Width(); ++x) Soften(x, y, &out[x]);
        }
    }

  private:
    static constexpr bool k8Bit = Scale == 0xFF;
    static constexpr int32_t kGroup = 16;

    FnLanes AlongFirst(int32_t x, int32_t y, const HvVec2& q2) const {
        return Sample(*f1, q2, vector_scale * this->t, x, y);
    }
    FnLanes AlongSecond(int32_t x, int32_t y, const HvVec2& q1) const {
        return Sample(*f2, q1, vector_scale * (1.0f - this->t), x, y);
    }

    FnTweenRow RowOfMaps(int32_t y) const {
        return {v1->Row(y), v2->Row(y), class_map ? class_map->Row(y) : nullptr, true};
    }

    // Groups of pixels that see both sources, each inside the frames by bilinear samples, go together.
    void BuildRow(int32_t y, const FnTweenRow& row, Stored* out) const {
        const bool plain = !row.one_source && !nearer_only && !(p1 && p2) && !(this->flags & kFnSincSampling);
        const int32_t columns = this->Map()->Width();
        for (int32_t x = 0; x < columns; x += kGroup) {
            FnBilinearPlaces<kGroup> first, second;
            if (plain && x + kGroup <= columns && first.Find(*f1, row.b + x, vector_scale * this->t, x, y) &&
                second.Find(*f2, row.a + x, vector_scale * (1.0f - this->t), x, y))
                BuildGroup(first, second, out + x);
            else
                for (int32_t i = x; i < columns && i < x + kGroup; ++i) Build(i, y, row, &out[i]);
        }
    }
    void BuildGroup(const FnBilinearPlaces<kGroup>& first, const FnBilinearPlaces<kGroup>& second,
                    Stored* out) const {
        const FnLanes part = FnSpread(this->t), rest = FnSpread(1.0f - this->t);
        for (int32_t i = 0; i < kGroup; i += 4) {
            FnLanes four[4];
            for (int32_t n = 0; n < 4; ++n)
                four[n] = Inside(*f2, second, i + n) * part + Inside(*f1, first, i + n) * rest;
            FnStoreFour(four, out + i);
        }
    }
    static FnLanes Inside(const Picture& frame, const FnBilinearPlaces<kGroup>& places, int32_t i) {
        const Stored* p = frame.Row(places.y[i]) + places.x[i];
        const Stored* q =
            reinterpret_cast<const Stored*>(reinterpret_cast<const char*>(p) + frame.RowBytes());
        const auto above = FnLoadPair(p), below = FnLoadPair(q);
        const FnLanes fu = FnSpread(places.fu[i]), fv = FnSpread(places.fv[i]);
        return FnMix(FnMix(above.first, above.second, fu), FnMix(below.first, below.second, fu), fv);
    }

    void Build(int32_t x, int32_t y, const FnTweenRow& row, Stored* out) const {
        const HvVec2 q1 = row.a[x], q2 = row.b[x];
        const int32_t klass = p1 && p2 ? Probe(x, y, q1, q2) : row.classes[x];
        FnStoreLanes(Compose(klass, x, y, q1, q2), out);
    }

    int32_t Probe(int32_t x, int32_t y, const HvVec2& q1, const HvVec2& q2) const {
        auto counts = [this](FnLanes sample) {
            const float red = sample[1];
            return probe_sense ? !(red > (k8Bit ? 253.0f : 1.0f)) : red > (k8Bit ? 2.0f : 0.0f);
        };
        const bool first = counts(Sample(*p1, q2, vector_scale * this->t, x, y));
        const bool second = counts(Sample(*p2, q1, vector_scale * (1.0f - this->t), x, y));
        return first == second ? kFnBothSources : first ? kFnSecondOnly : kFnFirstOnly;
    }

    FnLanes Compose(int32_t klass, int32_t x, int32_t y, const HvVec2& q1, const HvVec2& q2) const {
        const bool paint = this->flags & kFnPaintClasses;
        constexpr float kFull = FnDepth<Scale>::kFull;
        if (nearer_only && klass == kFnBothSources)
            return this->t >= 0.5f ? AlongSecond(x, y, q1) : AlongFirst(x, y, q2);
        if (klass == kFnFirstOnly) return paint ? FnLanes{0.0f, kFull, 0.0f, 0.0f} : AlongFirst(x, y, q2);
        if (klass == kFnSecondOnly) return paint ? FnLanes{0.0f, 0.0f, kFull, 0.0f} : AlongSecond(x, y, q1);
        return AlongSecond(x, y, q1) * FnSpread(this->t) + AlongFirst(x, y, q2) * FnSpread(1.0f - this->t);
    }

    // Where a pixel of one source meets another class, the half of what both sources would give.
    void Soften(int32_t x, int32_t y, Stored* out) const {
        const int32_t klass = class_map->Row(y)[x];
        if (klass == kFnBothSources || !MeetsAnother(klass, x, y)) return;
        HvVec2 q1 = v1->Row(y)[x], q2 = v2->Row(y)[x];
        if (klass == kFnFirstOnly)
            q1 = -q2;
        else if (klass == kFnSecondOnly)
            q2 = -q1;
        const FnLanes now = Compose(kFnBothSources, x, y, q1, q2);
        FnStoreLanes(FnClampLanes(FnSpread(0.5f) * (FnLoad(*out) + now), FnDepth<Scale>::kFull), out);
    }
    bool MeetsAnother(int32_t klass, int32_t x, int32_t y) const {
        for (int32_t j = std::max(y - 1, 0); j <= std::min(y + 1, class_map->Height() - 1); ++j)
            for (int32_t i = std::max(x - 1, 0); i <= std::min(x + 1, class_map->Width() - 1); ++i)
                if (class_map->Row(j)[i] != klass) return true;
        return false;
    }

    // A missing vector gives colour -1 without alpha, which the depth's conversion clamps.
    FnLanes Sample(const Picture& frame, const HvVec2& v, float k, int32_t x, int32_t y) const {
        if (FnIsUndefined(v)) return FnLanes{0.0f, -1.0f, -1.0f, -1.0f};
        const HvVec2 offset = v * k;
        if (FnIsUndefined(offset)) return FnSpread(128.0f);
        const float px = static_cast<float>(x) + 0.5f - offset.x,
                    py = static_cast<float>(y) + 0.5f + offset.y;
        if (!(this->flags & kFnSincSampling) || FnSincIsBilinear(px, py)) return Bilinear(frame, px, py);
        return Sinc(frame, px, py);
    }

    static FnLanes Bilinear(const Picture& frame, float px, float py) {
        const float u = px - 0.5f, v = py - 0.5f;
        const int32_t x = FnFloor(u), y = FnFloor(v);
        const FnLanes fu = FnSpread(FnFraction(u, x)), fv = FnSpread(FnFraction(v, y));
        const FnAxis &ax = frame.axis[0], &ay = frame.axis[1];
        if (x >= ax.first && x < ax.last && y >= ay.first && y < ay.last) {
            const Stored *p = frame.Row(y) + x, *q = frame.Row(y + 1) + x;
            return FnMix(FnMix(FnLoad(p[0]), FnLoad(p[1]), fu), FnMix(FnLoad(q[0]), FnLoad(q[1]), fu), fv);
        }
        const int64_t i = x, j = y;
        return FnMix(FnMix(FnLoad(frame.Read(i, j)), FnLoad(frame.Read(i + 1, j)), fu),
                     FnMix(FnLoad(frame.Read(i, j + 1)), FnLoad(frame.Read(i + 1, j + 1)), fu), fv);
    }

    // Each row is summed across, then the rows.
    static FnLanes Sinc(const Picture& frame, float px, float py) {
        const FnSincTaps across(px), down(py);
        FnLanes total = {};
        for (int32_t j = 0; j < FnSincTaps::kCount; ++j) {
            FnLanes row = {};
            for (int32_t i = 0; i < FnSincTaps::kCount; ++i)
                row += FnSpread(across.taps[i]) * FnLoad(frame.Read(across.first + i, down.first + j));
            total += FnSpread(down.taps[j]) * row;
        }
        return total;
    }
};

#endif
