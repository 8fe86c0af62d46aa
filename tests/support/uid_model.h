// The identifier grammar once more, as a table of states and a step a character: what the
// parser is compared with.
//
//     support::UidModel model(text);
//     model.done;                 // whether it is an identifier
//     model.pairs;                // what was read, also before a fault
//
// Thread rule: immutable.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace support {

class UidModel {
  public:
    using Pair = std::pair<std::string, std::optional<std::string>>;

    explicit UidModel(std::string_view text) {
        std::size_t at = 0;
        while (m_state != State::kDone && m_state != State::kError && m_written < kBytes) {
            at += Step(at < text.size() ? text[at] : '\0') ? 1 : 0;
        }
        done = m_state == State::kDone;
    }

    bool done = false;
    std::vector<Pair> pairs;

    /// The value that GetValue() finds.
    std::optional<std::string> Find(std::string_view key, unsigned long index) const {
        for (const auto& [name, value] : pairs) {
            if (name == key && index-- == 0) {
                return value.value_or("");
            }
        }
        return std::nullopt;
    }

  private:
    static constexpr std::size_t kBytes = 256;
    enum class State { kKeyStart, kKey, kValueStart, kValue, kEscape, kDone, kError };

    // Whether the character is used up.
    bool Step(char c) {
        const bool comma = c == ',', equals = c == '=', backslash = c == '\\', end = c == '\0';
        const bool other = !comma && !equals && !backslash && !end;
        switch (m_state) {
            case State::kKeyStart:
                if (other) {
                    pairs.emplace_back();
                    return Copy(pairs.back().first, c, State::kKey);
                }
                return Go(end && pairs.empty() ? State::kDone : State::kError);
            case State::kKey:
                if (other) {
                    return Copy(pairs.back().first, c, State::kKey);
                }
                return equals ? Terminate(State::kValueStart) : Go(State::kError);
            case State::kValueStart:
                if (other || backslash) {
                    pairs.back().second = "";
                }
                return other       ? Copy(*pairs.back().second, c, State::kValue)
                       : backslash ? Go(State::kEscape)
                                   : Go(State::kError);
            case State::kValue:
                return other       ? Copy(*pairs.back().second, c, State::kValue)
                       : comma     ? Terminate(State::kKeyStart)
                       : end       ? Terminate(State::kDone)
                       : backslash ? Go(State::kEscape)
                                   : Go(State::kError);
            case State::kEscape: {
                std::string& value = *pairs.back().second;
                if (c == '|') {
                    // Both or none: the buffer ends at its end.
                    if (m_written + 2 > kBytes) {
                        return Go(State::kError);
                    }
                    Copy(value, '\\', State::kValue);
                    return Copy(value, '|', State::kValue);
                }
                return c == 'c'    ? Copy(value, ',', State::kValue)
                       : c == 'e'  ? Copy(value, '=', State::kValue)
                       : backslash ? Copy(value, '\\', State::kValue)
                                   : Go(State::kError);
            }
            case State::kDone:
            case State::kError:
                break;
        }
        return false;
    }

    bool Go(State next) {
        m_state = next;
        return true;
    }
    bool Copy(std::string& to, char c, State next) {
        to += c;
        ++m_written;
        return Go(next);
    }
    bool Terminate(State next) {
        ++m_written;
        return Go(next);
    }

    State m_state = State::kKeyStart;
    std::size_t m_written = 0;
};

}  // namespace support
