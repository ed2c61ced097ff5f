// Birth and death: what they set, in which order they fail, and what they leave behind.
#include <algorithm>

#include "RK/host/GEO.h"
#include "RK/indep/composite/RK_BlendScratch.h"
#include "RK/indep/composite/RKp_SoftLight.h"
#include "RK/indep/frame/RK_Birth.h"
#include "RK/indep/frame/RKp_Broker.h"
#include "RK/indep/frame/RKp_Globals.h"
#include "RK/indep/frame/RKp_MouseRegistry.h"
#include "test/life/Allocations.h"
#include "test/life/Child.h"

using namespace test;

namespace {

const KIT_CPU_Data kRecords[] = {{0, 0}, {1, 0}, {0, 1}, {1, 1}};

bool isPrime(int64_t n) {
    for (int64_t d = 2; d * d <= n; ++d)
        if (n % d == 0) return false;
    return n > 1;
}

}  // namespace

TEST(Birth, SetsEveryGlobal) {
    inChild([] {
        RKp_G_ChunkCount = RKp_G_WorldCount = 7;
        ASSERT_EQ(RK_Birth(), 0);
        for (int i = 0; i < 256; ++i) EXPECT_EQ(RKp_G_ByteToFloat[i], float(i));
        EXPECT_EQ(reinterpret_cast<uintptr_t>(RKp_G_ByteToFloat) % 16, 0u);
        EXPECT_EQ(RKp_G_ChunkCount, 0);
        EXPECT_EQ(RKp_G_WorldCount, 0);
        ASSERT_NE(RKp_G_fcm_table, nullptr);
        ASSERT_NE(RKp_G_fcd_table, nullptr);
        EXPECT_EQ(RKp_G_fcm_table[200 * 256 + 100], 78);
        EXPECT_EQ(RKp_G_fcd_table[200 * 256 + 100], 128);
        EXPECT_EQ(RKp_G_Noise.begin, RKp_G_Noise.cursor);
        ASSERT_NE(RKp_G_Noise.begin, nullptr);
        EXPECT_TRUE(isPrime(RKp_G_Noise.end - RKp_G_Noise.begin));
        EXPECT_EQ(RKp_G_SoftLightFloat.b[2048], 0.25f);
        EXPECT_EQ(RKp_G_SoftLight16.b[2048], 8192);
        EXPECT_NE(RKp_BrokerGetMethod(), nullptr);
        ASSERT_NE(RKp_G_MouseHandlers, nullptr);
        EXPECT_TRUE(RKp_G_MouseHandlers->empty());
        EXPECT_TRUE(RefHost::TakeReports().empty());
        EXPECT_EQ(RK_Death(), 0);
    });
}

TEST(Birth, LeavesScratchReadyForRowsOf1024PixelsAtAnyDepth) {
    inChild([] {
        ASSERT_EQ(RK_Birth(), 0);
        RefHost::FailAllocation(0);
        for (RK_Long bytes : {1, 2, 4}) {
            RK_BlendScratch scratch = {};
            EXPECT_EQ(RKp_ReallocScratch(1024, bytes, false, &scratch), 0);
            EXPECT_NE(scratch.row_work, nullptr);
            EXPECT_NE(scratch.motion.data7, nullptr);
        }
        EXPECT_EQ(RefHost::AllocationsSince(), 0);
        EXPECT_EQ(RK_Death(), 0);
    });
}

TEST(Birth, AndDeathAreLogged) {
    inChild([] {
        RK_Birth();
        RK_Death();
        const std::vector<std::string> log = RefHost::TakeLog();
        ASSERT_EQ(log.size(), 2u);
        EXPECT_EQ(log[0], "10 RK Birth: RK Birth");
        EXPECT_EQ(log[1], "10 RK Death: RK Death");
    });
}

TEST(Birth, FillsEveryNamedSlotAndNoOther) {
    for (const KIT_CPU_Data& record : kRecords) {
        inChild([&] {
            RefHost::SetCPU(record);
            // A table that was used before is cleared first.
            std::fill(std::begin(RKp_G_OverFuncs), std::end(RKp_G_OverFuncs),
                      static_cast<void*>(RKp_G_ByteToFloat));
            ASSERT_EQ(RK_Birth(), 0);
            int named = 0;
            forSlots([&](RK_Long i, const RK_SlotInfo& info) {
                const bool has_name = info.name[0] != '\0';
                named += has_name;
                EXPECT_EQ(RKp_G_OverFuncs[i] != nullptr, has_name) << i;
            });
            EXPECT_GT(named, 20);
            for (int unused :
                 {0, 1, 11, 12, 13, 14, 15, 16, 29, 30, 33, 34, 49, 50, 59, 66, 67, 69, 79, 80, 90, 91})
                EXPECT_EQ(RKp_G_OverFuncs[unused], nullptr) << unused;
            RK_Death();
        });
    }
}

