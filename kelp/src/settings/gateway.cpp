#include <string>

#include "kelp/log.h"
#include "kelp/settings.h"
#include "settings/configuration.h"

namespace ns_kelpsdk_wrap {

std::string GetIRBaseURL() {
    constexpr const char* kName = "gateway/baseUrl";
    const auto configuration = kelp::settings::Configuration::Current();
    const auto failure = [](const std::string& why) {
        LogProcess::Warn("[settings] there is no gateway: " + why,
                         LocationInfo("settings", "GetIRBaseURL", 0));
        return std::string();
    };
    const auto* const value = configuration->Find(kName);
    if (value == nullptr) {
        return failure(configuration->Why().empty()
                           ? "etc/kelp.json has no member \"gateway\" with a \"baseUrl\""
                           : configuration->Why());
    }
    std::string url = value->text;
    while (url.ends_with('/')) {
        url.pop_back();
    }
    constexpr std::string_view kScheme = "https://";
    if (value->kind != kelp::settings::Configuration::Value::Kind::kText ||
        !url.starts_with(kScheme) || url.size() == kScheme.size() ||
        url.find_first_of("?#@ \t\r\n") != std::string::npos) {
        return failure(value->place + ": \"baseUrl\" is no \"https://HOST:PORT\"");
    }
    return url;
}

}  // namespace ns_kelpsdk_wrap
