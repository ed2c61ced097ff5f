#include "RK/indep/frame/RK_Birth.h"

#include <algorithm>
#include <iterator>

#include "RK/host/GEO.h"
#include "RK/host/KIT.h"
#include "RK/host/NZ.h"
#include "RK/host/TRC.h"
#include "RK/host/ZIN.h"
#include "RK/indep/composite/RK_BlendScratch.h"
#include "RK/indep/composite/RKp_SoftLight.h"
#include "RK/indep/filter/RK_UnoBlur.h"
#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_Broker.h"
#include "RK/indep/frame/RKp_Globals.h"
#include "RK/indep/frame/RKp_Modules.h"
#include "RK/indep/frame/RKp_MouseRegistry.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/frame/RKp_Report.h"

namespace {

// Room for a row of this many pixels stands ready from birth on, at the widest depth and so at every other.
constexpr RK_Long kScratchPixels = 1024;
constexpr RK_Long kScratchBytesPerChannel = 4;
constexpr bool kShrink = true;

constexpr uint32_t kSiteObsolete = 10;

void clearTable() { std::fill(std::begin(RKp_G_OverFuncs), std::end(RKp_G_OverFuncs), nullptr); }

void prepareNoise() {
    const uint32_t* table = nullptr;
    int32_t count = 0;
    RKp_ThrowIf(NZ_GetPrimeSizedTable(&table, &count));
    RKp_G_Noise = {table, table, table + count};
}

RK_Long prepareBlending() {
    RKp_BuildSoftLight();
    return RKp_ReallocScratch(kScratchPixels, kScratchBytesPerChannel, !kShrink, nullptr);
}

void fillTable() {
    const KIT_CPU_Data* facts = KIT_G_CPU_DataP;
    RKp_FillOverFuncs(facts->has_sse2 != 0, facts->has_ssse3 != 0);
}

RK_Long startBroker() { return RKp_StartBroker(ZIN_GetLNKAddressProc()) ? RK_kOK : RK_kNoBroker; }

}  // namespace

RK_Long RK_Birth() {
    RK_Long error = RK_kOK;
    const auto ifClear = [&error](auto&& step) {
        if (error == RK_kOK) RKp_Guarded(error, step);
    };
    // Neither the callback layer nor the vector constants, which are constant data, need a step here.
    TRC_Log(10, "RK", "Birth", "RK Birth");
    clearTable();
    RKp_G_ChunkCount = RKp_G_WorldCount = 0;
    for (int i = 0; i < 256; ++i) RKp_G_ByteToFloat[i] = static_cast<float>(i);
    ifClear([] { return GEO_PrepareFCMD(1, 0, 0, &RKp_G_fcm_table, &RKp_G_fcd_table); });
    ifClear(prepareNoise);
    ifClear(prepareBlending);
    // Before the scan: a host that visits the files at once hands its modules a whole table, and what they
    // write stays.
    ifClear(fillTable);
    ifClear(RKp_StartModuleScan);
    ifClear(startBroker);
    ifClear(RKp_MakeMouseRegistry);
    return error;
}

RK_Long RK_Death() {
    RK_Long error = RK_kOK;
    TRC_Log(10, "RK", "Death", "RK Death");
    RKp_Guarded(error, RKp_DisposeMouseRegistry);
    RKp_Guarded(error, GEO_UnprepareFCMD);
    RKp_G_fcm_table = RKp_G_fcd_table = nullptr;
    RKp_Guarded(error, RKp_UnloadModules);
    // A slot may have held a function of a module that is gone.
    clearTable();
    RKp_G_Noise = {nullptr, nullptr, nullptr};
    RKp_DisposeScratch();
    RKp_DisposeUnoWeights();
    RKp_StopBroker();
    return error;
}

RK_Long RK_FreeUpSomeMemory() {
    return RKp_AtBorder(
        [] { return RKp_ReallocScratch(kScratchPixels, kScratchBytesPerChannel, kShrink, nullptr); });
}

RK_Long RK_OverrideStdFuncs() {
    KITp_ReportErrString(RK_kLocation | kSiteObsolete, 8, RKp_Text(RK_kMsg_Obsolete));
    return RK_kObsolete;
}

RK_Long RK_IsCFM() { return 0; }
RK_Long RK_AddEntryToCFMMachoMaps() { return 0; }
void RK_GetCFMToMachoMapEntry(void*, void** result) { *result = nullptr; }
void RK_GetMachoToCFMMapEntry(void*, void** result) { *result = nullptr; }
