// What a caller wants to send, checked before anything is done for it.
#pragma once

#include <string>
#include <string_view>

#include "kelp/http.h"

namespace kelp::http {

enum class Method { kGet, kPost, kPut };

const char* NameOf(Method method);

/// What is wrong with a request, or null: a text such as "a header's name is no token".
const char* FaultOf(const std::string& url, const UFHTTPMSGMGR::s_HttpMsgReq& request,
                    int timeout_s);

/// "HOST:PORT" of a sound URL, as it stands there.
std::string_view AuthorityOf(std::string_view url);

/// A URL as logs may show it: without user, query and fragment, which may hold secrets.
std::string ShownUrl(std::string_view url);

}  // namespace kelp::http
