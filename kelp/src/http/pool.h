// The handles that wait for their next request, each with its connection.
//
//     auto handle = Pool::Instance().Take(options, files, "127.0.0.1:8443");
//     ... one exchange ...
//     Pool::Instance().GiveBack(std::move(handle));
//
// thread-safe.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "base/mutex.h"
#include "http/handle.h"

namespace kelp::http {

class Pool {
  public:
    static Pool& Instance();

    /// The handle that was given back last of those for `authority`, or a new one. Throws
    /// std::bad_alloc.
    std::unique_ptr<Handle> Take(const std::shared_ptr<const Options>& options,
                                 const TlsFiles& files, std::string_view authority);
    /// Keeps the handle if it has a connection, and nobody has changed the options meanwhile.
    void GiveBack(std::unique_ptr<Handle> handle);

  private:
    using Handles = std::vector<std::unique_ptr<Handle>>;

    Pool();
    void BeginAnewInAChild() KELP_REQUIRES(mutex_);

    Mutex mutex_;
    int forks_ KELP_GUARDED_BY(mutex_) = 0;  // how often the process was forked, as known here
    std::shared_ptr<const Options> options_ KELP_GUARDED_BY(mutex_);
    std::shared_ptr<Share> share_ KELP_GUARDED_BY(mutex_);
    Handles idle_ KELP_GUARDED_BY(mutex_);  // the one given back last at the end
};

}  // namespace kelp::http
