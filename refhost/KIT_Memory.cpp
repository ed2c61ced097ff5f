// Counted memory: pointers, handles, and what the library keeps outside the host's sight.
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "refhost/Internal.h"

namespace {

// Stands in front of every block; 16 bytes keep the block behind it aligned.
struct alignas(16) BlockHead {
    size_t bytes;
    uint32_t stamp;
};
constexpr uint32_t kLive = 0x4B4C4956, kFreed = 0x44414544;

std::atomic<int64_t> g_blocks{0}, g_bytes{0}, g_accounted{0};
std::atomic<int64_t> g_made{0}, g_failing{0};

// Counts an attempt; true when it is the one that has to fail.
bool mustFail() { return g_made.fetch_add(1) + 1 == g_failing.load(); }

// A block that is not the host's, or was freed before, ends the program: the heap would be damaged next.
BlockHead* headOf(const void* block) {
    BlockHead* head = static_cast<BlockHead*>(const_cast<void*>(block)) - 1;
    if (head->stamp != kLive) {
        std::fprintf(stderr, "refhost: %p is no live block of the host\n", block);
        std::abort();
    }
    return head;
}

bool tooLarge(size_t bytes) { return bytes > std::numeric_limits<size_t>::max() / 2 - sizeof(BlockHead); }

void reportNoMemory(const char* name) {
    RefHost::Record(RefHost::ReportKind::Memory, 0, 8, name ? name : "");
}

// What a handle points at: the master pointer comes first, so that a KIT_Handle is its address.
struct Master {
    void* block;
};
Master* masterOf(KIT_Handle handle) { return reinterpret_cast<Master*>(handle); }

// A handle is one allocation to whoever counts them; its master pointer is part of it.
KIT_Handle makeHandle(size_t bytes) {
    void* block = RefHost::AllocateBlock(bytes);
    if (!block) return nullptr;
    Master* master = static_cast<Master*>(std::malloc(sizeof(Master)));
    if (!master) {
        RefHost::FreeBlock(block);
        return nullptr;
    }
    master->block = block;
    return &master->block;
}

}  // namespace

namespace RefHost {

void* AllocateBlock(size_t bytes) {
    if (mustFail() || tooLarge(bytes)) return nullptr;
    BlockHead* head =
        static_cast<BlockHead*>(std::aligned_alloc(16, (bytes + sizeof(BlockHead) + 15) & ~size_t{15}));
    if (!head) return nullptr;
    head->bytes = bytes;
    head->stamp = kLive;
    ++g_blocks;
    g_bytes += static_cast<int64_t>(bytes);
    return head + 1;
}

void* ResizeBlock(void* block, size_t bytes) {
    const size_t old = headOf(block)->bytes;
    void* moved = AllocateBlock(bytes);
    if (!moved) return nullptr;
    std::memcpy(moved, block, old < bytes ? old : bytes);
    FreeBlock(block);
    return moved;
}

size_t BlockBytes(const void* block) { return headOf(block)->bytes; }

void FreeBlock(void* block) {
    BlockHead* head = headOf(block);
    --g_blocks;
    g_bytes -= static_cast<int64_t>(head->bytes);
    head->stamp = kFreed;
    std::free(head);
}

MemoryUse Memory() { return {g_blocks.load(), g_bytes.load(), g_accounted.load()}; }

void FailAllocation(int64_t n) {
    g_made = 0;
    g_failing = n;
}

int64_t AllocationsSince() { return g_made.load(); }

}  // namespace RefHost

void* KIT_AllocatePtrQuiet(size_t bytes) { return RefHost::AllocateBlock(bytes); }

void* KIT_AllocatePtr(size_t bytes, const char* name) {
    void* block = RefHost::AllocateBlock(bytes);
    if (!block) reportNoMemory(name);
    return block;
}

void* KIT_ResizePtr(void* block, size_t bytes, const char* name) {
    void* moved = block ? RefHost::ResizeBlock(block, bytes) : RefHost::AllocateBlock(bytes);
    if (!moved) reportNoMemory(name);
    return moved;
}

void KIT_FreePtr(void* block) {
    if (block) RefHost::FreeBlock(block);
}

KIT_Handle KIT_AllocateHandleQuiet(size_t bytes) { return makeHandle(bytes); }

KIT_Handle KIT_AllocateHandle(size_t bytes, const char* name) {
    KIT_Handle handle = makeHandle(bytes);
    if (!handle) reportNoMemory(name);
    return handle;
}

KIT_Handle KIT_AllocateHandleClear(size_t bytes, const char* name) {
    KIT_Handle handle = KIT_AllocateHandle(bytes, name);
    if (handle) std::memset(*handle, 0, bytes);
    return handle;
}

RK_Long KIT_ResizeHandle(KIT_Handle handle, size_t bytes, const char* name) {
    void* moved = RefHost::ResizeBlock(masterOf(handle)->block, bytes);
    if (!moved) {
        reportNoMemory(name);
        return 4;
    }
    masterOf(handle)->block = moved;
    return 0;
}

size_t KIT_GetHandleSize(KIT_Handle handle) {
    return handle ? RefHost::BlockBytes(masterOf(handle)->block) : 0;
}

void KIT_FreeHandle(KIT_Handle handle) {
    if (!handle) return;
    RefHost::FreeBlock(masterOf(handle)->block);
    std::free(masterOf(handle));
}

void KIT_AccountAllocation(int64_t bytes) { g_accounted += bytes; }

void* KIT_MemTrackedObject::operator new(size_t bytes) noexcept { return KIT_AllocatePtrQuiet(bytes); }
void KIT_MemTrackedObject::operator delete(void* block) noexcept { KIT_FreePtr(block); }
