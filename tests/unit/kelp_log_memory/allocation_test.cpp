// Logging where memory has run out.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "kelp/log.h"
#include "support/failing_new.h"
#include "support/temp_folder.h"

namespace {

const LocationInfo& kNowhere = LocationInfo::getLocationUnavailable();

// Whichever allocation of a call fails: the call returns, the warning and what waited
// before it are found in the file or on standard error, the log works afterwards, and nothing is
// leaked.
TEST(Memory, EveryAllocationOfAWarningFails) {
    const TempFolder folder;
    kelp::log::Options options;
    options.file = folder.Path("log");
    // Longer than what strings hold without an allocation.
    const std::string padding(64, 'x');
    LogProcess::Init(options);  // what it keeps for good it has from here on
    LogProcess::Warn("first", kNowhere);
    bool fired = true;
    int n = 0;
    while (fired) {
        ++n;
        ASSERT_LT(n, 1000);
        const std::string text = padding + " record " + std::to_string(n) + ".";
        // Counted while the log has no thread that could be in the middle of something.
        LogProcess::Destroy();
        const long before = LiveAllocations();
        EXPECT_TRUE(LogProcess::Init(options));
        LogProcess::Info("the thread runs", kNowhere);
        kelp::log::Flush();
        testing::internal::CaptureStderr();
        LogProcess::Info("it waits, most often, before " + text, kNowhere);
        {
            const FailNthAllocation failing(n);
            LogProcess::Warn(text, kNowhere);
            fired = failing.Fired();
        }
        kelp::log::Reopen();  // a file that was given up is taken up at once
        LogProcess::Warn("afterwards", kNowhere);
        const std::string errors = testing::internal::GetCapturedStderr();
        LogProcess::Destroy();
        const long after = LiveAllocations() - (errors.capacity() > 15 ? 1 : 0);
        const std::string file = ReadFile(options.file);
        EXPECT_THAT(errors + file, testing::HasSubstr("it waits, most often, before " + text)) << n;
        EXPECT_THAT(errors + file, testing::ContainsRegex("[^e] " + text)) << n;
        EXPECT_THAT(file, testing::EndsWith(" afterwards\n")) << n << errors;
        EXPECT_EQ(after, before) << n;
    }
    EXPECT_GT(n, 1) << "no allocation failed";
}

// A call of another kind survives as well: it may have no effect, but it returns.
TEST(Memory, SinksAndLevels) {
    struct Counter : kelp::log::Sink {
        void Write(const kelp::log::Record&) override { ++count; }
        int count = 0;
    };
    kelp::log::SetLevel(kelp::log::Level::kOff);
    const auto counter = std::make_shared<Counter>();
    bool fired = true;
    for (long n = 1; fired; ++n) {
        ASSERT_LT(n, 1000);
        testing::internal::CaptureStderr();
        {
            const FailNthAllocation failing(n);
            kelp::log::AddSink(counter);
            LogProcess::Info("x", kNowhere);
            kelp::log::RemoveSink(counter.get());
            fired = failing.Fired();
        }
        testing::internal::GetCapturedStderr();
        kelp::log::RemoveSink(counter.get());
        EXPECT_EQ(counter.use_count(), 1) << n;
    }
    EXPECT_GT(counter->count, 0);
}

}  // namespace
