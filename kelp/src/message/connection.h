// One connection to another process: frames in, frames out, and the requests that wait
// for an answer over it.
//
// Design notes. Two threads at most may be told at the same time that octets have arrived
// (see the poller's notes). Reading goes by turns: `turns_` counts the tellings that have
// not been worked off; who finds it at 0 reads, another only counts and leaves, and the
// reader goes on until it has worked off all of them. The frame reader belongs to who has
// the turn. Writing is under `write_mutex_`, from the sender's own thread; what the socket
// does not take is queued, up to a bound, and written when the set says there is room.
//
// A connection ends on the reading side only: end of stream, broken frames, or a socket
// that somebody shut down. The reader keeps the turn then, so nobody reads any more. The
// object lives on while a message refers to it; its descriptor is closed with it.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/mutex.h"
#include "base/ref.h"
#include "base/ring.h"
#include "base/unique_fd.h"
#include "message/block.h"
#include "message/frame.h"
#include "message/outstanding.h"
#include "message/poller.h"

namespace kelp::message {

class Connection;

/// What a connection tells whom it belongs to, on the thread that reads.
class ConnectionOwner {
  public:
    virtual void OnMessage(Connection& from, MsgPtr msg) = 0;
    /// The connection has ended; `fault` is null when the peer just closed it. `lost` are
    /// the requests that will not be answered.
    virtual void OnEnd(Connection& ended, const char* fault,
                       const std::vector<OutstandingRequest>& lost) noexcept = 0;

  protected:
    ~ConnectionOwner() = default;
};

struct ConnectionLimits {
    std::size_t frame_octets;
    std::size_t queue_octets;
};

class Connection final : public base::Counted {
  public:
    /// Takes a connected, non-blocking socket. `peer` names the other end in the log.
    Connection(ConnectionOwner& owner, Poller& poller, base::UniqueFd fd, std::uint64_t id,
               std::string peer, const ConnectionLimits& limits);

    std::uint64_t id() const { return id_; }
    int fd() const { return fd_.get(); }
    const std::string& peer() const { return peer_; }

    /// Adds the socket to the set. False, with errno, when the system refuses.
    bool Join();

    /// Sends a sealed message, or queues it. 0, or an error code: then nothing of it was
    /// sent. A request with a serial number is remembered until its answer passes.
    std::uint32_t Send(MsgPtr& msg);

    /// The set's events for this connection.
    void OnEvents(std::uint32_t events) noexcept;

    /// Makes the connection end soon, on the reading side, with `fault` as the reason
    /// (a literal).
    void Abort(const char* fault);

    /// When the frame that is being received began, 0 when none is.
    std::int64_t midway_since() const { return midway_since_.load(std::memory_order_relaxed); }

    /// Octets that wait to be sent; requests that wait for an answer.
    std::size_t QueuedOctets();
    std::size_t OutstandingCount();
    bool HoldsSerial(std::uint32_t serial);

  private:
    ~Connection() override = default;

    void ReadTurns(bool to_the_end) noexcept;
    /// Null, or why the connection is at its end ("" when the peer closed it).
    const char* Read(bool to_the_end);
    void Flush();
    void End(const char* fault) noexcept;

    ConnectionOwner& owner_;
    Poller& poller_;
    const base::UniqueFd fd_;
    const std::uint64_t id_;
    const std::string peer_;
    const ConnectionLimits limits_;

    std::atomic<int> turns_{0};
    FrameReader reader_;  // who has the turn
    std::atomic<std::int64_t> midway_since_{0};
    std::atomic<const char*> abort_fault_{nullptr};

    Mutex write_mutex_;
    bool ended_ KELP_GUARDED_BY(write_mutex_) = false;
    bool waits_for_room_ KELP_GUARDED_BY(write_mutex_) = false;
    base::Ring<MsgPtr> queue_ KELP_GUARDED_BY(write_mutex_);
    std::size_t queued_octets_ KELP_GUARDED_BY(write_mutex_) = 0;
    std::size_t front_sent_ KELP_GUARDED_BY(write_mutex_) = 0;  // octets of queue_'s first
    Outstanding outstanding_ KELP_GUARDED_BY(write_mutex_);
};

}  // namespace kelp::message
