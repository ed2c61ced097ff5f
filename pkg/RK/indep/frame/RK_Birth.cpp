#include "RK/indep/frame/RK_Birth.h"

#include <algorithm>
#include <iterator>

#include "RK/host/GEO.h"
#include "RK/host/KIT.h"
#include "RK/host/NZ.h"
#include "RK/host/TRC.h"
#include "RK/host/ZIN.h"
#include "RK/indep/composite/RKp_SoftLight.h"
#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_Broker.h"
#include "RK/indep/frame/RKp_Globals.h"
#include "RK/indep/frame/RKp_OverFuncs.h"

namespace {

void clearTableAndCounters() {
    std::fill(std::begin(RKp_G_OverFuncs), std::end(RKp_G_OverFuncs), nullptr);
    RKp_G_ChunkCount = 0;
    RKp_G_WorldCount = 0;
    for (int i = 0; i < 256; ++i) RKp_G_ByteToFloat[i] = static_cast<float>(i);
}

void prepareNoise() {
    const uint32_t* table = nullptr;
    int32_t count = 0;
    RKp_ThrowIf(NZ_GetPrimeSizedTable(&table, &count));
    RKp_G_Noise = {table, table, table + count};
}

void startBroker() {
    if (!RKp_StartBroker(ZIN_GetLNKAddressProc())) RKp_Throw(RK_kNoBroker);
}

}  // namespace

RK_Long RK_Birth() {
    RK_Long error = RK_kOK;
    const auto ifClear = [&error](auto&& step) {
        if (error == RK_kOK) RKp_Guarded(error, step);
    };
    TRC_Log(10, "RK", "Birth", "RK Birth");
    clearTableAndCounters();
    ifClear([] { RKp_ThrowIf(GEO_PrepareFCMD(1, 0, 0, &RKp_G_fcm_table, &RKp_G_fcd_table)); });
    ifClear(prepareNoise);
    ifClear(RKp_BuildSoftLight);
    ifClear([] { RKp_FillOverFuncs(KIT_G_CPU_DataP->has_sse2 != 0, KIT_G_CPU_DataP->has_ssse3 != 0); });
    ifClear(startBroker);
    return error;
}

RK_Long RK_Death() {
    RK_Long error = RK_kOK;
    TRC_Log(10, "RK", "Death", "RK Death");
    RKp_Guarded(error, [] { RKp_ThrowIf(GEO_UnprepareFCMD()); });
    RKp_G_fcm_table = RKp_G_fcd_table = nullptr;
    RKp_StopBroker();
    return error;
}
