// The synchronous request against a peer that the test plays octet by octet.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <thread>
#include <vector>

#include "frameutil/msg.h"
#include "kelp/asn1.h"
#include "secure/fault.h"
#include "support/captured_log.h"
#include "support/platform.h"
#include "support/raw_peer.h"
#include "support/test_clock.h"

namespace {

using FrameUtil::SMsgTarget;
using FrameUtil::SynSendMsg;
using ::testing::ElementsAre;

constexpr unsigned kPeer = 56;
constexpr unsigned long kCmd = 2167;
const SMsgTarget kTarget{kPeer, 1, 4, 0};

const std::string kFive("\x02\x01\x05", 3);  // INTEGER 5
const std::string kSix("\x02\x01\x06", 3);   // INTEGER 6
const std::string kText("\x04\x01x", 3);     // no INTEGER

// What the peer does with a request that it received.
using Script = std::function<void(RawPeer& peer, const std::string& request)>;

void AnswerFive(RawPeer& peer, const std::string& request) {
    EXPECT_TRUE(peer.SendFrame(RawAnswer(request, kFive)));
}

// One call of SynSendMsg, outside any task or in one, against a peer that plays `script`.
struct Call {
    SMsgTarget target = kTarget;
    int timeout = 30;
    bool in_task = false;
    bool with_response = true;
    std::function<void(KelpGnlTask&)> before = {};
    std::function<void(KelpGnlTask&)> after = {};

    int code = 12345;
    std::int64_t response = 17;

    void Make(Platform& platform, const Script& script) {
        RawListener listener(platform.RunDir(), kPeer, 1);
        ASSERT_TRUE(listener.Listening());
        std::promise<void> played;
        std::thread peer([&] {
            RawPeer line = listener.Accept();
            const std::string request = line.ReceiveFrame();
            EXPECT_GE(request.size(), 50u);
            script(line, request);
            played.set_value();
            EXPECT_TRUE(!line.Connected() || line.SeesTheEnd());
        });
        MakeAlone(platform);
        played.get_future().wait();  // a call that does not wait is over before its answer
        KelpAppMgr::Destroy();       // ends the peer's wait for the end
        peer.join();
    }

    void MakeAlone(Platform& platform) {
        if (in_task) {
            platform.InTask([this](KelpGnlTask& task) {
                if (before) {
                    before(task);
                }
                Run();
                if (after) {
                    after(task);
                }
            });
        } else {
            Run();
        }
    }

