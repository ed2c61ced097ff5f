// The three shapes of image operation: a Generator writes a map, a Sampler writes one from another, a Combiner one
// from two. Bad destinations are told on standard error and left alone.
#ifndef IMAGERS_H
#define IMAGERS_H

#include <algorithm>
#include <cstdio>

#include "RK/indep/retime/FnImgProc.h"
#include "RK/indep/retime/FnTexture.h"

// The common base. The output region is the destination's whole area unless it was restricted.
class Imager : public FnMultiProcessor {
  public:
    void SetSingleThreaded(bool on) { AllowThreads(!on); }
    void SetRegion(const GEO_LRect& region) {
        region_ = region;
        restricted_ = true;
    }

  protected:
    // Fits the region to the destination; one that covers it is no longer restricted.
    void ValidateRegion(const FnTexIndexer& map) {
        const GEO_LRect whole = {0, 0, map.Width(), map.Height()};
        if (restricted_) {
            region_ = {std::clamp(region_.left, 0, whole.right), std::clamp(region_.top, 0, whole.bottom),
                       std::clamp(region_.right, 0, whole.right), std::clamp(region_.bottom, 0, whole.bottom)};
            restricted_ = region_.left != 0 || region_.top != 0 || region_.right != whole.right ||
                          region_.bottom != whole.bottom;
        }
        if (!restricted_) region_ = whole;
    }
    FnBand Band() const { return FnBandOf(region_.top, region_.bottom, FnThreadNumber(), Threads()); }
    const GEO_LRect& Region() const { return region_; }
    // Before each pass of a Sampler or Combiner.
    virtual void PreRow() {}
    void PassStart() override { PreRow(); }

    // True when there is something to write to; otherwise says why not.
    template <class Map>
    static bool IsUsable(const Map* map, const char* null_text, const char* bogus_text) {
        if (!map) {
            std::fputs(null_text, stderr);
            return false;
        }
        if (map->Width() < 1 || map->Height() < 1 || !map->HasPixels()) {
            std::fputs(bogus_text, stderr);
            return false;
        }
        return true;
    }

  private:
    GEO_LRect region_{};
    bool restricted_ = false;
};

template <class Map>
class Generator : public virtual Imager {
  public:
    void process(Map* map) {
        if (!IsUsable(map, "Map passed into Generator::process is NULL\n",
                      "Map passed into Generator::process is bogus\n"))
            return;
        dest_ = map;
        ValidateRegion(*map);
        Process();
        dest_ = nullptr;
    }

  protected:
    Map* dest_ = nullptr;
};

// A source without pixels reads as its default pixel; a null source is left without a word.
template <class Dest, class Source>
class Sampler : public virtual Imager {
  public:
    void process(const Source* source, Dest* dest) {
        // Kept: the text for a null destination names the Generator, and that for a bogus one the Sampler.
        if (!IsUsable(dest, "Map passed into Generator::process is NULL\n",
                      "Map passed into Sampler::process is bogus\n"))
            return;
        if (!source) return;
        source_ = source;
        dest_ = dest;
        ValidateRegion(*dest);
        Process();
        source_ = nullptr;
        dest_ = nullptr;
    }

  protected:
    const Source* source_ = nullptr;
    Dest* dest_ = nullptr;
};

template <class Dest, class A, class B>
class Combiner : public virtual Imager {
  public:
    void process(const A* a, const B* b, Dest* dest) {
        // Kept: the text for a bogus destination names the Generator.
        if (!IsUsable(dest, "Map passed into Combiner::process is NULL\n",
                      "Map passed into Generator::process is bogus\n"))
            return;
        if (!a || !b) return;
        a_ = a;
        b_ = b;
        dest_ = dest;
        ValidateRegion(*dest);
        Process();
        a_ = nullptr;
        b_ = nullptr;
        dest_ = nullptr;
    }

  protected:
    const A* a_ = nullptr;
    const B* b_ = nullptr;
    Dest* dest_ = nullptr;
};

