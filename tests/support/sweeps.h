// The sweeps that every decoder of this project goes through: each truncation, each
// bit flipped, each octet replaced, sizes around the powers of two. The octets that a
// sweep hands out end where an unreadable page begins, so that one octet read too many
// ends the test in every build.
//
//     EachTruncation(vector, [&](std::string_view cut) { EXPECT_FALSE(Decode(cut)); });
//
// Thread rule: thread-compatible.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace support {

/// Memory whose last octet lies directly below an unreadable page.
class GuardedMemory {
  public:
    explicit GuardedMemory(std::size_t capacity) : capacity_(capacity) {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        mapped_ = (capacity + page - 1) / page * page + page;
        map_ = static_cast<char*>(
            mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        if (map_ == MAP_FAILED || mprotect(map_ + mapped_ - page, page, PROT_NONE) != 0) {
            throw std::bad_alloc();
        }
        end_ = map_ + mapped_ - page;
    }
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;
    ~GuardedMemory() { munmap(map_, mapped_); }

    /// A copy of `octets`, which are no more than the capacity, at the memory's end.
    /// Good until the next call.
    std::string_view Place(std::string_view octets) {
        if (octets.size() > capacity_) {
            throw std::bad_alloc();
        }
        char* const start = end_ - octets.size();
        if (!octets.empty()) {
            std::memcpy(start, octets.data(), octets.size());
        }
        return {start, octets.size()};
    }

  private:
    std::size_t capacity_;
    std::size_t mapped_ = 0;
    char* map_ = nullptr;
    char* end_ = nullptr;
};

/// visit(cut) for every beginning of `octets`, the empty one included, all of them not.
template <class Visit>
void EachTruncation(std::string_view octets, Visit visit) {
    GuardedMemory memory(octets.size());
    for (std::size_t length = 0; length < octets.size(); ++length) {
        visit(memory.Place(octets.substr(0, length)));
    }
}

/// visit(flipped, bit) for every bit of `octets`, counted from the first octet's lowest.
template <class Visit>
void EachBitFlipped(std::string_view octets, Visit visit) {
    GuardedMemory memory(octets.size());
    std::string changed(octets);
    for (std::size_t bit = 0; bit < octets.size() * 8; ++bit) {
        const auto mask = static_cast<char>(1 << bit % 8);
        changed[bit / 8] ^= mask;
        visit(memory.Place(changed), bit);
        changed[bit / 8] ^= mask;
    }
}

/// visit(changed) for every octet of `octets` replaced by every other value.
template <class Visit>
void EachOctetReplaced(std::string_view octets, Visit visit) {
    GuardedMemory memory(octets.size());
    std::string changed(octets);
    for (std::size_t at = 0; at < octets.size(); ++at) {
        for (int step = 1; step < 256; ++step) {
            ++changed[at];
            visit(memory.Place(changed));
        }
        ++changed[at];
    }
}

/// 0, 1 and every power of two up to 2^`most` with its neighbours, each once, rising.
inline std::vector<std::size_t> SizesAroundPowersOfTwo(unsigned most) {
    std::vector<std::size_t> sizes{0, 1, 2, 3};
    for (unsigned power = 2; power <= most; ++power) {
        const std::size_t size = std::size_t{1} << power;
        for (const std::size_t near : {size - 1, size, size + 1}) {
            if (near > sizes.back()) {
                sizes.push_back(near);
            }
        }
    }
    return sizes;
}

}  // namespace support
