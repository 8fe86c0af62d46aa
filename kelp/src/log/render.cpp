#include "log/render.h"

#include <charconv>

#include "log/utf8.h"

namespace kelp::log {

namespace {

void AppendNumber(std::string& line, long long value) {
    char digits[24];
    line.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

void AppendHex(std::string& line, unsigned value, int width) {
    for (int shift = 4 * (width - 1); shift >= 0; shift -= 4) {
        line += "0123456789abcdef"[(value >> static_cast<unsigned>(shift)) & 0xFU];
    }
}

// Control characters of both kinds, those below blank and those that a terminal takes
// from U+0080 on, would let a text forge lines or drive the terminal that shows them.
bool IsControl(char32_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0);
}

char ShortEscape(char32_t c) {
    switch (c) {
        case '\n':
            return 'n';
        case '\r':
            return 'r';
        case '\t':
            return 't';
        default:
            return '\0';
    }
}

void AppendEscapedText(std::string& line, std::string_view text) {
    while (!text.empty()) {
        const Utf8Step step = NextCharacter(text);
        if (step.valid && !IsControl(step.character)) {
            line.append(text.data(), step.length);
        } else if (const char letter = step.valid ? ShortEscape(step.character) : '\0';
                   letter != '\0') {
            line += '\\';
            line += letter;
        } else {
            for (std::size_t i = 0; i < step.length; ++i) {
                line += "\\x";
                AppendHex(line, static_cast<unsigned char>(text[i]), 2);
            }
        }
        text.remove_prefix(step.length);
    }
}

void AppendJsonText(std::string& line, std::string_view text) {
    line += '"';
    while (!text.empty()) {
        const Utf8Step step = NextCharacter(text);
        if (!step.valid) {
            line += "\xEF\xBF\xBD";  // U+FFFD for each byte that is no character
        } else if (step.character == '"' || step.character == '\\') {
            line += '\\';
            line += text.front();
        } else if (const char letter = ShortEscape(step.character); letter != '\0') {
            line += '\\';
            line += letter;
        } else if (IsControl(step.character)) {
            line += "\\u";
            AppendHex(line, step.character, 4);
        } else {
            line.append(text.data(), step.length);
        }
        text.remove_prefix(step.length);
    }
    line += '"';
}

void AppendTime(std::string& line, std::chrono::system_clock::time_point time) {
    char text[kTimeSize];
    PrintTime(
        std::chrono::duration_cast<std::chrono::microseconds>(time.time_since_epoch()).count(),
        text);
    line += text;
}

void RenderText(std::string& line, const Record& record, const LineContext& context) {
    static constexpr const char* kNames[] = {" DEBUG", " INFO ", " WARN ", " ERROR", " OFF  "};
    AppendTime(line, record.time);
    line += kNames[static_cast<int>(record.level)];
    line += " pid=";
    AppendNumber(line, context.pid);
    line += " tid=";
    AppendNumber(line, record.thread);
    if (context.process_id != 0) {
        line += " proc=";
        AppendNumber(line, context.process_id);
    }
    if (record.level == Level::kError) {
        line += " code=0x";
        AppendHex(line, record.code, 8);
    }
    if (record.location.IsAvailable()) {
        line += " [";
        AppendEscapedText(line, record.location.getClassName());
        line += ':';
        AppendEscapedText(line, record.location.getMethodName());
        line += ':';
        AppendNumber(line, record.location.getLine());
        line += ']';
    }
    line += ' ';
    std::string_view text = record.text;
    if (!text.empty() && text.back() == '\n') {
        text.remove_suffix(1);  // a habit of printf users, and the line ends anyway
    }
    AppendEscapedText(line, text);
}

void RenderJson(std::string& line, const Record& record, const LineContext& context) {
    line += R"({"time":")";
    AppendTime(line, record.time);
    line += R"(","level":")";
    line += LevelName(record.level);
    line += R"(","pid":)";
    AppendNumber(line, context.pid);
    line += R"(,"process":)";
    AppendNumber(line, context.process_id);
    line += R"(,"thread":)";
    AppendNumber(line, record.thread);
    line += R"(,"unit":)";
    AppendJsonText(line, record.location.getClassName());
    line += R"(,"function":)";
    AppendJsonText(line, record.location.getMethodName());
    line += R"(,"line":)";
    AppendNumber(line, record.location.getLine());
    line += R"(,"code":)";
    AppendNumber(line, record.code);
    line += R"(,"text":)";
    AppendJsonText(line, record.text);
    line += '}';
}

}  // namespace

std::string Render(const Record& record, const LineContext& context) {
    std::string line;
    line.reserve(record.text.size() + 160);
    if (context.format == Format::kJson) {
        RenderJson(line, record, context);
    } else {
        RenderText(line, record, context);
    }
    return line;
}

const char* LevelName(Level level) noexcept {
    static constexpr const char* kNames[] = {"debug", "info", "warn", "error", "off"};
    return kNames[static_cast<int>(level)];
}

void PrintTime(std::int64_t microseconds_since_epoch, char (&text)[kTimeSize]) noexcept {
    // The C library's conversions take locks for the time zone, which a signal handler
    // must not; std::chrono's calendar is arithmetic.
    using std::chrono::microseconds;
    const std::chrono::sys_time<microseconds> time{microseconds(microseconds_since_epoch)};
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(time - day);
    char* at = text;
    const auto put = [&at](long long value, int width, char after) {
        for (int i = width - 1; i >= 0; --i) {
            at[i] = static_cast<char>('0' + value % 10);
            value /= 10;
        }
        at[width] = after;
        at += width + 1;
    };
    put(static_cast<int>(date.year()), 4, '-');
    put(static_cast<unsigned>(date.month()), 2, '-');
    put(static_cast<unsigned>(date.day()), 2, 'T');
    put(clock.hours().count(), 2, ':');
    put(clock.minutes().count(), 2, ':');
    put(clock.seconds().count(), 2, '.');
    put(clock.subseconds().count(), 6, 'Z');
    *at = '\0';
}

}  // namespace kelp::log
