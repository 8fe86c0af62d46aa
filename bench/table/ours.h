// Our contestants: the parameter tree, the common response and BER.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "frameutil/paraset.h"
#include "kelp/asn1.h"
#include "support/check.h"
#include "table/source.h"

namespace bench {

/// Built column by column, as most callers do: one name look-up and one index a cell.
class Ours {
  public:
    static constexpr const char* kName = "ours";
    using Tree = FrameUtil::CParaSet;

    std::unique_ptr<Tree> Build(const Table& table) {
        auto tree = std::make_unique<Tree>("root");
        Tree& root = *tree;
        int r = 0;
        for (const Row& row : table) {
            root["index"][r] = row.index;
            root["mtu"][r] = row.mtu;
            root["rxRate"][r] = row.rx_rate;
            root["txRate"][r] = row.tx_rate;
            root["name"][r] = row.texts[0];
            root["alias"][r] = row.texts[1];
            root["vendor"][r] = row.texts[2];
            root["location"][r] = row.texts[3];
            ++r;
        }
        root["##RowCount"] = r;
        Announce(root);
        return tree;
    }

    std::string_view Encode(Tree& tree) {
        FrameUtil::AsnCommonResponse response;
        tree.Para2CommonRspAsn(response);
        Require(AsnEncode(response, octets_), kName, "the response does not encode");
        return {reinterpret_cast<const char*>(octets_.data()), octets_.size()};
    }

    std::unique_ptr<Tree> Decode(std::string_view octets) {
        FrameUtil::AsnCommonResponse response;
        Require(AsnDecode(octets.data(), octets.size(), response), kName,
                "the response does not decode");
        auto tree = std::make_unique<Tree>("root");
        tree->CommonRspAsn2Para(response);
        return tree;
    }

    static Table Read(Tree& root) {
        Table table(static_cast<std::size_t>(root.GetRowCount()));
        int r = 0;
        for (Row& row : table) {
            row = {root["index"][r].asInt(),
                   root["mtu"][r].asInt(),
                   root["rxRate"][r].asDouble(),
                   root["txRate"][r].asDouble(),
                   {root["name"][r].asString(), root["alias"][r].asString(),
                    root["vendor"][r].asString(), root["location"][r].asString()}};
            ++r;
        }
        return table;
    }

  protected:
    static void Announce(Tree& root) {
        root["##retCode"] = 0;
        root["##TableCount"] = 1;
    }

  private:
    AsnBuffer octets_;
};

/// Built row by row.
class OursAddRow : public Ours {
  public:
    static constexpr const char* kName = "ours_addrow";

    std::unique_ptr<Tree> Build(const Table& table) {
        auto tree = std::make_unique<Tree>("root");
        Tree row_set("row");
        int r = 0;
        for (const Row& row : table) {
            row_set["index"] = row.index;
            row_set["mtu"] = row.mtu;
            row_set["rxRate"] = row.rx_rate;
            row_set["txRate"] = row.tx_rate;
            row_set["name"] = row.texts[0];
            row_set["alias"] = row.texts[1];
            row_set["vendor"] = row.texts[2];
            row_set["location"] = row.texts[3];
            tree->AddRow(r++, row_set);
        }
        Announce(*tree);
        return tree;
    }
};

}  // namespace bench
