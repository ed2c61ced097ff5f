#include "RK/indep/sample/RK_TransformWorld.h"

#include <algorithm>

#include "RK/indep/composite/RK_MatteRow.h"
#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_HostBlock.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/sample/RKp_MotionScansT.h"
#include "RK/indep/sample/RKp_TransformFinish.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "RK/indep/world/RKp_ForDepth.h"

namespace {

// One call.
struct Request {
    RK_ProgressInfo* progress;
    RK_Long quality, field;
    const RK_World* src;
    const RK_CompositeMode* comp_mode;
    const RK_LinearBlendingTables* tables;
    const RK_TransformMask* mask;
    RK_BlendScratch* scratch;
    const GEO_Matrix3* matrices;
    RK_Long matrix_count;
    bool src2dst;
    const GEO_Rect* dest_rect;
    RK_World* dst;

    bool best() const { return quality != RK_kDraft; }
    bool skips(int32_t y) const {
        return (field == RK_kEvenField && (y & 1) != 0) || (field == RK_kOddField && (y & 1) == 0);
    }
    RK_Long tellProgress(int32_t current, int32_t maximum) const {
        if (progress == nullptr || progress->progress_func == nullptr) return RK_kOK;
        return progress->progress_func(progress->refcon, current, maximum);
    }
};

// A world's record, of no size when it has no pixels.
RK_LayerDef usable(const RK_World& world) {
    RK_LayerDef record = world.record;
    if (record.data == nullptr) record.width = record.height = 0;
    record.width = std::max(record.width, 0);
    record.height = std::max(record.height, 0);
    return record;
}

RK_Mask maskOf(const RK_TransformMask& mask) {
    return {mask.mask_world->record, mask.mask_y, mask.mask_x, mask.mask_kind};
}

RKp_TransformJob makeJob(const Request& r) {
    RKp_TransformJob job{};
    const RK_LayerDef src = usable(*r.src), dst = usable(*r.dst);
    job.src_width = src.width;
    job.src_height = src.height;
    job.dst_width = dst.width;
    job.dst_height = dst.height;
    job.dest = r.dest_rect != nullptr
                   ? GEO_LRect{r.dest_rect->left, r.dest_rect->top, r.dest_rect->right, r.dest_rect->bottom}
                   : GEO_LRect{0, 0, dst.width, dst.height};
    if (r.mask != nullptr && (r.mask->mask_kind & 1u) == 0) {
        const RK_LayerDef mask = usable(*r.mask->mask_world);
        const auto edge = [](int32_t at, int32_t size) {
            return static_cast<int32_t>(std::min<int64_t>(int64_t{at} + size, INT32_MAX));
        };
        job.has_mask_rect = true;
        job.mask_rect = {r.mask->mask_x, r.mask->mask_y, edge(r.mask->mask_x, mask.width),
                         edge(r.mask->mask_y, mask.height)};
    }
    job.best = r.best();
    job.src2dst = r.src2dst;
    job.stencil = r.comp_mode->xfer == RK_Xfer_StencilAlpha || r.comp_mode->xfer == RK_Xfer_StencilLuma;
    job.matrices = r.matrices;
    job.matrix_count = r.matrix_count;
    return job;
}

RK_CompositeModePlus modeOf(const Request& r) {
    RK_CompositeModePlus mode(*r.comp_mode);
    mode.tables = r.tables;
    return mode;
}

// Alpha 0 in every pixel of `area` that is not in `keep`.
template <class P>
void clearAlphaAround(const GEO_LRect& area, const GEO_LRect& keep, RK_WorldX<P>& dst) {
    for (int32_t y = area.top; y < area.bottom; ++y) {
        P* row = dst.row(y);
        const bool crosses = y >= keep.top && y < keep.bottom;
        for (int32_t x = area.left; x < area.right; ++x) {
            if (crosses && x >= keep.left && x < keep.right) continue;
            row[x].alpha = 0;
        }
    }
}

// ---- The ways to fill one row: scan() fills and sums it, nextRow() goes on ------------------------------

template <class P>
class AtRest {
  public:
    AtRest(const Request& r, const RKp_TransformSetup& setup, const RK_LayerDef& src)
        : best_(r.best()), walk_(setup.first), pb_(RKp_MakeSampPB(src, setup.first)) {}
    RK_AlphaSum<P> scan(const RKp_ScanRow<P>& row) const {
        if (!best_) return RKp_ScanDraft(row, walk_);
        return walk_.reduces() ? RKp_ScanArea(row, walk_, pb_) : RKp_ScanBilinear(row, walk_, pb_);
    }
    void nextRow() { walk_.nextRow(); }

