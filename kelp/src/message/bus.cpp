#include "message/bus.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <system_error>

namespace kelp::message {
namespace {

const LocationInfo kWhere("bus", "", 0);
constexpr int kConnectAttempts = 200;  // a millisecond apart, while a backlog is full

std::string PeerName(std::uint16_t proc_id, std::uint16_t handle) {
    return std::to_string(proc_id) + "." + std::to_string(handle);
}

const char* Describe(std::uint32_t code) {
    switch (code) {
        case KELP_MSG_NO_PEER:
            return "it is not running";
        case KELP_MSG_PEER_CLOSED:
            return "it closed the connection";
        case KELP_MSG_PEER_BUSY:
            return "it does not read what it is sent";
        default:
            return "the system refused";
    }
}

std::uint32_t TargetKey(std::uint16_t proc_id, std::uint16_t handle) {
    return std::uint32_t{proc_id} << 16 | handle;
}

}  // namespace

Bus::Bus(const BusOptions& options, MessageSink& sink, TimerThread& timers)
    : options_(options), sink_(sink), timers_(timers), poller_(*this) {}

Bus::~Bus() {
    Stop(0);
}

bool Bus::Start(std::string& why) {
    if (!poller_.Open()) {
        why = "no epoll set: " + std::generic_category().message(errno);
        return false;
    }
    if (options_.listen) {
        MutexLock lock(accept_mutex_);
        if (!PrepareRunDir(options_.run_dir, why) ||
            !listening_.Open(options_.run_dir, options_.identity.proc_id,
                             options_.identity.proc_handle, why)) {
            return false;
        }
        spare_fd_ = base::UniqueFd(::open("/dev/null", O_RDONLY | O_CLOEXEC));
        if (!poller_.Add(listening_.fd(), kListen, EPOLLIN)) {
            why = "the socket cannot be polled: " + std::generic_category().message(errno);
            return false;
        }
    }
    try {
        thread_ = std::thread([this] { poller_.Keep(); });
    } catch (const std::system_error& error) {
        why = std::string("no thread for the bus: ") + error.what();
        return false;
    }
    if (options_.listen) {
        timers_.Arm(this,
                    std::max<std::int64_t>(options_.frame_deadline_ns / 4, base::kMillisecond));
    }
    return true;
}

std::uint32_t Bus::NextSerial() {
    return serials_.Next([this](std::uint32_t serial) {
        for (const ConnectionRef& connection : AllConnections()) {
            if (connection->HoldsSerial(serial)) {
                return true;
            }
        }
        return false;
    });
}

bool Bus::IsOwn(std::uint16_t proc_id, std::uint16_t handle) const {
    const Identity& own = options_.identity;
    if (proc_id != own.proc_id || !(handle == own.proc_handle || handle == 0)) {
        return false;
    }
    if (handle == 0 && options_.listen) {
        // The lowest running instance may be another one.
        for (const std::uint16_t found : HandlesOf(options_.run_dir, proc_id)) {
            if (found >= own.proc_handle) {
                break;
            }
            return false;
        }
    }
    return true;
}

std::uint32_t Bus::Send(MsgPtr msg) {
    if (!Seal(msg.get())) {
        LogProcess::Error(KELP_MSG_SEND_FAILED,
                          "[bus] a message's header claims a body that it does not have", kWhere);
        return KELP_MSG_SEND_FAILED;
    }
    if (BlockOf(msg.get())->wire_length > options_.limits.frame_octets) {
        LogProcess::Error(KELP_MSG_TOO_LONG,
                          "[bus] a message of " + std::to_string(BlockOf(msg.get())->wire_length) +
                              " octets is above the limit, command " + std::to_string(msg->cmdCode),
                          kWhere);
        return KELP_MSG_TOO_LONG;
    }
    const std::uint16_t proc_id = msg->dstProcId;
    const std::uint16_t handle = msg->dstProcHandle;
    const std::uint32_t cmd_code = msg->cmdCode;
    const std::uint32_t code = SendTo(msg);
    if (code != KELP_MSG_OK) {
        log_.Warn("[bus] command " + std::to_string(cmd_code) + " to process " +
                  PeerName(proc_id, handle) + " was not sent: " + Describe(code));
    }
    return code;
}

std::uint32_t Bus::SendTo(MsgPtr& msg) {
    MsgBlock* block = BlockOf(msg.get());
    const bool is_answer = (msg->flags & KELP_MSG_REPLY) != 0;
    if (is_answer && block->route == Route::kConnection) {
        auto* connection = static_cast<Connection*>(block->origin);
        const std::uint32_t code = connection->Send(msg);
        if (code == KELP_MSG_PEER_BUSY) {
            // Its requests would wait for answers that never come: let it know.
            connection->Abort("it does not read its answers");
        }
        return code;
    }
    if ((is_answer && block->route == Route::kLocal) || IsOwn(msg->dstProcId, msg->dstProcHandle)) {
        DeliverLocal(std::move(msg));
        return KELP_MSG_OK;
    }
    std::uint32_t code = KELP_MSG_OK;
    for (int attempt = 0; attempt < 2; ++attempt) {
        const ConnectionRef connection = ConnectionTo(msg->dstProcId, msg->dstProcHandle, code);
        if (!connection) {
            break;
        }
        code = connection->Send(msg);
        if (code != KELP_MSG_PEER_CLOSED) {
            break;
        }
        ForgetTarget(*connection);  // its reader ends it; nothing of the message was sent
    }
    return code;
}

void Bus::DeliverLocal(MsgPtr msg) {
    MsgBlock* block = BlockOf(msg.get());
    if (block->origin != nullptr) {
        block->origin->Release();
        block->origin = nullptr;
    }
    block->route = Route::kLocal;
    block->received = true;
    msg->clientAddress = 0;
    sink_.Deliver(std::move(msg));
}

Bus::ConnectionRef Bus::ConnectionTo(std::uint16_t proc_id, std::uint16_t handle,
                                     std::uint32_t& code) {
    {
        MutexLock lock(mutex_);
        const auto found = by_target_.find(TargetKey(proc_id, handle));
        if (found != by_target_.end()) {
            return found->second;
        }
    }
    if (handle != 0) {
        return Connect(proc_id, handle, code);
    }
    code = KELP_MSG_NO_PEER;
    for (const std::uint16_t running : HandlesOf(options_.run_dir, proc_id)) {
        ConnectionRef connection = Connect(proc_id, running, code);
        if (connection) {
            MutexLock lock(mutex_);
            const auto known = known_.find(connection->id());
            if (known != known_.end()) {
                by_target_[TargetKey(proc_id, 0)] = connection;
            }
            return connection;
        }
    }
    return nullptr;
}

Bus::ConnectionRef Bus::Connect(std::uint16_t proc_id, std::uint16_t handle, std::uint32_t& code) {
    const std::uint32_t target = TargetKey(proc_id, handle);
    {
        MutexLock lock(mutex_);
        const auto found = by_target_.find(target);
        if (found != by_target_.end()) {
            return found->second;
        }
    }
    code = KELP_MSG_NO_PEER;
    sockaddr_un address;
    if (!SocketAddress(options_.run_dir, proc_id, handle, address)) {
        return nullptr;
    }
    base::UniqueFd fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!fd) {
        code = KELP_MSG_SEND_FAILED;
        log_.Warn("[bus] no socket: " + std::generic_category().message(errno));
        return nullptr;
    }
    for (int attempt = 1;; ++attempt) {
        if (::connect(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
            break;
        }
        if (errno == EAGAIN && attempt < kConnectAttempts && !stopping_.load()) {
            // The peer's backlog is full: it is busy accepting, or frozen.
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            continue;
        }
        if (errno == EAGAIN) {
            code = KELP_MSG_PEER_BUSY;
        }
        return nullptr;
    }
    unsigned peer_uid = 0;
    if (!PeerIsOwnUser(fd.get(), peer_uid)) {
        log_.Warn("[bus] process " + PeerName(proc_id, handle) + " belongs to user " +
                  std::to_string(peer_uid) + ": not used");
        return nullptr;
    }
    ConnectionRef connection =
        AddConnection(std::move(fd), PeerName(proc_id, handle), false, target);
    if (!connection) {
        code = KELP_MSG_SEND_FAILED;
    }
    return connection;
}

Bus::ConnectionRef Bus::AddConnection(base::UniqueFd fd, std::string peer, bool accepted,
                                      std::uint32_t target) {
    ConnectionRef connection;
    {
        MutexLock lock(mutex_);
        if (!accepted) {
            const auto found = by_target_.find(target);
            if (found != by_target_.end()) {
                return found->second;  // another thread was quicker
            }
        } else if (accepted_ >= options_.max_connections) {
            return nullptr;
        }
        if (stopping_.load()) {
            return nullptr;
        }
        const std::uint64_t id = ++last_id_;
        connection = ConnectionRef::Adopt(
            new Connection(*this, poller_, std::move(fd), id, std::move(peer), options_.limits));
        known_.emplace(id, Known{connection, accepted, target});
        if (accepted) {
            ++accepted_;
        } else {
            by_target_[target] = connection;
        }
    }
    if (!connection->Join()) {
        log_.Warn("[bus] a connection cannot be polled: " + std::generic_category().message(errno));
        connection->Abort(nullptr);
        connection->OnEvents(EPOLLHUP);  // here, since the set will never tell
        return nullptr;
    }
    return connection;
}

void Bus::ForgetTarget(const Connection& connection) {
    MutexLock lock(mutex_);
    for (auto at = by_target_.begin(); at != by_target_.end();) {
        at = at->second.get() == &connection ? by_target_.erase(at) : std::next(at);
    }
}

std::vector<Bus::ConnectionRef> Bus::AllConnections() {
    MutexLock lock(mutex_);
    std::vector<ConnectionRef> all;
    all.reserve(known_.size());
    for (const auto& [id, known] : known_) {
        all.push_back(known.connection);
    }
    return all;
}

void Bus::OnEvent(std::uint64_t id, std::uint32_t events) noexcept {
    if (id == kListen) {
        Accept();
        return;
    }
    ConnectionRef connection;
    {
        MutexLock lock(mutex_);
        const auto found = known_.find(id);
        if (found != known_.end()) {
            connection = found->second.connection;
        }
    }
    if (connection) {
        connection->OnEvents(events);
    }
}

void Bus::OnMessage(Connection& from, MsgPtr msg) {
    if ((msg->flags & KELP_MSG_REPLY) == 0) {
        MsgBlock* block = BlockOf(msg.get());
        from.AddRef();
        block->origin = &from;
        block->route = Route::kConnection;
    }
    sink_.Deliver(std::move(msg));
}

void Bus::OnEnd(Connection& ended, const char* fault,
                const std::vector<OutstandingRequest>& lost) noexcept {
    ForgetTarget(ended);
    ConnectionRef last;
    {
        MutexLock lock(mutex_);
        const auto found = known_.find(ended.id());
        if (found != known_.end()) {
            accepted_ -= found->second.accepted ? 1 : 0;
            last = std::move(found->second.connection);
            known_.erase(found);
        }
    }
    if (fault != nullptr && !stopping_.load()) {
        log_.Warn("[bus] connection with " + ended.peer() + " closed: " + fault);
    }
    for (const OutstandingRequest& request : lost) {
        MsgPtr answer(KelpMsgAlloc(0));
        if (answer == nullptr) {
            continue;  // its sender's time-out remains
        }
        answer->flags = KELP_MSG_REPLY;
        answer->serial = request.serial;
        answer->cmdCode = request.cmd_code;
        answer->errorCode = KELP_MSG_PEER_CLOSED;
        answer->srcProcId = request.proc_id;
        answer->srcProcHandle = request.proc_handle;
        answer->dstProcId = options_.identity.proc_id;
        answer->dstProcHandle = options_.identity.proc_handle;
        answer->dstTaskId = request.task_id;
        answer->dstTaskMgr = request.task_mgr;
        sink_.Deliver(std::move(answer));
    }
}

void Bus::Accept() noexcept {
    MutexLock lock(accept_mutex_);
    while (listening_.fd() >= 0) {
        base::UniqueFd fd(
            ::accept4(listening_.fd(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (fd) {
            try {
                Admit(std::move(fd));
            } catch (const std::bad_alloc&) {
                log_.Warn("[bus] a connection was refused: no memory");
            }
            continue;
        }
        if (errno == EINTR || errno == ECONNABORTED) {
            continue;
        }
        if ((errno == EMFILE || errno == ENFILE) && spare_fd_) {
            // Without this the backlog would stay, unheard of until the next connection.
            spare_fd_.Close();
            base::UniqueFd refused(::accept4(listening_.fd(), nullptr, nullptr, SOCK_CLOEXEC));
            const bool any = static_cast<bool>(refused);
            refused.Close();
            spare_fd_ = base::UniqueFd(::open("/dev/null", O_RDONLY | O_CLOEXEC));
            log_.Warn("[bus] a connection was refused: no file descriptor left");
            if (any) {
                continue;
            }
        }
        return;
    }
}

void Bus::Admit(base::UniqueFd fd) {
    unsigned peer_uid = 0;
    if (!PeerIsOwnUser(fd.get(), peer_uid)) {
        log_.Warn("[bus] a connection of user " + std::to_string(peer_uid) + " was refused");
        return;
    }
    if (!AddConnection(std::move(fd), "a peer", true, 0)) {
        log_.Warn("[bus] a connection was refused: there are " +
                  std::to_string(options_.max_connections) + " already");
    }
}

void Bus::OnTimer(long) noexcept {
    Accept();  // what a passing shortage of memory may have left in the backlog
    const std::int64_t now = base::SystemMonotonicNs();
    try {
        for (const ConnectionRef& connection : AllConnections()) {
            const std::int64_t since = connection->midway_since();
            if (since != 0 && now - since > options_.frame_deadline_ns) {
                connection->Abort("it left a frame unfinished");
            }
        }
    } catch (const std::bad_alloc&) {
        return;  // the next time
    }
}

void Bus::Withdraw() {
    MutexLock lock(accept_mutex_);
    if (listening_.fd() >= 0) {
        poller_.Remove(listening_.fd());
    }
    listening_.Close();
}

void Bus::StopAccepting() {
    timers_.CancelAll(this);
    Withdraw();
}

void Bus::Stop(std::int64_t flush_ns) {
    StopAccepting();
    const std::int64_t until = base::SystemMonotonicNs() + flush_ns;
    for (const ConnectionRef& connection : AllConnections()) {
        while (connection->QueuedOctets() > 0 && base::SystemMonotonicNs() < until) {
            pollfd room{connection->fd(), POLLOUT, 0};
            ::poll(&room, 1, 10);
            connection->OnEvents(EPOLLOUT);
        }
    }
    stopping_.store(true);
    poller_.CloseSeat();
    while (poller_.SeatTaken()) {
        poller_.Wake();
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    if (thread_.joinable()) {
        poller_.StopKeeper();
        thread_.join();
    }
    for (const ConnectionRef& connection : AllConnections()) {
        connection->Abort(nullptr);
        connection->OnEvents(EPOLLHUP);  // on this thread: no other is left to read
    }
}

std::string Bus::Report() {
    std::string text;
    for (const ConnectionRef& connection : AllConnections()) {
        text += "connection with " + connection->peer() + ": " +
                std::to_string(connection->QueuedOctets()) + " octets to send, " +
                std::to_string(connection->OutstandingCount()) + " requests without answer\n";
    }
    return text;
}

}  // namespace kelp::message
