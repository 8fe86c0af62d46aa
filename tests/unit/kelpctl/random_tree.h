// Parameter sets of any shape that JSON carries, the same for the same seed.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <string>

#include "frameutil/paraset.h"

class RandomTree {
  public:
    explicit RandomTree(std::uint32_t seed) : random_(seed) {}

    void Fill(FrameUtil::CParaSet& node, int depth) {
        using FrameUtil::CParaSet;
        if (Below(8) == 0) {
            node.SetName(Octets());
        }
        if (Below(8) == 0) {
            node.SetDesc(Octets());
        }
        switch (Below(depth > 0 ? 7 : 5)) {
            case 0:
                break;
            case 1:
                node = Integer();
                break;
            case 2:
                node = Double();
                break;
            case 3:
                node.setBytes(Octets());
                break;
            case 4:
                Resource(node);
                break;
            case 5:
                node.SetType(CParaSet::PARA_ARRAY);
                for (int i = Below(4); i > 0; --i) {
                    node.GetVctValue().push_back(Child("root", depth));
                }
                break;
            default:
                node.SetType(CParaSet::PARA_STRUCT);
                for (int i = Below(4); i > 0; --i) {
                    const std::string key = Key();
                    if (!node.GetMapValue().contains(key)) {
                        CParaSet*& entry = node.GetMapValue()[key];
                        entry = Child(key, depth);
                    }
                }
        }
    }

  private:
    int Below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

    FrameUtil::CParaSet* Child(const std::string& name, int depth) {
        if (Below(6) == 0) {
            return nullptr;
        }
        auto child = std::make_unique<FrameUtil::CParaSet>("");
        child->SetName(name);
        Fill(*child, depth - 1);
        return child.release();
    }

    int Integer() {
        constexpr int kOften[] = {0, 1, -1, std::numeric_limits<int>::max(),
                                  std::numeric_limits<int>::min()};
        const int kind = Below(8);
        return kind < 5 ? kOften[kind] : static_cast<int>(random_());
    }

    double Double() {
        constexpr double kOften[] = {0.0,
                                     -0.0,
                                     1.0,
                                     1e15,
                                     -1e300,
                                     5e-324,
                                     std::numeric_limits<double>::infinity(),
                                     -std::numeric_limits<double>::infinity(),
                                     std::numeric_limits<double>::quiet_NaN(),
                                     0.1};
        const int kind = Below(14);
        return kind < 10 ? kOften[kind]
                         : std::ldexp(static_cast<double>(random_()) - 2e9, Below(200) - 100);
    }

    std::string Octets() {
        const char* const kOften[] = {
            "",        "x",        "a b",   "$",    "$value",          "\u00fc\u202e",
            "\x1b[2J", "\xff\xfe", "\"\\/", "root", "\xf0\x9f\x98\x80"};
        std::string octets = kOften[Below(11)];
        for (int i = Below(4); i > 0; --i) {
            octets += static_cast<char>(random_());
        }
        return octets;
    }

    std::string Key() {
        const char* const kOften[] = {"a",       "##RowCount", "$a",  "$$",  "$bytes:6",
                                      "$absent", "$value",     "a.b", "\xc3"};
        const int kind = Below(12);
        return kind < 9 ? kOften[kind] : Octets();
    }

    void Resource(FrameUtil::CParaSet& node) {
        node.SetType(FrameUtil::CParaSet::PARA_RESID);
        if (Below(4) == 0) {
            return;
        }
        AsnDistinguishedResource record;
        record.resDN = Octets();
        if (Below(2) == 0) {
            record.label.Emplace(Octets());
            record.maintype.Emplace(std::int64_t{Integer()} << 20);
        }
        if (Below(2) == 0) {
            record.subtype.Emplace(Integer());
            record.iResNumber.Emplace(Integer());
            record.wholeLabel.Emplace(Octets());
        }
        if (Below(2) == 0) {
            AsnRelation& relation = record.aResRelation.Ensure().Append();
            relation.iRelation = Integer();
            relation.aResDN.Append() = Octets();
        }
        node = &record;
    }

    std::mt19937 random_;
};
