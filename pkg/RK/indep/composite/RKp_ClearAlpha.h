// Alpha cleared outside a rectangle.
#ifndef RKP_CLEAR_ALPHA_H
#define RKP_CLEAR_ALPHA_H

#include "RK/indep/frame/RK.h"

// Sets the alpha of every pixel of `world` outside `keep` to 0; colour stays. `keep` may reach beyond the
// world; an empty part inside clears all. A world without pixels is left.
template <class P>
void RKp_ClearAlphaOutside(const GEO_LRect& keep, const RK_LayerDef& world);

#endif
