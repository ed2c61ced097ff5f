// The engine's one fan-out: a call that runs once per band, on as many threads.
#ifndef FN_THREADS_H
#define FN_THREADS_H

#include <cstdint>

// Bands of a fan-out: the processors of the machine until a count is set. Values below 1, and calls while a fan-out
// runs, are ignored.
int32_t FnThreadCount();
void FnSetThreadCount(int32_t count);
// Off: every fan-out is one call on the caller.
void FnSetThreading(bool on);

// The number of bands that a pass starting now has.
int32_t FnFanOutWidth();
bool FnInFanOut();
// The caller's number in the running fan-out; 0 outside, and for threads that are not part of it.
int32_t FnThreadNumber();

// Runs call(context) `width` times, under the numbers 0..width - 1; 0 is the caller. All of them have run when this
// returns: a band whose thread cannot be started, or whose fan-out is inside another band, runs on the caller under
// its number. One fan-out at a time runs in the process.
void FnFanOutCall(int32_t width, void (*call)(void* context), void* context);

// The same with up to six arguments, passed by reference.
template <class Call, class... Arguments>
void FnFanOut(int32_t width, Call&& call, Arguments&&... arguments) {
    static_assert(sizeof...(Arguments) <= 6, "a fan-out passes six arguments at most");
    auto bound = [&] { call(arguments...); };
    FnFanOutCall(width, [](void* context) { (*static_cast<decltype(bound)*>(context))(); }, &bound);
}

#endif
