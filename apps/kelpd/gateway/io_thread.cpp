#include "kelpd/gateway/io_thread.h"

#include <boost/asio/post.hpp>
#include <string>
#include <vector>

#include "kelp/log.h"
#include "kelpd/gateway/session.h"

namespace kelpd {
namespace {

constexpr unsigned kThreadFault = 0x42000064;

// Deadlines are looked at by one timer: a timer for each session would be set anew with
// every request.
constexpr std::chrono::milliseconds kSweepEvery(100);

}  // namespace

IoThread::IoThread() : work_(boost::asio::make_work_guard(context_)), sweep_(context_) {}

// A session's socket belongs to the context: none may be left when that goes.
IoThread::~IoThread() {
    for (const auto& session : All()) {
        session->Cut();
    }
}

void IoThread::Run() {
    Sweep();
    for (;;) {
        try {
            context_.run();
            return;
        } catch (const std::exception& e) {
            // What the turn was for is lost; the connections go on.
            LogProcess::Error(kThreadFault, std::string("a turn failed: ") + e.what(),
                              LocationInfo("kelpd", "gateway", 0));
        }
    }
}

void IoThread::Add(std::shared_ptr<Session> session) {
    Session* const key = session.get();
    sessions_.emplace(key, std::move(session));
}

// What is done with a session may remove it.
std::vector<std::shared_ptr<Session>> IoThread::All() const {
    std::vector<std::shared_ptr<Session>> all;
    all.reserve(sessions_.size());
    for (const auto& [key, session] : sessions_) {
        all.push_back(session);
    }
    return all;
}

void IoThread::Remove(Session* session) {
    sessions_.erase(session);
    FinishIfDone();
}

void IoThread::Stop(Clock::time_point deadline) {
    boost::asio::post(context_, [this, deadline] {
        stopping_ = true;
        cut_at_ = deadline;
        for (const auto& session : All()) {
            session->Stop();
        }
        FinishIfDone();
    });
}

void IoThread::Sweep() {
    if (Done()) {
        return;  // the timer had run out already when it was cancelled
    }
    // First, so that no failure below ends the sweeping.
    sweep_.expires_after(kSweepEvery);
    sweep_.async_wait([this](const boost::system::error_code& error) {
        if (!error) {
            Sweep();
        }
    });
    const Clock::time_point now = Clock::now();
    for (const auto& session : All()) {
        if (now >= cut_at_) {
            session->Cut();
        } else {
            session->CheckDeadline(now);
        }
    }
}

void IoThread::FinishIfDone() {
    if (Done()) {
        sweep_.cancel();
        work_.reset();
    }
}

}  // namespace kelpd
