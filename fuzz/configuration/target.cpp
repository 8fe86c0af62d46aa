// Any octets as the installation's kelp.json. A file that is refused is named with its line and
// one of a few fixed reasons, so that no piece of a password is ever told. One that is taken is
// JSON to an ordinary parser as well, with the same values, and the same texts.

#include <json/reader.h>
#include <json/value.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "require.h"
#include "settings/secret_json.h"

namespace {

using kelp::settings::SecretJson;

constexpr std::string_view kReasons[] = {
    "larger than 1 MiB",
    "malformed JSON (a text, a comment or an octet)",
    "malformed JSON, a doubled name, or nested too deeply",
};

// A file without a name, whose path opens it anew.
class File {
  public:
    explicit File(std::string_view octets) : m_fd(::memfd_create("kelp.json", MFD_CLOEXEC)) {
        Require(::write(m_fd, octets.data(), octets.size()) == static_cast<ssize_t>(octets.size()),
                "no file");
    }
    ~File() { ::close(m_fd); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    std::string Path() const { return "/proc/self/fd/" + std::to_string(m_fd); }

  private:
    int m_fd;
};

bool IsReason(std::string_view why, const std::string& path) {
    if (!why.starts_with(path + ":")) {
        return false;
    }
    why.remove_prefix(path.size() + 1);
    why.remove_prefix(std::min(why.find_first_not_of("0123456789"), why.size()));
    for (const std::string_view reason : kReasons) {
        if (why == ": " + std::string(reason) || why == " " + std::string(reason)) {
            return true;
        }
    }
    return false;
}

bool Parse(std::string_view text, Json::Value& value) {
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    try {
        return reader->parse(text.data(), text.data() + text.size(), &value, nullptr);
    } catch (const std::exception&) {
        return false;
    }
}

// What an ordinary parser made of the file, by the reader's blanked tree and its texts.
void Compare(const SecretJson& file, const Json::Value& ours, const Json::Value& plain) {
    Require(ours.type() == plain.type() && ours.size() == plain.size(), "another shape");
    if (ours.isString()) {
        std::string text;
        file.Text(ours, text);
        Require(text == plain.asString(), "another text");
        Require(file.IsEmptyText(ours) == text.empty(), "the wrong texts are empty");
        Require(text.empty() || ours.asString().find_first_not_of('x') == std::string::npos,
                "a text is in the tree");
    } else if (ours.isObject()) {
        for (const std::string& name : ours.getMemberNames()) {
            Require(plain.isMember(name), "another name");
            Compare(file, ours[name], plain[name]);
        }
    } else if (ours.isArray()) {
        for (Json::ArrayIndex i = 0; i < ours.size(); ++i) {
            Compare(file, ours[i], plain[i]);
        }
    } else {
        Require(ours == plain, "another value");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const File octets(text);
    SecretJson file;
    std::string why;
    if (!file.Read(octets.Path(), why)) {
        Require(IsReason(why, octets.Path()), why.c_str());
        return 0;
    }
    Json::Value plain;
    Require(Parse(text, plain), "what was taken is no JSON");
    Compare(file, file.Root(), plain);
    return 0;
}
