// The set of sockets that a process waits on, and who waits on it.
//
// Design notes. A process has one epoll set and a thread of the bus, the *keeper*. One
// other thread at a time may take the *seat*: it blocks in the set instead of on its own
// condition variable - an idle worker, or a thread that waits for an answer. When messages
// come one at a time, the thread in the seat reads its own and no thread is woken for
// another: a round trip is a send, a wait and a receive on either side.
//
// Somebody must watch the set always, though what leaves the seat may be back in
// microseconds (a short handler, the next request) or never. A thread that was back soon
// the last times *promises* it when it leaves, and the keeper then stays out of the set: if
// it were in it, it would be woken by whatever comes in between, only to find the seat
// taken again. The keeper looks once a millisecond whether the promise was kept, and takes
// over if it was not. A thread that does not promise makes the keeper watch at once. When
// the seat has been taken without a break for a while, the keeper sleeps until it is left.
//
// `keeper_` says what the keeper does; `seat_` and `promised_` are written before it is
// read by who leaves the seat, and read after it was written by the keeper, all in the one
// order of sequentially consistent operations: one of them sees the other.
//
// What is put into the queue of the thread in the seat by somebody else wakes it through
// an eventfd in the same set. If the keeper gets that wake by accident while the seat is
// taken, it writes again and leaves the set, so that only the seat is left to get it. The
// thread in the seat leaves it before it looks at its queue, so a wake that nobody needs
// any more is harmless.
//
// The set is edge-triggered.
#pragma once

#include <sys/epoll.h>

#include <atomic>
#include <cstdint>

#include "base/mutex.h"
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
    bool TakeSeat();
    void LeaveSeat();
    bool SeatTaken() const { return seat_.load(); }
    /// From now on the seat cannot be taken. Whoever sits there leaves at its next wake.
    void CloseSeat() { closed_.store(true); }

    /// Waits once, up to `wait_ns` (kNever: without end), and handles what came. Whether
    /// there was anything but a wake. REQUIRES: the caller holds the seat.
    bool PollFromSeat(std::int64_t wait_ns) { return Poll(wait_ns, nullptr); }

    /// The keeper's life: watches the set, or rests, until StopKeeper().
    void Keep();
    void StopKeeper();

    /// Wakes who is in the seat, or the keeper if it watches the set.
    void Wake();

  private:
    static constexpr std::uint64_t kWake = ~std::uint64_t{0};
    static constexpr int kBatch = 64;

    enum class Keeper { kWatching, kTicking, kSleeping };

    bool Poll(std::int64_t wait_ns, bool* woken);
    bool MayRest() const { return seat_.load() || promised_.load(); }
    void Rest();
    void NotifyKeeper();

    PollHandler& handler_;
    base::UniqueFd set_;
    base::UniqueFd wake_;
    std::atomic<bool> seat_{false};
    std::atomic<bool> promised_{false};
    std::atomic<bool> closed_{false};
    std::atomic<bool> stopped_{false};
    std::atomic<unsigned> entries_{0};  // how often the seat was taken
    std::atomic<Keeper> keeper_{Keeper::kWatching};
    Mutex keeper_mutex_;
    CondVar keeper_called_;
};

}  // namespace kelp::message
