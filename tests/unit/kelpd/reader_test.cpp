// However the octets of requests are cut into pieces, the same requests come out.

#include "kelpd/http/reader.h"

#include <gmock/gmock.h>

namespace kelpd {
namespace {

using State = RequestReader::State;
using testing::ElementsAre;
using testing::Pair;

const std::string kStream =
    "GET /a?b=c HTTP/1.1\r\nHost: h\r\nX-Long: a  b\r\n\r\n"
    "POST /d HTTP/1.1\r\nhost:h\r\nContent-Length: 5\r\n\r\n12345"
    "\r\nPUT /e HTTP/1.1\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\n"
    "3;x=y\r\nabc\r\nB\r\n0123456789a\r\n0\r\nTrailer: t\r\n\r\n"
    "GET /f HTTP/1.0\r\n\r\n";

std::string Outline(const Request& request) {
    std::string text = std::string(request.method) + " " + std::string(request.raw_target) + " " +
                       request.body + (request.keep_alive ? " keep" : " close");
    for (const auto& [name, value] : request.headers) {
        text.append(" ").append(name).append("=").append(value);
    }
    return text;
}

std::vector<std::string> ReadInPieces(const std::string& stream, std::size_t piece) {
    const Limits limits;
    RequestReader reader(limits);
    std::vector<std::string> requests;
    for (std::size_t at = 0; at < stream.size(); at += piece) {
        // A copy that ends where it ends, for the sanitizers.
        const std::vector<char> octets(
            stream.begin() + static_cast<std::ptrdiff_t>(at),
            stream.begin() + static_cast<std::ptrdiff_t>(std::min(at + piece, stream.size())));
        State state = reader.Feed({octets.data(), octets.size()});
        while (state == State::kComplete) {
            requests.push_back(Outline(reader.request()));
            state = reader.Next();
        }
        EXPECT_EQ(state, State::kMore) << at;
    }
    EXPECT_FALSE(reader.begun());
    return requests;
}

TEST(Reader, ReadsRequestsInPiecesOfEverySize) {
    for (std::size_t piece = 1; piece <= kStream.size(); ++piece) {
        EXPECT_THAT(ReadInPieces(kStream, piece),
                    ElementsAre("GET /a?b=c  keep Host=h X-Long=a  b",
                                "POST /d 12345 keep host=h Content-Length=5",
                                "PUT /e abc0123456789a keep Host=h Transfer-Encoding=chunked",
                                "GET /f  close"))
            << piece;
    }
}

TEST(Reader, HeadersAreFoundInAnyCase) {
    const Limits limits;
    RequestReader reader(limits);
    ASSERT_EQ(reader.Feed("GET / HTTP/1.1\r\nhOST: h\r\nA: 1\r\na: 2\r\n\r\n"), State::kComplete);
    EXPECT_EQ(reader.request().Header("Host"), "h");
    EXPECT_EQ(reader.request().Header("a"), "1");
    EXPECT_EQ(reader.request().Header("b"), "");
}

struct Phase {
    const char* fed;
    bool begun;
    bool header_complete;
};

TEST(Reader, SaysHowFarARequestIs) {
    const Phase phases[] = {
        {"", false, false}, {"\r\n", false, false},
        {"P", true, false}, {"OST / HTTP/1.1\r\nHost: h\r\nContent-Length: 2\r\n\r\n", true, true},
        {"a", true, true},
    };
    const Limits limits;
    RequestReader reader(limits);
    for (const Phase& phase : phases) {
        EXPECT_EQ(reader.Feed(phase.fed), State::kMore);
        EXPECT_EQ(reader.begun(), phase.begun) << phase.fed;
        EXPECT_EQ(reader.header_complete(), phase.header_complete) << phase.fed;
    }
    EXPECT_EQ(reader.Feed("b"), State::kComplete);
}

TEST(Reader, ClientIsTakenAtItsExpectationOnce) {
    const Limits limits;
    RequestReader reader(limits);
    EXPECT_FALSE(reader.TakeExpectation());
    ASSERT_EQ(reader.Feed("PUT / HTTP/1.1\r\nHost: h\r\nContent-Length: 1\r\n"
                          "Expect: 100-Continue\r\n\r\n"),
              State::kMore);
    EXPECT_TRUE(reader.TakeExpectation());
    EXPECT_FALSE(reader.TakeExpectation());
    ASSERT_EQ(reader.Feed("x"), State::kComplete);
    ASSERT_EQ(reader.Next(), State::kMore);
    ASSERT_EQ(reader.Feed("GET / HTTP/1.1\r\nHost: h\r\n\r\n"), State::kComplete);
    EXPECT_FALSE(reader.TakeExpectation());
}

// One octet turned into any other: an answer or a refusal, in pieces as in one.
TEST(Reader, EveryOctetReplacedReadsTheSameInPieces) {
    Limits limits;
    limits.body_bytes = 64;
    const auto outcome = [&](const std::string& stream, std::size_t piece) {
        RequestReader reader(limits);
        std::string text;
        for (std::size_t at = 0; at < stream.size(); at += piece) {
            State state = reader.Feed(std::string_view(stream).substr(at, piece));
            while (state == State::kComplete) {
                text += Outline(reader.request()) + "\n";
                state = reader.Next();
            }
            if (state == State::kRefused) {
                return text + std::to_string(reader.refusal().status);
            }
        }
        return text;
    };
    const std::string stream = kStream.substr(kStream.find("PUT"));
    for (std::size_t at = 0; at < stream.size(); ++at) {
        for (unsigned octet = 0; octet < 256; octet += octet < 128 ? 1 : 13) {
            std::string changed = stream;
            changed[at] = static_cast<char>(octet);
            EXPECT_EQ(outcome(changed, 1), outcome(changed, changed.size())) << at << ' ' << octet;
        }
    }
}

}  // namespace
}  // namespace kelpd
