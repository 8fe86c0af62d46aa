#include <string>

#include "kelp/log.h"
#include "kelp/settings.h"
#include "settings/installation_root.h"

namespace ns_kelpsdk_wrap {

std::string GetPackageRelativePath(const std::string& root, const std::string& relative) {
    std::string path = root;
    if (path.empty()) {
        path = kelp::settings::InstallationRoot();
        if (path.empty()) {
            LogProcess::Warn(
                "[settings] there is no package " + relative + ": " + kelp::settings::kRootIsNotSet,
                LocationInfo("settings", "GetPackageRelativePath", 0));
            return {};
        }
    }
    while (path.ends_with('/')) {
        path.pop_back();
    }
    const std::size_t first = relative.find_first_not_of('/');
    const std::size_t last = relative.find_last_not_of('/');
    if (first != std::string::npos) {
        path += '/';
        path.append(relative, first, last - first + 1);
    }
    return path;
}

}  // namespace ns_kelpsdk_wrap
