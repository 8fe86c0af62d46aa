// Octets of a connection through reader, target and router: the first octet says in pieces of
// what size they arrive. The same requests must come out as of one piece, within their limits,
// and what a target decodes to must decode to itself again when it is escaped.

#include <cstdint>
#include <string>

#include "kelpd/gateway/router.h"
#include "kelpd/http/reader.h"
#include "require.h"

namespace {

using namespace kelpd;

const Limits& SmallLimits() {
    static const Limits limits = [] {
        Limits small;
        small.header_bytes = 512;
        small.header_count = 8;
        small.body_bytes = 256;
        return small;
    }();
    return limits;
}

const Router& Routes() {
    static const Router router(
        {{"GET", "/", nullptr}, {"POST", "/a/{b}/c", nullptr}, {"GET", "/a/{b}/{c}", nullptr}});
    return router;
}

std::string Escape(const std::string& text) {
    constexpr char kHex[] = "0123456789ABCDEF";
    std::string escaped;
    for (const char c : text) {
        const auto octet = static_cast<unsigned char>(c);
        escaped += {'%', kHex[octet >> 4], kHex[octet & 15]};
    }
    return escaped;
}

void CheckTarget(const Target& target) {
    std::string text = target.segments.empty() ? "/" : "";
    for (const std::string& segment : target.segments) {
        Require(!segment.empty() && segment.find_first_of("/\\") == segment.npos);
        text += '/';
        text += Escape(segment);
    }
    text += '?';
    for (const auto& [name, value] : target.query) {
        text += Escape(name);
        text += '=';
        text += Escape(value);
        text += '&';
    }
    Target again;
    Require(ParseTarget(text, again));
    Require(again.segments == target.segments && again.query == target.query);
}

std::string Describe(Request& request) {
    const Limits& limits = SmallLimits();
    Require(request.headers.size() <= limits.header_count);
    Require(request.body.size() <= limits.body_bytes);
    std::string text = std::string(request.method) + ' ' + std::string(request.raw_target);
    for (const auto& [name, value] : request.headers) {
        text.append("\n").append(name).append(":").append(value);
    }
    text += "\n\n" + request.body + (request.keep_alive ? "+" : "-");
    if (!ParseTarget(request.raw_target, request.target)) {
        return text;
    }
    CheckTarget(request.target);
    const Router::Found found = Routes().Find(request);
    Require((found.endpoint != nullptr) == (found.status == 200));
    return text + std::to_string(found.status) + found.allow;
}

std::string Read(std::string_view stream, std::size_t piece) {
    RequestReader reader(SmallLimits());
    std::string text;
    for (; !stream.empty(); stream.remove_prefix(std::min(piece, stream.size()))) {
        // A copy that ends where it ends, for the sanitizers.
        const std::string octets(stream.substr(0, piece));
        RequestReader::State state = reader.Feed(octets);
        while (state == RequestReader::State::kComplete) {
            text += Describe(reader.request());
            state = reader.Next();
        }
        if (state == RequestReader::State::kRefused) {
            const int status = reader.refusal().status;
            Require(status >= 400 && status <= 505);
            return text + std::to_string(status);
        }
    }
    return text + (reader.begun() ? "begun" : "") + (reader.header_complete() ? "header" : "");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 0) {
        const std::string_view stream(reinterpret_cast<const char*>(data + 1), size - 1);
        Require(Read(stream, 1 + data[0] % 64U) == Read(stream, stream.size()));
    }
    return 0;
}
