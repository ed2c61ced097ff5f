// Passes: what splits into bands, runs them on the fan-out, and can be interrupted.
#ifndef FN_IMG_PROC_H
#define FN_IMG_PROC_H

#include <atomic>

#include "RK/host/GEO.h"
#include "RK/indep/retime/FnTexIndexer.h"
#include "RK/indep/retime/FnThreads.h"

// The engine's own error: a pass could not get memory.
constexpr int32_t kFnNoMemory = 1000;

// One per render, shared by its passes. The callback returns 0 to go on; its first other answer is kept and it is
// not called again.
struct InterruptRecord {
    void* refcon = nullptr;
    RK_Long (*callback)(void* refcon) = nullptr;
    std::atomic<bool> aborted{false};
    std::atomic<int32_t> error{0};

    void Abort(int32_t code) {
        if (aborted.exchange(true)) return;
        error = code;
    }
};

class FnInteruptable {
  public:
    virtual ~FnInteruptable() = default;
    FnInteruptable() = default;
    FnInteruptable(const FnInteruptable&) = delete;
    FnInteruptable& operator=(const FnInteruptable&) = delete;

    // Null: the pass keeps a record of its own, so that a failed allocation still stops it.
    void SetInterrupt(InterruptRecord* record) { record_ = record; }
    InterruptRecord* Interrupt() const { return record_ ? record_ : &own_; }
    // Non-zero: stop. Thread 0 asks the callback; every thread reads the answer.
    int32_t Check() const;
    int32_t Error() const { return Interrupt()->error.load(std::memory_order_relaxed); }
    void Abort(int32_t code) const { Interrupt()->Abort(code); }

  protected:
    void ForgetOwnError() {
        own_.aborted = false;
        own_.error = 0;
    }

  private:
    InterruptRecord* record_ = nullptr;
    mutable InterruptRecord own_;
};

struct FnBand {
    int32_t start, end;  // start >= end: empty
};

// The share of thread `number` of `threads` in rows top..bottom - 1.
FnBand FnBandOf(int32_t top, int32_t bottom, int32_t number, int32_t threads);

// A task of one or more passes, each of which may be fanned out. Virtual operations in slot order.
class FnMultiProcessor : public FnInteruptable {
  public:
    virtual void Prepare() {}      // once
    virtual void ProcessBand() {}  // on each thread
    virtual void PassStart() {}
    virtual void PassEnd() {}
    virtual void Finish() {}  // always runs, also after an interrupt
    // Every pass in turn, up to the first interrupt.
    virtual void Run();

    void AllowThreads(bool on) { threads_allowed_ = on; }
    // Prepare, Run, Finish.
    void Process();

  protected:
    int32_t Pass() const { return current_pass_; }
    void SetPassCount(int32_t count) { pass_count_ = count; }
    // Bands of the running pass; known in PassStart.
    int32_t Threads() const { return threads_; }

  private:
    void RunPass();

    int32_t pass_count_ = 1, current_pass_ = 0;
    bool threads_allowed_ = true;
    int32_t threads_ = 1;
};

// The same over the rows of a map: its whole area, unless a region was set.
class FnImgProc : public FnMultiProcessor {
  public:
    // Clamped to the map when it is processed.
    void SetRegion(const GEO_LRect& region);
    // Sets the region from the map if it is not set, then prepares, runs and finishes. A map of no area is left.
    virtual void ProcessMap(FnTexIndexer* map);

  protected:
    FnBand Band() const { return FnBandOf(region_.top, region_.bottom, FnThreadNumber(), Threads()); }
    const GEO_LRect& Region() const { return region_; }
    FnTexIndexer* Map() const { return map_; }

  private:
    bool region_set_ = false;
    GEO_LRect region_{};
    FnTexIndexer* map_ = nullptr;
};

// With one, two or three further maps, which are known only while they are processed.
template <class A>
class FnImgProc1 : public FnImgProc {
  public:
    virtual void Process(FnTexIndexer* map, A* a) {
        a_ = a;
        ProcessMap(map);
        a_ = nullptr;
    }

  protected:
    A* a_ = nullptr;
};
template <class A, class B>
class FnImgProc2 : public FnImgProc {
  public:
    virtual void Process(FnTexIndexer* map, A* a, B* b) {
        a_ = a, b_ = b;
        ProcessMap(map);
        a_ = nullptr, b_ = nullptr;
    }

  protected:
    A* a_ = nullptr;
    B* b_ = nullptr;
};
template <class A, class B, class C>
class FnImgProc3 : public FnImgProc {
  public:
    virtual void Process(FnTexIndexer* map, A* a, B* b, C* c) {
        a_ = a, b_ = b, c_ = c;
        ProcessMap(map);
        a_ = nullptr, b_ = nullptr, c_ = nullptr;
    }

  protected:
    A* a_ = nullptr;
    B* b_ = nullptr;
    C* c_ = nullptr;
};

#endif
