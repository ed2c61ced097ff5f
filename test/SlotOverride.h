// A slot that holds something else for as long as this stands.
#ifndef TEST_SLOT_OVERRIDE_H
#define TEST_SLOT_OVERRIDE_H

#include "RK/indep/frame/RK_OverFuncs.h"

namespace test {

class SlotOverride {
  public:
    template <class Function>
    SlotOverride(int index, Function* function) : index_(index), held_(RKp_G_OverFuncs[index]) {
        RKp_G_OverFuncs[index] = reinterpret_cast<void*>(function);
    }
    ~SlotOverride() { RKp_G_OverFuncs[index_] = held_; }
    SlotOverride(const SlotOverride&) = delete;
    SlotOverride& operator=(const SlotOverride&) = delete;

  private:
    int index_;
    void* held_;
};

}  // namespace test

#endif
