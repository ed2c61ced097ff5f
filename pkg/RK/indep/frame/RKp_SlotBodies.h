// The headers of the functions that the slot list names, for what walks the list. Private ones too: bodies
// behind slots are private.
#ifndef RKP_SLOT_BODIES_H
#define RKP_SLOT_BODIES_H

#include "RK/indep/composite/RK_CompositeRect.h"
#include "RK/indep/composite/RK_Xfer.h"
#include "RK/indep/composite/RKp_TransferRect.h"
#include "RK/indep/filter/RK_BoxBlur.h"
#include "RK/indep/filter/RK_Convolve.h"
#include "RK/indep/filter/RK_UnoBlur.h"
#include "RK/indep/filter/RKp_MaskMerge.h"
#include "RK/indep/filter/RKp_UnoRows.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/passes/RK_CopyBits.h"
#include "RK/indep/passes/RK_Iterate.h"
#include "RK/indep/passes/RK_Premul.h"
#include "RK/indep/passes/RKp_AlphaMerge.h"
#include "RK/indep/passes/RKp_MatteScans.h"
#include "RK/indep/sample/RK_AreaSample.h"
#include "RK/indep/sample/RK_Batch.h"
#include "RK/indep/sample/RK_SubpixelSample.h"
#include "RK/indep/sample/RK_TransformWorld.h"

#endif
