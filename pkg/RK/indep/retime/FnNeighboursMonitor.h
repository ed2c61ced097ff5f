// What changed around an element of a vector map since the last look.
#ifndef FN_NEIGHBOURS_MONITOR_H
#define FN_NEIGHBOURS_MONITOR_H

#include "RK/indep/retime/FnCandidates.h"
#include "RK/indep/retime/FnImgProc.h"
#include "RK/indep/retime/FnTexture.h"

// What the passes ask. All of it is read from the vectors as they were at the monitor's last run.
class FnMotionEstimateGradientChangedNeighboursMonitorClient {
  public:
    virtual ~FnMotionEstimateGradientChangedNeighboursMonitorClient() = default;
    // Adds the neighbours that changed, or all that exist while every neighbour counts as changed; gives how many.
    // Order: below-left, below, below-right, left, right, above-left, above, above-right; below is the next row.
    virtual int32_t Gather(int32_t x, int32_t y, FnCandidateSet* out) const = 0;
    // The mean of the defined neighbours, summed from above-left to below-right; (0, 0) with none.
    virtual HvVec2 LocalMean(int32_t x, int32_t y) const = 0;
};

// Watches the map that it processes. Passes read from it while they write the map, so it runs between them. Before
// its first run it gives no neighbours and the mean (0, 0).
class FnMotionEstimateGradientChangedNeighboursMonitor : public FnImgProc,
                                                         public FnMotionEstimateGradientChangedNeighboursMonitorClient {
  public:
    bool first_run = true;       // the next run takes every element as changed
    bool all_neighbours = true;  // Gather does not look at what changed; cleared by the second run

    void StartAfresh() { first_run = all_neighbours = true; }
    // Whether the last run met an undefined vector. A first run looks at none.
    bool SawUndefined() const { return saw_undefined_; }

    int32_t Gather(int32_t x, int32_t y, FnCandidateSet* out) const override;
    HvVec2 LocalMean(int32_t x, int32_t y) const override;

    void Prepare() override;
    void ProcessBand() override;

  private:
    // Of an element that has all eight.
    int32_t GatherInside(int32_t x, int32_t y, FnCandidateSet* out) const;
    FnVectorMap& Watched() const { return *static_cast<FnVectorMap*>(Map()); }

    FnIntMap changed_;  // 1 or 0
    FnVectorMap previous_;
    std::atomic<bool> saw_undefined_{false};
};

#endif
