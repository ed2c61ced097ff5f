// What a one-axis blur is set up with: its lines, its scratch, and its run through RK_IterateGeneric.
#ifndef RKP_BLUR_JOB_H
#define RKP_BLUR_JOB_H

#include <algorithm>
#include <atomic>

#include "RK/indep/filter/RK_BlurFlags.h"
#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_Depth.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/passes/RK_Iterate.h"
#include "RK/indep/world/RK_World.h"

// The lines of a world: its columns for a non-zero direction, else its rows.
struct RKp_BlurLines {
    RKp_BlurLines(const RK_LayerDef& world, int32_t direction, int32_t pixel_size);

    // The first pixel of a line; `step` pixels further lies the next.
    template <class P>
    P* line(int64_t i) const {
        return reinterpret_cast<P*>(base + static_cast<uintptr_t>(i * across));
    }

    template <class P>
    ptrdiff_t pixelsAcross() const {
        return static_cast<ptrdiff_t>(across) / static_cast<ptrdiff_t>(sizeof(P));
    }

    uintptr_t base;
    int64_t across;  // bytes from line to line
    ptrdiff_t step;  // pixels along a line
    int32_t count, length;
    int64_t origin, origin_across;
    bool columns;
    bool evenly;  // `across` is a whole number of pixels
};

// Lines that are walked together where neighbours share cache lines, straight from world to world. 64 at
// most, so that progress comes between blocks.
constexpr int32_t RKp_kBlurBlock = 64;

// What both exports are given.
struct RKp_BlurArguments {
    const RK_ProgressInfo* progress;
    const RK_World* src;
    float radius;
    uint32_t flags;
    int32_t src_direction, src_premultiplied, dst_direction, dst_premultiplied;
    uint8_t force_copy;
    RK_World* dst;
};

// 0, or 3 after a report, for what no depth has to be known for.
RK_Long RKp_CheckBlur(const RKp_BlurArguments& given);

// work(pixel) at the border, with a pixel of the worlds' type, when all is well; otherwise 3.
template <class Work>
RK_Long RKp_BlurAtDepth(const RKp_BlurArguments& given, bool well, Work&& work) {
    return RKp_AtBorder([&]() -> RK_Long {
        if (!well) return RKp_ReportBadParam(RKp_kSiteBlur);
        RKp_ThrowIf(RKp_CheckBlur(given));
        if (given.src->Depth() != given.dst->Depth()) RKp_Throw(RK_kBadParam);
        switch (given.src->Depth()) {
            case 8: return work(RK_Pixel8{});
            case 16: return work(RK_Pixel16{});
            case 32: return work(RK_PixelFloat{});
            default: RKp_Throw(RK_kBadParam);
        }
    });
}

// Buffers for every thread that the host may spread lines over. Told to the host's accounting while they
// live.
class RKp_BlurScratch {
  public:
    RKp_BlurScratch() = default;
    RKp_BlurScratch(const RKp_BlurScratch&) = delete;
    RKp_BlurScratch& operator=(const RKp_BlurScratch&) = delete;
    ~RKp_BlurScratch();

    // For each thread `buffers` of them, each for a line of `pixels` and 16 bytes more. Throws 4, reported.
    void allocate(int32_t threads, int32_t buffers, int64_t pixels, int32_t pixel_size);
    // The bytes of a thread's buffers, which lie one after the other.
    int64_t bytes() const { return static_cast<int64_t>(buffer_bytes_) * buffers_; }
    // Aligned to 16.
    template <class P>
    P* buffer(int32_t thread, int32_t which) const {
        return reinterpret_cast<P*>(first_ + static_cast<size_t>(thread * buffers_ + which) * buffer_bytes_);
    }

  private:
    void* block_ = nullptr;
    uint8_t* first_ = nullptr;
    int32_t buffers_ = 0;
    size_t buffer_bytes_ = 0;
    int64_t accounted_ = 0;
};

