// Lives of the package, each in a process of its own: a package is born only once.
#ifndef TEST_LIFE_CHILD_H
#define TEST_LIFE_CHILD_H

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "RK/indep/frame/RK_OverFuncs.h"
#include "refhost/RefHost.h"

namespace test {

// Runs work() in a child process. What fails there is printed there and fails the test here.
template <class Work>
void inChild(Work&& work) {
    std::fflush(nullptr);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const auto* result = testing::UnitTest::GetInstance()->current_test_info()->result();
        const int before = result->total_part_count();
        bool threw = false;
        try {
            work();
        } catch (...) {
            threw = true;
        }
        if (threw) ADD_FAILURE() << "an exception came out of the child's work";
        std::exit(result->total_part_count() > before ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

// A number that a child hands to its parent.
class Shared {
  public:
    Shared() {
        void* page =
            mmap(nullptr, sizeof(int64_t), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        value_ = page == MAP_FAILED ? nullptr : static_cast<int64_t*>(page);
    }
    ~Shared() {
        if (value_) munmap(value_, sizeof(int64_t));
    }
    Shared(const Shared&) = delete;
    Shared& operator=(const Shared&) = delete;
    int64_t& operator*() { return *value_; }

  private:
    int64_t* value_;
};

inline void expectNothingHeld() {
    const RefHost::MemoryUse use = RefHost::Memory();
    EXPECT_EQ(use.blocks, 0);
    EXPECT_EQ(use.bytes, 0);
    EXPECT_EQ(use.accounted, 0);
}

// Calls see(index, info) for every slot.
template <class See>
void forSlots(See&& see) {
    for (RK_Long i = 0; i < RK_kSlotCount; ++i) {
        RK_SlotInfo info;
        ASSERT_EQ(RK_GetSlotInfo(i, &info), 0);
        see(i, info);
    }
}

inline int filledSlots() {
    int filled = 0;
    for (void* slot : RKp_G_OverFuncs) filled += slot != nullptr;
    return filled;
}
inline int namedSlots() {
    int named = 0;
    forSlots([&](RK_Long, const RK_SlotInfo& info) { named += info.name[0] != '\0'; });
    return named;
}

// The number of the first report with that text, or -1.
inline int indexOf(const std::vector<RefHost::Report>& reports, const std::string& text) {
    for (size_t i = 0; i < reports.size(); ++i)
        if (reports[i].text == text) return static_cast<int>(i);
    return -1;
}

inline std::string moduleFolder(const std::string& name) { return std::string(RK_TEST_MODULES "/") + name; }

}  // namespace test

#endif
