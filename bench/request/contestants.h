// Who carries the arguments there and back: Send() turns a built tree into octets and
// those into a fresh tree. What can be made once and kept is.
#pragma once

#include <json/json.h>

#include <cstring>
#include <memory>
#include <sstream>

#include "frameutil/paraset.h"
#include "kelp/asn1.h"
#include "request/arguments.h"
#include "support/check.h"

namespace bench {

class Ours {
  public:
    static constexpr const char* kName = "ours";
    using Tree = FrameUtil::CParaSet;

    std::unique_ptr<Tree> Build(const Arguments& arguments) {
        auto tree = std::make_unique<Tree>("request");
        Fill(*tree, kIntegerNames, arguments.integers);
        Fill(*tree, kDoubleNames, arguments.doubles);
        Fill(*tree, kTextNames, arguments.texts);
        (*tree)["##UserID"] = 7;
        (*tree)["##RowCount"] = 1;
        (*tree)["##TableCount"] = 1;
        return tree;
    }

    void Send(Tree& from, Tree& to) {
        FrameUtil::AsnCommonRequest sent;
        from.Para2CommonReqAsn(sent);
        Require(AsnEncode(sent, octets_), kName, "the request does not encode");
        FrameUtil::AsnCommonRequest received;
        Require(AsnDecode(octets_.data(), octets_.size(), received), kName,
                "the request does not decode");
        to.CommonReqAsn2Para(received);
    }

    static Tree Empty() { return Tree("request"); }
    std::size_t Octets() const { return octets_.size(); }

    static Arguments Read(Tree& tree) {
        Arguments read;
        for (std::size_t i = 0; i < kIntegerNames.size(); ++i) {
            read.integers[i] = tree[kIntegerNames[i]].asInt();
        }
        for (std::size_t i = 0; i < kDoubleNames.size(); ++i) {
            read.doubles[i] = tree[kDoubleNames[i]].asDouble();
        }
        for (std::size_t i = 0; i < kTextNames.size(); ++i) {
            read.texts[i] = tree[kTextNames[i]].asString();
        }
        return read;
    }

  private:
    template <class Names, class Values>
    static void Fill(Tree& tree, const Names& names, const Values& values) {
        for (std::size_t i = 0; i < names.size(); ++i) {
            tree[names[i]] = values[i];
        }
    }

    AsnBuffer octets_;
};

/// Writer and reader come from their builders, made once outside of the loop.
class JsonCpp {
  public:
    static constexpr const char* kName = "jsoncpp";
    using Tree = Json::Value;

    JsonCpp() {
        Json::StreamWriterBuilder writer;
        writer["indentation"] = "";
        writer_.reset(writer.newStreamWriter());
        reader_.reset(Json::CharReaderBuilder().newCharReader());
    }

    std::unique_ptr<Tree> Build(const Arguments& arguments) {
        auto tree = std::make_unique<Tree>(Json::objectValue);
        Fill(*tree, kIntegerNames, arguments.integers);
        Fill(*tree, kDoubleNames, arguments.doubles);
        Fill(*tree, kTextNames, arguments.texts);
        (*tree)["userID"] = 7;
        return tree;
    }

    void Send(Tree& from, Tree& to) {
        stream_.str({});
        writer_->write(from, &stream_);
        const std::string_view text = stream_.view();
        Require(reader_->parse(text.data(), text.data() + text.size(), &to, nullptr), kName,
                "the text does not parse");
    }

    static Tree Empty() { return {}; }
    std::size_t Octets() const { return stream_.view().size(); }

    static Arguments Read(Tree& tree) {
        Arguments read;
        for (std::size_t i = 0; i < kIntegerNames.size(); ++i) {
            read.integers[i] = tree[kIntegerNames[i]].asInt();
        }
        for (std::size_t i = 0; i < kDoubleNames.size(); ++i) {
            read.doubles[i] = tree[kDoubleNames[i]].asDouble();
        }
        for (std::size_t i = 0; i < kTextNames.size(); ++i) {
            read.texts[i] = tree[kTextNames[i]].asString();
        }
        return read;
    }

  private:
    template <class Names, class Values>
    static void Fill(Tree& tree, const Names& names, const Values& values) {
        for (std::size_t i = 0; i < names.size(); ++i) {
            tree[names[i]] = values[i];
        }
    }

    std::unique_ptr<Json::StreamWriter> writer_;
    std::unique_ptr<Json::CharReader> reader_;
    std::ostringstream stream_;
};

/// The null contestant: the arguments are copied as they are.
class Null {
  public:
    static constexpr const char* kName = "null";
    using Tree = Arguments;

    std::unique_ptr<Tree> Build(const Arguments& arguments) {
        return std::make_unique<Tree>(arguments);
    }
    void Send(Tree& from, Tree& to) { to = from; }
    static Tree Empty() { return {{}, {}, {}}; }
    std::size_t Octets() const { return sizeof(Tree); }
    static Arguments Read(Tree& tree) { return tree; }
};

}  // namespace bench
