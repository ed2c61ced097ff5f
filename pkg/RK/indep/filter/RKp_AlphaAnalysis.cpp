#include "RK/indep/filter/RKp_AlphaAnalysis.h"

#include <algorithm>
#include <cstring>

namespace {

// A pixel as one number, for comparing colours; alpha, the first byte, is blanked out.
uint32_t colourOf(const RK_Pixel8& p) {
    constexpr RK_Pixel8 mask_pixel = {0, 255, 255, 255};
    uint32_t word, mask;
    std::memcpy(&word, &p, sizeof word);
    std::memcpy(&mask, &mask_pixel, sizeof mask);
    return word & mask;
}

// `count` clear pixels of one colour.
void countClear(const RK_Pixel8& p, uint32_t count, RKp_AlphaAnalysis& a) {
    a.hist_r[p.red] += count;
    a.hist_g[p.green] += count;
    a.hist_b[p.blue] += count;
    const int32_t least = std::min({p.red, p.green, p.blue}), most = std::max({p.red, p.green, p.blue});
    (least == 255 ? a.white_clear : most == 0 ? a.black_clear : a.other_clear) += count;
    a.clear_count += count;
}

class Scan {
  public:
    explicit Scan(RKp_AlphaAnalysis& analysis) : a_(analysis) {}

    void Row(const RK_Pixel8* row, int32_t width) {
        for (int32_t x = 0; x < width;) {
            const RK_Pixel8& p = row[x];
            if (p.alpha != 0) {
                Visible(p);
                ++x;
                continue;
            }
            // Clear pixels come in runs of one colour.
            const int32_t first = x;
            const uint32_t colour = colourOf(p);
            do ++x;
            while (x < width && row[x].alpha == 0 && colourOf(row[x]) == colour);
            if (a_.clear_count != 0 && colour != clear_colour_) a_.clear_colours_vary = true;
            clear_colour_ = colour;
            countClear(p, static_cast<uint32_t>(x - first), a_);
        }
    }

  private:
    void Visible(const RK_Pixel8& p) {
        const uint32_t colour = colourOf(p);
        if (a_.visible_count != 0 && colour != visible_colour_) a_.visible_colours_vary = true;
        visible_colour_ = colour;
        ++a_.visible_count;
        if (p.alpha == 255) return;
        if (p.alpha < a_.min_alpha) {
            a_.min_alpha = p.alpha;
            a_.min_alpha_pixel = &p;
        }
        if (std::max({p.red, p.green, p.blue}) > p.alpha) a_.colour_exceeds_alpha = true;
    }

    RKp_AlphaAnalysis& a_;
    uint32_t clear_colour_ = 0, visible_colour_ = 0;  // of the last one
};

}  // namespace

RKp_AlphaAnalysis RKp_AnalyseAlpha(const RK_LayerDef& image) {
    RKp_AlphaAnalysis analysis = {};
    analysis.min_alpha = 255;
    analysis.min_alpha_pixel = static_cast<const RK_Pixel8*>(image.data);
    Scan scan(analysis);
    const char* row = static_cast<const char*>(image.data);
    for (int32_t y = 0; y < image.height; ++y, row += image.rowbytes)
        scan.Row(reinterpret_cast<const RK_Pixel8*>(row), image.width);
    return analysis;
}
