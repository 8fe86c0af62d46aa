// kelp/asn1/elements.h - the elements of a list, held by value in stretches that never
// move, so that a reference to one stays good until the list lets go of it.
//
// Thread rule: thread-compatible.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

#include "kelp/blocks.h"

template <class T>
class AsnElements {
    struct Stretch {
        Stretch* previous;
        Stretch* next;
        std::uint32_t used;
        std::uint32_t capacity;
        T* items() { return reinterpret_cast<T*>(this + 1); }
    };
    static_assert(alignof(T) <= alignof(Stretch), "stretches are aligned for pointers");

    template <class Value>
    class Walk {
      public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = Value*;
        using reference = Value&;

        Walk() = default;
        explicit Walk(Stretch* stretch) : stretch_(stretch) {}
        Value& operator*() const { return stretch_->items()[at_]; }
        Value* operator->() const { return &**this; }
        Walk& operator++() {
            if (++at_ == stretch_->used) {
                Stretch* next = stretch_->next;
                stretch_ = next != nullptr && next->used != 0 ? next : nullptr;
                at_ = 0;
            }
            return *this;
        }
        Walk operator++(int) {
            Walk before = *this;
            ++*this;
            return before;
        }
        bool operator==(const Walk& other) const = default;

      private:
        Stretch* stretch_ = nullptr;
        std::uint32_t at_ = 0;
    };

  public:
    using iterator = Walk<T>;
    using const_iterator = Walk<const T>;

    AsnElements() = default;
    AsnElements(const AsnElements& other) { AppendAll(other); }
    AsnElements(AsnElements&& other) noexcept { Swap(other); }
    AsnElements& operator=(const AsnElements& other) {
        if (this != &other) {
            AsnElements copy(other);
            Swap(copy);
        }
        return *this;
    }
    AsnElements& operator=(AsnElements&& other) noexcept {
        Swap(other);
        return *this;
    }
    ~AsnElements() { Release(); }

    /// A new element at the end.
    T& Append() { return *new (Slot(kLastCapacity)) T; }
    /// The same, but if there is no place for it, room is made for `most` elements at
    /// most, so that a list takes no more memory than its encoding accounts for.
    T& AppendWithRoomFor(std::size_t most) { return *new (Slot(most)) T; }
    T& Append(T value) {
        T& element = Append();
        element = std::move(value);
        return element;
    }

    /// Makes one stretch hold the next `count` elements: worth a call when the number
    /// is known.
    void Reserve(std::size_t count) {
        count = std::min<std::size_t>(count, std::numeric_limits<std::uint32_t>::max());
        if (count != 0 && (last_ == nullptr || last_->capacity - last_->used < count)) {
            AddStretch(count);
        }
    }

    std::size_t Count() const { return count_; }
    bool empty() const { return count_ == 0; }

    /// The element at zero-based position `n`, or null when there is none.
    T* At(std::size_t n) { return Find(n); }
    const T* At(std::size_t n) const { return Find(n); }
    /// REQUIRES: n < Count().
    T& operator[](std::size_t n) { return *Find(n); }
    const T& operator[](std::size_t n) const { return *Find(n); }

    iterator begin() { return empty() ? iterator() : iterator(first_); }
    iterator end() { return iterator(); }
    const_iterator begin() const { return empty() ? const_iterator() : const_iterator(first_); }
    const_iterator end() const { return const_iterator(); }

    void Clear() noexcept { Release(); }

    /// Calls `visit` for every element, the last one first.
    template <class Visit>
    void EachFromBehind(Visit visit) const {
        for (Stretch* s = last_; s != nullptr; s = s->previous) {
            for (std::uint32_t i = s->used; i != 0; --i) {
                visit(static_cast<const T&>(s->items()[i - 1]));
            }
        }
    }

  private:
    // The first stretch comes from the block pools whatever an element's size.
    static constexpr std::size_t kFirstCapacity =
        std::clamp<std::size_t>((kelp::kMaxBlockSize - sizeof(Stretch)) / sizeof(T), 1, 8);
    static constexpr std::size_t kLastCapacity = 1024;

    static std::size_t OctetsOf(std::size_t capacity) {
        return sizeof(Stretch) + capacity * sizeof(T);
    }

    // The stretch is linked with its new element counted, so that an element whose
    // construction throws would be destroyed unconstructed: elements of lists have
    // constructors that do not throw (copying appends a default one and assigns).
    void* Slot(std::size_t most) {
        static_assert(std::is_nothrow_default_constructible_v<T>);
        if (last_ == nullptr || last_->used == last_->capacity) {
            const std::size_t usual =
                last_ == nullptr
                    ? kFirstCapacity
                    : std::min<std::size_t>(std::size_t{last_->capacity} * 2, kLastCapacity);
            AddStretch(std::clamp<std::size_t>(most, 1, usual));
        }
        ++count_;
        return last_->items() + last_->used++;
    }

    void AddStretch(std::size_t capacity) {
        auto* fresh = static_cast<Stretch*>(kelp::AllocateBlock(OctetsOf(capacity)));
        fresh->next = nullptr;
        fresh->used = 0;
        fresh->capacity = static_cast<std::uint32_t>(capacity);
        if (last_ != nullptr && last_->used == 0) {
            // An empty stretch in the middle would end an iteration early.
            Stretch* empty = last_;
            Detach(empty);
            kelp::FreeBlock(empty, OctetsOf(empty->capacity));
        }
        fresh->previous = last_;
        (last_ != nullptr ? last_->next : first_) = fresh;
        last_ = fresh;
    }

    void Detach(Stretch* tail) {
        last_ = tail->previous;
        (last_ != nullptr ? last_->next : first_) = nullptr;
    }

    T* Find(std::size_t n) const {
        for (Stretch* s = first_; s != nullptr; s = s->next) {
            if (n < s->used) {
                return s->items() + n;
            }
            n -= s->used;
        }
        return nullptr;
    }

    void AppendAll(const AsnElements& other) {
        try {
            Reserve(other.count_);
            for (const T& element : other) {
                Append() = element;
            }
        } catch (...) {
            Release();
            throw;
        }
    }

    void Release() noexcept {
        for (Stretch* s = first_; s != nullptr;) {
            Stretch* next = s->next;
            for (std::uint32_t i = 0; i < s->used; ++i) {
                s->items()[i].~T();
            }
            kelp::FreeBlock(s, OctetsOf(s->capacity));
            s = next;
        }
        first_ = last_ = nullptr;
        count_ = 0;
    }

    void Swap(AsnElements& other) noexcept {
        std::swap(first_, other.first_);
        std::swap(last_, other.last_);
        std::swap(count_, other.count_);
    }

    Stretch* first_ = nullptr;
    Stretch* last_ = nullptr;
    std::size_t count_ = 0;
};
