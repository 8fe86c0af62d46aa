#include "kelpd/http/request.h"

#include <algorithm>

namespace kelpd {
namespace {

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

bool EqualIgnoringCase(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return Lower(a) == Lower(b); });
}

std::string_view Request::Header(std::string_view name) const {
    for (const auto& [key, value] : headers) {
        if (EqualIgnoringCase(key, name)) {
            return value;
        }
    }
    return {};
}

std::string_view Request::PathValue(std::string_view name) const {
    for (const auto& [key, value] : path_values) {
        if (key == name) {
            return value;
        }
    }
    return {};
}

const std::string* Request::Query(std::string_view name) const {
    for (const auto& [key, value] : target.query) {
        if (key == name) {
            return &value;
        }
    }
    return nullptr;
}

}  // namespace kelpd
