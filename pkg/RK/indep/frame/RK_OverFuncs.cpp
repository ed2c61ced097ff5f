#include "RK/indep/frame/RK_OverFuncs.h"

#include <iterator>

#include "RK/indep/frame/RKp_SlotBodies.h"

void* RKp_G_OverFuncs[RK_kSlotCount];

namespace {

// The sentinel lets the list be walked from its numbers alone.
constexpr int32_t kNumbers[] = {
#define RK_SLOT(number, name, type, body, sse2, ssse3) number,
#include "RK/indep/frame/RKp_Slots.def"
    RK_kSlotCount};
constexpr int32_t kListed = static_cast<int32_t>(std::size(kNumbers)) - 1;

constexpr bool numbersAscend() {
    for (int32_t i = 0; i < kListed; ++i)
        if (kNumbers[i] >= kNumbers[i + 1]) return false;
    return kNumbers[0] >= 2;
}
static_assert(numbersAscend(), "slots 2 to 117, each once, in number order");

struct Slot {
    int32_t number;
    const char* name;
    void *body, *sse2, *ssse3;
};

// A body or variant of another type than its row's does not convert to Function*.
template <class Function>
Slot makeSlot(int32_t number, const char* name, Function* body, Function* sse2, Function* ssse3) {
    return {number, name, reinterpret_cast<void*>(body), reinterpret_cast<void*>(sse2),
            reinterpret_cast<void*>(ssse3)};
}

// The list, ended by a slot of number RK_kSlotCount.
const Slot* slots() {
    static const Slot kSlots[] = {
#define RK_SLOT(number, name, type, body, sse2, ssse3) makeSlot<type>(number, #name, body, sse2, ssse3),
#include "RK/indep/frame/RKp_Slots.def"
        {RK_kSlotCount, "", nullptr, nullptr, nullptr}};
    return kSlots;
}

RK_SlotForm formOf(const Slot& slot) {
    void* held = RKp_G_OverFuncs[slot.number];
    if (!held) return RK_kSlotEmpty;
    if (held == slot.body) return RK_kSlotDefault;
    if (held == slot.ssse3) return RK_kSlotSSSE3;
    return held == slot.sse2 ? RK_kSlotSSE2 : RK_kSlotOverride;
}

}  // namespace

void RKp_FillOverFuncs(bool has_sse2, bool has_ssse3) {
    for (const Slot* slot = slots(); slot->number < RK_kSlotCount; ++slot) {
        void*& place = RKp_G_OverFuncs[slot->number];
        place = slot->body;
        if (has_sse2 && slot->sse2) place = slot->sse2;
        if (has_ssse3 && slot->ssse3) place = slot->ssse3;
    }
}

RK_Long RK_SetOverrideFunc(RK_Long index, void* function) {
    if (index < 1 || index >= RK_kSlotCount) return RK_kBadParam;
    RKp_G_OverFuncs[index] = function;
    return RK_kOK;
}

RK_Long RK_GetSlotInfo(RK_Long index, RK_SlotInfo* info) {
    if (index < 0 || index >= RK_kSlotCount || !info) return RK_kBadParam;
    const Slot* slot = slots();
    while (slot->number < index) ++slot;
    if (slot->number == index)
        *info = {slot->name, formOf(*slot), slot->sse2 != nullptr, slot->ssse3 != nullptr};
    else
        *info = {"", RKp_G_OverFuncs[index] ? RK_kSlotOverride : RK_kSlotEmpty, false, false};
    return RK_kOK;
}
