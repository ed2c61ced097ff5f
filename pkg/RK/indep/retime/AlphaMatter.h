// Channel rules between two pictures of one depth.
#ifndef ALPHA_MATTER_H
#define ALPHA_MATTER_H

#include "RK/indep/retime/Imagers.h"

// Modes, M being the full value: 0 copies the stored pixel; 1 keeps A and turns the colour to M - channel; 2 puts A,
// 3 puts M - A into all four channels. Any other writes nothing.
template <class Stored, class Computed, int Scale>
class AlphaMatter final
    : public GeneralSampler<AlphaMatter<Stored, Computed, Scale>, FnTexture<Stored, Computed>,
                            FnTexture<Stored, Computed>> {
  public:
    explicit AlphaMatter(int32_t rule) : mode(rule) {}
    void Pixel(const Stored& in, Stored& out, int32_t) {
        constexpr float M = FnDepth<Scale>::kFull;
        if (mode == 0) {
            out = in;
            return;
        }
        const Computed c = FnCompute<Computed>(in);
        if (mode == 1)
            out = FnStore<Stored>(FnMakePixel<Computed>(c.a, M - c.r, M - c.g, M - c.b));
        else if (mode == 2)
            out = FnStore<Stored>(FnMakePixel<Computed>(c.a, c.a, c.a, c.a));
        else if (mode == 3)
            out = FnStore<Stored>(FnMakePixel<Computed>(M - c.a, M - c.a, M - c.a, M - c.a));
    }
    int32_t mode;
};

#endif
