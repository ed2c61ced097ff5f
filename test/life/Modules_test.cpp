// The scan for acceleration modules.
#include <dlfcn.h>
#include <sys/stat.h>

#include <cstring>
#include <filesystem>
#include <fstream>

#include "RK/indep/frame/RK_Birth.h"
#include "RK/indep/frame/RK_Modules.h"
#include "RK/indep/frame/RKp_Globals.h"
#include "RK/indep/passes/RK_Iterate.h"
#include "test/life/Child.h"

using namespace test;
namespace fs = std::filesystem;

namespace {

// A second hold on a module file: what it exports stays readable after the package has let it go.
class Held {
  public:
    explicit Held(const std::string& name)
        : object_(dlopen((moduleFolder(name) + "/" + name + ".RVX").c_str(), RTLD_NOW | RTLD_LOCAL)) {}
    ~Held() {
        if (object_) dlclose(object_);
    }
    template <class T>
    T* at(const char* symbol) const {
        return object_ ? static_cast<T*>(dlsym(object_, symbol)) : nullptr;
    }

  private:
    void* object_;
};

// A plug-in folder of a test's own.
class Folder {
  public:
    Folder() {
        std::string name = (fs::temp_directory_path() / "rk_modules_XXXXXX").string();
        path = mkdtemp(name.data()) ? name : "";
    }
    ~Folder() {
        std::error_code ignored;
        if (!path.empty()) fs::remove_all(path, ignored);
    }
    std::string path;
};

RK_Long nothing(void*, RK_Long, RK_Long, RK_Long) { return 0; }

void* tableAtBirth[RK_kSlotCount];

// What the table holds without any module.
void keepPlainTable() {
    for (RK_Long i = 0; i < RK_kSlotCount; ++i) tableAtBirth[i] = RKp_G_OverFuncs[i];
}
bool tableIsPlain() { return std::memcmp(tableAtBirth, RKp_G_OverFuncs, sizeof tableAtBirth) == 0; }

// Births with a folder of modules, and compares the table with that of a birth without.
template <class Work>
void inChildWith(const std::string& folder, Work&& work) {
    inChild([&] {
        RefHost::SetPluginFolder("/nowhere");
        ASSERT_EQ(RK_Birth(), 0);
        keepPlainTable();
        ASSERT_EQ(RK_Death(), 0);
        RefHost::TakeLog();
        RefHost::SetPluginFolder(folder);
        work();
    });
}

std::string failureText(const char* name, int code) {
    return std::string("acceleration module \"") + name + "\" failed to load (" + std::to_string(code) + ")";
}

}  // namespace

TEST(Modules, OverrideASlotAndMayCallWhatStoodThere) {
    inChildWith(moduleFolder("RK_ModuleOverride"), [] {
        const Held module("RK_ModuleOverride");
        const int32_t* calls = module.at<int32_t>("RK_ModuleOverride_calls");
        ASSERT_NE(calls, nullptr);
        ASSERT_EQ(RK_Birth(), 0);
        RK_SlotInfo info;
        ASSERT_EQ(RK_GetSlotInfo(53, &info), 0);
        EXPECT_EQ(info.form, RK_kSlotOverride);
        for (int i = 0; i < RK_kSlotCount; ++i)
            EXPECT_EQ(RKp_G_OverFuncs[i] == tableAtBirth[i], i != 53) << i;
        EXPECT_EQ(*calls, 0);
        EXPECT_EQ(RK_IterateGeneric(3, nullptr, nothing), 0);
        EXPECT_EQ(RK_IterateGeneric(3, nullptr, nothing), 0);
        EXPECT_EQ(*calls, 2);
        EXPECT_TRUE(RefHost::TakeReports().empty());
        EXPECT_EQ(RK_Death(), 0);
        expectNothingHeld();
        EXPECT_EQ(RKp_G_OverFuncs[53], nullptr);
    });
}

