// The interface broker. No engine is registered with it: it answers every request for an interface with no.
#include "RK/host/ZIN.h"

#include <cstring>

#include "refhost/Internal.h"

namespace {

RK_Long getMethod(const char*, const LNK_Method*, int32_t, LNK_Proc**) { return 3; }

LNK_Proc* addressOf(const char* name) {
    if (name && std::strcmp(name, LNK_kGetMethodV3) == 0) return reinterpret_cast<LNK_Proc*>(&getMethod);
    return nullptr;
}

}  // namespace

LNK_AddressProc* ZIN_GetLNKAddressProc() {
    return RefHost::FailingCall("ZIN_GetLNKAddressProc") == 0 ? &addressOf : nullptr;
}
