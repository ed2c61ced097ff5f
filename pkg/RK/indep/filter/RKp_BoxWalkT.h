// The walk of a box blur, for any arithmetic. A window of 2R + 1 pixels slides along; at each place the sums
// lose what falls out behind, gain what comes in ahead, and give a pixel. What lies outside the range is read
// as one zero pixel over and over, so that the walk falls into spans in which nothing is asked.
//
// An arithmetic A has
//   Sums, Sample, Weight    running sums; a pixel read; the type of counts and divisors
//   Divisor                 a weight made ready to divide by
//   Sample read(const P*)
//   Weight one(), edge()    what a pixel counts, and what an outermost one counts less
//   Weight full(reach)      the window's whole weight
//   Weight weigh(n)         the weight of n pixels
//   void add(Sums&, Sample)
//   void slide(Sums&, Sample behind, Sample ahead)
//   void put(const Sums&, Divisor, const P* centre, P* out)                               all weights 1
//   void put(const Sums&, Sample first, Sample last, Divisor, const P* centre, P* out)    outermost ones less
//   void putNone(const P* centre, P* out)                                                 for a divisor of 0
//   bool kRuns              whether it has
//   int64_t run<kEdges>(Sums*, const RKp_BoxRun<P>&, Weight divisor, Weight grows)
//                           which does the first places of a span and tells how many; the divisor is the
//                           first one's, and grows from one to the next
#ifndef RKP_BOX_WALK_T_H
#define RKP_BOX_WALK_T_H

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "RK/indep/filter/RK_BlurFlags.h"
#include "RK/indep/filter/RKp_BoxLine.h"

// Asks for what neighbouring lines hold some places further. The processor's own look ahead stops at a page.
template <class P>
inline void RKp_Prefetch(const P* at, ptrdiff_t step, int32_t lines) {
    constexpr ptrdiff_t kPlaces = 4, kCacheLine = 64;
    // As a number: it may lie outside of the world.
    const auto place = reinterpret_cast<uintptr_t>(at) +
                       static_cast<uintptr_t>(kPlaces * step * static_cast<ptrdiff_t>(sizeof(P)));
    for (ptrdiff_t byte = 0; byte < lines * static_cast<ptrdiff_t>(sizeof(P)); byte += kCacheLine)
        __builtin_prefetch(reinterpret_cast<const void*>(place + static_cast<uintptr_t>(byte)));
}

// Many places of one line, or of lines side by side: pixels at the first place of the first line, and the
// steps to the next place. What lies outside the input is a row of zeros, with a step of 0.
template <class P>
struct RKp_BoxRun {
    struct Pixels {
        const P* at;
        ptrdiff_t step;
    };
    int64_t places;
    int32_t lines;
    Pixels behind, trailing, leading, centre;
    P* out;
    ptrdiff_t in_step, out_step, in_across, out_across;
};

// kLines: 1, or 0 for as many as the stage has.
template <class P, class A, bool kEdges, int kLines>
class RKp_BoxWalk {
  public:
    RKp_BoxWalk(const RKp_BoxStage<P>& stage, const A& arithmetic) : stage_(stage), a_(arithmetic) {}

    void run() {
        if (stage_.part.first == stage_.to.first)
            start();
        else
            resume();
        // Where a pixel comes in, falls out, or is the centre.
        const int64_t reach = stage_.reach, first = stage_.from.first, end = stage_.from.end;
        const int64_t bounds[] = {first - reach, end - reach,       first,          end, first + reach,
                                  end + reach,   first + reach + 1, end + reach + 1};
        for (int64_t place = stage_.part.first; place < stage_.part.end;) {
            int64_t stop = stage_.part.end;
            for (const int64_t bound : bounds)
                if (bound > place) stop = std::min(stop, bound);
            span(place, stop);
            place = stop;
        }
        if (stage_.state != nullptr) keep(*stage_.state);
    }

  private:
    using Sums = typename A::Sums;
    using Weight = typename A::Weight;
    // One place of all lines after another, as pixels of the input or as zero.
    struct Cursor {
        Cursor(const RKp_BoxStage<P>& stage, int64_t place)
            : inside(place >= stage.from.first && place < stage.from.end),
              at(inside ? stage.in + static_cast<ptrdiff_t>(place - stage.in_first) * stage.in_step : kZeros),
              step(inside ? stage.in_step : 0),
              across(inside ? stage.in_across : 0) {}
        const P* line(int32_t j) const { return at + j * across; }
        typename RKp_BoxRun<P>::Pixels pixels() const { return {at, step}; }

        bool inside;
        const P* at;
        ptrdiff_t step, across;
    };

    static constexpr P kZeros[RKp_kBlurBlock] = {};
    static constexpr int kMost = kLines == 1 ? 1 : RKp_kBlurBlock;
    int32_t lines() const { return kLines == 1 ? 1 : stage_.lines; }
    bool renormalise() const { return (stage_.flags & RK_kBlurRenormalise) != 0; }

    // The sums before the first place: of the window one place earlier.
    void start() {
        const int64_t centre = stage_.to.first - 1;
        const int64_t from = std::max(stage_.from.first, centre - stage_.reach);
        const int64_t to = std::min(stage_.from.end - 1, centre + stage_.reach);
        count_ = a_.weigh(std::max<int64_t>(0, to - from + 1));
        for (int32_t j = 0; j < lines(); ++j) sums_[j] = Sums{};
        Cursor cursor(stage_, from);
        for (int64_t place = from; place <= to; ++place, cursor.at += cursor.step)
            for (int32_t j = 0; j < lines(); ++j) a_.add(sums_[j], a_.read(cursor.line(j)));
    }

