// A world object of any depth that is none of the concrete kinds, as a host could derive one.
#ifndef TEST_ODD_WORLD_H
#define TEST_ODD_WORLD_H

#include <cstring>

#include "RK/host/RAS.h"
#include "RK/indep/world/RK_World.h"

namespace test {

class OddWorld final : public RK_World {
  public:
    explicit OddWorld(RK_Long depth) : depth_(depth) {
        std::memset(&record, 0, sizeof record);
        record.world_object = this;
        alloc_width = alloc_height = 0;
        owned_pixels = nullptr;
        owned_bitmap_ = nullptr;
    }
    RK_Long Depth() const override { return depth_; }
    bool IsReference() const override { return true; }
    void Clear(const GEO_Rect*) override {}
    void ClearExceptRect(const GEO_Rect&) override {}
    void Fill(const RK_PixelFloat&, const GEO_Rect*) override {}
    void Fill(const RK_Pixel16&, const GEO_Rect*) override {}
    void FillAlpha() override {}
    void InvertAlpha() override {}
    void Premultiply() override {}
    void Unmultiply() override {}
    void PremulColor(const RK_Pixel16&) override {}
    void UnmulColor(const RK_Pixel16&) override {}
    void CopyRect(const RK_World*, const GEO_Rect&, int16_t, int16_t) override {}
    void CopyRectPossiblyDifferentBitdepth(const RK_World*, const GEO_Rect&, bool, int16_t, int16_t,
                                           RK_ProgressInfo*) override {}
    bool SubWorldSafetyGutterHasBeenOverWritten() const override { return false; }
    void ReleaseOwnership() override {}

  private:
    RK_Long depth_;
};

// A bitmap of the host that dies with the test; its handle and its record.
class Bitmap {
  public:
    Bitmap(int16_t width, int16_t height, int16_t bits, void* base, int32_t rowbytes)
        : record_{width, height, bits, 0, base, rowbytes, nullptr}, pointer_(&record_) {}
    RAS_World** handle() { return &pointer_; }
    RAS_World& record() { return record_; }

  private:
    RAS_World record_;
    RAS_World* pointer_;
};

}  // namespace test

#endif
