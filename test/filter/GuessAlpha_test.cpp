#include "RK/indep/filter/RK_GuessAlpha.h"

#include <gtest/gtest.h>

#include <string>

#include "RK/indep/filter/RKp_AlphaAnalysis.h"
#include "test/Pixels.h"
#include "test/Reports.h"
#include "test/filter/Bitmap.h"

namespace {

constexpr uint32_t kSite = 11;
constexpr const char* kMessage = "Unable to guess alpha channel.";
const RK_Pixel8 kUntouched = {1, 2, 3, 4};
const RK_Pixel8 kClearBlack = {0, 0, 0, 0}, kClearWhite = {0, 255, 255, 255}, kClearRed = {0, 200, 30, 30};

struct Found {
    int32_t kind;
    RK_Pixel8 matte;
};
bool operator==(const Found& a, const Found& b) {
    return a.kind == b.kind && test::sameBytes(a.matte, b.matte);
}
void PrintTo(const Found& f, std::ostream* out) {
    *out << "kind " << f.kind << ", " << int(f.matte.alpha) << " " << int(f.matte.red) << " "
         << int(f.matte.green) << " " << int(f.matte.blue);
}
Found straight() { return {0, kUntouched}; }
Found premultiplied(uint8_t r, uint8_t g, uint8_t b) { return {1, {255, r, g, b}}; }

// What is guessed of these pixels in rows of three, through a layer, a bitmap, and both ways of asking.
Found guessed(const std::vector<RK_Pixel8>& pixels) {
    const int height = static_cast<int>((pixels.size() + 2) / 3);
    test::Picture<RK_Pixel8> picture(3, height, 2);
    test::Bitmap bitmap(3, static_cast<int16_t>(height));
    for (size_t i = 0; i < static_cast<size_t>(height) * 3; ++i) {
        const RK_Pixel8 p = pixels[i < pixels.size() ? i : pixels.size() - 1];
        picture.at(int(i % 3), int(i / 3)) = bitmap.at(int(i % 3), int(i / 3)) = p;
    }
    const RK_LayerDef layer = picture.record();
    Found first = {-7, kUntouched};
    EXPECT_EQ(0, RK_GuessAlpha(nullptr, &layer, nullptr, &first.kind, &first.matte));
    // A bitmap is the source even where there is a layer.
    test::Picture<RK_Pixel8> other(1, 1);
    const RK_LayerDef ignored = other.record();
    for (const RK_LayerDef* beside : {static_cast<const RK_LayerDef*>(nullptr), &ignored}) {
        Found again = {-7, kUntouched};
        EXPECT_EQ(0, RK_GuessAlpha(bitmap.handle(), beside, nullptr, &again.kind, &again.matte));
        EXPECT_EQ(first, again);
        char message[RK_kGuessAlphaMessageBytes] = "before";
        again = {-7, kUntouched};
        EXPECT_EQ(0,
                  RK_GuessAlphaMessage(bitmap.handle(), beside, nullptr, &again.kind, &again.matte, message));
        EXPECT_EQ(first, again);
        EXPECT_STREQ(first.kind == 2 ? kMessage : "", message);
        EXPECT_EQ(0, bitmap.locks());
    }
    return first;
}

class GuessAlpha : public test::Tidy {};

TEST_F(GuessAlpha, AFullyTransparentImageCannotBeGuessed) {
    EXPECT_EQ((Found{2, kUntouched}), guessed({kClearBlack}));
    EXPECT_EQ((Found{2, kUntouched}), guessed({kClearWhite, kClearRed, kClearBlack}));
    test::Picture<RK_Pixel8> picture(3, 3);
    RK_LayerDef empty = picture.record();
    empty.height = 0;
    Found found = {-7, kUntouched};
    EXPECT_EQ(0, RK_GuessAlpha(nullptr, &empty, nullptr, &found.kind, &found.matte));
    EXPECT_EQ((Found{2, kUntouched}), found);
}

TEST_F(GuessAlpha, AFullyOpaqueImageIsStraight) {
    EXPECT_EQ(straight(), guessed({{255, 1, 2, 3}, {255, 0, 0, 0}, {255, 255, 255, 255}}));
    EXPECT_EQ(straight(), guessed({{255, 255, 255, 255}}));
    EXPECT_EQ(straight(), guessed({{120, 10, 20, 30}, {90, 3, 3, 3}}));  // visible throughout
}

TEST_F(GuessAlpha, BlackBehindColoursWithinTheirAlphaIsAMatte) {
    EXPECT_EQ(premultiplied(0, 0, 0), guessed({kClearBlack, {10, 10, 3, 0}, {255, 255, 0, 9}}));
    EXPECT_EQ(premultiplied(0, 0, 0), guessed({{255, 9, 9, 9}, kClearBlack}));
    EXPECT_EQ(straight(),
              guessed({kClearBlack, {10, 11, 3, 0}, {255, 255, 0, 9}}));  // a colour above its alpha
    EXPECT_EQ(straight(), guessed({kClearBlack, {10, 9, 3, 0}, {200, 0, 0, 201}}));
    EXPECT_EQ(straight(), guessed({kClearBlack, kClearRed, {10, 9, 3, 0}}));  // not all of them black
}

TEST_F(GuessAlpha, WhiteCloseToTheFaintestPixelIsAMatte) {
    EXPECT_EQ(premultiplied(255, 255, 255), guessed({kClearWhite, {10, 245, 250, 255}, {255, 0, 0, 9}}));
    EXPECT_EQ(straight(), guessed({kClearWhite, {10, 244, 250, 255}, {255, 0, 0, 9}}));
    EXPECT_EQ(straight(), guessed({kClearWhite, {10, 245, 250, 244}, {255, 0, 0, 9}}));
    // The first of the faintest pixels decides.
    EXPECT_EQ(premultiplied(255, 255, 255),
              guessed({{20, 0, 0, 0}, kClearWhite, {10, 255, 255, 255}, {10, 0, 0, 0}}));
    EXPECT_EQ(straight(), guessed({{20, 0, 0, 0}, kClearWhite, {10, 0, 0, 0}, {10, 255, 255, 255}}));
    EXPECT_EQ(straight(),
              guessed({kClearWhite, {0, 255, 255, 254}, {255, 255, 255, 255}}));  // not all of them white
    // White behind opaque pixels alone: nothing speaks against it.
    EXPECT_EQ(premultiplied(255, 255, 255), guessed({kClearWhite, {255, 0, 0, 0}}));
}

TEST_F(GuessAlpha, AnotherColourCloseToTheFaintestPixelIsAMatte) {
    EXPECT_EQ(premultiplied(200, 30, 30), guessed({kClearRed, {20, 180, 50, 30}, {255, 0, 0, 9}}));
    EXPECT_EQ(premultiplied(200, 30, 30), guessed({kClearRed, {20, 220, 10, 30}, {255, 0, 0, 9}}));
    EXPECT_EQ(straight(), guessed({kClearRed, {20, 179, 50, 30}, {255, 0, 0, 9}}));
    EXPECT_EQ(straight(), guessed({kClearRed, {20, 180, 51, 30}, {255, 0, 0, 9}}));
    EXPECT_EQ(straight(), guessed({kClearRed, {20, 180, 50, 51}, {255, 0, 0, 9}}));
    // Colours below it differ: no matte.
    EXPECT_EQ(straight(), guessed({kClearRed, {0, 200, 30, 31}, {20, 200, 30, 30}, {255, 0, 0, 9}}));
    EXPECT_EQ(straight(), guessed({kClearRed, {255, 9, 9, 9}, {0, 200, 31, 30}, {20, 200, 30, 30}}));
}

TEST_F(GuessAlpha, VisiblePixelsOfOneColourAreStraight) {
    EXPECT_EQ(straight(), guessed({kClearRed, kClearRed, {20, 200, 30, 30}, {255, 200, 30, 30}}));
    EXPECT_EQ(straight(), guessed({kClearRed, {20, 190, 30, 30}, {255, 190, 30, 30}}));
    // For white and black that does not matter.
    EXPECT_EQ(premultiplied(255, 255, 255), guessed({kClearWhite, {20, 255, 255, 255}}));
    EXPECT_EQ(premultiplied(0, 0, 0), guessed({kClearBlack, {20, 0, 0, 0}}));
}

TEST_F(GuessAlpha, TheAnalysisCountsWhatItSees) {
    test::Picture<RK_Pixel8> picture(7, 1);
    const RK_Pixel8 row[7] = {kClearRed,        kClearRed,   {99, 100, 0, 0}, kClearWhite,
                              {40, 40, 40, 40}, kClearBlack, {40, 0, 0, 0}};
    for (int x = 0; x < 7; ++x) picture.at(x, 0) = row[x];
    const RKp_AlphaAnalysis a = RKp_AnalyseAlpha(picture.record());
    EXPECT_EQ(2u, a.hist_r[200]);
    EXPECT_EQ(2u, a.hist_g[30]);
    EXPECT_EQ(1u, a.hist_b[255]);
    EXPECT_EQ(1u, a.hist_b[0]);
    EXPECT_EQ(1u, a.white_clear);
    EXPECT_EQ(1u, a.black_clear);
    EXPECT_EQ(2u, a.other_clear);
    EXPECT_EQ(4u, a.clear_count);
    EXPECT_EQ(3u, a.visible_count);
    EXPECT_TRUE(a.clear_colours_vary && a.visible_colours_vary && a.colour_exceeds_alpha);
    EXPECT_EQ(40, a.min_alpha);
    EXPECT_EQ(picture.row(0) + 4, a.min_alpha_pixel);
}

TEST_F(GuessAlpha, BadSourcesAreReportedAndNothingIsWritten) {
    test::Picture<RK_Pixel8> picture(3, 3);
    test::Picture<RK_Pixel16> deep(3, 3);
    test::Bitmap bitmap(3, 3), wide(3, 3, 128), packed(3, 3, 24);
    const RK_LayerDef layer = picture.record(), deeper = deep.record();
    RK_LayerDef hollow = picture.record();
    hollow.data = nullptr;
    RAS_World* none = nullptr;
    struct {
        RAS_World** bitmap;
        const RK_LayerDef* layer;
        bool kind;
    } const cases[] = {{nullptr, nullptr, true},      {bitmap.handle(), &layer, false},
                       {nullptr, &layer, false},      {nullptr, &deeper, true},
                       {wide.handle(), &layer, true}, {packed.handle(), &layer, true},
                       {nullptr, &hollow, true},      {&none, &layer, true}};
    for (const auto& c : cases) {
        Found found = {-7, kUntouched};
        char message[RK_kGuessAlphaMessageBytes] = "before";
        EXPECT_EQ(3, RK_GuessAlphaMessage(c.bitmap, c.layer, nullptr, c.kind ? &found.kind : nullptr,
                                          &found.matte, message));
        EXPECT_TRUE(test::onlyBadParam(kSite));
        EXPECT_STREQ("", message);
        EXPECT_EQ(3, RK_GuessAlpha(c.bitmap, c.layer, nullptr, c.kind ? &found.kind : nullptr, &found.matte));
        EXPECT_TRUE(test::onlyBadParam(kSite));
        EXPECT_EQ((Found{-7, kUntouched}), found);
    }
}

TEST_F(GuessAlpha, ABitmapThatWillNotLockGivesItsError) {
    test::Bitmap bitmap(3, 3);
    Found found = {-7, kUntouched};
    char message[RK_kGuessAlphaMessageBytes] = "before";
    RefHost::FailCall("RAS_LoadLockPixels", 61);
    EXPECT_EQ(61,
              RK_GuessAlphaMessage(bitmap.handle(), nullptr, nullptr, &found.kind, &found.matte, message));
    EXPECT_EQ((Found{-7, kUntouched}), found);
    EXPECT_STREQ("", message);
    EXPECT_EQ(0, bitmap.locks());
}

TEST_F(GuessAlpha, TheMatteAndTheMessageMayBeLeftOut) {
    test::Picture<RK_Pixel8> picture(2, 1);
    picture.at(0, 0) = {255, 9, 9, 9};
    const RK_LayerDef layer = picture.record();
    int32_t kind = -7;
    EXPECT_EQ(0, RK_GuessAlphaMessage(nullptr, &layer, nullptr, &kind, nullptr, nullptr));
    EXPECT_EQ(1, kind);
    picture.at(0, 0) = {};
    EXPECT_EQ(0, RK_GuessAlphaMessage(nullptr, &layer, nullptr, &kind, nullptr, nullptr));
    EXPECT_EQ(2, kind);
}

TEST_F(GuessAlpha, MemoryThatFailsDoesNotMatter) {
    test::Bitmap bitmap(3, 1);
    for (int x = 0; x < 3; ++x) bitmap.at(x, 0) = kClearBlack;
    char message[RK_kGuessAlphaMessageBytes] = "before";
    int32_t kind = -7;
    RefHost::FailAllocation(1);
    EXPECT_EQ(0, RK_GuessAlphaMessage(bitmap.handle(), nullptr, nullptr, &kind, nullptr, message));
    EXPECT_EQ(0, RefHost::AllocationsSince());
    EXPECT_EQ(2, kind);
    EXPECT_STREQ(kMessage, message);
}

}  // namespace
