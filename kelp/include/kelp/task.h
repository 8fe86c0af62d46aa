// kelp/task.h - a process on the platform: its identity, workers, tasks, commands, events.
//
// A server:
//
//     int main() {
//         KelpAppOptions options = KelpAppOptions::FromEnvironment();
//         options.procId = 3001;
//         if (!KelpAppMgr::Initialize(options)) return 1;       // the log says why
//         auto* workers = new KelpGnlTaskMgr(KelpAppMgr::Instance(), nullptr, 4, 10);
//         if (!workers->Initialize()) return 1;
//         KelpAppMgr::Instance()->TMInsertTaskMgr(workers, true);
//         KelpAppMgr::WaitForStopSignal();                      // commands are served
//         KelpAppMgr::Destroy();
//     }
//
// Its commands are declared by objects of static storage, see frameutil/msg.h. A client
// initialises with procId 0, needs no task manager and calls from any thread.
//
// A task manager owns worker threads and tasks. A task runs on one worker at a time; it
// has a queue of messages and timers. A request whose target task is 0 gets a task of its
// own, made by the command's registration, which ends with the handler unless the handler
// set the task state KELP_TASK_WAITING. Workers that wait inside a task for an answer need
// no other worker to get it.
//
// Thread rule: thread-safe, except KelpTask, whose operations belong to the worker that
// runs it (one thread) where nothing else is said. Nothing throws but std::bad_alloc
// where containers are filled during set-up.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "kelp/export.h"
#include "kelp/message.h"

class ACE_Thread_Manager;
class AsnType;
class KelpAppMgr;
class KelpGnlTask;
class KelpTask;
class KelpTaskMgr;

namespace kelp::task {
class Core;
class Manager;
struct TaskState;
}  // namespace kelp::task

/// What a process is started with.
struct KELP_API KelpAppOptions {
    std::uint16_t procId = 0;      ///< process type; 0: a client, which does not listen
    std::uint16_t procHandle = 1;  ///< instance
    std::uint16_t deskId = 0;
    /// Where the sockets are. Empty: KELP_RUN_DIR, else $OSS_ROOT/var/run, else
    /// /tmp/kelp-<uid>. Made when missing (mode 0700); must belong to this user and be
    /// writable by nobody else.
    std::string runDir;
    std::size_t maxFrameOctets = std::size_t{64} << 20;   ///< of a message, both ways
    std::size_t sendQueueOctets = std::size_t{16} << 20;  ///< waiting for one slow peer
    std::size_t maxConnections = 1024;                    ///< accepted ones, at a time
    int frameDeadlineMs = 10000;           ///< a frame begun must be complete by then
    std::size_t requestQueueLimit = 8192;  ///< requests waiting for a worker, each manager
    std::size_t taskQueueLimit = 4096;     ///< messages waiting in one task
    int shutdownMs = 10000;                ///< how long Destroy() waits for handlers
    /// Nanoseconds of a monotonic clock, for tests and simulation; null: the system's.
    /// While it is set, waits and timers look at it once a millisecond.
    std::int64_t (*monotonicNs)() = nullptr;

    /// The defaults with KELP_PROC_ID, KELP_PROC_HANDLE and KELP_DESK_ID where they hold
    /// numbers up to 65535.
    static KelpAppOptions FromEnvironment();
};

/// The process on the platform: one at a time.
class KELP_API KelpAppMgr {
  public:
    /// Takes the identity, connects the process to the bus and, with a procId, listens.
    /// False, with a log line that says why, when it is initialised already, or, with a
    /// procId, the run directory is not safe to use or another process has this identity.
    /// A client looks into the directory when it sends, and only uses sockets whose
    /// process belongs to its own user.
    static bool Initialize(const KelpAppOptions& options);

    /// Whether Initialize() succeeded and Destroy() has not begun.
    static bool IsInitialized() noexcept;

    /// The one object; never null, also while nothing is initialised.
    static KelpAppMgr* Instance() noexcept;

