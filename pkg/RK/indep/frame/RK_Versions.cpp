#include <cstdio>
#include <cstring>

#include "RK/host/DSK.h"
#include "RK/host/GEO.h"
#include "RK/host/KIT.h"
#include "RK/host/MOD.h"
#include "RK/host/RAS.h"
#include "RK/host/RVFX.h"
#include "RK/host/SEQ.h"
#include "RK/host/TXT.h"
#include "RK/indep/frame/RK_Birth.h"

namespace {

constexpr long kVersion = 17;
constexpr RK_Long kPackageCaller = 0x250063;

constexpr const char* kMismatch =
    "Plug-in version mismatch detected (did you install over an older version of Ravelin?). Try uninstalling "
    "and re-installing. (%s package v%ld != %s.h v%ld)";

// The versions that the library was built against.
RK_Long checkPackages() {
    return KIT_CheckVersions(kPackageCaller, 61) | TXT_CheckVersions(kPackageCaller, 3) |
           RAS_CheckVersions(kPackageCaller, 31) | GEO_CheckVersions(kPackageCaller, 18) |
           DSK_CheckVersions(kPackageCaller, 39) | SEQ_CheckVersions(kPackageCaller, 9) |
           RVFX_CheckVersions(kPackageCaller, 8) | MOD_CheckVersions(kPackageCaller, 11);
}

// Packages do not change under a running process: their answer is kept.
bool g_packages_checked = false;
RK_Long g_packages = RK_kOK;

}  // namespace

RK_Long RK_CheckVersions(RK_Long caller, RK_Long version) {
    if (!g_packages_checked) {
        g_packages_checked = true;
        g_packages = checkPackages();
    }
    if (version != kVersion) {
        std::memset(KITp_G_err_buf, 0, sizeof(uint32_t));
        std::snprintf(KITp_G_buffer, KIT_kBufferBytes, kMismatch, "RK", kVersion, "RK", version);
        KITp_ReportError(static_cast<uint32_t>(caller), 16);
        return RK_kVersionMismatch;
    }
    return g_packages == RK_kOK ? RK_kOK : RK_kVersionMismatch;
}

RK_Long RK_PkgObjectVersion() { return 0x110000; }
