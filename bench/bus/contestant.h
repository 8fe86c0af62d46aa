// One way of asking another process: what a server does with requests and what a client
// does for one. Every server answers with the octets it was sent.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace bench {

/// Where the contestant's server is, and how many octets its requests carry.
struct Line {
    std::string folder;  // of this contestant alone; sockets go there
    std::size_t octets = 0;
};

class Client {
  public:
    virtual ~Client() = default;
    /// Sends `request` and waits; the answer is in `answer`.
    virtual void Exchange(const std::string& request, std::string& answer) = 0;
};

struct Contestant {
    const char* name;
    /// Calls `ready` when requests are served, serves them, and returns or ends with the
    /// process at SIGTERM.
    void (*serve)(const Line& line, void (*ready)());
    std::unique_ptr<Client> (*connect)(const Line& line);
};

extern const Contestant kOurs;
extern const Contestant kUnixSocket;  // the null contestant: no framing, no names, no tasks
extern const Contestant kZeroMq;

}  // namespace bench