  private:
    bool best_;
    RKp_Walk walk_;
    RK_SampPB pb_;
};

template <class P>
class LinearMotion {
  public:
    LinearMotion(const Request& r, const RKp_TransformSetup& setup, const RK_LayerDef& src)
        : best_(r.best()), samples_(int64_t{r.matrix_count} - 1), first_(setup.first), last_(setup.last),
          pb_(RKp_MakeSampPB(src, setup.first)), weights_(best_ ? samples_ * 4 : 0, RK_kMsg_BlendingScratch) {}
    RK_AlphaSum<P> scan(const RKp_ScanRow<P>& row) const {
        const RK_SampleWalk first = first_.line(), last = last_.line();
        if (!best_) {
            return RKp_ScanLinearMotion(row, first, last, samples_, [&](const RK_SampleWalk& path, int64_t count, P* out) {
                RKp_FillNearest(row.src, path, count, out);
            });
        }
        if (RKp_KeepsFractions(first_, last_, row.width)) {
            const RK_SampleWalk path = RKp_MotionPath(first, last, samples_);
            makeWeights(path);
            return RKp_ScanUnitMotion(row, path, pb_, samples_, weights_.get());
        }
        const RKp_RowSamplers<P>& samplers = row.samplers;
        RK_Sampler<P>* const sampler = first_.reduces() ? samplers.called.area : samplers.called.clipped;
        RK_RowSampler<P>* const sample = first_.reduces() ? samplers.area : samplers.clipped;
        return RKp_ScanLinearMotion(row, first, last, samples_, [&](const RK_SampleWalk& path, int64_t count, P* out) {
            sample(sampler, &pb_, path, count, out);
        });
    }
    void nextRow() {
        first_.nextRow();
        last_.nextRow();
    }

  private:
    void makeWeights(const RK_SampleWalk& path) const {
        auto* const compute = RKp_Slot<RKp_kSlot_SubpixelSampleComputeWeight>();
        for (int64_t k = 0; k < samples_; ++k) {
            const RK_SampleWalk at = path.from(k);
            compute(static_cast<uint16_t>(at.x & 0xFFFF), static_cast<uint16_t>(at.y & 0xFFFF), &weights_[k * 4]);
        }
    }

    bool best_;
    int64_t samples_;
    RKp_Walk first_, last_;
    RK_SampPB pb_;
    RKp_HostBlock<double> weights_;  // four for each sample
};

template <class P>
class GeneralMotion {
  public:
    GeneralMotion(const Request& r, const RKp_TransformSetup& setup, const RK_LayerDef& src)
        : count_(r.matrix_count), walks_(count_, RK_kMsg_BlendingScratch), pbs_(count_, RK_kMsg_BlendingScratch) {
        for (int64_t k = 0; k < count_; ++k) {
            RKp_ThrowIf(RKp_MakeWalk(r.matrices[k], r.src2dst, setup.work, &walks_[k]));
            pbs_[k] = RKp_MakeSampPB(src, walks_[k]);
        }
    }
    RK_AlphaSum<P> scan(const RKp_ScanRow<P>& row) const {
        return RKp_ScanGeneralMotion(row, walks_.get(), pbs_.get(), count_);
    }
    void nextRow() {
        for (int64_t k = 0; k < count_; ++k) walks_[k].nextRow();
    }

