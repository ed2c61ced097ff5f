#include "RK/indep/filter/RKp_BlurJob.h"

#include <algorithm>
#include <cmath>

#include "RK/host/KIT.h"
#include "RK/indep/frame/RKp_Progress.h"
#include "RK/indep/frame/RKp_Report.h"

RK_Long RKp_CheckBlur(const RKp_BlurArguments& given) {
    const auto has_pixels = [](const RK_World* world) {
        return world != nullptr && world->record.data != nullptr;
    };
    // The negated form refuses NaN too.
    const bool radius_fits = given.radius >= 0.0f && given.radius < 2147483648.0f;
    if (has_pixels(given.src) && has_pixels(given.dst) && radius_fits) return RK_kOK;
    return RKp_ReportBadParam(RKp_kSiteBlur);
}

// ---- Geometry -------------------------------------------------------------------------------------------

RKp_BlurLines::RKp_BlurLines(const RK_LayerDef& world, int32_t direction, int32_t pixel_size)
    : base(reinterpret_cast<uintptr_t>(world.data)),
      across(direction != 0 ? pixel_size : world.rowbytes),
      step(direction != 0 ? world.rowbytes / pixel_size : 1),
      count(std::max(direction != 0 ? world.width : world.height, 0)),
      length(std::max(direction != 0 ? world.height : world.width, 0)),
      origin(direction != 0 ? world.origin_y : world.origin_x),
      origin_across(direction != 0 ? world.origin_x : world.origin_y),
      columns(direction != 0),
      evenly(across % pixel_size == 0) {}

RKp_BlurJob::RKp_BlurJob(const RKp_BlurArguments& given, int32_t pixel_size)
    : progress(given.progress),
      src(given.src->record, given.src_direction, pixel_size),
      dst(given.dst->record, given.dst_direction, pixel_size),
      shift(dst.origin - src.origin),
      shift_across(dst.origin_across - src.origin_across),
      radius(given.radius),
      int_radius(static_cast<int32_t>(std::ceil(given.radius))),
      flags(given.flags),
      divide(given.dst_premultiplied == 0),
      premultiply_on_load(given.src_premultiplied == 0 &&
                          (given.flags & (RK_kBlurRed | RK_kBlurGreen | RK_kBlurBlue)) != 0),
      load(given.force_copy != 0 || premultiply_on_load),
      threads(std::max(KIT_GetNumThreads(), 1)) {}

void RKp_BlurJob::allocate(int32_t buffers, int64_t places, int32_t pixel_size) {
    if (buffers != 0)
        scratch.allocate(threads, buffers, places, pixel_size);
    else if ((src.columns || dst.columns) && src.evenly && dst.evenly)
        block = RKp_kBlurBlock;
}

// ---- Scratch --------------------------------------------------------------------------------------------

void RKp_BlurScratch::allocate(int32_t threads, int32_t buffers, int64_t pixels, int32_t pixel_size) {
    // What no memory holds is asked for all the same, so that it fails and is reported like any other.
    const double wanted = (static_cast<double>(pixels) * pixel_size + 32) * buffers * threads;
    size_t bytes = SIZE_MAX;
    if (wanted < static_cast<double>(SIZE_MAX / 2)) {
        buffers_ = buffers;
        buffer_bytes_ =
            (static_cast<size_t>(pixels) * static_cast<size_t>(pixel_size) + 16 + 15) & ~size_t{15};
        bytes = buffer_bytes_ * static_cast<size_t>(buffers) * static_cast<size_t>(threads) + 15;
    }
    block_ = KIT_AllocatePtr(bytes, RKp_Text(RK_kMsg_BlurMemory));
    if (block_ == nullptr) RKp_Throw(RK_kOutOfMemory);
    first_ = static_cast<uint8_t*>(block_) + (-reinterpret_cast<uintptr_t>(block_) & 15);
    accounted_ = static_cast<int64_t>(bytes);
    KIT_AccountAllocation(accounted_);
}

RKp_BlurScratch::~RKp_BlurScratch() {
    if (block_ == nullptr) return;
    KIT_AccountAllocation(-accounted_);
    KIT_FreePtr(block_);
}

// ---- The run --------------------------------------------------------------------------------------------

RK_Long RKp_FinishLine(RKp_BlurJob& job, RK_Long thread, RK_Long i, RK_Long count, RK_Long error) {
    if (error == RK_kOK && thread == 0)
        error = RKp_AtBorder(
            [&] { RKp_CheckIn(job.progress, static_cast<int32_t>(i), static_cast<int32_t>(count)); });
    if (error != RK_kOK) {
        RK_Long none = RK_kOK;
        job.error.compare_exchange_strong(none, error);
    }
    return job.error.load(std::memory_order_relaxed);
}

RK_Long RKp_RunLines(RKp_BlurJob& job, void* refcon, RK_GenericFunc* task) {
    // A count below 1 means something else there.
    if (job.dst.count < 1) return RK_kOK;
    const RK_Long result = RK_IterateGeneric(job.dst.count, refcon, task);
    const RK_Long error = job.error.load();
    return error != RK_kOK ? error : result;
}
