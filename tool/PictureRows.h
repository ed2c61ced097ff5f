// Rows of picture files into worlds, and rows of worlds into files.
#ifndef TOOL_PICTURE_ROWS_H
#define TOOL_PICTURE_ROWS_H

#include <cstdint>
#include <vector>

#include "Library.h"

enum class AlphaKind { None, Straight, Premultiplied };

// Worlds hold straight alpha, so premultiplied samples are unmultiplied at float on the way in and multiplied
// on the way out; see Library.h. Alpha that leaves 0..1, or is NaN, is brought back into it; float colour is
// kept as it is.
class PictureRows {
  public:
    // With `as_stored` Put takes premultiplied samples as they are.
    explicit PictureRows(RK_World& world, bool as_stored = false) : world_(world), as_stored_(as_stored) {}

    // Stores the row y. A pixel is `channels` samples: 1 grey, 2 grey and alpha, 3 red, green, blue, 4 with
    // alpha. Without alpha a pixel is opaque. S is uint8_t, uint16_t or float.
    template <class S>
    void Put(int32_t y, const S* samples, int channels, AlphaKind alpha);

    // Makes a file's row out of the row y: red, green, blue and, with 4 channels, alpha.
    template <class S>
    void Get(int32_t y, S* samples, int channels, AlphaKind alpha);

    int32_t Width() const { return world_.record.width; }
    int32_t Height() const { return world_.record.height; }
    // True when every pixel is opaque.
    bool Opaque() const;

  private:
    template <class P>
    P* Row(int32_t y) const {
        auto* first = static_cast<uint8_t*>(world_.record.data);
        return reinterpret_cast<P*>(first + static_cast<ptrdiff_t>(y) * world_.record.rowbytes);
    }
    template <class P, class S>
    void PutAt(int32_t y, const S* samples, int channels, AlphaKind alpha);
    template <class P, class S>
    void GetAt(int32_t y, S* samples, int channels, AlphaKind alpha);
    template <class P>
    bool OpaqueAt() const;

    RK_World& world_;
    const bool as_stored_;
    std::vector<RK_PixelFloat> float_row_;
};

#endif
