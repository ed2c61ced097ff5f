// The engine's maps: pixels over a geometry, read by its edge rules.
#ifndef FN_TEXTURE_H
#define FN_TEXTURE_H

#include <cstddef>
#include <cstring>

#include "RK/indep/retime/FnColours.h"
#include "RK/indep/retime/FnTexIndexer.h"

// Stored is what a pixel is in memory, Computed what arithmetic is done in. A map either owns one block of
// width * height pixels or lies over pixels of somebody else. Pixels may be null (an empty size, or an allocation
// that failed, which Failed tells): such a map reads as its default pixel, and every pass tests for it.
template <class Stored_, class Computed_>
class FnTexture : public FnTexIndexer {
  public:
    using Stored = Stored_;
    using Computed = Computed_;

    FnTexture() = default;
    FnTexture(int32_t width, int32_t height) : FnTexIndexer(width, height) { Allocate(); }
    FnTexture(void* pixels, int32_t width, int32_t height, ptrdiff_t row_bytes)
        : FnTexIndexer(width, height), pixels_(static_cast<char*>(pixels)), row_bytes_(row_bytes) {}
    ~FnTexture() override { Release(); }
    FnTexture(const FnTexture&) = delete;
    FnTexture& operator=(const FnTexture&) = delete;

    // Geometry, default pixel and contents, sharing nothing. False when memory is short: the map has no pixels then.
    virtual bool CopyFrom(const FnTexture& other) {
        Resize(other.Width(), other.Height());
        TakeSettings(other);
        default_ = other.default_;
        if (other.pixels_ && pixels_)
            for (int32_t y = 0; y < Height(); ++y)
                std::memcpy(Row(y), other.Row(y), static_cast<size_t>(Width()) * sizeof(Stored));
        return !failed_;
    }
    virtual void SetDefault(const Stored& pixel) { default_ = pixel; }
    virtual Computed SampleMean(const HvVec2& a, const HvVec2& b) const {
        return Bilinear((a.x + b.x) * 0.5f, (a.y + b.y) * 0.5f);
    }
    virtual Computed SampleDifference(const HvVec2& a, const HvVec2& b) const { return Bilinear(a.x - b.x, a.y - b.y); }

    // A new map in place of this one: zero pixels, default zero, edge mode 0, origins 0, full ranges.
    bool Resize(int32_t width, int32_t height) {
        Release();
        for (int i = 0; i < 2; ++i) {
            axis[i] = FnAxis{};
            axis[i].size = i == 0 ? width : height;
            axis[i].SetRange(0, axis[i].size - (axis[i].size > 0 ? 1 : 0));
        }
        default_ = Stored{};
        Allocate();
        return !failed_;
    }
    // The other's size and settings, with zero pixels.
    bool ShapeLike(const FnTexIndexer& other) {
        Resize(other.Width(), other.Height());
        TakeSettings(other);
        return !failed_;
    }
    void Fill(const Stored& value) {
        if (!pixels_) return;
        for (int32_t y = 0; y < Height(); ++y)
            for (Stored *p = Row(y), *end = p + Width(); p != end; ++p) *p = value;
    }
    void Swap(FnTexture& other) {
        std::swap(axis, other.axis);
        std::swap(pixels_, other.pixels_);
        std::swap(owns_, other.owns_);
        std::swap(failed_, other.failed_);
        std::swap(default_, other.default_);
        std::swap(row_bytes_, other.row_bytes_);
    }

    bool HasPixels() const { return pixels_ != nullptr; }
    bool Failed() const { return failed_; }
    ptrdiff_t RowBytes() const { return row_bytes_; }
    const Stored& Default() const { return default_; }
    // y in 0..height - 1 of a map with pixels.
    Stored* Row(int32_t y) { return reinterpret_cast<Stored*>(pixels_ + y * row_bytes_); }
    const Stored* Row(int32_t y) const { return reinterpret_cast<const Stored*>(pixels_ + y * row_bytes_); }

    // By the edge rules.
    const Stored& Read(int64_t x, int64_t y) const {
        const int32_t i = axis[0].MapIndex(x), j = axis[1].MapIndex(y);
        return i == kFnNoPixel || j == kFnNoPixel || !pixels_ ? default_ : Row(j)[i];
    }
    // At a pixel-centre position: pixel (0, 0) has its centre at (0.5, 0.5). Always four reads, horizontal first.
    Computed Bilinear(float px, float py) const {
        const float u = px - 0.5f, v = py - 0.5f;
        const int32_t x = FnFloor(u), y = FnFloor(v);
        const float fu = FnFraction(u, x), fv = FnFraction(v, y);
        const FnAxis &ax = axis[0], &ay = axis[1];
        if (x >= ax.first && x < ax.last && y >= ay.first && y < ay.last && pixels_) {
            const Stored *p = Row(y) + x, *q = Row(y + 1) + x;
            return Blend(p[0], p[1], q[0], q[1], fu, fv);
        }
        const int64_t xx = x, yy = y;
        return Blend(Read(xx, yy), Read(xx + 1, yy), Read(xx, yy + 1), Read(xx + 1, yy + 1), fu, fv);
    }

  private:
    static Computed Blend(const Stored& p00, const Stored& p10, const Stored& p01, const Stored& p11, float fu,
                          float fv) {
        return FnMix(FnMix(FnCompute<Computed>(p00), FnCompute<Computed>(p10), fu),
                     FnMix(FnCompute<Computed>(p01), FnCompute<Computed>(p11), fu), fv);
    }
    void Allocate() {
        if (Width() < 1 || Height() < 1) return;
        const uint64_t bytes = uint64_t{sizeof(Stored)} * static_cast<uint32_t>(Width());
        row_bytes_ = static_cast<ptrdiff_t>(bytes);
        const bool fits = bytes <= PTRDIFF_MAX / static_cast<uint32_t>(Height());
        const size_t all = static_cast<size_t>(bytes * static_cast<uint32_t>(Height()));
        pixels_ = fits ? static_cast<char*>(KIT_AllocatePtrQuiet(all)) : nullptr;
        failed_ = pixels_ == nullptr;
        owns_ = !failed_;
        if (pixels_) std::memset(pixels_, 0, all);
    }
    void Release() {
        if (owns_) KIT_FreePtr(pixels_);
        pixels_ = nullptr;
        owns_ = failed_ = false;
        row_bytes_ = 0;
    }

    bool owns_ = false;
    char* pixels_ = nullptr;
    bool failed_ = false;
    Stored default_{};
    ptrdiff_t row_bytes_ = 0;
};

using FnFloatMap = FnTexture<float, float>;
using FnIntMap = FnTexture<int, int>;
using FnVectorMap = FnTexture<HvVec2, HvVec2>;
template <class Stored>
using FnPicture = FnTexture<Stored, FnPixelFloat>;
using FnAccumulatorMap = FnTexture<FnPixelSum, FnPixelSum>;

#endif
