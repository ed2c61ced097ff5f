// The function types of the slots. Records stand here by name only.
#ifndef RKP_SLOT_TYPES_H
#define RKP_SLOT_TYPES_H

#include "RK/indep/frame/RK.h"
#include "RK/indep/frame/RKp_Depth.h"

struct RK_CompositeMode;
struct RK_CompositeModePlus;
struct RK_BlendScratch;
struct RK_SampPB;
struct RK_TransformMask;
template <class P>
struct RK_BlendingMode;
template <class P>
struct RK_InnerBlendingFunc;
template <class P>
struct RK_BlendModeDescriptor;

// A row moved between straight and premultiplied. `src` null, or equal to `dst`: in place. A count below 1 does
// nothing. Always 0.
template <class P>
using RKp_ScanFunc = RK_Long(RK_Long count, const P* src, P* dst);

// The alpha of `dst` united with the source's, scaled by `opacity` and by the matte's alpha. `matte` may be null.
template <class P>
using RKp_AlphaMergeFunc = RK_Long(RK_Long count, const P* src, typename RKp_Depth<P>::Channel opacity,
                                   const P* matte, P* dst);

using RKp_IterateFunc = RK_Long(RK_EffectData*, RK_Long progress_base, RK_Long progress_final, RK_LayerDef* src,
                                const GEO_Rect* rect, void* refcon, RK_PixelFunc* pixel_fn, RK_LayerDef* dst);
using RKp_IterateOriginFunc = RK_Long(RK_EffectData*, RK_Long progress_base, RK_Long progress_final,
                                      RK_LayerDef* src, const GEO_Rect* rect, const Point* origin, void* refcon,
                                      RK_PixelFunc* pixel_fn, RK_LayerDef* dst);
using RKp_IterateLUTFunc = RK_Long(RK_EffectData*, RK_Long progress_base, RK_Long progress_final, RK_LayerDef* src,
                                   const GEO_Rect* rect, const uint8_t* a_lut, const uint8_t* r_lut,
                                   const uint8_t* g_lut, const uint8_t* b_lut, RK_LayerDef* dst);
using RKp_IterateGenericFunc = RK_Long(RK_Long iterations, void* refcon, RK_GenericFunc* fn);
// Takes anything.
using RKp_RetiredFunc = RK_Long(...);
using RKp_PremulRectFunc = RK_Long(RK_EffectRef, RK_Long forward, const GEO_Rect* rect, RK_LayerDef* world);

using RKp_TransferRectFunc = RK_Long(RK_ProgressInfo* progress, void* reserved1, void* reserved2, RK_Long field,
                                     const GEO_Rect* src_rect, const RK_LayerDef* src,
                                     const RK_CompositeModePlus* mode, const RK_LinearBlendingTables* tables,
                                     const RK_LayerDef* mask, RK_Long dst_x, RK_Long dst_y, RK_LayerDef* dst);
using RKp_TransferRectPlusFunc = RK_Long(RK_ProgressInfo* progress, void* reserved1, void* reserved2,
                                         RK_Long field, const GEO_Rect* src_rect, const RK_LayerDef* src,
                                         const RK_CompositeModePlus* mode, const RK_LinearBlendingTables* tables,
                                         const RK_LayerDef* mask, RK_BlendScratch* scratch, RK_Long dst_x,
                                         RK_Long dst_y, RK_LayerDef* dst);
using RKp_CompositeRectFunc = RK_Long(RK_ProgressInfo* progress, const GEO_Rect* src_rect, uint8_t opacity,
                                      const RK_LayerDef* src, RK_Long dst_x, RK_Long dst_y, RK_Long field,
                                      void* reserved, RK_LayerDef* dst);

template <class P>
using RKp_GetInnerBlendingFuncFunc = RK_Long(RK_Long mode, RK_InnerBlendingFunc<P>* out);
// Makes a plan in the memory at `self`.
template <class P>
using RKp_MakePlanFunc = void(RK_BlendModeDescriptor<P>* self, RK_BlendingMode<P>& mode, bool has_matte,
                              const RK_LinearBlendingTables* tables);

using RKp_CopyBitsFunc = RK_Long(RK_ProgressInfo* progress, const RK_LayerDef* src, RK_LayerDef* dst,
                                 const GEO_Rect* src_rect, const GEO_Rect* dst_rect);

using RKp_ConvolveFunc = RK_Long(RK_ProgressInfo* progress, RK_LayerDef* src, const GEO_Rect* rect, uint32_t flags,
                                 int32_t size, const int32_t* a_kernel, const int32_t* r_kernel,
                                 const int32_t* g_kernel, const int32_t* b_kernel, RK_LayerDef* dst);

