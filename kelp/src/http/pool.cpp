// Design notes. A handle is either here or in the hands of one exchange, never both, so
// nothing in it is locked. The lock is held for searching a short list; handles are made and
// destroyed outside of it, since both can take a system call or a dozen. The last handle given
// back is the first one taken: few connections then stay in use and the rest grow old.
//
// Connections and the shared TLS sessions belong to one generation of options. When files or
// settings change the whole generation goes, so nothing that was verified by a CA or shown a
// certificate outlives these.

#include "http/pool.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>

#include "base/clock.h"

namespace kelp::http {
namespace {

// Counted in the child, so that nobody has to ask the system who he is at every request.
std::atomic<int> forks{0};

void OnFork() {
    forks.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace

Pool& Pool::Instance() {
    static auto* const pool = new Pool;  // never destroyed: threads may send to the end
    return *pool;
}

Pool::Pool() {
    ::pthread_atfork(nullptr, nullptr, &OnFork);
}

// A child of a fork has inherited the sockets, but the connections are its parent's: to use or
// even to close one would spoil it there. So they are left alone, for good.
void Pool::BeginAnewInAChild() {
    for (auto& handle : idle_) {
        static_cast<void>(handle.release());
    }
    idle_.clear();
    options_ = nullptr;
    static_cast<void>(new std::shared_ptr<Share>(std::move(share_)));
    share_ = nullptr;
    forks_ = forks.load(std::memory_order_relaxed);
}

std::unique_ptr<Handle> Pool::Take(const std::shared_ptr<const Options>& options,
                                   const TlsFiles& files, std::string_view authority) {
    Handles gone;  // destroyed after the lock
    std::shared_ptr<Share> share;
    {
        MutexLock lock(mutex_);
        if (forks_ != forks.load(std::memory_order_relaxed)) {
            BeginAnewInAChild();
        }
        if (options_ != options) {
            gone.swap(idle_);
            share_ = std::make_shared<Share>();
            options_ = options;
        }
        const std::int64_t oldest =
            base::SystemMonotonicNs() - options->limits.idle_s * base::kSecond;
        const auto kept = std::find_if(idle_.begin(), idle_.end(), [&](const auto& handle) {
            return handle->idle_since > oldest;
        });
        std::move(idle_.begin(), kept, std::back_inserter(gone));
        idle_.erase(idle_.begin(), kept);
        const auto found = std::find_if(idle_.rbegin(), idle_.rend(), [&](const auto& handle) {
            return handle->Serves(*options, files, authority);
        });
        if (found != idle_.rend()) {
            auto handle = std::move(*found);
            idle_.erase(std::next(found).base());
            return handle;
        }
        share = share_;
    }
    return std::make_unique<Handle>(options, files, std::move(share), authority);
}

void Pool::GiveBack(std::unique_ptr<Handle> handle) {
    if (!handle->HasConnection()) {
        return;
    }
    handle->idle_since = base::SystemMonotonicNs();
    std::unique_ptr<Handle> gone;
    MutexLock lock(mutex_);
    const Options* const options = &handle->options();
    idle_.push_back(std::move(handle));
    if (options_.get() != options) {
        gone = std::move(idle_.back());
        idle_.pop_back();
    } else if (idle_.size() > static_cast<std::size_t>(options->limits.idle_connections)) {
        gone = std::move(idle_.front());
        idle_.erase(idle_.begin());
    }
}

}  // namespace kelp::http
