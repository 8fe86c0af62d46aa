// ZeroMQ's REQ and REP over ipc.

#include <zmq.h>

#include "bus/contestant.h"
#include "support/check.h"

namespace bench {

namespace {

constexpr const char* kName = "zeromq";

std::string Endpoint(const Line& line) {
    return "ipc://" + line.folder + "/zeromq.sock";
}

// A message of at most `room` octets into `octets`.
void Receive(void* socket, std::string& octets, std::size_t room) {
    octets.resize(room);
    const int got = zmq_recv(socket, octets.data(), octets.size(), 0);
    Require(got >= 0, kName, "nothing received");
    octets.resize(static_cast<std::size_t>(got));
}

void Send(void* socket, const std::string& octets) {
    Require(zmq_send(socket, octets.data(), octets.size(), 0) >= 0, kName, "nothing sent");
}

void Serve(const Line& line, void (*ready)()) {
    void* context = zmq_ctx_new();
    void* socket = zmq_socket(context, ZMQ_REP);
    Require(zmq_bind(socket, Endpoint(line).c_str()) == 0, kName, "the server does not listen");
    ready();
    std::string payload;
    for (;;) {
        Receive(socket, payload, line.octets);
        Send(socket, payload);
    }
}

class ZeroMqClient : public Client {
  public:
    explicit ZeroMqClient(const Line& line)
        : context_(zmq_ctx_new()), socket_(zmq_socket(context_, ZMQ_REQ)) {
        Require(zmq_connect(socket_, Endpoint(line).c_str()) == 0, kName,
                "the client does not connect");
    }
    ~ZeroMqClient() override {
        zmq_close(socket_);
        zmq_ctx_term(context_);
    }

    void Exchange(const std::string& request, std::string& answer) override {
        Send(socket_, request);
        Receive(socket_, answer, request.size());
    }

  private:
    void* context_;
    void* socket_;
};

}  // namespace

const Contestant kZeroMq = {kName, Serve, [](const Line& line) -> std::unique_ptr<Client> {
                                return std::make_unique<ZeroMqClient>(line);
                            }};

}  // namespace bench
