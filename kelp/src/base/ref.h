// Counted references to objects that count for themselves.
#pragma once

#include <atomic>
#include <utility>

namespace kelp::base {

class Counted {
  public:
    void AddRef() { references_.fetch_add(1, std::memory_order_relaxed); }
    void Release() {
        if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete this;
        }
    }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

  protected:
    Counted() = default;
    virtual ~Counted() = default;

  private:
    std::atomic<int> references_{1};
};

template <class T>
class Ref {
  public:
    Ref() = default;
    Ref(std::nullptr_t) {}  // NOLINT(google-explicit-constructor)
    /// Takes over the reference that a new object starts with.
    static Ref Adopt(T* object) {
        Ref ref;
        ref.object_ = object;
        return ref;
    }
    /// One more reference to an object that is alive.
    static Ref Share(T* object) {
        if (object != nullptr) {
            object->AddRef();
        }
        return Adopt(object);
    }
    Ref(const Ref& other) : object_(other.object_) {
        if (object_ != nullptr) {
            object_->AddRef();
        }
    }
    Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Ref& operator=(Ref other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Ref() {
        if (object_ != nullptr) {
            object_->Release();
        }
    }

    T* get() const { return object_; }
    T* operator->() const { return object_; }
    T& operator*() const { return *object_; }
    explicit operator bool() const { return object_ != nullptr; }
    /// Gives the reference away.
    T* Detach() { return std::exchange(object_, nullptr); }

  private:
    T* object_ = nullptr;
};

}  // namespace kelp::base
