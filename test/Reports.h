// What a call reported, what it threw, and what it left behind.
#ifndef TEST_REPORTS_H
#define TEST_REPORTS_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "RK/indep/frame/RK.h"
#include "RK/indep/frame/RKp_Globals.h"
#include "refhost/RefHost.h"

namespace test {

inline std::string describe(const std::vector<RefHost::Report>& reports) {
    std::string all;
    for (const RefHost::Report& r : reports)
        all += "  kind " + std::to_string(int(r.kind)) + " at " + std::to_string(r.location) + ": " + r.text +
               "\n";
    return all.empty() ? "  none\n" : all;
}

// Takes the reports; true when there is exactly this one.
inline testing::AssertionResult onlyReport(RefHost::ReportKind kind, uint32_t location,
                                           const std::string& text) {
    const auto reports = RefHost::TakeReports();
    if (reports.size() == 1 && reports[0].kind == kind && reports[0].location == location &&
        reports[0].text == text)
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "expected kind " << int(kind) << " at " << location << ": " << text << "\nreported:\n"
           << describe(reports);
}
inline testing::AssertionResult onlyVerification(const std::string& text, uint32_t location = RK_kLocation) {
    return onlyReport(RefHost::ReportKind::Verification, location, text);
}
inline testing::AssertionResult onlyBadDepth(const std::string& text) {
    return onlyVerification(text, RK_kBadDepthLocation);
}
// The text that the user sees for a bad parameter, from the family's site.
inline testing::AssertionResult onlyBadParam(uint32_t site) {
    return onlyReport(RefHost::ReportKind::Error, RK_kLocation | site,
                      "bad parameter passed to effect callback");
}
inline testing::AssertionResult noReports() {
    const auto reports = RefHost::TakeReports();
    if (reports.empty()) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "reported:\n" << describe(reports);
}

// The code that work throws; 0 when it throws none.
template <class Work>
RK_Long thrownBy(Work&& work) {
    try {
        work();
    } catch (RK_Long code) {
        return code;
    }
    return RK_kOK;
}

// A test that must end with the host's memory, the world count and the reports as they were when it began.
class Tidy : public testing::Test {
  protected:
    void SetUp() override {
        RefHost::TakeReports();
        memory_ = RefHost::Memory();
        worlds_ = RKp_G_WorldCount;
    }
    void TearDown() override {
        RefHost::FailAllocation(0);
        EXPECT_TRUE(noReports());
        EXPECT_TRUE(tidy());
        EXPECT_EQ(RefHost::MinimalisticBrackets(), 0);
    }
    testing::AssertionResult tidy() const {
        const RefHost::MemoryUse now = RefHost::Memory();
        if (now.blocks == memory_.blocks && now.bytes == memory_.bytes &&
            now.accounted == memory_.accounted && RKp_G_WorldCount == worlds_)
            return testing::AssertionSuccess();
        return testing::AssertionFailure()
               << now.blocks - memory_.blocks << " blocks, " << now.bytes - memory_.bytes << " bytes, "
               << RKp_G_WorldCount - worlds_ << " worlds left";
    }
    int32_t worldsMade() const { return RKp_G_WorldCount - worlds_; }

  private:
    RefHost::MemoryUse memory_ = {};
    int32_t worlds_ = 0;
};

}  // namespace test

#endif
