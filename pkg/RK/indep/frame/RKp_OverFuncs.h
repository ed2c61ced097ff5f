// The inside of the standard function table: indexes by name, types, and the one inline reader.
#ifndef RKP_OVER_FUNCS_H
#define RKP_OVER_FUNCS_H

#include "RK/indep/frame/RK_OverFuncs.h"
#include "RK/indep/frame/RKp_SlotTypes.h"

enum RKp_SlotIndex : int32_t {
#define RK_SLOT(number, name, type, body, sse2, ssse3) RKp_kSlot_##name = number,
#include "RK/indep/frame/RKp_Slots.def"
    RKp_kSlotEnd = RK_kSlotCount
};

// Type is the function type of slot `index`.
template <int32_t index>
struct RKp_SlotTraits;
#define RK_SLOT(number, name, type, body, sse2, ssse3) \
    template <>                                        \
    struct RKp_SlotTraits<number> {                    \
        using Type = type;                             \
    };
#include "RK/indep/frame/RKp_Slots.def"

// The function that the slot holds now.
template <int32_t index>
auto RKp_Slot() -> typename RKp_SlotTraits<index>::Type* {
    return reinterpret_cast<typename RKp_SlotTraits<index>::Type*>(RKp_G_OverFuncs[index]);
}

// Fills the table for the processor record: each default first, then what the two flags allow, independently.
// Slots without a function are left alone.
void RKp_FillOverFuncs(bool has_sse2, bool has_ssse3);

#endif
