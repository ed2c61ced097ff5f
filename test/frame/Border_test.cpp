#include "RK/indep/frame/RKp_Border.h"

#include <stdexcept>
#include <vector>

#include "RK/indep/world/RK_World.h"
#include "test/Reports.h"

namespace {

RK_Long crossing(void (*work)()) { return RKp_AtBorder(work); }

}  // namespace

class Border : public test::Tidy {};

TEST_F(Border, GivesZeroWhenNothingIsThrown) {
    EXPECT_EQ(crossing([] {}), 0);
    EXPECT_TRUE(test::noReports());
}

TEST_F(Border, GivesAThrownLongAsItIsWithoutAReport) {
    for (RK_Long code : {RK_Long{3}, RK_Long{517}, RK_Long{-1}, RK_Long{0x7FFFFFFF}, RK_Long{0}}) {
        EXPECT_EQ(RKp_AtBorder([&] { throw code; }), code);
        EXPECT_EQ(RKp_AtBorder([&] { RKp_Throw(code); }), code);
    }
    EXPECT_TRUE(test::noReports());
}

TEST_F(Border, TurnsStandardExceptionsIntoReportedCodes) {
    EXPECT_EQ(crossing([] { throw std::bad_alloc(); }), 4);
    EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Exception, 0, std::bad_alloc().what()));
    EXPECT_EQ(crossing([] { throw std::length_error("vector<T> too long"); }), 3);
    EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Exception, 0, "vector<T> too long"));
    EXPECT_EQ(crossing([] { std::vector<int>(3).at(3) = 0; }), 3);
    EXPECT_EQ(RefHost::TakeReports().size(), 1u);
}

TEST_F(Border, LetsEverythingElsePass) {
    EXPECT_THROW(RKp_AtBorder([] { throw 5; }), int);
    EXPECT_THROW(RKp_AtBorder([] { throw "text"; }), const char*);
    EXPECT_TRUE(test::noReports());
}

TEST_F(Border, TurnsAWorldOfNoWidthInto516) {
    EXPECT_EQ(RKp_AtBorder([] { RK_World::New(0, 10, 8, 0); }), 516);
    const auto reports = RefHost::TakeReports();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].kind, RefHost::ReportKind::Error);
    EXPECT_EQ(reports[0].severity, 8);
    EXPECT_EQ(reports[0].text, "invalid parameter");
}

TEST_F(Border, ThrowIfPassesZeroOnly) {
    EXPECT_EQ(test::thrownBy([] { RKp_ThrowIf(0); }), 0);
    EXPECT_EQ(test::thrownBy([] { RKp_ThrowIf(-7); }), -7);
}

TEST_F(Border, GuardedStepsKeepTheFirstErrorAndAlwaysRun) {
    RK_Long error = 0;
    int ran = 0;
    const auto step = [&](RK_Long code) {
        return [&ran, code] {
            ++ran;
            RKp_ThrowIf(code);
        };
    };
    RKp_Guarded(error, step(0));
    EXPECT_EQ(error, 0);
    RKp_Guarded(error, step(11));
    RKp_Guarded(error, step(0));
    RKp_Guarded(error, step(12));
    RKp_Guarded(error, [] { throw std::bad_alloc(); });
    EXPECT_EQ(error, 11);
    EXPECT_EQ(ran, 4);
    EXPECT_EQ(RefHost::TakeReports().size(), 1u);  // of the exception, although its code was not kept
}
