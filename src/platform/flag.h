// The lock of the library's flag word. Who reads the word holds it; so does SetFlag(), in
// read mode: the store is one word and needs nobody to stay out.
#pragma once

#include <pthread.h>

namespace FrameUtil {

extern pthread_rwlock_t g_flag_lock;

}  // namespace FrameUtil