    /// Ends it all within shutdownMs and a second: new work is refused, threads that wait
    /// for answers get KELP_MSG_STOPPED, queued requests are answered so, running
    /// handlers finish and their answers leave, owned task managers are deleted, threads
    /// joined, the socket removed. A handler that does not return in time is logged and
    /// its thread abandoned. It is not an error if nothing is initialised. Afterwards
    /// Initialize() works again.
    static void Destroy();

    /// Blocks until SIGINT or SIGTERM arrives and returns its number. The handlers that
    /// were installed before come back; a signal that arrives before the call is theirs.
    /// `ready`, which must not throw, is called once signals are this call's: the place to
    /// tell others that the process serves and may be stopped. To be called by one thread at
    /// a time.
    static int WaitForStopSignal(void (*ready)() = nullptr);

    /// Makes `mgr` known under its identifier, so that messages reach it; before or after
    /// its Initialize(). With `owned`, Destroy() deletes it if it was initialised (one
    /// that never was stays its maker's). True on success; false when it is null, its
    /// identifier is 0 or taken, or nothing is initialised.
    bool TMInsertTaskMgr(KelpTaskMgr* mgr, bool owned);

    /// Sends a message and does not wait. Takes `msg` in every case. The source fields
    /// are sent as they stand. Non-zero on success: the message is on its way (a peer
    /// that ends later is not noticed). Zero when it could not be sent; the log says why.
    int SendMSG(CmdMSG* msg);

    /// Sends `msg`, with a serial number of its own, and waits up to `timeoutSeconds`
    /// (0 and less: does not wait) for its answer. Takes `msg` in every case. Meant for
    /// threads outside any task. Non-zero on success: `reply` is the answer, or null when
    /// the platform has none (this one always has). Zero on failure, also when the answer carries
    /// an error code: KelpMsgGetErrorCode of `reply` says which (the peer's, or KELP_MSG_TIMEOUT,
    /// KELP_MSG_NO_PEER, KELP_MSG_STOPPED, ...). What `reply` holds is the caller's to free
    /// in both cases.
    int KelpSendSynMsgToMDP(CmdMSG* msg, CmdMSG*& reply, int timeoutSeconds);

    KelpAppMgr(const KelpAppMgr&) = delete;
    KelpAppMgr& operator=(const KelpAppMgr&) = delete;

  private:
    KelpAppMgr() = default;
};

/// A set of tasks and the worker threads that run them.
class KELP_API KelpTaskMgr {
  public:
    /// Ends the workers as KelpAppMgr::Destroy() does, and the tasks with them.
    virtual ~KelpTaskMgr();

    /// Starts the worker threads. True on success; false, with a log line, when the
    /// application manager is not initialised, the identifier is 0, the number of
    /// threads is not 1 to 1000, a thread cannot be started, or it was called before.
    virtual bool Initialize();

    unsigned char GetTaskMgrId() const noexcept;

    /// Makes `task` the static task `number` (1 to 4095), reachable as task identifier
    /// `number` until the manager ends, and the manager's to delete. False, the task
    /// the caller's still, when it is null, belongs to another manager, or the number
    /// is taken or out of range.
    bool InsertStaticTask(unsigned short number, KelpTask* task);

    KelpTaskMgr(const KelpTaskMgr&) = delete;
    KelpTaskMgr& operator=(const KelpTaskMgr&) = delete;

  protected:
    KelpTaskMgr(KelpAppMgr* appMgr, ACE_Thread_Manager* threads, unsigned char id, int threadCount);

  private:
    friend class KelpAppMgr;
    friend class KelpTask;
    std::shared_ptr<kelp::task::Manager> state_;
};

/// The general task manager.
class KELP_API KelpGnlTaskMgr : public KelpTaskMgr {
  public:
    /// `threads` makes and joins the worker threads; null: ACE_Thread_Manager's instance.
    KelpGnlTaskMgr(KelpAppMgr* appMgr, ACE_Thread_Manager* threads, unsigned char id,
                   int threadCount);
    ~KelpGnlTaskMgr() override;
};

/// Task states; the manager acts on KELP_TASK_WAITING alone, callers may use others.
enum KelpTaskState : int {
    KELP_TASK_NEW = 0,
    KELP_TASK_ENDED = 4,
    KELP_TASK_WAITING = 5,  ///< the turn is over, the task waits for its next message or timer
};

