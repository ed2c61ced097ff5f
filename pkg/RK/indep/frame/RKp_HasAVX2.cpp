#include "RK/indep/frame/RKp_HasAVX2.h"

#include "RK/host/KIT.h"

bool RKp_HasAVX2() {
#if defined(__x86_64__) || defined(__i386__)
    return KIT_G_CPU_DataP->has_sse2 != 0 && __builtin_cpu_supports("avx2");
#else
    return false;
#endif
}
