// The engine at one depth.
#ifndef RKP_RETIME_ENGINE_T_H
#define RKP_RETIME_ENGINE_T_H

#include "RK/host/Threads.h"
#include "RK/indep/retime/FnAccumulators.h"
#include "RK/indep/retime/FnCandidates.h"
#include "RK/indep/retime/FnFrameBlender.h"
#include "RK/indep/retime/FnMotionPyramid.h"
#include "RK/indep/retime/FnSmoothVectors.h"
#include "RK/indep/retime/RK_AdvancedFrameBlending.h"
#include "RK/indep/retime/RK_VectorCache.h"

template <class Pixel, int Scale>
class RKp_RetimeEngine {
  public:
    using Picture = FnPicture<Pixel>;
    RKp_RetimeEngine(const RK_Quillon_AlgoParams& algo, const RK_Quillon_OtherParams& other, const Picture& first,
                     const Picture& second, Picture* dest, InterruptRecord* interrupt)
        : algo_(algo), other_(other), first_(first), second_(second), dest_(dest), interrupt_(interrupt) {}

    RK_Long Render() {
        const float shutter = algo_.shutterAngle * 0.2777777910232544f * 0.01f;
        const bool accumulates = algo_.shutterSamples > 1 && shutter > 0.0f;
        if (!accumulates) return RenderOnce();
        FnAccumulatorMap sum;
        if (!sum.Resize(dest_->Width(), dest_->Height())) return RK_kOutOfMemory;
        FnIntAccumulator<Pixel, FnPixelFloat, Scale> add;
        add.SetInterrupt(interrupt_);
        for (int16_t i = 0; i < algo_.shutterSamples; ++i) {
            if (const RK_Long error = RenderOnce()) return error;
            add.process(dest_, &sum);
            if (interrupt_->error != 0) return interrupt_->error;
        }
        FnFloatDeaccumulator<Pixel, FnPixelFloat, Scale> divide(static_cast<float>(algo_.shutterSamples));
        divide.SetInterrupt(interrupt_);
        divide.process(&sum, dest_);
        return interrupt_->error;
    }

  private:
    RK_Long RenderOnce() {
        const float position = static_cast<float>(other_.position);
        if (algo_.method == RK_kNearestFrame)
            return FnNearestFrame<Pixel, FnPixelFloat, Scale>(dest_, first_, second_, position, interrupt_);
        if (algo_.method == RK_kBlendFrames) {
            FnMotionEstimateFrameBlender<Pixel, FnPixelFloat, Scale> blend;
            blend.t = position;
            blend.SetInterrupt(interrupt_);
            blend.process(&first_, &second_, dest_);
            return interrupt_->error;
        }
        const float t = FnSnapTime(other_.position);
        RKp_HolderRef holder;
        FnTweenResult tween;
        RK_Long error = Vectors(!FnIsFrameTime(t), &holder);
        if (error == RK_kOK && !FnIsFrameTime(t)) error = Tween(*holder.get(), t, &tween);
        if (error != RK_kOK) return error;
        return FnBuildFrame<Pixel, FnPixelFloat, Scale>(dest_, first_, second_, &tween, t, algo_.sincSampling != 0,
                                                        interrupt_);
    }

    FnLuminanceWeights Weights() const { return {algo_.lumaRed, algo_.lumaGreen, algo_.lumaBlue}; }

