// The flag word.

#include "platform/flag.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <thread>
#include <vector>

#include "frameutil/platform.h"

namespace FrameUtil {
namespace {

class Flag : public ::testing::Test {
  protected:
    void TearDown() override { SetFlag(0); }
};

TEST_F(Flag, IsZeroAtLoadAndReplacedAsAWhole) {
    EXPECT_EQ(GetFlag(), 0U);
    for (const unsigned int flags : {FLAG_CALL_CHAIN, 0xfffffffeU, 0xffffffffU, 0U}) {
        errno = 0;
        SetFlag(flags);
        EXPECT_EQ(GetFlag(), flags);
        EXPECT_EQ(errno, 0);
    }
}

// The lock is taken to read: who reads does not keep it from being set.
TEST_F(Flag, IsSetBesideAReader) {
    ASSERT_EQ(::pthread_rwlock_rdlock(&g_flag_lock), 0);
    std::thread([] { SetFlag(5); }).join();
    EXPECT_EQ(GetFlag(), 5U);
    ::pthread_rwlock_unlock(&g_flag_lock);
}

// A thread that holds the lock to write cannot have it again.
TEST_F(Flag, IsSetWithoutTheLockIfNeedBe) {
    ASSERT_EQ(::pthread_rwlock_wrlock(&g_flag_lock), 0);
    errno = 0;
    SetFlag(9);
    EXPECT_EQ(errno, EDEADLK);
    errno = 0;
    EXPECT_EQ(GetFlag(), 9U);
    EXPECT_EQ(errno, EDEADLK);
    EXPECT_EQ(::pthread_rwlock_unlock(&g_flag_lock), 0);
    EXPECT_EQ(::pthread_rwlock_trywrlock(&g_flag_lock), 0);  // no lock was left behind
    ::pthread_rwlock_unlock(&g_flag_lock);
}

TEST_F(Flag, IsOneWordToEveryThread) {
    std::vector<std::thread> threads;
    for (unsigned int i = 0; i < 4; ++i) {
        threads.emplace_back([i] {
            for (int step = 0; step < 2'000; ++step) {
                SetFlag(i * 0x01010101U);
                const unsigned int flags = GetFlag();
                ASSERT_EQ(flags, (flags & 0xff) * 0x01010101U);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace
}  // namespace FrameUtil
