#include "RK/indep/frame/RKp_Progress.h"

#include <vector>

#include "test/Reports.h"

namespace {

struct Asked {
    std::vector<RK_Long> current, maximum;
    int aborts = 0;
    RK_Long answer = 0;
};
RK_Long progress(void* refcon, RK_Long current, RK_Long maximum) {
    Asked& asked = *static_cast<Asked*>(refcon);
    asked.current.push_back(current);
    asked.maximum.push_back(maximum);
    return asked.answer;
}
RK_Long aborted(void* refcon) {
    Asked& asked = *static_cast<Asked*>(refcon);
    ++asked.aborts;
    return asked.answer;
}

void pass(const RK_ProgressInfo* info, int32_t rows) {
    for (int32_t y = 0; y < rows; ++y) RKp_CheckIn(info, y, rows);
}

}  // namespace

TEST(Progress, APassOf63RowsChecksInNeverAndOneOf64Once) {
    Asked asked;
    const RK_ProgressInfo info = {&asked, aborted, progress};
    pass(&info, 63);
    EXPECT_TRUE(asked.current.empty());
    pass(&info, 64);
    EXPECT_EQ(asked.current, (std::vector<RK_Long>{63}));
    EXPECT_EQ(asked.maximum, (std::vector<RK_Long>{64}));
    EXPECT_EQ(asked.aborts, 0);
}

TEST(Progress, EveryFurther64thRowChecksInAgain) {
    Asked asked;
    const RK_ProgressInfo info = {&asked, nullptr, progress};
    pass(&info, 200);
    EXPECT_EQ(asked.current, (std::vector<RK_Long>{63, 127, 191}));
    EXPECT_EQ(asked.maximum, (std::vector<RK_Long>{200, 200, 200}));
}

TEST(Progress, TheAbortFunctionIsAskedOnlyWithoutAProgressFunction) {
    Asked asked;
    const RK_ProgressInfo info = {&asked, aborted, nullptr};
    pass(&info, 128);
    EXPECT_EQ(asked.aborts, 2);
}

TEST(Progress, NothingIsAskedOfANullRecordOrNullFunctions) {
    const RK_ProgressInfo none = {nullptr, nullptr, nullptr};
    EXPECT_EQ(test::thrownBy([&] { pass(nullptr, 128); }), 0);
    EXPECT_EQ(test::thrownBy([&] { pass(&none, 128); }), 0);
}

TEST(Progress, WhatIsNotZeroIsThrown) {
    Asked asked;
    asked.answer = 517;
    const RK_ProgressInfo by_progress = {&asked, nullptr, progress};
    EXPECT_EQ(test::thrownBy([&] { pass(&by_progress, 256); }), 517);
    EXPECT_EQ(asked.current.size(), 1u);
    asked.answer = -2;
    const RK_ProgressInfo by_abort = {&asked, aborted, nullptr};
    EXPECT_EQ(test::thrownBy([&] { pass(&by_abort, 256); }), -2);
    EXPECT_EQ(asked.aborts, 1);
}

TEST(BorderResult, GivesWhatWorkReturnsOrThrows) {
    EXPECT_EQ(RKp_AtBorder([] { return RK_Long{9}; }), 9);
    EXPECT_EQ(RKp_AtBorder([] {}), 0);
    EXPECT_EQ(RKp_AtBorder([]() -> RK_Long { RKp_Throw(-5); }), -5);
    RK_Long error = 0;
    RKp_Guarded(error, [] { return RK_Long{6}; });
    RKp_Guarded(error, [] { RKp_Throw(7); });
    EXPECT_EQ(error, 6);
}