    void Run() {
        AsnInt request(100);
        AsnInt answer(17);
        code = SynSendMsg(target, kCmd, request, with_response ? &answer : nullptr, timeout);
        response = answer;
    }
};

std::vector<std::uint32_t> DrainCommands(KelpTask& task) {
    std::vector<std::uint32_t> commands;
    CmdMSG* msg = nullptr;
    while (task.KelpSynRecvEx(msg, 0) != 0) {
        commands.push_back(msg->cmdCode);
        KelpMsgFree(msg);
    }
    return commands;
}

// The four ways; each octet of the header as it goes over the line.
TEST(SynSendMsg, HeaderOctets) {
    for (const bool in_task : {false, true}) {
        for (const bool with_response : {false, true}) {
            SCOPED_TRACE(std::string(in_task ? "in a task" : "outside") +
                         (with_response ? ", waiting" : ", not waiting"));
            KelpAppOptions options;
            options.deskId = 0x0102;
            Platform platform(options);
            Call call;
            call.in_task = in_task;
            call.with_response = with_response;
            call.target = SMsgTarget{kPeer, 1, 4, 0x0506};
            std::uint16_t task_id = 0;
            call.before = [&](KelpGnlTask& task) { task_id = task.GetTaskId(); };
            std::string seen;
            call.Make(platform, [&](RawPeer& peer, const std::string& request) {
                seen = request;
                AnswerFive(peer, request);
            });
            EXPECT_EQ(call.code, 0);
            EXPECT_EQ(call.response, with_response ? 5 : 17);

            std::string expected(50, '\0');
            RawPut(expected, 0, 1, 10);
            RawPut(expected, 8, 2, 0x0102);
            RawPut(expected, 12, 2, 1);
            RawPut(expected, 14, 2, 1);
            RawPut(expected, 16, 2, Platform::kProc);
            RawPut(expected, 18, 2, kPeer);
            RawPut(expected, 20, 4, kCmd);
            RawPut(expected, 24, 1, 6);
            RawPut(expected, 38, 2, in_task ? task_id : 0);
            RawPut(expected, 40, 2, 0x0506);
            RawPut(expected, 44, 4, 3 + 2);
            RawPut(expected, 48, 1, in_task ? Platform::kManager : 0);
            RawPut(expected, 49, 1, 4);
            EXPECT_EQ(RawGet(seen, kSerial) != 0, in_task || with_response);
            RawPut(expected, kSerial, RawGet(seen, kSerial));
            EXPECT_EQ(seen, expected + std::string("\x02\x01\x64", 3));
        }
    }
}

TEST(SynSendMsg, NotInitialised) {
    CapturedLog log;
    Call call;
    call.Run();
    EXPECT_EQ(call.code, -1);
    EXPECT_EQ(call.response, 17);
    EXPECT_THAT(log.Texts(), ElementsAre("[Frame][SynSendMsg] KelpApp initializtion failed."));
}

// 100000 octets of encoding are sent, one more is not.
TEST(SynSendMsg, LimitOfTheEncoding) {
    Platform platform;
    const struct {
        std::size_t octets;  // of contents; identifier and length take 5 more
        int code;
    } cases[] = {{99995, 0}, {99996, 0x4101f009}, {1000000, 0x4101f009}};
    for (const auto& test : cases) {
        RawListener listener(platform.RunDir(), kPeer, 1);
        CapturedLog log;
        AsnOcts request(std::string(test.octets, 'x'));
        EXPECT_EQ(SynSendMsg(kTarget, kCmd, request, nullptr, 5), test.code) << test.octets;
        EXPECT_EQ(log.Count("[Frame][SynSendMsg] AsnEncode failed."), test.code == 0 ? 0u : 1u);
        EXPECT_EQ(request.size(), test.octets) << "the request is never changed";
        if (test.code == 0) {
            RawPeer peer = listener.Accept();
            EXPECT_EQ(peer.ReceiveFrame().size(), 50u + 100000);
        }
    }
}

// A failing bounded copy is traced and the message goes out, its body zeroed.
TEST(SynSendMsg, FailingCopyIsTraced) {
    Platform platform;
    CapturedLog log;
    Call call;
    std::string body;
    {
        const kelp::secure::FailNth fault(kelp::secure::Routine::kMemcpy, 1, 5);
        call.Make(platform, [&](RawPeer& peer, const std::string& request) {
            body = request.substr(50);
            AnswerFive(peer, request);
        });
        EXPECT_TRUE(fault.Fired());
    }
    EXPECT_EQ(log.Count("[Frame]memcpy_s failed at line 192 errno: 5"), 1u);
    EXPECT_EQ(body, std::string(3, '\0'));
    EXPECT_EQ(call.code, 0);
    EXPECT_EQ(call.response, 5);
}

TEST(SynSendMsg, NoSerialNumberLeft) {
    Platform platform;
    CapturedLog log;
    Call call;
    call.in_task = true;
    call.before = [](KelpGnlTask& task) {
        while (task.AllocMsgSn() != 0) {
        }
    };
    call.MakeAlone(platform);
    EXPECT_EQ(call.code, 0x45312d17);
    EXPECT_EQ(log.Count("[Frame][SynSendMsg] applying msgSN failed."), 1u);
}

// The serial number is given back before the answer is there: however many calls a task
// makes, it does not run out.
TEST(SynSendMsg, SerialNumberIsGivenBackAtOnce) {
    Platform platform;
    RawListener listener(platform.RunDir(), kPeer, 1);
    platform.InTask([](KelpGnlTask& task) {
        AsnInt request(1);
        for (std::size_t i = 0; i < KelpTask::KELP_TASK_MAX_SERIALS + 10; ++i) {
            EXPECT_EQ(SynSendMsg(kTarget, kCmd, request, nullptr, 0), 0);
        }
        EXPECT_NE(task.AllocMsgSn(), 0u);
    });
}

// ---- what counts as the answer

struct Candidate {
    const char* name;
    std::int64_t serial_difference;  // to the request's, or no serial number at all
    bool has_serial;
    std::uint32_t command;
    unsigned proc;
    bool matches;
};

const Candidate kCandidates[] = {
    {"serial and command", 0, true, kCmd, kPeer, true},
    {"serial and command, from elsewhere", 0, true, kCmd, kPeer + 1, true},
    {"another serial", 1, true, kCmd, kPeer, false},
    {"another command", 0, true, kCmd + 1, kPeer, false},
    {"no serial, command and process", 0, false, kCmd, kPeer, true},
    {"no serial, another command", 0, false, kCmd + 1, kPeer, false},
    {"no serial, another process", 0, false, kCmd, kPeer + 1, false},
};

TEST(SynSendMsg, WhatCountsAsTheAnswer) {
    for (const Candidate& candidate : kCandidates) {
        for (const bool in_task : {false, true}) {
            SCOPED_TRACE(std::string(candidate.name) + (in_task ? ", in a task" : ", outside"));
            Platform platform;
            Call call;
            call.in_task = in_task;
            call.Make(platform, [&](RawPeer& peer, const std::string& request) {
                std::string first = RawAnswer(request, kSix);
                const std::uint64_t serial = RawGet(request, kSerial);
                RawPut(first, kSerial,
                       candidate.has_serial
                           ? serial + static_cast<std::uint64_t>(candidate.serial_difference)
                           : 0);
                RawPut(first, kCommand, candidate.command);
                RawPut(first, kSrcProc, candidate.proc);
                EXPECT_TRUE(peer.SendFrame(first));
                AnswerFive(peer, request);
            });
            EXPECT_EQ(call.code, 0);
            EXPECT_EQ(call.response, candidate.matches ? 6 : 5);
        }
    }
}

// A message to the task that is no answer, sent by the peer on its connection.
std::string Unrelated(const std::string& request, std::uint32_t command) {
    std::string message = RawAnswer(request, "");
    RawPut(message, kFlags, 0);
    RawPut(message, kSerial, 0);
    RawPut(message, kCommand, command);
    RawPut(message, kDstProc, Platform::kProc);
    return message;
}

// Messages that are not the answer go back to the head of the queue, the later one first.
TEST(SynSendMsg, UnrelatedMessagesAreRequeuedLastFirst) {
    const struct {
        const char* name;
        Script end;
        int code;
    } cases[] = {
        {"then the answer", AnswerFive, 0},
        {"then an error",
         [](RawPeer& peer, const std::string& request) {
             peer.SendFrame(RawAnswer(request, "", 0x42000030));
         },
         0x42000030},
        {"then nothing decodable",
         [](RawPeer& peer, const std::string& request) {
             peer.SendFrame(RawAnswer(request, kText));
         },
         0x4101f00a},
        {"then the peer ends", [](RawPeer& peer, const std::string&) { peer.Close(); },
         static_cast<int>(KELP_MSG_PEER_CLOSED)},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        Platform platform;
        Call call;
        call.in_task = true;
        std::vector<std::uint32_t> left;
        call.after = [&](KelpGnlTask& task) { left = DrainCommands(task); };
        call.Make(platform, [&](RawPeer& peer, const std::string& request) {
            for (const std::uint32_t command : {901u, 902u, 903u}) {
                EXPECT_TRUE(peer.SendFrame(Unrelated(request, command)));
            }
            test.end(peer, request);
        });
        EXPECT_EQ(call.code, test.code);
        EXPECT_THAT(left, ElementsAre(903, 902, 901));
    }
}

// ---- failures

TEST(SynSendMsg, ErrorCodeOfTheAnswer) {
    const struct {
        bool in_task;
        const char* trace;
    } cases[] = {
        {true, "[Frame][SynSendMsg] call KelpMsgGetErrorCode() failed. errCode = 1107296304"},
        {false, "[Frame][SynSendMsg] call KelpSendSynMsgToMDP() failed, errCode = 1107296304."},
    };
    for (const auto& test : cases) {
        Platform platform;
        CapturedLog log;
        Call call;
        call.in_task = test.in_task;
        call.Make(platform, [](RawPeer& peer, const std::string& request) {
            EXPECT_TRUE(peer.SendFrame(RawAnswer(request, kFive, 0x42000030)));
        });
        EXPECT_EQ(call.code, 0x42000030);
        EXPECT_EQ(call.response, 17);
        EXPECT_EQ(log.Count(test.trace), 1u) << ::testing::PrintToString(log.Texts());
    }
}

TEST(SynSendMsg, AnswerThatDoesNotDecode) {
    const struct {
        bool in_task;
        const char* trace;
    } cases[] = {
        {true, "[Frame][SynSendMsg] No.2 Asn Decode failed."},
        {false, "[Frame][SynSendMsg]No.1 Asn Decode failed."},
    };
    for (const auto& test : cases) {
        for (const std::string& body : {kText, std::string(), kFive + "x", kFive.substr(0, 2)}) {
            Platform platform;
            CapturedLog log;
            Call call;
            call.in_task = test.in_task;
            call.Make(platform, [&](RawPeer& peer, const std::string& request) {
                EXPECT_TRUE(peer.SendFrame(RawAnswer(request, body)));
            });
            EXPECT_EQ(call.code, 0x4101f00a);
            EXPECT_EQ(call.response, 17) << "only a successful decode writes the response";
            EXPECT_EQ(log.Count(test.trace), 1u) << ::testing::PrintToString(log.Texts());
        }
    }
}

// A peer that ends while the request waits is an error at once.
TEST(SynSendMsg, PeerEndsWhileTheRequestWaits) {
    for (const bool in_task : {false, true}) {
        Platform platform;
        Call call;
        call.in_task = in_task;
        call.timeout = 1000000;
        call.Make(platform, [](RawPeer& peer, const std::string&) { peer.Close(); });
        EXPECT_EQ(call.code, static_cast<int>(KELP_MSG_PEER_CLOSED));
        EXPECT_EQ(call.response, 17);
    }
}

TEST(SynSendMsg, NobodyIsThere) {
    Platform platform;
    const int no_peer = static_cast<int>(KELP_MSG_NO_PEER);
    const struct {
        const char* name;
        bool in_task;
        bool with_response;
        int code;
        const char* trace;
    } cases[] = {
        {"outside, waiting", false, true, no_peer,
         "[SynSendMsg] call KelpSendSynMsgToMDP() failed, errCode = 1090611460."},
        {"outside, not waiting", false, false, 0x41016903, "[SynSendMsg] send message failed."},
        {"in a task, waiting", true, true, no_peer,
         "[SynSendMsg] call KelpMsgGetErrorCode() failed. errCode = 1090611460"},
        {"in a task, not waiting", true, false, 0, "was not sent: it is not running"},
    };
    for (const auto& test : cases) {
        for (const std::uint16_t handle : {0, 1}) {
            SCOPED_TRACE(test.name);
            CapturedLog log;
            Call call;
            call.target.procHandle = handle;
            call.in_task = test.in_task;
            call.with_response = test.with_response;
            call.timeout = 1000000;
            call.MakeAlone(platform);
            EXPECT_EQ(call.code, test.code);
            EXPECT_TRUE(log.Contains(test.trace)) << ::testing::PrintToString(log.Texts());
        }
    }
}

// Handle 0 is the lowest running instance; a dead socket file is passed over.
TEST(SynSendMsg, HandleZeroFindsTheLowestInstance) {
    Platform platform;
    std::ofstream(platform.RunDir() + "/56.2.sock") << "";
    RawListener third(platform.RunDir(), kPeer, 3);
    RawListener tenth(platform.RunDir(), kPeer, 10);
    Call call;
    call.target.procHandle = 0;
    std::thread peer([&] {
        RawPeer line = third.Accept();
        const std::string request = line.ReceiveFrame();
        EXPECT_EQ(RawGet(request, kDstHandle), 0u);
        AnswerFive(line, request);
    });
    call.MakeAlone(platform);
    peer.join();
    EXPECT_EQ(call.code, 0);
    EXPECT_EQ(call.response, 5);
}

// ---- time

// Time-outs of 0 and below do not wait; a peer that answers later changes nothing.
TEST(SynSendMsg, TimeoutsThatDoNotWait) {
    const int timed_out = static_cast<int>(KELP_MSG_TIMEOUT);
    for (const bool in_task : {false, true}) {
        for (const int timeout : {0, -1, -2147483647 - 1}) {
            Platform platform(OnTestClock());  // the clock stands: no wait could end
            CapturedLog log;
            Call call;
            call.in_task = in_task;
            call.timeout = timeout;
            RawListener listener(platform.RunDir(), kPeer, 1);
            call.MakeAlone(platform);
            EXPECT_EQ(call.code, timed_out) << timeout;
            EXPECT_EQ(log.Count(in_task ? "[Frame][SynSendMsg] Send MSG TO failed, errCode = "
                                          "1090611457 \n"
                                        : "[Frame][SynSendMsg] call KelpSendSynMsgToMDP() failed, "
                                          "errCode = 1090611457."),
                      1u)
                << ::testing::PrintToString(log.Texts());
        }
    }
}

// The answer to a request that was given up reaches nobody, above all not the next one.
TEST(SynSendMsg, LateAnswerSatisfiesNobody) {
    for (const bool in_task : {false, true}) {
        SCOPED_TRACE(in_task);
        Platform platform(OnTestClock());
        RawListener listener(platform.RunDir(), kPeer, 1);
        std::thread peer([&] {
            RawPeer line = listener.Accept();
            const std::string first = line.ReceiveFrame();
            for (pollfd next{line.fd(), POLLIN, 0}; ::poll(&next, 1, 1) == 0;) {
                g_now += 31LL * 1000000000;  // until its time is over and the second is here
            }
            const std::string second = line.ReceiveFrame();
            EXPECT_NE(RawGet(first, kSerial), RawGet(second, kSerial));
            EXPECT_TRUE(line.SendFrame(RawAnswer(first, kSix)));
            AnswerFive(line, second);
            EXPECT_TRUE(line.SeesTheEnd());
        });
        Call first;
        Call second;
        second.timeout = 2147483647;
        const auto both = [&] {
            first.Run();
            second.Run();
        };
        if (in_task) {
            platform.InTask([&](KelpGnlTask&) { both(); });
        } else {
            both();
        }
        EXPECT_EQ(first.code, static_cast<int>(KELP_MSG_TIMEOUT));
        EXPECT_EQ(second.code, 0);
        EXPECT_EQ(second.response, 5);
        KelpAppMgr::Destroy();
        peer.join();
    }
}

// ---- within the process

std::atomic<int> g_depth{0};

void Nested(AsnType* request, AsnType* response, KelpGnlTask*) {
    const std::int64_t depth = *static_cast<AsnInt*>(request);
    ++g_depth;
    AsnInt below(depth - 1);
    AsnInt answer;
    int code = 0;
    if (depth > 0) {
        code =
            SynSendMsg({Platform::kProc, 1, Platform::kManager, 0}, 0x7E570310, below, &answer, 30);
    }
    *static_cast<AsnInt*>(response) = code != 0 ? code : depth + answer;
}

const FrameUtil::TModel_RegisterCmd g_nested(
    0x7E570310, [] { return static_cast<AsnType*>(new AsnInt); },
    [] { return static_cast<AsnType*>(new AsnInt); }, Platform::kManager, nullptr, Nested, false);

// Handlers that ask this process again: each level has a worker, the answers need none.
TEST(SynSendMsg, HandlersAskTheirOwnProcess) {
    Platform platform(KelpAppOptions(), 8);
    AsnInt request(7);
    AsnInt response;
    EXPECT_EQ(SynSendMsg({Platform::kProc, 0, 0, 0}, 0x7E570310, request, &response, 30), 0);
    EXPECT_EQ(response, 7 + 6 + 5 + 4 + 3 + 2 + 1);
}

}  // namespace
