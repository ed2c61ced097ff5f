#include <cstring>
#include <new>
#include <stdexcept>
#include <thread>
#include <vector>

#include "test/Reports.h"

using RefHost::ReportKind;

class HostReports : public test::Tidy {};

TEST_F(HostReports, AreKeptInOrderWithKindPlaceAndText) {
    KIT_ReportFailedVerification(0x250001, 42, 0, "first");
    KITp_ReportErrString(0x250002, 8, "second");
    std::strcpy(KITp_G_buffer, "third");
    KITp_ReportError(0x250003, 16);
    const auto reports = RefHost::TakeReports();
    ASSERT_EQ(reports.size(), 3u);
    EXPECT_EQ(reports[0].kind, ReportKind::Verification);
    EXPECT_EQ(reports[0].location, 0x250001u);
    EXPECT_EQ(reports[0].severity, 42);
    EXPECT_EQ(reports[0].text, "first");
    EXPECT_EQ(reports[1].kind, ReportKind::Error);
    EXPECT_EQ(reports[1].severity, 8);
    EXPECT_EQ(reports[2].kind, ReportKind::BufferedError);
    EXPECT_EQ(reports[2].location, 0x250003u);
    EXPECT_EQ(reports[2].severity, 16);
    EXPECT_EQ(reports[2].text, "third");
    EXPECT_TRUE(RefHost::TakeReports().empty());
}

TEST_F(HostReports, TakeNullTextsAndBuffersWithoutAnEnd) {
    KITp_ReportErrString(1, 8, nullptr);
    EXPECT_TRUE(test::onlyReport(ReportKind::Error, 1, ""));
    std::memset(KITp_G_buffer, 'x', KIT_kBufferBytes);
    KITp_ReportError(1, 16);
    EXPECT_TRUE(test::onlyReport(ReportKind::BufferedError, 1, std::string(KIT_kBufferBytes - 1, 'x')));
}

TEST_F(HostReports, TranslateExceptions) {
    EXPECT_EQ(KIT_TranslateAndReportException(std::bad_alloc()), 4);
    EXPECT_EQ(RefHost::TakeReports().size(), 1u);
    EXPECT_EQ(KIT_TranslateAndReportException(std::bad_array_new_length()), 4);
    EXPECT_EQ(RefHost::TakeReports().size(), 1u);
    EXPECT_EQ(KIT_TranslateAndReportException(std::runtime_error("why")), 3);
    EXPECT_TRUE(test::onlyReport(ReportKind::Exception, 0, "why"));
}

TEST_F(HostReports, ComeFromAnyThread) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([] {
            for (int i = 0; i < 100; ++i) KITp_ReportErrString(7, 8, "from a thread");
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(RefHost::TakeReports().size(), 400u);
}

// A host that never takes its reports keeps the newest and does not grow without end.
TEST_F(HostReports, DropTheOldestWhenNobodyTakesThem) {
    for (uint32_t i = 0; i < 40000; ++i) KITp_ReportErrString(i, 8, "");
    const auto reports = RefHost::TakeReports();
    EXPECT_LE(reports.size(), 20000u);
    EXPECT_GE(reports.size(), 5000u);
    EXPECT_EQ(reports.back().location, 39999u);
}

TEST_F(HostReports, ArePrintedOrNot) {
    RefHost::PrintReports(true);
    testing::internal::CaptureStderr();
    KITp_ReportErrString(1, 8, "for all to see");
    EXPECT_NE(testing::internal::GetCapturedStderr().find("for all to see\n"), std::string::npos);
    RefHost::PrintReports(false);
    testing::internal::CaptureStderr();
    KITp_ReportErrString(1, 8, "kept quiet");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(RefHost::TakeReports().size(), 2u);
}

TEST_F(HostReports, AreHeldBackInsideABracketAndNotPrinted) {
    KIT_DeferredReporting bracket;
    RefHost::PrintReports(true);
    testing::internal::CaptureStderr();
    ASSERT_EQ(KIT_DeferredReportingStart(16, &bracket), 0);
    KITp_ReportErrString(1, 8, "one");
    KIT_ReportFailedVerification(2, 5, 0, "two");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(RefHost::TakeReports().empty());
    testing::internal::CaptureStderr();
    EXPECT_EQ(KIT_DeferredReportingEnd(0, 0, &bracket), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "RK: one\nRK: two\n");
    RefHost::PrintReports(false);
    EXPECT_EQ(RefHost::TakeReports().size(), 2u);
    KITp_ReportErrString(3, 8, "after");
    EXPECT_TRUE(test::onlyReport(ReportKind::Error, 3, "after"));
}

TEST_F(HostReports, OfNestedBracketsComeOutInOrderWithTheOutermost) {
    KIT_DeferredReporting outer, inner;
    KIT_DeferredReportingStart(16, &outer);
    KITp_ReportErrString(1, 8, "");
    KIT_DeferredReportingStart(16, &inner);
    KITp_ReportErrString(2, 8, "");
    EXPECT_EQ(KIT_DeferredReportingEnd(0, 0, &inner), 0);
    EXPECT_TRUE(RefHost::TakeReports().empty());
    KITp_ReportErrString(3, 8, "");
    EXPECT_EQ(KIT_DeferredReportingEnd(0, 0, &outer), 0);
    const auto reports = RefHost::TakeReports();
    ASSERT_EQ(reports.size(), 3u);
    for (uint32_t i = 0; i < 3; ++i) EXPECT_EQ(reports[i].location, i + 1);
}

TEST_F(HostReports, OfAnOuterBracketThatEndsFirstComeOutThen) {
    KIT_DeferredReporting outer, inner;
    KIT_DeferredReportingStart(16, &outer);
    KITp_ReportErrString(1, 8, "");
    KIT_DeferredReportingStart(16, &inner);
    KITp_ReportErrString(2, 8, "");
    EXPECT_EQ(KIT_DeferredReportingEnd(0, 0, &outer), 0);
    EXPECT_TRUE(test::onlyReport(ReportKind::Error, 1, ""));
    EXPECT_EQ(KIT_DeferredReportingEnd(0, 0, &inner), 0);
    EXPECT_TRUE(test::onlyReport(ReportKind::Error, 2, ""));
}

TEST_F(HostReports, BracketsFailCleanly) {
    KIT_DeferredReporting bracket = {&bracket};
    RefHost::FailAllocation(1);
    EXPECT_EQ(KIT_DeferredReportingStart(16, &bracket), 4);
    EXPECT_EQ(KIT_DeferredReportingEnd(0, 0, &bracket), 3);  // it never began
    EXPECT_EQ(KIT_DeferredReportingStart(16, nullptr), 3);
    EXPECT_EQ(KIT_DeferredReportingEnd(0, 0, nullptr), 3);
    ASSERT_EQ(KIT_DeferredReportingStart(16, &bracket), 0);
    EXPECT_EQ(KIT_DeferredReportingEnd(0, 0, &bracket), 0);
    EXPECT_EQ(KIT_DeferredReportingEnd(0, 0, &bracket), 3);  // it is over
    KITp_ReportErrString(1, 8, "goes straight out");
    EXPECT_EQ(RefHost::TakeReports().size(), 1u);
}
