// asn1c: the same ASN.1 structure as ours. Its structure takes the place of the tree, so
// that encoding and decoding start from and end in it: the step between a tree of named
// values and the structure, which ours takes, is left out in this peer's favour.
#pragma once

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "support/asn1c/peer.h"
#include "support/check.h"
#include "table/source.h"

namespace bench {

struct FreeAsn1c {
    void operator()(asn1c::AsnCommonResponse_t* response) const {
        asn1c::asn_DEF_AsnCommonResponse.free_struct(&asn1c::asn_DEF_AsnCommonResponse, response,
                                                     0);
    }
};

class Asn1c {
  public:
    static constexpr const char* kName = "asn1c";
    using Tree = asn1c::AsnCommonResponse_t;
    using TreeHolder = std::unique_ptr<Tree, FreeAsn1c>;

    TreeHolder Build(const Table& table) {
        TreeHolder tree(New<Tree>());
        tree->tables = New<asn1c::AsnTableList>();
        auto* one = New<asn1c::AsnTable>();
        Add(&tree->tables->list, one);
        one->schema = New<asn1c::AsnSchemaDef>();
        // The order of the columns is that of their names: a tree keeps them sorted.
        for (const std::size_t column : kSorted) {
            auto* item = New<asn1c::AsnSchemaItem>();
            SetText(item->name, kColumnNames[column]);
            item->type = column < 2 ? 2 : column < 4 ? 9 : 4;
            Add(&one->schema->list, item);
        }
        for (const Row& row : table) {
            auto* data = New<asn1c::AsnDataRow>();
            Add(&one->rows.list, data);
            for (const std::size_t column : kSorted) {
                auto* value = New<asn1c::AsnValue>();
                Add(&data->list, value);
                if (column < 2) {
                    value->iVal = New<long>();
                    *value->iVal = column == 0 ? row.index : row.mtu;
                } else if (column < 4) {
                    value->dVal = New<double>();
                    *value->dVal = column == 2 ? row.rx_rate : row.tx_rate;
                } else {
                    value->sVal = New<asn1c::OCTET_STRING_t>();
                    SetText(*value->sVal, row.texts[column - 4]);
                }
            }
        }
        return tree;
    }

    std::string_view Encode(Tree& tree) {
        if (octets_.empty()) {
            octets_.resize(std::size_t{64} << 20);
        }
        const auto result = asn1c::der_encode_to_buffer(&asn1c::asn_DEF_AsnCommonResponse, &tree,
                                                        octets_.data(), octets_.size());
        Require(result.encoded > 0, kName, "the structure does not encode");
        return {octets_.data(), static_cast<std::size_t>(result.encoded)};
    }

    TreeHolder Decode(std::string_view octets) {
        Tree* tree = nullptr;
        asn1c::asn_codec_ctx_t context = asn1c::NoStackLimit();
        const auto result =
            asn1c::ber_decode(&context, &asn1c::asn_DEF_AsnCommonResponse,
                              reinterpret_cast<void**>(&tree), octets.data(), octets.size());
        TreeHolder holder(tree);
        Require(result.code == asn1c::RC_OK, kName, "the octets do not decode");
        return holder;
    }

    static Table Read(Tree& tree) {
        const auto& one = *tree.tables->list.array[0];
        Table table(static_cast<std::size_t>(one.rows.list.count));
        for (std::size_t r = 0; r < table.size(); ++r) {
            Row& row = table[r];
            for (std::size_t c = 0; c < kColumns; ++c) {
                const auto& value = *one.rows.list.array[r]->list.array[c];
                const std::size_t column = kSorted[c];
                if (column < 2) {
                    (column == 0 ? row.index : row.mtu) = static_cast<std::int32_t>(*value.iVal);
                } else if (column < 4) {
                    (column == 2 ? row.rx_rate : row.tx_rate) = *value.dVal;
                } else {
                    row.texts[column - 4].assign(reinterpret_cast<const char*>(value.sVal->buf),
                                                 static_cast<std::size_t>(value.sVal->size));
                }
            }
        }
        return table;
    }

  private:
    // alias, index, location, mtu, name, rxRate, txRate, vendor
    static constexpr std::array<std::size_t, kColumns> kSorted = {5, 0, 7, 1, 4, 2, 3, 6};

    // The structure's own destructor frees with free(), so everything comes from calloc().
    template <class T>
    static T* New() {
        void* memory = std::calloc(1, sizeof(T));
        Require(memory != nullptr, kName, "no memory");
        return static_cast<T*>(memory);
    }
    template <class List, class Element>
    static void Add(List* list, Element* element) {
        Require(asn1c::asn_sequence_add(list, element) == 0, kName, "no memory");
    }
    static void SetText(asn1c::OCTET_STRING_t& field, const std::string& text) {
        Require(
            asn1c::OCTET_STRING_fromBuf(&field, text.data(), static_cast<int>(text.size())) == 0,
            kName, "no memory");
    }

    std::vector<char> octets_;
};

}  // namespace bench
