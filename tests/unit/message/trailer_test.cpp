// The trailer: one sound form, everything else refused.

#include <gtest/gtest.h>

#include <string>

#include "kelp/message.h"
#include "message/trailer.h"

namespace {

using kelp::message::ParseTrailer;
using kelp::message::TrailerOctets;
using kelp::message::TrailerView;
using kelp::message::WriteTrailer;

std::string Entry(char tag, const std::string& value) {
    std::string entry(1, tag);
    entry += static_cast<char>(value.size());
    entry += static_cast<char>(value.size() >> 8);
    return entry + value;
}

std::string Trailer(const std::string& entries) {
    std::string trailer = "KTLR";
    trailer += static_cast<char>(entries.size());
    trailer += static_cast<char>(entries.size() >> 8);
    return trailer + entries;
}

const char* Parse(const std::string& octets, TrailerView& view) {
    return ParseTrailer({reinterpret_cast<const unsigned char*>(octets.data()), octets.size()},
                        view);
}

std::string TokenOf(const std::string& octets, const TrailerView& view) {
    return octets.substr(view.token_at, view.token_octets);
}

struct Case {
    const char* name;
    std::string octets;
    const char* why;  // null: sound
    std::string token;
};

TEST(Trailer, IsSoundOrRefused) {
    const std::string token = Entry('T', "tok");
    const std::string address = Entry('A', "10.0.0.1");
    const Case cases[] = {
        {"none", "", nullptr, ""},
        {"a token", Trailer(token), nullptr, "tok"},
        {"an address, which is ignored", Trailer(address), nullptr, ""},
        {"both", Trailer(token + address), nullptr, "tok"},
        {"both, the other way round", Trailer(address + token), nullptr, "tok"},
        {"the longest token", Trailer(Entry('T', std::string(KELP_MSG_MAX_TOKEN, 'x'))), nullptr,
         std::string(KELP_MSG_MAX_TOKEN, 'x')},
        {"a longer token", Trailer(Entry('T', std::string(KELP_MSG_MAX_TOKEN + 1, 'x'))),
         "a trailer's entry has no acceptable value", ""},
        {"no entries", Trailer(""), "the trailer is empty", ""},
        {"two tokens", Trailer(token + token), "a trailer's entry is there twice", ""},
        {"two addresses", Trailer(address + address), "a trailer's entry is there twice", ""},
        {"two trailers", Trailer(token) + Trailer(token),
         "the trailer's length is not what is left of the frame", ""},
        {"an empty token", Trailer(Entry('T', "")), "a trailer's entry has no acceptable value",
         ""},
        {"a zero octet in the token", Trailer(Entry('T', std::string("a\0b", 3))),
         "a trailer's entry has no acceptable value", ""},
        {"a long address", Trailer(Entry('A', std::string(65, '1'))),
         "a trailer's entry has no acceptable value", ""},
        {"an unknown tag", Trailer(Entry('X', "tok")), "a trailer's entry has an unknown tag", ""},
        {"an entry longer than the trailer", Trailer(std::string("T\x04\0tok", 6)),
         "a trailer's entry is longer than the trailer", ""},
        {"half an entry", Trailer(token + "T"), "the trailer ends inside an entry", ""},
        {"no mark", "KTLX" + Trailer(token).substr(4), "octets behind the body are no trailer", ""},
        {"one octet", "K", "octets behind the body are no trailer", ""},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        TrailerView view;
        const char* why = Parse(test.octets, view);
        if (test.why == nullptr) {
            EXPECT_EQ(why, nullptr) << why;
            EXPECT_EQ(TokenOf(test.octets, view), test.token);
        } else {
            ASSERT_NE(why, nullptr);
            EXPECT_STREQ(why, test.why);
        }
    }
}

TEST(Trailer, WrittenOneIsSound) {
    for (const std::size_t size : {1, 2, 255, 256, 8192}) {
        const std::string token(size, 't');
        std::string octets(TrailerOctets(size), '\0');
        const std::size_t at = WriteTrailer(reinterpret_cast<unsigned char*>(octets.data()), token);
        TrailerView view;
        ASSERT_EQ(Parse(octets, view), nullptr) << size;
        EXPECT_EQ(view.token_at, at);
        EXPECT_EQ(TokenOf(octets, view), token);
    }
}

// Cut anywhere it is refused; with any bit flipped it is refused or carries another token,
// never none.
TEST(Trailer, DamagedOneNeverLooksLikeNone) {
    const std::string sound = Trailer(Entry('T', "token") + Entry('A', "10.0.0.1"));
    TrailerView view;
    for (std::size_t cut = 1; cut < sound.size(); ++cut) {
        EXPECT_NE(Parse(sound.substr(0, cut), view), nullptr) << cut;
    }
    for (std::size_t bit = 0; bit < sound.size() * 8; ++bit) {
        std::string flipped = sound;
        flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << (bit % 8)));
        if (Parse(flipped, view) == nullptr) {
            EXPECT_EQ(view.token_octets, 5u) << "bit " << bit;
        }
    }
}

}  // namespace
