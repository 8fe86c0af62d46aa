// kelpd/gateway/responder.h - the promise of an answer to one request.
//
//     void Handle(const Request& request, Responder responder) {
//         responder.Send(Response::Json(200, "{}"));
//     }
//
// It may be kept and used later, from any thread: a request that waits for something costs a
// connection and no thread. A responder that goes unused answers 500. One that outlives its
// connection does nothing, and does not keep the connection.
//
// thread-compatible
#pragma once

#include <memory>
#include <utility>

#include "kelpd/http/response.h"

namespace kelpd {

/// What the responder answers to: a session, or a test.
class Asker {
  public:
    virtual ~Asker() = default;
    /// From any thread, once for each request.
    virtual void TakeAnswer(Response response) = 0;
};

class Responder {
  public:
    explicit Responder(std::weak_ptr<Asker> asker) : asker_(std::move(asker)) {}
    Responder(Responder&&) noexcept = default;
    Responder& operator=(Responder&&) = delete;
    ~Responder() {
        if (const auto asker = asker_.lock()) {
            asker->TakeAnswer(Response::Error(500, "the request was not answered"));
        }
    }

    /// Only the first call has an effect.
    void Send(Response response) {
        if (const auto asker = std::exchange(asker_, {}).lock()) {
            asker->TakeAnswer(std::move(response));
        }
    }

  private:
    std::weak_ptr<Asker> asker_;
};

}  // namespace kelpd
