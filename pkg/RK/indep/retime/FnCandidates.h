// Small sets of vectors to choose from, and the generator that orders them.
#ifndef FN_CANDIDATES_H
#define FN_CANDIDATES_H

#include <utility>

#include "RK/indep/retime/HvVec2.h"

// Starts at 0 in each band of each pass, so that equal frames give equal results on one thread count.
class FnRandom {
  public:
    // 15 bits.
    uint32_t Next() {
        const uint32_t s1 = state_ * 1103515245u + 12345u;
        const uint32_t s2 = s1 * 1103515245u + 12345u;
        state_ = s2;
        return ((s2 >> 16) & 255u) ^ (((s1 >> 16) & 255u) << 7);
    }
    int32_t Below(int32_t n) { return static_cast<int32_t>(Next() % static_cast<uint32_t>(n)); }

  private:
    uint32_t state_ = 0;
};

class FnCandidateSet {
  public:
    static constexpr int32_t kMost = 200;

    void Clear() { count_ = 0; }
    // What does not fit any more is dropped.
    void Add(const HvVec2& v) {
        if (count_ < kMost) vectors_[count_++] = v;
    }
    // Keeps the first of equal vectors and no undefined one.
    void RemoveDuplicates() {
        int32_t kept = 0;
        for (int32_t i = 0; i < count_; ++i)
            if (!FnIsUndefined(vectors_[i]) && !Holds(vectors_[i], kept)) vectors_[kept++] = vectors_[i];
        count_ = kept;
    }
    // (n - 1) / 2 + 1 swaps of two drawn positions, which may be one and the same.
    void Shuffle(FnRandom& random) {
        for (int32_t swaps = (count_ - 1) / 2 + 1; swaps > 0; --swaps) {
            const int32_t a = random.Below(count_), b = random.Below(count_);
            std::swap(vectors_[a], vectors_[b]);
        }
    }
    // Each position in turn is swapped with a drawn one: n draws for n vectors.
    void ShuffleInFull(FnRandom& random) {
        for (int32_t i = 0; i < count_; ++i) std::swap(vectors_[i], vectors_[random.Below(count_)]);
    }
    void NegateFrom(const FnCandidateSet& other) {
        count_ = other.count_;
        for (int32_t i = 0; i < count_; ++i) vectors_[i] = -other.vectors_[i];
    }
    int32_t Count() const { return count_; }
    const HvVec2& operator[](int32_t i) const { return vectors_[i]; }
    const HvVec2* begin() const { return vectors_; }
    const HvVec2* end() const { return vectors_ + count_; }

  private:
    bool Holds(const HvVec2& v, int32_t among) const {
        for (int32_t i = 0; i < among; ++i)
            if (vectors_[i] == v) return true;
        return false;
    }
    int32_t count_ = 0;
    HvVec2 vectors_[kMost];
};

// How a smoothness parameter splits into two weights: a negative one strengthens the match error, a positive one the
// vectors' distance.
inline float PositiveWeight(float s) { return s >= 0.0f ? 1.0f + s : 1.0f; }
inline float NegativeWeight(float s) { return s >= 0.0f ? 1.0f : 1.0f - s; }

#endif