TEST(Modules, AreFoundInTheFolderOfTheEnvironmentVariable) {
    inChild([] {
        setenv("RK_PLUGIN_PATH", moduleFolder("RK_ModuleOverride").c_str(), 1);
        ASSERT_EQ(RK_Birth(), 0);
        RK_SlotInfo info;
        RK_GetSlotInfo(53, &info);
        EXPECT_EQ(info.form, RK_kSlotOverride);
        RK_Death();
    });
}

TEST(Modules, ThatFailLeaveEverySlotAsItWasAndBirthSucceeds) {
    inChildWith(moduleFolder("RK_ModuleFails"), [] {
        EXPECT_EQ(RK_Birth(), 0);
        EXPECT_TRUE(tableIsPlain());
        const std::vector<RefHost::Report> reports = RefHost::TakeReports();
        ASSERT_EQ(reports.size(), 2u);
        EXPECT_EQ(reports[0].kind, RefHost::ReportKind::Error);
        EXPECT_EQ(reports[0].location, 0x250000u | 77u);
        EXPECT_EQ(reports[0].severity, 8);
        EXPECT_EQ(reports[0].text, "this machine lacks the accelerator");
        EXPECT_EQ(reports[1].text, failureText("Failing sample", 3));
        EXPECT_EQ(RK_Death(), 0);
        expectNothingHeld();
    });
}

TEST(Modules, ThatThrowFailLikeOthers) {
    inChildWith(moduleFolder("ModuleThrows"), [] {
        EXPECT_EQ(RK_Birth(), 0);
        EXPECT_TRUE(tableIsPlain());
        const std::vector<RefHost::Report> reports = RefHost::TakeReports();
        EXPECT_GE(indexOf(reports, failureText("unknown", 3)), 0);
        EXPECT_GE(indexOf(reports, "thrown by a module"), 0);
        EXPECT_GE(indexOf(reports, failureText("standard", 3)), 0);
        EXPECT_GE(indexOf(reports, failureText("a long, and a thrown 0 at that", 3)), 0);
        EXPECT_EQ(RK_Death(), 0);
        expectNothingHeld();
    });
}

TEST(Modules, OfOneFileAreTakenFromTheLastToTheFirstAndOnlyThoseThatCount) {
    inChildWith(moduleFolder("ModuleMany"), [] {
        const Held module("ModuleMany");
        const char* loaded = module.at<char>("ModuleMany_loaded");
        const char* unloaded = module.at<char>("ModuleMany_unloaded");
        ASSERT_NE(loaded, nullptr);
        ASSERT_NE(unloaded, nullptr);
        ASSERT_EQ(RK_Birth(), 0);
        EXPECT_STREQ(loaded, "ha");
        EXPECT_STREQ(unloaded, "");
        EXPECT_NE(RKp_G_OverFuncs[1], nullptr);
        EXPECT_TRUE(RefHost::TakeReports().empty());
        EXPECT_EQ(RK_Death(), 0);
        EXPECT_STREQ(unloaded, "ha");
        expectNothingHeld();
    });
}

TEST(Modules, GetTheStatedParameters) {
    inChildWith(moduleFolder("ModuleMany"), [] {
        const Held module("ModuleMany");
        const auto* params = module.at<RK_ModuleParams>("ModuleMany_params");
        ASSERT_NE(params, nullptr);
        ASSERT_EQ(RK_Birth(), 0);
        EXPECT_EQ(params->version_major, 2);
        EXPECT_EQ(params->version_minor, 1);
        EXPECT_EQ(params->callbacks, nullptr);
        EXPECT_EQ(params->fcm_table, RKp_G_fcm_table);
        EXPECT_EQ(params->fcd_table, RKp_G_fcd_table);
        EXPECT_EQ(params->over_funcs, RKp_G_OverFuncs);
        ASSERT_NE(params->exit, nullptr);
        void* block = params->malloc(8);
        block = params->realloc(block, 16);
        ASSERT_NE(block, nullptr);
        params->free(block);
        auto* zeros = static_cast<char*>(params->calloc(2, 4));
        ASSERT_NE(zeros, nullptr);
        EXPECT_EQ(zeros[7], 0);
        params->free(zeros);
        EXPECT_EQ(params->report_error(0x123, "a module's words"), 0);
        const std::vector<RefHost::Report> reports = RefHost::TakeReports();
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].location, 0x250123u);
        EXPECT_EQ(reports[0].severity, 8);
        EXPECT_EQ(reports[0].text, "a module's words");
        RK_Death();
    });
}

