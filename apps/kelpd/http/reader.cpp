#include "kelpd/http/reader.h"

#include <algorithm>
#include <boost/beast/http/basic_parser.hpp>
#include <boost/beast/http/error.hpp>
#include <optional>

#include "kelpd/http/chunks.h"

namespace kelpd {
namespace {

namespace beast = boost::beast;
namespace http = boost::beast::http;

constexpr std::string_view kHeaderEnd = "\r\n\r\n";
constexpr std::size_t kMostLengthDigits = 18;

std::string_view View(beast::string_view text) {
    return {text.data(), text.size()};
}

// What the parser beneath would accept, but could be read differently by others.
struct Finding {
    int status = 0;
    const char* reason = "";
};

// Reads headers; bodies are read here, where every octet's meaning is seen.
class Parser final : public http::basic_parser<true> {
  public:
    Parser(const Limits& limits, Request& request) : limits_(limits), request_(request) {
        // The reader measures the header; the parser's own limit would count less.
        header_limit(static_cast<std::uint32_t>(limits.header_bytes));
        skip(true);
    }

    const Finding& finding() const { return finding_; }
    bool expects_continue() const { return expects_continue_; }

  private:
    using error_code = beast::error_code;

    void Refuse(int status, const char* reason, error_code& ec) {
        finding_ = {status, reason};
        ec = http::error::bad_value;
    }

    void on_request_impl(http::verb /*verb*/, beast::string_view method, beast::string_view target,
                         int version, error_code& ec) override {
        request_.method = View(method);
        request_.raw_target = View(target);
        version_ = version;
        if (version != 10 && version != 11) {
            Refuse(505, "only HTTP/1.0 and HTTP/1.1 are spoken here", ec);
        }
    }

    // Called for answers only.
    void on_response_impl(int /*status*/, beast::string_view /*reason*/, int /*version*/,
                          error_code& /*ec*/) override {}

    void on_field_impl(http::field field, beast::string_view name, beast::string_view value,
                       error_code& ec) override {
        if (++count_ > limits_.header_count) {
            return Refuse(431, "too many header lines", ec);
        }
        request_.headers.emplace_back(View(name), View(value));
        switch (field) {
            case http::field::host:
                if (++hosts_ > 1) {
                    Refuse(400, "more than one Host", ec);
                }
                break;
            case http::field::content_length:
                if (++lengths_ > 1 || !IsLength(View(value))) {
                    Refuse(400, "malformed Content-Length", ec);
                }
                break;
            case http::field::transfer_encoding:
                if (!EqualIgnoringCase(View(value), "chunked")) {
                    Refuse(501, "no transfer coding but chunked is known", ec);
                } else if (version_ != 11) {
                    Refuse(400, "Transfer-Encoding in HTTP/1.0", ec);
                }
                break;
            case http::field::expect:
                if (!EqualIgnoringCase(View(value), "100-continue")) {
                    Refuse(417, "unknown expectation", ec);
                }
                expects_continue_ = version_ == 11;
                break;
            default:
                break;
        }
    }

    static bool IsLength(std::string_view value) {
        return !value.empty() && value.size() <= kMostLengthDigits &&
               std::all_of(value.begin(), value.end(), [](char c) { return c >= '0' && c <= '9'; });
    }

    void on_header_impl(error_code& ec) override {
        if (hosts_ == 0 && version_ == 11) {
            Refuse(400, "no Host", ec);
        }
        request_.keep_alive = keep_alive();
    }

    void on_body_init_impl(boost::optional<std::uint64_t> const& /*length*/,
                           error_code& /*ec*/) override {}

    std::size_t on_body_impl(beast::string_view body, error_code& /*ec*/) override {
        return body.size();
    }

    void on_chunk_header_impl(std::uint64_t /*size*/, beast::string_view /*extensions*/,
                              error_code& /*ec*/) override {}

    std::size_t on_chunk_body_impl(std::uint64_t /*remain*/, beast::string_view body,
                                   error_code& /*ec*/) override {
        return body.size();
    }

    void on_finish_impl(error_code& /*ec*/) override {}

    const Limits& limits_;
    Request& request_;
    Finding finding_;
    int version_ = 0;
    std::size_t count_ = 0;
    unsigned hosts_ = 0;
    unsigned lengths_ = 0;
    bool expects_continue_ = false;
};

constexpr Finding kBodyTooLarge = {413, "the body is too large"};

Finding FindingOf(const beast::error_code& ec) {
    if (ec == http::error::header_limit) {
        return {431, "the header is too large"};
    }
    if (ec == http::error::bad_version) {
        return {505, "only HTTP/1.0 and HTTP/1.1 are spoken here"};
    }
    return {400, "malformed request"};
}

// Line ends that not everybody takes for one, and lines that go on in the next.
bool HasAmbiguousLines(std::string_view head) {
    for (std::size_t at = 0; (at = head.find('\n', at)) != head.npos; ++at) {
        const bool bare = at == 0 || head[at - 1] != '\r';
        const bool folded = at + 1 < head.size() && (head[at + 1] == ' ' || head[at + 1] == '\t');
        if (bare || folded) {
            return true;
        }
    }
    return false;
}

}  // namespace

struct RequestReader::Parts {
    explicit Parts(const Limits& the_limits) : limits(the_limits) {}

