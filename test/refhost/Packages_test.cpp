// The small packages of the reference host.
#include <algorithm>
#include <set>
#include <string>

#include "RK/host/DSK.h"
#include "RK/host/MOD.h"
#include "RK/host/NZ.h"
#include "RK/host/RAS.h"
#include "RK/host/RVFX.h"
#include "RK/host/SEQ.h"
#include "RK/host/SHIM.h"
#include "RK/host/TRC.h"
#include "RK/host/TXT.h"
#include "RK/host/ZIN.h"
#include "test/Reports.h"

class Packages : public test::Tidy {};

TEST_F(Packages, ListsGrowAndGiveBackWhatTheyGot) {
    struct Record {
        void* a;
        int64_t b;
    };
    SEQ_List* list = nullptr;
    ASSERT_EQ(SEQ_New(sizeof(Record), &list), 0);
    EXPECT_EQ(SEQ_Count(list), 0);
    for (int64_t i = 0; i < 100; ++i) {
        const Record record = {&list, i};
        ASSERT_EQ(SEQ_Insert(list, &record), 0);
    }
    EXPECT_EQ(SEQ_Count(list), 100);
    for (int32_t i = 0; i < 100; ++i) {
        Record record = {};
        ASSERT_EQ(SEQ_Get(list, i, &record), 0);
        EXPECT_EQ(record.a, &list);
        EXPECT_EQ(record.b, i);
    }
    Record kept = {nullptr, 77};
    EXPECT_EQ(SEQ_Get(list, 100, &kept), 3);
    EXPECT_EQ(SEQ_Get(list, -1, &kept), 3);
    EXPECT_EQ(kept.b, 77);
    SEQ_Dispose(list);
}

TEST_F(Packages, ListsFailCleanlyAndKeepWhatTheyHold) {
    SEQ_List* list = nullptr;
    RefHost::FailAllocation(1);
    EXPECT_EQ(SEQ_New(4, &list), 4);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(SEQ_New(0, &list), 3);
    ASSERT_EQ(SEQ_New(4, &list), 0);
    int32_t inserted = 0;
    for (; inserted < 4; ++inserted) ASSERT_EQ(SEQ_Insert(list, &inserted), 0);
    RefHost::FailAllocation(1);
    EXPECT_EQ(SEQ_Insert(list, &inserted), 4);
    EXPECT_EQ(SEQ_Count(list), 4);
    EXPECT_EQ(SEQ_Insert(list, &inserted), 0);
    int32_t last = 0;
    EXPECT_EQ(SEQ_Get(list, 4, &last), 0);
    EXPECT_EQ(last, 4);
    EXPECT_EQ(SEQ_Insert(nullptr, &last), 3);
    EXPECT_EQ(SEQ_Get(nullptr, 0, &last), 3);
    EXPECT_EQ(SEQ_Count(nullptr), 0);
    SEQ_Dispose(list);
    SEQ_Dispose(nullptr);
}