    void keep(RKp_BoxState& state) const {
        static_assert(sizeof(Sums) <= RKp_BoxState::kSumBytes && sizeof(Weight) <= sizeof state.count);
        std::memcpy(&state.count, &count_, sizeof count_);
        std::memcpy(state.sums, sums_, static_cast<size_t>(lines()) * sizeof(Sums));
    }
    void resume() {
        std::memcpy(&count_, &stage_.state->count, sizeof count_);
        std::memcpy(static_cast<void*>(sums_), stage_.state->sums,
                    static_cast<size_t>(lines()) * sizeof(Sums));
    }

    // What falls out at a place, the window's outermost pixels, and the one in its middle.
    struct Window {
        Window(const RKp_BoxStage<P>& stage, int64_t place)
            : behind(stage, place - 1 - stage.reach),
              trailing(stage, place - stage.reach),
              leading(stage, place + stage.reach),
              centre(stage, place) {}
        Cursor behind, trailing, leading, centre;
    };
    Weight lost(const Window& at) const {
        Weight weight = 0;
        if (kEdges && at.trailing.inside) weight += a_.edge();
        if (kEdges && at.leading.inside) weight += a_.edge();
        return weight;
    }

    // Places first up to end - 1, in which the same of the window's ends are inside.
    void span(int64_t first, int64_t end) {
        if constexpr (A::kRuns) first += ran(first, end);
        if (first == end) return;
        const Window at(stage_, first);
        if (!renormalise()) {
            steady(first, end, at, a_.full(stage_.reach));
        } else if (at.behind.inside == at.leading.inside) {
            steady(first, end, at, count_ - lost(at));
        } else {
            const Weight less = lost(at);
            walk(first, end, at, [&](auto&& step) {
                if (at.behind.inside) count_ -= a_.one();
                if (at.leading.inside) count_ += a_.one();
                const Weight divisor = count_ - less;
                if (divisor == 0)
                    step(None{});
                else
                    step(a_.divisor(divisor));
            });
        }
    }
    void steady(int64_t first, int64_t end, const Window& at, Weight divisor) {
        if (divisor == 0) {
            walk(first, end, at, [](auto&& step) { step(None{}); });
        } else {
            const auto ready = a_.divisor(divisor);
            walk(first, end, at, [&](auto&& step) { step(ready); });
        }
    }

    // The places of the span that the arithmetic does by itself.
    int64_t ran(int64_t first, int64_t end) {
        const Window at(stage_, first);
        Weight grows = 0, divisor = a_.full(stage_.reach);
        if (renormalise()) {
            grows = (at.leading.inside ? a_.one() : 0) - (at.behind.inside ? a_.one() : 0);
            divisor = count_ + grows - lost(at);
        }
        if (divisor == 0) return 0;
        int64_t places = end - first;
        // At the last place the last pixel may have left the window.
        if (divisor + grows * static_cast<Weight>(places - 1) == 0) --places;
        const RKp_BoxRun<P> run = {places,
                                   lines(),
                                   at.behind.pixels(),
                                   at.trailing.pixels(),
                                   at.leading.pixels(),
                                   at.centre.pixels(),
                                   outAt(first),
                                   stage_.in_step,
                                   stage_.out_step,
                                   stage_.in_across,
                                   stage_.out_across};
        const int64_t done = a_.template run<kEdges>(sums_, run, divisor, grows);
        count_ += grows * static_cast<Weight>(done);
        return done;
    }
    P* outAt(int64_t place) const {
        return stage_.out + static_cast<ptrdiff_t>(place - stage_.out_first) * stage_.out_step;
    }

    struct None {};
    // choose(step) calls step with the divisor of each place.
    template <class Choose>
    void walk(int64_t first, int64_t end, Window at, Choose&& choose) {
        P* out = outAt(first);
        for (int64_t n = end - first; n > 0; --n) {
            if (kLines != 1) {
                if (at.leading.across == 1) RKp_Prefetch(at.leading.at, at.leading.step, lines());
                if (stage_.out_across == 1) RKp_Prefetch(out, stage_.out_step, lines());
            }
            choose([&](const auto& divisor) {
                for (int32_t j = 0; j < lines(); ++j) place(j, at, divisor, out);
            });
            at.behind.at += at.behind.step;
            at.trailing.at += at.trailing.step;
            at.leading.at += at.leading.step;
            at.centre.at += at.centre.step;
            out += stage_.out_step;
        }
    }
    template <class Divisor>
    void place(int32_t j, const Window& at, const Divisor& divisor, P* out) {
        const auto ahead = a_.read(at.leading.line(j));
        a_.slide(sums_[j], a_.read(at.behind.line(j)), ahead);
        P* const to = out + j * stage_.out_across;
        if constexpr (std::is_same_v<Divisor, None>)
            a_.putNone(at.centre.line(j), to);
        else if constexpr (kEdges)
            a_.put(sums_[j], a_.read(at.trailing.line(j)), ahead, divisor, at.centre.line(j), to);
        else
            a_.put(sums_[j], divisor, at.centre.line(j), to);
    }

    const RKp_BoxStage<P>& stage_;
    const A& a_;
    Weight count_ = 0;
    Sums sums_[kMost];
};

template <class P, class A>
void RKp_WalkBox(const RKp_BoxStage<P>& stage, const A& arithmetic) {
    const bool edges = arithmetic.edge() != 0;
    if (stage.lines == 1)
        edges ? RKp_BoxWalk<P, A, true, 1>(stage, arithmetic).run()
              : RKp_BoxWalk<P, A, false, 1>(stage, arithmetic).run();
    else
        edges ? RKp_BoxWalk<P, A, true, 0>(stage, arithmetic).run()
              : RKp_BoxWalk<P, A, false, 0>(stage, arithmetic).run();
}

#endif
