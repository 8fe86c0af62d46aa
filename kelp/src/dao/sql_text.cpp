#include "dao/sql_text.h"

#include "kelp/secure.h"

namespace kelp::db {

namespace {

bool IsBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Behind what may stand before a word: blanks, comments (PostgreSQL's nest), "(" and ";".
std::size_t SkipNoise(std::string_view sql) {
    std::size_t at = 0;
    while (at < sql.size()) {
        const std::string_view rest = sql.substr(at);
        if (IsBlank(sql[at]) || sql[at] == '(' || sql[at] == ';') {
            ++at;
        } else if (rest.substr(0, 2) == "--") {
            const std::size_t end = rest.find('\n');
            at = end == std::string_view::npos ? sql.size() : at + end + 1;
        } else if (rest.substr(0, 2) == "/*") {
            const std::size_t end = rest.find("*/", 2);
            at = end == std::string_view::npos ? sql.size() : at + end + 2;
        } else {
            break;
        }
    }
    return at;
}

// The word that `sql` begins with, which is taken off it.
std::string TakeWord(std::string_view& sql) {
    std::string word;
    std::size_t at = SkipNoise(sql);
    for (; at < sql.size() && IsLetter(sql[at]); ++at) {
        const char c = sql[at];
        word += c >= 'a' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    sql.remove_prefix(at);
    return word;
}

}  // namespace

std::string FirstWord(std::string_view sql) {
    return TakeWord(sql);
}

bool GoesBackToSavepoint(std::string_view rollback) {
    TakeWord(rollback);
    const std::string next = TakeWord(rollback);
    return next == "TO" ||
           ((next == "WORK" || next == "TRANSACTION") && FirstWord(rollback) == "TO");
}

bool IsRollback(std::string_view first_word) {
    return first_word == "ROLLBACK" || first_word == "ABORT";
}

bool IsCommit(std::string_view first_word) {
    return first_word == "COMMIT" || first_word == "END";
}

void HideSecret(std::string& text, std::string_view secret) {
    constexpr std::string_view kMask = "***";
    if (secret.empty()) {
        return;
    }
    for (std::size_t at = text.find(secret); at != std::string::npos;
         at = text.find(secret, at + kMask.size())) {
        text.replace(at, secret.size(), kMask);
    }
}

std::string FirstLine(std::string_view message) {
    message = message.substr(0, message.find('\n'));
    while (!message.empty() && IsBlank(message.back())) {
        message.remove_suffix(1);
    }
    return std::string(message);
}

void Wipe(std::string& text) noexcept {
    text.resize(text.capacity());  // within what it has: nothing moves
    static_cast<void>(memset_s(text.data(), text.size(), 0xCC, text.size()));
    text.clear();
}

}  // namespace kelp::db
