// The null contestant: no names, no types, no tree. The rows' octets one behind the other
// in one buffer that grows; what it costs is what touching the data costs.
#pragma once

#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "table/source.h"

namespace bench {

class Null {
  public:
    static constexpr const char* kName = "null";
    using Tree = std::string;

    std::unique_ptr<Tree> Build(const Table& table) {
        auto tree = std::make_unique<Tree>();
        for (const Row& row : table) {
            AppendNumber(*tree, row.index);
            AppendNumber(*tree, row.mtu);
            AppendNumber(*tree, row.rx_rate);
            AppendNumber(*tree, row.tx_rate);
            for (const std::string& text : row.texts) {
                AppendNumber(*tree, static_cast<unsigned char>(text.size()));
                *tree += text;
            }
        }
        return tree;
    }

    std::string_view Encode(Tree& tree) {
        octets_ = tree;
        return octets_;
    }

    std::unique_ptr<Tree> Decode(std::string_view octets) { return std::make_unique<Tree>(octets); }

    static Table Read(Tree& tree) {
        Table table;
        const char* at = tree.data();
        while (at != tree.data() + tree.size()) {
            Row& row = table.emplace_back();
            TakeNumber(at, row.index);
            TakeNumber(at, row.mtu);
            TakeNumber(at, row.rx_rate);
            TakeNumber(at, row.tx_rate);
            for (std::string& text : row.texts) {
                unsigned char size = 0;
                TakeNumber(at, size);
                text.assign(at, size);
                at += size;
            }
        }
        return table;
    }

  private:
    template <class Number>
    static void AppendNumber(std::string& out, Number number) {
        out.append(reinterpret_cast<const char*>(&number), sizeof number);
    }
    template <class Number>
    static void TakeNumber(const char*& at, Number& number) {
        std::memcpy(&number, at, sizeof number);
        at += sizeof number;
    }

    std::string octets_;
};

}  // namespace bench
