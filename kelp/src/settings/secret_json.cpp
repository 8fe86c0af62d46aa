#include "settings/secret_json.h"

#include <fcntl.h>
#include <json/reader.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <memory>
#include <string_view>
#include <system_error>

#include "base/unique_fd.h"
#include "kelp/secure.h"
#include "log/utf8.h"

namespace kelp::settings {

namespace {

constexpr std::size_t kMostOctets = std::size_t{1} << 20;
constexpr int kMostLevels = 64;

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// The four digits behind "\u", or -1.
int Unit(std::string_view digits) {
    int unit = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        const int digit = i < digits.size() ? HexDigit(digits[i]) : -1;
        if (digit < 0) {
            return -1;
        }
        unit = unit * 16 + digit;
    }
    return unit;
}

struct Character {
    std::size_t octets = 0;  // that spell it; 0: malformed
    char32_t code = 0;
};

// The escape that `text` begins with. A zero character is refused like a malformed one.
Character Escape(std::string_view text) {
    constexpr std::string_view kLetters = "\"\\/bfnrt";
    constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
    if (text.size() < 2) {
        return {};
    }
    if (text[1] != 'u') {
        const std::size_t which = kLetters.find(text[1]);
        return which == std::string_view::npos
                   ? Character{}
                   : Character{2, static_cast<char32_t>(kMeanings[which])};
    }
    const int unit = Unit(text.substr(2));
    if (unit <= 0 || (unit >= 0xDC00 && unit <= 0xDFFF)) {
        return {};
    }
    if (unit < 0xD800 || unit > 0xDFFF) {
        return {6, static_cast<char32_t>(unit)};
    }
    const int low = text.size() >= 12 && text.substr(6, 2) == "\\u" ? Unit(text.substr(8)) : -1;
    if (low < 0xDC00 || low > 0xDFFF) {
        return {};
    }
    return {12, static_cast<char32_t>(0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00))};
}

// The character that is spelled by itself, in UTF-8.
Character Plain(std::string_view text) {
    const log::Utf8Step step = log::NextCharacter(text);
    return step.valid && step.character >= 0x20 ? Character{step.length, step.character}
                                                : Character{};
}

Character Next(std::string_view text) {
    return text.front() == '\\' ? Escape(text) : Plain(text);
}

void AppendUtf8(char32_t code, std::string& out) {
    const auto add = [&out](char32_t octet) { out += static_cast<char>(octet); };
    if (code < 0x80) {
        add(code);
    } else if (code < 0x800) {
        add(0xC0 | code >> 6);
        add(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        add(0xE0 | code >> 12);
        add(0x80 | (code >> 6 & 0x3F));
        add(0x80 | (code & 0x3F));
    } else {
        add(0xF0 | code >> 18);
        add(0x80 | (code >> 12 & 0x3F));
        add(0x80 | (code >> 6 & 0x3F));
        add(0x80 | (code & 0x3F));
    }
}

// "Line 3, Column 7" of the parser's complaint. Its words are not passed on: they may hold a
// piece of a password that was written without quotes.
std::string LineIn(const std::string& complaint) {
    constexpr std::string_view kLine = "Line ";
    const std::size_t at = complaint.find(kLine);
    if (at == std::string::npos) {
        return "1";
    }
    const std::size_t first = at + kLine.size();
    return complaint.substr(first, complaint.find_first_not_of("0123456789", first) - first);
}

}  // namespace

SecretOctets::~SecretOctets() {
    static_cast<void>(memset_s(m_octets.data(), m_octets.size(), 0xCC, m_octets.size()));
}

void SecretOctets::Assign(std::size_t size) {
    static_cast<void>(memset_s(m_octets.data(), m_octets.size(), 0xCC, m_octets.size()));
    m_octets.clear();
    m_octets.resize(size);
}

