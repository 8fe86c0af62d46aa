// The requests that went out over one connection and have not been answered: what is
// needed to tell their senders when the connection ends.
//
// Design notes. The owner's lock guards it. A request's place is its serial number modulo
// the table's size: serial numbers rise, so requests that are out at the same time do not
// meet as long as the table is wider than their span. It widens up to kMost places; then
// the elder of two that meet is forgotten, which costs its sender nothing but the early
// notice (its own time-out still ends the wait). A peer that never answers what it is not
// asked to answer therefore fills nothing up.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "kelp/message.h"

namespace kelp::message {

struct OutstandingRequest {
    std::uint32_t serial = 0;  // 0: a free place
    std::uint32_t cmd_code = 0;
    std::uint16_t task_id = 0;
    std::uint8_t task_mgr = 0;
    std::uint16_t proc_id = 0;  // of the peer
    std::uint16_t proc_handle = 0;
};

class Outstanding {
  public:
    static constexpr std::size_t kMost = 16384;

    /// REQUIRES: request.serial is not 0. Throws std::bad_alloc.
    void Add(const OutstandingRequest& request) {
        if (places_.empty()) {
            places_.resize(16);
        }
        while (Place(request.serial).serial != 0 && places_.size() < kMost) {
            Widen();
        }
        Place(request.serial) = request;
    }

    /// Forgets the request that `answer` answers. An answer without serial number ends the
    /// eldest request of its command and receiver.
    void Remove(const CmdMSG& answer) {
        if (places_.empty()) {
            return;
        }
        if (answer.serial != 0) {
            OutstandingRequest& place = Place(answer.serial);
            if (place.serial == answer.serial && place.cmd_code == answer.cmdCode) {
                place = {};
            }
            return;
        }
        OutstandingRequest* eldest = nullptr;
        for (OutstandingRequest& place : places_) {
            if (place.serial != 0 && place.cmd_code == answer.cmdCode &&
                place.task_id == answer.dstTaskId && place.task_mgr == answer.dstTaskMgr &&
                (eldest == nullptr || place.serial < eldest->serial)) {
                eldest = &place;
            }
        }
        if (eldest != nullptr) {
            *eldest = {};
        }
    }

    /// Forgets a request that was not sent after all.
    void Cancel(std::uint32_t serial) {
        if (!places_.empty() && Place(serial).serial == serial) {
            Place(serial) = {};
        }
    }

    bool Holds(std::uint32_t serial) const {
        return !places_.empty() && places_[serial & (places_.size() - 1)].serial == serial;
    }

    std::size_t Count() const {
        std::size_t count = 0;
        for (const OutstandingRequest& place : places_) {
            count += place.serial != 0;
        }
        return count;
    }

    /// All of them, and none afterwards.
    std::vector<OutstandingRequest> TakeAll() {
        std::vector<OutstandingRequest> all;
        for (const OutstandingRequest& place : places_) {
            if (place.serial != 0) {
                all.push_back(place);
            }
        }
        places_.clear();
        return all;
    }

  private:
    OutstandingRequest& Place(std::uint32_t serial) {
        return places_[serial & (places_.size() - 1)];
    }

    void Widen() {
        std::vector<OutstandingRequest> wider(places_.size() * 2);
        for (const OutstandingRequest& place : places_) {
            if (place.serial != 0) {
                wider[place.serial & (wider.size() - 1)] = place;
            }
        }
        places_.swap(wider);
    }

    std::vector<OutstandingRequest> places_;  // a power of two of them, or none
};

}  // namespace kelp::message
