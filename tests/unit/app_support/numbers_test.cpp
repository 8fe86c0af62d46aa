#include "support/numbers.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(ParseInteger, TakesTheWholeTextOrNothing) {
    EXPECT_EQ(app::ParseInteger("-7", -10, 10), -7);
    EXPECT_EQ(app::ParseInteger("10", -10, 10), 10);
    EXPECT_EQ(app::ParseInteger("11", -10, 10), std::nullopt);
    for (const char* text : {"", "-", "+1", " 1", "1 ", "1x", "0x1", "99999999999999999999"}) {
        EXPECT_EQ(app::ParseInteger(text, -10, 10), std::nullopt) << text;
    }
}

TEST(ParseDouble, TakesFiniteNumbersOnly) {
    EXPECT_EQ(app::ParseDouble("-1.5e2"), -150.0);
    for (const char* text : {"", "1.5x", "nan", "inf", "1e999", " 1"}) {
        EXPECT_EQ(app::ParseDouble(text), std::nullopt) << text;
    }
}

TEST(DoubleText, IsShortAndReadsBack) {
    const struct {
        double value;
        const char* text;
    } cases[] = {
        {0, "0"},
        {0.1, "0.1"},
        {-2.5, "-2.5"},
        {31414067, "31414067"},
        {1e14, "100000000000000"},
        {1e15, "1e+15"},
        {1e-5, "1e-05"},
        {1e300, "1e+300"},
        {std::numeric_limits<double>::infinity(), "inf"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(app::DoubleText(c.value), c.text);
    }
}

}  // namespace
