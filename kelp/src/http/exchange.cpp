#include "http/exchange.h"

#include <strings.h>

#include <algorithm>
#include <memory>
#include <new>

#include "base/clock.h"
#include "http/sigpipe.h"

namespace kelp::http {
namespace {

// Of all header lines of an answer together, interim ones included.
constexpr std::size_t kMostHeaderOctets = 256U << 10U;

// What the callbacks know about the exchange they serve.
struct Course {
    CURL* easy;
    Method method;
    std::string* body;
    std::size_t limit;
    std::size_t header_octets = 0;
    Outcome outcome;
};

bool Begins(std::string_view line, std::string_view with) {
    return line.size() >= with.size() && ::strncasecmp(line.data(), with.data(), with.size()) == 0;
}

// Chunks say where a body ends; other codings leave that to the connection's end.
bool IsChunked(std::string_view line) {
    constexpr std::string_view kName = "Transfer-Encoding:";
    constexpr std::string_view kChunked = "chunked";
    return Begins(line, kName) &&
           std::search(line.begin() + kName.size(), line.end(), kChunked.begin(), kChunked.end(),
                       [](char a, char b) { return (a | 0x20) == b; }) != line.end();
}

// An answer may come after interim ones, each with header lines of its own.
void Note(std::string_view line, Outcome& outcome) {
    if (Begins(line, "HTTP/")) {
        outcome.ended_headers = false;
        outcome.framed = false;
    } else if (line == "\r\n" || line == "\n") {
        outcome.ended_headers = true;
    } else if (Begins(line, "Content-Length:") || IsChunked(line)) {
        outcome.framed = true;
    }
}

std::size_t OnHeader(char* octets, std::size_t, std::size_t count, void* course_pointer) {
    auto& course = *static_cast<Course*>(course_pointer);
    course.outcome.answered = true;
    course.header_octets += count;
    if (course.header_octets > kMostHeaderOctets) {
        course.outcome.too_large = true;
        return CURL_WRITEFUNC_ERROR;
    }
    Note({octets, count}, course.outcome);
    return count;
}

std::size_t OnBody(char* octets, std::size_t, std::size_t count, void* course_pointer) {
    auto& course = *static_cast<Course*>(course_pointer);
    std::string& body = *course.body;
    if (count > course.limit - body.size()) {
        course.outcome.too_large = true;
        return CURL_WRITEFUNC_ERROR;
    }
    try {
        if (body.size() + count > body.capacity()) {
            // Doubling may not go beyond what an answer is allowed to have.
            body.reserve(std::min(course.limit, 2 * (body.size() + count)));
        }
        body.append(octets, count);
    } catch (const std::bad_alloc&) {
        course.outcome.no_memory = true;
        return CURL_WRITEFUNC_ERROR;
    }
    return count;
}

// Of the request, on all the connections that it went out on.
bool AnOctetLeft(CURL* easy) {
    long sent = 0;
    curl_easy_getinfo(easy, CURLINFO_REQUEST_SIZE, &sent);
    return sent > 0;
}

// Called when a connection stands and the request is about to go out. The transfer library
// sends a request again, on a new connection, when a kept one turns out to be closed and no
// octet of an answer came. Reading twice is harmless. Anything else may have been done already,
// unless not one octet of it had left.
int OnIssue(void* course_pointer, char*, char*, int, int) {
    auto& course = *static_cast<Course*>(course_pointer);
    if (++course.outcome.issued == 1 || course.method == Method::kGet) {
        return CURL_PREREQFUNC_OK;
    }
    course.outcome.not_repeated = AnOctetLeft(course.easy);
    return course.outcome.not_repeated ? CURL_PREREQFUNC_ABORT : CURL_PREREQFUNC_OK;
}

struct FreeList {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using HeaderList = std::unique_ptr<curl_slist, FreeList>;

void Append(HeaderList& list, const std::string& line) {
    curl_slist* const longer = curl_slist_append(list.get(), line.c_str());
    if (longer == nullptr) {
        throw std::bad_alloc();
    }
    static_cast<void>(list.release());
    list.reset(longer);
}

HeaderList HeadersOf(Method method, const UFHTTPMSGMGR::s_HttpMsgReq& request) {
    HeaderList list;
    bool typed = false;
    for (const auto& header : request.lstHeaders) {
        typed = typed || ::strcasecmp(header.strName.c_str(), "Content-Type") == 0;
        // Without a value a header would be left out; a semicolon asks for an empty one.
        const bool blank = header.strValue.find_first_not_of(" \t") == std::string::npos;
        Append(list, blank ? header.strName + ';' : header.strName + ": " + header.strValue);
    }
    if (method != Method::kGet) {
        if (!typed) {
            Append(list,
                   request.strReqBody.empty() ? "Content-Type:" : "Content-Type: application/json");
        }
        Append(list, "Expect:");  // a large body is sent at once
    }
    if (request.iKeepAlive == 0) {
        Append(list, "Connection: close");
    }
    return list;
}

void SetBody(CURL* easy, Method method, const std::string& body) {
    if (method == Method::kGet) {
        Set(easy, CURLOPT_HTTPGET, 1L);
        Set(easy, CURLOPT_CUSTOMREQUEST, nullptr);
        return;
    }
    Set(easy, CURLOPT_POST, 1L);
    Set(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    Set(easy, CURLOPT_POSTFIELDS, body.data());
    Set(easy, CURLOPT_CUSTOMREQUEST, method == Method::kPut ? "PUT" : nullptr);
}

}  // namespace

Outcome Perform(Handle& handle, Method method, const std::string& url,
                const UFHTTPMSGMGR::s_HttpMsgReq& request, int timeout_s,
                UFHTTPMSGMGR::s_HttpMsgRsp& answer) {
    CURL* const easy = handle.easy();
    const Limits& limits = handle.options().limits;
    Course course{easy, method, &answer.strRspBody, static_cast<std::size_t>(limits.response_bytes),
                  0,    {}};
    const HeaderList headers = HeadersOf(method, request);
    const long timeout_ms = 1000L * timeout_s;

    handle.ClearError();
    Set(easy, CURLOPT_URL, url.c_str());
    SetBody(easy, method, request.strReqBody);
    Set(easy, CURLOPT_HTTPHEADER, headers.get());
    Set(easy, CURLOPT_TIMEOUT_MS, timeout_ms);
    Set(easy, CURLOPT_CONNECTTIMEOUT_MS,
        std::min(timeout_ms, static_cast<long>(limits.connect_ms)));
    Set(easy, CURLOPT_FORBID_REUSE, request.iKeepAlive == 0 ? 1L : 0L);
    // The transfer library looks for a closed connection only: what a server has said unasked
    // would be taken for the answer to this request.
    Set(easy, CURLOPT_FRESH_CONNECT, handle.HasQuietConnection() ? 0L : 1L);
    Set(easy, CURLOPT_HEADERFUNCTION, &OnHeader);
    Set(easy, CURLOPT_HEADERDATA, &course);
    Set(easy, CURLOPT_WRITEFUNCTION, &OnBody);
    Set(easy, CURLOPT_WRITEDATA, &course);
    Set(easy, CURLOPT_PREREQFUNCTION, &OnIssue);
    Set(easy, CURLOPT_PREREQDATA, &course);

    const std::int64_t began = base::SystemMonotonicNs();
    {
        WithoutSigPipe quiet;
        course.outcome.result = curl_easy_perform(easy);
        // Another connection may have been closed for a new one, or written to in vain.
        long connects = 1;
        curl_easy_getinfo(easy, CURLINFO_NUM_CONNECTS, &connects);
        if (course.outcome.result == CURLE_OK && connects == 0) {
            quiet.NothingBroke();
        }
    }
    // The transfer library counts in whole milliseconds and from a little earlier.
    course.outcome.in_full =
        base::SystemMonotonicNs() - began >= (timeout_ms - 50) * base::kMillisecond;
    course.outcome.left = AnOctetLeft(easy);
    curl_easy_getinfo(easy, CURLINFO_SSL_VERIFYRESULT, &course.outcome.verified);
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &answer.lStatusCode);
    // These two statuses have no body, whatever the header lines say.
    const bool bodiless = answer.lStatusCode == 204 || answer.lStatusCode == 304;
    course.outcome.framed = course.outcome.framed || bodiless;
    // The list and the body go; the handle stays.
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, nullptr);
    curl_easy_setopt(easy, CURLOPT_POSTFIELDS, nullptr);
    return course.outcome;
}

}  // namespace kelp::http
