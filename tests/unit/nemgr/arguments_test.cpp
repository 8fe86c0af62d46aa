#include "nemgr/arguments.h"

#include <gtest/gtest.h>

#include <functional>

#include "nemgr/results.h"

namespace {

using FrameUtil::CParaSet;
using nemgr::Arguments;
using nemgr::CommandFailure;

// What `use` is refused with; "" when it is not.
std::string Refusal(const std::function<void()>& use) {
    try {
        use();
    } catch (const CommandFailure& failure) {
        EXPECT_EQ(failure.result(), nemgr::Result::kBadArgument);
        return failure.item();
    }
    return "";
}

TEST(NemgrArguments, TextsMayComeAsIntegers) {
    CParaSet request("request");
    request["##UserID"] = 1;
    request["##RowCount"] = 1;
    request["t"] = "x";
    request["i"] = 112233;
    request["d"] = 1.5;
    request["n"];
    const Arguments arguments(request, {"t", "i", "d", "n"});
    EXPECT_EQ(arguments.Text("t"), "x");
    EXPECT_EQ(arguments.Text("i"), "112233");
    EXPECT_EQ(arguments.Text("n"), std::nullopt);
    EXPECT_EQ(arguments.Text("none"), std::nullopt);
    EXPECT_EQ(Refusal([&] { arguments.Text("d"); }), "d: not a text");
    EXPECT_EQ(arguments.Integer("i", 0, 200000), 112233);
    EXPECT_EQ(arguments.Integer("none", 0, 1), std::nullopt);
    EXPECT_EQ(Refusal([&] { arguments.Integer("i", 0, 5); }), "i: out of range");
    EXPECT_EQ(Refusal([&] { arguments.Integer("t", 0, 5); }), "t: not an integer");
}

TEST(NemgrArguments, UnknownNamesAndSeveralRowsAreRefused) {
    CParaSet request("request");
    request["elment"] = "x";
    EXPECT_EQ(Refusal([&] { Arguments(request, {"element"}); }), "elment: no such argument");
    CParaSet rows("request");
    rows["##RowCount"] = 2;
    EXPECT_EQ(Refusal([&] { Arguments(rows, {}); }), "more than one row of arguments");
    CParaSet table("request");
    table["element"][1] = "x";
    const Arguments arguments(table, {"element"});
    EXPECT_EQ(Refusal([&] { arguments.Text("element"); }), "element: not a text");
}

}  // namespace