    State Refuse(const Finding& finding) {
        refused = {finding.status, finding.reason};
        return State::kRefused;
    }

    // Moves the header out of `data` and parses it.
    State ReadHeader(std::string_view& data) {
        // A last line break of a body that its sender did not count.
        if (head.empty()) {
            while (data.starts_with("\r\n") && ++blank_lines <= 2) {
                data.remove_prefix(2);
            }
        }
        const std::size_t end = data.find(kHeaderEnd);
        const std::size_t size = end == data.npos ? data.size() : end + kHeaderEnd.size();
        if (size > limits.header_bytes) {
            return Refuse({431, "the header is too large"});
        }
        if (end == data.npos) {
            return State::kMore;
        }
        head.assign(data.substr(0, size));
        data.remove_prefix(size);
        if (HasAmbiguousLines(head)) {
            return Refuse({400, "malformed header"});
        }
        parser.emplace(limits, request);
        beast::error_code ec;
        parser->put(boost::asio::const_buffer(head.data(), head.size()), ec);
        if (ec) {
            return Refuse(parser->finding().status != 0 ? parser->finding() : FindingOf(ec));
        }
        return BeginBody();
    }

    State BeginBody() {
        if (parser->chunked()) {
            chunks.emplace(limits.body_bytes);
            return State::kMore;
        }
        const auto length = parser->content_length();
        missing = length ? *length : 0;
        if (missing > limits.body_bytes) {
            return Refuse(kBodyTooLarge);
        }
        return missing == 0 ? State::kComplete : State::kMore;
    }

    State ReadBody(std::string_view& data) {
        if (!chunks) {
            const std::size_t count = std::min<std::uint64_t>(missing, data.size());
            request.body.append(data.substr(0, count));
            data.remove_prefix(count);
            missing -= count;
            return missing == 0 ? State::kComplete : State::kMore;
        }
        switch (chunks->Feed(data, request.body)) {
            case ChunkReader::State::kMore:
                return State::kMore;
            case ChunkReader::State::kDone:
                return State::kComplete;
            case ChunkReader::State::kTooLarge:
                return Refuse(kBodyTooLarge);
            case ChunkReader::State::kMalformed:
                break;
        }
        return Refuse({400, "malformed chunk"});
    }

    State Run(std::string_view data) {
        State state = State::kMore;
        if (!parser) {
            state = ReadHeader(data);
        }
        if (state == State::kMore && parser && !data.empty()) {
            state = ReadBody(data);
        }
        rest = state == State::kRefused ? std::string_view() : data;
        return state;
    }

    const Limits& limits;
    Request request;
    std::string head;  // what the request's views point into
    std::optional<Parser> parser;
    std::optional<ChunkReader> chunks;
    std::uint64_t missing = 0;  // octets of a body of known length
    std::string held;           // octets that nobody has taken yet
    std::string_view rest;      // what Run left over
    int blank_lines = 0;
    bool continued = false;
    RequestReader::Refusal refused;
};

RequestReader::RequestReader(const Limits& limits) : parts_(std::make_unique<Parts>(limits)) {}
RequestReader::~RequestReader() = default;

RequestReader::State RequestReader::Feed(std::string_view octets) {
    Parts& parts = *parts_;
    if (parts.held.empty()) {
        const State state = parts.Run(octets);
        parts.held.assign(parts.rest);
        return state;
    }
    parts.held.append(octets);
    const State state = parts.Run(parts.held);
    parts.held.erase(0, parts.held.size() - parts.rest.size());
    return state;
}

RequestReader::State RequestReader::Next() {
    Parts& parts = *parts_;
    parts.parser.reset();
    parts.chunks.reset();
    parts.head.clear();
    parts.request.method = {};
    parts.request.raw_target = {};
    parts.request.headers.clear();
    parts.request.path_values.clear();
    parts.request.body.clear();
    if (parts.request.body.capacity() > parts.limits.header_bytes) {
        std::string().swap(parts.request.body);
    }
    parts.blank_lines = 0;
    parts.continued = false;
    return parts.held.empty() ? State::kMore : Feed({});
}

bool RequestReader::begun() const {
    return parts_->parser.has_value() || !parts_->held.empty();
}

bool RequestReader::header_complete() const {
    return parts_->parser.has_value();
}

bool RequestReader::TakeExpectation() {
    const bool take = parts_->parser && parts_->parser->expects_continue() && !parts_->continued;
    parts_->continued = parts_->continued || take;
    return take;
}

Request& RequestReader::request() {
    return parts_->request;
}

const RequestReader::Refusal& RequestReader::refusal() const {
    return parts_->refused;
}

}  // namespace kelpd
