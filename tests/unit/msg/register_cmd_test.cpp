// Declaring a command.

#include <gtest/gtest.h>

#include "frameutil/msg.h"
#include "kelp/asn1.h"
#include "support/captured_log.h"

namespace {

AsnType* NewRequest() {
    return new AsnInt;
}
AsnType* NewResponse() {
    return new AsnOcts;
}
KelpGnlTask* NewTask(KelpTaskMgr* mgr) {
    return new KelpGnlTask(mgr);
}
void Handle(AsnType*, AsnType*, KelpGnlTask*) {}

// At namespace scope, as it is meant: registered before main.
const FrameUtil::TModel_RegisterCmd g_own(0x7E570300, NewRequest, NewResponse, 4, NewTask, Handle,
                                          false);
const FrameUtil::TModel_RegisterCmd g_shared(0x7E570301, NewRequest, NewResponse, 4, nullptr,
                                             Handle, true);

TEST(RegisterCmd, FillsTheRegistration) {
    const KelpTaskRegister* found = KelpTaskCreator::Instance()->Find(0x7E570300);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->taskMgrId, 4);
    EXPECT_EQ(found->cmdCode, 0x7E570300u);
    EXPECT_EQ(found->taskCreator, &NewTask);
    EXPECT_EQ(found->reqCreator, &NewRequest);
    EXPECT_EQ(found->rspCreator, &NewResponse);
    EXPECT_EQ(found->reserved, nullptr);
    EXPECT_EQ(found->handler, &Handle);
}

// On the shared manager whatever the identifier says.
TEST(RegisterCmd, SharedManagerIs200) {
    EXPECT_EQ(KelpTaskCreator::Instance()->Find(0x7E570301)->taskMgrId, 200);
}

// The first declaration of a code holds, and a line of the log names the second.
TEST(RegisterCmd, SecondDeclarationIsRefused) {
    CapturedLog log;
    {
        const FrameUtil::TModel_RegisterCmd again(0x7E570300, nullptr, nullptr, 5, nullptr, Handle,
                                                  false);
    }
    EXPECT_TRUE(log.Contains("command 2119631616 is registered already"));
    EXPECT_EQ(KelpTaskCreator::Instance()->Find(0x7E570300)->taskMgrId, 4);
}

}  // namespace
