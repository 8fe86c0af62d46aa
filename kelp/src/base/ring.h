// A queue in one circular block that grows to what was once needed and is then reused:
// a queue that is filled and emptied all day allocates nothing.
#pragma once

#include <cstddef>
#include <memory>
#include <utility>

namespace kelp::base {

template <class T>
class Ring {
  public:
    bool empty() const { return size_ == 0; }
    std::size_t size() const { return size_; }

    void PushBack(T value) {
        Reserve();
        slots_[(head_ + size_) & (capacity_ - 1)] = std::move(value);
        ++size_;
    }
    void PushFront(T value) {
        Reserve();
        head_ = (head_ - 1) & (capacity_ - 1);
        slots_[head_] = std::move(value);
        ++size_;
    }
    /// REQUIRES: !empty().
    T PopFront() {
        T value = std::move(slots_[head_]);
        head_ = (head_ + 1) & (capacity_ - 1);
        --size_;
        return value;
    }
    /// The element `index` places behind the first. REQUIRES: index < size().
    T& operator[](std::size_t index) { return slots_[(head_ + index) & (capacity_ - 1)]; }

    /// Keeps the elements for which `keep` holds, in their order.
    template <class Keep>
    void Retain(Keep keep) {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < size_; ++i) {
            if (keep((*this)[i])) {
                if (kept != i) {
                    (*this)[kept] = std::move((*this)[i]);
                }
                ++kept;
            }
        }
        size_ = kept;
    }

  private:
    void Reserve() {
        if (size_ < capacity_) {
            return;
        }
        const std::size_t wider = capacity_ == 0 ? 8 : capacity_ * 2;
        auto slots = std::make_unique<T[]>(wider);
        for (std::size_t i = 0; i < size_; ++i) {
            slots[i] = std::move((*this)[i]);
        }
        slots_ = std::move(slots);
        capacity_ = wider;
        head_ = 0;
    }

    std::unique_ptr<T[]> slots_;
    std::size_t capacity_ = 0;  // a power of two, or 0
    std::size_t head_ = 0;
    std::size_t size_ = 0;
};

}  // namespace kelp::base
