#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "base/mutex.h"
#include "kelp/log.h"
#include "log/render.h"
#include "log/standard_error.h"

namespace KELPcommon {

namespace {

// Appends records to a descriptor that it owns, one system call each, so that no lock is
// needed between threads: the file is opened for appending.
class TraceFile : public kelp::log::Sink {
  public:
    explicit TraceFile(int descriptor) : m_descriptor(descriptor) {}
    ~TraceFile() override { ::close(m_descriptor); }
    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;

    void Write(const kelp::log::Record& record) override {
        kelp::log::LineContext context = kelp::log::ProcessContext::Get();
        context.format = kelp::log::Format::kJson;
        std::string line = kelp::log::Render(record, context);
        line += '\n';
        kelp::log::WriteAll(m_descriptor, line);
    }

  private:
    const int m_descriptor;
};

struct Client {
    kelp::Mutex mutex;
    std::shared_ptr<TraceFile> file KELP_GUARDED_BY(mutex);
};

// Never destroyed: the shut-down of the process may come after the static objects'.
Client& TheClient() {
    static Client& client = *new Client;
    return client;
}

}  // namespace

int TraceClient::Start(const std::string& path, kelp::log::Level minimum) noexcept {
    const int descriptor =
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY, 0600);
    if (descriptor < 0) {
        return errno;
    }
    try {
        auto file = std::make_shared<TraceFile>(descriptor);
        Client& client = TheClient();
        const kelp::MutexLock lock(client.mutex);
        kelp::log::RemoveSink(client.file.get());
        client.file = file;
        kelp::log::AddSink(std::move(file), minimum);
        return 0;
    } catch (const std::bad_alloc&) {
        ::close(descriptor);
        return ENOMEM;
    }
}

void TraceClient::Destroy() noexcept {
    Client& client = TheClient();
    const kelp::MutexLock lock(client.mutex);
    kelp::log::RemoveSink(client.file.get());
    client.file.reset();
}

}  // namespace KELPcommon
