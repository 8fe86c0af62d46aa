// kelpd/http/reader.h - octets of a connection become requests.
//
//     RequestReader reader(limits);
//     switch (reader.Feed(octets)) {
//         case RequestReader::State::kMore: ...       // feed again
//         case RequestReader::State::kComplete: ...   // reader.request(), answer it, Next()
//         case RequestReader::State::kRefused: ...    // answer reader.refusal(), then close
//     }
//
// Whatever two readers could take for different requests is refused: a length and chunks
// together, two lengths, signs or too many digits in either, transfer codings other than
// "chunked", folded header lines, bare line feeds, more than one Host. After a refusal nothing
// of the connection is looked at any more.
//
// thread-compatible
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "kelpd/config/limits.h"
#include "kelpd/http/request.h"

namespace kelpd {

class RequestReader {
  public:
    enum class State { kMore, kComplete, kRefused };

    struct Refusal {
        int status = 0;
        const char* reason = "";
    };

    explicit RequestReader(const Limits& limits);
    ~RequestReader();
    RequestReader(const RequestReader&) = delete;
    RequestReader& operator=(const RequestReader&) = delete;

    /// Takes all of `octets`. What lies behind the end of the request is kept for Next. Not to be
    /// called between kComplete and Next, nor after kRefused. At most a header of the limit's
    /// size, a body of the limit's size and these octets are held.
    State Feed(std::string_view octets);
    /// The request is answered: begins the next one with what is held already.
    State Next();

    /// Some of a request has come.
    bool begun() const;
    bool header_complete() const;
    /// The client waits for leave to send its body. True once for each request.
    bool TakeExpectation();

    Request& request();
    const Refusal& refusal() const;

  private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace kelpd