TEST(Modules, ErrorsOfUnloadingAreTheResultOfDeathAndStopNothing) {
    inChildWith(moduleFolder("ModuleMany"), [] {
        const Held module("ModuleMany");
        auto* answer = module.at<RK_Long>("ModuleMany_unload_result");
        ASSERT_NE(answer, nullptr);
        ASSERT_EQ(RK_Birth(), 0);
        *answer = 31;
        EXPECT_EQ(RK_Death(), 31);
        EXPECT_STREQ(module.at<char>("ModuleMany_unloaded"), "ha");
        expectNothingHeld();
    });
}

// The first module that cannot be registered, made ready or listed is left out, and reported; the others are
// loaded.
TEST(Modules, ThatTheHostCannotHandleAreLeftOutAlone) {
    for (const char* call : {"MOD_RegisterRoutine", "MOD_PrepRoutine"}) {
        inChildWith(moduleFolder("ModuleMany"), [&] {
            SCOPED_TRACE(call);
            const Held module("ModuleMany");
            RefHost::FailCall(call, 41);
            EXPECT_EQ(RK_Birth(), 0);
            EXPECT_STREQ(module.at<char>("ModuleMany_loaded"), "a");
            const std::vector<RefHost::Report> reports = RefHost::TakeReports();
            ASSERT_EQ(reports.size(), 1u);
            EXPECT_EQ(reports[0].text, failureText("last, with other flags too", 41));
            EXPECT_EQ(RK_Death(), 0);
            EXPECT_STREQ(module.at<char>("ModuleMany_unloaded"), "a");
            expectNothingHeld();
        });
    }
}

// Every allocation of a birth with a module: birth's own fail it with 4; the module's cost only the module.
TEST(Modules, SurviveEachFailingAllocationOrLeaveNoTrace) {
    const std::string folder = moduleFolder("RK_ModuleOverride");
    Shared made;
    inChildWith(folder, [&] {
        RefHost::FailAllocation(0);
        EXPECT_EQ(RK_Birth(), 0);
        *made = RefHost::AllocationsSince();
        RK_Death();
    });
    Shared refused, left_out;
    for (int64_t n = 1; n <= *made; ++n) {
        inChildWith(folder, [&] {
            SCOPED_TRACE(n);
            RefHost::FailAllocation(n);
            const RK_Long result = RK_Birth();
            if (result == 0) {
                EXPECT_TRUE(tableIsPlain());
                EXPECT_GE(indexOf(RefHost::TakeReports(), failureText("Counting RK_IterateGeneric", 4)), 0);
                ++*left_out;
            } else {
                EXPECT_EQ(result, 4);
                ++*refused;
            }
            EXPECT_EQ(RK_Death(), 0);
            expectNothingHeld();
        });
    }
    EXPECT_EQ(*left_out, 2);  // its registration and its place in the list
    EXPECT_EQ(*refused, *made - 2);
}

TEST(Modules, FilesOfNonsenseArePassedOver) {
    const std::string folder = moduleFolder("nonsense");
    int64_t files = 0;
    for (const auto& entry : fs::directory_iterator(folder)) files += entry.path().extension() == ".RVX";
    ASSERT_EQ(files, 12);
    inChildWith(folder, [&] {
        EXPECT_EQ(RK_Birth(), 0);
        EXPECT_TRUE(tableIsPlain());
        EXPECT_TRUE(RefHost::TakeReports().empty());
        int64_t passed_over = 0;
        for (const std::string& line : RefHost::TakeLog())
            passed_over += line.find("passed over") != std::string::npos;
        EXPECT_EQ(passed_over, files);
        EXPECT_EQ(RK_Death(), 0);
        expectNothingHeld();
    });
}