TEST(Birth, PicksVariantsByTheTwoFlagsIndependently) {
    for (const KIT_CPU_Data& record : kRecords) {
        inChild([&] {
            RefHost::SetCPU(record);
            ASSERT_EQ(RK_Birth(), 0);
            forSlots([&](RK_Long i, const RK_SlotInfo& info) {
                if (info.name[0] == '\0') return;
                const RK_SlotForm wanted = info.has_ssse3_form && record.has_ssse3 ? RK_kSlotSSSE3
                                           : info.has_sse2_form && record.has_sse2 ? RK_kSlotSSE2
                                                                                   : RK_kSlotDefault;
                EXPECT_EQ(info.form, wanted) << i << " " << info.name;
            });
            RK_Death();
        });
    }
}

TEST(Birth, ReturnsTheFailureOfEachHostCallAndSkipsTheStepsBehindIt) {
    struct Step {
        const char* call;
        RK_Long code, result;
        bool tables, noise, scratch, broker;
    };
    const Step steps[] = {{"GEO_PrepareFCMD", 4, 4, false, false, false, false},
                          {"NZ_GetPrimeSizedTable", 9, 9, true, false, false, false},
                          {"SEQ_New", 4, 4, true, true, true, false},
                          {"DSK_AddExtensionMap", 11, 11, true, true, true, false},
                          {"MOD_InstallScan", -12, -12, true, true, true, false},
                          {"ZIN_GetLNKAddressProc", 13, RK_kNoBroker, true, true, true, false}};
    for (const Step& step : steps) {
        inChild([&] {
            SCOPED_TRACE(step.call);
            RefHost::FailCall(step.call, step.code);
            EXPECT_EQ(RK_Birth(), step.result);
            EXPECT_EQ(RKp_G_fcd_table != nullptr, step.tables);
            EXPECT_EQ(RKp_G_Noise.begin != nullptr, step.noise);
            EXPECT_EQ(filledSlots(), step.scratch ? namedSlots() : 0);
            EXPECT_EQ(RefHost::Memory().blocks > 1, step.scratch);
            EXPECT_EQ(RKp_BrokerGetMethod() != nullptr, step.broker);
            EXPECT_EQ(RKp_G_MouseHandlers, nullptr);
            EXPECT_EQ(RKp_G_ByteToFloat[255], 255.0f);  // no failure stops this step
            EXPECT_EQ(RK_Death(), 0);
            expectNothingHeld();
        });
    }
}

TEST(Birth, RefusesABrokerThatCannotHandOutInterfaces) {
    EXPECT_FALSE(RKp_StartBroker(nullptr));
    EXPECT_FALSE(RKp_StartBroker([](const char*) -> LNK_Proc* { return nullptr; }));
    EXPECT_EQ(RKp_BrokerGetMethod(), nullptr);
}

// Every block that birth takes from the host, failed once.
TEST(Birth, ReturnsOutOfMemoryForEachAllocationAndLeaksNothing) {
    Shared made;
    inChild([&] {
        RefHost::FailAllocation(0);
        EXPECT_EQ(RK_Birth(), 0);
        *made = RefHost::AllocationsSince();
        EXPECT_EQ(RK_Death(), 0);
        expectNothingHeld();
    });
    ASSERT_GE(*made, 12);  // tables, seven blocks and three rows of scratch, the module list
    for (int64_t n = 1; n <= *made; ++n) {
        inChild([&] {
            SCOPED_TRACE(n);
            RefHost::FailAllocation(n);
            EXPECT_EQ(RK_Birth(), 4);
            EXPECT_TRUE(filledSlots() == 0 || filledSlots() == namedSlots());
            EXPECT_EQ(RKp_G_MouseHandlers, nullptr);
            EXPECT_EQ(RK_Death(), 0);
            expectNothingHeld();
        });
    }
}

