// Reports as the passes make them.
#ifndef RKP_REPORT_H
#define RKP_REPORT_H

#include "RK/host/KIT.h"
#include "RK/indep/frame/RK.h"
#include "RK/indep/frame/RK_Messages.h"

// The families' report sites.
constexpr uint32_t RKp_kSiteWorld = 1;
constexpr uint32_t RKp_kSiteEffectWorld = 3;
constexpr uint32_t RKp_kSitePlanes = 4;
constexpr uint32_t RKp_kSiteConvolve = 8;
constexpr uint32_t RKp_kSitePaintSpot = 9;
constexpr uint32_t RKp_kSiteBlur = 10;
constexpr uint32_t RKp_kSiteGuessAlpha = 11;
constexpr uint32_t RKp_kSiteBlend = 12;
constexpr uint32_t RKp_kSiteFill = 13;
constexpr uint32_t RKp_kSiteIterate = 14;
constexpr uint32_t RKp_kSiteWireframe = 15;
constexpr uint32_t RKp_kSiteLine = 16;
constexpr uint32_t RKp_kSiteDebugPrint = 17;
constexpr uint32_t RKp_kSiteCopyDraft = 48;
constexpr uint32_t RKp_kSiteCopyStraight = 49;
constexpr uint32_t RKp_kSiteCopyPremul = 50;
constexpr uint32_t RKp_kSiteUno = 55;
constexpr uint32_t RKp_kSiteIterateGeneric = 70;
constexpr uint32_t RKp_kSiteChannelCopy = 72;
constexpr uint32_t RKp_kSiteChunk = 74;
constexpr uint32_t RKp_kSiteIterateOrigin = 82;

// Reports "bad parameter passed to effect callback" from the site and returns 3.
RK_Long RKp_ReportBadParam(uint32_t site);

// Reports a broken promise and returns 3.
RK_Long RKp_ReportVerification(uint32_t location, int32_t line, const char* text);

// The shown text of a message.
const char* RKp_Text(RK_Message message);

#define RKp_VERIFICATION(text) RKp_ReportVerification(RK_kLocation, __LINE__, text)
// The same for "Unknown world bitdepth", whose location is one for all.
#define RKp_BAD_DEPTH(text) RKp_ReportVerification(RK_kBadDepthLocation, __LINE__, text)

#endif
