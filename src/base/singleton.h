// The process's one object of a class, made on first use.
//
//     Codec* codec = Singleton<Codec>::Instance();          // lives as long as the process
//
//     ErrorManage* ErrorManage::Instance() {                // of a class that can be ended
//         return Singleton<ErrorManage>::Instance(m_pInstance);
//     }
//     void ErrorManage::Destroy() { Singleton<ErrorManage>::Destroy(m_pInstance); }
//
// Such a class keeps its pointer itself, `static std::atomic<ErrorManage*> m_pInstance`,
// and befriends Singleton, so that nobody else makes or deletes an object of it.
//
// Design notes. Any thread may ask at any time. The test of the pointer is free of locks;
// whoever finds it empty makes the object under ACE's static-object lock, which is there
// before main and for as long as static objects are, and tests again. The lock is
// recursive, so the constructor may ask for other singletons. An object is deleted under
// the same lock: no other is made before it is gone. That nobody uses it any more is the
// affair of whoever ends it.
#pragma once

#include <ace/Guard_T.h>
#include <ace/Recursive_Thread_Mutex.h>
#include <ace/Static_Object_Lock.h>

#include <atomic>

namespace FrameUtil {

template <class T>
class Singleton {
  public:
    /// The object that `instance` points to. Null, with errno, when the lock cannot be
    /// had. What its constructor throws passes through, and the next call tries again.
    static T* Instance(std::atomic<T*>& instance) {
        T* object = instance.load(std::memory_order_acquire);
        if (object == nullptr) [[unlikely]] {
            const Guard guard(*ACE_Static_Object_Lock::instance());
            if (guard.locked() == 0) {
                return nullptr;
            }
            object = instance.load(std::memory_order_relaxed);
            if (object == nullptr) {
                object = new T;
                instance.store(object, std::memory_order_release);
            }
        }
        return object;
    }

    /// The object of a class that keeps no pointer of its own.
    static T* Instance() { return Instance(s_object); }

    /// Deletes the object; the next Instance() makes another. It is not an error if there
    /// is none. Without the lock nothing is done.
    static void Destroy(std::atomic<T*>& instance) {
        const Guard guard(*ACE_Static_Object_Lock::instance());
        if (guard.locked() != 0) {
            delete instance.exchange(nullptr, std::memory_order_acq_rel);
        }
    }

  private:
    using Guard = ACE_Guard<ACE_Recursive_Thread_Mutex>;

    static inline constinit std::atomic<T*> s_object{nullptr};
};

}  // namespace FrameUtil