// A stretch of source pixels in one direction, read by the edge rules.
template <class Map>
struct FnSourceRun {
    const typename Map::Stored* pixel;
    int32_t step;   // in pixels
    int64_t count;  // at least 1
};

template <class Map>
FnSourceRun<Map> FnSourceRunFrom(const Map& map, const FnRun& row, int64_t x) {
    const FnRun run = map.axis[0].RunFrom(x);
    if (run.index == kFnNoPixel || row.index == kFnNoPixel || !map.HasPixels())
        return {&map.Default(), 0, run.count};
    return {map.Row(row.index) + run.index, run.direction, run.count};
}

// Per pixel: Derived::Pixel(source pixel, destination pixel, thread number). Derived is the final class.
template <class Derived, class Dest, class Source>
class GeneralSampler : public Sampler<Dest, Source> {
  public:
    void ProcessBand() override {
        const FnBand band = this->Band();
        const GEO_LRect region = this->Region();
        const int32_t thread = FnThreadNumber();
        for (int32_t y = band.start; y < band.end && this->Check() == 0; ++y) {
            const FnRun row = this->source_->axis[1].RunFrom(y);
            typename Dest::Stored* out = this->dest_->Row(y);
            for (int64_t x = region.left; x < region.right;) {
                const FnSourceRun<Source> run = FnSourceRunFrom(*this->source_, row, x);
                const int64_t end = std::min<int64_t>(x + run.count, region.right);
                const typename Source::Stored* in = run.pixel;
                for (; x < end; ++x, in += run.step) static_cast<Derived*>(this)->Pixel(*in, out[x], thread);
            }
        }
    }
};

// Per pixel with its place: Derived::Pixel(source pixel, destination pixel, x, y, thread number).
template <class Derived, class Dest, class Source>
class GeneralSamplerPos : public Sampler<Dest, Source> {
  public:
    void ProcessBand() override {
        const FnBand band = this->Band();
        const GEO_LRect region = this->Region();
        const int32_t thread = FnThreadNumber();
        for (int32_t y = band.start; y < band.end && this->Check() == 0; ++y) {
            const FnRun row = this->source_->axis[1].RunFrom(y);
            typename Dest::Stored* out = this->dest_->Row(y);
            for (int64_t x = region.left; x < region.right;) {
                const FnSourceRun<Source> run = FnSourceRunFrom(*this->source_, row, x);
                const int64_t end = std::min<int64_t>(x + run.count, region.right);
                const typename Source::Stored* in = run.pixel;
                for (; x < end; ++x, in += run.step)
                    static_cast<Derived*>(this)->Pixel(*in, out[x], static_cast<int32_t>(x), y, thread);
            }
        }
    }
};

// Per pixel: Derived::Pixel(a, b, destination pixel, thread number), over the common stretches of A and B.
template <class Derived, class Dest, class A, class B>
class GeneralCombiner : public Combiner<Dest, A, B> {
  public:
    void ProcessBand() override {
        const FnBand band = this->Band();
        const GEO_LRect region = this->Region();
        const int32_t thread = FnThreadNumber();
        for (int32_t y = band.start; y < band.end && this->Check() == 0; ++y) {
            const FnRun row_a = this->a_->axis[1].RunFrom(y), row_b = this->b_->axis[1].RunFrom(y);
            typename Dest::Stored* out = this->dest_->Row(y);
            for (int64_t x = region.left; x < region.right;) {
                const FnSourceRun<A> run_a = FnSourceRunFrom(*this->a_, row_a, x);
                const FnSourceRun<B> run_b = FnSourceRunFrom(*this->b_, row_b, x);
                const int64_t end = std::min<int64_t>(x + std::min(run_a.count, run_b.count), region.right);
                const typename A::Stored* a = run_a.pixel;
                const typename B::Stored* b = run_b.pixel;
                for (; x < end; ++x, a += run_a.step, b += run_b.step)
                    static_cast<Derived*>(this)->Pixel(*a, *b, out[x], thread);
            }
        }
    }
};

#endif
