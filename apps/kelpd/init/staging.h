// kelpd/init/staging.h - a folder that appears whole or not at all.
//
//     Staging staging("/opt/nms");            // refuses what is not empty
//     staging.Write("oss/etc/kelp.json", text, 0600);
//     staging.Publish();                      // now /opt/nms holds it all
//
// It is filled beside its place, under a name that nobody looks for, and renamed at the end.
// Without Publish the destructor removes what was written.
//
// one thread
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace kelpd {

/// Every function throws Refusal: kOccupied for a target that is there and not empty,
/// kUsage for one that cannot be a folder, kFailed when the system fails.
class Staging {
  public:
    explicit Staging(const std::string& target);
    ~Staging();
    Staging(const Staging&) = delete;
    Staging& operator=(const Staging&) = delete;

    /// The absolute path that the folder will have.
    const std::string& target() const { return target_; }
    void MakeFolder(const std::string& path, mode_t mode);
    /// Folders on the way are made, with mode 0755. The octets are on the disk afterwards.
    void Write(const std::string& path, std::string_view text, mode_t mode);
    void Publish();

  private:
    std::string target_;
    std::string folder_;
    bool published_ = false;
};

}  // namespace kelpd
