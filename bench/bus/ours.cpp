// The synchronous request of the library, served by a registered command.

#include <utility>

#include "bus/contestant.h"
#include "frameutil/msg.h"
#include "kelp/asn1.h"
#include "support/check.h"

namespace bench {

namespace {

constexpr unsigned long kEcho = 2167;
constexpr std::uint16_t kServer = 56;
constexpr unsigned char kManager = 4;
constexpr int kTimeoutSeconds = 10;

template <class Octets>
AsnType* Make() {
    return new Octets;
}

void Echo(AsnType* request, AsnType* response, KelpGnlTask*) {
    static_cast<AsnOcts&>(*response) = static_cast<const AsnOcts&>(*request);
}

const FrameUtil::TModel_RegisterCmd g_echo(kEcho, Make<AsnOcts>, Make<AsnOcts>, kManager, nullptr,
                                           Echo, false);

void Initialize(const Line& line, std::uint16_t process) {
    KelpAppOptions options;
    options.procId = process;
    options.runDir = line.folder;
    Require(KelpAppMgr::Initialize(options), "ours", "the application manager does not start");
}

void Serve(const Line& line, void (*ready)()) {
    Initialize(line, kServer);
    auto* workers = new KelpGnlTaskMgr(KelpAppMgr::Instance(), nullptr, kManager, 4);
    Require(workers->Initialize() && KelpAppMgr::Instance()->TMInsertTaskMgr(workers, true), "ours",
            "the task manager does not start");
    KelpAppMgr::WaitForStopSignal(ready);
    KelpAppMgr::Destroy();
}

class OurClient : public Client {
  public:
    explicit OurClient(const Line& line) { Initialize(line, 0); }
    ~OurClient() override { KelpAppMgr::Destroy(); }

    void Exchange(const std::string& request, std::string& answer) override {
        request_ = request;
        const int code = FrameUtil::SynSendMsg({kServer, 0, kManager, 0}, kEcho, request_,
                                               &response_, kTimeoutSeconds);
        Require(code == 0, "ours", "the request failed");
        answer = response_.str();
    }

  private:
    AsnOcts request_;
    AsnOcts response_;
};

}  // namespace

const Contestant kOurs = {"ours", Serve, [](const Line& line) -> std::unique_ptr<Client> {
                              return std::make_unique<OurClient>(line);
                          }};

}  // namespace bench
