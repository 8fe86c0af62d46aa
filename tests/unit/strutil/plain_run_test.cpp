// PlainRun against a loop: every length around the widths it works in, every place of a
// stop, and neighbours that only look like one.

#include "strutil/plain_run.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "support/sweeps.h"

namespace FrameUtil {
namespace {

TEST(PlainRun, FindsTheFirstStop) {
    constexpr PlainRun kRun(',', '=', '\\');
    constexpr std::size_t kMost = 70;
    support::GuardedMemory in(kMost), out(kMost);
    for (std::size_t length = 0; length <= kMost; ++length) {
        for (std::size_t stop = 0; stop <= length; ++stop) {
            for (const char c : {',', '=', '\\'}) {
                // Characters one above and one below a stop stand all around.
                std::string text(length, static_cast<char>(c + 1));
                for (std::size_t i = 0; i < length; i += 3) {
                    text[i] = static_cast<char>(c - 1);
                }
                for (std::size_t i = stop; i < length; i += 5) {
                    text[i] = c;
                }
                const std::string_view from = in.Place(text);
                // Exactly as much room as there are characters.
                char* const to = const_cast<char*>(out.Place(std::string(length, '#')).data());
                const std::size_t plain = kRun.Copy(from.data(), from.data() + length, to);
                ASSERT_EQ(plain, std::min(text.find(c), length)) << length << ' ' << stop;
                ASSERT_EQ(std::string_view(to, plain), text.substr(0, plain));
            }
        }
    }
}

TEST(PlainRun, TakesAnyByte) {
    std::mt19937 random(4);
    for (int round = 0; round < 20'000; ++round) {
        std::string text(random() % 50, '\0');
        for (char& c : text) {
            c = static_cast<char>(random() % 8 == 0 ? 0x80 + random() % 3 : random());
        }
        const auto stop = static_cast<char>(random() % 2 == 0 ? 0x81 : random());
        const PlainRun run(stop);
        std::string out(text.size(), '#');
        const std::size_t plain = run.Copy(text.data(), text.data() + text.size(), out.data());
        ASSERT_EQ(plain, std::min(text.find(stop), text.size()));
        ASSERT_EQ(out.substr(0, plain), text.substr(0, plain));
    }
}

}  // namespace
}  // namespace FrameUtil
