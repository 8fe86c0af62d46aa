// kelpd/http/response.h - what an endpoint answers, and how it goes onto the line.
//
// thread-compatible
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelpd {

struct Response {
    int status = 200;
    std::string_view content_type = "application/json";  ///< a text that lives on: a literal
    /// Shared, so that an endpoint can keep an answer that it gives often; null: no body.
    std::shared_ptr<const std::string> body;
    std::vector<std::pair<std::string_view, std::string>> headers;  ///< further ones

    static Response Text(int status, std::string text);
    static Response Json(int status, std::string text);
    /// {"error": reason}, in the form in which every endpoint reports what was wrong.
    static Response Error(int status, std::string_view reason);
};

enum class BodyIs { kSent, kLeftOut };

/// Appends the response to `out` as HTTP/1.1; without its body (but with its length) for
/// kLeftOut, as a HEAD request wants it.
void Render(const Response& response, std::string_view date, bool keep_alive, BodyIs body,
            std::string& out);

/// "Sat, 21 Nov 2026 09:00:00 GMT", now; kept for a second by each thread.
std::string_view HttpDate();

}  // namespace kelpd