// Memory of the runtime may fail under the host's feet or under ours: nothing but 0 or 4 comes of it.
TEST(Birth, SurvivesEachFailingAllocationOfTheRuntime) {
    Shared made;
    const auto live = [&](int64_t n, RK_Long* result) {
        RefHost::SetPluginFolder(moduleFolder("RK_ModuleOverride"));
        failNew(n);
        *result = RK_Birth();
        *made = newsSince();
        failNew(0);
        EXPECT_EQ(RK_Death(), 0);
        expectNothingHeld();
    };
    inChild([&] {
        RK_Long result;
        live(0, &result);
        EXPECT_EQ(result, 0);
    });
    const int64_t all = *made;
    ASSERT_GE(all, 2);
    Shared refused;
    for (int64_t n = 1; n <= all; ++n) {
        inChild([&] {
            SCOPED_TRACE(n);
            RK_Long result;
            live(n, &result);
            EXPECT_TRUE(result == 0 || result == 4) << result;
            *refused += result == 4;
        });
    }
    EXPECT_GE(*refused, 2);  // the scan's and the mouse registry's, at least
}

TEST(Birth, FailsWithOutOfMemoryWhenTheMouseRegistryCannotBeMade) {
    Shared made;
    inChild([&] {
        failNew(0);
        RK_Birth();
        *made = newsSince();
    });
    inChild([&] {
        failNew(*made);  // the last one
        EXPECT_EQ(RK_Birth(), 4);
        EXPECT_EQ(RKp_G_MouseHandlers, nullptr);
        const std::vector<RefHost::Report> reports = RefHost::TakeReports();
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].kind, RefHost::ReportKind::Exception);
        EXPECT_EQ(RK_Death(), 0);
        expectNothingHeld();
    });
}

TEST(Death, ReturnsTheFirstErrorAndStillFreesEverything) {
    inChild([] {
        RefHost::SetPluginFolder(moduleFolder("RK_ModuleOverride"));
        ASSERT_EQ(RK_Birth(), 0);
        RefHost::FailCall("MOD_UnprepRoutine", 21);
        RefHost::FailCall("MOD_UnregisterRoutine", 22);
        EXPECT_EQ(RK_Death(), 21);
        expectNothingHeld();
    });
    inChild([] {
        ASSERT_EQ(RK_Birth(), 0);
        RefHost::FailCall("GEO_UnprepareFCMD", 23);
        EXPECT_EQ(RK_Death(), 23);
        EXPECT_EQ(RefHost::Memory().blocks, 1);  // the host's own two tables, which it would not give back
        EXPECT_EQ(RKp_G_fcd_table, nullptr);
        EXPECT_EQ(RKp_BrokerGetMethod(), nullptr);
    });
}

TEST(Death, LeavesNothingOfBirth) {
    inChild([] {
        ASSERT_EQ(RK_Birth(), 0);
        EXPECT_GT(RefHost::Memory().blocks, 0);
        EXPECT_EQ(RK_Death(), 0);
        expectNothingHeld();
        EXPECT_EQ(filledSlots(), 0);
        EXPECT_EQ(RKp_G_fcm_table, nullptr);
        EXPECT_EQ(RKp_G_fcd_table, nullptr);
        EXPECT_EQ(RKp_G_Noise.begin, nullptr);
        EXPECT_EQ(RKp_G_MouseHandlers, nullptr);
        EXPECT_EQ(RKp_BrokerGetMethod(), nullptr);
    });
}

TEST(Death, OfAPackageThatWasNotBornDoesNothing) {
    inChild([] {
        EXPECT_EQ(RK_Death(), 0);
        expectNothingHeld();
    });
}

TEST(FreeUpSomeMemory, GivesLargeScratchBackAndKeepsWhatBirthMade) {
    inChild([] {
        ASSERT_EQ(RK_Birth(), 0);
        const int64_t at_birth = RefHost::Memory().bytes;
        ASSERT_EQ(RKp_ReallocScratch(100000, 4, false, nullptr), 0);
        EXPECT_GT(RefHost::Memory().bytes, at_birth + 3000000);
        EXPECT_EQ(RK_FreeUpSomeMemory(), 0);
        EXPECT_EQ(RefHost::Memory().bytes, at_birth);
        RefHost::FailAllocation(1);
        EXPECT_EQ(RK_FreeUpSomeMemory(), 4);
        EXPECT_EQ(RefHost::Memory().bytes, at_birth);
        EXPECT_EQ(RK_FreeUpSomeMemory(), 0);
        EXPECT_EQ(RK_Death(), 0);
        expectNothingHeld();
    });
}

TEST(FreeUpSomeMemory, TurnsAFailureThatIsThrownIntoItsResult) {
    inChild([] {
        RefHost::FailAllocation(1);  // before birth there are no blocks: the first to be made is thrown about
        EXPECT_EQ(RK_FreeUpSomeMemory(), 4);
        RK_Death();
        expectNothingHeld();
    });
}
