// The tree as text: a line a value, led by its path.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iomanip>
#include <limits>
#include <locale>
#include <sstream>

#include "support/captured_log.h"
#include "support/small_stack.h"
#include "unit/paraset/every_type.h"

namespace {

using FrameUtil::CParaSet;

struct Dump {
    std::string text;
    int count;
    bool operator==(const Dump&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Dump& dump) {
        return out << dump.count << ": " << testing::PrintToString(dump.text);
    }
};

Dump DumpOf(CParaSet& node, const char* prefix = "p") {
    std::ostringstream out;
    out.imbue(std::locale::classic());
    int count = 0;
    node.subDisplay(prefix, out, count);
    return {out.str(), count};
}

TEST(Display, ALineAValue) {
    const struct {
        const char* name;
        void (*fill)(CParaSet&);
        Dump dump;
    } rows[] = {
        {"text", [](CParaSet& p) { p = "eth0"; }, {"\np:eth0(string).", 1}},
        {"empty text", [](CParaSet& p) { p = ""; }, {"\np:(string).", 1}},
        {"an integer", [](CParaSet& p) { p = 7; }, {"\np:7(integer).", 1}},
        {"the least integer",
         [](CParaSet& p) { p = std::numeric_limits<int>::min(); },
         {"\np:-2147483648(integer).", 1}},
        {"a large integer has no thousands' marks",
         [](CParaSet& p) { p = 1234567; },
         {"\np:1234567(integer).", 1}},
        {"a double", [](CParaSet& p) { p = 0.25; }, {"\np:0.25(double).", 1}},
        {"of six digits", [](CParaSet& p) { p = 3.14159265; }, {"\np:3.14159(double).", 1}},
        {"of many", [](CParaSet& p) { p = 123456789.0; }, {"\np:1.23457e+08(double).", 1}},
        {"a whole one", [](CParaSet& p) { p = 2.0; }, {"\np:2(double).", 1}},
        // Directly behind its path, with no ":" of its own.
        {"not valued", [](CParaSet&) {}, {"\np:invalid value(NULL).", 1}},
        {"of no known type", [](CParaSet& p) { p.SetType(CParaSet::PARA_RESERVED); }, {"", 0}},
        {"of a type from nowhere", [](CParaSet& p) { p.SetType(kUnknownType); }, {"", 0}},
        {"an empty structure", [](CParaSet& p) { p.SetType(CParaSet::PARA_STRUCT); }, {"", 0}},
        {"an empty array", [](CParaSet& p) { p.SetType(CParaSet::PARA_ARRAY); }, {"", 0}},
        {"a resource without a record",
         [](CParaSet& p) { p.SetType(CParaSet::PARA_RESID); },
         {"", 0}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        CParaSet node("node");
        row.fill(node);
        EXPECT_EQ(DumpOf(node), row.dump);
    }
}

// cfg holding a structure ne with an integer id and an array of two strings.
TEST(Display, ATreeByItsPaths) {
    CParaSet cfg("cfg");
    cfg["ne"]["id"] = 7;
    cfg["ports"][0] = "a";
    cfg["ports"][1] = "b";
    EXPECT_EQ(DumpOf(cfg, nullptr),
              (Dump{"\ncfg.ne.id:7(integer).\ncfg.ports.0:a(string).\ncfg.ports.1:b(string).", 3}));
    EXPECT_EQ(DumpOf(cfg, "x.y").text,
              "\nx.y.ne.id:7(integer).\nx.y.ports.0:a(string).\nx.y.ports.1:b(string).");
    EXPECT_EQ(DumpOf(cfg, "").text,
              "\n.ne.id:7(integer).\n.ports.0:a(string).\n.ports.1:b(string).");
}

TEST(Display, ChildrenByKeyInTheOrderOfTheKeys) {
    CParaSet cfg("cfg");
    for (const char* name : {"b", "a", "B", "##RowCount", "a1"}) {
        cfg[name] = 1;
    }
    cfg["a"].SetName("renamed");
    cfg.GetMapValue()["a.b"] = new CParaSet("dotted", 2);
    EXPECT_EQ(DumpOf(cfg).text,
              "\np.##RowCount:1(integer).\np.B:1(integer).\np.a:1(integer).\np.a.b:2(integer)."
              "\np.a1:1(integer).\np.b:1(integer).");
}

TEST(Display, ElementsByNumber) {
    CParaSet cfg("cfg");
    cfg[11] = 1;
    cfg[10][1] = 2;
    const Dump dump = DumpOf(cfg);
    EXPECT_EQ(dump.count, 2);
    EXPECT_THAT(dump.text, testing::StartsWith("\np.0:not valued(NULL).\np.1:not valued(NULL)."));
    EXPECT_THAT(dump.text, testing::EndsWith("\np.9:not valued(NULL).\np.10.0:not valued(NULL)."
                                             "\np.10.1:2(integer).\np.11:1(integer)."));
}

// A 1000-byte string is printed whole; a 1001-byte string prints its first 1000 bytes and
// "...".
TEST(Display, LongTextIsCut) {
    for (const std::size_t size : {999U, 1000U, 1001U, 1002U, 100'000U}) {
        CParaSet node("node");
        node = std::string(size, 'x');
        EXPECT_EQ(DumpOf(node).text, "\np:" + std::string(std::min<std::size_t>(size, 1000), 'x') +
                                         (size > 1000 ? "...(string)." : "(string)."))
            << size;
    }
    CParaSet zeros("node");
    zeros = std::string("a\0b", 3);
    EXPECT_EQ(DumpOf(zeros).text, std::string("\np:a\0b(string).", 15));
}

// A structure entry left with a null child prints its path and the dump goes on.
TEST(Display, AnEntryWithoutAChild) {
    CParaSet cfg("cfg");
    cfg["a"] = 1;
    cfg["b"] = 2;
    cfg["c"];
    cfg["d"] = 4;
    EXPECT_TRUE(cfg.clear("b"));
    EXPECT_EQ(DumpOf(cfg), (Dump{"\np.a:1(integer).\np.b:not valued(NULL)."
                                 "\np.c:invalid value(NULL).\np.d:4(integer).",
                                 3}));
}

// A node with a description prints its description line before its value line.
TEST(Display, Descriptions) {
    CParaSet cfg("cfg");
    cfg.SetDesc("the configuration");
    cfg["id"] = 7;
    cfg["id"].SetDesc("a number\nof two lines");
    cfg["list"].SetType(CParaSet::PARA_ARRAY);
    cfg["list"].SetDesc("empty");
    cfg["none"].SetDesc("not valued");
    EXPECT_EQ(DumpOf(cfg), (Dump{"\np.##desc:the configuration"
                                 "\np.id.##desc:a number\nof two lines\np.id:7(integer)."
                                 "\np.list.##desc:empty"
                                 "\np.none.##desc:not valued\np.none:invalid value(NULL).",
                                 6}));
    CParaSet reserved("r");
    reserved.SetType(CParaSet::PARA_RESERVED);
    reserved.SetDesc("seen");
    EXPECT_EQ(DumpOf(reserved), (Dump{"\np.##desc:seen", 1}));
}

TEST(Display, AResourceInItsOwnForm) {
    AsnDistinguishedResource resource = Resource("NE=1");
    resource.subtype.Emplace(5);
    std::ostringstream own;
    resource.Print(own, 0);
    CParaSet cfg("cfg");
    cfg["res"] = &resource;
    cfg["z"] = 1;
    EXPECT_EQ(DumpOf(cfg), (Dump{"\np.res" + own.str() + "\np.z:1(integer).", 2}));
    // The record of a node that has become something else is not seen.
    cfg["res"].SetType(CParaSet::PARA_INT);
    EXPECT_EQ(DumpOf(cfg), (Dump{"\np.res:0(integer).\np.z:1(integer).", 2}));
}

TEST(Display, OnlyTheChildrenOfItsTypeAreSeen) {
    CParaSet both("cfg");
    both["a"] = 1;
    both.GetVctValue().push_back(new CParaSet("root", 2));
    EXPECT_EQ(DumpOf(both).text, "\np.a:1(integer).");
    both.SetType(CParaSet::PARA_ARRAY);
    EXPECT_EQ(DumpOf(both).text, "\np.0:2(integer).");
    both = CParaSet("x", 3);
    EXPECT_EQ(DumpOf(both).text, "\np:3(integer).");
}

TEST(Display, AppendsAndAddsUp) {
    CParaSet node("node", 7);
    std::ostringstream out;
    out << "before";
    int count = 40;
    node.subDisplay("a", out, count);
    node.subDisplay("b", out, count);
    EXPECT_EQ(out.str(), "before\na:7(integer).\nb:7(integer).");
    EXPECT_EQ(count, 42);
}

// Integers are written as "%d" does whatever the stream is set to; doubles follow it.
TEST(Display, OnAStreamOfAnotherForm) {
    struct Grouped : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    CParaSet cfg("cfg");
    cfg["double"] = 1234.5;
    cfg["integer"] = 1234567;
    cfg["list"][0] = 255;
    std::ostringstream out;
    out.imbue(std::locale(std::locale::classic(), new Grouped));
    out << std::hex << std::showpos << std::setprecision(12);
    int count = 0;
    cfg.subDisplay("p", out, count);
    EXPECT_EQ(out.str(),
              "\np.double:+1.234,5(double).\np.integer:1234567(integer).\np.list.0:255(integer).");
}

// One error record of many lines, in the classic locale whatever the global one is.
TEST(Display, GoesToTheLogAsOneErrorRecord) {
    struct Comma : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
    };
    const std::locale former = std::locale::global(std::locale(std::locale::classic(), new Comma));
    CParaSet cfg("cfg");
    cfg["a"] = 1;
    cfg["b"] = 0.5;
    CapturedLog log;
    cfg.display("here");
    cfg.display(nullptr);
    std::locale::global(former);
    const auto entries = log.Entries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].text, "\nhere.a:1(integer).\nhere.b:0.5(double).");
    EXPECT_EQ(entries[1].text, "\ncfg.a:1(integer).\ncfg.b:0.5(double).");
    for (const auto& entry : entries) {
        EXPECT_EQ(entry.level, kelp::log::Level::kError);
        EXPECT_EQ(entry.code, 0u);
        EXPECT_EQ(entry.unit, "paraset");
        EXPECT_EQ(entry.function, "display");
        EXPECT_EQ(entry.line, 1448);
    }
    log.Clear();
    CParaSet empty("empty");
    empty.SetType(CParaSet::PARA_STRUCT);
    empty.display("x");
    EXPECT_THAT(log.Texts(), testing::ElementsAre(""));
}

TEST(Display, LeavesTheTreeAsItIs) {
    for (const CParaSet::ValueType type : kEveryType) {
        SCOPED_TRACE(NameOf(type));
        CParaSet node("node");
        MakeNode(node, type);
        const Fields fields = FieldsOf(node);
        const std::string shape = Shape(node);
        DumpOf(node);
        EXPECT_EQ(FieldsOf(node), fields);
        EXPECT_EQ(Shape(node), shape);
    }
}

TEST(Display, OfAHundredThousandLevelsTakesNoStack) {
    CParaSet root("r");
    CParaSet* node = &root;
    constexpr std::size_t kLevels = 100'000;
    for (std::size_t i = 0; i != kLevels; ++i) {
        node = &(*node)["a"];
    }
    *node = 7;
    Dump dump;
    OnSmallStack([&] { dump = DumpOf(root); });
    EXPECT_EQ(dump.count, 1);
    EXPECT_EQ(dump.text.size(), 2 + 2 * kLevels + std::string(":7(integer).").size());
    EXPECT_TRUE(dump.text.ends_with(".a.a:7(integer)."));
}

}  // namespace
