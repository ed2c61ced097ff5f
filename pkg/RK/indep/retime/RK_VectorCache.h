// A frame pair's vector fields as an entry of the host's media cache.
#ifndef RK_VECTOR_CACHE_H
#define RK_VECTOR_CACHE_H

#include "RK/host/STASH.h"
#include "RK/host/TM.h"
#include "RK/indep/retime/FnLuminance.h"

// A shared hold on a pair's holder: it lives as long as somebody uses it, whatever the cache purges.
class RKp_HolderRef {
  public:
    RKp_HolderRef() = default;
    // Takes over a new holder.
    explicit RKp_HolderRef(FnMotionEstimateMapStackHolder* holder) : holder_(holder) {}
    RKp_HolderRef(const RKp_HolderRef& other) : holder_(other.holder_) {
        if (holder_) ++holder_->users;
    }
    RKp_HolderRef& operator=(RKp_HolderRef other) {
        std::swap(holder_, other.holder_);
        return *this;
    }
    ~RKp_HolderRef() {
        if (holder_ && --holder_->users == 0) delete holder_;
    }
    FnMotionEstimateMapStackHolder* operator->() const { return holder_; }
    FnMotionEstimateMapStackHolder* get() const { return holder_; }
    explicit operator bool() const { return holder_ != nullptr; }

  private:
    FnMotionEstimateMapStackHolder* holder_ = nullptr;
};

// Ordered by the two frame times alone. On disk: width and height, four geometries (first and second luminance, first
// and second field), then both fields' vectors by rows; little-endian. Luminance pixels are not kept.
class RK_QuillonCache_Stuff : public STASH_Stuff {
  public:
    RK_QuillonCache_Stuff(uint32_t key, const TM_Time& first, const TM_Time& second, const RKp_HolderRef& fields)
        : sort_key(key), first_time(first), second_time(second), holder(fields) {}

    // Another kind of entry is reported, and throws 3.
    bool IsLess(const STASH_Stuff& other) const override;
    // From the luminance size; INT32_MAX when it does not fit; 0 with no holder.
    int32_t SizeInBytes() const override;
    bool Purge() override;
    bool IsLoaded() const override { return static_cast<bool>(holder); }
    bool CanWriteToDisk() const override { return true; }
    // Throw the file's code.
    void WriteToDisk(DSK_File* file) const override;
    // A record that cannot be throws 3 and leaves no holder; 4 for memory.
    void ReadFromDisk(DSK_File* file) override;
    size_t DiskIdentity(uint8_t* bytes, size_t room) const override;
    STASH_Stuff* NewLike() const override;

    uint32_t sort_key;
    TM_Time first_time, second_time;
    RKp_HolderRef holder;
};

#endif
