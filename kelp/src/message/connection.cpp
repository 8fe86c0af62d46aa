#include "message/connection.h"

#include <sys/socket.h>
#include <sys/uio.h>

#include <cerrno>
#include <new>
#include <vector>

namespace kelp::message {
namespace {

constexpr std::size_t kScratch = 64 * 1024;
constexpr std::uint32_t kReadEvents = EPOLLIN | EPOLLRDHUP;

// Where a thread that polls receives to; most frames are cut out of it right away.
unsigned char* Scratch() {
    thread_local std::vector<unsigned char> scratch(kScratch);
    return scratch.data();
}

std::size_t WireOctets(const CmdMSG* msg) {
    return kFrameLength + BlockOf(msg)->wire_length;
}

bool ExpectsAnswer(const CmdMSG& msg) {
    return msg.serial != 0 && (msg.flags & KELP_MSG_REPLY) == 0;
}

}  // namespace

Connection::Connection(ConnectionOwner& owner, Poller& poller, base::UniqueFd fd, std::uint64_t id,
                       std::string peer, const ConnectionLimits& limits)
    : owner_(owner),
      poller_(poller),
      fd_(std::move(fd)),
      id_(id),
      peer_(std::move(peer)),
      limits_(limits),
      reader_(limits.frame_octets) {}

bool Connection::Join() {
    return poller_.Add(fd_.get(), id_, kReadEvents);
}

std::uint32_t Connection::Send(MsgPtr& msg) {
    const std::size_t octets = WireOctets(msg.get());
    MutexLock lock(write_mutex_);
    if (ended_) {
        return KELP_MSG_PEER_CLOSED;
    }
    if (!queue_.empty() && queued_octets_ + octets > limits_.queue_octets) {
        return KELP_MSG_PEER_BUSY;
    }
    const bool expects_answer = ExpectsAnswer(*msg);
    if (expects_answer) {
        // Before it is sent: the answer may be there before send() returns.
        outstanding_.Add({msg->serial, msg->cmdCode, msg->srcTaskId, msg->srcTaskMgr,
                          msg->dstProcId, msg->dstProcHandle});
    }
    std::size_t sent = 0;
    if (queue_.empty()) {
        const ssize_t result =
            ::send(fd_.get(), BlockOf(msg.get())->wire(), octets, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (result == static_cast<ssize_t>(octets)) {
            return KELP_MSG_OK;
        }
        if (result < 0 && errno != EAGAIN && errno != EINTR) {
            const bool closed = errno == EPIPE || errno == ECONNRESET;
            if (expects_answer) {
                outstanding_.Cancel(msg->serial);
            }
            return closed ? KELP_MSG_PEER_CLOSED : KELP_MSG_SEND_FAILED;
        }
        sent = result > 0 ? static_cast<std::size_t>(result) : 0;
        front_sent_ = sent;
    }
    queued_octets_ += octets - sent;
    queue_.PushBack(std::move(msg));
    if (!waits_for_room_) {
        // Asked for only while something waits: otherwise each read of the peer's would
        // wake this process for nothing.
        waits_for_room_ = true;
        poller_.Change(fd_.get(), id_, kReadEvents | EPOLLOUT);
    }
    return KELP_MSG_OK;
}

void Connection::Flush() {
    MutexLock lock(write_mutex_);
    while (!queue_.empty()) {
        const CmdMSG* msg = queue_[0].get();
        const std::size_t left = WireOctets(msg) - front_sent_;
        const ssize_t result = ::send(fd_.get(), BlockOf(msg)->wire() + front_sent_, left,
                                      MSG_NOSIGNAL | MSG_DONTWAIT);
        if (result < 0) {
            if (errno == EINTR) {
                continue;
            }
            return;  // no room; any other failure shows on the reading side as well
        }
        queued_octets_ -= static_cast<std::size_t>(result);
        front_sent_ += static_cast<std::size_t>(result);
        if (static_cast<std::size_t>(result) == left) {
            queue_.PopFront();
            front_sent_ = 0;
        }
    }
    if (waits_for_room_ && !ended_) {
        waits_for_room_ = false;
        poller_.Change(fd_.get(), id_, kReadEvents);
    }
}

void Connection::OnEvents(std::uint32_t events) noexcept {
    if ((events & EPOLLOUT) != 0) {
        Flush();
    }
    if ((events & ~static_cast<std::uint32_t>(EPOLLOUT)) != 0) {
        ReadTurns((events & (EPOLLRDHUP | EPOLLHUP | EPOLLERR)) != 0);
    }
}

void Connection::ReadTurns(bool to_the_end) noexcept {
    if (turns_.fetch_add(1) != 0) {
        return;
    }
    int worked_off = 1;
    for (;;) {
        const char* fault = nullptr;
        try {
            fault = Read(to_the_end);
        } catch (const std::bad_alloc&) {
            fault = "no memory for what it sent";
        }
        if (fault != nullptr) {
            End(*fault == '\0' ? abort_fault_.load() : fault);
            return;  // with the turn: nobody reads again
        }
        const int before = turns_.fetch_sub(worked_off);
        if (before == worked_off) {
            return;
        }
        worked_off = before - worked_off;
        to_the_end = true;  // the other thread may have been told of the end
    }
}

const char* Connection::Read(bool to_the_end) {
    const auto give = [this](MsgPtr msg) {
        if ((msg->flags & KELP_MSG_REPLY) != 0) {
            MutexLock lock(write_mutex_);
            outstanding_.Remove(*msg);
        }
        owner_.OnMessage(*this, std::move(msg));
    };
    unsigned char* scratch = Scratch();
    std::size_t received = 0;
    for (;;) {
        const std::span<unsigned char> rest = reader_.Rest();
        iovec parts[] = {{rest.data(), rest.size()}, {scratch, kScratch}};
        msghdr header{};
        header.msg_iov = parts;
        header.msg_iovlen = 2;
        const ssize_t result = rest.empty() ? ::recv(fd_.get(), scratch, kScratch, MSG_DONTWAIT)
                                            : ::recvmsg(fd_.get(), &header, MSG_DONTWAIT);
        if (result == 0) {
            return reader_.Midway() ? "it closed the connection inside a frame" : "";
        }
        if (result < 0) {
            if (errno == EINTR) {
                continue;
            }
            if (errno == EAGAIN) {
                break;
            }
            return "";  // reset: the peer ended with octets unread
        }
        const auto count = static_cast<std::size_t>(result);
        const std::size_t direct = std::min(count, rest.size());
        received += count;
        if ((direct > 0 && !reader_.Received(direct, give)) ||
            !reader_.Feed(scratch, count - direct, give)) {
            return reader_.why();
        }
        if (count < rest.size() + kScratch && !to_the_end) {
            break;  // a short read: the socket is empty
        }
    }
    if (!reader_.Midway()) {
        midway_since_.store(0, std::memory_order_relaxed);
    } else if (midway_since_.load(std::memory_order_relaxed) == 0 || received >= kScratch) {
        midway_since_.store(base::SystemMonotonicNs(), std::memory_order_relaxed);
    }
    return nullptr;
}

void Connection::Abort(const char* fault) {
    abort_fault_.store(fault);
    ::shutdown(fd_.get(), SHUT_RDWR);
}

void Connection::End(const char* fault) noexcept {
    std::vector<OutstandingRequest> lost;
    base::Ring<MsgPtr> unsent;
    {
        MutexLock lock(write_mutex_);
        ended_ = true;
        lost = outstanding_.TakeAll();
        std::swap(unsent, queue_);
        queued_octets_ = 0;
    }
    midway_since_.store(0, std::memory_order_relaxed);
    poller_.Remove(fd_.get());
    ::shutdown(fd_.get(), SHUT_RDWR);
    owner_.OnEnd(*this, fault, lost);
}

std::size_t Connection::QueuedOctets() {
    MutexLock lock(write_mutex_);
    return queued_octets_;
}

std::size_t Connection::OutstandingCount() {
    MutexLock lock(write_mutex_);
    return outstanding_.Count();
}

bool Connection::HoldsSerial(std::uint32_t serial) {
    MutexLock lock(write_mutex_);
    return outstanding_.Holds(serial);
}

}  // namespace kelp::message