// A call's facts, shared read-only by all threads but for the error.
struct RKp_BlurJob {
    RKp_BlurJob(const RKp_BlurArguments& given, int32_t pixel_size);
    // Makes scratch of `buffers` a thread, each for a line of `places`; none where `buffers` is 0.
    void allocate(int32_t buffers, int64_t places, int32_t pixel_size);

    const RK_ProgressInfo* const progress;
    const RKp_BlurLines src, dst;
    // Source index of the destination's pixel 0, along and across.
    int64_t shift, shift_across;
    float radius;
    int32_t int_radius;  // rounded up
    uint32_t flags;
    bool divide;               // the result by its alpha
    bool premultiply_on_load;  // the flagged colours
    bool load;                 // lines are copied into scratch before they are read
    int32_t block = 1;         // lines that are walked together
    int32_t threads;           // that the scratch is for
    RKp_BlurScratch scratch;
    std::atomic<RK_Long> error{RK_kOK};  // what thread 0's progress gave
};

// ---- Lines ----------------------------------------------------------------------------------------------

template <class P>
void RKp_ClearLine(P* out, ptrdiff_t step, int64_t count) {
    for (; count > 0; --count, out += step) *out = P{};
}

// The task of line i. Where lines go in blocks the first of a block does all of it: progress and threads see
// lines, memory sees rows. work(first, count) is for lines that the source has; the others are cleared.
template <class P, class Work>
void RKp_BlurBlock(const RKp_BlurJob& job, int32_t i, Work&& work) {
    if (i % job.block != 0) return;
    const int32_t stop = job.dst.count - i > job.block ? i + job.block : job.dst.count;
    const auto within = [&](int64_t line) {
        return static_cast<int32_t>(std::clamp<int64_t>(line - job.shift_across, i, stop));
    };
    const int32_t first = within(0), end = within(job.src.count);
    for (int32_t k = i; k < stop; ++k)
        if (k < first || k >= end) RKp_ClearLine(job.dst.line<P>(k), job.dst.step, job.dst.length);
    if (first < end) work(first, end - first);
}

struct RKp_Range {
    int64_t first, end;  // no end before its first
    int64_t size() const { return end - first; }
};

// Pixels of a source line into a buffer; premultiplied where the job says so.
template <class P>
void RKp_LoadLine(const RKp_BlurJob& job, const P* in, const RKp_Range& range, P* out, ptrdiff_t step = 1) {
    using D = RKp_Depth<P>;
    using C = typename D::Channel;
    if (range.size() == 0) return;
    in += static_cast<ptrdiff_t>(range.first) * job.src.step;
    const bool red = (job.flags & RK_kBlurRed) != 0, green = (job.flags & RK_kBlurGreen) != 0,
               blue = (job.flags & RK_kBlurBlue) != 0;
    for (int64_t n = range.size(); n > 0; --n, in += job.src.step, out += step) {
        const P p = *in;
        const auto mul = [&](bool flagged, C c) { return flagged ? static_cast<C>(D::mul(c, p.alpha)) : c; };
        *out =
            job.premultiply_on_load ? P{p.alpha, mul(red, p.red), mul(green, p.green), mul(blue, p.blue)} : p;
    }
}

// ---- The run --------------------------------------------------------------------------------------------

// After a line that ended with `error`: progress, and what stops the run.
RK_Long RKp_FinishLine(RKp_BlurJob& job, RK_Long thread, RK_Long i, RK_Long count, RK_Long error);
RK_Long RKp_RunLines(RKp_BlurJob& job, void* refcon, RK_GenericFunc* task);

// Runs blur.line(thread, i) for every line i of the destination. A Blur has its job as `job`.
template <class Blur>
RK_Long RKp_RunBlur(Blur& blur) {
    return RKp_RunLines(
        blur.job, &blur, [](void* refcon, RK_Long thread, RK_Long i, RK_Long count) -> RK_Long {
            Blur& b = *static_cast<Blur*>(refcon);
            if (thread < 0 || thread >= b.job.threads) return RK_kBadParam;
            return RKp_FinishLine(b.job, thread, i, count, RKp_AtBorder([&] {
                                      b.line(static_cast<int32_t>(thread), static_cast<int32_t>(i));
                                  }));
        });
}

#endif
