// A JSON file that may hold passwords. The parser only ever sees a copy in which every text
// value is blanked, so neither its tokens nor its tree hold any; a text is decoded straight from
// the file's octets into the string that the caller asked for. The octets are wiped when the
// object goes.
//
//     SecretJson file;
//     if (!file.Read(path, why)) ...                    // "path:12: malformed JSON"
//     file.Text(*file.Root().find(...), password, why);
//
// Strict: one object and nothing behind it, UTF-8, no comments, no doubled names, no zero
// characters in texts, at most 64 levels and 1 MiB.
//
// one thread.
#pragma once

#include <json/value.h>
#include <sys/stat.h>

#include <string>
#include <vector>

namespace kelp::settings {

// The owner's memory, overwritten before it is freed.
class SecretOctets {
  public:
    explicit SecretOctets(std::size_t size = 0) : m_octets(size) {}
    ~SecretOctets();
    SecretOctets(const SecretOctets&) = delete;
    SecretOctets& operator=(const SecretOctets&) = delete;

    // Replaces all by `size` zeros.
    void Assign(std::size_t size);
    char* data() { return m_octets.data(); }
    const char* data() const { return m_octets.data(); }
    std::size_t size() const { return m_octets.size(); }

  private:
    std::vector<char> m_octets;
};

class SecretJson {
  public:
    // Reads a regular file. False, with "path: ..." or "path:line: ..." in `why`.
    bool Read(const std::string& path, std::string& why);

    const Json::Value& Root() const { return m_root; }
    // Who may read the file, and so on.
    const struct stat& File() const { return m_file; }
    // The text of a value of Root(), decoded into `out`, whose memory is asked for once.
    void Text(const Json::Value& value, std::string& out) const;
    bool IsEmptyText(const Json::Value& value) const;
    // "path:line" of a value of Root().
    std::string Place(const Json::Value& value) const;

  private:
    bool Load(std::string& why);
    bool Blank(std::string& blanked, std::size_t& bad_at) const;
    std::string PlaceAt(std::size_t octet) const;

    std::string m_path;
    struct stat m_file {};
    SecretOctets m_octets;
    Json::Value m_root;
};

}  // namespace kelp::settings
