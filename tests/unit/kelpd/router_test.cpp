// A request finds the first endpoint of its path and method, or the status that says why not.

#include "kelpd/gateway/router.h"

#include <gmock/gmock.h>

namespace kelpd {
namespace {

class Notes final : public Asker {
  public:
    void TakeAnswer(Response response) override { statuses.push_back(response.status); }
    std::vector<int> statuses;
};

Handler Answering(int status) {
    return [status](const Request& /*request*/, Responder responder) {
        responder.Send(Response::Text(status, ""));
    };
}

const Router kRouter({{"GET", "/", Answering(200)},
                      {"GET", "/mq/topics", Answering(201)},
                      {"POST", "/mq/topics", Answering(204)},
                      {"GET", "/mq/consumers/{group}/topics/{topic}", Answering(400)},
                      {"DELETE", "/mq/consumers/{group}/topics/all", Answering(401)}});

struct Case {
    const char* method;
    const char* target;
    int status;  // of the endpoint's answer, or of none
    const char* allow;
};

TEST(Router, FindsByPathAndMethod) {
    const Case cases[] = {
        {"GET", "/", 200, ""},
        {"HEAD", "/", 200, ""},
        {"GET", "/mq/topics", 201, ""},
        {"GET", "/mq/topics?a=b", 201, ""},
        {"POST", "/mq/topics", 204, ""},
        {"HEAD", "/mq/topics", 201, ""},
        {"PUT", "/mq/topics", 405, "GET, HEAD, POST"},
        {"get", "/mq/topics", 405, "GET, HEAD, POST"},
        {"POST", "/", 405, "GET, HEAD"},
        {"GET", "/mq", 404, ""},
        {"GET", "/mq/Topics", 404, ""},
        {"GET", "/mq/topics/x", 404, ""},
        {"GET", "/mq/consumers/g/topics/t", 400, ""},
        {"GET", "/mq/consumers/g/topics/all", 400, ""},
        {"DELETE", "/mq/consumers/g/topics/all", 401, ""},
        {"DELETE", "/mq/consumers/g/topics/t", 405, "GET, HEAD"},
        {"GET", "/%6dq/topics", 201, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.method) + " " + c.target);
        Request request;
        request.method = c.method;
        ASSERT_TRUE(ParseTarget(c.target, request.target));
        const Router::Found found = kRouter.Find(request);
        EXPECT_EQ(found.allow, c.allow);
        if (found.endpoint == nullptr) {
            EXPECT_EQ(found.status, c.status);
            continue;
        }
        const auto notes = std::make_shared<Notes>();
        found.endpoint->handler(request, Responder(notes));
        EXPECT_THAT(notes->statuses, testing::ElementsAre(c.status));
    }
}

TEST(Router, GivesTheValuesOfNamedSegments) {
    Request request;
    request.method = "GET";
    ASSERT_TRUE(ParseTarget("/mq/consumers/a%20b/topics/c?d=e", request.target));
    ASSERT_NE(kRouter.Find(request).endpoint, nullptr);
    EXPECT_EQ(request.PathValue("group"), "a b");
    EXPECT_EQ(request.PathValue("topic"), "c");
    EXPECT_EQ(request.PathValue("other"), "");
    ASSERT_NE(request.Query("d"), nullptr);
    EXPECT_EQ(*request.Query("d"), "e");
    EXPECT_EQ(request.Query("x"), nullptr);
}

TEST(Responder, AnswersOnceWhateverItsUserDoes) {
    const auto notes = std::make_shared<Notes>();
    { const Responder unused(notes); }
    {
        Responder twice(notes);
        twice.Send(Response::Text(200, ""));
        twice.Send(Response::Text(201, ""));
    }
    {
        Responder first(notes);
        Responder moved(std::move(first));
        moved.Send(Response::Text(204, ""));
    }
    EXPECT_THAT(notes->statuses, testing::ElementsAre(500, 200, 204));
}

}  // namespace
}  // namespace kelpd
