// What all handles of one configuration share: resolved names and TLS sessions. Not the
// connections: the library's own sharing of those between threads is known to be unsound.
//
// thread-safe.
#pragma once

#include <curl/curl.h>

#include <mutex>

namespace kelp::http {

class Share {
  public:
    /// Throws std::bad_alloc.
    Share();
    ~Share();
    Share(const Share&) = delete;
    Share& operator=(const Share&) = delete;

    CURLSH* get() const { return share_; }

  private:
    static void Lock(CURL*, curl_lock_data data, curl_lock_access, void* self);
    static void Unlock(CURL*, curl_lock_data data, void* self);

    std::mutex locks_[CURL_LOCK_DATA_LAST];
    CURLSH* share_;
};

}  // namespace kelp::http
