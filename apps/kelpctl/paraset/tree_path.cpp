#include "kelpctl/paraset/tree_path.h"

#include <algorithm>
#include <cctype>

#include "support/utf8.h"

namespace kelpctl {
namespace {

bool IsPlain(std::string_view key) {
    return !key.empty() && std::all_of(key.begin(), key.end(), [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '#' || c == '-';
    });
}

}  // namespace

TreePath::Step TreePath::Into(std::string_view key) {
    const std::size_t length = text_.size();
    text_ += IsPlain(key) ? "." + std::string(key) : "[\"" + app::ShowText(key) + "\"]";
    return {*this, length};
}

TreePath::Step TreePath::Into(std::size_t index) {
    const std::size_t length = text_.size();
    text_ += '[' + std::to_string(index) + ']';
    return {*this, length};
}

}  // namespace kelpctl
