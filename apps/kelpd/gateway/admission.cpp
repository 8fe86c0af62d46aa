#include "kelpd/gateway/admission.h"

#include <utility>

namespace kelpd {

Admission::Ticket::Ticket(Ticket&& other) noexcept
    : admission_(std::exchange(other.admission_, nullptr)),
      address_(std::move(other.address_)),
      served_(other.served_) {}

Admission::Ticket& Admission::Ticket::operator=(Ticket&& other) noexcept {
    std::swap(admission_, other.admission_);
    std::swap(address_, other.address_);
    std::swap(served_, other.served_);
    return *this;
}

Admission::Ticket::~Ticket() {
    if (admission_ != nullptr) {
        admission_->Leave(*this);
    }
}

Admission::Admission(std::size_t most, std::size_t most_per_address, std::size_t spare)
    : most_(most), most_per_address_(most_per_address), spare_(spare) {}

Admission::Verdict Admission::Admit(const std::string& address, Ticket& ticket) {
    Ticket admitted;
    admitted.address_ = address;
    {
        const app::Lock lock(mutex_);
        const auto found = by_address_.find(address);
        const std::size_t here = found == by_address_.end() ? 0 : found->second;
        admitted.served_ = served_ < most_ && here < most_per_address_;
        if (admitted.served_) {
            ++by_address_[address];
            ++served_;
        } else if (busy_ < spare_) {
            ++busy_;
        } else {
            return Verdict::kDrop;
        }
        admitted.admission_ = this;
    }
    // The lock is free: the ticket that was there before may be given back here.
    ticket = std::move(admitted);
    return ticket.served_ ? Verdict::kServe : Verdict::kAnswerBusy;
}

std::size_t Admission::open() const {
    const app::Lock lock(mutex_);
    return served_ + busy_;
}

void Admission::Leave(const Ticket& ticket) {
    const app::Lock lock(mutex_);
    if (!ticket.served_) {
        --busy_;
        return;
    }
    --served_;
    const auto found = by_address_.find(ticket.address_);
    if (--found->second == 0) {
        by_address_.erase(found);
    }
}

}  // namespace kelpd
