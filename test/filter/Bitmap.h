// A host bitmap of 8 bits a channel for tests, all zero at first.
#ifndef TEST_FILTER_BITMAP_H
#define TEST_FILTER_BITMAP_H

#include <cstring>

#include "RK/host/RAS.h"
#include "RK/indep/frame/RK.h"

namespace test {

class Bitmap {
  public:
    Bitmap(int16_t width, int16_t height, int32_t bits_per_pixel = 32) {
        const GEO_Rect bounds = {0, 0, height, width};
        RAS_NewWorld(0, 0, 8, &bounds, bits_per_pixel, 0, 0, &handle_);
        std::memset((*handle_)->store, 0,
                    static_cast<size_t>((*handle_)->rowbytes) * static_cast<size_t>(height));
    }
    ~Bitmap() { RAS_DisposeWorld(handle_); }
    Bitmap(const Bitmap&) = delete;
    Bitmap& operator=(const Bitmap&) = delete;

    RAS_World** handle() { return handle_; }
    int32_t locks() const { return (*handle_)->lock_count; }
    RK_Pixel8& at(int x, int y) {
        return reinterpret_cast<RK_Pixel8*>(static_cast<char*>((*handle_)->store) +
                                            y * (*handle_)->rowbytes)[x];
    }

  private:
    RAS_World** handle_ = nullptr;
};

}  // namespace test

#endif
