#include "RK/indep/filter/RK_BoxBlur.h"

#include <algorithm>
#include <cstring>

#include "RK/indep/filter/RKp_BlurJob.h"
#include "RK/indep/filter/RKp_BoxLine.h"
#include "RK/indep/frame/RKp_Report.h"

namespace {

template <class P>
class BoxBlur {
  public:
    BoxBlur(const RKp_BlurArguments& given, int32_t passes)
        : job(given, static_cast<int32_t>(sizeof(P))), passes_(passes) {
        int64_t longest = 0;
        for (int64_t k = 0; k <= passes; ++k) longest = std::max(longest, range(k).size());
        job.allocate(passes == 1 && !job.load ? 0 : 2, longest, static_cast<int32_t>(sizeof(P)));
        goAbreast();
    }

    void line(int32_t thread, int32_t i) {
        RKp_BlurBlock<P>(job, i, [&](int32_t first, int32_t count) {
            if (held_ > 0)
                abreast(thread, first, count);
            else
                stages(thread, first, count);
        });
    }

    RKp_BlurJob job;

  private:
    using Stage = RKp_BoxStage<P>;

    // What stage k reads, in places; the last is the destination. Each pass widens the picture by the radius,
    // and as much is kept as the passes to come bring into the destination.
    RKp_Range range(int64_t k) const {
        const int64_t first = job.shift, end = job.shift + job.dst.length, reach = job.int_radius;
        if (k == passes_) return {first, end};
        if (k == 0 && !job.load) return {0, job.src.length};
        const int64_t grown = k * reach, seen = (passes_ - k) * reach;
        const int64_t from = std::max(-grown, first - seen);
        return {from, std::max(from, std::min(job.src.length + grown, end + seen))};
    }

    bool reads(int32_t k) const { return k == 0 && !job.load; }  // straight from the source
    const P* source(int32_t i) const { return job.src.template line<P>(i + job.shift_across); }

    // Stage k of lines i up to i + count - 1, from world to world.
    Stage stage(int32_t k, int32_t i, int32_t count) const {
        Stage s = {};
        s.in = source(i);
        s.in_step = job.src.step;
        s.in_across = job.src.template pixelsAcross<P>();
        s.out = job.dst.template line<P>(i);
        s.out_step = job.dst.step;
        s.out_across = job.dst.template pixelsAcross<P>();
        s.from = range(k);
        s.to = s.part = range(k + 1);
        s.in_first = s.from.first;
        s.out_first = s.to.first;
        s.lines = count;
        s.reach = job.int_radius;
        s.radius = job.radius;
        s.flags = job.flags;
        s.divide = job.divide && k == passes_ - 1;
        return s;
    }
    void run(const Stage& s) const { (vectors_ && !s.divide ? RKp_BoxPass_SSE2<P> : RKp_BoxPass<P>)(s); }

    // One stage after the other: lines of one pass that reads the source, else one line through the buffers.
    void stages(int32_t thread, int32_t i, int32_t count) const {
        const auto buffer = [&](int32_t k) { return job.scratch.template buffer<P>(thread, k & 1); };
        for (int32_t k = 0; k < passes_; ++k) {
            Stage s = stage(k, i, count);
            if (!reads(k)) {
                s.in = buffer(k);
                s.in_step = 1;
                if (k == 0) RKp_LoadLine(job, source(i), s.from, buffer(k));
            }
            if (k < passes_ - 1) {
                s.out = buffer(k + 1);
                s.out_step = 1;
            }
            run(s);
        }
    }

    // ---- Columns abreast --------------------------------------------------------------------------------
    // Neighbouring columns share cache lines and pages. So that the two lines of scratch hold several, each
    // stage goes only as far as its input does, and of what lies between stages only what windows reach is
    // held.

    static constexpr int32_t kMostPasses = 8;
    struct Running {
        Stage stage;
        RKp_BoxState state;
        P* window;         // what is held of the stage's input
        RKp_Range places;  // which that is; of the stage that reads the source, none
    };

    // Finds a block of columns that the scratch has room for, if one is worth its while.
    void goAbreast() {
        const int64_t windows = passes_ - (job.load ? 0 : 1), wanted = int64_t{job.int_radius} * 5 / 2 + 10;
        const bool columns = (job.src.columns || job.dst.columns) && job.src.evenly && job.dst.evenly;
        if (!columns || windows == 0 || passes_ > kMostPasses) return;
        for (int32_t block = RKp_BoxState::kLines; block >= 4; block /= 2) {
            const int64_t places = job.scratch.bytes() / (windows * block * static_cast<int64_t>(sizeof(P)));
            if (places < wanted) continue;
            job.block = block;
            held_ = places;
            return;
        }
    }

