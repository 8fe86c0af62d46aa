// kelpd/http/chunks.h - a body that comes in chunks.
//
//     ChunkReader chunks(limit);
//     switch (chunks.Feed(octets, body)) ...   // octets: what lies behind the body is left
//
// Sizes are hexadecimal digits alone, lines end with CR and LF, and what else stands in them is
// skipped up to a limit: extensions and trailers are for nobody here.
//
// thread-compatible
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kelpd {

class ChunkReader {
  public:
    enum class State { kMore, kDone, kMalformed, kTooLarge };

    explicit ChunkReader(std::size_t limit) : limit_(limit) {}

    /// Takes what belongs to the body off `octets` and appends its data to `body`. Not to be
    /// called again after anything but kMore.
    State Feed(std::string_view& octets, std::string& body);

  private:
    enum class At {
        kSize,
        kExtension,
        kSizeEnd,
        kData,
        kDataCr,
        kDataEnd,
        kTrailer,
        kTrailerLine,
        kTrailerEnd,
        kLastEnd
    };

    State Take(char c, std::size_t held);
    State TakeSize(char c);

    const std::size_t limit_;
    At at_ = At::kSize;
    std::uint64_t size_ = 0;
    unsigned digits_ = 0;
    std::size_t skipped_ = 0;  // octets of extensions and trailers
};

}  // namespace kelpd
