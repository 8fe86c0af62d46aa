#include "seams.h"

#include <pthread.h>

#include <cerrno>

extern "C" {

int __real__ZN6ACE_OS10mutex_lockEP15pthread_mutex_t(pthread_mutex_t* mutex);
int __wrap__ZN6ACE_OS10mutex_lockEP15pthread_mutex_t(pthread_mutex_t* mutex) {
    if (seams::mutex_error != 0) {
        errno = seams::mutex_error;
        return -1;
    }
    return __real__ZN6ACE_OS10mutex_lockEP15pthread_mutex_t(mutex);
}

int __real_pthread_rwlock_wrlock(pthread_rwlock_t* lock);
int __wrap_pthread_rwlock_wrlock(pthread_rwlock_t* lock) {
    return seams::rwlock_error != 0 ? seams::rwlock_error : __real_pthread_rwlock_wrlock(lock);
}

}  // extern "C"
