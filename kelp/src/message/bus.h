// The bus: messages between the processes of this machine, over Unix-domain sockets.
//
// Design notes. Any thread may send; the socket is written on its thread. Messages that
// arrive are given to the sink on the thread that read them: the bus's own, or the one in
// the poller's seat. `mutex_` guards the tables of connections only and is not held while
// a socket is connected, written or read, or the sink is called. Connections to other
// processes are made on first use and kept; when one turns out to be dead before anything
// was sent, a second attempt is made with a fresh one.
//
// Stopping: StopAccepting() first, while answers may still leave; Stop() when nobody sends
// any more and the poller's seat is empty for good.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "base/mutex.h"
#include "base/rate_limit.h"
#include "base/ref.h"
#include "message/connection.h"
#include "message/identity.h"
#include "message/poller.h"
#include "message/run_dir.h"
#include "message/serials.h"
#include "message/timers.h"

namespace kelp::message {

/// Gets what arrives: requests, answers, and answers made up for requests that will get
/// none. Never blocks.
class MessageSink {
  public:
    virtual void Deliver(MsgPtr msg) noexcept = 0;

  protected:
    ~MessageSink() = default;
};

struct BusOptions {
    Identity identity;
    bool listen = false;
    std::string run_dir;
    ConnectionLimits limits{std::size_t{64} << 20, std::size_t{16} << 20};
    std::size_t max_connections = 1024;
    std::int64_t frame_deadline_ns = 10 * base::kSecond;
};

class Bus final : public PollHandler, private ConnectionOwner, private TimerTarget {
  public:
    Bus(const BusOptions& options, MessageSink& sink, TimerThread& timers);
    ~Bus();
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;

    /// False, with `why`, when the run directory or the identity cannot be had.
    bool Start(std::string& why);

    Poller& poller() { return poller_; }

    /// A serial number that nobody uses.
    std::uint32_t NextSerial();

    /// Sends to where the message is addressed; an answer goes where its request came from.
    /// Takes the message. 0, or why not; the log has said it. Throws std::bad_alloc.
    std::uint32_t Send(MsgPtr msg);

    /// Closes and removes the listening socket; what is connected stays.
    void Withdraw();

    /// The same when the end comes: connections are not supervised any more.
    void StopAccepting();

    /// Sends what is queued, up to `flush_ns`, then ends the connections and the thread.
    void Stop(std::int64_t flush_ns);

    /// One line for each connection.
    std::string Report();

    void OnEvent(std::uint64_t id, std::uint32_t events) noexcept override;

  private:
    using ConnectionRef = base::Ref<Connection>;

    static constexpr std::uint64_t kListen = 1;

    void OnMessage(Connection& from, MsgPtr msg) override;
    void OnEnd(Connection& ended, const char* fault,
               const std::vector<OutstandingRequest>& lost) noexcept override;
    void OnTimer(long id) noexcept override;

    void Accept() noexcept;
    void Admit(base::UniqueFd fd);
    bool IsOwn(std::uint16_t proc_id, std::uint16_t handle) const;
    std::uint32_t SendTo(MsgPtr& msg);
    /// The connection to a process, made if need be; null with the error code in `code`.
    ConnectionRef ConnectionTo(std::uint16_t proc_id, std::uint16_t handle, std::uint32_t& code);
    ConnectionRef Connect(std::uint16_t proc_id, std::uint16_t handle, std::uint32_t& code);
    ConnectionRef AddConnection(base::UniqueFd fd, std::string peer, bool accepted,
                                std::uint32_t target);
    void ForgetTarget(const Connection& connection);
    std::vector<ConnectionRef> AllConnections();
    void DeliverLocal(MsgPtr msg);

    const BusOptions options_;
    MessageSink& sink_;
    TimerThread& timers_;
    Poller poller_;
    Serials serials_;
    base::LimitedLog log_{"bus"};
    std::atomic<bool> stopping_{false};
    std::thread thread_;  // of who starts and stops the bus

    Mutex accept_mutex_;
    ListeningSocket listening_ KELP_GUARDED_BY(accept_mutex_);
    base::UniqueFd spare_fd_ KELP_GUARDED_BY(accept_mutex_);

    Mutex mutex_;
    struct Known {
        ConnectionRef connection;
        bool accepted = false;
        std::uint32_t target = 0;  // procId << 16 | handle as it was asked for
    };
    std::unordered_map<std::uint64_t, Known> known_ KELP_GUARDED_BY(mutex_);
    std::unordered_map<std::uint32_t, ConnectionRef> by_target_ KELP_GUARDED_BY(mutex_);
    std::uint64_t last_id_ KELP_GUARDED_BY(mutex_) = kListen;
    std::size_t accepted_ KELP_GUARDED_BY(mutex_) = 0;
};

}  // namespace kelp::message
