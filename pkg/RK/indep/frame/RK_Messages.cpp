#include "RK/indep/frame/RK_Messages.h"

namespace {

const KIT_ZMessage kMessages[RK_kMsgCount + 1] = {
    {"$$$/RV/RK/LStr/0000=invalid callback selector", {0, 0, 0}},
    {"$$$/RV/RK/LStr/0001=invalid parameter", {0, 0, 0}},
    {"$$$/RV/RK/LStr/0002=effects modules should only dispose worlds they have allocated", {0, 0, 0}},
    {"$$$/RV/RK/LStr/0003=image plane buffer", {0, 0, 0}},
    {"$$$/RV/RK/LStr/0004=bad parameter passed to effect callback", {0, 0, 0}},
    {"$$$/RV/RK/LStr/0005=problem opening plug-in acceleration module.", {0, 0, 0}},
    {"$$$/RV/RK/LStr/0006=unimplemented blending mode.", {0, 0, 0}},
    {"$$$/RV/RK/LStr/0007=noise table.", {0, 0, 0}},
    {"$$$/RV/RK/LStr/0008=Unable to guess alpha channel.", {0, 0, 0}},
    {"$$$/RV/RK/LStr/0009=Obsolete routine", {0, 0, 0}},
    {"$$$/RV/RK/LStr/0010=memory for blurring", {0, 0, 0}},
    {"$$$/RV/RK/LStr/0011=memory for mask buffer", {0, 0, 0}},
    {"$$$/RV/RK/LStr/0012=damaged mask buffer", {0, 0, 0}},
    {"$$$/RV/RK/LStr/0013=can#{rsquo}t unlock RK Mask Buffer", {0, 0, 0}},
    {"$$$/RV/RK/LStr/0014=gaussian weight array", {0, 0, 0}},
    {"$$$/RV/RK/LStr/0015=blending scratch buffer", {0, 0, 0}},
    {"$$$/RV/RK/LStr/0016=can#{rsquo}t copy different channel worlds", {0, 0, 0}},
    {"$$$/RV/RK/LStr/0017=out of memory for channel chunk", {0, 0, 0}},
    {"$$$/RV/RK/LStr/0018=image buffer", {0, 0, 0}},
    {"$$$/RV/RK/LStr/0019=effect plug-in passed invalid world to get_platform_refs", {0, 0, 0}},
    {nullptr, {-1, -1, 0}},
};
const KIT_ZRef kZRef = {"RK", RK_kMsgCount + 1, kMessages};

}  // namespace

const KIT_ZRef* const RK_G_zref = &kZRef;
