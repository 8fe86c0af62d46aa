#include "kelpd/net/tls_error.h"

#include <openssl/err.h>

namespace kelpd {

std::string TakeTlsErrors() {
    const unsigned long code = ERR_peek_last_error();
    ERR_clear_error();
    if (code == 0) {
        return "unknown error";
    }
    const char* const reason = ERR_reason_error_string(code);
    if (reason != nullptr) {
        return reason;
    }
    char text[256];
    ERR_error_string_n(code, text, sizeof text);
    return text;
}

}  // namespace kelpd
