#include "kelpd/gateway/open.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "kelpd/status.h"

namespace kelpd {
namespace {

using boost::asio::ip::tcp;
using local = boost::asio::local::stream_protocol;

constexpr int kBacklog = 1024;

}  // namespace

tcp::acceptor ListenTcp(boost::asio::io_context& context, const std::string& address,
                        std::uint16_t port, const std::string& file) {
    boost::system::error_code error;
    const auto parsed = boost::asio::ip::make_address(address, error);
    const tcp::endpoint endpoint(parsed, port);
    tcp::acceptor acceptor(context);
    if (!error) {
        acceptor.open(endpoint.protocol(), error);
    }
    if (!error) {
        // Connections of a daemon that was here before may still be ending.
        acceptor.set_option(tcp::acceptor::reuse_address(true), error);
        acceptor.bind(endpoint, error);
    }
    if (!error) {
        acceptor.listen(kBacklog, error);
    }
    if (!error) {
        return acceptor;
    }
    const std::string number = std::to_string(port);
    if (error == boost::asio::error::address_in_use) {
        throw Refusal(kAddress, address + " port " + number +
                                    " is in use: run 'ss -ltnp sport = :" + number +
                                    "' to see by whom, or change \"gateway.port\" in " + file);
    }
    throw Refusal(kAddress, "cannot listen on " + address + " port " + number + ": " +
                                error.message() + ": change \"gateway.listen\" in " + file);
}

local::acceptor ListenLocal(boost::asio::io_context& context, const std::string& path) {
    struct stat found {};
    if (::lstat(path.c_str(), &found) == 0 && S_ISSOCK(found.st_mode)) {
        ::unlink(path.c_str());
    }
    try {
        local::acceptor acceptor(context);
        acceptor.open();
        // The mode is the unbound socket's: there is no moment at which others may connect.
        ::fchmod(acceptor.native_handle(), 0600);
        acceptor.bind(local::endpoint(path));
        ::chmod(path.c_str(), 0600);
        acceptor.listen(16);
        return acceptor;
    } catch (const boost::system::system_error& e) {
        throw Refusal(kAddress, "cannot listen on " + path + ": " + e.code().message() +
                                    ": change \"health.socket\" in etc/kelp.json");
    }
}

app::UniqueFd LockRoot(const std::string& run_folder) {
    const std::string path = run_folder + "/kelpd.lock";
    app::UniqueFd lock(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (lock && ::flock(lock.get(), LOCK_EX | LOCK_NB) == 0) {
        return lock;
    }
    if (errno == EWOULDBLOCK) {
        throw Refusal(kRunning, "a kelpd serves this root already: run 'fuser " + path +
                                    "' to see its process");
    }
    throw Refusal(kFailed, path + ": " + std::generic_category().message(errno));
}

}  // namespace kelpd
