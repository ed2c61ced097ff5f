// Threads over the C++ library.
#include "RK/host/Threads.h"

#include <chrono>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>

#include "RK/host/KIT.h"

struct THR_Thread {
    std::thread thread;
};
struct THR_Mutex {
    std::mutex mutex;
};

int32_t THR_ProcessorCount() {
    const unsigned count = std::thread::hardware_concurrency();
    return count < 1 ? 1 : static_cast<int32_t>(count);
}

// The record comes from the counted memory, so that a program can make the start fail.
THR_Thread* THR_Start(void (*body)(void*), void* argument) {
    void* place = KIT_AllocatePtrQuiet(sizeof(THR_Thread));
    if (!place) return nullptr;
    THR_Thread* thread = new (place) THR_Thread;
    try {
        thread->thread = std::thread(body, argument);
        return thread;
    } catch (const std::system_error&) {
        thread->~THR_Thread();
        KIT_FreePtr(place);
        return nullptr;
    }
}

void THR_Join(THR_Thread* thread) {
    thread->thread.join();
    thread->~THR_Thread();
    KIT_FreePtr(thread);
}

THR_Mutex* THR_NewMutex() { return new (std::nothrow) THR_Mutex; }
void THR_FreeMutex(THR_Mutex* mutex) { delete mutex; }
void THR_Lock(THR_Mutex* mutex) { mutex->mutex.lock(); }
void THR_Unlock(THR_Mutex* mutex) { mutex->mutex.unlock(); }

uint32_t THR_TickCount() {
    using namespace std::chrono;
    return static_cast<uint32_t>(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}
