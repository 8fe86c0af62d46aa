#include "kelpd/gateway/io_thread.h"

#include <gtest/gtest.h>

#include <boost/asio/post.hpp>
#include <future>
#include <thread>

#include "kelpd/gateway/session.h"

namespace {

using kelpd::IoThread;

// A stop that comes while the thread was busy for longer than its timer: the timer has run
// out, cannot be cancelled any more, and must not begin anew.
TEST(IoThread, EndsWhenTheTimerWasDueAtTheStop) {
    IoThread thread;
    boost::asio::post(thread.context(), [&thread] {
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        thread.Stop(IoThread::Clock::now());
    });
    auto ended = std::async(std::launch::async, [&thread] { thread.Run(); });
    const bool in_time = ended.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
    EXPECT_TRUE(in_time);
    if (!in_time) {
        thread.context().stop();
    }
}

}  // namespace
