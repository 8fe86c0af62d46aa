// A transfer handle with the one connection it keeps, and with everything set that is the
// same for all requests: above all how the server is verified.
//
// one thread at a time.
#pragma once

#include <curl/curl.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "http/options.h"
#include "http/share.h"

namespace kelp::http {

class Handle {
  public:
    /// `files` is a part of `options`. Throws std::bad_alloc.
    Handle(std::shared_ptr<const Options> options, const TlsFiles& files,
           std::shared_ptr<Share> share, std::string_view authority);
    ~Handle();
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    CURL* easy() const { return easy_; }
    const Options& options() const { return *options_; }
    /// The transfer library's words about the last failure; "" when it has none.
    const char* error() const { return error_; }
    void ClearError() { error_[0] = '\0'; }

    /// Whether this is a handle for requests to `authority` under `options` and `files`.
    bool Serves(const Options& options, const TlsFiles& files, std::string_view authority) const {
        return options_.get() == &options && files_ == &files && authority_ == authority;
    }
    /// Whether it has a connection on which nothing has arrived since the last answer.
    /// Between answers a server has nothing to say but that it closes.
    bool HasQuietConnection() const;
    bool HasConnection() const;

    std::int64_t idle_since = 0;  ///< monotonic nanoseconds

  private:
    void SetFixedOptions();

    std::shared_ptr<const Options> options_;
    const TlsFiles* files_;
    std::shared_ptr<Share> share_;
    std::string authority_;
    CURL* easy_;
    char error_[CURL_ERROR_SIZE] = "";
};

/// Sets one option; throws std::bad_alloc when it is refused, since memory is all that can
/// be missing.
template <class Value>
void Set(CURL* easy, CURLoption option, Value value) {
    if (curl_easy_setopt(easy, option, value) != CURLE_OK) {
        throw std::bad_alloc();
    }
}

}  // namespace kelp::http
