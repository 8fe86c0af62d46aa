// Runs code on a thread with a small stack, to show that it does not recurse over its
// input.
//
//     RunOnStack(256 * 1024, [] { DecodeSomethingDeep(); });
//
// Thread rule: thread-safe.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <functional>
#include <system_error>

namespace support {

/// Calls `work`, which does not throw, on a thread of `stack_octets` octets of stack and
/// waits for it. Throws std::system_error when the thread cannot be made.
inline void RunOnStack(std::size_t stack_octets, std::function<void()> work) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    int error = pthread_attr_setstacksize(&attributes, stack_octets);
    pthread_t thread;
    if (error == 0) {
        error = pthread_create(
            &thread, &attributes,
            [](void* argument) -> void* {
                (*static_cast<std::function<void()>*>(argument))();
                return nullptr;
            },
            &work);
    }
    pthread_attr_destroy(&attributes);
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), "thread");
    }
    pthread_join(thread, nullptr);
}

}  // namespace support

/// The same on 256 KiB, for work whose exceptions are the test's own.
inline void OnSmallStack(const std::function<void()>& act) {
    support::RunOnStack(std::size_t{256} << 10, act);
}
