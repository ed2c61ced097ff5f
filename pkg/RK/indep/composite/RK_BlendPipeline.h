// One row through a plan.
#ifndef RK_BLEND_PIPELINE_H
#define RK_BLEND_PIPELINE_H

#include "RK/indep/composite/RK_Xfer.h"

// Composites `count` pixels of `src` onto `out` as the plan says. `matte` (alpha only is read) may be null.
// `alpha_save` has room for `count` channels; it is used only when the plan guards alpha and rgb_only is set.
// `progress` is not read. 0, or the error of the step that failed, after which nothing is restored; 5 on a
// plan of a refused mode, and nothing is touched. No exception leaves it.
template <class P>
RK_API RK_Long RK_BlendPipeline(RK_ProgressInfo* progress, RK_Long count,
                                const RK_BlendModeDescriptor<P>* plan, const P* src, const P* matte,
                                RK_Channel<P>* alpha_save, P* out);

#endif
