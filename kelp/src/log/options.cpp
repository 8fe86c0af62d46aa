#include <charconv>
#include <cstdlib>
#include <string_view>

#include "kelp/log.h"
#include "log/standard_error.h"

namespace kelp::log {

namespace {

template <typename T>
struct Choice {
    std::string_view name;
    T value;
};

constexpr Choice<Level> kLevels[] = {{"debug", Level::kDebug},
                                     {"info", Level::kInfo},
                                     {"warn", Level::kWarn},
                                     {"error", Level::kError},
                                     {"off", Level::kOff}};
constexpr Choice<Format> kFormats[] = {{"text", Format::kText}, {"json", Format::kJson}};

void ComplainAbout(const char* variable, const char* value, std::string_view expected) {
    Complain({variable, "=", value, " is ignored, expected: ", expected});
}

template <typename T, std::size_t N>
void Read(const char* variable, const Choice<T> (&choices)[N], std::string_view expected,
          T& target) {
    const char* const value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe)
    if (value == nullptr || *value == '\0') {
        return;
    }
    for (const Choice<T>& choice : choices) {
        if (choice.name == value) {
            target = choice.value;
            return;
        }
    }
    ComplainAbout(variable, value, expected);
}

void ReadProcessId(unsigned& target) {
    const char* const value = std::getenv("KELP_PROC_ID");  // NOLINT(concurrency-mt-unsafe)
    if (value == nullptr || *value == '\0') {
        return;
    }
    const std::string_view text(value);
    unsigned number = 0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
    if (end.ec != std::errc() || end.ptr != text.data() + text.size() || number > 0xFFFF) {
        ComplainAbout("KELP_PROC_ID", value, "a number from 0 to 65535");
        return;
    }
    target = number;
}

}  // namespace

Options Options::FromEnvironment() {
    Options options;
    Read("KELP_LOG_LEVEL", kLevels, "debug, info, warn, error or off", options.level);
    Read("KELP_LOG_FORMAT", kFormats, "text or json", options.format);
    ReadProcessId(options.process_id);
    if (const char* const file = std::getenv("KELP_LOG_FILE");  // NOLINT(concurrency-mt-unsafe)
        file != nullptr) {
        options.file = file;
    }
    return options;
}

}  // namespace kelp::log
