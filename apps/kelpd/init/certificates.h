// kelpd/init/certificates.h - a private certificate authority and what it signs.
//
//     const Authority authority = Authority::Create("nms.example.net");
//     const Identity server = authority.Issue(Use::kServer, "nms.example.net", {"127.0.0.1"});
//     WriteFile("server.key", server.key_pem, 0600);
//
// Keys are EC P-256, signatures ECDSA with SHA-256. The authority lasts ten years and may
// sign end entities only; what it signs lasts 825 days.
//
// thread-compatible
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace kelpd {

struct Identity {
    std::string certificate_pem;
    std::string key_pem;  ///< PKCS #8, not encrypted: its file's mode guards it
};

enum class Use { kServer, kClient };

/// Every function throws Refusal (status kFailed) when the cryptographic library fails.
class Authority {
  public:
    static Authority Create(const std::string& name);

    /// A certificate for `common_name`, which as a server also answers to `hosts`: names and
    /// addresses as KindOfHost knows them. A client has no hosts.
    Identity Issue(Use use, const std::string& common_name,
                   const std::vector<std::string>& hosts) const;
    Identity Own() const;

    ~Authority();
    Authority(Authority&&) noexcept;

  private:
    struct Parts;
    explicit Authority(std::unique_ptr<Parts> parts);
    std::unique_ptr<Parts> parts_;
};

}  // namespace kelpd
