// The standard function table: every hot function is called through its slot.
#ifndef RK_OVER_FUNCS_H
#define RK_OVER_FUNCS_H

#include "RK/indep/frame/RK.h"

constexpr int32_t RK_kSlotCount = 118;

// Filled by RK_Birth and read without locks afterwards. Empty slots are null.
RK_API extern void* RKp_G_OverFuncs[RK_kSlotCount];
static_assert(sizeof(void*) != 4 || sizeof(RKp_G_OverFuncs) == 472, "the table has changed its size");

// Writes a slot; 3 for an index outside 1..117, and nothing is written. For start-up only: no lock, and the
// function is not checked.
RK_API RK_Long RK_SetOverrideFunc(RK_Long index, void* function);

// What a slot holds.
enum RK_SlotForm : int32_t {
    RK_kSlotEmpty,
    RK_kSlotDefault,
    RK_kSlotSSE2,
    RK_kSlotSSSE3,
    RK_kSlotOverride  // put there by a module or by RK_SetOverrideFunc
};
struct RK_SlotInfo {
    const char* name;  // empty for a slot without a function
    RK_SlotForm form;
    bool has_sse2_form, has_ssse3_form;
};
// Tells of a slot; 3 for an index outside 0..117 or a null `info`, and nothing is written.
RK_API RK_Long RK_GetSlotInfo(RK_Long index, RK_SlotInfo* info);

#endif
