// What stands in OSS_ROOT/etc/kelp.json, but for the databases with their passwords.
//
//     const auto configuration = kelp::settings::Configuration::Current();
//     const std::string* url = configuration->Text("gateway/baseUrl");
//
// The file's tree is laid flat: the text or number of member "baseUrl" of member "gateway"
// has the name "gateway/baseUrl". Empty names and names with a '/' in them are refused.
//
// immutable; Current() is thread-safe. It looks at every call whether the file is another
// one than before and reads it only then.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Json {
class Value;
}

namespace kelp::settings {

class SecretJson;

class Configuration {
  public:
    enum class State : std::uint8_t {
        kSound,
        kNoRoot,     // OSS_ROOT is not set
        kNoFile,     // there is no file that can be read
        kMalformed,  // it is no strict JSON
    };
    struct Value {
        enum class Kind : std::uint8_t { kText, kInteger, kOther };
        Kind kind;
        std::string text;   // of an integer its decimal digits
        std::string place;  // "path:line"
    };
    using Values = std::map<std::string, Value, std::less<>>;

    /// What the environment and the file say now.
    static std::shared_ptr<const Configuration> Current();

    State GetState() const { return state_; }
    /// What is wrong, in one line that names the file; "" when nothing is.
    const std::string& Why() const { return why_; }
    /// OSS_ROOT without slashes at its end.
    const std::string& Root() const { return root_; }
    const Values& All() const { return values_; }

    const Value* Find(std::string_view name) const;
    /// The value if it is a text.
    const std::string* Text(std::string_view name) const;
    /// Whether any member's name begins with `group`, which ends with a slash.
    bool HasGroup(std::string_view group) const;

  private:
    void Read();
    bool Flatten(const SecretJson& file, const Json::Value& object, const std::string& prefix);

    State state_ = State::kNoRoot;
    std::string root_;
    std::string why_;
    Values values_;
    std::vector<std::uint64_t> identity_;  // of the file that was read
};

}  // namespace kelp::settings
