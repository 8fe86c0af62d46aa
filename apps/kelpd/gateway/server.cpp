#include "kelpd/gateway/server.h"

#include <sys/resource.h>

#include <algorithm>
#include <boost/asio/post.hpp>
#include <boost/asio/signal_set.hpp>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <thread>

#include "kelp/log.h"
#include "kelpd/config/guard.h"
#include "kelpd/endpoints/endpoints.h"
#include "kelpd/gateway/listener.h"
#include "kelpd/gateway/notify.h"
#include "kelpd/gateway/open.h"
#include "kelpd/net/tls_context.h"
#include "kelpd/status.h"

namespace kelpd {
namespace {

constexpr std::size_t kSpareConnections = 32;  // that are told that there are too many
constexpr std::size_t kHealthConnections = 16;
constexpr std::size_t kOtherDescriptors = 32;  // the log, pollers, listeners
constexpr int kWarnDays = 30;
constexpr std::chrono::milliseconds kHealthStop(500);

void Say(const std::string& text) {
    LogProcess::Info(text, LocationInfo("kelpd", "serve", 0));
}

void Warn(const std::string& text) {
    LogProcess::Warn(text, LocationInfo("kelpd", "serve", 0));
}

// As many connections as there will be descriptors for: what is beyond is refused in an
// orderly way, not by a failing accept.
Limits FitDescriptors(Limits limits) {
    rlimit files{};
    if (::getrlimit(RLIMIT_NOFILE, &files) != 0) {
        return limits;
    }
    files.rlim_cur = files.rlim_max;
    if (::setrlimit(RLIMIT_NOFILE, &files) != 0 || files.rlim_cur == RLIM_INFINITY) {
        return limits;
    }
    const std::size_t others = kOtherDescriptors + kHealthConnections + kSpareConnections;
    const std::size_t all = static_cast<std::size_t>(files.rlim_cur);
    const std::size_t fit = all > others + 8 ? all - others : 8;
    if (fit < limits.connections) {
        Warn("the limit of open files (" + std::to_string(all) + ") allows " + std::to_string(fit) +
             " connections instead of " + std::to_string(limits.connections));
        limits.connections = fit;
    }
    return limits;
}

class Server {
  public:
    explicit Server(const Config& config)
        : config_(config),
          limits_(FitDescriptors(config.limits)),
          lock_(LockRoot(config.run_folder)),
          tls_(config),
          gateway_{
              limits_,
              Router(GatewayEndpoints(config)),
              &tls_,
              true,
              metrics_,
              Admission(limits_.connections, limits_.connections_per_address, kSpareConnections),
              {},
              {}},
          health_{limits_,
                  Router(HealthEndpoints(metrics_, gateway_.admission, gateway_.stopping)),
                  nullptr,
                  false,
                  health_metrics_,
                  Admission(kHealthConnections, kHealthConnections, 0),
                  {},
                  {}},
          gateway_listener_(ListenTcp(context_, config.listen, config.port, config.file), threads_,
                            gateway_),
          health_listener_(ListenLocal(context_, config.health_socket), health_threads_, health_),
          signals_(context_, SIGTERM, SIGINT, SIGHUP) {
        const unsigned processors = std::clamp(std::thread::hardware_concurrency(), 1U, 4U);
        const unsigned count = config.threads != 0 ? config.threads : processors;
        for (unsigned i = 0; i < count; ++i) {
            threads_.push_back(std::make_unique<IoThread>());
        }
        // Its own thread: the health is told whatever the gateway's threads are at.
        health_threads_.push_back(std::make_unique<IoThread>());
    }

    int Run() {
        StartThreads();
        WaitForSignal();
        gateway_listener_.Start();
        health_listener_.Start();
        Announce();
        context_.run();
        for (std::thread& thread : running_) {
            thread.join();
        }
        ::unlink(config_.health_socket.c_str());
        Say("stopped");
        return kOk;
    }

  private:
    void StartThreads() {
        serving_ = threads_.size();
        running_.reserve(threads_.size() + health_threads_.size());
        try {
            for (const auto& thread : threads_) {
                running_.emplace_back([this, &thread = *thread] {
                    thread.Run();
                    boost::asio::post(context_, [this] { Ended(); });
                });
            }
            running_.emplace_back([this] { health_threads_.front()->Run(); });
        } catch (const std::system_error& e) {
            const auto now = IoThread::Clock::now();
            for (std::size_t i = 0; i < running_.size(); ++i) {
                threads_[i]->Stop(now);
                running_[i].join();
            }
            throw Refusal(kFailed, std::string("cannot start a thread: ") + e.code().message());
        }
    }

    void Announce() {
        if (tls_.days_left() < kWarnDays) {
            Warn("the certificate " + config_.certificate_file + " expires in " +
                 std::to_string(tls_.days_left()) + " days");
        }
        const bool v6 = config_.listen.find(':') != config_.listen.npos;
        const std::string address = v6 ? "[" + config_.listen + "]" : config_.listen;
        const std::string line = "serves " + config_.root + " on https://" + address + ":" +
                                 std::to_string(config_.port);
        Say(line);
        std::cout << "kelpd: ready: " << line << std::endl;
        NotifySupervisor("READY=1");
    }

    void WaitForSignal() {
        signals_.async_wait([this](const boost::system::error_code& error, int number) {
            if (error) {
                return;
            }
            if (number == SIGHUP) {
                kelp::log::Reopen();
                return WaitForSignal();
            }
            Stop();
        });
    }

    // Requests that run are answered; what is not over when the time is up is cut.
    void Stop() {
        Say("stopping: requests that run are answered");
        NotifySupervisor("STOPPING=1");
        gateway_listener_.Close();
        gateway_.stopping = true;
        for (const auto& thread : threads_) {
            thread->Stop(IoThread::Clock::now() + limits_.stop);
        }
        // A second signal ends the process at once, as it would without a handler.
        signals_.clear();
        std::signal(SIGHUP, SIG_IGN);
    }

    // The health is told for as long as the gateway has a session.
    void Ended() {
        if (--serving_ > 0) {
            return;
        }
        health_listener_.Close();
        health_.stopping = true;
        health_threads_.front()->Stop(IoThread::Clock::now() + kHealthStop);
    }

    const Config& config_;
    const Limits limits_;
    const app::UniqueFd lock_;
    const TlsContext tls_;
    Metrics metrics_;
    Metrics health_metrics_;
    Service gateway_;
    Service health_;
    Threads threads_;
    Threads health_threads_;
    std::vector<std::thread> running_;
    std::size_t serving_ = 0;  // threads of the gateway that have not ended
    boost::asio::io_context context_{1};
    Listener<boost::asio::ip::tcp> gateway_listener_;
    Listener<boost::asio::local::stream_protocol> health_listener_;
    boost::asio::signal_set signals_;
};

}  // namespace

int Serve(const Config& config) {
    std::signal(SIGPIPE, SIG_IGN);
    // Whoever may write to one of these can put files of its own in the place of ours.
    const auto parent = [](const std::string& file) {
        return std::filesystem::path(file).parent_path().string();
    };
    for (const std::string& folder : {config.root, config.root + "/etc", parent(config.key_file),
                                      parent(config.ca_file), config.run_folder}) {
        RequireOwnFolder(folder);
    }
    Server server(config);
    return server.Run();
}

}  // namespace kelpd
