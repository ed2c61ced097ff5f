#include "RK/indep/filter/RK_GaussianBlur.h"

#include <algorithm>

#include "RK/indep/filter/RKp_BlurJob.h"
#include "RK/indep/filter/RKp_GaussianLine.h"
#include "RK/indep/filter/RKp_GaussianValue.h"
#include "RK/indep/frame/RKp_Report.h"

namespace {

// The half kernel, in the host's memory.
class Weights {
  public:
    explicit Weights(float radius, int32_t int_radius) : reach(static_cast<int16_t>(int_radius)) {
        const auto taps = static_cast<size_t>(std::max(reach, 0)) + 1;
        w = static_cast<int32_t*>(KIT_AllocatePtr(taps * sizeof(int32_t), RKp_Text(RK_kMsg_BlurMemory)));
        if (w == nullptr) RKp_Throw(RK_kOutOfMemory);
        w[0] = total = 255;
        for (int32_t i = 1; i <= reach; ++i) {
            w[i] = static_cast<int32_t>(RKp_GaussianValue(i / (static_cast<double>(radius) + 1.0)) * 255.0);
            total += 2 * w[i];
        }
    }
    Weights(const Weights&) = delete;
    Weights& operator=(const Weights&) = delete;
    ~Weights() { KIT_FreePtr(w); }

    // Kept: cut to 16 bits; what becomes negative leaves the middle tap alone.
    const int32_t reach;
    int32_t* w;
    int32_t total;
};

template <class P>
class GaussianBlur {
  public:
    explicit GaussianBlur(const RKp_BlurArguments& given)
        : job(given, static_cast<int32_t>(sizeof(P))), weights_(job.radius, job.int_radius) {
        if (job.load) job.scratch.allocate(job.threads, 1, job.src.length, static_cast<int32_t>(sizeof(P)));
    }

    void line(int32_t thread, int32_t i) {
        P* const out = job.dst.template line<P>(i);
        const int64_t line = i + job.shift_across;
        if (line < 0 || line >= job.src.count) return RKp_ClearLine(out, job.dst.step, job.dst.length);

        RKp_GaussianLine<P> run = {};
        run.in = job.src.template line<P>(line);
        run.in_step = job.src.step;
        if (job.load) {
            P* const buffer = job.scratch.template buffer<P>(thread, 0);
            RKp_LoadLines(job, run.in, 1, 1, {0, job.src.length}, buffer);
            run.in = buffer;
            run.in_step = 1;
        }
        run.in_length = job.src.length;
        run.out = out;
        run.out_step = job.dst.step;
        run.out_length = job.dst.length;
        run.shift = job.shift;
        run.weights = weights_.w;
        run.reach = weights_.reach;
        run.total = weights_.total;
        run.flags = job.flags;
        run.divide = job.divide;
        RKp_GaussianPass<P>(run);
    }

    RKp_BlurJob job;

  private:
    const Weights weights_;
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
