// Answers as they go onto the line.

#include "kelpd/http/response.h"

#include <gmock/gmock.h>

#include "kelpd/gateway/metrics.h"

namespace kelpd {
namespace {

TEST(Response, Rendered) {
    Response response = Response::Error(405, "no");
    response.headers.emplace_back("Allow", "GET, HEAD");
    std::string out = "before ";
    Render(response, "now", true, BodyIs::kSent, out);
    EXPECT_EQ(out,
              "before HTTP/1.1 405 Method Not Allowed\r\nServer: kelpd\r\nDate: now\r\n"
              "Content-Type: application/json\r\nContent-Length: 16\r\nAllow: GET, HEAD\r\n"
              "Connection: keep-alive\r\n\r\n{\"error\": \"no\"}\n");
}

TEST(Response, WithoutBody) {
    Response response;
    response.status = 204;
    std::string out;
    Render(response, "now", false, BodyIs::kSent, out);
    EXPECT_EQ(out,
              "HTTP/1.1 204 No Content\r\nServer: kelpd\r\nDate: now\r\n"
              "Connection: close\r\n\r\n");
    out.clear();
    Render(Response::Text(299, "abc"), "now", false, BodyIs::kLeftOut, out);
    EXPECT_THAT(out, testing::StartsWith("HTTP/1.1 299 Status\r\n"));
    EXPECT_THAT(out, testing::HasSubstr("Content-Length: 3\r\n"));
    EXPECT_THAT(out, testing::EndsWith("\r\n\r\n"));
}

TEST(Response, DateIsOfTheFormOfHttp) {
    EXPECT_THAT(std::string(HttpDate()),
                testing::MatchesRegex("(Mon|Tue|Wed|Thu|Fri|Sat|Sun), [0-9][0-9] "
                                      "[A-Z][a-z][a-z] [0-9]{4} "
                                      "[0-9][0-9]:[0-9][0-9]:[0-9][0-9] GMT"));
}

TEST(Metrics, AnswersFallIntoTheirBuckets) {
    Metrics metrics;
    for (const std::uint64_t us : {0, 50, 51, 1000000, 1000001}) {
        metrics.CountAnswer(us == 51 ? 404 : 200, us, 10);
    }
    const std::string text = metrics.Render(7);
    for (const char* line :
         {"kelpd_connections_open 7\n", "kelpd_answers_total{status=\"2xx\"} 4\n",
          "kelpd_answers_total{status=\"4xx\"} 1\n", "kelpd_answer_octets_total 50\n",
          "{le=\"0.000050\"} 2\n", "{le=\"0.000100\"} 3\n", "{le=\"0.100000\"} 3\n",
          "{le=\"1.000000\"} 4\n", "{le=\"+Inf\"} 5\n", "kelpd_answer_seconds_sum 2.000102\n"}) {
        EXPECT_THAT(text, testing::HasSubstr(line));
    }
}

}  // namespace
}  // namespace kelpd
