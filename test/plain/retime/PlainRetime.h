// The whole engine in its plain form: from two pictures to the one between them.
#ifndef TEST_PLAIN_RETIME_RETIME_H
#define TEST_PLAIN_RETIME_RETIME_H

#include "test/plain/retime/PlainEstimate.h"
#include "test/plain/retime/PlainPicture.h"
#include "test/plain/retime/PlainTween.h"

namespace plain {

struct RetimeSettings {
    float detail = 0.2f, estimateSmoothness = 500, tweenSmoothness = 500, threshold = 0.01f, full = 255;
    int passes = 5, block = 6, threads = 1;
    bool sinc = false;
    double position = 0.5;
};

inline Grid<Px> retime(const Grid<Px>& f1, const Grid<Px>& f2, const RetimeSettings& s) {
    const float wrapped = std::fmod(float(s.position), 1.0f);
    const float t = float(std::floor((0.5 * 0.005 + double(wrapped)) / 0.005) * 0.005);
    const int w = std::max(int(float(f1.w) * s.detail), 1), h = std::max(int(float(f1.h) * s.detail), 1);
    const float ratio = float(f1.w) / float(w);
    const float factor = s.full == 255 ? 0.003921568859368563f : s.full == 1 ? 1.0f : 3.0517578125e-5f;
    Grid<float> luma[2];
    for (int i = 0; i < 2; ++i) {
        const Grid<Px>& f = i ? f2 : f1;
        Grid<RGB> rgb(f.w, f.h);
        for (size_t k = 0; k < f.v.size(); ++k) rgb.v[k] = {f.v[k][1], f.v[k][2], f.v[k][3]};
        luma[i] = luminance(rgb, w, h, ratio, 0.2988804, 0.58676529, 0.11435428, factor);
    }
    const float we = s.tweenSmoothness >= 0 ? 1.0f : 1.0f - s.tweenSmoothness;
    const float ws = s.tweenSmoothness >= 0 ? 1.0f + s.tweenSmoothness : 1.0f;
    Tween tween;
    for (int i = 0; i < 2; ++i) {
        const Grid<float>&reference = luma[i ? 1 : 0], &target = luma[i ? 0 : 1];
        const Grid<V> blocky =
            estimateField(reference, target, s.block, s.estimateSmoothness, s.threshold, s.threads);
        const Grid<V> field =
            smoothPixels(blocky, reference, target, nullptr, s.block, s.block, 2, we, ws, s.passes, s.threads);
        (i ? tween.first : tween.second) = field;
    }
    if (t >= 1 || t <= 0) return t == 0 ? f1 : f2;
    tween.frame1 = luma[0], tween.frame2 = luma[1];
    tween.t = t, tween.iterations = s.passes, tween.threads = s.threads;
    tween.ws = ws, tween.we = we;
    tween.run();
    PictureSettings p;
    p.t = t, p.sinc = s.sinc, p.full = s.full;
    return buildFrame(tween.a, tween.b, tween.classes, f1, f2, f1.w, f1.h, p);
}

}  // namespace plain

#endif