TEST_F(Packages, SizedListsTakeTheirRoomAtOnceAndGrowByTheirOwnStep) {
    SEQ_List* list = nullptr;
    RefHost::FailAllocation(0);
    ASSERT_EQ(SEQ_NewSized(4, 16, 16, &list), 0);
    for (int32_t i = 0; i < 33; ++i) ASSERT_EQ(SEQ_Insert(list, &i), 0);
    EXPECT_EQ(RefHost::AllocationsSince(), 4);  // the list, its room, and twice more of it
    EXPECT_EQ(static_cast<int32_t*>(SEQ_Records(list))[32], 32);
    ASSERT_EQ(SEQ_SetCount(list, 2), 0);
    ASSERT_EQ(SEQ_SetCount(list, 40), 0);
    EXPECT_EQ(static_cast<int32_t*>(SEQ_Records(list))[1], 1);
    for (int i = 2; i < 40; ++i) EXPECT_EQ(static_cast<int32_t*>(SEQ_Records(list))[i], 0);
    RefHost::FailAllocation(1);
    EXPECT_EQ(SEQ_SetCount(list, 1000), 4);
    EXPECT_EQ(SEQ_SetCount(list, -1), 3);
    EXPECT_EQ(SEQ_SetCount(nullptr, 1), 3);
    EXPECT_EQ(SEQ_Count(list), 40);
    ASSERT_EQ(SEQ_SetCount(list, 0), 0);
    EXPECT_EQ(SEQ_Records(list), nullptr);
    EXPECT_EQ(SEQ_Records(nullptr), nullptr);
    RefHost::FailCall("SEQ_Dispose", 8);
    EXPECT_EQ(SEQ_Dispose(list), 8);
    for (int64_t n = 1; n <= 2; ++n) {
        RefHost::FailAllocation(n);
        EXPECT_EQ(SEQ_NewSized(4, 16, 16, &list), 4);
        EXPECT_EQ(list, nullptr);
    }
    EXPECT_EQ(SEQ_NewSized(4, -1, 16, &list), 3);
    EXPECT_EQ(SEQ_NewSized(4, 1, 0, &list), 3);
}

TEST_F(Packages, ThePenDrawsFromWhereItIs) {
    std::vector<int> drawn;
    RefHost::SetLineFunc(
        [](void* refcon, Point from, Point to) {
            auto* lines = static_cast<std::vector<int>*>(refcon);
            lines->insert(lines->end(), {from.h, from.v, to.h, to.v});
        },
        &drawn);
    MoveTo(3, -4);
    Line(0, 0);
    Line(5, 6);
    Line(-1, 0);
    RefHost::SetLineFunc(nullptr, nullptr);
    Line(1, 1);
    EXPECT_EQ(drawn, (std::vector<int>{3, -4, 3, -4, 3, -4, 8, 2, 8, 2, 7, 2}));
}

TEST_F(Packages, NoiseIsOneFixedTableOfAPrimeNumberOfValues) {
    const uint32_t *table = nullptr, *again = nullptr;
    int32_t count = 0, count_again = 0;
    ASSERT_EQ(NZ_GetPrimeSizedTable(&table, &count), 0);
    ASSERT_EQ(NZ_GetPrimeSizedTable(&again, &count_again), 0);
    EXPECT_EQ(table, again);
    EXPECT_EQ(count, count_again);
    ASSERT_GT(count, 1000);
    for (int32_t d = 2; d * d <= count; ++d) EXPECT_NE(count % d, 0) << d;
    EXPECT_EQ(std::set<uint32_t>(table, table + count).size(), size_t(count));
    EXPECT_EQ(table[0], 0x510C4619u);  // the same on every machine
    EXPECT_EQ(NZ_GetPrimeSizedTable(nullptr, &count), 3);
}

TEST_F(Packages, LogLinesAreKept) {
    RefHost::TakeLog();
    TRC_Log(3, "A", "B", "some text");
    TRC_Log(10, "C", "D", "more");
    EXPECT_EQ(RefHost::TakeLog(), (std::vector<std::string>{"3 A B: some text", "10 C D: more"}));
    EXPECT_TRUE(RefHost::TakeLog().empty());
}

TEST_F(Packages, WindowBracketsNest) {
    SHIM_BeginGdiMinimalisticWindowCreationMode();
    SHIM_BeginGdiMinimalisticWindowCreationMode();
    EXPECT_EQ(RefHost::MinimalisticBrackets(), 2);
    SHIM_EndGdiMinimalisticWindowCreationMode();
    SHIM_EndGdiMinimalisticWindowCreationMode();
    EXPECT_EQ(RefHost::MinimalisticBrackets(), 0);
}

