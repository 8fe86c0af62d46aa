// kelpd/gateway/admission.h - how many connections there are, in all and from each address.
//
//     Admission::Ticket ticket;
//     switch (admission.Admit("192.0.2.7", ticket)) ...
//     // the connection counts until the ticket is gone
//
// A few connections beyond the limits are still let in, to be told so in an answer.
//
// thread-safe
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>

#include "support/mutex.h"

namespace kelpd {

class Admission {
  public:
    enum class Verdict {
        kServe,
        kAnswerBusy,  ///< too many: answer 503 and close
        kDrop,        ///< far too many: close at once; there is no ticket
    };

    class Ticket {
      public:
        Ticket() = default;
        Ticket(Ticket&& other) noexcept;
        Ticket& operator=(Ticket&& other) noexcept;
        ~Ticket();

      private:
        friend class Admission;
        Admission* admission_ = nullptr;
        std::string address_;
        bool served_ = false;
    };

    /// `spare`: how many beyond the limits get an answer.
    Admission(std::size_t most, std::size_t most_per_address, std::size_t spare);

    Verdict Admit(const std::string& address, Ticket& ticket);
    std::size_t open() const;

  private:
    void Leave(const Ticket& ticket);

    const std::size_t most_;
    const std::size_t most_per_address_;
    const std::size_t spare_;
    mutable app::Mutex mutex_;
    std::size_t served_ APP_GUARDED_BY(mutex_) = 0;
    std::size_t busy_ APP_GUARDED_BY(mutex_) = 0;
    std::unordered_map<std::string, std::size_t> by_address_ APP_GUARDED_BY(mutex_);
};

}  // namespace kelpd
