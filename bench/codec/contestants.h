// Who codes an element: a tree of the contestant's own kind to octets, kept in memory that
// is reused, and octets to a fresh tree. What can be made once is.
#pragma once

#include <json/json.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <msgpack.hpp>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "codec/source.h"
#include "frameutil/codec.h"
#include "frameutil/paraset.h"
#include "support/check.h"

namespace bench {

/// The codec with a description of exactly this element.
class Described {
  public:
    static constexpr const char* kName = "ours";
    using Tree = FrameUtil::CParaSet;

    explicit Described(const Element& shape) : codec_(Describe(shape)), octets_(1 << 22) {}

    static std::unique_ptr<Tree> Build(const Element& element) {
        auto tree = std::make_unique<Tree>("element");
        ForEachScalar(element,
                      [&](const std::string& name, const auto& value) { (*tree)[name] = value; });
        for (std::size_t i = 0; i < element.ports.size(); ++i) {
            Tree& port = (*tree)["ports"][static_cast<int>(i)];
            port["index"] = element.ports[i].index;
            port["mtu"] = element.ports[i].mtu;
            port["rate"] = element.ports[i].rate;
            port["name"] = element.ports[i].name;
            port["location"] = element.ports[i].location;
        }
        return tree;
    }

    std::string_view Encode(Tree& tree) {
        int left = static_cast<int>(octets_.size());
        const unsigned char* end = codec_->build(tree, octets_.data(), left, kElement, -1, -1);
        Require(end != nullptr, kName, "the element does not encode");
        return {reinterpret_cast<const char*>(octets_.data()),
                static_cast<std::size_t>(end - octets_.data())};
    }

    Tree Decode(std::string_view octets) {
        Tree tree("element");
        int left = static_cast<int>(octets.size());
        unsigned char* begin = octets_.data();  // where Encode() left them
        Require(codec_->parse(tree, begin, left, kElement, -1, -1) == begin + octets.size(), kName,
                "the octets do not decode");
        return tree;
    }

    static Element Read(Tree& tree, const Element& shape) {
        Element read;
        ForEachScalar(shape, [&](const std::string& name, const auto& value) {
            Take(read, tree[name], value);
        });
        for (int i = 0; i < static_cast<int>(shape.ports.size()); ++i) {
            Tree& port = tree["ports"][i];
            read.ports.push_back({port["index"].asInt(), port["mtu"].asInt(),
                                  port["rate"].asDouble(), port["name"].asString(),
                                  port["location"].asString()});
        }
        return read;
    }

    static void Take(Element& read, Tree& node, std::int32_t) {
        read.integers.push_back(node.asInt());
    }
    static void Take(Element& read, Tree& node, double) { read.doubles.push_back(node.asDouble()); }
    static void Take(Element& read, Tree& node, const std::string&) {
        read.texts.push_back(node.asString());
    }

  private:
    static constexpr int kElement = 3000;

    static std::unique_ptr<FrameUtil::CEndeCode> Describe(const Element& shape) {
        char path[] = "/tmp/bench.codec.XXXXXX";
        const int descriptor = mkstemp(path);
        Require(descriptor >= 0, kName, "no temporary file");
        std::ofstream file(path);
        ForEachScalar(shape, [&](const std::string& name, const auto&) {
            const char* type = name[0] == 'i' ? "2" : name[0] == 'd' ? "9" : "4";
            file << "3000 0 " << name << ' ' << type << " -1 -1\n";
        });
        if (!shape.ports.empty()) {
            file << "3000 0 ports 257 3001 -1\n";
        }
        file << "3001 0 index 2 -1 -1\n3001 0 mtu 2 -1 -1\n3001 0 rate 9 -1 -1\n"
                "3001 0 name 4 -1 -1\n3001 0 location 4 -1 -1\n";
        file.close();
        close(descriptor);
        auto codec = std::make_unique<FrameUtil::CEndeCode>(path);
        std::remove(path);
        return codec;
    }

