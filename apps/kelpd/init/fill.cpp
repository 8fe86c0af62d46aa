#include "kelpd/init/templates.h"

namespace kelpd {

std::string Fill(std::string_view text, const std::map<std::string, std::string>& values) {
    std::string filled;
    for (;;) {
        const std::size_t open = text.find("{{");
        const std::size_t close = open == text.npos ? text.npos : text.find("}}", open);
        if (close == text.npos) {
            return filled.append(text);
        }
        filled.append(text.substr(0, open));
        filled.append(values.at(std::string(text.substr(open + 2, close - open - 2))));
        text.remove_prefix(close + 2);
    }
}

}  // namespace kelpd
