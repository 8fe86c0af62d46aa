// nlohmann's json: an array of row objects, as text.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "table/source.h"

namespace bench {

class Nlohmann {
  public:
    static constexpr const char* kName = "nlohmann";
    using Tree = nlohmann::json;

    std::unique_ptr<Tree> Build(const Table& table) {
        auto tree = std::make_unique<Tree>(Tree::array());
        for (const Row& row : table) {
            Tree& object = tree->emplace_back(Tree::object());
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
        text_ = tree.dump();
        return text_;
    }

    std::unique_ptr<Tree> Decode(std::string_view text) {
        return std::make_unique<Tree>(Tree::parse(text));
    }

    static Table Read(Tree& tree) {
        Table table;
        for (const Tree& row : tree) {
            table.push_back({row["index"],
                             row["mtu"],
                             row["rxRate"],
                             row["txRate"],
                             {row["name"], row["alias"], row["vendor"], row["location"]}});
        }
        return table;
    }

  private:
    std::string text_;
};

}  // namespace bench
