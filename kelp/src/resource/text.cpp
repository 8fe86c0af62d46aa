#include "resource/text.h"

#include <algorithm>
#include <map>

#include "log/utf8.h"

namespace kelp::resource {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kBlanks = " \t";

std::string_view Trim(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// What cannot stand in any line, a comment's included: an editor that shows the file
// shows all of it. "" when there is nothing of the kind.
std::string CharacterFault(std::string_view line) {
    const char* what = nullptr;
    std::size_t at = 0;
    while (at < line.size()) {
        const log::Utf8Step step = log::NextCharacter(line.substr(at));
        if (!step.valid) {
            what = "the line is not UTF-8";
        } else if ((step.character < 0x20 && step.character != '\t') || step.character == 0x7F) {
            what = "there is a control character";
        } else if (step.character == 0xFEFF) {
            // Of a file that was put behind another: it would be an unseen part of a key.
            what = "there is a byte-order mark";
        }
        if (what != nullptr) {
            return std::string(what) + " (octet " + std::to_string(at + 1) + " of the line)";
        }
        at += step.length;
    }
    return {};
}

// The lines of a text, one after the other.
class Lines {
  public:
    explicit Lines(std::string_view text) : m_rest(text) {}

    bool Next(std::string_view& line) {
        if (m_rest.empty()) {
            return false;
        }
        const std::size_t end = std::min(m_rest.find('\n'), m_rest.size());
        line = m_rest.substr(0, end);
        m_rest.remove_prefix(std::min(end + 1, m_rest.size()));
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        ++m_number;
        return true;
    }
    std::size_t Number() const { return m_number; }

  private:
    std::string_view m_rest;
    std::size_t m_number = 0;
};

class Reader {
  public:
    explicit Reader(std::vector<Entry>& entries) : m_entries(entries) {}

    // Takes a line; what is wrong with it, or "".
    std::string Take(std::string_view line, std::size_t number) {
        if (line.size() > kMaxLine) {
            return "the line is longer than " + std::to_string(kMaxLine) + " octets";
        }
        if (std::string what = CharacterFault(line); !what.empty()) {
            return what;
        }
        line = Trim(line);
        if (line.empty() || line.front() == '#') {
            return {};
        }
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos) {
            return "there is no '=' in the line";
        }
        const Entry entry{Trim(line.substr(0, equals)), Trim(line.substr(equals + 1))};
        if (entry.key.empty()) {
            return "there is no key in front of the '='";
        }
        const auto [known, fresh] = m_lines.emplace(entry.key, number);
        if (!fresh) {
            return "the key \"" + std::string(entry.key) + "\" stands in line " +
                   std::to_string(known->second) + " already";
        }
        m_entries.push_back(entry);
        return {};
    }

  private:
    std::vector<Entry>& m_entries;
    std::map<std::string_view, std::size_t> m_lines;  // where each key stands
};

}  // namespace

bool Parse(std::string_view text, std::vector<Entry>& entries, Fault& fault) {
    entries.clear();
    if (text.starts_with(kByteOrderMark)) {
        text.remove_prefix(kByteOrderMark.size());
    }
    Reader reader(entries);
    Lines lines(text);
    std::string_view line;
    while (lines.Next(line)) {
        std::string what = reader.Take(line, lines.Number());
        if (!what.empty()) {
            entries.clear();
            fault = {lines.Number(), std::move(what)};
            return false;
        }
    }
    return true;
}

}  // namespace kelp::resource
