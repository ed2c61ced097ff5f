#include "RK/indep/retime/CandidateList.h"

#include <cstring>

bool CandidateLists::Make(int64_t elements) {
    Free();
    // Every source element lands once at most, so this is enough for one field.
    if (elements > INT32_MAX || !ends_.Allocate(elements) || !nodes_.Allocate(elements)) return Free(), false;
    elements_ = elements;
    capacity_ = static_cast<int32_t>(elements);
    EmptyAll();
    return true;
}

void CandidateLists::Free() {
    ends_.Free();
    nodes_.Free();
    elements_ = 0;
    used_ = capacity_ = 0;
}

void CandidateLists::EmptyAll() {
    for (int64_t i = 0; i < elements_; ++i) Empty(i);
    used_ = 0;
}

bool CandidateLists::Grow() {
    const int64_t more = int64_t{capacity_} * 2;
    FnBuffer<CandidateNode> grown;
    if (more > INT32_MAX || !grown.Allocate(more)) return false;
    std::memcpy(grown.data(), nodes_.data(), static_cast<size_t>(used_) * sizeof(CandidateNode));
    nodes_.Swap(grown);
    capacity_ = static_cast<int32_t>(more);
    return true;
}

bool CandidateLists::Add(int64_t element, const HvVec2& v) {
    if (used_ == capacity_ && !Grow()) return false;
    Ends& ends = ends_[element];
    nodes_[used_] = {v, -1};
    if (ends.first < 0)
        ends.first = used_;
    else
        nodes_[ends.last].next = used_;
    ends.last = used_++;
    return true;
}
