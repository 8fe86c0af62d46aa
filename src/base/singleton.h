// The process's one object of a class, made on first use.
//
//     Codec* codec = Singleton<Codec>::Instance();
//
// Design notes. Any thread may ask at any time. The test of the pointer is free of locks;
// whoever finds it empty makes the object under ACE's static-object lock, which is there
// before main and for as long as static objects are, and tests again. The lock is
// recursive, so the constructor may ask for other singletons.
#pragma once

#include <ace/Guard_T.h>
#include <ace/Recursive_Thread_Mutex.h>
#include <ace/Static_Object_Lock.h>

#include <atomic>

namespace FrameUtil {

template <class T>
class Singleton {
  public:
    /// The object. What its constructor throws passes through, and the next call tries
    /// again.
    static T* Instance() {
        T* object = s_object.load(std::memory_order_acquire);
        if (object == nullptr) [[unlikely]] {
            const ACE_Guard<ACE_Recursive_Thread_Mutex> guard(*ACE_Static_Object_Lock::instance());
            object = s_object.load(std::memory_order_relaxed);
            if (object == nullptr) {
                object = new T;
                s_object.store(object, std::memory_order_release);
            }
        }
        return object;
    }

  private:
    static inline constinit std::atomic<T*> s_object{nullptr};
};

}  // namespace FrameUtil
