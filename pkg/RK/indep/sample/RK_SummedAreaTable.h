// Summed-area tables: the mean over any axis-aligned box in constant time.
// After F. C. Crow, "Summed-area tables for texture mapping", 1984. A cell holds the mean, not the sum, of the
// premultiplied pixels from the world's origin through it, which keeps 32-bit floats precise.
#ifndef RK_SUMMED_AREA_TABLE_H
#define RK_SUMMED_AREA_TABLE_H

#include "RK/indep/frame/RK.h"

class RK_API RK_SummedAreaTable {
  public:
    // Builds the table of a world of any depth in one pass. Throws 4 when there is no memory for it, 3 for a null world.
    explicit RK_SummedAreaTable(const RK_World* world);
    ~RK_SummedAreaTable();
    RK_SummedAreaTable(const RK_SummedAreaTable&) = delete;
    RK_SummedAreaTable& operator=(const RK_SummedAreaTable&) = delete;

    // Takes another world in; tables are resized. After a throw the table is empty: 0 by 0.
    void Build(const RK_World* world);

    RK_PixelFloat* float_table;    // of 8 and 16-bit worlds, else null
    RK_PixelDouble* double_table;  // of float worlds, else null
    int32_t width, height;         // cells lie row after row, without padding
};

// The mean of the straight pixels in a box. Edges are exclusive at right and bottom; parts outside the table count as
// empty. A box without area, or outside, gives the zero pixel. Exported for (RK_Pixel8, RK_PixelFloat),
// (RK_Pixel16, RK_PixelFloat) and (RK_PixelFloat, RK_PixelDouble).
template <class Pixel, class Entry>
RK_API void RK_SummedAreaTable_SampleDraft(int32_t width, int32_t height, const Entry* table, int32_t left, int32_t top,
                                           int32_t right, int32_t bottom, Pixel* out);
// The same with fractional edges, given in pixel-centre coordinates: pixel 0 spans -0.5 to 0.5.
template <class Pixel, class Entry>
RK_API void RK_SummedAreaTable_SampleAA(int32_t width, int32_t height, const Entry* table, float left, float top,
                                        float right, float bottom, Pixel* out);

#endif
