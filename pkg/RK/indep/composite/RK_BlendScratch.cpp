#include "RK/indep/composite/RK_BlendScratch.h"

#include "RK/host/KIT.h"
#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_Report.h"

namespace {

// The process-wide set. `row_bytes` is the size of one pixel row; 0 when the rows are not to be relied on.
RK_BlendScratch g_scratch;
uint64_t g_row_bytes;

struct BlockKind {
    void* RK_MotionBlurScratch::*block;
    size_t bytes;
    const char* name;
};
const BlockKind kBlocks[] = {
    {&RK_MotionBlurScratch::data1, 2048, "motion blur scratch data1"},
    {&RK_MotionBlurScratch::data2, 2048, "motion blur scratch data2"},
    {&RK_MotionBlurScratch::data3, 2048, "motion blur scratch data3"},
    {&RK_MotionBlurScratch::data4, 4096, "motion blur scratch data4"},
    {&RK_MotionBlurScratch::data5, 4096, "motion blur scratch data5"},
    {&RK_MotionBlurScratch::data6, 18432, "motion blur scratch data6"},
    {&RK_MotionBlurScratch::data7, 21504, "motion blur scratch data7"},
};

void* allocateRow(uint64_t bytes) {
    // A size that the build cannot name fails, and is reported, like any other that cannot be had.
    const size_t asked = bytes < SIZE_MAX ? static_cast<size_t>(bytes) : SIZE_MAX;
    return KIT_AllocatePtr(asked, RKp_Text(RK_kMsg_BlendingScratch));
}

void freeRows(RK_BlendScratch& rows) {
    KIT_FreePtr(rows.alpha_save);
    KIT_FreePtr(rows.matte_row);
    KIT_FreePtr(rows.row_work);
    rows.alpha_save = rows.matte_row = rows.row_work = nullptr;
}

RK_Long replaceRows(uint64_t alpha_bytes, uint64_t row_bytes) {
    RK_BlendScratch fresh = {};
    if ((fresh.alpha_save = allocateRow(alpha_bytes)) == nullptr ||
        (fresh.matte_row = allocateRow(row_bytes)) == nullptr ||
        (fresh.row_work = allocateRow(row_bytes)) == nullptr) {
        freeRows(fresh);
        g_row_bytes = 0;
        return RK_kOutOfMemory;
    }
    freeRows(g_scratch);
    g_scratch.alpha_save = fresh.alpha_save;
    g_scratch.matte_row = fresh.matte_row;
    g_scratch.row_work = fresh.row_work;
    g_row_bytes = row_bytes;
    return RK_kOK;
}

// The blocks are all there or none is, so a later call can tell by one.
void needMotionBlocks() {
    if (g_scratch.motion.data6 != nullptr) return;
    const RK_Long error = RK_AllocateMotionBlurScratch(&g_scratch.motion);
    if (error == RK_kOK) return;
    RK_DisposeMotionBlurScratch(&g_scratch.motion);
    RKp_Throw(error);
}

}  // namespace

RK_Long RKp_ReallocScratch(RK_Long pixels, RK_Long bytes_per_channel, bool shrink, RK_BlendScratch* out) {
    if (bytes_per_channel != 1 && bytes_per_channel != 2 && bytes_per_channel != 4)
        return RKp_VERIFICATION("Unexpected bitdepth in RKp_ReallocScratch()");
    needMotionBlocks();

    // No row has a negative width; a width that no memory holds saturates, and fails as such.
    const uint64_t most = UINT64_MAX / 16;
    const uint64_t count = pixels < 0 ? 0 : static_cast<uint64_t>(pixels);
    const uint64_t alpha_bytes = (count < most ? count : most) * static_cast<uint64_t>(bytes_per_channel);
    if (g_row_bytes < alpha_bytes * 4 || shrink) {
        const RK_Long error = replaceRows(alpha_bytes, alpha_bytes * 4);
        if (error != RK_kOK) return error;
    }
    if (out != nullptr) *out = g_scratch;
    return RK_kOK;
}

RK_Long RK_AllocateMotionBlurScratch(RK_MotionBlurScratch* scratch) {
    if (scratch == nullptr) return RKp_ReportBadParam(RKp_kSiteFill);
    *scratch = {};
    for (const BlockKind& kind : kBlocks) {
        scratch->*kind.block = KIT_AllocatePtr(kind.bytes, kind.name);
        if (scratch->*kind.block == nullptr) return RK_kOutOfMemory;
    }
    return RK_kOK;
}

RK_Long RK_DisposeMotionBlurScratch(RK_MotionBlurScratch* scratch) {
    if (scratch == nullptr) return RK_kOK;
    for (const BlockKind& kind : kBlocks) {
        KIT_FreePtr(scratch->*kind.block);
        scratch->*kind.block = nullptr;
    }
    return RK_kOK;
}

void RKp_DisposeScratch() {
    freeRows(g_scratch);
    g_row_bytes = 0;
    RK_DisposeMotionBlurScratch(&g_scratch.motion);
}
