// Makes the system refuse a lock to this thread. The linker puts these in front of ACE's
// and the system's own (see CMakeLists.txt).
//
//     const seams::FailingLock failing(seams::rwlock_error, EAGAIN);
#pragma once

namespace seams {

inline thread_local int mutex_error = 0;   // why ACE cannot lock a mutex, unless 0
inline thread_local int rwlock_error = 0;  // what pthread_rwlock_wrlock returns, unless 0

class FailingLock {
  public:
    FailingLock(int& seam, int error) : m_seam(seam) { m_seam = error; }
    ~FailingLock() { m_seam = 0; }
    FailingLock(const FailingLock&) = delete;
    FailingLock& operator=(const FailingLock&) = delete;

  private:
    int& m_seam;
};

}  // namespace seams
