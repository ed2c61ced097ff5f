#include "RK/indep/filter/RK_BoxBlur.h"

#include <algorithm>

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
    }

    void line(int32_t thread, int32_t i) {
        RKp_BlurBlock<P>(job, i, [&](int32_t first, int32_t count) { stages(thread, first, count); });
    }

    RKp_BlurJob job;

  private:
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

    void stages(int32_t thread, int32_t i, int32_t count) {
        const P* const source = job.src.template line<P>(i + job.shift_across);
        const auto buffer = [&](int32_t k) { return job.scratch.template buffer<P>(thread, k & 1); };
        RKp_BoxStage<P> stage = {};
        stage.lines = count;
        stage.reach = job.int_radius;
        stage.radius = job.radius;
        stage.flags = job.flags;
        for (int32_t k = 0; k < passes_; ++k) {
            stage.from = range(k);
            stage.to = range(k + 1);
            // As in scratch, which holds one line.
            stage.in_step = stage.out_step = 1;
            if (k == 0 && !job.load) {
                stage.in = source;
                stage.in_step = job.src.step;
                stage.in_across = job.src.template pixelsAcross<P>();
            } else {
                stage.in = buffer(k);
                if (k == 0) RKp_LoadLine(job, source, stage.from, buffer(k));
            }
            if (k == passes_ - 1) {
                stage.out = job.dst.template line<P>(i);
                stage.out_step = job.dst.step;
                stage.out_across = job.dst.template pixelsAcross<P>();
                stage.divide = job.divide;
            } else {
                stage.out = buffer(k + 1);
            }
            (vectors_ && !stage.divide ? RKp_BoxPass_SSE2<P> : RKp_BoxPass<P>)(stage);
        }
    }

    const int32_t passes_;
    const bool vectors_ = KIT_G_CPU_DataP->has_sse2 != 0;
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
