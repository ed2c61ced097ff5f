// How far a command has come, and whether a signal asks it to stop.
#ifndef TOOL_PROGRESS_H
#define TOOL_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <string>

#include "RK/indep/frame/RK.h"

// SIGINT, SIGTERM and SIGHUP are noted, and found by the next Progress call or interrupted wait. A second one
// ends the process at once, after removing the file that RemoveOnSecondSignal names.
void CatchSignals();
// The signal that was noted, or 0.
int SignalCaught();
// `path` (null: none) stays the caller's, and must outlive the call that changes it.
void RemoveOnSecondSignal(const char* path);

// Draws a bar on standard error when that is a terminal, `quiet` is off and the work has taken over a second.
class Progress {
  public:
    // The work has `stages` parts of about the same length.
    Progress(bool quiet, int stages);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Begins the next part.
    void Stage(const std::string& name);
    // `done` of `total` of this part. Throws Stopped after a signal.
    void Report(int64_t done, int64_t total);
    // For the library's calls: draws as Report does, and answers 517 after a signal.
    RK_ProgressInfo* Info() { return &info_; }
    // Removes the bar.
    void Clear();

  private:
    void Draw(int64_t done, int64_t total);

    using Clock = std::chrono::steady_clock;
    const bool shown_;
    const int stages_;
    int stage_ = -1;
    bool drawn_ = false;
    std::string name_;
    Clock::time_point next_draw_;
    RK_ProgressInfo info_;
};

#endif
