#include "kelpd/http/response.h"

#include <charconv>
#include <ctime>

namespace kelpd {
namespace {

struct Reason {
    int status;
    std::string_view text;
};
constexpr Reason kReasons[] = {
    {200, "OK"},
    {201, "Created"},
    {204, "No Content"},
    {400, "Bad Request"},
    {401, "Unauthorized"},
    {403, "Forbidden"},
    {404, "Not Found"},
    {405, "Method Not Allowed"},
    {408, "Request Timeout"},
    {409, "Conflict"},
    {413, "Content Too Large"},
    {415, "Unsupported Media Type"},
    {417, "Expectation Failed"},
    {429, "Too Many Requests"},
    {431, "Request Header Fields Too Large"},
    {500, "Internal Server Error"},
    {501, "Not Implemented"},
    {503, "Service Unavailable"},
    {505, "HTTP Version Not Supported"},
};

std::string_view ReasonOf(int status) {
    for (const Reason& reason : kReasons) {
        if (reason.status == status) {
            return reason.text;
        }
    }
    return "Status";
}

void AppendNumber(std::string& out, std::size_t number) {
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, number);
    out.append(digits, end.ptr);
}

Response Make(int status, std::string_view type, std::string text) {
    Response response;
    response.status = status;
    response.content_type = type;
    response.body = std::make_shared<const std::string>(std::move(text));
    return response;
}

}  // namespace

Response Response::Text(int status, std::string text) {
    return Make(status, "text/plain; charset=utf-8", std::move(text));
}

Response Response::Json(int status, std::string text) {
    return Make(status, "application/json", std::move(text));
}

Response Response::Error(int status, std::string_view reason) {
    return Json(status, "{\"error\": \"" + std::string(reason) + "\"}\n");
}

void Render(const Response& response, std::string_view date, bool keep_alive, BodyIs body,
            std::string& out) {
    const std::size_t length = response.body ? response.body->size() : 0;
    out.reserve(out.size() + 256 + length);
    out += "HTTP/1.1 ";
    AppendNumber(out, static_cast<std::size_t>(response.status));
    out += ' ';
    out += ReasonOf(response.status);
    out += "\r\nServer: kelpd\r\nDate: ";
    out += date;
    if (response.body) {
        out += "\r\nContent-Type: ";
        out += response.content_type;
    }
    if (response.status != 204) {
        out += "\r\nContent-Length: ";
        AppendNumber(out, length);
    }
    for (const auto& [name, value] : response.headers) {
        out += "\r\n";
        out += name;
        out += ": ";
        out += value;
    }
    out += keep_alive ? "\r\nConnection: keep-alive\r\n\r\n" : "\r\nConnection: close\r\n\r\n";
    if (response.body && body == BodyIs::kSent) {
        out += *response.body;
    }
}

std::string_view HttpDate() {
    thread_local std::time_t rendered = 0;
    thread_local char text[64];
    timespec now{};
    // Reading the coarse clock costs no system call.
    clock_gettime(CLOCK_REALTIME_COARSE, &now);
    if (now.tv_sec != rendered) {
        // Not strftime: the names of days and months must not follow the process's locale.
        static constexpr char kDays[][4] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
        static constexpr char kMonths[][4] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                              "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
        std::tm parts{};
        gmtime_r(&now.tv_sec, &parts);
        std::snprintf(text, sizeof text, "%s, %02d %s %d %02d:%02d:%02d GMT", kDays[parts.tm_wday],
                      parts.tm_mday, kMonths[parts.tm_mon], parts.tm_year + 1900, parts.tm_hour,
                      parts.tm_min, parts.tm_sec);
        rendered = now.tv_sec;
    }
    return text;
}

}  // namespace kelpd
