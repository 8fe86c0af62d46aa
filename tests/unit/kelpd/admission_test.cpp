// Connections are counted in all and by address; a few beyond the limits get an answer.

#include "kelpd/gateway/admission.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace kelpd {
namespace {

using Verdict = Admission::Verdict;
using Ticket = Admission::Ticket;

TEST(Admission, LimitsInAllAndByAddress) {
    Admission admission(3, 2, 1);
    Ticket a1, a2, a3, b1, b2, none;
    EXPECT_EQ(admission.Admit("a", a1), Verdict::kServe);
    EXPECT_EQ(admission.Admit("a", a2), Verdict::kServe);
    EXPECT_EQ(admission.Admit("a", a3), Verdict::kAnswerBusy);
    EXPECT_EQ(admission.Admit("a", none), Verdict::kDrop);
    EXPECT_EQ(admission.Admit("b", b1), Verdict::kServe);
    EXPECT_EQ(admission.Admit("b", b2), Verdict::kDrop);
    EXPECT_EQ(admission.open(), 4U);
    a3 = Ticket();
    EXPECT_EQ(admission.Admit("b", b2), Verdict::kAnswerBusy);
    a1 = Ticket();
    EXPECT_EQ(admission.Admit("b", none), Verdict::kServe);
    EXPECT_EQ(admission.open(), 4U);
}

TEST(Admission, TicketThatMovesCountsOnce) {
    Admission admission(1, 1, 0);
    {
        Ticket ticket;
        ASSERT_EQ(admission.Admit("a", ticket), Verdict::kServe);
        Ticket moved(std::move(ticket));
        Ticket assigned;
        assigned = std::move(moved);
        EXPECT_EQ(admission.open(), 1U);
    }
    EXPECT_EQ(admission.open(), 0U);
    Ticket again;
    EXPECT_EQ(admission.Admit("a", again), Verdict::kServe);
}

TEST(Admission, ThreadsNeverPassTheLimits) {
    Admission admission(4, 4, 0);
    std::vector<std::thread> threads;
    std::atomic<int> open{0};
    std::atomic<int> most{0};
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, address = std::to_string(i % 2)] {
            for (int round = 0; round < 5000; ++round) {
                Ticket one, two;
                for (Ticket* ticket : {&one, &two}) {
                    if (admission.Admit(address, *ticket) == Verdict::kServe) {
                        const int now = ++open;
                        for (int seen = most;
                             seen < now && !most.compare_exchange_weak(seen, now);) {
                        }
                        --open;
                    }
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_LE(most, 4);
    EXPECT_EQ(admission.open(), 0U);
}

}  // namespace
}  // namespace kelpd
