// Runs a piece of a test on a thread whose stack is too small for recursion over the
// data it is given.
//
//     OnSmallStack([&] { deep.clear(); });
#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>

inline void OnSmallStack(const std::function<void()>& act) {
    constexpr std::size_t kStackOctets = std::size_t{256} << 10;
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStackOctets), 0);
    pthread_t thread;
    const auto run = [](void* what) -> void* {
        (*static_cast<const std::function<void()>*>(what))();
        return nullptr;
    };
    auto* argument = const_cast<std::function<void()>*>(&act);
    ASSERT_EQ(pthread_create(&thread, &attributes, run, argument), 0);
    EXPECT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
}
