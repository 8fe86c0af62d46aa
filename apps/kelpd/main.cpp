// kelpd - the platform on a single node. See docs/kelpd.md.

#include <cstdlib>
#include <exception>
#include <iostream>

#include "kelp/log.h"
#include "kelpd/config/config.h"
#include "kelpd/config/guard.h"
#include "kelpd/config/node_list.h"
#include "kelpd/gateway/server.h"
#include "kelpd/options.h"
#include "kelpd/status.h"

namespace {

using namespace kelpd;

std::string ChooseRoot(const std::string& wanted) {
    // No thread runs yet. NOLINTNEXTLINE(concurrency-mt-unsafe)
    const char* const variable = std::getenv("OSS_ROOT");
    std::string root = !wanted.empty() ? wanted : variable != nullptr ? variable : "";
    if (root.empty()) {
        throw Refusal(kConfiguration,
                      "OSS_ROOT is not set: run 'kelpd init DIR' and export what "
                      "it prints, or name the root with --root");
    }
    while (root.size() > 1 && root.back() == '/') {
        root.pop_back();
    }
    return root;
}

int RunDaemon(const Options& options) {
    const std::string root = ChooseRoot(options.root);
    RequireOwnFolder(root);
    const Config config = ReadConfig(root);
    RequireSoundNodeList(root);
    auto log = kelp::log::Options::FromEnvironment();
    if (log.file.empty()) {
        log.file = config.log_file;
    }
    LogProcess::Init(log);
    const int status = Serve(config);
    LogProcess::Destroy();
    return status;
}

int Run(int argc, const char* const* argv) {
    int status = kOk;
    const auto options = ParseOptions(argc, argv, status);
    if (!options) {
        return status;
    }
    if (options->action == Options::Action::kInit) {
        Init(options->init, std::cout);
        return kOk;
    }
    return RunDaemon(*options);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const Refusal& refusal) {
        std::cerr << "kelpd: " << refusal.what() << '\n';
        return refusal.status();
    } catch (const std::exception& e) {
        std::cerr << "kelpd: " << e.what() << '\n';
        return kFailed;
    }
}
