// The set of sockets that a process waits on, and who waits on it.
//
// Design notes. A process has one epoll set. A thread of the bus waits on it always; one
// more thread at most may take the *seat* beside it and block in the set instead of on its
// own condition variable: an idle worker, or a thread that waits for an answer. The kernel
// wakes the waiter that came last, so when messages come one at a time the thread in the
// seat reads its own and the bus's thread sleeps on: no thread is woken for another.
//
// What is put into the queue of the thread in the seat by somebody else wakes it through
// an eventfd in the same set. If the bus's thread gets that wake by accident while the
// seat is taken, it passes it on: it writes again and stays away from the set for a moment,
// so that only the seat is left to get it. The thread in the seat leaves it before it looks
// at its queue, so a wake that nobody needs any more is harmless.
//
// The set is edge-triggered; nothing here takes a lock.
#pragma once

#include <sys/epoll.h>

#include <atomic>
#include <cstdint>

#include "base/unique_fd.h"

namespace kelp::message {

/// Handles what a poll found, on the thread that polled.
class PollHandler {
  public:
    virtual void OnEvent(std::uint64_t id, std::uint32_t events) noexcept = 0;

  protected:
    ~PollHandler() = default;
};

class Poller {
  public:
    explicit Poller(PollHandler& handler) : handler_(handler) {}

    /// False, with errno, when the system refuses.
    bool Open();

    /// Adds a socket, edge-triggered; `id` comes back with its events and is not kWake.
    bool Add(int fd, std::uint64_t id, std::uint32_t events);
    bool Change(int fd, std::uint64_t id, std::uint32_t events);
    void Remove(int fd);

    /// Takes the seat if it is free.
    bool TakeSeat() {
        return !seat_.load(std::memory_order_relaxed) && !closed_.load(std::memory_order_relaxed) &&
               !seat_.exchange(true);
    }
    void LeaveSeat() { seat_.store(false); }
    bool SeatTaken() const { return seat_.load(); }
    /// From now on the seat cannot be taken. Whoever sits there leaves at its next wake.
    void CloseSeat() { closed_.store(true); }

    /// Waits once, up to `wait_ns` (kNever: without end), and handles what came. Whether
    /// there was anything but a wake. REQUIRES: the caller holds the seat.
    bool PollFromSeat(std::int64_t wait_ns) { return Poll(wait_ns, nullptr); }
    /// The same for the bus's own thread.
    void PollFromBus();

    /// Wakes who is in the seat, or the bus's thread when nobody is.
    void Wake();

  private:
    static constexpr std::uint64_t kWake = ~std::uint64_t{0};
    static constexpr int kBatch = 64;

    bool Poll(std::int64_t wait_ns, bool* woken);

    PollHandler& handler_;
    base::UniqueFd set_;
    base::UniqueFd wake_;
    std::atomic<bool> seat_{false};
    std::atomic<bool> closed_{false};
};

}  // namespace kelp::message
