// The vectors that landed on each element of the in-between frame.
#ifndef CANDIDATE_LIST_H
#define CANDIDATE_LIST_H

#include "RK/indep/retime/FnBuffer.h"
#include "RK/indep/retime/HvVec2.h"

struct CandidateNode {
    HvVec2 v;
    int32_t next;  // -1: the last
};

// One element's vectors, in order of arrival. Valid until the lists that it comes from change.
class CandidateList {
  public:
    CandidateList(const CandidateNode* nodes, int32_t first) : nodes_(nodes), first_(first) {}
    bool IsEmpty() const { return first_ < 0; }
    const HvVec2& First() const { return nodes_[first_].v; }
    bool Holds(const HvVec2& v) const {
        for (int32_t i = first_; i >= 0; i = nodes_[i].next)
            if (nodes_[i].v == v) return true;
        return false;
    }
    template <class Visit>
    void ForEach(Visit&& visit) const {
        for (int32_t i = first_; i >= 0; i = nodes_[i].next) visit(nodes_[i].v);
    }

  private:
    const CandidateNode* nodes_;
    int32_t first_;
};

// The lists of all elements, in two blocks: a heap array for each of them would cost more than all the rest.
class CandidateLists {
  public:
    // Empty lists for so many elements. False when memory is short.
    bool Make(int64_t elements);
    void Free();
    bool IsMade() const { return static_cast<bool>(ends_); }
    CandidateList At(int64_t element) const { return {nodes_.data(), ends_[element].first}; }
    // False when memory is short; the list is as it was.
    bool Add(int64_t element, const HvVec2& v);
    void Empty(int64_t element) { ends_[element] = {-1, -1}; }
    void EmptyAll();

  private:
    struct Ends {
        int32_t first, last;
    };
    bool Grow();

    FnBuffer<Ends> ends_;
    FnBuffer<CandidateNode> nodes_;
    int64_t elements_ = 0;
    int32_t used_ = 0, capacity_ = 0;
};

#endif
