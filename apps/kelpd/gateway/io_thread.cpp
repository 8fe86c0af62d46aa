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

void IoThread::Run() {
    Sweep();
    for (;;) {
        try {
            context_.run();
            return;
        } catch (const std::exception& e) {
            // The connection whose turn it was ends with what waited for it; the others go on.
            LogProcess::Error(kThreadFault, std::string("a connection was given up: ") + e.what(),
                              LocationInfo("kelpd", "gateway", 0));
        }
    }
}

void IoThread::Add(Session* session) {
    sessions_.insert(session);
}

void IoThread::Remove(Session* session) {
    sessions_.erase(session);
    FinishIfDone();
}

void IoThread::Stop(Clock::time_point deadline) {
    boost::asio::post(context_, [this, deadline] {
        stopping_ = true;
        cut_at_ = deadline;
        // Stopping a session may remove it.
        const std::vector<Session*> all(sessions_.begin(), sessions_.end());
        for (Session* session : all) {
            session->Stop();
        }
        FinishIfDone();
    });
}

void IoThread::Sweep() {
    const Clock::time_point now = Clock::now();
    const std::vector<Session*> all(sessions_.begin(), sessions_.end());
    for (Session* session : all) {
        if (now >= cut_at_) {
            session->Cut();
        } else {
            session->CheckDeadline(now);
        }
    }
    if (stopping_ && sessions_.empty()) {
        return;
    }
    sweep_.expires_after(kSweepEvery);
    sweep_.async_wait([this](const boost::system::error_code& error) {
        if (!error) {
            Sweep();
        }
    });
}

void IoThread::FinishIfDone() {
    if (stopping_ && sessions_.empty()) {
        sweep_.cancel();
        work_.reset();
    }
}

}  // namespace kelpd
