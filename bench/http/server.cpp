#include "http/server.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/ssl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <thread>

#include "support/check.h"

namespace bench {
namespace {

// The requests of this benchmark have no bodies.
constexpr std::string_view kEndOfRequest = "\r\n\r\n";

void Answer(SSL* tls, const std::string& answer) {
    std::string request;
    char block[4096];
    for (int got = SSL_read(tls, block, sizeof block); got > 0;
         got = SSL_read(tls, block, sizeof block)) {
        request.append(block, static_cast<std::size_t>(got));
        if (request.ends_with(kEndOfRequest)) {
            request.clear();
            SSL_write(tls, answer.data(), static_cast<int>(answer.size()));
        }
    }
}

void Serve(int connection, SSL_CTX* context, const std::string& answer,
           std::atomic<long>& handshakes) {
    const int on = 1;
    ::setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    SSL* const tls = SSL_new(context);
    SSL_set_fd(tls, connection);
    if (SSL_accept(tls) == 1) {
        ++handshakes;
        Answer(tls, answer);
    }
    SSL_free(tls);
    ::close(connection);
}

}  // namespace

struct TlsServer::Shared {
    std::atomic<long> handshakes{0};
};

TlsServer::TlsServer(const std::string& folder, std::string body) {
    const std::string make = "cd '" CERTIFICATES_FOLDER
                             "' && /usr/bin/python3 -B -c 'import sys, certificates; "
                             "certificates.make(sys.argv[1])' '" +
                             folder + "'";
    Require(std::system(make.c_str()) == 0, "server", "no certificates");
    void* const memory =
        ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    Require(memory != MAP_FAILED, "server", "no shared memory");
    shared_ = new (memory) Shared;

    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const plain = reinterpret_cast<sockaddr*>(&address);
    Require(::bind(listener, plain, size) == 0 && ::listen(listener, 64) == 0 &&
                ::getsockname(listener, plain, &size) == 0,
            "server", "no port");
    url_ = "https://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/rest/body";

    process_ = ::fork();
    if (process_ != 0) {
        ::close(listener);
        return;
    }
    ::signal(SIGPIPE, SIG_IGN);
    SSL_CTX* const context = SSL_CTX_new(TLS_server_method());
    const std::string name = folder + "/server.";
    Require(SSL_CTX_use_certificate_chain_file(context, (name + "crt").c_str()) == 1 &&
                SSL_CTX_use_PrivateKey_file(context, (name + "key").c_str(), SSL_FILETYPE_PEM) == 1,
            "server", "the certificate is not usable");
    const std::string answer =
        "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " +
        std::to_string(body.size()) + "\r\n\r\n" + body;
    for (;;) {
        const int connection = ::accept(listener, nullptr, nullptr);
        if (connection >= 0) {
            std::thread(Serve, connection, context, std::cref(answer),
                        std::ref(shared_->handshakes))
                .detach();
        }
    }
}

TlsServer::~TlsServer() {
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
    ::munmap(shared_, sizeof(Shared));
}

long TlsServer::Handshakes() const {
    return shared_->handshakes.load();
}

}  // namespace bench
