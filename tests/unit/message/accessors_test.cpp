// What can be read from a message and set in it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "kelp/message.h"
#include "message/block.h"
#include "message/current.h"

namespace {

using kelp::message::CurrentMessageScope;
using kelp::message::MsgPtr;

MsgPtr MakeMessage(const std::string& body) {
    MsgPtr msg(KelpMsgAlloc(body.size()));
    body.copy(reinterpret_cast<char*>(KelpMsgBody(msg.get())), body.size());
    return msg;
}

std::string BodyOf(const CmdMSG* msg) {
    return std::string(reinterpret_cast<const char*>(KelpMsgBody(msg)), KelpMsgGetBodyLength(msg));
}

// A fresh message has its version, its kind and its length; all else is zero.
TEST(Message, IsFresh) {
    const MsgPtr msg(KelpMsgAlloc(7));
    std::string expected(50, '\0');
    expected[0] = 10;
    expected[24] = 6;
    expected[44] = 9;  // the body's length and 2
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(msg.get()), 50), expected);
    EXPECT_EQ(KelpMsgGetBodyLength(msg.get()), 7u);
}

TEST(Message, HasNoRoomForMoreThanAGigabyte) {
    EXPECT_EQ(KelpMsgAlloc((std::size_t{1} << 30) + 1), nullptr);
    EXPECT_EQ(KelpMsgAlloc(SIZE_MAX), nullptr);
}

TEST(Message, NullIsHarmless) {
    KelpMsgFree(nullptr);
    KelpMsgSetSn(nullptr, 5);
    CmdMSG* none = nullptr;
    std::string token = "left over";
    EXPECT_EQ(KelpMsgGetSn(nullptr), 0u);
    EXPECT_EQ(KelpMsgGetErrorCode(nullptr), 0xFFFFFFFFu);
    EXPECT_EQ(KelpMsgGetBodyLength(nullptr), 0u);
    EXPECT_EQ(KelpMsgAllocAnswer(nullptr, 3), nullptr);
    EXPECT_FALSE(KelpMsgSetToken(none, "t"));
    EXPECT_EQ(KelpMsgGetToken(token, nullptr), 0xFFFFFFFFu);
    EXPECT_EQ(token, "");
    EXPECT_EQ(KelpMsgGetSIP(nullptr), "");
}

// An answer goes back to where its request came from, with its serial number and command.
TEST(Message, AnswerTurnsTheAddressesRound) {
    const MsgPtr request(KelpMsgAlloc(0));
    request->srcDesk = 1;
    request->dstDesk = 2;
    request->srcProcHandle = 3;
    request->srcProcId = 5;
    request->dstProcId = 6;
    request->srcTaskId = 7;
    request->dstTaskId = 8;
    request->srcTaskMgr = 9;
    request->dstTaskMgr = 10;
    request->cmdCode = 2167;
    KelpMsgSetSn(request.get(), 77);
    const MsgPtr answer(KelpMsgAllocAnswer(request.get(), 4));
    EXPECT_EQ(answer->srcDesk, 2);
    EXPECT_EQ(answer->dstDesk, 1);
    EXPECT_EQ(answer->dstProcHandle, 3);
    EXPECT_EQ(answer->srcProcId, 6);
    EXPECT_EQ(answer->dstProcId, 5);
    EXPECT_EQ(answer->srcTaskId, 8);
    EXPECT_EQ(answer->dstTaskId, 7);
    EXPECT_EQ(answer->srcTaskMgr, 10);
    EXPECT_EQ(answer->dstTaskMgr, 9);
    EXPECT_EQ(answer->cmdCode, 2167u);
    EXPECT_EQ(KelpMsgGetSn(answer.get()), 77u);
    EXPECT_EQ(answer->flags, KELP_MSG_REPLY);
    EXPECT_EQ(answer->bodyLength, 6u);
}

// The token lies behind the body, is not counted in its length, and can be changed.
TEST(Message, CarriesAToken) {
    MsgPtr msg = MakeMessage("body");
    CmdMSG* raw = msg.release();
    std::string token = "left over";
    EXPECT_EQ(KelpMsgGetToken(token, raw), 0u);
    EXPECT_EQ(token, "");
    for (const std::string value : {"first", "a longer second one", "x"}) {
        ASSERT_TRUE(KelpMsgSetToken(raw, value));
        EXPECT_EQ(KelpMsgGetToken(token, raw), 1u);
        EXPECT_EQ(token, value);
        EXPECT_EQ(BodyOf(raw), "body");
        EXPECT_EQ(raw->bodyLength, 6u);
    }
    ASSERT_TRUE(KelpMsgSetToken(raw, ""));
    EXPECT_EQ(KelpMsgGetToken(token, raw), 0u);
    KelpMsgFree(raw);
}