TEST(Modules, FilesThatAreNoSharedObjectsArePassedOver) {
    const Folder folder;
    ASSERT_FALSE(folder.path.empty());
    std::ofstream(folder.path + "/empty.RVX");
    std::ofstream(folder.path + "/text.RVX")
        << "not a module at all, but long enough to be looked at twice by a loader";
    std::ofstream(folder.path + "/magic.RVX") << "\x7f"
                                                 "ELF"
                                              << std::string(200, '\xFF');
    fs::create_directory(folder.path + "/folder.RVX");
    ASSERT_EQ(mkfifo((folder.path + "/pipe.RVX").c_str(), 0600), 0);
    fs::create_symlink("/nowhere/at/all", folder.path + "/dangling.RVX");
    inChildWith(folder.path, [&] {
        EXPECT_EQ(RK_Birth(), 0);
        EXPECT_TRUE(tableIsPlain());
        EXPECT_TRUE(RefHost::TakeReports().empty());
        EXPECT_EQ(RK_Death(), 0);
        expectNothingHeld();
    });
}

// Cut off anywhere, a real module must not bring the loader down.
TEST(Modules, FilesThatWereCutOffArePassedOver) {
    std::ifstream whole(moduleFolder("RK_ModuleOverride") + "/RK_ModuleOverride.RVX", std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(whole)), {});
    ASSERT_GT(bytes.size(), 4096u);
    for (size_t kept : {size_t{10}, size_t{64}, size_t{200}, size_t{1000}, size_t{4096}, bytes.size() / 2}) {
        const Folder folder;
        std::ofstream(folder.path + "/cut.RVX", std::ios::binary).write(bytes.data(), std::streamsize(kept));
        inChildWith(folder.path, [&] {
            SCOPED_TRACE(kept);
            EXPECT_EQ(RK_Birth(), 0);
            EXPECT_TRUE(tableIsPlain());
            EXPECT_EQ(RK_Death(), 0);
            expectNothingHeld();
        });
    }
}

TEST(Modules, OfAnotherExtensionAreNotLookedAt) {
    const Folder folder;
    const fs::path module = moduleFolder("RK_ModuleOverride") + "/RK_ModuleOverride.RVX";
    fs::copy_file(module, folder.path + "/module.so");
    fs::copy_file(module, folder.path + "/module.RVX.old");
    inChildWith(folder.path, [] {
        ASSERT_EQ(RK_Birth(), 0);
        EXPECT_TRUE(tableIsPlain());
        RK_Death();
    });
}

TEST(Modules, LieInSubFoldersTooAndBrokenOnesDoNotKeepGoodOnesOut) {
    const Folder folder;
    fs::create_directories(folder.path + "/b/deep");
    fs::copy_file(moduleFolder("RK_ModuleFails") + "/RK_ModuleFails.RVX", folder.path + "/a.RVX");
    fs::copy_file(moduleFolder("RK_ModuleOverride") + "/RK_ModuleOverride.RVX",
                  folder.path + "/b/deep/c.RVX");
    std::ofstream(folder.path + "/d.RVX") << "broken";
    inChildWith(folder.path, [] {
        EXPECT_EQ(RK_Birth(), 0);
        for (int i = 0; i < RK_kSlotCount; ++i)
            EXPECT_EQ(RKp_G_OverFuncs[i] == tableAtBirth[i], i != 53) << i;
        EXPECT_GE(indexOf(RefHost::TakeReports(), failureText("Failing sample", 3)), 0);
        EXPECT_EQ(RK_Death(), 0);
        expectNothingHeld();
    });
}

TEST(Modules, AMissingOrEmptyFolderIsNoFailure) {
    inChildWith("/nowhere/at/all", [] {
        EXPECT_EQ(RK_Birth(), 0);
        EXPECT_TRUE(tableIsPlain());
        EXPECT_TRUE(RefHost::TakeReports().empty());
        RK_Death();
    });
}
