#include "RK/indep/retime/FnThreads.h"

#include <atomic>

#include "RK/host/KIT.h"
#include "RK/host/Threads.h"

namespace {

std::atomic<int32_t> g_count{0};  // 0: not counted yet
std::atomic<bool> g_threading{true};
std::atomic<bool> g_running{false};
std::atomic<THR_Mutex*> g_mutex{nullptr};
thread_local int32_t t_number = 0;
thread_local bool t_in_band = false;

// Made on first use and kept; null when there is none to be had.
THR_Mutex* TheMutex() {
    THR_Mutex* mutex = g_mutex.load();
    if (mutex) return mutex;
    THR_Mutex* made = THR_NewMutex();
    if (made && !g_mutex.compare_exchange_strong(mutex, made)) {
        THR_FreeMutex(made);
        return mutex;
    }
    return made;
}

struct Band {
    void (*call)(void*);
    void* context;
    int32_t number;
    THR_Thread* thread;
};

void RunBand(void* argument) {
    const Band& band = *static_cast<Band*>(argument);
    const int32_t number_before = t_number;
    const bool in_band_before = t_in_band;
    t_number = band.number;
    t_in_band = true;
    band.call(band.context);
    t_number = number_before;
    t_in_band = in_band_before;
}

void RunAllHere(int32_t width, void (*call)(void*), void* context) {
    for (int32_t i = 0; i < width; ++i) {
        Band band = {call, context, i, nullptr};
        RunBand(&band);
    }
}

}  // namespace

int32_t FnThreadCount() {
    int32_t count = g_count.load();
    if (count == 0) {
        const int32_t counted = THR_ProcessorCount();
        g_count.compare_exchange_strong(count, counted < 1 ? 1 : counted);
        count = g_count.load();
    }
    return count;
}

void FnSetThreadCount(int32_t count) {
    if (count >= 1 && !g_running) g_count = count;
}

void FnSetThreading(bool on) { g_threading = on; }

int32_t FnFanOutWidth() { return g_threading ? FnThreadCount() : 1; }

bool FnInFanOut() { return g_running; }

int32_t FnThreadNumber() { return t_number; }

void FnFanOutCall(int32_t width, void (*call)(void*), void* context) {
    if (width < 2) return call(context);
    THR_Mutex* mutex = t_in_band ? nullptr : TheMutex();
    if (!mutex) return RunAllHere(width, call, context);

    THR_Lock(mutex);
    g_running = true;
    Band* bands = static_cast<Band*>(KIT_AllocatePtrQuiet(static_cast<size_t>(width) * sizeof(Band)));
    if (bands) {
        for (int32_t i = 0; i < width; ++i) bands[i] = {call, context, i, nullptr};
        for (int32_t i = 1; i < width; ++i) bands[i].thread = THR_Start(RunBand, &bands[i]);
        RunBand(&bands[0]);
        for (int32_t i = 1; i < width; ++i)
            if (!bands[i].thread) RunBand(&bands[i]);
        for (int32_t i = 1; i < width; ++i)
            if (bands[i].thread) THR_Join(bands[i].thread);
        KIT_FreePtr(bands);
    } else {
        RunAllHere(width, call, context);
    }
    g_running = false;
    THR_Unlock(mutex);
}