  private:
    int64_t count_;
    RKp_HostBlock<RKp_Walk> walks_;
    RKp_HostBlock<RK_SampPB> pbs_;
};

// ---- Drawing ---------------------------------------------------------------------------------------------

// The caller's scratch as it stands, or the process-wide one.
template <class P>
RK_BlendScratch scratchOf(const Request& r) {
    if (r.scratch != nullptr) return *r.scratch;
    RK_BlendScratch scratch;
    RKp_ThrowIf(RKp_ReallocScratch(r.dst->record.width, sizeof(RK_Channel<P>), false, &scratch));
    return scratch;
}

template <class P, class Filler>
void drawRows(const Request& r, const RKp_TransformSetup& setup) {
    RK_BlendScratch scratch = scratchOf<P>(r);
    RK_BlendingMode<P> mode = RK_MakeBlendingMode<P>(modeOf(r));
    const GEO_LRect& work = setup.work;
    mode.rand_seed = static_cast<int32_t>(static_cast<uint32_t>(mode.rand_seed) + static_cast<uint32_t>(work.left));
    RK_BlendModeDescriptor<P> plan(mode, r.mask != nullptr, r.tables);
    if (plan.mode_func == nullptr) RKp_Throw(RK_kUnknownMode);

    const RK_LayerDef src = usable(*r.src);
    const RKp_RowSamplers<P> samplers(RKp_GetSamplerBundle<P>());
    Filler filler(r, setup, src);
    RK_WorldX<P> dst(&r.dst->record, false);
    if (mode.xfer == RK_Xfer_StencilAlpha || mode.xfer == RK_Xfer_StencilLuma)
        clearAlphaAround(setup.clip, work, dst);

    const int32_t width = work.right - work.left, height = work.bottom - work.top;
    RKp_ScanRow<P> row = {src, samplers, width, static_cast<P*>(scratch.row_work)};
    for (int32_t y = work.top; y < work.bottom; ++y) {
        if (!r.skips(y)) {
            const P* matte = nullptr;
            if (r.mask != nullptr)
                matte = RK_MatteRow(maskOf(*r.mask), y, work.left, width, static_cast<P*>(scratch.matte_row));
            const RK_AlphaSum<P> sum = filler.scan(row);
            RKp_ThrowIf(RKp_FinishRow(plan, width, sum, row.line, matte,
                                      static_cast<RK_Channel<P>*>(scratch.alpha_save), dst.row(y) + work.left));
        }
        filler.nextRow();
        if ((y & setup.progress_mask) == 0) {
            RKp_ThrowIf(r.tellProgress(y - work.top, height));
            // Whoever was told may have drawn meanwhile, and the process-wide rows be others.
            scratch = scratchOf<P>(r);
            row.line = static_cast<P*>(scratch.row_work);
        }
        plan.mode.rand_seed = static_cast<int32_t>(static_cast<uint32_t>(plan.mode.rand_seed) +
                                                   static_cast<uint32_t>(y) * 12281u);
    }
}

// A translation is a transfer; the part of the working rectangle that 16-bit edges reach.
void transfer(const Request& r, const RKp_TransformSetup& setup) {
    const auto reach = [](int64_t v) { return std::clamp<int64_t>(v, INT16_MIN, INT16_MAX); };
    const GEO_LRect& work = setup.work;
    const int64_t left = reach(int64_t{work.left} - setup.dx), top = reach(int64_t{work.top} - setup.dy);
    const GEO_Rect src_rect = {static_cast<int16_t>(top), static_cast<int16_t>(left),
                               static_cast<int16_t>(reach(int64_t{work.bottom} - setup.dy)),
                               static_cast<int16_t>(reach(int64_t{work.right} - setup.dx))};
    const RK_CompositeModePlus mode = modeOf(r);
    RK_Mask mask_object;
    const RK_LayerDef* mask = nullptr;
    if (r.mask != nullptr) {
        mask_object = maskOf(*r.mask);
        mask = &mask_object.world;
    }
    const auto x = static_cast<RK_Long>(left + setup.dx), y = static_cast<RK_Long>(top + setup.dy);
    if (r.scratch != nullptr) {
        RKp_ThrowIf(RKp_Slot<RKp_kSlot_TransferRectPlus>()(r.progress, nullptr, nullptr, r.field, &src_rect,
                                                           &r.src->record, &mode, r.tables, mask, r.scratch, x, y,
                                                           &r.dst->record));
    } else {
        RKp_ThrowIf(RKp_Slot<RKp_kSlot_TransferRect>()(r.progress, nullptr, nullptr, r.field, &src_rect,
                                                       &r.src->record, &mode, r.tables, mask, x, y, &r.dst->record));
    }
}

template <class P>
void draw(const Request& r) {
    const RKp_TransformSetup setup = RKp_SetUpTransform(makeJob(r), r.field != RK_kBothFields);
    switch (setup.path) {
        case RKp_TransformPath::Nothing: return;
        case RKp_TransformPath::Singular: RKp_Throw(1);
        case RKp_TransformPath::ClearStencil: {
            RK_WorldX<P> dst(&r.dst->record, false);
            return clearAlphaAround(setup.clip, GEO_LRect{0, 0, 0, 0}, dst);
        }
        case RKp_TransformPath::Transfer: return transfer(r, setup);
        case RKp_TransformPath::AtRest: return drawRows<P, AtRest<P>>(r, setup);
        case RKp_TransformPath::LinearMotion: return drawRows<P, LinearMotion<P>>(r, setup);
        case RKp_TransformPath::GeneralMotion: return drawRows<P, GeneralMotion<P>>(r, setup);
    }
}

bool hasNulls(const Request& r) {
    return r.src == nullptr || r.dst == nullptr || r.comp_mode == nullptr ||
           (r.matrices == nullptr && r.matrix_count >= 1) || (r.mask != nullptr && r.mask->mask_world == nullptr);
}

RK_Long run(const Request& r) {
    if (hasNulls(r)) return RKp_ReportBadParam(RKp_kSiteFill);
    const int32_t depth = RKp_WorldDepth(&r.src->record);
    if (RKp_WorldDepth(&r.dst->record) != depth ||
        (r.mask != nullptr && RKp_WorldDepth(&r.mask->mask_world->record) != depth))
        return RKp_VERIFICATION("RK_TransformWorld requires src and dst worlds to have same bit depth");
    if (r.matrix_count < 1) return RK_kOK;
    return RKp_AtBorder([&]() -> RK_Long {
        return RKp_ForDepth(depth, RKp_kBadDepthText, [&](auto tag) -> RK_Long {
            draw<typename decltype(tag)::Pixel>(r);
            return RK_kOK;
        });
    });
}

}  // namespace

