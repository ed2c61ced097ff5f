#include "RK/indep/composite/RK_TransferRect.h"

#include "RK/indep/composite/RK_BlendPipeline.h"
#include "RK/indep/composite/RKp_ClearAlpha.h"
#include "RK/indep/composite/RKp_CompositeArea.h"
#include "RK/indep/composite/RK_MatteRow.h"
#include "RK/indep/composite/RKp_TransferRect.h"
#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/world/RKp_ForDepth.h"

namespace {

// One call, its pointers tested.
struct Job {
    RK_ProgressInfo* progress;
    RK_Long field;
    GEO_Rect src_rect;
    const RK_LayerDef& src;
    const RK_CompositeModePlus& mode;
    const RK_LinearBlendingTables* tables;
    const RK_Mask* mask;
    RK_BlendScratch* own_scratch;
    RK_Long dst_x, dst_y;
    const RK_LayerDef& dst;
};

bool isSkipped(RK_Long field, int32_t y) {
    return (field == RK_kEvenField && (y & 1) == 1) || (field == RK_kOddField && (y & 1) == 0);
}

RK_Long tellProgress(const RK_ProgressInfo* progress, RK_Long current, RK_Long maximum) {
    if (progress == nullptr || progress->progress_func == nullptr) return RK_kOK;
    return progress->progress_func(progress->refcon, current, maximum);
}

// The caller's scratch as it stands, or the process-wide one with rows as wide as `src_rect`.
RK_BlendScratch scratchOf(const Job& job, RK_Long bytes_per_channel) {
    if (job.own_scratch != nullptr) return *job.own_scratch;
    RK_BlendScratch scratch;
    const RK_Long width = RK_Long{job.src_rect.right} - job.src_rect.left;
    RKp_ThrowIf(RKp_ReallocScratch(width, bytes_per_channel, false, &scratch));
    return scratch;
}

bool clip(const Job& job, RKp_CompositeArea* area) {
    if (!RKp_ClipComposite(job.src_rect, job.src, job.dst_x, job.dst_y, job.dst, area)) return false;
    // Outside an inverted mask everything shows, so only the others clip.
    if (job.mask == nullptr || (job.mask->mask_kind & 1u) != 0) return true;
    return RKp_ClipToMask(job.mask->world, job.mask->mask_x, job.mask->mask_y, area);
}

template <class P>
void blendRows(const Job& job, const RKp_CompositeArea& area, RK_BlendModeDescriptor<P>& plan,
               RK_BlendScratch scratch) {
    const int32_t width = area.width(), height = area.height();
    for (int32_t i = 0; i < height; ++i) {
        const int32_t y = area.dst.top + i;
        const P* matte = nullptr;
        if (job.mask != nullptr)
            matte = RK_MatteRow(*job.mask, y, area.dst.left, width, static_cast<P*>(scratch.matte_row));
        if (!isSkipped(job.field, y)) {
            RKp_ThrowIf(RK_BlendPipeline<P>(job.progress, width, &plan,
                                            RKp_PixelAt<const P>(job.src, area.src_left, area.src_top + i),
                                            matte, static_cast<RK_Channel<P>*>(scratch.alpha_save),
                                            RKp_PixelAt<P>(job.dst, area.dst.left, y)));
        }
        if ((y & 127) == 0) {
            RKp_ThrowIf(tellProgress(job.progress, i, height));
            // A host short of memory may have shrunk the process-wide rows meanwhile.
            scratch = scratchOf(job, sizeof(RK_Channel<P>));
        }
        // A dissolve's noise moves on with each row, skipped ones too.
        plan.mode.rand_seed = static_cast<int32_t>(static_cast<uint32_t>(plan.mode.rand_seed) +
                                                   static_cast<uint32_t>(y) * 0x2FF9u);
    }
}

template <class P>
void transferRect(const Job& job) {
    const RK_BlendScratch scratch = scratchOf(job, sizeof(RK_Channel<P>));
    RKp_CompositeArea area;
    if (!clip(job, &area)) return;

    RK_BlendingMode<P> mode = RK_MakeBlendingMode<P>(job.mode);
    mode.rand_seed =
        static_cast<int32_t>(static_cast<uint32_t>(mode.rand_seed) + static_cast<uint32_t>(area.dst.left));
    RK_BlendModeDescriptor<P> plan(mode, job.mask != nullptr, job.tables);
    if (plan.mode_func == nullptr) RKp_Throw(RK_kUnknownMode);
    if (job.mask != nullptr && (job.mask->mask_kind & 3u) != RK_kMaskAlpha && scratch.matte_row == nullptr)
        RKp_Throw(RKp_ReportBadParam(RKp_kSiteFill));

    // A stencil leaves nothing of the destination outside its area.
    if (mode.xfer == RK_Xfer_StencilAlpha || mode.xfer == RK_Xfer_StencilLuma)
        RKp_ClearAlphaOutside<P>(area.dst, job.dst);
    blendRows(job, area, plan, scratch);
}

RK_Long runTransferRect(const char* depths_differ, RK_ProgressInfo* progress, RK_Long field,
                        const GEO_Rect* src_rect, const RK_LayerDef* src, const RK_CompositeModePlus* mode,
                        const RK_LinearBlendingTables* tables, const RK_LayerDef* mask,
                        RK_BlendScratch* scratch, RK_Long dst_x, RK_Long dst_y, RK_LayerDef* dst) {
    if (src == nullptr || mode == nullptr || dst == nullptr) return RKp_ReportBadParam(RKp_kSiteFill);
    const int32_t depth = RKp_WorldDepth(src);
    if (RKp_WorldDepth(dst) != depth || (mask != nullptr && RKp_WorldDepth(mask) != depth))
        return RKp_VERIFICATION(depths_differ);

    // A mask is handed over by the record at its head.
    const Job job = {progress,
                     field,
                     src_rect != nullptr ? *src_rect : RKp_WholeRect(*src),
                     *src,
                     *mode,
                     tables,
                     reinterpret_cast<const RK_Mask*>(mask),
                     scratch,
                     dst_x,
                     dst_y,
                     *dst};
    return RKp_AtBorder([&] {
        RKp_ThrowIf(RKp_ForDepth(depth, RKp_kBadDepthText, [&](auto tag) {
            transferRect<typename decltype(tag)::Pixel>(job);
            return RK_kOK;
        }));
    });
}

}  // namespace

