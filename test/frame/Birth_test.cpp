// The small exports beside birth and death; those two have test/life.
#include "RK/indep/frame/RK_Birth.h"

#include "RK/indep/frame/RK_VectorConstants.h"
#include "test/Reports.h"

class PackageFrame : public test::Tidy {};

TEST_F(PackageFrame, OverrideStdFuncsIsObsoleteAndAlwaysFailsWith515) {
    for (int again = 0; again < 3; ++again) {
        EXPECT_EQ(RK_OverrideStdFuncs(), 515);
        const auto reports = RefHost::TakeReports();
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].kind, RefHost::ReportKind::Error);
        EXPECT_EQ(reports[0].severity, 8);
        EXPECT_EQ(reports[0].text, "Obsolete routine");
        EXPECT_EQ(reports[0].location & 0xFFFF0000u, 0x250000u);
    }
}

TEST_F(PackageFrame, TellsItsVersion) { EXPECT_EQ(RK_PkgObjectVersion(), 0x110000); }

TEST_F(PackageFrame, TranslatesNoFunctionPointers) {
    EXPECT_EQ(RK_IsCFM(), 0);
    EXPECT_EQ(RK_AddEntryToCFMMachoMaps(), 0);
    int anything;
    void* result = &anything;
    RK_GetCFMToMachoMapEntry(&anything, &result);
    EXPECT_EQ(result, nullptr);
    result = &anything;
    RK_GetMachoToCFMMapEntry(nullptr, &result);
    EXPECT_EQ(result, nullptr);
}

TEST_F(PackageFrame, VectorConstantsAreAlignedAndHoldWhatTheirNamesSay) {
    const void* const all[] = {RK_G_viLoWordMask, RK_G_viLoByteMask32, RK_G_vi128_32, RK_G_AlphaMask32,
                               RK_G_BGRMask32,    RK_G_vfHalf,         RK_G_vf255,    RK_G_ZeroData};
    for (const void* constant : all) EXPECT_EQ(reinterpret_cast<uintptr_t>(constant) % 16, 0u);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(RK_G_viLoWordMask[i], 0xFFFFu);
        EXPECT_EQ(RK_G_viLoByteMask32[i], 0xFFu);
        EXPECT_EQ(RK_G_vi128_32[i], 128u);
        EXPECT_EQ(RK_G_AlphaMask32[i] | RK_G_BGRMask32[i], 0xFFFFFFFFu);
        EXPECT_EQ(RK_G_AlphaMask32[i] & RK_G_BGRMask32[i], 0u);
        EXPECT_EQ(RK_G_vfHalf[i], 0.5f);
        EXPECT_EQ(RK_G_vf255[i], 255.0f);
        EXPECT_EQ(RK_G_ZeroData[i], 0u);
    }
    EXPECT_EQ(RK_G_AlphaMask32[0], 0xFFFFFFFFu);  // alpha is a pixel's first channel
}
