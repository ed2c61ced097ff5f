// Plain Gaussian blur, pyramid and luminance frame.
#ifndef TEST_PLAIN_RETIME_PYRAMID_H
#define TEST_PLAIN_RETIME_PYRAMID_H

#include "test/plain/retime/Plain.h"

namespace plain {

inline std::vector<float> gaussTaps(float sigma) {
    const int reach = int((sigma + 2.0f) * 3.0f);
    std::vector<float> taps;
    float sum = 0;
    for (int i = -reach; i <= reach; ++i) {
        const float d = float(i);
        const float e = -(d * d) / (2.0f * sigma * sigma);
        taps.push_back(float(std::exp(double(e))));
        sum += taps.back();
    }
    for (float& t : taps) t /= sum;
    return taps;
}

inline Grid<float> gauss(const Grid<float>& in, float sigma) {
    Grid<float> out(in.w, in.h);
    if (!(sigma > 0)) {
        out.v = in.v;
        return out;
    }
    const std::vector<float> taps = gaussTaps(sigma);
    const int n = int(taps.size()), reach = n / 2;
    Grid<float> rows(in.w, in.h + 2 * reach);
    for (int y = 0; y < rows.h; ++y)
        for (int x = 0; x < in.w; ++x) {
            float sum = 0;
            for (int i = 0; i < n; ++i) sum += taps[size_t(i)] * in.read(x - reach + i, y - reach);
            rows.at(x, y) = sum;
        }
    for (int y = 0; y < in.h; ++y)
        for (int x = 0; x < in.w; ++x) {
            float sum = 0;
            for (int i = 0; i < n; ++i) sum += taps[size_t(i)] * rows.at(x, y + i);
            out.at(x, y) = sum;
        }
    return out;
}

// Level k + 1 of level k.
inline Grid<float> halve(const Grid<float>& in) {
    Grid<float> blurred = gauss(in, 1.0f);
    blurred.edge = in.edge;
    Grid<float> out(in.w / 2, in.h / 2);
    out.edge = in.edge;
    const float sx = float(out.w) / float(in.w), sy = float(out.h) / float(in.h);
    for (int y = 0; y < out.h; ++y)
        for (int x = 0; x < out.w; ++x)
            out.at(x, y) = blurred.read(whole(float(x) / sx + 0.5f), whole(float(y) / sy + 0.5f));
    return out;
}

inline std::vector<Grid<float>> pyramid(const Grid<float>& level0, int levels) {
    std::vector<Grid<float>> all{level0};
    while (int(all.size()) < levels) all.push_back(halve(all.back()));
    return all;
}

// red, green, blue of one pixel, as stored.
struct RGB {
    float r, g, b;
};

// The small luminance frame of a picture; factor is 1 over the depth's full value.
inline Grid<float> luminance(const Grid<RGB>& picture, int w, int h, float ratio, double red, double green, double blue,
                             float factor) {
    float wr = float(red), wg = float(green), wb = float(blue);
    const float sum = wr + wg + wb;
    if (sum == 0) {
        wr = wg = wb = 1;
    } else {
        wr /= sum, wg /= sum, wb /= sum;
    }
    wr *= factor, wg *= factor, wb *= factor;
    Grid<float> full(picture.w, picture.h);
    for (size_t i = 0; i < full.v.size(); ++i)
        full.v[i] = wr * picture.v[i].r + wg * picture.v[i].g + wb * picture.v[i].b;
    const Grid<float> soft = gauss(full, ratio / 3.0f);
    Grid<float> out(w, h);
    out.edge = 'c';
    for (int y = 0; y < h; ++y) {
        const float v = 0.5f * 0.0f + (float(y) + 0.5f) * ratio + 0.0f;
        float u = 0.5f * ratio + (float(y) + 0.5f) * 0.0f + 0.0f;
        for (int x = 0; x < w; ++x, u += ratio) out.at(x, y) = soft.read(down(u), down(v));
    }
    return out;
}

}  // namespace plain

#endif