bool SecretJson::Load(std::string& why) {
    const auto failure = [&](const std::string& what) {
        why = m_path + ": " + what;
        return false;
    };
    // Without O_NONBLOCK a FIFO of that name would hold the caller until somebody writes.
    const base::UniqueFd file(::open(m_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file || ::fstat(file.get(), &m_file) != 0) {
        return failure(std::generic_category().message(errno));
    }
    if (!S_ISREG(m_file.st_mode)) {
        return failure("no regular file");
    }
    if (static_cast<std::size_t>(m_file.st_size) > kMostOctets) {
        return failure("larger than 1 MiB");
    }
    m_octets.Assign(static_cast<std::size_t>(m_file.st_size));
    for (std::size_t have = 0; have < m_octets.size();) {
        const ssize_t got = ::read(file.get(), m_octets.data() + have, m_octets.size() - have);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return failure(got < 0 ? std::generic_category().message(errno)
                                   : "became shorter while it was read");
        }
        have += static_cast<std::size_t>(got);
    }
    return true;
}

// The document with every text that is no member's name replaced by as many x.
bool SecretJson::Blank(std::string& blanked, std::size_t& bad_at) const {
    const std::string_view text(m_octets.data(), m_octets.size());
    blanked.assign(text.size(), ' ');
    std::size_t at = 0;
    while (at < text.size()) {
        bad_at = at;
        if (text[at] != '"') {
            // Between texts a slash can only begin a comment, and JSON is ASCII.
            if (text[at] == '/' || static_cast<unsigned char>(text[at]) >= 0x80) {
                return false;
            }
            blanked[at] = text[at];
            ++at;
            continue;
        }
        std::size_t end = at + 1;
        while (end < text.size() && text[end] != '"') {
            bad_at = end;
            const Character next = Next(text.substr(end));
            if (next.octets == 0) {
                return false;
            }
            end += next.octets;
        }
        if (end >= text.size()) {
            return false;
        }
        std::size_t behind = end + 1;
        while (behind < text.size() && IsBlank(text[behind])) {
            ++behind;
        }
        const bool is_name = behind < text.size() && text[behind] == ':';
        for (std::size_t i = at; i <= end; ++i) {
            blanked[i] = is_name || i == at || i == end ? text[i] : 'x';
        }
        at = end + 1;
    }
    return true;
}

bool SecretJson::Read(const std::string& path, std::string& why) {
    m_path = path;
    if (!Load(why)) {
        return false;
    }
    std::string blanked;
    std::size_t bad_at = 0;
    if (!Blank(blanked, bad_at)) {
        why = PlaceAt(bad_at) + ": malformed JSON (a text, a comment or an octet)";
        return false;
    }
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["stackLimit"] = kMostLevels;
    std::string complaint;
    bool sound = false;
    try {
        const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
        sound = reader->parse(blanked.data(), blanked.data() + blanked.size(), &m_root, &complaint);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        complaint.clear();  // nested deeper than allowed
    }
    if (!sound || !m_root.isObject()) {
        why = m_path + ":" + LineIn(complaint) +
              ": malformed JSON, a doubled name, or nested too deeply";
        return false;
    }
    return true;
}

void SecretJson::Text(const Json::Value& value, std::string& out) const {
    const auto first = static_cast<std::size_t>(value.getOffsetStart()) + 1;
    const auto last = static_cast<std::size_t>(value.getOffsetLimit()) - 1;
    std::string_view text(m_octets.data() + first, last - first);
    out.clear();
    out.reserve(text.size());
    while (!text.empty()) {
        const Character next = Next(text);
        AppendUtf8(next.code, out);
        text.remove_prefix(next.octets);
    }
}

bool SecretJson::IsEmptyText(const Json::Value& value) const {
    return value.getOffsetLimit() - value.getOffsetStart() == 2;
}

std::string SecretJson::Place(const Json::Value& value) const {
    return PlaceAt(static_cast<std::size_t>(std::max<std::ptrdiff_t>(value.getOffsetStart(), 0)));
}

std::string SecretJson::PlaceAt(std::size_t octet) const {
    const auto line = 1 + std::count(m_octets.data(), m_octets.data() + octet, '\n');
    return m_path + ":" + std::to_string(line);
}

}  // namespace kelp::settings
