#include "RK/indep/frame/RKp_Report.h"

const char* RKp_Text(RK_Message message) { return KIT_ZLookupLStrCache(RK_G_zref, message, 0, 0); }

RK_Long RKp_ReportBadParam(uint32_t site) {
    KITp_ReportErrString(RK_kLocation | site, 8, RKp_Text(RK_kMsg_BadParameter));
    return RK_kBadParam;
}

RK_Long RKp_ReportVerification(uint32_t location, int32_t line, const char* text) {
    KIT_ReportFailedVerification(location, line, 0, text);
    return RK_kBadParam;
}
