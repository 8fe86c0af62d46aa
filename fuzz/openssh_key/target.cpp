// OpenSSH key texts: a key or a reason, never both; a key is no longer than its text, and
// begins with its type.

#include <cstdint>
#include <string>

#include "frameutil/strutil.h"
#include "require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::string why;
    const std::string key = FrameUtil::GetPubKeyFromOPenSSH(text, &why);
    Require(key.empty() != why.empty());
    Require(key == FrameUtil::GetPubKeyFromOPenSSH(text));
    Require(key.size() < text.size() || key.empty());
    if (!key.empty()) {
        Require(key.size() > 4 && key[0] == '\0' && key[1] == '\0' && key[2] == '\0');
        Require(4U + static_cast<unsigned char>(key[3]) < key.size());
    }
    return 0;
}
