// jsoncpp: an array of row objects. Writer and reader are made once and the stream is
// reused, which favours this peer over Json::writeString.
#pragma once

#include <json/json.h>

#include <memory>
#include <sstream>
#include <string_view>

#include "support/check.h"
#include "table/source.h"

namespace bench {

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

    std::unique_ptr<Tree> Build(const Table& table) {
        auto tree = std::make_unique<Tree>(Json::arrayValue);
        for (const Row& row : table) {
            Json::Value& object = tree->append(Json::Value(Json::objectValue));
            object["index"] = row.index;
            object["mtu"] = row.mtu;
            object["rxRate"] = row.rx_rate;
            object["txRate"] = row.tx_rate;
            object["name"] = row.texts[0];
            object["alias"] = row.texts[1];
            object["vendor"] = row.texts[2];
            object["location"] = row.texts[3];
        }
        return tree;
    }

    std::string_view Encode(Tree& tree) {
        stream_.str({});
        writer_->write(tree, &stream_);
        return stream_.view();
    }

    std::unique_ptr<Tree> Decode(std::string_view text) {
        auto tree = std::make_unique<Tree>();
        Require(reader_->parse(text.data(), text.data() + text.size(), tree.get(), nullptr), kName,
                "the text does not parse");
        return tree;
    }

    static Table Read(Tree& tree) {
        Table table;
        for (const Json::Value& row : tree) {
            table.push_back({row["index"].asInt(),
                             row["mtu"].asInt(),
                             row["rxRate"].asDouble(),
                             row["txRate"].asDouble(),
                             {row["name"].asString(), row["alias"].asString(),
                              row["vendor"].asString(), row["location"].asString()}});
        }
        return table;
    }

  private:
    std::unique_ptr<Json::StreamWriter> writer_;
    std::unique_ptr<Json::CharReader> reader_;
    std::ostringstream stream_;
};

}  // namespace bench