    void abreast(int32_t thread, int32_t i, int32_t count) const {
        Running all[kMostPasses];
        P* window = job.scratch.template buffer<P>(thread, 0);
        for (int32_t k = 0; k < passes_; ++k) {
            Stage& s = all[k].stage;
            s = stage(k, i, count);
            s.part.end = s.part.first;
            s.state = &all[k].state;
            if (k < passes_ - 1) s.out_step = count, s.out_across = 1;
            if (reads(k)) continue;
            s.in = all[k].window = window;
            s.in_step = count, s.in_across = 1;
            all[k].places = {s.from.first, s.from.first};
            window += static_cast<ptrdiff_t>(held_) * job.block;
        }
        const Stage& last = all[passes_ - 1].stage;
        while (last.part.end < last.to.end)
            for (int32_t k = 0; k < passes_; ++k) advance(all, k, i);
    }

    // Runs stage k as far as its input goes and there is room.
    void advance(Running* all, int32_t k, int32_t i) const {
        Stage& s = all[k].stage;
        if (k == 0 && job.load) load(all[0], i);
        const int64_t input = reads(k) ? s.from.end : all[k].places.end;
        int64_t stop = s.to.end;
        if (input < s.from.end) stop = std::min(stop, input - s.reach);
        Running* const next = k < passes_ - 1 ? &all[k + 1] : nullptr;
        if (next != nullptr) {
            slide(*next);
            stop = std::min(stop, next->places.first + held_);
            s.out = next->window;
            s.out_first = next->places.first;
        }
        if (stop <= s.part.end) return;
        s.part = {s.part.end, stop};
        run(s);
        if (next != nullptr) next->places.end = stop;
    }

    // Lets go of what lies behind the window of the stage's next place.
    void slide(Running& r) const {
        Stage& s = r.stage;
        const int64_t keep = std::clamp(s.part.end - 1 - s.reach, r.places.first, r.places.end);
        const auto pixels = [&](int64_t places) {
            return static_cast<size_t>(places) * static_cast<size_t>(s.lines);
        };
        if (keep > r.places.first)
            std::memmove(static_cast<void*>(r.window), r.window + pixels(keep - r.places.first),
                         pixels(r.places.end - keep) * sizeof(P));
        r.places.first = s.in_first = keep;
    }

    void load(Running& r, int32_t i) const {
        slide(r);
        const RKp_Range more = {r.places.end, std::min(r.stage.from.end, r.places.first + held_)};
        if (more.size() <= 0) return;
        P* const out = r.window + static_cast<ptrdiff_t>(more.first - r.places.first) * r.stage.lines;
        for (int32_t j = 0; j < r.stage.lines; ++j)
            RKp_LoadLine(job, source(i + j), more, out + j, r.stage.lines);
        r.places.end = more.end;
    }

    const int32_t passes_;
    const bool vectors_ = KIT_G_CPU_DataP->has_sse2 != 0;
    int64_t held_ = 0;  // places of a window; 0 where columns do not go abreast
};

}  // namespace

RK_Long RK_BoxBlur1D(const RK_ProgressInfo* progress, const RK_World* src, float radius, int32_t passes,
                     uint32_t flags, int32_t src_direction, int32_t src_premultiplied, int32_t dst_direction,
                     int32_t dst_premultiplied, uint8_t force_copy, RK_World* dst) {
    const RKp_BlurArguments given = {
        progress,          src,        radius, flags, src_direction, src_premultiplied, dst_direction,
        dst_premultiplied, force_copy, dst};
    return RKp_BlurAtDepth(given, passes > 0, [&](auto pixel) {
        BoxBlur<decltype(pixel)> blur(given, passes);
        return RKp_RunBlur(blur);
    });
}

// ---- The retired blurs ----------------------------------------------------------------------------------

namespace {
constexpr RK_Long kRetired = 5;
}

// Kept: nothing but the code, in place of a blur.
RK_Long RK_FastBlur_Straight(...) { return kRetired; }
RK_Long RK_FastBlur_Premul(...) { return kRetired; }
