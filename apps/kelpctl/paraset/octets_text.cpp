#include "kelpctl/paraset/octets_text.h"

#include "support/json_write.h"

namespace kelpctl {
namespace {

constexpr std::size_t kInALine = 16;
constexpr std::string_view kWhite = " \t\r\n";

}  // namespace

std::optional<std::string> OctetsOfText(std::string_view text, std::string& why) {
    std::string octets;
    for (std::size_t at = 0; at < text.size();) {
        if (kWhite.find(text[at]) != std::string_view::npos) {
            ++at;
            continue;
        }
        const auto octet = app::OctetsOfHex(text.substr(at, 2));
        if (!octet || octet->empty()) {
            why = "no pair of hexadecimal digits at byte " + std::to_string(at);
            return std::nullopt;
        }
        octets += *octet;
        at += 2;
    }
    return octets;
}

std::string TextOfOctets(std::string_view octets) {
    std::string text;
    text.reserve(3 * octets.size() + 1);
    for (std::size_t i = 0; i < octets.size(); ++i) {
        text += app::HexText(octets.substr(i, 1));
        text += (i + 1) % kInALine == 0 || i + 1 == octets.size() ? '\n' : ' ';
    }
    return text;
}

}  // namespace kelpctl
