// Another process of this program in one of its roles, with a pipe each way.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace bench {

class Process {
  public:
    /// Starts this program with `arguments`.
    explicit Process(const std::vector<std::string>& arguments);
    /// Ends it with SIGTERM and waits for it.
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// The next line that it writes, without the line's end.
    std::string ReadLine();
    /// Writes one line to it.
    void WriteLine(const std::string& line);
    /// The time that its threads have been on a CPU.
    double CpuSeconds() const;

  private:
    pid_t pid_ = -1;
    int from_ = -1;
    int to_ = -1;
};

/// Keeps the calling thread, and what it starts, on one CPU while the object lives.
class OneCpu {
  public:
    OneCpu();
    ~OneCpu();
    OneCpu(const OneCpu&) = delete;
    OneCpu& operator=(const OneCpu&) = delete;

  private:
    struct Mask;
    Mask* before_;
};

/// A folder of its own that is removed with what is in it.
class Folder {
  public:
    Folder();
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

}  // namespace bench