RK_Long RK_TransferRect_S(RK_ProgressInfo* progress, void*, void*, RK_Long field, const GEO_Rect* src_rect,
                          const RK_LayerDef* src, const RK_CompositeModePlus* mode,
                          const RK_LinearBlendingTables* tables, const RK_LayerDef* mask, RK_Long dst_x,
                          RK_Long dst_y, RK_LayerDef* dst) {
    return runTransferRect("RK_TransferRect requires src and dst worlds to have same bit depth", progress,
                           field, src_rect, src, mode, tables, mask, nullptr, dst_x, dst_y, dst);
}

RK_Long RK_TransferRectPlus_S(RK_ProgressInfo* progress, void*, void*, RK_Long field,
                              const GEO_Rect* src_rect, const RK_LayerDef* src,
                              const RK_CompositeModePlus* mode, const RK_LinearBlendingTables* tables,
                              const RK_LayerDef* mask, RK_BlendScratch* scratch, RK_Long dst_x, RK_Long dst_y,
                              RK_LayerDef* dst) {
    return runTransferRect("RK_TransferRectPlus requires src and dst worlds to have same bit depth", progress,
                           field, src_rect, src, mode, tables, mask, scratch, dst_x, dst_y, dst);
}

RK_Long RK_TransferRect(RK_ProgressInfo* progress, void* reserved1, void* reserved2, RK_Long field,
                        const GEO_Rect* src_rect, const RK_LayerDef* src, const RK_CompositeModePlus* mode,
                        const RK_LinearBlendingTables* tables, const RK_LayerDef* mask, RK_Long dst_x,
                        RK_Long dst_y, RK_LayerDef* dst) {
    return RKp_Slot<RKp_kSlot_TransferRect>()(progress, reserved1, reserved2, field, src_rect, src, mode,
                                              tables, mask, dst_x, dst_y, dst);
}

RK_Long RK_TransferRectPlus(RK_ProgressInfo* progress, void* reserved1, void* reserved2, RK_Long field,
                            const GEO_Rect* src_rect, const RK_LayerDef* src,
                            const RK_CompositeModePlus* mode, const RK_LinearBlendingTables* tables,
                            const RK_LayerDef* mask, RK_BlendScratch* scratch, RK_Long dst_x, RK_Long dst_y,
                            RK_LayerDef* dst) {
    return RKp_Slot<RKp_kSlot_TransferRectPlus>()(progress, reserved1, reserved2, field, src_rect, src, mode,
                                                  tables, mask, scratch, dst_x, dst_y, dst);
}
