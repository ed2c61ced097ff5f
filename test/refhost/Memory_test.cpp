#include <cstring>
#include <memory>

#include "RK/host/KIT.h"
#include "test/Reports.h"

namespace {

// Without vtable: what the base class does is all that counts.
struct Tracked : KIT_MemTrackedObject {
    int numbers[25];
};

int64_t blocksNow() { return RefHost::Memory().blocks; }
int64_t bytesNow() { return RefHost::Memory().bytes; }

}  // namespace

class HostMemory : public test::Tidy {};

TEST_F(HostMemory, CountsBlocksAndBytesOfPointers) {
    const int64_t blocks = blocksNow(), bytes = bytesNow();
    void* a = KIT_AllocatePtr(100, "a");
    void* b = KIT_AllocatePtrQuiet(7);
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(blocksNow(), blocks + 2);
    EXPECT_EQ(bytesNow(), bytes + 107);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(a) % 8, 0u);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(b) % 8, 0u);
    KIT_FreePtr(a);
    KIT_FreePtr(b);
    KIT_FreePtr(nullptr);
}

TEST_F(HostMemory, ResizesPointersAndKeepsTheirBytes) {
    auto* block = static_cast<char*>(KIT_AllocatePtr(5, "text"));
    std::memcpy(block, "abcd", 5);
    block = static_cast<char*>(KIT_ResizePtr(block, 1000, "text"));
    ASSERT_NE(block, nullptr);
    EXPECT_STREQ(block, "abcd");
    block = static_cast<char*>(KIT_ResizePtr(block, 2, "text"));
    EXPECT_EQ(block[1], 'b');
    RefHost::FailAllocation(1);
    EXPECT_EQ(KIT_ResizePtr(block, 50, "more text"), nullptr);
    EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Memory, 0, "more text"));
    EXPECT_EQ(block[1], 'b');
    KIT_FreePtr(block);
    void* from_null = KIT_ResizePtr(nullptr, 8, "fresh");
    EXPECT_NE(from_null, nullptr);
    KIT_FreePtr(from_null);
}

TEST_F(HostMemory, CountsHandlesAsOneBlockEach) {
    const int64_t blocks = blocksNow(), bytes = bytesNow();
    KIT_Handle a = KIT_AllocateHandle(64, "a");
    KIT_Handle b = KIT_AllocateHandleClear(32, "b");
    KIT_Handle c = KIT_AllocateHandleQuiet(0);
    ASSERT_TRUE(a && b && c);
    EXPECT_EQ(blocksNow(), blocks + 3);
    EXPECT_EQ(bytesNow(), bytes + 96);
    EXPECT_EQ(KIT_GetHandleSize(a), 64u);
    EXPECT_EQ(KIT_GetHandleSize(c), 0u);
    EXPECT_EQ(KIT_GetHandleSize(nullptr), 0u);
    for (int i = 0; i < 32; ++i) EXPECT_EQ(static_cast<char*>(*b)[i], 0);
    for (KIT_Handle handle : {a, b, c, KIT_Handle(nullptr)}) KIT_FreeHandle(handle);
}

TEST_F(HostMemory, ResizesHandlesInPlaceOfTheHandleItself) {
    KIT_Handle handle = KIT_AllocateHandle(4, "h");
    std::memcpy(*handle, "xyz", 4);
    EXPECT_EQ(KIT_ResizeHandle(handle, 4000, "h"), 0);
    EXPECT_EQ(KIT_GetHandleSize(handle), 4000u);
    EXPECT_STREQ(static_cast<char*>(*handle), "xyz");
    RefHost::FailAllocation(1);
    EXPECT_EQ(KIT_ResizeHandle(handle, 8000, "bigger h"), 4);
    EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Memory, 0, "bigger h"));
    EXPECT_EQ(KIT_GetHandleSize(handle), 4000u);
    EXPECT_STREQ(static_cast<char*>(*handle), "xyz");
    KIT_FreeHandle(handle);
}

TEST_F(HostMemory, FailsTheNthAllocationOnceAndReportsOnlyNamedOnes) {
    RefHost::FailAllocation(2);
    void* first = KIT_AllocatePtr(1, "first");
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(KIT_AllocatePtr(1, "second"), nullptr);
    EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Memory, 0, "second"));
    void* third = KIT_AllocatePtr(1, "third");
    EXPECT_NE(third, nullptr);
    EXPECT_EQ(RefHost::AllocationsSince(), 3);
    KIT_FreePtr(first);
    KIT_FreePtr(third);

    RefHost::FailAllocation(1);
    EXPECT_EQ(KIT_AllocatePtrQuiet(1), nullptr);
    RefHost::FailAllocation(1);
    EXPECT_EQ(KIT_AllocateHandleQuiet(1), nullptr);
    EXPECT_TRUE(test::noReports());
    RefHost::FailAllocation(1);
    EXPECT_EQ(KIT_AllocateHandle(1, "handle"), nullptr);
    EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Memory, 0, "handle"));
    RefHost::FailAllocation(1);
    EXPECT_EQ(KIT_AllocateHandleClear(1, "clear handle"), nullptr);
    EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Memory, 0, "clear handle"));
    RefHost::FailAllocation(0);
    EXPECT_EQ(RefHost::AllocationsSince(), 0);
}

TEST_F(HostMemory, RefusesSizesThatNoMachineHas) {
    EXPECT_EQ(KIT_AllocatePtrQuiet(SIZE_MAX), nullptr);
    EXPECT_EQ(KIT_AllocatePtrQuiet(SIZE_MAX - 20), nullptr);
    EXPECT_EQ(KIT_AllocatePtr(SIZE_MAX / 2, "half of everything"), nullptr);
    EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Memory, 0, "half of everything"));
    EXPECT_EQ(KIT_AllocateHandleQuiet(SIZE_MAX - 1), nullptr);
}

TEST_F(HostMemory, SumsWhatItIsToldOf) {
    const int64_t before = RefHost::Memory().accounted;
    KIT_AccountAllocation(int64_t{1} << 40);
    KIT_AccountAllocation(-5);
    EXPECT_EQ(RefHost::Memory().accounted, before + (int64_t{1} << 40) - 5);
    KIT_AccountAllocation(5 - (int64_t{1} << 40));
}

TEST_F(HostMemory, TracksObjectsOfDerivedClasses) {
    const int64_t blocks = blocksNow(), bytes = bytesNow();
    std::unique_ptr<Tracked> object(new Tracked);
    EXPECT_EQ(blocksNow(), blocks + 1);
    EXPECT_EQ(bytesNow(), bytes + int64_t(sizeof(Tracked)));
    object.reset();
    EXPECT_EQ(blocksNow(), blocks);
    RefHost::FailAllocation(1);
    EXPECT_EQ(new Tracked, nullptr);
    EXPECT_TRUE(test::noReports());
    alignas(Tracked) unsigned char place[sizeof(Tracked)];
    Tracked* placed = new (place) Tracked;
    EXPECT_EQ(static_cast<void*>(placed), place);
    EXPECT_EQ(blocksNow(), blocks);
}

TEST_F(HostMemory, EndsTheProgramThatFreesWhatIsNoBlock) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            unsigned char foreign[64] = {};
            KIT_FreePtr(foreign + 32);
        },
        "no live block of the host");
}
