// The sample module that spreads passes over threads, in a child process of its own.
#ifndef TEST_LIFE_THREADS_H
#define TEST_LIFE_THREADS_H

#include <dlfcn.h>

#include "RK/indep/frame/RK_Birth.h"
#include "RK/indep/frame/RK_OverFuncs.h"
#include "RK/indep/passes/RK_Iterate.h"
#include "test/life/Child.h"

namespace test {

constexpr int kIterateGenericSlot = 53;

// The module's counter of that name, as the package sees it.
inline const int32_t* threadsCounter(const char* name) {
    const std::string file = moduleFolder("RK_ModuleThreads") + "/RK_ModuleThreads.RVX";
    static void* const object = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    return object ? static_cast<const int32_t*>(dlsym(object, name)) : nullptr;
}
// Calls that had helpers so far.
inline int32_t threadedCalls() { return *threadsCounter("RK_ModuleThreads_calls"); }

// Runs work() with the module in its slot, in a host of so many threads.
template <class Work>
void withThreads(int32_t threads, Work&& work) {
    inChild([&] {
        RefHost::PrintReports(false);
        RefHost::SetThreadCount(threads);
        RefHost::SetPluginFolder(moduleFolder("RK_ModuleThreads"));
        ASSERT_NE(threadsCounter("RK_ModuleThreads_calls"), nullptr);
        ASSERT_EQ(RK_Birth(), 0);
        RK_SlotInfo info;
        ASSERT_EQ(RK_GetSlotInfo(kIterateGenericSlot, &info), 0);
        ASSERT_EQ(info.form, RK_kSlotOverride);
        work();
        EXPECT_TRUE(RefHost::TakeReports().empty());
        EXPECT_EQ(RK_Death(), 0);
        expectNothingHeld();
    });
}

// Runs work() with the package's own body in the slot.
template <class Work>
void withoutThreads(Work&& work) {
    void* const module = RKp_G_OverFuncs[kIterateGenericSlot];
    RKp_G_OverFuncs[kIterateGenericSlot] = reinterpret_cast<void*>(RK_IterateGeneric_Static);
    work();
    RKp_G_OverFuncs[kIterateGenericSlot] = module;
}

}  // namespace test

#endif
