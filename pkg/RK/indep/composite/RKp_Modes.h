// All modes, held to their list.
#ifndef RKP_MODES_H
#define RKP_MODES_H

#include "RK/indep/composite/RKp_ModesHue.h"
#include "RK/indep/composite/RKp_ModesRegions.h"
#include "RK/indep/composite/RKp_ModesSeparable.h"
#include "RK/indep/composite/RKp_ModesSpecial.h"

// The place of a mode in the tables made from the list.
constexpr int32_t RKp_kModeCount = RK_kLastMode - RK_kFirstMode + 1;
constexpr bool RKp_IsMode(RK_Long mode) { return mode >= RK_kFirstMode && mode <= RK_kLastMode; }

#define RK_MODE(number, name, class_, flag, does)                                                       \
    static_assert(RK_Xfer_##name == (number), "RK_Xfer_" #name " is not the number of the list");       \
    static_assert(RKp_Mode##name<RK_Pixel8>::kClass == RK_kMode##class_, #name " is not of its class"); \
    static_assert((flag) == 0 || ((flag) == 1 && (number) <= 25), #name " cannot have its flag");
#include "RK/indep/composite/RKp_Modes.def"

// A line's place is its number: line i of the list holds mode RK_kFirstMode + i.
constexpr int32_t RKp_kListedModes[] = {
#define RK_MODE(number, name, class_, flag, does) number,
#include "RK/indep/composite/RKp_Modes.def"
};
constexpr bool RKp_ListIsInOrder() {
    for (int32_t i = 0; i < RKp_kModeCount; ++i)
        if (RKp_kListedModes[i] != RK_kFirstMode + i) return false;
    return true;
}
static_assert(sizeof RKp_kListedModes / sizeof RKp_kListedModes[0] == RKp_kModeCount && RKp_ListIsInOrder(),
              "the list of modes has a gap or is out of order");

#endif
