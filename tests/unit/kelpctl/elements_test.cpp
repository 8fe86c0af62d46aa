#include "kelpctl/paraset/elements.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <vector>

#include "support/octets.h"
#include "support/temp_folder.h"

namespace {

using FrameUtil::CEndeCode;
using kelpctl::Form;
using kelpctl::WalkedElement;
using support::Octets;

constexpr const char* kDescription =
    "1100 0 id 2 -1 -1\n"
    "1100 0 ports 257 4 160\n"
    "1100 0 extra 256 -1 165\n"
    "1100 0 size 2 -1 128\n"
    "1101 0 list 257 1100 -1\n"
    "1102 0 one 4 129 129\n"
    "1102 0 details 257 258 -1\n";

const CEndeCode& Codec() {
    static const CEndeCode* const codec = [] {
        const TempFolder folder;
        std::ofstream(folder.Path("desc")) << kDescription;
        return new CEndeCode(folder.Path("desc"));
    }();
    return *codec;
}

Form Key(int key) {
    return {Form::Kind::kCodec, key, -1, -1};
}

// "name:offset" of each element; a name in parentheses is not read.
std::string Names(const Form& form, const std::string& octets) {
    std::string text;
    kelpctl::WalkElements(Codec(), form, octets, [&](const WalkedElement& element) {
        const std::string& name = element.match.name;
        text += (text.empty() ? "" : " ") + (element.match.read ? name : '(' + name + ')') + ':' +
                std::to_string(element.offset);
    });
    return text;
}

// An element has the name of the item that parse reads it as.
TEST(Elements, AreNamedAsParseReadsThem) {
    const struct {
        int key;
        const char* octets;
        const char* names;
    } cases[] = {
        {1100, "30 03 02 01 07", ":0 id:2"},
        {1100, "30 06 02 01 07 80 01 05", ":0 id:2 size:5"},
        {1100, "30 08 a0 03 04 01 78 80 01 05", ":0 ports:2 [0]:4 size:7"},
        {1100, "30 05 a5 03 02 01 07", ":0 extra:2 :4"},
        {1100, "30 06 80 01 05 02 01 07", ":0 size:2 ():5"},
        {1100, "30 08 a0 06 04 00 02 00 04 00", ":0 ports:2 [0]:4 ():6 ():8"},
        {1101, "30 05 30 03 02 01 07", ":0 [0]:2 id:4"},
        {1102, "30 03 81 01 78", ":0 one:2"},
        {1102, "30 0a 30 08 30 06 04 01 61 02 01 07", ":0 details:2 [0]:4 name:6 value:9"},
        {1102, "30 12 30 10 30 06 04 01 61 02 01 07 30 06 04 01 61 02 01 08",
         ":0 details:2 [0]:4 name:6 value:9 [1]:12 (name):14 value:17"},
        {1103, "30 03 02 01 07", ":0 ():2"},
        {1100, "02 01 07", "():0"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Names(Key(c.key), Octets(c.octets)), c.names) << c.key << ' ' << c.octets;
    }
}

TEST(Elements, WithoutDescriptionHaveNoNames) {
    EXPECT_EQ(Names(Form{}, Octets("30 03 02 01 07")), ":0 :2");
}

TEST(Elements, ArePrintedWithTheirValues) {
    const struct {
        const char* octets;
        const char* line;
    } cases[] = {
        {"02 02 ff 7f", "       0   0        2+2  02 INTEGER -129\n"},
        {"02 09 01 00 00 00 00 00 00 00 00",
         "       0   0        2+9  02 INTEGER 01 00 00 00 00 00 00 00 00\n"},
        {"01 01 ff", "       0   0        2+1  01 BOOLEAN true\n"},
        {"09 03 80 ff 01", "       0   0        2+3  09 REAL 0.5\n"},
        {"09 01 7f", "       0   0        2+1  09 REAL 7f\n"},
        {"04 02 ff 00", "       0   0        2+2  04 OCTET STRING ff 00\n"},
        {"04 03 c3 bc 0a", "       0   0        2+3  04 OCTET STRING \"\u00fc\\n\"\n"},
        {"05 00", "       0   0        2+0  05 NULL\n"},
        {"1e 00", "       0   0        2+0  1e [UNIVERSAL 30]\n"},
        {"c1 00", "       0   0        2+0  c1 [PRIVATE 1]\n"},
        {"9f 1f 01 05", "       0   0        3+1  9f [31] 05\n"},
    };
    for (const auto& c : cases) {
        std::ostringstream out;
        kelpctl::WalkElements(Codec(), Form{}, Octets(c.octets),
                              [&](const WalkedElement& element) { PrintElement(element, out); });
        EXPECT_EQ(out.str(), c.line) << c.octets;
    }
    std::ostringstream out;
    kelpctl::WalkElements(Codec(), Form{}, support::Element(4, std::string(61, 'x')),
                          [&](const WalkedElement& element) { PrintElement(element, out); });
    EXPECT_TRUE(out.str().ends_with(std::string(60, 'x') + "\"...\n")) << out.str();
}

// A walk goes as far as the octets are well-formed and says where that ends.
TEST(Elements, EveryCutEndsTheWalkInside) {
    const std::string octets = Octets("30 80 a0 09 04 01 78 30 80 05 00 00 00 00 00");
    const auto none = [](const WalkedElement&) {};
    const auto whole = kelpctl::WalkElements(Codec(), Form{}, octets, none);
    EXPECT_EQ(whole.reason, nullptr) << whole.offset;
    EXPECT_EQ(whole.end, octets.size());
    for (std::size_t length = 0; length < octets.size(); ++length) {
        const auto cut = kelpctl::WalkElements(Codec(), Form{}, octets.substr(0, length), none);
        ASSERT_NE(cut.reason, nullptr) << length;
        EXPECT_LE(cut.offset, length);
    }
}

TEST(Elements, DepthIsBounded) {
    for (const std::size_t depth : {std::size_t{128}, std::size_t{129}, std::size_t{100000}}) {
        std::size_t visited = 0;
        std::string octets = support::Repeat(Octets("30 80"), depth);
        octets += support::Repeat(Octets("00 00"), depth);
        const auto result = kelpctl::WalkElements(Codec(), Form{}, octets,
                                                  [&](const WalkedElement&) { ++visited; });
        if (depth <= 128) {
            EXPECT_EQ(result.reason, nullptr);
            EXPECT_EQ(visited, 2 * depth);
        } else {
            EXPECT_STREQ(result.reason, "more than 128 elements are inside one another");
            EXPECT_EQ(result.offset, 256U);
        }
    }
}

TEST(NoteOfLosses, CountsWhatIsNotReadOrCut) {
    const struct {
        int key;
        const char* octets;
        const char* note;
    } cases[] = {
        {1100, "30 03 02 01 07", ""},
        {1100, "30 06 02 04 7f ff ff ff", ""},
        {1100, "30 07 02 05 00 80 00 00 00",
         "integers cut to their low 32 bits: 1, the first at offset 2"},
        {1100, "30 0b 80 01 05 30 03 02 01 07 02 01 07",
         "elements that nothing reads: 2, the first at offset 5"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(NoteOfLosses(Codec(), Key(c.key), Octets(c.octets)), c.note) << c.octets;
    }
}

}  // namespace