/// A task: what one conversation or one recurring job of a process runs in.
class KELP_API KelpTask {
  public:
    /// A task of `mgr`. `name` is copied and appears in the log.
    explicit KelpTask(KelpTaskMgr* mgr, const char* name = "");
    /// REQUIRES: the task is not in the manager's hands (it was never inserted, and its
    /// manager's workers have not begun to run it), or the manager deletes it.
    virtual ~KelpTask();

    /// What the task does with a message that nobody waits for; takes it. This default
    /// runs a registered command's handler on a request, answers KELP_MSG_NO_COMMAND to
    /// another request that expects an answer, and drops the rest. What an overriding one
    /// throws is logged; answering is its own affair, since it may have answered already.
    virtual void KelpTaskMessage(CmdMSG* msg);

    /// Called on a worker each time a timer of this task has run out.
    virtual void KelpTaskTimeInterval(long timerId);

    /// Starts a timer that fires every `interval` seconds (at least 1) until it is
    /// deleted; firings that the task was too busy for are not made up. Result: its
    /// identifier, above 0; -1 when the interval is below 1 or the manager has stopped.
    /// Any thread.
    long SetTaskTimeInterval(long interval);
    /// Ends a timer; a firing that has not reached the task is taken back. True if the
    /// timer was there. Any thread.
    bool DeleteTaskTimeInterval(long timerId);

    /// Any thread.
    void SetTaskState(int state) noexcept;
    int GetTaskState() const noexcept;

    /// The identifier under which messages reach this task. A task that was not given a
    /// number gets one at the first call (0 when all are in use).
    unsigned short GetTaskId();
    KelpTaskMgr* GetTaskMgr() const noexcept;
    const char* GetTaskName() const noexcept;

    /// A serial number that is in nobody's use in this process, for one request and its
    /// answer; 0 when this task holds KELP_TASK_MAX_SERIALS already or the manager has
    /// stopped. It may be given back before the answer is there: numbers come round only
    /// after all others, and never while an answer to one is outstanding.
    std::uint32_t AllocMsgSn();
    /// Gives a serial number back. It is not an error if the task does not hold it.
    void RevokeMsgSn(std::uint32_t serial);
    static constexpr std::size_t KELP_TASK_MAX_SERIALS = 1024;

    /// Sends a message for this task (a request as it stands, or an answer made with
    /// KelpMsgAllocAnswer) and takes it. Non-zero on success. Zero when it could not be
    /// sent; if it was a request with a serial number, an answer with the error code is
    /// put into this task's queue as well, so that who waits for it learns it there.
    int KelpCmdSendAnsFrameCB(CmdMSG* msg);

    /// Takes the first message out of this task's queue, waiting up to `seconds` (below 0:
    /// as 0) for one. Non-zero on success: `msg` is the caller's. Zero on failure:
    /// KelpMsgGetErrorCode of `msg` is KELP_MSG_TIMEOUT or KELP_MSG_STOPPED.
    int KelpSynRecvEx(CmdMSG*& msg, int seconds);

    /// Puts a message in front of all others of this task's queue and takes it; null is
    /// ignored. Never refused: what was taken out has room to go back.
    void EnqueueHead(CmdMSG* msg);

    KelpTask(const KelpTask&) = delete;
    KelpTask& operator=(const KelpTask&) = delete;

  private:
    friend class KelpTaskMgr;
    friend class kelp::task::Manager;
    std::unique_ptr<kelp::task::TaskState> state_;
};

/// The task that a command's handler runs in.
class KELP_API KelpGnlTask : public KelpTask {
  public:
    explicit KelpGnlTask(KelpTaskMgr* mgr, const char* name = "");
    ~KelpGnlTask() override;
};

/// The task that the calling thread runs, or null.
KELP_API KelpTask* KelpGetCurrentTask() noexcept;

