// The small parts beneath the bus: rings, serial numbers, outstanding requests.

#include <gtest/gtest.h>

#include <deque>
#include <set>

#include "base/ring.h"
#include "message/block.h"
#include "message/outstanding.h"
#include "message/serials.h"

namespace {

using kelp::base::Ring;
using kelp::message::MsgPtr;
using kelp::message::Outstanding;
using kelp::message::OutstandingRequest;
using kelp::message::Serials;

// A ring does what a deque does, whatever the order of operations.
TEST(Ring, BehavesLikeADeque) {
    Ring<int> ring;
    std::deque<int> model;
    unsigned random = 12345;
    for (int step = 0; step < 20000; ++step) {
        random = random * 1103515245 + 12345;
        switch ((random >> 16) % 5) {
            case 0:
            case 1:
                ring.PushBack(step);
                model.push_back(step);
                break;
            case 2:
                ring.PushFront(step);
                model.push_front(step);
                break;
            case 3:
                if (!model.empty()) {
                    EXPECT_EQ(ring.PopFront(), model.front());
                    model.pop_front();
                }
                break;
            default:
                if (model.size() > 40) {
                    ring.Retain([](int value) { return value % 3 == 0; });
                    std::erase_if(model, [](int value) { return value % 3 != 0; });
                }
        }
        ASSERT_EQ(ring.size(), model.size());
        for (std::size_t i = 0; i < model.size(); ++i) {
            ASSERT_EQ(ring[i], model[i]);
        }
    }
}

// Never 0, and after the count has come round nothing that is still in use.
TEST(Serials, SkipWhatIsInUse) {
    Serials serials(0xFFFFFFFE);
    const auto in_use = [](std::uint32_t serial) { return serial == 1 || serial == 2; };
    EXPECT_EQ(serials.Next(in_use), 0xFFFFFFFEu);
    EXPECT_EQ(serials.Next(in_use), 0xFFFFFFFFu);
    EXPECT_EQ(serials.Next(in_use), 3u);
    EXPECT_EQ(serials.Next(in_use), 4u);
}

TEST(Serials, AreNotAskedForBeforeTheyComeRound) {
    Serials serials;
    for (std::uint32_t expected = 1; expected < 100; ++expected) {
        EXPECT_EQ(serials.Next([](std::uint32_t) { return true; }), expected);
    }
}

OutstandingRequest Request(std::uint32_t serial, std::uint32_t command = 5) {
    OutstandingRequest request;
    request.serial = serial;
    request.cmd_code = command;
    request.task_id = 0x1001;
    request.task_mgr = 4;
    return request;
}

MsgPtr Answer(std::uint32_t serial, std::uint32_t command = 5) {
    MsgPtr msg(KelpMsgAlloc(0));
    msg->serial = serial;
    msg->cmdCode = command;
    msg->dstTaskId = 0x1001;
    msg->dstTaskMgr = 4;
    return msg;
}

std::set<std::uint32_t> SerialsOf(Outstanding& outstanding) {
    std::set<std::uint32_t> serials;
    for (const OutstandingRequest& request : outstanding.TakeAll()) {
        serials.insert(request.serial);
    }
    return serials;
}

TEST(Outstanding, AnswerEndsItsRequestOnly) {
    Outstanding outstanding;
    for (std::uint32_t serial = 1; serial <= 100; ++serial) {
        outstanding.Add(Request(serial));
    }
    outstanding.Remove(*Answer(50));
    outstanding.Remove(*Answer(51, 6));  // another command
    outstanding.Remove(*Answer(500));    // never sent
    outstanding.Cancel(60);
    EXPECT_FALSE(outstanding.Holds(50));
    EXPECT_TRUE(outstanding.Holds(51));
    EXPECT_EQ(outstanding.Count(), 98u);
}

TEST(Outstanding, AnswerWithoutSerialEndsTheEldestOfItsCommand) {
    Outstanding outstanding;
    outstanding.Add(Request(9));
    outstanding.Add(Request(7));
    outstanding.Add(Request(3, 6));
    outstanding.Remove(*Answer(0));
    EXPECT_EQ(SerialsOf(outstanding), (std::set<std::uint32_t>{3, 9}));
    EXPECT_EQ(outstanding.Count(), 0u);
}

// A peer that never answers does not make it grow without bound; the newest are kept.
TEST(Outstanding, IsBounded) {
    Outstanding outstanding;
    const auto most = static_cast<std::uint32_t>(Outstanding::kMost);
    for (std::uint32_t serial = 1; serial <= 3 * most; ++serial) {
        outstanding.Add(Request(serial));
    }
    EXPECT_EQ(outstanding.Count(), Outstanding::kMost);
    EXPECT_TRUE(outstanding.Holds(3 * most));
    EXPECT_TRUE(outstanding.Holds(2 * most + 1));
    EXPECT_FALSE(outstanding.Holds(2 * most));
}

TEST(Outstanding, EmptyOneIsHarmless) {
    Outstanding outstanding;
    outstanding.Remove(*Answer(1));
    outstanding.Remove(*Answer(0));
    outstanding.Cancel(1);
    EXPECT_FALSE(outstanding.Holds(1));
    EXPECT_TRUE(outstanding.TakeAll().empty());
}

}  // namespace
