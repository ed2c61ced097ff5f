#include "Progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>

#include "Failure.h"

namespace {

volatile std::sig_atomic_t g_signal = 0;
const char* volatile g_leftover = nullptr;

void NoteSignal(int number) {
    if (g_signal == 0) {
        g_signal = number;
        return;
    }
    if (g_leftover) unlink(g_leftover);
    signal(number, SIG_DFL);
    raise(number);
}

RK_Long StoppedYet() { return g_signal != 0 ? RK_kUserAbort : RK_kOK; }

}  // namespace

void CatchSignals() {
    struct sigaction action = {};
    action.sa_handler = NoteSignal;  // without SA_RESTART: a wait for a pipe ends too
    sigemptyset(&action.sa_mask);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before = {};
        sigaction(number, nullptr, &before);
        if (before.sa_handler != SIG_IGN) sigaction(number, &action, nullptr);
    }
}

int SignalCaught() { return g_signal; }

void RemoveOnSecondSignal(const char* path) { g_leftover = path; }

Progress::Progress(bool quiet, int stages)
    : shown_(!quiet && isatty(STDERR_FILENO) != 0),
      stages_(std::max(stages, 1)),
      next_draw_(Clock::now() + std::chrono::seconds(1)) {
    info_.refcon = this;
    info_.abort_func = [](void*) { return StoppedYet(); };
    info_.progress_func = [](void* refcon, RK_Long current, RK_Long maximum) {
        static_cast<Progress*>(refcon)->Draw(current, maximum);
        return StoppedYet();
    };
}

Progress::~Progress() { Clear(); }

void Progress::Stage(const std::string& name) {
    stage_ = std::min(stage_ + 1, stages_ - 1);
    name_ = name;
    Report(0, 1);
}

void Progress::Report(int64_t done, int64_t total) {
    if (SignalCaught() != 0) throw Stopped();
    Draw(done, total);
}

void Progress::Draw(int64_t done, int64_t total) {
    if (!shown_) return;
    const Clock::time_point now = Clock::now();
    if (now < next_draw_) return;
    next_draw_ = now + std::chrono::milliseconds(100);

    const double part = total > 0 ? static_cast<double>(done) / static_cast<double>(total) : 0.0;
    const double all = std::clamp((std::max(stage_, 0) + part) / stages_, 0.0, 1.0);
    constexpr int kCells = 30;
    const int filled = static_cast<int>(all * kCells);
    const std::string bar = std::string(filled, '#') + std::string(kCells - filled, '.');
    fmt::print(stderr, "\r\x1b[K[{}] {:3.0f}% {}", bar, all * 100.0, OneLine(name_));
    std::fflush(stderr);
    drawn_ = true;
}

void Progress::Clear() {
    if (!drawn_) return;
    std::fputs("\r\x1b[K", stderr);
    std::fflush(stderr);
    drawn_ = false;
}