TEST(Message, TakesNoUnusableToken) {
    CmdMSG* raw = MakeMessage("body").release();
    const CmdMSG* const before = raw;
    EXPECT_FALSE(KelpMsgSetToken(raw, std::string(KELP_MSG_MAX_TOKEN + 1, 't')));
    EXPECT_FALSE(KelpMsgSetToken(raw, std::string("a\0b", 3)));
    EXPECT_EQ(raw, before);
    EXPECT_TRUE(KelpMsgSetToken(raw, std::string(KELP_MSG_MAX_TOKEN, 't')));
    KelpMsgFree(raw);
}

// A body that was made shorter after the token was set takes the trailer with it.
TEST(Message, TrailerFollowsAShorterBody) {
    CmdMSG* raw = MakeMessage("0123456789").release();
    ASSERT_TRUE(KelpMsgSetToken(raw, "tok"));
    raw->bodyLength = 4 + 2;
    ASSERT_TRUE(kelp::message::Seal(raw));
    std::string token;
    EXPECT_EQ(KelpMsgGetToken(token, raw), 1u);
    EXPECT_EQ(token, "tok");
    EXPECT_EQ(BodyOf(raw), "0123");
    EXPECT_EQ(kelp::message::BlockOf(raw)->wire_length, 50u + 4 + 4 + 2 + 3 + 3);
    KelpMsgFree(raw);
}

// A header that claims more than the block holds is not sent.
TEST(Message, ClaimsNoMoreThanItHolds) {
    const MsgPtr msg(KelpMsgAlloc(10));
    for (const std::uint32_t length : {0u, 1u, 13u, 0xFFFFFFFFu}) {
        msg->bodyLength = length;
        EXPECT_FALSE(kelp::message::Seal(msg.get())) << length;
    }
    for (const std::uint32_t length : {2u, 12u}) {
        msg->bodyLength = length;
        EXPECT_TRUE(kelp::message::Seal(msg.get())) << length;
    }
}

// Asked without a message, the accessors answer for the one being processed.
TEST(Message, CurrentOneAnswersForNone) {
    CmdMSG* raw = MakeMessage("").release();
    ASSERT_TRUE(KelpMsgSetToken(raw, "tok"));
    kelp::message::BlockOf(raw)->received = true;
    std::string token;
    {
        const CurrentMessageScope scope(raw);
        EXPECT_EQ(KelpMsgGetToken(token, nullptr), 1u);
        EXPECT_EQ(token, "tok");
        EXPECT_EQ(KelpMsgGetSIP(nullptr), "127.0.0.1");
        KelpMsgFree(raw);  // from here on nothing is being processed
        EXPECT_EQ(KelpMsgGetToken(token, nullptr), 0xFFFFFFFFu);
    }
    EXPECT_EQ(KelpMsgGetToken(token, nullptr), 0xFFFFFFFFu);
}

// What a failed receive leaves in a slot carries a code and outlives being freed.
TEST(Message, ErrorSlotsAreNeverFreed) {
    for (const std::uint32_t code : {KELP_MSG_TIMEOUT, KELP_MSG_STOPPED, KELP_MSG_PEER_CLOSED}) {
        CmdMSG* slot = kelp::message::ErrorSlot(code);
        KelpMsgFree(slot);
        KelpMsgFree(slot);
        EXPECT_EQ(KelpMsgGetErrorCode(slot), code);
        EXPECT_EQ(KelpMsgGetBodyLength(slot), 0u);
    }
    EXPECT_EQ(KelpMsgGetErrorCode(kelp::message::ErrorSlot(0x12345)),
              static_cast<std::uint32_t>(KELP_MSG_SEND_FAILED));
}

TEST(Message, IsTakenApart) {
    CmdMSG* raw = MakeMessage(std::string("bo\0dy", 5)).release();
    raw->cmdCode = 11;
    raw->serial = 12;
    raw->errorCode = 13;
    raw->srcProcId = 14;
    raw->clientAddress = 15;
    ASSERT_TRUE(KelpMsgSetToken(raw, "tok"));
    TECmdMsg apart;
    ASSERT_TRUE(apart.FromCmdMsg(raw));
    EXPECT_EQ(apart.version, 10);
    EXPECT_EQ(apart.clientAddress, 15u);
    EXPECT_EQ(apart.cmdCode, 11u);
    EXPECT_EQ(apart.serial, 12u);
    EXPECT_EQ(apart.errorCode, 13u);
    EXPECT_EQ(apart.srcProcId, 14);
    EXPECT_EQ(apart.token, "tok");
    EXPECT_EQ(apart.sourceAddress, "");
    EXPECT_EQ(apart.body, std::string("bo\0dy", 5));
    EXPECT_FALSE(apart.FromCmdMsg(nullptr));
    EXPECT_EQ(apart.cmdCode, 0u);
    EXPECT_EQ(apart.body, "");
    KelpMsgFree(raw);
}

}  // namespace