    std::unique_ptr<FrameUtil::CEndeCode> codec_;
    std::vector<unsigned char> octets_;
};

/// The codec without a description: a list of named values.
class Undescribed {
  public:
    static constexpr const char* kName = "ours";
    using Tree = FrameUtil::CParaSet;

    explicit Undescribed(const Element&) : codec_("/dev/null"), octets_(1 << 22) {}

    static std::unique_ptr<Tree> Build(const Element& element) { return Described::Build(element); }

    std::string_view Encode(Tree& tree) {
        int left = static_cast<int>(octets_.size());
        const unsigned char* end = codec_.build(tree, octets_.data(), left, 257, 258, -1);
        Require(end != nullptr, kName, "the element does not encode");
        return {reinterpret_cast<const char*>(octets_.data()),
                static_cast<std::size_t>(end - octets_.data())};
    }

    Tree Decode(std::string_view octets) {
        Tree tree("element");
        int left = static_cast<int>(octets.size());
        Require(codec_.parse(tree, octets_.data(), left, 257, 258, -1) != nullptr && left == 0,
                kName, "the octets do not decode");
        return tree;
    }

    static Element Read(Tree& tree, const Element& shape) { return Described::Read(tree, shape); }

  private:
    FrameUtil::CEndeCode codec_;
    std::vector<unsigned char> octets_;
};

class JsonCpp {
  public:
    static constexpr const char* kName = "jsoncpp";
    using Tree = Json::Value;

    explicit JsonCpp(const Element&) {
        Json::StreamWriterBuilder writer;
        writer["indentation"] = "";
        writer_.reset(writer.newStreamWriter());
        reader_.reset(Json::CharReaderBuilder().newCharReader());
    }

    static std::unique_ptr<Tree> Build(const Element& element) {
        auto tree = std::make_unique<Tree>(Json::objectValue);
        ForEachScalar(element,
                      [&](const std::string& name, const auto& value) { (*tree)[name] = value; });
        for (const Port& from : element.ports) {
            Tree& port = (*tree)["ports"].append(Tree(Json::objectValue));
            port["index"] = from.index;
            port["mtu"] = from.mtu;
            port["rate"] = from.rate;
            port["name"] = from.name;
            port["location"] = from.location;
        }
        return tree;
    }

    std::string_view Encode(Tree& tree) {
        stream_.str({});
        writer_->write(tree, &stream_);
        return stream_.view();
    }

    Tree Decode(std::string_view text) {
        Tree tree;
        Require(reader_->parse(text.data(), text.data() + text.size(), &tree, nullptr), kName,
                "the text does not parse");
        return tree;
    }

    static Element Read(Tree& tree, const Element& shape) {
        Element read;
        ForEachScalar(shape, [&](const std::string& name, const auto& value) {
            Take(read, tree[name], value);
        });
        for (const Tree& port : tree["ports"]) {
            read.ports.push_back({port["index"].asInt(), port["mtu"].asInt(),
                                  port["rate"].asDouble(), port["name"].asString(),
                                  port["location"].asString()});
        }
        return read;
    }

  private:
    static void Take(Element& read, const Tree& node, std::int32_t) {
        read.integers.push_back(node.asInt());
    }
    static void Take(Element& read, const Tree& node, double) {
        read.doubles.push_back(node.asDouble());
    }
    static void Take(Element& read, const Tree& node, const std::string&) {
        read.texts.push_back(node.asString());
    }

    std::unique_ptr<Json::StreamWriter> writer_;
    std::unique_ptr<Json::CharReader> reader_;
    std::ostringstream stream_;
};

class NlohmannCbor {
  public:
    static constexpr const char* kName = "nlohmann_cbor";
    using Tree = nlohmann::json;

    explicit NlohmannCbor(const Element&) {}

    static std::unique_ptr<Tree> Build(const Element& element) {
        auto tree = std::make_unique<Tree>(Tree::object());
        ForEachScalar(element,
                      [&](const std::string& name, const auto& value) { (*tree)[name] = value; });
        for (const Port& from : element.ports) {
            (*tree)["ports"].push_back({{"index", from.index},
                                        {"mtu", from.mtu},
                                        {"rate", from.rate},
                                        {"name", from.name},
                                        {"location", from.location}});
        }
        return tree;
    }

