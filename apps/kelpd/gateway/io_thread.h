// kelpd/gateway/io_thread.h - a thread and the sessions that live on it.
//
// thread-safe where it says so, else one thread: the one that runs it.
#pragma once

#include <array>
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <memory>
#include <unordered_map>
#include <vector>

namespace kelpd {

class Session;

class IoThread {
  public:
    using Clock = std::chrono::steady_clock;

    IoThread();
    ~IoThread();
    IoThread(const IoThread&) = delete;
    IoThread& operator=(const IoThread&) = delete;

    /// Runs on the calling thread until Stop has been called and the last session is gone.
    void Run();
    /// From any thread. Sessions end when what they are at is answered; at `deadline` the others
    /// are cut.
    void Stop(Clock::time_point deadline);

    boost::asio::io_context& context() { return context_; }
    /// The thread keeps the session until it is removed.
    void Add(std::shared_ptr<Session> session);
    void Remove(Session* session);
    /// Room to read into, for whoever runs just now.
    std::array<char, 16384>& scratch() { return scratch_; }

  private:
    std::vector<std::shared_ptr<Session>> All() const;
    bool Done() const { return stopping_ && sessions_.empty(); }
    void Sweep();
    void FinishIfDone();

    std::unordered_map<Session*, std::shared_ptr<Session>> sessions_;
    std::array<char, 16384> scratch_;
    bool stopping_ = false;
    Clock::time_point cut_at_ = Clock::time_point::max();
    // One thread runs it: the hint spares locks that nobody contends for.
    boost::asio::io_context context_{1};
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> work_;
    boost::asio::steady_timer sweep_;
};

}  // namespace kelpd
