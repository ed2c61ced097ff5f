// The packages are asked once per process, so each test has a process of its own.
#include "RK/indep/frame/RK_Birth.h"
#include "test/life/Child.h"

using namespace test;

namespace {
const char* const kPackages[] = {"KIT", "TXT", "RAS", "GEO", "DSK", "SEQ", "RVFX", "MOD"};
}

TEST(CheckVersions, AsksEachPackageOnceInAProcess) {
    inChild([] {
        EXPECT_EQ(RK_CheckVersions(0x123, 17), 0);
        EXPECT_EQ(RK_CheckVersions(0x123, 17), 0);
        EXPECT_EQ(RK_CheckVersions(0x123, 16), 7);
        for (const char* package : kPackages) EXPECT_EQ(RefHost::PackageChecks(package), 1) << package;
    });
}

TEST(CheckVersions, FailsForGoodWhenAnyPackageDisagrees) {
    for (const char* package : kPackages) {
        inChild([&] {
            SCOPED_TRACE(package);
            RefHost::SetPackageVersion(package, 1000);
            EXPECT_EQ(RK_CheckVersions(0x123, 17), 7);
            EXPECT_TRUE(RefHost::TakeReports().empty());
            for (const char* other : kPackages) EXPECT_EQ(RefHost::PackageChecks(other), 1) << other;
            EXPECT_EQ(RK_CheckVersions(0x123, 17), 7);
        });
    }
}

TEST(CheckVersions, AsksForTheVersionsThatTheLibraryWasBuiltAgainst) {
    const RK_Long versions[] = {61, 3, 31, 18, 39, 9, 8, 11};
    inChild([&] {
        for (size_t i = 0; i < std::size(versions); ++i)
            RefHost::SetPackageVersion(kPackages[i], versions[i]);
        EXPECT_EQ(RK_CheckVersions(0x123, 17), 0);
    });
}

TEST(CheckVersions, TellsOfACallerOfAnotherVersion) {
    inChild([] {
        KITp_G_err_buf[0] = KITp_G_err_buf[3] = KITp_G_err_buf[4] = 'x';
        EXPECT_EQ(RK_CheckVersions(0x310007, 18), 7);
        EXPECT_EQ(KITp_G_err_buf[0], 0);
        EXPECT_EQ(KITp_G_err_buf[3], 0);
        EXPECT_EQ(KITp_G_err_buf[4], 'x');
        EXPECT_EQ(RK_CheckVersions(0x310007, -1), 7);
        const std::vector<RefHost::Report> reports = RefHost::TakeReports();
        ASSERT_EQ(reports.size(), 2u);
        EXPECT_EQ(reports[0].kind, RefHost::ReportKind::BufferedError);
        EXPECT_EQ(reports[0].location, 0x310007u);
        EXPECT_EQ(reports[0].severity, 16);
        EXPECT_EQ(
            reports[0].text,
            "Plug-in version mismatch detected (did you install over an older version of Ravelin?). Try "
            "uninstalling and re-installing. (RK package v17 != RK.h v18)");
        EXPECT_NE(reports[1].text.find("(RK package v17 != RK.h v-1)"), std::string::npos);
        EXPECT_EQ(RK_CheckVersions(0x310007, 17), 0);
    });
}

TEST(CheckVersions, WorksBeforeBirth) {
    inChild([] {
        EXPECT_EQ(RK_CheckVersions(0, 17), 0);
        EXPECT_EQ(RK_PkgObjectVersion(), 0x110000);
    });
}
