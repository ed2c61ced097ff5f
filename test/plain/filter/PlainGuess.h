// Alpha guessing once more: each question goes through the pixels by itself.
#ifndef TEST_PLAIN_FILTER_GUESS_H
#define TEST_PLAIN_FILTER_GUESS_H

#include <algorithm>
#include <vector>

#include "test/plain/PlainArithmetic.h"

namespace plain {

struct Guess {
    int kind;         // 0 straight, 1 premultiplied with the matte, 2 undetermined
    RK_Pixel8 matte;  // for kind 1
};
inline bool sameColour(const RK_Pixel8& p, const RK_Pixel8& q) {
    return p.red == q.red && p.green == q.green && p.blue == q.blue;
}
inline Guess guessAlpha(const RK_LayerDef& image) {
    std::vector<RK_Pixel8> clear, visible;
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x) {
            const RK_Pixel8& p = at<RK_Pixel8>(image, x, y);
            (p.alpha == 0 ? clear : visible).push_back(p);
        }
    if (visible.empty()) return {2, {}};

    // Every clear pixel has this colour, and there is one.
    const auto all_clear = [&](uint8_t level) {
        return !clear.empty() && std::all_of(clear.begin(), clear.end(), [&](const RK_Pixel8& p) {
            return p.red == level && p.green == level && p.blue == level;
        });
    };
    const auto vary = [](const std::vector<RK_Pixel8>& pixels) {
        for (const RK_Pixel8& p : pixels)
            if (!sameColour(p, pixels[0])) return true;
        return false;
    };
    // The first of the least alpha. Full alpha makes every test true, so which full pixel it is has no say.
    RK_Pixel8 least = visible[0];
    for (const RK_Pixel8& p : visible)
        if (p.alpha < least.alpha) least = p;
    const auto near = [&](int matte, int c) { return std::abs(matte - c) <= least.alpha; };

    if (all_clear(255) && near(255, least.red) && near(255, least.green) && near(255, least.blue))
        return {1, {255, 255, 255, 255}};
    const bool exceeds = std::any_of(visible.begin(), visible.end(), [](const RK_Pixel8& p) {
        return p.red > p.alpha || p.green > p.alpha || p.blue > p.alpha;
    });
    if (all_clear(0) && !exceeds) return {1, {255, 0, 0, 0}};
    const bool others = std::any_of(clear.begin(), clear.end(), [](const RK_Pixel8& p) {
        return !sameColour(p, {0, 0, 0, 0}) && !sameColour(p, {0, 255, 255, 255});
    });
    // Clear pixels of one colour: it is the most frequent value of each channel.
    if (others && !vary(clear) && vary(visible)) {
        const RK_Pixel8 m = clear[0];
        if (near(m.red, least.red) && near(m.green, least.green) && near(m.blue, least.blue))
            return {1, {255, m.red, m.green, m.blue}};
    }
    return {0, {}};
}

}  // namespace plain

#endif
