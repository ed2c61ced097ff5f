#include "Library.h"

#include <fmt/format.h>

#include "Failure.h"
#include "RK/indep/frame/RK_Birth.h"
#include "RK/indep/passes/RK_Premul.h"
#include "RK/indep/world/RK_WorldDepth.h"
#include "refhost/RefHost.h"

Library::Library() {
    RefHost::PrintReports(false);
    const RK_Long code = RK_Birth();
    if (code != RK_kOK) Fail("the library did not start", Explain(code));
    RefHost::TakeReports();
}

Library::~Library() { RK_Death(); }

WorldPtr NewWorld(int32_t width, int32_t height, int depth, const std::string& shown) {
    try {
        WorldPtr world(RK_World::New(width, height, static_cast<int16_t>(depth), 0));
        if (world) return world;
    } catch (RK_Long code) {
        Fail(shown, fmt::format("{} x {} pixels at {} bits: {}", width, height, depth, Explain(code)));
    }
    Fail(shown, Explain(RK_kOutOfMemory));
}

std::string Explain(RK_Long code) {
    const std::vector<RefHost::Report> reports = RefHost::TakeReports();
    if (code == RK_kOutOfMemory) return "not enough memory";
    if (!reports.empty()) return OneLine(reports.back().text);
    return fmt::format("the library failed with code {}", code);
}

void CheckResult(RK_Long code, const std::string& shown) {
    if (code == RK_kOK) return;
    if (code == RK_kUserAbort) throw Stopped();
    Fail(shown, Explain(code));
}

namespace {

void RunPremul(RK_PixelFloat* row, int32_t count, bool forward) {
    RK_LayerDef record = {};
    CheckResult(RKp_SetWorldDepth(&record, 32), "a row of pixels");
    record.data = row;
    record.width = count;
    record.height = 1;
    record.rowbytes = static_cast<int32_t>(sizeof(RK_PixelFloat)) * count;
    CheckResult(RK_Premul(nullptr, forward, &record), "a row of pixels");
}

}  // namespace

void PremultiplyRow(RK_PixelFloat* row, int32_t count) { RunPremul(row, count, true); }
void UnmultiplyRow(RK_PixelFloat* row, int32_t count) { RunPremul(row, count, false); }
