// Pixels with pages around every row that cannot be touched: a read or a write one pixel outside ends the
// program.
#ifndef TEST_GUARDED_ROWS_H
#define TEST_GUARDED_ROWS_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <new>

#include "RK/indep/frame/RK.h"

namespace test {

// Room for one world at a time, each row on a page of its own.
class GuardedRows {
  public:
    static constexpr int kMostRows = 160;
    GuardedRows() : page_(static_cast<size_t>(sysconf(_SC_PAGESIZE))) {
        block_ = mmap(nullptr, bytes(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (block_ == MAP_FAILED) throw std::bad_alloc();
    }
    ~GuardedRows() { munmap(block_, bytes()); }
    GuardedRows(const GuardedRows&) = delete;
    GuardedRows& operator=(const GuardedRows&) = delete;

    // Takes the pixels of `world` in and points it at them, running upwards if it did: its rows lie against
    // the page behind them, or the one before them. False, and nothing is done, when they are too many or too
    // long.
    template <class P>
    bool take(RK_LayerDef& world, bool against_end) {
        const size_t used = static_cast<size_t>(world.width) * sizeof(P);
        if (world.height > kMostRows || used > page_) return false;
        open(world.height);
        const ptrdiff_t pitch = static_cast<ptrdiff_t>(2 * page_);
        char* const first = row(0) + (against_end ? page_ - used : 0);
        for (int y = 0; y < world.height; ++y) {
            const ptrdiff_t to = world.rowbytes < 0 ? world.height - 1 - y : y;
            std::memset(row(static_cast<int>(to)), 0x55, page_);
            std::memcpy(first + to * pitch,
                        static_cast<const char*>(world.data) + y * ptrdiff_t{world.rowbytes}, used);
        }
        const bool upwards = world.rowbytes < 0;
        world.data = first + (upwards ? (world.height - 1) * pitch : 0);
        world.rowbytes = static_cast<int32_t>(upwards ? -pitch : pitch);
        return true;
    }

    // Room for one row of `count` bytes instead, against one of its two pages; null when that is too many.
    void* room(size_t count, bool against_end) {
        if (count > page_) return nullptr;
        open(1);
        std::memset(row(0), 0x55, page_);
        return row(0) + (against_end ? page_ - count : 0);
    }

  private:
    size_t bytes() const { return (2 * kMostRows + 1) * page_; }
    void open(int rows) {
        for (; open_ > rows; --open_) protect(open_ - 1, PROT_NONE);
        for (; open_ < rows; ++open_) protect(open_, PROT_READ | PROT_WRITE);
    }
    void protect(int y, int how) {
        if (mprotect(row(y), page_, how) != 0) throw std::bad_alloc();
    }
    char* row(int y) { return static_cast<char*>(block_) + (2 * static_cast<size_t>(y) + 1) * page_; }

    size_t page_;
    void* block_;
    int open_ = 0;  // rows that can be touched
};

}  // namespace test

#endif
