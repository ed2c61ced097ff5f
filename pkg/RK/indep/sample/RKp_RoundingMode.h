// Work that must round to nearest, whatever the calling thread's mode.
#ifndef RKP_ROUNDING_MODE_H
#define RKP_ROUNDING_MODE_H

#include <xmmintrin.h>

template <class Work>
[[gnu::noinline]] void RKp_CallApart(Work& work) {
    work();
}

// Callers almost always round to nearest already; then this is one read. Otherwise the mode is set for the work, which
// runs in a call of its own so that no step of it is moved out, and put back.
template <class Work>
inline void RKp_RoundingToNearest(Work&& work) {
    const unsigned mode = _mm_getcsr();
    if ((mode & _MM_ROUND_MASK) == _MM_ROUND_NEAREST) {
        work();
        return;
    }
    _mm_setcsr((mode & ~static_cast<unsigned>(_MM_ROUND_MASK)) | _MM_ROUND_NEAREST);
    RKp_CallApart(work);
    _mm_setcsr(mode);
}

#endif
