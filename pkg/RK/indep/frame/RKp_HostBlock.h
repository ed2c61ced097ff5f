// A block from the host that goes back on every path.
#ifndef RKP_HOST_BLOCK_H
#define RKP_HOST_BLOCK_H

#include <cstdint>
#include <limits>

#include "RK/host/KIT.h"
#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_Report.h"

template <class T>
class RKp_HostBlock {
  public:
    // Room for `count` records, not initialised, which the host's accounts call `name`; null for none of
    // them. Throws 4 when there is no room.
    RKp_HostBlock(int64_t count, RK_Message name) {
        if (count == 0) return;
        constexpr auto most = static_cast<uint64_t>(std::numeric_limits<ptrdiff_t>::max()) / sizeof(T);
        if (count < 0 || static_cast<uint64_t>(count) > most) RKp_Throw(RK_kOutOfMemory);
        block_ = static_cast<T*>(KIT_AllocatePtr(static_cast<size_t>(count) * sizeof(T), RKp_Text(name)));
        if (block_ == nullptr) RKp_Throw(RK_kOutOfMemory);
    }
    ~RKp_HostBlock() { KIT_FreePtr(block_); }
    RKp_HostBlock(const RKp_HostBlock&) = delete;
    RKp_HostBlock& operator=(const RKp_HostBlock&) = delete;
    T* get() const { return block_; }
    T& operator[](int64_t i) const { return block_[i]; }

  private:
    T* block_ = nullptr;
};

#endif
