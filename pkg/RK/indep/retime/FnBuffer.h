// A block of plain values from the host's memory.
#ifndef FN_BUFFER_H
#define FN_BUFFER_H

#include <type_traits>

#include "RK/host/KIT.h"

template <class T>
class FnBuffer {
    static_assert(std::is_trivially_copyable_v<T>, "a buffer holds plain values");

  public:
    FnBuffer() = default;
    ~FnBuffer() { KIT_FreePtr(data_); }
    FnBuffer(const FnBuffer&) = delete;
    FnBuffer& operator=(const FnBuffer&) = delete;

    // Replaces the block; its values are undefined. False, and no block, when memory is short or count is 0.
    bool Allocate(int64_t count) {
        Free();
        if (count < 1 || static_cast<uint64_t>(count) > PTRDIFF_MAX / sizeof(T)) return false;
        data_ = static_cast<T*>(KIT_AllocatePtrQuiet(static_cast<size_t>(count) * sizeof(T)));
        return data_ != nullptr;
    }
    void Free() {
        KIT_FreePtr(data_);
        data_ = nullptr;
    }
    void Swap(FnBuffer& other) { std::swap(data_, other.data_); }
    T* data() { return data_; }
    const T* data() const { return data_; }
    T& operator[](int64_t i) { return data_[i]; }
    const T& operator[](int64_t i) const { return data_[i]; }
    explicit operator bool() const { return data_ != nullptr; }

  private:
    T* data_ = nullptr;
};

#endif