    // The pair's fields, from the cache or estimated. Those from a disk get their luminance frames when they are needed.
    RK_Long Vectors(bool needs_luminance, RKp_HolderRef* holder) {
        if (other_.sortDir) {
            const RK_QuillonCache_Stuff key(other_.sortKey, other_.firstTime, other_.secondTime, RKp_HolderRef());
            STASH_ScCheckout checkout;
            checkout.FindAndCheckout(other_.sortDir, key, 3, 0);
            if (checkout.DidCheckout()) *holder = static_cast<RK_QuillonCache_Stuff*>(checkout.GetStuff())->holder;
        }
        if (*holder) {
            if (!holder->get()->lacks_luminance || !needs_luminance) return RK_kOK;
            return FnRestoreLuminance<Pixel, FnPixelFloat, Scale>(first_, second_, Weights(), interrupt_, holder->get());
        }
        const uint32_t ticks = THR_TickCount();
        RKp_HolderRef made(new FnMotionEstimateMapStackHolder);
        if (!made) return RK_kOutOfMemory;
        if (const RK_Long error = Estimate(made.get())) return error;
        *holder = made;
        if (!other_.sortDir) return RK_kOK;
        RK_QuillonCache_Stuff* stuff =
            new RK_QuillonCache_Stuff(other_.sortKey, other_.firstTime, other_.secondTime, made);
        if (!stuff) return RK_kOutOfMemory;
        return stuff->AddToBagAndSortDir(STASH_GlobalBag(), THR_TickCount() - ticks, other_.sortDir);
    }

    RK_Long Estimate(FnMotionEstimateMapStackHolder* holder) {
        const int32_t error = FnMakeLuminance<Pixel, FnPixelFloat, Scale>(first_, second_, algo_.vectorDetail, Weights(),
                                                                          interrupt_, holder);
        if (error != 0) return error;
        FnVectorMap scratch;
        if (!scratch.Resize(holder->width, holder->height)) return RK_kOutOfMemory;
        if (const RK_Long failed =
                OneField(holder->first_luminance, holder->second_luminance, &scratch, &holder->second_field))
            return failed;
        return OneField(holder->second_luminance, holder->first_luminance, &scratch, &holder->first_field);
    }

    // The displacement of the target's content in the reference.
    RK_Long OneField(FnFloatMap* reference, FnFloatMap* target, FnVectorMap* scratch, FnVectorMap* field) {
        const int32_t error = EstimateField({algo_.blockSize, algo_.estimateSmoothness, algo_.errorThreshold}, reference,
                                            target, interrupt_, scratch);
        if (error != 0) return error;
        if (!field->Resize(scratch->Width(), scratch->Height())) return RK_kOutOfMemory;
        FnMotionEstimateGradientSmoothVectorsParameters p;
        p.error_weight = NegativeWeight(algo_.tweenSmoothness);
        p.smooth_weight = PositiveWeight(algo_.tweenSmoothness);
        p.passes = algo_.smoothPasses;
        p.blocks = {algo_.blockSize, algo_.blockSize, 2};
        p.reference = reference;
        p.target = target;
        FnPixelSmooth smooth(p);
        smooth.SetInterrupt(interrupt_);
        smooth.Process(field, scratch);
        return interrupt_->error;
    }

    RK_Long Tween(const FnMotionEstimateMapStackHolder& holder, float t, FnTweenResult* tween) {
        if (!tween->a.ShapeLike(holder.first_field) || !tween->b.ShapeLike(holder.first_field) ||
            !tween->classes.ShapeLike(holder.first_field))
            return RK_kOutOfMemory;
        FnTweenParameters p;
        p.width = holder.width;
        p.height = holder.height;
        p.t = t;
        p.iterations = algo_.smoothPasses;
        p.smooth_weight = PositiveWeight(algo_.tweenSmoothness);
        p.error_weight = NegativeWeight(algo_.tweenSmoothness);
        p.flags = kFnGivenClasses | kFnGivenResultA | kFnGivenResultB | kFnOwnsLists;
        p.occlusion_smooth_passes = 2;
        p.fields[0] = &holder.first_field;
        p.fields[1] = &holder.second_field;
        p.frames[0] = p.frames[1] = holder.first_luminance;
        p.frames[2] = p.frames[3] = holder.second_luminance;
        p.classes = &tween->classes;
        p.result_a = &tween->a;
        p.result_b = &tween->b;
        FnMotionEstimateGradientTweener<float, float, 1, float, float, 1> tweener(p);
        tweener.SetInterrupt(interrupt_);
        tweener.Process();
        return interrupt_->error;
    }

    const RK_Quillon_AlgoParams& algo_;
    const RK_Quillon_OtherParams& other_;
    const Picture& first_;
    const Picture& second_;
    Picture* dest_;
    InterruptRecord* interrupt_;
};

#endif
