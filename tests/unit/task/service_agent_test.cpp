// The process withdraws from the services of the node and goes on with what it has.

#include "kelp/service_agent.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "kelp/task.h"
#include "support/platform.h"
#include "support/raw_peer.h"

namespace {

constexpr unsigned kEcho = 0x7E570300;

void Echo(AsnType*, AsnType*, KelpGnlTask*) {}

bool IsRegistered(const Platform& platform) {
    return std::filesystem::exists(platform.RunDir() + "/3001.1.sock");
}

TEST(ServiceAgent, WithdrawnProcessServesWhoIsConnected) {
    static const bool registered = KelpTaskCreator::Instance()->RegisterTask(
        {Platform::kManager, kEcho, nullptr, nullptr, nullptr, nullptr, Echo});
    ASSERT_TRUE(registered);
    const Platform platform;
    RawPeer peer = RawPeer::Connect(platform.RunDir(), Platform::kProc, 1);
    ASSERT_TRUE(peer.SendFrame(RawRequest(Platform::kProc, kEcho, 1, "")));
    EXPECT_EQ(RawGet(peer.ReceiveFrame(), kSerial), 1u);
    EXPECT_TRUE(IsRegistered(platform));

    for (int time = 1; time <= 2; ++time) {
        KELPsac::KELPInstance::cleanup();
        EXPECT_FALSE(IsRegistered(platform));
        EXPECT_FALSE(RawPeer::Connect(platform.RunDir(), Platform::kProc, 1).Connected());
    }
    ASSERT_TRUE(peer.SendFrame(RawRequest(Platform::kProc, kEcho, 2, "")));
    const std::string answer = peer.ReceiveFrame();
    EXPECT_EQ(RawGet(answer, kSerial), 2u);
    EXPECT_EQ(RawGet(answer, kError), 0u);
    EXPECT_EQ(Platform::Call(kEcho), 0u) << "its own calls go on as well";
    EXPECT_TRUE(KelpAppMgr::IsInitialized());
}

TEST(ServiceAgent, NothingIsRegistered) {
    ASSERT_FALSE(KelpAppMgr::IsInitialized());
    KELPsac::KELPInstance::cleanup();
    KelpAppOptions client;
    ASSERT_TRUE(KelpAppMgr::Initialize(client));
    KELPsac::KELPInstance::cleanup();
    EXPECT_TRUE(KelpAppMgr::IsInitialized());
    KelpAppMgr::Destroy();
}

// The identity is free at once: a new instance takes over while the old one ends.
TEST(ServiceAgent, TheEndComesAsUsual) {
    {
        const Platform platform;
        KELPsac::KELPInstance::cleanup();
    }
    EXPECT_FALSE(KelpAppMgr::IsInitialized());
    const Platform again;
    EXPECT_TRUE(IsRegistered(again));
}

}  // namespace
