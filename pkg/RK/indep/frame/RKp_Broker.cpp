#include "RK/indep/frame/RKp_Broker.h"

namespace {
LNK_GetMethodV3Func* g_get_method = nullptr;
}

bool RKp_StartBroker(LNK_AddressProc* entry) {
    if (!entry) return false;
    g_get_method = reinterpret_cast<LNK_GetMethodV3Func*>(entry(LNK_kGetMethodV3));
    return g_get_method != nullptr;
}

void RKp_StopBroker() { g_get_method = nullptr; }

LNK_GetMethodV3Func* RKp_BrokerGetMethod() { return g_get_method; }
