#include "RK/indep/retime/FnImgProc.h"

#include <algorithm>

int32_t FnInteruptable::Check() const {
    InterruptRecord* record = Interrupt();
    if (record->callback && FnThreadNumber() == 0 && !record->aborted) {
        const RK_Long answer = record->callback(record->refcon);
        // Long may be wider than the record's error: what does not fit still has to be an error.
        if (answer != 0)
            record->Abort(static_cast<int32_t>(std::clamp<int64_t>(answer, INT32_MIN, INT32_MAX)));
    }
    return record->error.load(std::memory_order_relaxed);
}

FnBand FnBandOf(int32_t top, int32_t bottom, int32_t number, int32_t threads) {
    const int64_t rows = int64_t{bottom} - top;
    if (threads < 2) return {top, bottom};
    const int64_t per = (rows + threads - 1) / threads;
    const int64_t start = per * number;
    const int64_t end = number == threads - 1 ? rows : std::min(start + per, rows);
    return {static_cast<int32_t>(std::min(start, rows) + top), static_cast<int32_t>(end + top)};
}

void FnMultiProcessor::RunPass() {
    threads_ = threads_allowed_ ? FnFanOutWidth() : 1;
    if (Check() != 0) return;
    PassStart();
    if (Check() == 0) FnFanOut(threads_, [this] { ProcessBand(); });
    PassEnd();
}

void FnMultiProcessor::Run() {
    for (current_pass_ = 0; current_pass_ < pass_count_ && Error() == 0; ++current_pass_) RunPass();
    current_pass_ = 0;
}

void FnMultiProcessor::Process() {
    ForgetOwnError();
    Prepare();
    if (Error() == 0) Run();
    Finish();
}

void FnImgProc::SetRegion(const GEO_LRect& region) {
    region_ = region;
    region_set_ = true;
}

void FnImgProc::ProcessMap(FnTexIndexer* map) {
    if (!map || map->Width() < 1 || map->Height() < 1) return;
    map_ = map;
    const GEO_LRect before = region_;
    if (!region_set_) {
        region_ = {0, 0, map->Width(), map->Height()};
    } else {
        region_ = {std::clamp(region_.left, 0, map->Width()), std::clamp(region_.top, 0, map->Height()),
                   std::clamp(region_.right, 0, map->Width()), std::clamp(region_.bottom, 0, map->Height())};
    }
    FnMultiProcessor::Process();
    region_ = before;
    map_ = nullptr;
}
