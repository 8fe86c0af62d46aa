// A command's way: decoded, handled, answered, and every way in which that fails.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <stdexcept>

#include "kelp/asn1.h"
#include "kelp/task.h"
#include "support/captured_log.h"
#include "support/platform.h"
#include "support/raw_peer.h"

namespace {

using ::testing::HasSubstr;

enum Command : unsigned {
    kEcho = 100,
    kThrows,
    kThrowsNumber,
    kEndsThread,
    kNoResponseObject,
    kNoRequestObject,
    kNoTask,
    kTaskThrows,
    kOneWay,
    kTooLong,
    kElsewhere,
    kToken,
    kUnregistered,
};

std::atomic<int> g_handled{0};

AsnType* NewOcts() {
    return new AsnOcts;
}
AsnType* NewNothing() {
    return nullptr;
}

void Echo(AsnType* request, AsnType* response, KelpGnlTask* task) {
    EXPECT_EQ(KelpGetCurrentTask(), task);
    static_cast<AsnOcts*>(response)->str() = static_cast<AsnOcts*>(request)->str();
    ++g_handled;
}

void Throw(AsnType*, AsnType*, KelpGnlTask*) {
    throw std::runtime_error("out of order");
}
void ThrowNumber(AsnType*, AsnType*, KelpGnlTask*) {
    throw 5;
}
void EndThread(AsnType*, AsnType*, KelpGnlTask*) {
    ::pthread_exit(nullptr);
}
void Count(AsnType*, AsnType*, KelpGnlTask*) {
    ++g_handled;
}
void FillUp(AsnType*, AsnType* response, KelpGnlTask*) {
    static_cast<AsnOcts*>(response)->str() = std::string(5000, 'x');
}
void TellToken(AsnType*, AsnType* response, KelpGnlTask*) {
    std::string token;
    const unsigned result = KelpMsgGetToken(token, nullptr);
    static_cast<AsnOcts*>(response)->str() =
        std::to_string(result) + ":" + token + ":" + KelpMsgGetSIP(nullptr);
}
KelpGnlTask* MakeNoTask(KelpTaskMgr*) {
    return nullptr;
}
KelpGnlTask* ThrowNoTask(KelpTaskMgr*) {
    throw std::runtime_error("no task today");
}

void RegisterAll() {
    static const bool once = [] {
        KelpTaskCreator& creator = *KelpTaskCreator::Instance();
        const unsigned char mgr = Platform::kManager;
        const KelpTaskRegister all[] = {
            {mgr, kEcho, nullptr, NewOcts, NewOcts, nullptr, Echo},
            {mgr, kThrows, nullptr, NewOcts, NewOcts, nullptr, Throw},
            {mgr, kThrowsNumber, nullptr, nullptr, nullptr, nullptr, ThrowNumber},
            {mgr, kEndsThread, nullptr, nullptr, nullptr, nullptr, EndThread},
            {mgr, kNoResponseObject, nullptr, NewOcts, NewNothing, nullptr, Count},
            {mgr, kNoRequestObject, nullptr, NewNothing, NewOcts, nullptr, Count},
            {mgr, kNoTask, MakeNoTask, nullptr, nullptr, nullptr, Count},
            {mgr, kTaskThrows, ThrowNoTask, nullptr, nullptr, nullptr, Count},
            {mgr, kOneWay, nullptr, nullptr, nullptr, nullptr, Count},
            {mgr, kTooLong, nullptr, nullptr, NewOcts, nullptr, FillUp},
            {77, kElsewhere, nullptr, nullptr, nullptr, nullptr, Count},
            {mgr, kToken, nullptr, nullptr, NewOcts, nullptr, TellToken},
        };
        for (const KelpTaskRegister& registration : all) {
            EXPECT_TRUE(creator.RegisterTask(registration)) << registration.cmdCode;
        }
        return true;
    }();
    static_cast<void>(once);
}

const std::string kBody(
    "\x04\x03"
    "abc",
    5);  // OCTET STRING "abc"

class CommandTest : public ::testing::Test {
  protected:
    CommandTest() {
        RegisterAll();
        g_handled = 0;
    }
};

TEST_F(CommandTest, IsDecodedHandledAndAnswered) {
    Platform platform;
    std::string reply;
    EXPECT_EQ(Platform::Call(kEcho, kBody, &reply), 0u);
    EXPECT_EQ(reply, kBody);
}

TEST_F(CommandTest, FailuresAnswerWithACodeAndAnEmptyBody) {
    KelpAppOptions options;
    options.maxFrameOctets = 4096;
    Platform platform(options);
    const struct {
        const char* name;
        unsigned command;
        std::string body;
        std::uint32_t code;
        const char* logged;
    } cases[] = {
        {"nobody registered it", kUnregistered, "", KELP_MSG_NO_COMMAND,
         "command 112 from process 0.0 was refused: nobody registered it"},
        {"its manager is not here", kElsewhere, "", KELP_MSG_NO_TASK,
         "was refused: its task manager or task is not here"},
        {"the body is cut", kEcho, kBody.substr(0, 3), KELP_MSG_BAD_BODY,
         "the body of command 100 from process 0.0 does not decode: "},
        {"the body is empty", kEcho, "", KELP_MSG_BAD_BODY, "does not decode"},
        {"the body has another type", kEcho, std::string("\x02\x01\x05", 3), KELP_MSG_BAD_BODY,
         "Unexpected Tag"},
        {"octets behind the body", kEcho, kBody + "x", KELP_MSG_BAD_BODY, "does not decode"},
        {"the handler throws", kThrows, kBody, KELP_MSG_HANDLER_FAILED,
         "the handler of command 101 threw: out of order"},
        {"the handler throws a number", kThrowsNumber, "", KELP_MSG_HANDLER_FAILED,
         "the handler of command 102 threw"},
        {"the handler ends its thread", kEndsThread, "", KELP_MSG_HANDLER_FAILED,
         "a handler ended its worker thread in task manager 9"},
        {"no response object", kNoResponseObject, kBody, KELP_MSG_BAD_ANSWER,
         "no response object for command 104"},
        {"no request object", kNoRequestObject, kBody, KELP_MSG_BAD_BODY, "no request object"},
        {"no task", kNoTask, "", KELP_MSG_NO_MEMORY, "no task for command 106"},
        {"the task factory throws", kTaskThrows, "", KELP_MSG_NO_MEMORY,
         "the task factory of command 107 threw"},
        {"the response is too long", kTooLong, "", KELP_MSG_BAD_ANSWER,
         "the response of command 109 does not encode"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        CapturedLog log;
        std::string reply = "left over";
        EXPECT_EQ(Platform::Call(test.command, test.body, &reply), test.code);
        EXPECT_EQ(reply, "");
        EXPECT_TRUE(log.WaitFor(test.logged)) << ::testing::PrintToString(log.Texts());
        EXPECT_EQ(Platform::Call(kEcho, kBody), 0u) << "the process lives on";
    }
    EXPECT_EQ(g_handled, static_cast<int>(std::size(cases)));
}

// A pool whose threads are ended by handlers, one after the other, keeps its size.
TEST_F(CommandTest, PoolDoesNotShrink) {
    Platform platform(KelpAppOptions(), 2);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(Platform::Call(kEndsThread), static_cast<std::uint32_t>(KELP_MSG_HANDLER_FAILED));
    }
    EXPECT_TRUE(Eventually([] {
        return KelpDebugMgr::Report().find("task manager 9: 2 workers, 0 busy") !=
               std::string::npos;
    })) << KelpDebugMgr::Report();
}

// A request without a serial number from outside any task expects no answer and gets none.
TEST_F(CommandTest, OneWayRequestsAreNotAnswered) {
    Platform platform;
    RawPeer peer = RawPeer::Connect(platform.RunDir(), Platform::kProc, 1);
    ASSERT_TRUE(peer.Connected());
    ASSERT_TRUE(peer.SendFrame(RawRequest(Platform::kProc, kOneWay, 0, "")));
    ASSERT_TRUE(peer.SendFrame(RawRequest(Platform::kProc, kUnregistered, 0, "")));
    ASSERT_TRUE(peer.SendFrame(RawRequest(Platform::kProc, kEcho, 5, kBody)));
    EXPECT_EQ(RawGet(peer.ReceiveFrame(), kSerial), 5u) << "the first answer is the third's";
    EXPECT_TRUE(Eventually([] { return g_handled == 2; }));
}

// One that names a task as its sender can be answered without a serial number.
TEST_F(CommandTest, SenderThatNamesATaskIsAnswered) {
    Platform platform;
    RawPeer peer = RawPeer::Connect(platform.RunDir(), Platform::kProc, 1);
    std::string request = RawRequest(Platform::kProc, kEcho, 0, kBody);
    RawPut(request, kSrcMgr, 200);
    RawPut(request, kSrcTask, 0x1234);
    ASSERT_TRUE(peer.SendFrame(request));
    const std::string answer = peer.ReceiveFrame();
    EXPECT_EQ(RawGet(answer, kFlags), 1u);
    EXPECT_EQ(RawGet(answer, kDstMgr), 200u);
    EXPECT_EQ(RawGet(answer, kDstTask), 0x1234u);
    EXPECT_EQ(RawGet(answer, kDstProc), 7u);
    EXPECT_EQ(RawGet(answer, kDstHandle), 7u);
    EXPECT_EQ(RawGet(answer, kSrcProc), static_cast<std::uint64_t>(Platform::kProc));
    EXPECT_EQ(RawGet(answer, kCommand), static_cast<std::uint64_t>(kEcho));
    EXPECT_EQ(answer.substr(50), kBody);
}

TEST_F(CommandTest, WrongProcessIsSaid) {
    Platform platform;
    RawPeer peer = RawPeer::Connect(platform.RunDir(), Platform::kProc, 1);
    ASSERT_TRUE(peer.SendFrame(RawRequest(Platform::kProc + 1, kEcho, 5, kBody)));
    EXPECT_EQ(RawGet(peer.ReceiveFrame(), kError), static_cast<std::uint64_t>(KELP_MSG_NO_PEER));
}

// ---- the pre-work hook

std::atomic<int> g_hook_answer{1};
std::atomic<int> g_hook_calls{0};
std::string g_hook_saw;

int Hook(CmdMSG* msg) {
    ++g_hook_calls;
    std::string token;
    g_hook_saw = std::to_string(KelpMsgGetToken(token, nullptr)) + ":" + token + ":" +
                 std::to_string(msg->cmdCode);
    return g_hook_answer;
}

TEST_F(CommandTest, HookSeesEveryRequestFirst) {
    Platform platform;
    ASSERT_EQ(SetPreWorkTaskMsgFunc(&Hook), 0);
    g_hook_calls = 0;
    g_hook_answer = 1;
    EXPECT_EQ(Platform::Call(kEcho, kBody), 0u);
    EXPECT_EQ(g_hook_calls, 1);
    EXPECT_EQ(g_hook_saw, "0::100");
    g_hook_answer = 0;
    EXPECT_EQ(Platform::Call(kEcho, "not even a body"),
              static_cast<std::uint32_t>(KELP_MSG_REJECTED));
    EXPECT_EQ(g_hook_calls, 2);
    EXPECT_EQ(g_handled, 1) << "what is dropped is not handled";
    SetPreWorkTaskMsgFunc(nullptr);
    EXPECT_EQ(Platform::Call(kEcho, kBody), 0u);
    EXPECT_EQ(g_hook_calls, 2);
}

// A handler finds the token and the sender of its own request without naming a message.
TEST_F(CommandTest, TokenIsThatOfTheRequestBeingProcessed) {
    Platform platform;
    CmdMSG* msg = KelpMsgAlloc(0);
    msg->dstProcId = Platform::kProc;
    msg->cmdCode = kToken;
    ASSERT_TRUE(KelpMsgSetToken(msg, "secret"));
    CmdMSG* reply = nullptr;
    ASSERT_NE(KelpAppMgr::Instance()->KelpSendSynMsgToMDP(msg, reply, 30), 0);
    AsnOcts said;
    EXPECT_TRUE(AsnDecode(KelpMsgBody(reply), KelpMsgGetBodyLength(reply), said));
    EXPECT_EQ(said.str(), "1:secret:127.0.0.1");
    KelpMsgFree(reply);

    RawPeer peer = RawPeer::Connect(platform.RunDir(), Platform::kProc, 1);
    const std::string trailer("KTLR\x09\0T\x06\0secret", 15);
    ASSERT_TRUE(peer.SendFrame(RawRequest(Platform::kProc, kToken, 5, "") + trailer));
    EXPECT_EQ(peer.ReceiveFrame().substr(52), "1:secret:127.0.0.1");
}

// ---- the creator

TEST_F(CommandTest, RegistrationsAreChecked) {
    KelpTaskCreator& creator = *KelpTaskCreator::Instance();
    CapturedLog log;
    EXPECT_FALSE(creator.RegisterTask(
        {Platform::kManager, kEcho, nullptr, nullptr, nullptr, nullptr, Count}));
    EXPECT_TRUE(log.Contains("command 100 is registered already; the first registration stays"));
    EXPECT_FALSE(creator.RegisterTask({9, 4242, nullptr, nullptr, nullptr, nullptr, nullptr}));
    EXPECT_TRUE(log.Contains("command 4242 was registered without a handler"));
    EXPECT_FALSE(
        creator.RegisterTask({9, 0x100000000UL, nullptr, nullptr, nullptr, nullptr, Count}));
    EXPECT_TRUE(log.Contains("command 4294967296 does not fit a message's 32 bits"));
    EXPECT_EQ(creator.Find(kEcho)->handler, &Echo);
    EXPECT_EQ(creator.Find(4242), nullptr);
}

}  // namespace
