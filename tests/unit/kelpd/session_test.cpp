// A session between a client and endpoints that answer at once, later, from another thread, not
// at all, or throw.

#include "kelpd/gateway/session.h"

#include <gmock/gmock.h>
#include <sys/socket.h>

#include <atomic>
#include <boost/asio/post.hpp>
#include <future>
#include <thread>

#include "support/unique_fd.h"

namespace kelpd {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class SessionTest : public testing::Test {
  protected:
    SessionTest() : running_([this] { thread_.Run(); }) {}

    ~SessionTest() override {
        service_.stopping = true;
        thread_.Stop(IoThread::Clock::now());
        running_.join();
        EXPECT_EQ(service_.admission.open(), 0U);
    }

    // The client's end of a connection that is being served.
    app::UniqueFd Connect() {
        int ends[2];
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
        Admission::Ticket ticket;
        const auto verdict = service_.admission.Admit("test", ticket);
        Session::Socket socket(thread_.context(), boost::asio::generic::stream_protocol(AF_UNIX, 0),
                               ends[1]);
        boost::asio::post(thread_.context(), [this, verdict, socket = std::move(socket),
                                              ticket = std::move(ticket)]() mutable {
            std::make_shared<Session>(thread_, service_, std::move(socket), "test",
                                      std::move(ticket), verdict)
                ->Start();
        });
        return app::UniqueFd(ends[0]);
    }

    static void Send(const app::UniqueFd& client, const std::string& octets) {
        ASSERT_EQ(::send(client.get(), octets.data(), octets.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(octets.size()));
    }

    static std::string ReadToEnd(const app::UniqueFd& client) {
        std::string all;
        char block[4096];
        for (ssize_t count; (count = ::recv(client.get(), block, sizeof block, 0)) > 0;) {
            all.append(block, static_cast<std::size_t>(count));
        }
        return all;
    }

    static std::string Get(const std::string& target, const std::string& more = "") {
        return "GET " + target + " HTTP/1.1\r\nHost: h\r\n" + more + "\r\n";
    }
    static std::string LastGet(const std::string& target) {
        return Get(target, "Connection: close\r\n");
    }

    std::atomic<int> now_{0};
    std::atomic<int> now_at_mark_{-1};
    std::promise<void> held_;
    std::promise<void> release_;
    std::promise<Responder> kept_;
    std::future<Responder> keeper_ = kept_.get_future();
    Metrics metrics_;
    Service service_{
        Limits(),
        Router({{"GET", "/now",
                 [this](const Request&, Responder r) {
                     ++now_;
                     r.Send(Response::Text(200, "now"));
                 }},
                {"GET", "/hold",
                 [this](const Request&, Responder r) {
                     held_.set_value();
                     release_.get_future().wait();
                     r.Send(Response::Text(200, "held"));
                 }},
                {"GET", "/mark",
                 [this](const Request&, Responder r) {
                     now_at_mark_ = now_.load();
                     r.Send(Response::Text(200, "marked"));
                 }},
                {"GET", "/later",
                 [this](const Request&, Responder r) { kept_.set_value(std::move(r)); }},
                {"GET", "/never", [](const Request&, const Responder&) {}},
                {"GET", "/throws",
                 [](const Request&, const Responder&) { throw std::runtime_error("broken"); }}}),
        nullptr,
        false,
        metrics_,
        Admission(10, 10, 0),
        {},
        {}};
    IoThread thread_;
    std::thread running_;
};

TEST_F(SessionTest, AnswersThatComeFromAnotherThread) {
    const auto client = Connect();
    Send(client, Get("/later") + LastGet("/now"));
    Responder responder = keeper_.get();
    std::thread other([&] { responder.Send(Response::Text(200, "later")); });
    other.join();
    const std::string all = ReadToEnd(client);
    EXPECT_THAT(all, StartsWith("HTTP/1.1 200 OK\r\n"));
    EXPECT_LT(all.find("later"), all.find("\r\n\r\nnow"));
}

TEST_F(SessionTest, RequestWithoutAnAnswerIsAnsweredAllTheSame) {
    for (const char* target : {"/never", "/throws"}) {
        const auto client = Connect();
        Send(client, Get(target) + LastGet("/now"));
        const std::string all = ReadToEnd(client);
        EXPECT_THAT(all, StartsWith("HTTP/1.1 500 Internal Server Error\r\n")) << target;
        EXPECT_THAT(all, HasSubstr("the request was not answered")) << target;
        EXPECT_THAT(all, HasSubstr("\r\n\r\nnow")) << target;
        EXPECT_THAT(all, testing::Not(HasSubstr("broken"))) << target;
    }
}

// A thousand requests are there, and a client comes while the first of them is worked on: it
// does not wait for the other ones.
TEST_F(SessionTest, OneClientDoesNotKeepTheThread) {
    const auto flood = Connect();
    std::string requests = Get("/hold");
    for (int i = 0; i < 1000; ++i) {
        requests += Get("/now");
    }
    Send(flood, requests);
    held_.get_future().wait();
    const auto client = Connect();
    Send(client, LastGet("/mark"));
    release_.set_value();
    ReadToEnd(client);
    EXPECT_LE(now_at_mark_, 100);
    EXPECT_GT(now_at_mark_, 0);
}

TEST_F(SessionTest, AnswerIsDeliveredAfterTheStopBegan) {
    const auto client = Connect();
    Send(client, Get("/later"));
    Responder responder = keeper_.get();
    const auto idle = Connect();
    service_.stopping = true;
    thread_.Stop(IoThread::Clock::now() + std::chrono::hours(1));
    EXPECT_EQ(ReadToEnd(idle), "");
    responder.Send(Response::Text(200, "later"));
    const std::string all = ReadToEnd(client);
    EXPECT_THAT(all, HasSubstr("Connection: close\r\n"));
    EXPECT_THAT(all, HasSubstr("\r\n\r\nlater"));
}

TEST_F(SessionTest, AnswerToAClientThatHasGone) {
    auto client = Connect();
    Send(client, Get("/later"));
    Responder responder = keeper_.get();
    client = app::UniqueFd();
    responder.Send(Response::Text(200, "later"));
    const auto next = Connect();
    Send(next, LastGet("/now"));
    EXPECT_THAT(ReadToEnd(next), HasSubstr("\r\n\r\nnow"));
}

// What is not over when the time is up is cut, and an answer that comes later finds nobody.
TEST_F(SessionTest, AnswerAfterTheEnd) {
    const auto client = Connect();
    Send(client, Get("/later"));
    Responder responder = keeper_.get();
    service_.stopping = true;
    thread_.Stop(IoThread::Clock::now());
    EXPECT_EQ(ReadToEnd(client), "");
    responder.Send(Response::Text(200, "later"));
}

}  // namespace
}  // namespace kelpd
