// Protocol buffers with a compiled schema: the structure is known to the compiler, where
// a parameter tree can be asked for any name. On the heap, without arena: the table
// outlives whoever built it.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "support/check.h"
#include "table.pb.h"
#include "table/source.h"

namespace bench {

class Protobuf {
  public:
    static constexpr const char* kName = "protobuf";
    using Tree = proto::Table;

    std::unique_ptr<Tree> Build(const Table& table) {
        auto tree = std::make_unique<Tree>();
        for (const Row& row : table) {
            proto::Row& message = *tree->add_rows();
            message.set_index(row.index);
            message.set_mtu(row.mtu);
            message.set_rx_rate(row.rx_rate);
            message.set_tx_rate(row.tx_rate);
            message.set_name(row.texts[0]);
            message.set_alias(row.texts[1]);
            message.set_vendor(row.texts[2]);
            message.set_location(row.texts[3]);
        }
        return tree;
    }

    std::string_view Encode(Tree& tree) {
        Require(tree.SerializeToString(&octets_), kName, "the table does not encode");
        return octets_;
    }

    std::unique_ptr<Tree> Decode(std::string_view octets) {
        auto tree = std::make_unique<Tree>();
        Require(tree->ParseFromArray(octets.data(), static_cast<int>(octets.size())), kName,
                "the table does not decode");
        return tree;
    }

    static Table Read(Tree& tree) {
        Table table;
        for (const proto::Row& row : tree.rows()) {
            table.push_back({row.index(),
                             row.mtu(),
                             row.rx_rate(),
                             row.tx_rate(),
                             {row.name(), row.alias(), row.vendor(), row.location()}});
        }
        return table;
    }

  private:
    std::string octets_;
};

}  // namespace bench