RK_Long RK_TransformWorld_S(RK_ProgressInfo* progress, RK_Long quality, RK_Long, RK_Long field, const RK_World* src,
                            const RK_CompositeMode* comp_mode, const RK_LinearBlendingTables* linear_tables,
                            const RK_TransformMask* mask, const GEO_Matrix3* matrices, RK_Long matrix_count,
                            uint8_t src2dst, const GEO_Rect* dest_rect, RK_World* dst) {
    return run({progress, quality, field, src, comp_mode, linear_tables, mask, nullptr, matrices, matrix_count,
                src2dst != 0, dest_rect, dst});
}

RK_Long RK_TransformWorldPlus_S(RK_ProgressInfo* progress, RK_Long quality, RK_Long, RK_Long field,
                                const RK_World* src, const RK_CompositeMode* comp_mode,
                                const RK_LinearBlendingTables* linear_tables, const RK_TransformMask* mask,
                                RK_BlendScratch* scratch, const GEO_Matrix3* matrices, RK_Long matrix_count,
                                uint8_t src2dst, const GEO_Rect* dest_rect, RK_World* dst) {
    return run({progress, quality, field, src, comp_mode, linear_tables, mask, scratch, matrices, matrix_count,
                src2dst != 0, dest_rect, dst});
}

RK_Long RK_TransformWorld(RK_ProgressInfo* progress, RK_Long quality, RK_Long mode_flags, RK_Long field,
                          const RK_World* src, const RK_CompositeMode* comp_mode,
                          const RK_LinearBlendingTables* linear_tables, const RK_TransformMask* mask,
                          const GEO_Matrix3* matrices, RK_Long matrix_count, uint8_t src2dst,
                          const GEO_Rect* dest_rect, RK_World* dst) {
    auto* const body = RKp_Slot<RKp_kSlot_TransformWorld>();
    GEO_Rect area;
    if (dest_rect != nullptr) area = *dest_rect;
    const GEO_Rect* passed = dest_rect != nullptr ? &area : nullptr;
    const Request r = {progress, quality,      field,    src,          comp_mode,    linear_tables, mask,
                       nullptr,  matrices,     matrix_count, src2dst != 0, dest_rect,    dst};
    // An override is told what will be affected.
    if (body != &RK_TransformWorld_S && !hasNulls(r) && matrix_count >= 1) {
        GEO_LRect affected;
        if (!RKp_AffectedRect(makeJob(r), &affected)) return RK_kOK;
        const auto reach = [](int32_t v) { return static_cast<int16_t>(std::clamp<int32_t>(v, INT16_MIN, INT16_MAX)); };
        area = {reach(affected.top), reach(affected.left), reach(affected.bottom), reach(affected.right)};
        passed = &area;
    }
    return body(progress, quality, mode_flags, field, src, comp_mode, linear_tables, mask, matrices, matrix_count,
                src2dst, passed, dst);
}

RK_Long RK_TransformWorldPlus(RK_ProgressInfo* progress, RK_Long quality, RK_Long mode_flags, RK_Long field,
                              const RK_World* src, const RK_CompositeMode* comp_mode,
                              const RK_LinearBlendingTables* linear_tables, const RK_TransformMask* mask,
                              RK_BlendScratch* scratch, const GEO_Matrix3* matrices, RK_Long matrix_count,
                              uint8_t src2dst, const GEO_Rect* dest_rect, RK_World* dst) {
    return RKp_Slot<RKp_kSlot_TransformWorldPlus>()(progress, quality, mode_flags, field, src, comp_mode,
                                                    linear_tables, mask, scratch, matrices, matrix_count, src2dst,
                                                    dest_rect, dst);
}
