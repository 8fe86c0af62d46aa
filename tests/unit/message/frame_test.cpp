// Cutting a stream of octets into messages.

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "message/frame.h"
#include "support/raw_peer.h"
#include "support/temp_folder.h"

namespace {

using kelp::message::FrameReader;
using kelp::message::MsgPtr;

std::string Framed(const std::string& message) {
    std::string length(4, '\0');
    RawPut(length, 0, 4, message.size());
    return length + message;
}

// What a stream amounts to: the messages' octets (header and body), and why it broke.
struct Outcome {
    std::vector<std::string> messages;
    std::string why;
    bool midway = false;
};

// `direct`: store the rest of a frame where the reader wants it, as the bus does.
Outcome Read(const std::string& stream, std::size_t piece, bool direct,
             std::size_t limit = 1 << 20) {
    Outcome outcome;
    FrameReader reader(limit);
    const auto give = [&](MsgPtr msg) {
        outcome.messages.emplace_back(reinterpret_cast<const char*>(msg.get()),
                                      48 + msg->bodyLength);
    };
    for (std::size_t at = 0; at < stream.size();) {
        const std::size_t count = std::min(piece, stream.size() - at);
        const auto* data = reinterpret_cast<const unsigned char*>(stream.data()) + at;
        const auto rest = direct ? reader.Rest() : std::span<unsigned char>();
        const std::size_t stored = std::min(rest.size(), count);
        std::copy(data, data + stored, rest.begin());
        if ((stored > 0 && !reader.Received(stored, give)) ||
            !reader.Feed(data + stored, count - stored, give)) {
            outcome.why = reader.why();
            return outcome;
        }
        at += count;
    }
    outcome.midway = reader.Midway();
    return outcome;
}

// However the octets are cut, the same messages come out.
TEST(Frame, PiecesDoNotMatter) {
    const std::vector<std::string> messages = {RawRequest(1, 2, 3, ""), RawRequest(1, 2, 4, "body"),
                                               RawRequest(1, 2, 5, std::string(300, 'x'))};
    std::string stream;
    for (const std::string& message : messages) {
        stream += Framed(message);
    }
    for (std::size_t piece = 1; piece <= stream.size(); ++piece) {
        for (const bool direct : {false, true}) {
            const Outcome outcome = Read(stream, piece, direct);
            EXPECT_EQ(outcome.messages, messages) << piece;
            EXPECT_EQ(outcome.why, "");
            EXPECT_FALSE(outcome.midway);
        }
    }
}

TEST(Frame, EndsInsideOne) {
    const std::string stream = Framed(RawRequest(1, 2, 3, "body"));
    for (std::size_t cut = 1; cut < stream.size(); ++cut) {
        const Outcome outcome = Read(stream.substr(0, cut), 64, true);
        EXPECT_TRUE(outcome.messages.empty());
        EXPECT_EQ(outcome.why, "");
        EXPECT_TRUE(outcome.midway) << cut;
    }
}

std::string WithField(RawField field, std::uint64_t value) {
    std::string message = RawRequest(1, 2, 3, "body");
    RawPut(message, field, value);
    return Framed(message);
}

std::string LengthOnly(std::uint32_t length) {
    std::string octets(4, '\0');
    RawPut(octets, 0, 4, length);
    return octets;
}

TEST(Frame, BrokenStreams) {
    const struct {
        const char* name;
        std::string stream;
        const char* why;
    } cases[] = {
        {"length 0", LengthOnly(0), "a frame is shorter than a message's header"},
        {"length 49", LengthOnly(49), "a frame is shorter than a message's header"},
        {"length 50", LengthOnly(50), ""},
        {"length at the limit", LengthOnly(1 << 20), ""},
        {"length above the limit", LengthOnly((1 << 20) + 1), "a frame is above the limit"},
        {"length of all ones", LengthOnly(0xFFFFFFFF), "a frame is above the limit"},
        {"version 9", WithField(kVersion, 9), "the header is of another version"},
        {"body length 0", WithField(kBodyLength, 0), "the body's length is not within the frame"},
        {"body length 1", WithField(kBodyLength, 1), "the body's length is not within the frame"},
        {"body length too long", WithField(kBodyLength, 7),
         "the body's length is not within the frame"},
        {"body length of all ones", WithField(kBodyLength, 0xFFFFFFFF),
         "the body's length is not within the frame"},
        {"body length too short", WithField(kBodyLength, 5),
         "octets behind the body are no trailer"},
        {"garbage", std::string(200, '\x2b'), "a frame is above the limit"},
    };
    for (const auto& test : cases) {
        for (const std::size_t piece : {1, 7, 1000}) {
            SCOPED_TRACE(test.name);
            const Outcome outcome = Read(test.stream, piece, true);
            EXPECT_EQ(outcome.why, test.why);
            EXPECT_TRUE(outcome.messages.empty());
        }
    }
}

// Whatever bit is wrong, the reader neither crashes nor hands on a body beyond its frame.
TEST(Frame, EveryBitFlipped) {
    const std::string stream =
        Framed(RawRequest(1, 2, 3, "body")) + Framed(RawRequest(1, 2, 4, ""));
    for (std::size_t bit = 0; bit < stream.size() * 8; ++bit) {
        std::string flipped = stream;
        flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << (bit % 8)));
        for (const std::string& message : Read(flipped, 1000, true).messages) {
            EXPECT_LE(message.size(), stream.size());
        }
    }
}

