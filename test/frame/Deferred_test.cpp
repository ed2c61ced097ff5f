#include "RK/indep/frame/RKp_Deferred.h"

#include <new>

#include "RK/indep/frame/RKp_Report.h"
#include "test/Reports.h"

class Deferred : public test::Tidy {};

TEST_F(Deferred, HoldsReportsBackUntilTheWorkIsOver) {
    size_t seen_inside = 99;
    EXPECT_EQ(RKp_WithReportsDeferred([&] {
                  RKp_ReportBadParam(1);
                  RKp_ReportBadParam(2);
                  seen_inside = RefHost::TakeReports().size();
              }),
              0);
    EXPECT_EQ(seen_inside, 0u);
    const auto reports = RefHost::TakeReports();
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0].location, 0x250001u);
    EXPECT_EQ(reports[1].location, 0x250002u);
}

TEST_F(Deferred, GivesTheWorksFailureAndStillLetsReportsOut) {
    EXPECT_EQ(RKp_WithReportsDeferred([] {
                  RKp_ReportBadParam(1);
                  RKp_Throw(4);
              }),
              4);
    EXPECT_EQ(RefHost::TakeReports().size(), 1u);
    EXPECT_EQ(RKp_WithReportsDeferred([] { throw std::bad_alloc(); }), 4);
    EXPECT_EQ(RefHost::TakeReports().size(), 1u);
    EXPECT_EQ(RKp_WithReportsDeferred([]() -> RK_Long { return 9; }), 9);
}

TEST_F(Deferred, EndsTheBracketForWhatTheBorderLetsPass) {
    EXPECT_THROW(RKp_WithReportsDeferred([] { throw 5; }), int);
    RKp_ReportBadParam(3);
    EXPECT_EQ(RefHost::TakeReports().size(), 1u);
}

TEST_F(Deferred, DoesNotRunTheWorkWhenTheBracketCannotBeOpened) {
    bool ran = false;
    RefHost::FailAllocation(1);
    EXPECT_EQ(RKp_WithReportsDeferred([&] { ran = true; }), 4);
    EXPECT_FALSE(ran);
}

TEST_F(Deferred, Nests) {
    size_t after_inner = 99;
    EXPECT_EQ(RKp_WithReportsDeferred([&] {
                  RKp_ReportBadParam(1);
                  RKp_WithReportsDeferred([] { RKp_ReportBadParam(2); });
                  after_inner = RefHost::TakeReports().size();
                  RKp_ReportBadParam(3);
              }),
              0);
    EXPECT_EQ(after_inner, 0u);
    const auto reports = RefHost::TakeReports();
    ASSERT_EQ(reports.size(), 3u);
    for (uint32_t i = 0; i < 3; ++i) EXPECT_EQ(reports[i].location, 0x250001u + i);
}