using RKp_TransformWorldFunc = RK_Long(RK_ProgressInfo* progress, RK_Long quality, RK_Long mode_flags, RK_Long field,
                                       const RK_World* src, const RK_CompositeMode* comp_mode,
                                       const RK_LinearBlendingTables* linear_tables, const RK_TransformMask* mask,
                                       const GEO_Matrix3* matrices, RK_Long matrix_count, uint8_t src2dst,
                                       const GEO_Rect* dest_rect, RK_World* dst);
using RKp_TransformWorldPlusFunc = RK_Long(RK_ProgressInfo* progress, RK_Long quality, RK_Long mode_flags,
                                           RK_Long field, const RK_World* src, const RK_CompositeMode* comp_mode,
                                           const RK_LinearBlendingTables* linear_tables, const RK_TransformMask* mask,
                                           RK_BlendScratch* scratch, const GEO_Matrix3* matrices,
                                           RK_Long matrix_count, uint8_t src2dst, const GEO_Rect* dest_rect,
                                           RK_World* dst);

// Samplers, as sample/RK_Samp.h tells them.
template <class P>
using RKp_SamplerFunc = RK_Long(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, P* out);
template <class P>
using RKp_SamplerPlusFunc = RK_Long(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, uint8_t* all_inside, P* out);
template <class P>
using RKp_SamplerTranslateFunc = RK_Long(void* ref, int32_t x, int32_t y, const double weights[4], const RK_SampPB* pb,
                                         P* out);
template <class P>
using RKp_SamplerSpanFunc = RK_Long(void* ref, RK_Long count, int32_t x, int32_t y, const RK_SampPB* pb,
                                    int32_t* alpha_sum, P* out);
template <class P>
using RKp_BehindScanFunc = RK_Long(void* ref, int16_t count, const int32_t line[4], const int32_t steps[4],
                                   const RK_SampPB* pb, P* pixels);
using RKp_ComputeWeightFunc = RK_Long(uint16_t xfrac, uint16_t yfrac, double weights[4]);
using RKp_Sampler4Func = RK_Long(void* ref, const int32_t xy[8], const RK_SampPB* pb, RK_Pixel8 out[4]);
using RKp_SamplerTranslate4Func = RK_Long(void* ref, const int32_t xy[8], const double weights[16],
                                          const RK_SampPB* pb, RK_Pixel8 out[4]);

// The alpha of pixels multiplied by a mask's samples from column `first` up to `last`; before `first` it becomes 0.
template <class M, class P>
using RKp_MaskMergeFunc = RK_Long(void* reference, RK_Long first, RK_Long last, const M* mask_row, P* pixel_row);
using RKp_MaskMerge8To8Func = RKp_MaskMergeFunc<uint8_t, RK_Pixel8>;
using RKp_MaskMerge8To16Func = RKp_MaskMergeFunc<uint8_t, RK_Pixel16>;
using RKp_MaskMerge16To16Func = RKp_MaskMergeFunc<uint16_t, RK_Pixel16>;
using RKp_MaskMerge16ToFloatFunc = RKp_MaskMergeFunc<uint16_t, RK_PixelFloat>;
using RKp_MaskMerge8ToFloatFunc = RKp_MaskMergeFunc<uint8_t, RK_PixelFloat>;

// One line of a mask blurred, as filter/RK_UnoBlur.h tells.
template <class S>
using RKp_BlurUnoScanFunc = RK_Long(int32_t mode, RK_EffectRef reference, int32_t first, int32_t last, int32_t radius,
                                    const S* src_line, S* dst_line);

// Mask rows combined, as filter/RKp_UnoRows.h tells them.
template <class S>
using RKp_MaskAccumulateFunc = RK_Long(RKp_NoiseTable* noise, int32_t mode, RK_Long count, const S* src, S* dst);
template <class S>
using RKp_MaskAccumulateWeightedFunc = RK_Long(RKp_NoiseTable* noise, int32_t mode, int32_t limit, int32_t opacity,
                                               RK_Long count, const S* src, S* dst);
using RKp_MaskAdd8To16Func = RK_Long(int32_t opacity, RK_Long count, const uint8_t* src, uint16_t* dst);
using RKp_MaskNarrow16To8Func = RK_Long(uint16_t divisor, RK_Long count, const uint16_t* src, uint8_t* dst);

#endif