// The receiver's own view replaces the address that was sent.
TEST(Frame, SentAddressIsIgnored) {
    FrameReader reader(1000);
    std::string message = RawRequest(1, 2, 3, "");
    RawPut(message, 4, 4, 0x0A000001);
    const std::string stream = Framed(message + std::string("KTLR\x0b\0A\x08\0"
                                                            "10.0.0.1",
                                                            17));
    int count = 0;
    ASSERT_TRUE(reader.Feed(reinterpret_cast<const unsigned char*>(stream.data()), stream.size(),
                            [&](MsgPtr msg) {
                                ++count;
                                EXPECT_EQ(msg->clientAddress, 0u);
                                EXPECT_EQ(KelpMsgGetSIP(msg.get()), "127.0.0.1");
                            }));
    EXPECT_EQ(count, 1);
}

// The worked example of docs/formats/message.md is what is really written.
TEST(Frame, WorkedExampleOfTheFormatPage) {
    const std::string page = ReadFile(MESSAGE_FORMAT_PAGE);
    const std::size_t from = page.find("```hex\n");
    ASSERT_NE(from, std::string::npos);
    std::string example;
    std::string digits;
    bool comment = false;
    for (const char c : page.substr(from + 7, page.find("```", from + 7) - from - 7)) {
        comment = c == '#' || (comment && c != '\n');
        if (!comment && std::isxdigit(static_cast<unsigned char>(c)) != 0) {
            digits += c;
            if (digits.size() == 2) {
                example += static_cast<char>(std::stoi(digits, nullptr, 16));
                digits.clear();
            }
        }
    }
    CmdMSG* msg = KelpMsgAlloc(3);
    msg->srcDesk = 1;
    msg->srcProcHandle = 2;
    msg->dstProcHandle = 1;
    msg->srcProcId = 3001;
    msg->dstProcId = 56;
    msg->cmdCode = 2167;
    msg->srcTaskId = 0x1000;
    msg->srcTaskMgr = 200;
    msg->dstTaskMgr = 4;
    KelpMsgSetSn(msg, 17);
    std::memcpy(KelpMsgBody(msg), "\x02\x01\x64", 3);
    ASSERT_TRUE(KelpMsgSetToken(msg, "tok"));
    ASSERT_TRUE(kelp::message::Seal(msg));
    const kelp::message::MsgBlock* block = kelp::message::BlockOf(msg);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(block->wire()), 4 + block->wire_length),
              example);
    EXPECT_EQ(Read(example, 1000, false).messages.size(), 1u);
    KelpMsgFree(msg);
}

}  // namespace
