// Peers that misbehave: the server closes on them, says so, and serves the others.

#include <grp.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>

#include "server.h"
#include "support/captured_log.h"
#include "support/raw_peer.h"

namespace {

using namespace bus_test;

constexpr unsigned kServer = 56;

// Octets that are no frames end the connection they came on, and no other.
TEST(BusAbuse, BrokenFrames) {
    Platform platform;
    Server server(platform.RunDir(), kServer, 1, 2);
    ASSERT_EQ(server.Ask(kEcho, ""), 0);
    std::string random(1000, '\0');
    unsigned seed = 1;
    for (char& c : random) {
        c = static_cast<char>((seed = seed * 1103515245 + 12345) >> 16);
    }
    std::string huge(4, '\xff');
    std::string short_one("\x31\0\0\0", 4);
    std::string frame = RawRequest(kServer, kEcho, 1, std::string("\x04\0", 2));
    const std::size_t sockets = server.Sockets();
    const std::string two_trailers =
        frame + std::string("KTLR\x04\0T\x01\0t", 10) + std::string("KTLR\x04\0T\x01\0t", 10);
    for (const std::string& octets : {random, huge, short_one}) {
        RawPeer peer = RawPeer::Connect(platform.RunDir(), kServer, 1);
        ASSERT_TRUE(peer.Send(octets));
        EXPECT_TRUE(peer.SeesTheEnd());
    }
    RawPeer peer = RawPeer::Connect(platform.RunDir(), kServer, 1);
    ASSERT_TRUE(peer.SendFrame(two_trailers));
    EXPECT_TRUE(peer.SeesTheEnd()) << "refused before anybody looks at the message";
    EXPECT_EQ(server.Ask(kEcho, ""), 0);
    EXPECT_TRUE(Eventually([&] { return server.Sockets() == sockets; }))
        << server.Sockets() << " instead of " << sockets;
}

// A frame above the limit, by its length alone: closed without taking memory for it.
TEST(BusAbuse, OversizeTakesNoMemory) {
    Platform platform;
    Server server(platform.RunDir(), kServer, 1, 2);
    ASSERT_EQ(server.Ask(kEcho, ""), 0);
    const std::size_t before = server.Memory();
    for (int i = 0; i < 50; ++i) {
        RawPeer peer = RawPeer::Connect(platform.RunDir(), kServer, 1);
        std::string length(4, '\0');
        RawPut(length, 0, 4, (64u << 20) + 1);
        ASSERT_TRUE(peer.Send(length));
        EXPECT_TRUE(peer.SeesTheEnd());
    }
    EXPECT_LT(server.Memory(), before + (8u << 20));
    EXPECT_EQ(server.Ask(kEcho, ""), 0);
}

// Half a frame and then silence: closed after the deadline. Silence alone is not an error.
TEST(BusAbuse, UnfinishedFrame) {
    Platform platform;
    Server server(platform.RunDir(), kServer, 1, 2, {"100", "100"});
    const std::string frame = RawRequest(kServer, kEcho, 1, std::string("\x04\0", 2));
    RawPeer silent = RawPeer::Connect(platform.RunDir(), kServer, 1);
    for (const std::size_t cut : {1u, 3u, 30u}) {
        RawPeer peer = RawPeer::Connect(platform.RunDir(), kServer, 1);
        std::string length(4, '\0');
        RawPut(length, 0, 4, frame.size());
        ASSERT_TRUE(peer.Send((length + frame).substr(0, cut)));
        EXPECT_TRUE(peer.SeesTheEnd());
    }
    ASSERT_TRUE(silent.SendFrame(frame));
    EXPECT_EQ(silent.ReceiveFrame().substr(50), std::string("\x04\0", 2));
}

// A peer that asks and does not read: its answers are bounded, then it is cut off. What a
// first one cost is used again for those that follow.
TEST(BusAbuse, PeersThatDoNotRead) {
    Platform platform;
    Server server(platform.RunDir(), kServer, 1, 2);
    const std::string body = "1000000";
    const std::string request = RawRequest(
        kServer, kMake, 1, "\x04" + std::string(1, static_cast<char>(body.size())) + body);
    std::size_t after_first = 0;
    for (int round = 0; round < 6; ++round) {
        RawPeer peer = RawPeer::Connect(platform.RunDir(), kServer, 1);
        EXPECT_TRUE(Eventually([&] { return !peer.SendFrame(request); })) << "the server closed";
        EXPECT_TRUE(server.Reports("0 busy, 0 requests waiting, 0 tasks\ntask manager 5"));
        after_first = round == 0 ? server.Memory() : after_first;
    }
    EXPECT_LT(server.Memory(), after_first + (64u << 20));
    EXPECT_EQ(server.Ask(kEcho, ""), 0);
}

// A server that does not read: the sender's queue is bounded, then callers hear of it.
TEST(BusAbuse, ServerThatDoesNotRead) {
    KelpAppOptions options;
    options.sendQueueOctets = 1 << 20;
    Platform platform(options);
    RawListener listener(platform.RunDir(), kServer, 1);
    RawPeer peer;
    AsnOcts request(std::string(90000, 'x'));
    int code = 0;
    int sent = 0;
    CapturedLog log;
    while (code == 0 && sent < 1000) {
        code = FrameUtil::SynSendMsg({kServer, 1, kManager, 0}, kEcho, request, nullptr, 5);
        ++sent;
    }
    EXPECT_EQ(code, 0x41016903);
    EXPECT_LT(sent, 100);
    EXPECT_TRUE(log.Contains("was not sent: it does not read what it is sent"));
    AsnOcts response;
    EXPECT_EQ(FrameUtil::SynSendMsg({kServer, 1, kManager, 0}, kEcho, request, &response, 1000000),
              static_cast<int>(KELP_MSG_PEER_BUSY));
    // When it reads again, everything that was accepted arrives.
    peer = listener.Accept();
    for (int i = 0; i < sent - 1; ++i) {
        ASSERT_EQ(peer.ReceiveFrame().size(), 50u + 90000 + 5) << i;
    }
    EXPECT_EQ(FrameUtil::SynSendMsg({kServer, 1, kManager, 0}, kEcho, request, nullptr, 5), 0);
}

// Thousands of connections that come and go leave nothing behind.
TEST(BusAbuse, ManyConnections) {
    Platform platform;
    Server server(platform.RunDir(), kServer, 1, 2);
    ASSERT_EQ(server.Ask(kEcho, ""), 0);
    const std::size_t sockets = server.Sockets();
    for (int i = 0; i < 5000; ++i) {
        RawPeer::Connect(platform.RunDir(), kServer, 1);
    }
    EXPECT_EQ(server.Ask(kEcho, ""), 0);
    EXPECT_TRUE(Eventually([&] { return server.Sockets() == sockets; }))
        << server.Sockets() << " instead of " << sockets;
}

// Open connections are bounded; one that closes makes room.
TEST(BusAbuse, ConnectionsAreBounded) {
    CapturedLog log;
    KelpAppOptions options;
    options.maxConnections = 3;
    Platform platform(options);
    std::vector<RawPeer> peers;
    for (int i = 0; i < 3; ++i) {
        peers.push_back(RawPeer::Connect(platform.RunDir(), Platform::kProc, 1));
    }
    RawPeer refused = RawPeer::Connect(platform.RunDir(), Platform::kProc, 1);
    EXPECT_TRUE(refused.SeesTheEnd());
    EXPECT_TRUE(log.WaitFor("a connection was refused: there are 3 already"));
    peers.pop_back();
    EXPECT_TRUE(Eventually([&] {
        RawPeer again = RawPeer::Connect(platform.RunDir(), Platform::kProc, 1);
        return again.SendFrame(RawRequest(Platform::kProc, 1, 1, "")) &&
               !again.ReceiveFrame().empty();
    }));
}

// Somebody else's process is refused by its credentials. Only root can pose as another;
// for anybody else the refusal is that the socket cannot be reached at all.
TEST(BusAbuse, PeerOfAnotherUser) {
    CapturedLog log;
    Platform platform;
    const std::string socket = platform.RunDir() + "/3001.1.sock";
    struct stat found {};
    ASSERT_EQ(::stat(socket.c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 0777, 0600u);
    if (::geteuid() != 0) {
        return;  // the mode above is what keeps others out
    }
    // Let the other user reach the socket, so that only the credentials can refuse it.
    ASSERT_EQ(::chmod(platform.RunDir().c_str(), 0711), 0);
    ASSERT_EQ(::chmod(socket.c_str(), 0666), 0);
    const pid_t other = ::fork();
    if (other == 0) {
        if (::setgroups(0, nullptr) != 0 || ::setgid(65534) != 0 || ::setuid(65534) != 0) {
            ::_exit(2);
        }
        RawPeer peer = RawPeer::Connect(platform.RunDir(), Platform::kProc, 1);
        ::_exit(peer.Connected() && peer.SeesTheEnd() ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(other, &status, 0), other);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_TRUE(log.WaitFor("a connection of user 65534 was refused"));
}

}  // namespace
