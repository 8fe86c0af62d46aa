#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "kelp/settings.h"
#include "settings/configuration.h"

namespace KELPSetting {
namespace {

using kelp::settings::Configuration;

constexpr std::string_view kTree = "settings";  // the member that holds them

// "/a/b" as the configuration names it; "" when `path` does not begin with a slash or has an
// empty step.
std::string NameOf(const std::string& path) {
    if (!path.starts_with('/') || path.find("//") != std::string::npos) {
        return {};
    }
    return std::string(kTree) + path;
}

int CodeOf(const Configuration& configuration) {
    switch (configuration.GetState()) {
        case Configuration::State::kSound:
            return 0;
        case Configuration::State::kNoRoot:
            return SETTING_ERR_NO_ROOT;
        case Configuration::State::kNoFile:
            return SETTING_ERR_FILE;
        case Configuration::State::kMalformed:
            break;
    }
    return SETTING_ERR_FORMAT;
}

}  // namespace

Setting* Setting::instance() noexcept {
    static Setting setting;
    return &setting;
}

int Setting::getGroupSubGroups(const std::string& group, std::vector<std::string>& subGroups) {
    const auto configuration = Configuration::Current();
    if (const int code = CodeOf(*configuration); code != 0) {
        return code;
    }
    std::string name = NameOf(group);
    if (!name.empty() && !name.ends_with('/')) {
        name += '/';
    }
    if (name.empty() || !configuration->HasGroup(name)) {
        return SETTING_ERR_NOT_FOUND;
    }
    std::vector<std::string> found;
    const auto& values = configuration->All();
    for (auto value = values.lower_bound(name);
         value != values.end() && value->first.starts_with(name); ++value) {
        const std::size_t end = value->first.find('/', name.size());
        if (end == std::string::npos) {
            continue;  // a parameter of the group itself
        }
        std::string path = value->first.substr(kTree.size(), end + 1 - kTree.size());
        if (found.empty() || found.back() != path) {
            found.push_back(std::move(path));
        }
    }
    subGroups.swap(found);
    return 0;
}

int Setting::getParamValue(const std::string& param, std::string& value) {
    const auto configuration = Configuration::Current();
    if (const int code = CodeOf(*configuration); code != 0) {
        return code;
    }
    const auto* const found = configuration->Find(NameOf(param));
    if (found == nullptr) {
        return SETTING_ERR_NOT_FOUND;
    }
    if (found->kind == Configuration::Value::Kind::kOther) {
        return SETTING_ERR_FORMAT;
    }
    value = found->text;
    return 0;
}

}  // namespace KELPSetting
