// The only place that knows the logging library behind the file: it writes and rotates.
// What it does not do is done around it: a file that was removed or moved is noticed, a
// failing file is dropped and tried again (its state after an error is not to be relied
// on), and its descriptor is kept for the crash path.

#include "log/output.h"

#include <fcntl.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <limits>
#include <system_error>

#include "log/standard_error.h"

namespace kelp::log {

namespace {

constexpr std::chrono::seconds kRetryAfter{1};
constexpr std::size_t kFileBuffer = 1U << 16U;

constinit std::atomic<int> g_descriptor{STDERR_FILENO};

void WriteToStandardError(const Lines& lines) {
    StandardError out;
    for (const Line& line : lines) {
        out << line.text << "\n";
    }
}

spdlog::file_event_handlers TrackDescriptor() {
    spdlog::file_event_handlers handlers;
    handlers.after_open = [](const std::string&, std::FILE* file) {
        const int descriptor = ::fileno(file);
        ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
        std::setvbuf(file, nullptr, _IOFBF, kFileBuffer);
        g_descriptor.store(descriptor);
    };
    handlers.before_close = [](const std::string&, std::FILE*) {
        g_descriptor.store(STDERR_FILENO);
    };
    return handlers;
}

// Lines come as they are to be written, but for their end.
class LineFormatter : public spdlog::formatter {
  public:
    void format(const spdlog::details::log_msg& line, spdlog::memory_buf_t& bytes) override {
        bytes.append(line.payload);
        bytes.push_back('\n');
    }
    std::unique_ptr<spdlog::formatter> clone() const override {
        return std::make_unique<LineFormatter>();
    }
};

// Opens the file once with the plain system call: the library behind it tries five times
// and sleeps between, and would rename a device as readily as a log file. Throws the
// system's error.
bool IsRegular(const std::string& path) {
    if (const auto folder = std::filesystem::path(path).parent_path(); !folder.empty()) {
        std::error_code ignored;  // the open below says what is wrong
        std::filesystem::create_directories(folder, ignored);
    }
    const int descriptor =
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK, 0666);
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category());
    }
    struct stat status {};
    const bool regular = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    ::close(descriptor);
    return regular;
}

}  // namespace

class FileOutput {
  public:
    explicit FileOutput(const Options& options)
        : m_sink(options.file,
                 IsRegular(options.file) && options.rotate_bytes != 0
                     ? options.rotate_bytes
                     : std::numeric_limits<std::size_t>::max(),
                 options.rotate_files, false, TrackDescriptor()) {
        m_sink.set_formatter(std::make_unique<LineFormatter>());
    }

    void Write(const Lines& lines) {
        const spdlog::log_clock::time_point unused;
        for (const Line& line : lines) {
            m_sink.log({unused, {}, "", spdlog::level::info, line.text});
        }
        m_sink.flush();
    }

    // Whether the open file still has a name.
    static bool IsLinked() {
        struct stat status {};
        return ::fstat(g_descriptor.load(), &status) == 0 && status.st_nlink != 0;
    }

  private:
    spdlog::sinks::rotating_file_sink_st m_sink;
};

Output::Output() = default;
Output::~Output() = default;

bool Output::Open(const Options& options) {
    Close();
    m_options = options;
    return m_options.file.empty() || OpenFile();
}

void Output::Close() {
    m_file.reset();
    m_options.file.clear();
    m_retry = {};
}

bool Output::OpenFile() {
    s_reopen.store(false, std::memory_order_relaxed);
    m_file.reset();
    try {
        m_file = std::make_unique<FileOutput>(m_options);
        return true;
    } catch (const std::exception& error) {
        Fail(error.what());
        return false;
    }
}

void Output::Fail(const char* why) {
    m_file.reset();
    m_retry = std::chrono::steady_clock::now() + kRetryAfter;
    Complain({"records go to standard error, cannot write ", m_options.file, ": ", why});
}

bool Output::FileIsUsable() {
    if (m_options.file.empty()) {
        return false;
    }
    if (s_reopen.load(std::memory_order_relaxed) || (m_file != nullptr && !m_file->IsLinked())) {
        return OpenFile();
    }
    return m_file != nullptr || (std::chrono::steady_clock::now() >= m_retry && OpenFile());
}

void Output::Write(const Lines& lines) {
    if (FileIsUsable()) {
        try {
            m_file->Write(lines);
            return;
        } catch (const std::exception& error) {
            Fail(error.what());
        }
    }
    WriteToStandardError(lines);
}

int Output::Descriptor() noexcept {
    return g_descriptor.load();
}

}  // namespace kelp::log
