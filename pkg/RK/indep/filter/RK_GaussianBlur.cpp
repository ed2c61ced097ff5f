#include "RK/indep/filter/RK_GaussianBlur.h"

#include <algorithm>

#include "RK/indep/filter/RKp_GaussianLines.h"
#include "RK/indep/filter/RKp_GaussianValue.h"
#include "RK/indep/frame/RKp_Report.h"

namespace {

// The half kernel and its running sums, in the host's memory.
class Weights {
  public:
    Weights(float radius, int32_t int_radius) : reach(static_cast<int16_t>(int_radius)) {
        const auto taps = static_cast<size_t>(std::max(reach, 0)) + 1;
        w = static_cast<int32_t*>(KIT_AllocatePtr(2 * taps * sizeof(int32_t), RKp_Text(RK_kMsg_BlurMemory)));
        if (w == nullptr) RKp_Throw(RK_kOutOfMemory);
        within = w + taps;
        w[0] = 255;
        within[0] = 0;
        for (int32_t i = 1; i <= reach; ++i) {
            w[i] = static_cast<int32_t>(RKp_GaussianValue(i / (static_cast<double>(radius) + 1.0)) * 255.0);
            within[i] = within[i - 1] + w[i];
        }
        total = w[0] + 2 * within[taps - 1];
    }
    Weights(const Weights&) = delete;
    Weights& operator=(const Weights&) = delete;
    ~Weights() { KIT_FreePtr(w); }

    // Kept: cut to 16 bits; what becomes negative leaves the middle tap alone.
    const int32_t reach;
    int32_t *w, *within;
    int32_t total;
};

template <class P>
class GaussianBlur {
  public:
    explicit GaussianBlur(const RKp_BlurArguments& given)
        : job(given, static_cast<int32_t>(sizeof(P))), weights_(job.radius, job.int_radius) {
        job.allocate(job.load ? 1 : 0, job.src.length, static_cast<int32_t>(sizeof(P)));
    }

    void line(int32_t thread, int32_t i) {
        RKp_BlurBlock<P>(job, i, [&](int32_t first, int32_t count) { blur(thread, first, count); });
    }

    RKp_BlurJob job;

  private:
    void blur(int32_t thread, int32_t i, int32_t count) const {
        RKp_GaussianLines<P> lines = {};
        lines.in = job.src.template line<P>(i + job.shift_across);
        lines.in_step = job.src.step;
        lines.in_across = job.src.template pixelsAcross<P>();
        if (job.load) {
            P* const buffer = job.scratch.template buffer<P>(thread, 0);
            RKp_LoadLine(job, lines.in, {0, job.src.length}, buffer);
            lines.in = buffer;
            lines.in_step = 1;
        }
        lines.out = job.dst.template line<P>(i);
        lines.out_step = job.dst.step;
        lines.out_across = job.dst.template pixelsAcross<P>();
        lines.in_length = job.src.length;
        lines.out_length = job.dst.length;
        lines.lines = count;
        lines.shift = job.shift;
        lines.weights = weights_.w;
        lines.within = weights_.within;
        lines.reach = weights_.reach;
        lines.total = weights_.total;
        lines.flags = job.flags;
        lines.divide = job.divide;
        (vectors_ ? RKp_GaussianPass_SSE2<P> : RKp_GaussianPass<P>)(lines);
    }

    const Weights weights_;
    const bool vectors_ = KIT_G_CPU_DataP->has_sse2 != 0;
};

}  // namespace

RK_Long RK_GaussianBlur1D(const RK_ProgressInfo* progress, const RK_World* src, float radius, uint32_t flags,
                          int32_t src_direction, int32_t src_premultiplied, int32_t dst_direction,
                          int32_t dst_premultiplied, uint8_t force_copy, RK_World* dst) {
    const RKp_BlurArguments given = {
        progress,          src,        radius, flags, src_direction, src_premultiplied, dst_direction,
        dst_premultiplied, force_copy, dst};
    return RKp_BlurAtDepth(given, true, [&](auto pixel) {
        GaussianBlur<decltype(pixel)> blur(given);
        return RKp_RunBlur(blur);
    });
}
