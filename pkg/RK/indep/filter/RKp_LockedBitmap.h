// A bitmap of 8 bits a channel, its pixels locked as long as this lives.
#ifndef RKP_LOCKED_BITMAP_H
#define RKP_LOCKED_BITMAP_H

#include "RK/host/RAS.h"
#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/world/RK_WorldDepth.h"

class RKp_LockedBitmap {
  public:
    // Whether it is such a bitmap.
    static bool Takes(RAS_World** bitmap) {
        return bitmap != nullptr && *bitmap != nullptr && (*bitmap)->bits_per_pixel == 32;
    }
    // Throws the host's code when the pixels cannot be locked.
    explicit RKp_LockedBitmap(RAS_World** bitmap) : bitmap_(bitmap) {
        RKp_ThrowIf(RAS_LoadLockPixels(1, bitmap, 0, 0));
        RK_EffectWorldFromRASWorld(bitmap, &record_);
    }
    ~RKp_LockedBitmap() { RAS_UnlockPixels(bitmap_); }
    RKp_LockedBitmap(const RKp_LockedBitmap&) = delete;
    RKp_LockedBitmap& operator=(const RKp_LockedBitmap&) = delete;

    const RK_LayerDef& Record() const { return record_; }

  private:
    RAS_World** bitmap_;
    RK_LayerDef record_ = {};
};

#endif