/// How a command is served. `reqCreator` and `rspCreator` return new objects that the
/// platform owns. Null pointers: `taskCreator` - a KelpGnlTask; `reqCreator` - the body
/// is not decoded, the handler gets a null request; `rspCreator` - the handler gets a null
/// response and the answer's body is empty.
struct KelpTaskRegister {
    unsigned char taskMgrId;
    unsigned long cmdCode;
    KelpGnlTask* (*taskCreator)(KelpTaskMgr*);
    AsnType* (*reqCreator)();
    AsnType* (*rspCreator)();
    void* reserved;  ///< null
    void (*handler)(AsnType* request, AsnType* response, KelpGnlTask* task);
};

/// The commands that this process serves. Works before main, so that objects of static
/// storage can register, and independently of KelpAppMgr.
///
/// A request of a registered code: the pre-work hook sees it, its body is decoded into a
/// new request object, the handler runs on a worker of the registered manager, and the
/// response goes back with the request's serial number and command code. Where that fails
/// the answer's body is empty and its error code one of KelpMsgError: KELP_MSG_REJECTED,
/// _BAD_BODY, _HANDLER_FAILED, _BAD_ANSWER, _NO_COMMAND, _NO_TASK, _QUEUE_FULL, _STOPPED.
/// A request that expects no answer (serial number 0, sent outside any task) gets none.
class KELP_API KelpTaskCreator {
  public:
    static KelpTaskCreator* Instance() noexcept;

    /// True when the command is served from now on. False, with a log line that names
    /// the code, when it is registered already (the first registration stays), has no
    /// handler, or does not fit 32 bits.
    bool RegisterTask(const KelpTaskRegister& registration);

    /// The registration of a command code, valid for the life of the process, or null.
    const KelpTaskRegister* Find(unsigned long cmdCode) const;

    KelpTaskCreator(const KelpTaskCreator&) = delete;
    KelpTaskCreator& operator=(const KelpTaskCreator&) = delete;

  private:
    KelpTaskCreator() = default;
};

/// What travels with an event; deleted by whoever owns it last.
class KELP_API TEEventParam {
  public:
    virtual ~TEEventParam();
};

/// Receives events.
class KELP_API TEEventHandler {
  public:
    virtual ~TEEventHandler();
    /// Called on a worker of the task manager named at the subscription. `param` may be
    /// null; it is shared with other subscribers and stays the event manager's. The
    /// result is logged when it is not 0. What it throws is logged.
    virtual int ReceiveEvent(unsigned int eventId, TEEventParam* param) = 0;
};

/// Events inside the process.
class KELP_API TEEventMgr {
  public:
    /// Null while KelpAppMgr is not initialised.
    static TEEventMgr* Instance() noexcept;

    /// From now on `handler` receives event `eventId` on the workers of task manager
    /// `taskMgrId` (which may be inserted later). Result: 0; -1 when the handler is null
    /// or subscribed to the event for that manager already.
    int SubscibeEvent(unsigned int eventId, TEEventHandler* handler, unsigned char taskMgrId);

    /// Withdraws every subscription of `handler` to `eventId`. No delivery begins after
    /// it returns; one that has begun may still run (this does not wait: it may be called
    /// from a handler). Result: 0; -1 when there was none.
    int UnSubscibeEvent(unsigned int eventId, TEEventHandler* handler);

    /// Hands an event to its subscribers, or, with a `taskMgrId`, to those on that
    /// manager. Result: 0 when at least one of them will see it; the event manager owns
    /// `param` then. -1 when there is none, their queues are full or the process stops;
    /// `param` stays the caller's then.
    int PostEvent(unsigned int eventId, TEEventParam* param, unsigned char taskMgrId);

    TEEventMgr(const TEEventMgr&) = delete;
    TEEventMgr& operator=(const TEEventMgr&) = delete;

  private:
    TEEventMgr() = default;
};

/// What a process can tell about itself while it runs, for people who look for a fault.
class KELP_API KelpDebugMgr {
  public:
    /// Adds the text of `probe` to every report under `name`, replacing one of that name.
    static void AddProbe(const std::string& name, std::string (*probe)());
    /// One line a fact: task managers with their workers, queued requests and tasks,
    /// connections with their send queues, requests that wait for answers, probes.
    static std::string Report();
    /// Forgets the probes.
    static void Destroy() noexcept;
};
