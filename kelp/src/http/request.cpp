#include "http/request.h"

#include <strings.h>

#include <algorithm>

namespace kelp::http {
namespace {

constexpr std::string_view kScheme = "https://";
constexpr std::size_t kLongestUrl = 64U << 10U;
constexpr std::size_t kMostHeaders = 100;
constexpr std::size_t kLongestHeader = 64U << 10U;
constexpr int kLongestTimeout = 86400;

// They say how a message travels, and a second, different word on that splits what the server
// reads from what was meant.
constexpr const char* kOurs[] = {
    "Host",    "Connection", "Content-Length", "Transfer-Encoding", "TE",
    "Trailer", "Upgrade",    "Expect",         "Keep-Alive",        "Accept-Encoding"};

bool IsControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
}

bool IsTokenCharacter(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           std::string_view("!#$%&'*+-.^_`|~").find(c) != std::string_view::npos;
}

const char* FaultOfUrl(std::string_view url) {
    if (url.size() > kLongestUrl) {
        return "the URL is too long";
    }
    if (url.size() < kScheme.size() ||
        ::strncasecmp(url.data(), kScheme.data(), kScheme.size()) != 0) {
        return "the URL does not begin with https://";
    }
    if (std::any_of(url.begin(), url.end(), [](char c) { return c == ' ' || IsControl(c); })) {
        return "the URL holds a blank or a control character";
    }
    const std::string_view authority = AuthorityOf(url);
    if (authority.empty() || authority.front() == ':') {
        return "the URL names no host";
    }
    if (authority.find('@') != std::string_view::npos) {
        return "the URL names a user";
    }
    return nullptr;
}

const char* FaultOfHeader(const UFHTTPMSGMGR::s_HttpHeader& header) {
    const std::string& name = header.strName;
    if (name.empty() || !std::all_of(name.begin(), name.end(), IsTokenCharacter)) {
        return "a header's name is no token";
    }
    if (std::any_of(header.strValue.begin(), header.strValue.end(),
                    [](char c) { return c != '\t' && IsControl(c); })) {
        return "a header's value holds a control character";
    }
    if (name.size() + header.strValue.size() > kLongestHeader) {
        return "a header is too long";
    }
    for (const char* const ours : kOurs) {
        if (::strcasecmp(name.c_str(), ours) == 0) {
            return "a header says how the message travels";
        }
    }
    return nullptr;
}

}  // namespace

const char* NameOf(Method method) {
    switch (method) {
        case Method::kGet:
            return "GET";
        case Method::kPost:
            return "POST";
        case Method::kPut:
            break;
    }
    return "PUT";
}

const char* FaultOf(const std::string& url, const UFHTTPMSGMGR::s_HttpMsgReq& request,
                    int timeout_s) {
    if (timeout_s < 1 || timeout_s > kLongestTimeout) {
        return "the time-out is not from 1 to 86400 seconds";
    }
    if (request.lstHeaders.size() > kMostHeaders) {
        return "there are more than 100 headers";
    }
    if (const char* const fault = FaultOfUrl(url); fault != nullptr) {
        return fault;
    }
    for (const auto& header : request.lstHeaders) {
        if (const char* const fault = FaultOfHeader(header); fault != nullptr) {
            return fault;
        }
    }
    return nullptr;
}

std::string_view AuthorityOf(std::string_view url) {
    const std::string_view rest = url.substr(kScheme.size());
    // A backslash is a slash to some readers of URLs, and part of the host to others.
    return rest.substr(0, rest.find_first_of("/?#\\"));
}

std::string ShownUrl(std::string_view url) {
    constexpr std::size_t kShown = 200;
    std::string_view shown = url.substr(0, url.find_first_of("?#"));
    std::string text;
    const std::size_t host = shown.find("//");
    if (host != std::string_view::npos) {
        text.assign(shown.substr(0, host + 2));
        shown.remove_prefix(host + 2);
    }
    const std::size_t end = std::min(shown.find('/'), shown.size());
    if (const std::size_t user = shown.substr(0, end).rfind('@'); user != std::string_view::npos) {
        shown.remove_prefix(user + 1);
    }
    text += shown.substr(0, kShown);
    return shown.size() > kShown ? text + "..." : text;
}

}  // namespace kelp::http
