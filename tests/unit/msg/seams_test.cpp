// The seams themselves, and the results that only they can produce.

#include "seams.h"

#include <gtest/gtest.h>

#include <utility>

#include "frameutil/msg.h"
#include "kelp/asn1.h"
#include "support/captured_log.h"
#include "support/platform.h"

extern "C" {

CmdMSG* __real__Z12KelpMsgAllocm(std::size_t octets);
CmdMSG* __wrap__Z12KelpMsgAllocm(std::size_t octets) {
    return std::exchange(seams::no_memory, false) ? nullptr : __real__Z12KelpMsgAllocm(octets);
}

int __real__ZN8KelpTask13KelpSynRecvExERP6CmdMSGi(KelpTask* self, CmdMSG** msg, int seconds);
int __wrap__ZN8KelpTask13KelpSynRecvExERP6CmdMSGi(KelpTask* self, CmdMSG** msg, int seconds) {
    if (std::exchange(seams::receive_nothing, false)) {
        *msg = nullptr;
        return 1;
    }
    return __real__ZN8KelpTask13KelpSynRecvExERP6CmdMSGi(self, msg, seconds);
}

int __real__ZN10KelpAppMgr19KelpSendSynMsgToMDPEP6CmdMSGRS1_i(KelpAppMgr* self, CmdMSG* msg,
                                                              CmdMSG** reply, int seconds);
int __wrap__ZN10KelpAppMgr19KelpSendSynMsgToMDPEP6CmdMSGRS1_i(KelpAppMgr* self, CmdMSG* msg,
                                                              CmdMSG** reply, int seconds) {
    if (std::exchange(seams::null_reply, false)) {
        KelpMsgFree(msg);
        *reply = nullptr;
        return 1;
    }
    return __real__ZN10KelpAppMgr19KelpSendSynMsgToMDPEP6CmdMSGRS1_i(self, msg, reply, seconds);
}

}  // extern "C"

namespace {

const FrameUtil::SMsgTarget kNobody{4000, 1, 4, 0};

TEST(SynSendMsgSeams, NoMemoryForTheMessage) {
    Platform platform;
    CapturedLog log;
    AsnInt request(5);
    AsnInt response(17);
    seams::no_memory = true;
    EXPECT_EQ(FrameUtil::SynSendMsg(kNobody, 5, request, &response, 5), 0x4101f00e);
    EXPECT_EQ(log.Count("[Frame][SynSendMsg] allocate memory failed."), 1u);
    EXPECT_EQ(response, 17);
}

TEST(SynSendMsgSeams, SuccessWithoutAMessage) {
    Platform platform;
    CapturedLog log;
    platform.InTask([](KelpGnlTask&) {
        AsnInt request(5);
        AsnInt response(17);
        seams::receive_nothing = true;
        EXPECT_EQ(FrameUtil::SynSendMsg(kNobody, 5, request, &response, 5), 0x45312d18);
        EXPECT_EQ(response, 17);
    });
    EXPECT_EQ(log.Count("[Frame][SynSendMsg] the msg pointer is null."), 1u);
}

TEST(SynSendMsgSeams, SuccessWithoutAReply) {
    Platform platform;
    AsnInt request(5);
    AsnInt response(17);
    seams::null_reply = true;
    EXPECT_EQ(FrameUtil::SynSendMsg(kNobody, 5, request, &response, 5), 0);
    EXPECT_EQ(response, 17);
}

}  // namespace
