#include "settings/installation_root.h"

#include <cstdlib>

namespace kelp::settings {

std::string InstallationRoot() {
    // Nobody changes the environment once threads run: see kelp/settings.h.
    const char* const root = std::getenv("OSS_ROOT");  // NOLINT(concurrency-mt-unsafe)
    std::string path = root == nullptr ? "" : root;
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

}  // namespace kelp::settings
