// Octets of a peer through the frame reader: the first octet says in pieces of what size
// they arrive, the rest is the stream. What comes out must be whole, within its frame,
// and sendable again; the same stream in one piece must give the same messages.

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "message/frame.h"
#include "require.h"

namespace {

constexpr std::size_t kLimit = 1 << 16;

std::vector<std::string> Read(const std::uint8_t* data, std::size_t size, std::size_t piece) {
    std::vector<std::string> messages;
    kelp::message::FrameReader reader(kLimit);
    const auto give = [&](kelp::message::MsgPtr msg) {
        const std::size_t octets = kelp::message::MessageOctets(msg.get());
        Require(octets <= kLimit && octets <= size);
        std::string token;
        const unsigned carries = KelpMsgGetToken(token, msg.get());
        Require(carries == (token.empty() ? 0u : 1u));
        Require(msg->clientAddress == 0 && KelpMsgGetSIP(msg.get()) == "127.0.0.1");
        Require(kelp::message::Seal(msg.get()));
        Require(kelp::message::BlockOf(msg.get())->wire_length == octets);
        messages.emplace_back(reinterpret_cast<const char*>(msg.get()), octets);
    };
    for (std::size_t at = 0; at < size;) {
        const std::size_t count = std::min(piece, size - at);
        const auto rest = reader.Rest();
        const std::size_t direct = std::min(rest.size(), count);
        std::copy(data + at, data + at + direct, rest.begin());
        if ((direct > 0 && !reader.Received(direct, give)) ||
            !reader.Feed(data + at + direct, count - direct, give)) {
            Require(reader.why() != nullptr);
            break;
        }
        at += count;
    }
    return messages;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 0) {
        Require(Read(data + 1, size - 1, 1 + data[0]) == Read(data + 1, size - 1, size));
    }
    return 0;
}
