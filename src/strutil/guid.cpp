#include <array>
#include <charconv>
#include <cstdint>

#include "frameutil/log.h"
#include "frameutil/strutil.h"

namespace FrameUtil {

namespace {

constexpr std::size_t kHalfBytes = 8;
constexpr std::size_t kHalfDigits = 16;

std::uint64_t NumberAt(const char* bytes) {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < kHalfBytes; ++i) {
        number = number << 8 | static_cast<unsigned char>(bytes[i]);
    }
    return number;
}

void PutNumber(std::uint64_t number, char* bytes) {
    for (std::size_t i = kHalfBytes; i-- != 0; number >>= 8) {
        bytes[i] = static_cast<char>(number);
    }
}

void AppendHex(std::string& text, std::uint64_t number) {
    std::array<char, kHalfDigits> digits;
    text.append(digits.data(),
                std::to_chars(digits.data(), digits.data() + digits.size(), number, 16).ptr);
}

bool ReadHex(const char* digits, std::uint64_t& number) {
    const auto read = std::from_chars(digits, digits + kHalfDigits, number, 16);
    return read.ec == std::errc() && read.ptr == digits + kHalfDigits;
}

}  // namespace

std::string GetGUIDBy16Bytes(const char* bytes) {
    if (bytes == nullptr) {
        return std::string(kHalfDigits, '0');
    }
    std::string text;
    AppendHex(text, NumberAt(bytes));
    AppendHex(text, NumberAt(bytes + kHalfBytes));
    if (text.size() != 2 * kHalfDigits) {
        Trace("[GetGUIDBy16Bytes] new_guid_32 %s is not 32 len", text.c_str());
    }
    return text;
}

void ConvertTo16BytesByGUID(const std::string& guid, char* bytes) {
    if (bytes == nullptr) {
        return;
    }
    if (guid.size() != 2 * kHalfDigits) {
        // No hyphen is removed, whatever the text says.
        Trace("[ConvertTo16BytesByGUID] guid %s remove - is not 32 len", guid.c_str());
        return;
    }
    std::uint64_t first = 0;
    std::uint64_t second = 0;
    if (!ReadHex(guid.data(), first) || !ReadHex(guid.data() + kHalfDigits, second)) {
        Trace("[ConvertTo16BytesByGUID] guid %s is not hexadecimal", guid.c_str());
        return;
    }
    PutNumber(first, bytes);
    PutNumber(second, bytes + kHalfBytes);
}

}  // namespace FrameUtil
