#include "RK/indep/composite/RK_TrackMatte.h"

#include <algorithm>

#include "RK/indep/composite/RKp_MatteValue.h"
#include "RK/indep/frame/RKp_Report.h"

namespace {

template <class P>
RK_Long prepare(int64_t count, const P* matte, int64_t offset, int64_t width, uint32_t kind, P* row) {
    if (count < 1) return RK_kOK;
    width = std::max<int64_t>(width, 0);
    // The part of the matte that is left of the row.
    const int64_t skipped = std::min(offset < 0 ? -std::max(offset, -INT64_MAX) : 0, width);
    width -= skipped;
    const int64_t first = std::clamp<int64_t>(offset, 0, count), inside = std::min(width, count - first);
    if (row == nullptr || (matte == nullptr && inside > 0)) return RKp_ReportBadParam(RKp_kSiteIterate);

    const auto outside = kind & 1u ? RKp_Depth<P>::kFull : 0;
    RKp_FillAlphas(row, 0, first, outside);
    if (inside > 0) RKp_MatteAlphas(kind, matte + skipped, inside, row + first);
    RKp_FillAlphas(row, first + inside, count, outside);
    return RK_kOK;
}

}  // namespace

RK_Long RK_PrepTrackMatteUniv(RK_Long count, const void* matte_pixels, RK_Long offset, RK_Long matte_width,
                              RK_Long kind, bool is16, void* out_row) {
    const auto low = static_cast<uint32_t>(kind & 3);
    if (is16)
        return prepare(count, static_cast<const RK_Pixel16*>(matte_pixels), offset, matte_width, low,
                       static_cast<RK_Pixel16*>(out_row));
    return prepare(count, static_cast<const RK_Pixel8*>(matte_pixels), offset, matte_width, low,
                   static_cast<RK_Pixel8*>(out_row));
}
