// A REST exchange on a kept connection, through the HTTP manager as its callers use it, a new
// object for each request, and through a bare easy handle of libcurl with everything set once;
// then how many TLS handshakes a thousand exchanges of eight threads cost.
//
// Client and server share one CPU for the single exchange: an idle CPU takes longer to wake
// than any of this takes.

#include <benchmark/benchmark.h>
#include <curl/curl.h>
#include <sched.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "http/server.h"
#include "kelp/http.h"
#include "support/check.h"

namespace bench {
namespace {

struct Setting {
    std::string folder;
    std::string body;
    std::unique_ptr<TlsServer> server;
};
Setting& TheSetting() {
    static Setting setting;
    return setting;
}

class Ours {
  public:
    static constexpr const char* kName = "ours";

    const std::string& Exchange() {
        UFHTTPMSGMGR::CHttpMsgOper oper;
        const UFHTTPMSGMGR::s_HttpMsgReq request;
        Require(oper.SendHttpMsg_Get(TheSetting().server->url(), request, response_) == 0 &&
                    response_.lStatusCode == 200,
                kName, "the exchange failed");
        return response_.strRspBody;
    }

  private:
    UFHTTPMSGMGR::s_HttpMsgRsp response_;
};

/// Verifies as ours does; it has no limits, no time-outs and no pool.
class BareHandle {
  public:
    static constexpr const char* kName = "easy_handle";

    BareHandle() : easy_(curl_easy_init()) {
        const std::string& folder = TheSetting().folder;
        curl_easy_setopt(easy_, CURLOPT_URL, TheSetting().server->url().c_str());
        curl_easy_setopt(easy_, CURLOPT_CAINFO, (folder + "/ca.crt").c_str());
        curl_easy_setopt(easy_, CURLOPT_SSLCERT, (folder + "/client.crt").c_str());
        curl_easy_setopt(easy_, CURLOPT_SSLKEY, (folder + "/client.key").c_str());
        curl_easy_setopt(easy_, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1);
        curl_easy_setopt(easy_, CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(easy_, CURLOPT_WRITEFUNCTION, &Append);
        curl_easy_setopt(easy_, CURLOPT_WRITEDATA, &body_);
    }
    ~BareHandle() { curl_easy_cleanup(easy_); }
    BareHandle(const BareHandle&) = delete;
    BareHandle& operator=(const BareHandle&) = delete;

    const std::string& Exchange() {
        body_.clear();
        long status = 0;
        Require(curl_easy_perform(easy_) == CURLE_OK &&
                    curl_easy_getinfo(easy_, CURLINFO_RESPONSE_CODE, &status) == CURLE_OK &&
                    status == 200,
                kName, "the exchange failed");
        return body_;
    }

  private:
    static std::size_t Append(char* octets, std::size_t, std::size_t count, void* body) {
        static_cast<std::string*>(body)->append(octets, count);
        return count;
    }

    CURL* easy_;
    std::string body_;
};

template <class Contestant>
void Exchange(benchmark::State& state) {
    Contestant contestant;
    Require(contestant.Exchange() == TheSetting().body, Contestant::kName, "another body");
    for (auto _ : state) {
        benchmark::DoNotOptimize(contestant.Exchange().size());
    }
}

void Handshakes(benchmark::State& state) {
    constexpr int kThreads = 8;
    constexpr int kEach = 125;
    long handshakes = 0;
    for (auto _ : state) {
        const long before = TheSetting().server->Handshakes();
        std::vector<std::thread> threads;
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back([] {
                Ours ours;
                for (int j = 0; j < kEach; ++j) {
                    Require(ours.Exchange() == TheSetting().body, Ours::kName, "another body");
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        handshakes = std::max(handshakes, TheSetting().server->Handshakes() - before);
    }
    state.counters["handshakes"] = static_cast<double>(handshakes);
}

// What the threads before have left would make the count too good.
void ForgetConnections() {
    static int turn = 0;
    const std::string root = TheSetting().folder + "/root" + std::to_string(turn++);
    std::filesystem::create_directories(root + "/etc");
    const std::string tls = TheSetting().folder;
    std::ofstream(root + "/etc/kelp.json")
        << "{\"tls\": {\"ca\": \"" << tls << "/ca.crt\", \"certificate\": \"" << tls
        << "/client.crt\", \"key\": \"" << tls << "/client.key\"}}";
    ::setenv("OSS_ROOT", root.c_str(), 1);
}

void HandshakesFromNothing(benchmark::State& state) {
    ForgetConnections();
    Handshakes(state);
}

template <class Contestant>
void Register() {
    benchmark::RegisterBenchmark((std::string("exchange/") + Contestant::kName).c_str(),
                                 Exchange<Contestant>)
        ->Unit(benchmark::kMicrosecond)
        ->UseRealTime();
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(0, &one);
    sched_setaffinity(0, sizeof one, &one);
    std::string folder = "/tmp/bench_http.XXXXXX";
    bench::Require(::mkdtemp(folder.data()) != nullptr, "server", "no folder");
    bench::TheSetting().folder = folder;
    bench::TheSetting().body = R"({"groupmap": {"3001": {"0": "NE_GROUP", "1": "NE_GROUP_2"}}})";
    bench::TheSetting().server =
        std::make_unique<bench::TlsServer>(folder, bench::TheSetting().body);
    bench::ForgetConnections();
    curl_global_init(CURL_GLOBAL_DEFAULT);

    bench::Register<bench::Ours>();
    bench::Register<bench::BareHandle>();
    benchmark::RegisterBenchmark("handshakes/ours", bench::HandshakesFromNothing)
        ->Unit(benchmark::kMillisecond)
        ->Iterations(1)
        ->UseRealTime();
    benchmark::Initialize(&argc, argv);
    const bool understood = !benchmark::ReportUnrecognizedArguments(argc, argv);
    if (understood) {
        benchmark::RunSpecifiedBenchmarks();
    }
    bench::TheSetting().server.reset();
    std::filesystem::remove_all(folder);
    return understood ? 0 : 1;
}
