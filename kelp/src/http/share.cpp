#include "http/share.h"

#include <new>

namespace kelp::http {

Share::Share() : share_(curl_share_init()) {
    if (share_ == nullptr) {
        throw std::bad_alloc();
    }
    if (curl_share_setopt(share_, CURLSHOPT_USERDATA, this) != CURLSHE_OK ||
        curl_share_setopt(share_, CURLSHOPT_LOCKFUNC, &Lock) != CURLSHE_OK ||
        curl_share_setopt(share_, CURLSHOPT_UNLOCKFUNC, &Unlock) != CURLSHE_OK ||
        curl_share_setopt(share_, CURLSHOPT_SHARE, CURL_LOCK_DATA_DNS) != CURLSHE_OK ||
        curl_share_setopt(share_, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION) != CURLSHE_OK) {
        curl_share_cleanup(share_);
        throw std::bad_alloc();
    }
}

Share::~Share() {
    curl_share_cleanup(share_);
}

void Share::Lock(CURL*, curl_lock_data data, curl_lock_access, void* self) {
    static_cast<Share*>(self)->locks_[data].lock();
}

void Share::Unlock(CURL*, curl_lock_data data, void* self) {
    static_cast<Share*>(self)->locks_[data].unlock();
}

}  // namespace kelp::http
