// Connections live beneath the objects: for all objects and threads, as long as they are sound.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "support/platform.h"
#include "unit/http/fixture.h"

namespace {

using namespace UFHTTPMSGMGR;

class HttpReuse : public HttpTest {
  protected:
    HttpReuse() : m_installation(TheServer().Settings()) {}

    HttpsServer::Counts Counts(const char* line = "good") { return TheServer().Count(line); }

    // A new installation has no connection yet; this makes one.
    void Warm() {
        ASSERT_EQ(Get(Good("/body")), 0);
        m_warm = Counts();
    }

    Installation m_installation;
    HttpsServer::Counts m_warm;
};

TEST_F(HttpReuse, AcrossObjectsMethodsAndFailuresOfOthers) {
    Warm();
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(Get(Good("/body")), 0);
        EXPECT_EQ(Post(Good("/body")), 0);
        EXPECT_EQ(Put(Good("/redirect")), 0);
        EXPECT_NE(Get(TheServer().Url("expired", "/body")), 0);
    }
    EXPECT_EQ(Counts().connections, m_warm.connections);
    EXPECT_EQ(Counts().requests, m_warm.requests + 60);
}

TEST_F(HttpReuse, AcrossThreads) {
    constexpr int kThreads = 8;
    constexpr int kEach = 125;
    const auto before = Counts();
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            s_HttpMsgReq req;
            s_HttpMsgRsp rsp;
            for (int i = 0; i < kEach; ++i) {
                const std::string text = std::to_string(t) + "." + std::to_string(i);
                const std::string url = TheServer().Url("good", "/echo?" + text + ".");
                if (CHttpMsgOper().SendHttpMsg_Get(url, req, rsp) != 0 || rsp.lStatusCode != 200 ||
                    rsp.strRspBody.find("?" + text + ".") == std::string::npos) {
                    ++failures;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(Counts().requests - before.requests, kThreads * kEach);
    EXPECT_LE(Counts().handshakes - before.handshakes, kThreads);
}

TEST_F(HttpReuse, NotWhenAskedNotTo) {
    Warm();
    m_req.iKeepAlive = 0;
    EXPECT_EQ(Get(Good("/echo")), 0);
    EXPECT_THAT(m_rsp.strRspBody, testing::HasSubstr("[\"Connection\", \"close\"]"));
    m_req.iKeepAlive = 1;
    EXPECT_EQ(Get(Good("/body")), 0);
    EXPECT_EQ(Counts().connections, m_warm.connections + 1);
}

// A connection that the server closed while nobody used it is not used again, so a request
// that must not be sent twice gets through as well.
TEST_F(HttpReuse, ServerWasRestarted) {
    using Send = int (HttpReuse::*)(const std::string&, int);
    for (const Send send : {Send(&HttpReuse::Get), Send(&HttpReuse::Post), Send(&HttpReuse::Put)}) {
        Warm();
        ASSERT_EQ(TheServer().Command("restart good"), "ok");
        m_req.strReqBody = "{}";
        EXPECT_EQ((this->*send)(Good("/body"), 20), 0);
        EXPECT_EQ(Counts().requests, m_warm.requests + 1);
        EXPECT_EQ(Counts().connections, m_warm.connections + 1);
    }
}

// What a server says while nobody has asked is no answer to the next request.
TEST_F(HttpReuse, ServerSaysSomethingUnasked) {
    using Send = int (HttpReuse::*)(const std::string&, int);
    for (const Send send : {Send(&HttpReuse::Get), Send(&HttpReuse::Post)}) {
        Warm();
        ASSERT_EQ(TheServer().Command("inject good"), "ok");
        EXPECT_EQ((this->*send)(Good("/body"), 20), 0);
        EXPECT_EQ(m_rsp.strRspBody, "{}");
        EXPECT_EQ(Counts().connections, m_warm.connections + 1);
    }
}

// A server that closes on a request, rather than before it: the connection is an old one, so it
// may have been about to close anyway. A GET is sent again, once, on a new connection.
TEST_F(HttpReuse, GetIsSentAgain) {
    for (const char* const path : {"/close", "/tear", "/reset"}) {
        Warm();
        EXPECT_EQ(Get(Good(path)), HTTP_ERR_NO_ANSWER) << path;
        EXPECT_EQ(Counts().requests, m_warm.requests + 2) << path;
        EXPECT_EQ(Counts().connections, m_warm.connections + 1) << path;
    }
}

// The server has read it and may have acted on it: sent again, it might be done twice.
TEST_F(HttpReuse, PostAndPutAreNot) {
    for (const char* const path : {"/close", "/tear", "/reset"}) {
        for (const char* const body : {"{}", ""}) {
            Warm();
            m_req.strReqBody = body;
            EXPECT_EQ(Post(Good(path)), HTTP_ERR_NO_ANSWER) << path << body;
            EXPECT_EQ(Counts().requests, m_warm.requests + 1) << path << body;
            Warm();
            EXPECT_EQ(Put(Good(path)), HTTP_ERR_NO_ANSWER) << path << body;
            EXPECT_EQ(Counts().requests, m_warm.requests + 1) << path << body;
        }
    }
}

// Nobody is there to send it to again. It has left all the same: the caller must not be told
// that it has not.
TEST_F(HttpReuse, ServerDiesOnARequest) {
    using Send = int (HttpReuse::*)(const std::string&, int);
    for (const Send send : {Send(&HttpReuse::Get), Send(&HttpReuse::Post), Send(&HttpReuse::Put)}) {
        Warm();
        EXPECT_EQ((this->*send)(Good("/last"), 20), HTTP_ERR_NO_ANSWER);
        EXPECT_EQ(Counts().requests, m_warm.requests + 1);
        EXPECT_EQ((this->*send)(Good("/body"), 20), HTTP_ERR_CONNECT);
        ASSERT_EQ(TheServer().Command("start good"), "ok");
    }
}

// What comes behind the end of an answer belongs to no other one.
TEST_F(HttpReuse, AnswerIsLongerThanItSays) {
    Warm();
    EXPECT_EQ(Get(Good("/excess")), 0);
    EXPECT_EQ(m_rsp.strRspBody, "{}");
    TheServer().SetBody("of its own");
    EXPECT_EQ(Get(Good("/body")), 0);
    EXPECT_EQ(m_rsp.strRspBody, "of its own");
    EXPECT_EQ(Counts().connections, m_warm.connections + 1);
}

// An answer that began and was cut has been heard: not even a GET is sent again.
TEST_F(HttpReuse, CutAnswer) {
    Warm();
    EXPECT_EQ(Get(Good("/cut")), HTTP_ERR_CUT);
    EXPECT_EQ(Counts().requests, m_warm.requests + 1);
}

// Writing to a connection that the server has reset raises SIGPIPE, which ends a process that
// does not expect it.
TEST_F(HttpReuse, NoSignal) {
    ASSERT_EQ(::signal(SIGPIPE, SIG_DFL), SIG_DFL);
    m_req.strReqBody.assign(8U << 20U, 'x');
    EXPECT_NE(Post(Good("/unread/reset")), 0);
    sigset_t pending;
    sigset_t blocked;
    sigpending(&pending);
    pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
    EXPECT_EQ(sigismember(&blocked, SIGPIPE), 0);
    EXPECT_EQ(Get(Good("/body")), 0);
}

// New certificates count without a restart, and what was verified by the old ones ends.
TEST_F(HttpReuse, FilesAreReplaced) {
    Warm();
    m_installation.Configure(TheServer().Settings("", "other_ca.crt"));
    EXPECT_TRUE(Eventually([&] { return Get(Good("/body")) == HTTP_ERR_CERT_UNKNOWN_CA; }));
    m_installation.Configure(TheServer().Settings());
    EXPECT_TRUE(Eventually([&] { return Get(Good("/body")) == 0; }));
}

// The file of the settings is everybody's: a change that is not of HTTP ends no connection.
// It is looked at once a second.
TEST_F(HttpReuse, OtherSettingsChange) {
    using Clock = std::chrono::steady_clock;
    Warm();
    const auto end = Clock::now() + std::chrono::milliseconds(1500);
    for (int i = 0; Clock::now() < end; ++i) {
        m_installation.Configure(TheServer().Settings(", \"others\": " + std::to_string(i)));
        ASSERT_EQ(Get(Good("/body")), 0);
    }
    EXPECT_EQ(Counts().connections, m_warm.connections);
}

// A server whose certificate is another one now is verified anew.
TEST_F(HttpReuse, ServerGetsAnotherCertificate) {
    Warm();
    EXPECT_EQ(TheServer().Command("certificate good expired"), "ok");
    EXPECT_EQ(TheServer().Command("restart good"), "ok");
    EXPECT_EQ(Get(Good("/body")), HTTP_ERR_CERT_EXPIRED);
    EXPECT_EQ(TheServer().Command("certificate good renewed"), "ok");
    EXPECT_EQ(TheServer().Command("restart good"), "ok");
    EXPECT_EQ(Get(Good("/body")), 0);
    EXPECT_EQ(TheServer().Command("certificate good server"), "ok");
}

// A child's requests do not spoil its parent's connection, and neither does its end.
TEST_F(HttpReuse, ChildOfAFork) {
    Warm();
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(Get(Good("/body")) == 0 && m_rsp.lStatusCode == 200 ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Counts().connections, m_warm.connections + 1);
    EXPECT_EQ(Get(Good("/body")), 0);
    EXPECT_EQ(Counts().connections, m_warm.connections + 1);
}

}  // namespace
