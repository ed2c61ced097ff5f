// Threads and mutexes of the platform. Only the retiming engine starts threads.
#ifndef RK_HOST_THREADS_H
#define RK_HOST_THREADS_H

#include "RK/host/Long.h"

// Processors of the machine, at least 1.
RK_HOST_API int32_t THR_ProcessorCount();

struct THR_Thread;
// Runs body(argument) on a thread of its own. Null when no thread can be started; body has not run then.
RK_HOST_API THR_Thread* THR_Start(void (*body)(void* argument), void* argument);
// Waits for the end of the thread and releases it.
RK_HOST_API void THR_Join(THR_Thread* thread);

struct THR_Mutex;
// Null when there is none to be had. Not recursive.
RK_HOST_API THR_Mutex* THR_NewMutex();
RK_HOST_API void THR_FreeMutex(THR_Mutex* mutex);
RK_HOST_API void THR_Lock(THR_Mutex* mutex);
RK_HOST_API void THR_Unlock(THR_Mutex* mutex);

// Milliseconds from some moment on; wraps.
RK_HOST_API uint32_t THR_TickCount();

#endif