TEST_F(Packages, TheBrokerHandsOutInterfacesAndKnowsNoEngine) {
    LNK_AddressProc* entry = ZIN_GetLNKAddressProc();
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry("LNKNoSuchProc"), nullptr);
    EXPECT_EQ(entry(nullptr), nullptr);
    auto* get = reinterpret_cast<LNK_GetMethodV3Func*>(entry("LNKGetMethodV3Proc"));
    ASSERT_NE(get, nullptr);
    LNK_Proc* table[2] = {};
    const LNK_Method methods[] = {{"Apply", 1}};
    EXPECT_EQ(get("SomeEngine", methods, 1, table), 3);
    EXPECT_EQ(table[1], nullptr);
    RefHost::FailCall("ZIN_GetLNKAddressProc", 1);
    EXPECT_EQ(ZIN_GetLNKAddressProc(), nullptr);
    EXPECT_EQ(ZIN_GetLNKAddressProc(), entry);
}

TEST_F(Packages, AgreeWithTheirOwnVersionOnly) {
    struct {
        RK_Long (*check)(RK_Long, RK_Long);
        RK_Long version;
    } const packages[] = {{KIT_CheckVersions, 61}, {TXT_CheckVersions, 3},  {RAS_CheckVersions, 31},
                          {GEO_CheckVersions, 18}, {DSK_CheckVersions, 39}, {SEQ_CheckVersions, 9},
                          {RVFX_CheckVersions, 8}, {MOD_CheckVersions, 11}};
    for (const auto& package : packages) {
        EXPECT_EQ(package.check(0, package.version), 0);
        EXPECT_EQ(package.check(0, package.version + 1), 7);
        EXPECT_EQ(package.check(0, package.version - 1), 7);
    }
}

TEST_F(Packages, ThreadCountIsAtLeastOneAndCanBeSet) {
    EXPECT_GE(KIT_GetNumThreads(), 1);
    RefHost::SetThreadCount(7);
    EXPECT_EQ(KIT_GetNumThreads(), 7);
    RefHost::SetThreadCount(0);
    EXPECT_GE(KIT_GetNumThreads(), 1);
}

TEST_F(Packages, ExtensionsAreDeclaredWithTheirDot) {
    EXPECT_EQ(DSK_AddExtensionMap("RVX", 1), 3);
    EXPECT_EQ(DSK_AddExtensionMap(nullptr, 1), 3);
    RefHost::FailCall("DSK_AddExtensionMap", 9);
    EXPECT_EQ(DSK_AddExtensionMap(".TST", 1), 9);
}

// ---- The scan, as any package would use it --------------------------------------------------------------

namespace {

constexpr uint32_t kType = MOD_Type('t', 'e', 's', 't');

struct Visit {
    int32_t files = 0, ends = 0;
    RK_Long file_result = 0, end_result = 0;
    void (*see)(MOD_File*) = nullptr;
};
RK_Long visitFile(void* refcon, MOD_File* file) {
    Visit& visit = *static_cast<Visit*>(refcon);
    ++visit.files;
    if (visit.see) visit.see(file);
    return visit.file_result;
}
RK_Long visitEnd(void* refcon) {
    Visit& visit = *static_cast<Visit*>(refcon);
    ++visit.ends;
    return visit.end_result;
}

class Scan : public test::Tidy {
  protected:
    void SetUp() override {
        DSK_AddExtensionMap(".RVX", kType);
        RefHost::SetPluginFolder(RK_TEST_MODULES "/ModuleMany");
        Tidy::SetUp();
    }
    void TearDown() override {
        RefHost::SetPluginFolder("");
        Tidy::TearDown();
        RefHost::TakeLog();
    }
};

}  // namespace

TEST_F(Scan, VisitsEachFileAndThenEnds) {
    Visit visit;
    EXPECT_EQ(MOD_InstallScan(kType, &visit, visitFile, visitEnd), 0);
    EXPECT_EQ(visit.files, 1);
    EXPECT_EQ(visit.ends, 1);
    EXPECT_EQ(MOD_InstallScan(kType, &visit, nullptr, nullptr), 0);
    EXPECT_EQ(MOD_InstallScan(kType + 1, &visit, visitFile, visitEnd), 0);  // nothing is of that type
    EXPECT_EQ(visit.files, 1);
    EXPECT_EQ(visit.ends, 2);
}

