#include "RK/indep/filter/RKp_BoxArithmetic.h"
#include "RK/indep/filter/RKp_BoxLine.h"
#include "RK/indep/filter/RKp_BoxWalkT.h"
#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_Report.h"

namespace {

template <class P, class I, RKp_BlurForm kForm>
void pass(const RKp_BoxStage<P>& stage) {
    if (stage.divide)
        RKp_WalkBox(stage, RKp_BoxPlain<P, I, kForm, true>(stage.reach, stage.radius, stage.flags));
    else
        RKp_WalkBox(stage, RKp_BoxPlain<P, I, kForm, false>(stage.reach, stage.radius, stage.flags));
}

template <class P, class I>
void passOfForm(const RKp_BoxStage<P>& stage) {
    switch (RKp_FormOf(stage.flags)) {
        case RKp_BlurForm::Alpha: return pass<P, I, RKp_BlurForm::Alpha>(stage);
        case RKp_BlurForm::All: return pass<P, I, RKp_BlurForm::All>(stage);
        case RKp_BlurForm::Any: return pass<P, I, RKp_BlurForm::Any>(stage);
    }
}

}  // namespace

template <class P>
void RKp_BoxPass(const RKp_BoxStage<P>& stage) {
    if (sizeof(P) == 4 && stage.reach > RKp_kBoxNarrowReach) return passOfForm<P, int64_t>(stage);
    passOfForm<P, int32_t>(stage);
}

template void RKp_BoxPass(const RKp_BoxStage<RK_Pixel8>&);
template void RKp_BoxPass(const RKp_BoxStage<RK_Pixel16>&);
template void RKp_BoxPass(const RKp_BoxStage<RK_PixelFloat>&);

void RKp_GuardBoxVectors(bool divides) {
    if (divides) RKp_Throw(RKp_VERIFICATION("untested SSE2 codepath in blur"));
}