    std::string_view Encode(Tree& tree) {
        octets_.clear();
        Tree::to_cbor(tree, octets_);
        return {octets_.data(), octets_.size()};
    }

    Tree Decode(std::string_view octets) { return Tree::from_cbor(octets); }

    static Element Read(Tree& tree, const Element& shape) {
        Element read;
        ForEachScalar(shape, [&](const std::string& name, const auto& value) {
            Take(read, tree[name], value);
        });
        for (std::size_t i = 0; i < shape.ports.size(); ++i) {
            const Tree& port = tree["ports"][i];
            read.ports.push_back(
                {port["index"], port["mtu"], port["rate"], port["name"], port["location"]});
        }
        return read;
    }

  private:
    static void Take(Element& read, const Tree& node, std::int32_t) {
        read.integers.push_back(node);
    }
    static void Take(Element& read, const Tree& node, double) { read.doubles.push_back(node); }
    static void Take(Element& read, const Tree& node, const std::string&) {
        read.texts.push_back(node);
    }

    std::vector<char> octets_;
};

/// Its dynamic objects, which is what a user without compiled types has; packing only.
class Msgpack {
  public:
    static constexpr const char* kName = "msgpack";
    struct Tree {
        msgpack::zone zone;
        msgpack::object root;
    };

    explicit Msgpack(const Element&) {}

    static std::unique_ptr<Tree> Build(const Element& element) {
        auto tree = std::make_unique<Tree>();
        std::map<std::string, msgpack::object> members;
        ForEachScalar(element, [&](const std::string& name, const auto& value) {
            members[name] = msgpack::object(value, tree->zone);
        });
        std::vector<msgpack::object> ports;
        for (const Port& port : element.ports) {
            const std::map<std::string, msgpack::object> record = {
                {"index", msgpack::object(port.index, tree->zone)},
                {"mtu", msgpack::object(port.mtu, tree->zone)},
                {"rate", msgpack::object(port.rate, tree->zone)},
                {"name", msgpack::object(port.name, tree->zone)},
                {"location", msgpack::object(port.location, tree->zone)}};
            ports.emplace_back(record, tree->zone);
        }
        if (!ports.empty()) {
            members["ports"] = msgpack::object(ports, tree->zone);
        }
        tree->root = msgpack::object(members, tree->zone);
        return tree;
    }

    std::string_view Encode(Tree& tree) {
        octets_.clear();
        msgpack::pack(octets_, tree.root);
        return {octets_.data(), octets_.size()};
    }

    msgpack::object_handle Decode(std::string_view octets) {
        return msgpack::unpack(octets.data(), octets.size());
    }

    static Element Read(msgpack::object_handle& handle, const Element& shape) {
        auto members = handle->as<std::map<std::string, msgpack::object>>();
        Element read;
        ForEachScalar(shape, [&](const std::string& name, const auto& value) {
            Take(read, members[name], value);
        });
        if (shape.ports.empty()) {
            return read;
        }
        for (const auto& object : members["ports"].as<std::vector<msgpack::object>>()) {
            auto port = object.as<std::map<std::string, msgpack::object>>();
            read.ports.push_back({port["index"].as<std::int32_t>(), port["mtu"].as<std::int32_t>(),
                                  port["rate"].as<double>(), port["name"].as<std::string>(),
                                  port["location"].as<std::string>()});
        }
        return read;
    }

  private:
    template <class Value>
    static void Take(Element& read, const msgpack::object& node, const Value&) {
        if constexpr (std::is_same_v<Value, double>) {
            read.doubles.push_back(node.as<double>());
        } else if constexpr (std::is_same_v<Value, std::string>) {
            read.texts.push_back(node.as<std::string>());
        } else {
            read.integers.push_back(node.as<std::int32_t>());
        }
    }

    msgpack::sbuffer octets_;
};

}  // namespace bench
