#include "RK/indep/frame/RKp_Report.h"

#include "test/Reports.h"

class Reporting : public test::Tidy {};

TEST_F(Reporting, ABadParameterIsSeverity8WithTextFourAndGivesThree) {
    for (uint32_t site : {RKp_kSiteFill, RKp_kSiteIterate, RKp_kSiteIterateGeneric, 0xFFFFu}) {
        EXPECT_EQ(RKp_ReportBadParam(site), 3);
        const auto reports = RefHost::TakeReports();
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].kind, RefHost::ReportKind::Error);
        EXPECT_EQ(reports[0].location, 0x250000u | site);
        EXPECT_EQ(reports[0].severity, 8);
        EXPECT_EQ(reports[0].text, "bad parameter passed to effect callback");
    }
}

TEST_F(Reporting, TheSitesOfTheFamilies) {
    EXPECT_EQ(RKp_kSiteFill, 13u);
    EXPECT_EQ(RKp_kSiteIterate, 14u);
    EXPECT_EQ(RKp_kSiteIterateGeneric, 70u);
}

TEST_F(Reporting, AVerificationTellsItsLineAndGivesThree) {
    const int line = __LINE__ + 1;
    EXPECT_EQ(RKp_VERIFICATION("something contradicts itself"), 3);
    const auto reports = RefHost::TakeReports();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].kind, RefHost::ReportKind::Verification);
    EXPECT_EQ(reports[0].location, 0x250000u);
    EXPECT_EQ(reports[0].severity, line);
    EXPECT_EQ(reports[0].text, "something contradicts itself");
}

TEST_F(Reporting, AnUnknownDepthHasOneLocationForAll) {
    EXPECT_EQ(RKp_BAD_DEPTH("Unknown world bitdepth in SomePass"), 3);
    EXPECT_TRUE(test::onlyVerification("Unknown world bitdepth in SomePass", 0x2503E7));
}