TEST_F(Scan, KeepsTheFirstErrorAndGoesOn) {
    RefHost::SetPluginFolder(RK_TEST_MODULES);
    Visit visit;
    visit.file_result = 21;
    visit.end_result = 22;
    EXPECT_EQ(MOD_InstallScan(kType, &visit, visitFile, visitEnd), 21);
    EXPECT_GE(visit.files, 4);
    EXPECT_EQ(visit.ends, 1);
    visit.file_result = 0;
    EXPECT_EQ(MOD_InstallScan(kType, &visit, visitFile, visitEnd), 22);
}

TEST_F(Scan, FailsWithoutMemoryForAFile) {
    Visit visit;
    RefHost::FailAllocation(1);
    EXPECT_EQ(MOD_InstallScan(kType, &visit, visitFile, visitEnd), 4);
    EXPECT_EQ(visit.files, 0);
    EXPECT_EQ(visit.ends, 1);
}

TEST_F(Scan, TellsOfRoutinesAndTheirProperties) {
    Visit visit;
    visit.see = [](MOD_File* file) {
        ASSERT_EQ(MOD_GetRoutineCount(file), 8);
        MOD_RoutineInfo info = {};
        ASSERT_EQ(MOD_GetRoutineInfo(file, 0, &info), 0);
        EXPECT_EQ(info.type, MOD_Type('e', 'F', 'S', 'T'));
        EXPECT_EQ(info.flags, 8u);
        EXPECT_STREQ(info.name, "first");
        EXPECT_EQ(MOD_GetRoutineInfo(file, 8, &info), 3);
        EXPECT_EQ(MOD_GetRoutineInfo(file, -1, &info), 3);
        EXPECT_EQ(MOD_GetRoutineInfo(file, 0, nullptr), 3);
        int32_t value = 77;
        EXPECT_EQ(MOD_GetModPropsProp(file, 1, "vers", &value), 0);
        EXPECT_EQ(value, 1);
        EXPECT_EQ(MOD_GetModPropsProp(file, 1, "ver", &value), 3);
        EXPECT_EQ(MOD_GetModPropsProp(file, 4, "vers", &value), 3);
        EXPECT_EQ(MOD_GetModPropsProp(file, 9, "vers", &value), 3);
        EXPECT_EQ(value, 1);
    };
    MOD_InstallScan(kType, &visit, visitFile, nullptr);
    EXPECT_EQ(visit.files, 1);
    EXPECT_EQ(MOD_GetRoutineCount(nullptr), 0);
}

TEST_F(Scan, RoutinesAreRegisteredMadeReadyAndLetGo) {
    static MOD_Routine* routine;
    Visit visit;
    visit.see = [](MOD_File* file) {
        ASSERT_EQ(MOD_RegisterRoutine(file, 0, &routine), 0);
        MOD_Routine* none = routine;
        EXPECT_EQ(MOD_RegisterRoutine(file, 8, &none), 3);
        RefHost::FailAllocation(1);
        EXPECT_EQ(MOD_RegisterRoutine(file, 1, &none), 4);
        EXPECT_EQ(none, nullptr);
    };
    MOD_InstallScan(kType, &visit, visitFile, nullptr);
    MOD_EntryFunc* entry = nullptr;
    EXPECT_EQ(MOD_UnprepRoutine(routine), 3);        // not ready yet
    ASSERT_EQ(MOD_PrepRoutine(routine, &entry), 0);  // the file is still there
    ASSERT_NE(entry, nullptr);
    MOD_EntryFunc* again = nullptr;
    EXPECT_EQ(MOD_PrepRoutine(routine, &again), 3);  // ready already
    EXPECT_EQ(MOD_UnprepRoutine(routine), 0);
    EXPECT_EQ(MOD_UnregisterRoutine(routine), 0);
    EXPECT_EQ(MOD_PrepRoutine(nullptr, &entry), 3);
    EXPECT_EQ(MOD_UnregisterRoutine(nullptr), 3);
}
