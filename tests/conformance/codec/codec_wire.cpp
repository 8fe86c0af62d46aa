// The codec as a filter, for judges in other languages.
//
//   codec_wire TABLE build        prints trees made at random, the same ones in every run,
//                                 "build|text KEY HEX OUTLINE" a line; "text" is the build
//                                 with named integers as text
//   codec_wire TABLE parse        reads "KEY HEX" lines and answers each with "yes OUTLINE"
//                                 or "no REASON"
#include <bit>
#include <iostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "frameutil/codec.h"
#include "frameutil/paraset.h"
#include "kelp/log.h"
#include "support/octets.h"
#include "support/record_outline.h"

namespace {

using FrameUtil::CEndeCode;
using FrameUtil::CParaSet;
using FrameUtil::DescItem;

constexpr int kKeys[] = {2000, 2010, 2020, 2030, 2060, 2070, 2071, 2072, 2080};

// {name=5 list=[s6578 d3ff0000000000000]}: text in hex behind s, doubles' octets behind d.
std::string Outline(CParaSet& node) {
    std::string text;
    const char* separator = "";
    switch (node.type()) {
        case CParaSet::PARA_INT:
            return std::to_string(node.asInt());
        case CParaSet::PARA_DOUBLE:
            return "d" + support::OutlineOfReal(node.asDouble());
        case CParaSet::PARA_STRING: {
            std::string octets;
            node.getBytes(octets);
            return "s" + support::OutlineOfOctets(octets);
        }
        case CParaSet::PARA_ARRAY:
            for (CParaSet* child : node.GetVctValue()) {
                text += separator + Outline(*child);
                separator = " ";
            }
            return "[" + text + "]";
        case CParaSet::PARA_STRUCT:
            for (auto& [name, child] : node.GetMapValue()) {
                if (child != nullptr) {
                    text += separator + name + "=" + Outline(*child);
                    separator = " ";
                }
            }
            return "{" + text + "}";
        default:
            return "?";
    }
}

class Maker {
  public:
    Maker(const CEndeCode& codec, unsigned seed) : m_codec(codec), m_random(seed) {}

    void Fill(CParaSet& para, int type, int desc, int depth) {
        if (type > 1023) {
            FillStructure(para, type, depth);
        } else if (type == 48) {
            FillStructure(para, desc, depth);
        } else if (type == 257 && desc == 258) {
            para.SetType(CParaSet::PARA_STRUCT);
            for (int i = Between(0, 3); i > 0; --i) {
                FillScalar(para["a" + std::to_string(i)], Any());
            }
        } else if (type == 257) {
            para.SetType(CParaSet::PARA_ARRAY);
            for (int i = 0, count = depth > 4 ? 0 : Between(0, 3); i < count; ++i) {
                Fill(para[i], desc, -1, depth + 1);
            }
        } else if (type == 256) {
            FillScalar(para, Between(0, 1) == 0 ? 2 : 9);
        } else {
            FillScalar(para, type);
        }
    }

  private:
    int Between(int least, int most) {
        return std::uniform_int_distribution<int>(least, most)(m_random);
    }
    int Any() {
        constexpr int kScalars[] = {2, 4, 9};
        return kScalars[Between(0, 2)];
    }

    void FillStructure(CParaSet& para, int key, int depth) {
        para.SetType(CParaSet::PARA_STRUCT);
        for (const DescItem& item : m_codec.findDesc(key)) {
            if (item.type != 5 && (item.tag < 64 || Between(0, 3) != 0)) {
                Fill(para[item.name], item.type, item.desc, depth + 1);
            }
        }
    }

    void FillScalar(CParaSet& para, int type) {
        if (type == 2) {
            para = static_cast<int>(m_random()) >> Between(0, 31);
        } else if (type == 4) {
            constexpr int kSizes[] = {0, 1, 4, 127, 128, 300};
            std::string text(static_cast<std::size_t>(kSizes[Between(0, 5)]), '\0');
            for (char& octet : text) {
                octet = static_cast<char>(m_random());
            }
            para = text;
        } else {
            const std::uint64_t bits = static_cast<std::uint64_t>(m_random()) << 32 | m_random();
            // No NaN and no minus zero, which are younger than some judges.
            const double value = std::bit_cast<double>(bits);
            para = Between(0, 3) == 0 || value != value ? Between(-9, 9) / 4.0 + 100 : value;
        }
    }

    const CEndeCode& m_codec;
    std::mt19937 m_random;
};

int PrintBuilt(const CEndeCode& codec) {
    Maker maker(codec, 1);
    std::vector<unsigned char> octets(1 << 20);
    for (int round = 0; round < 40; ++round) {
        for (const int key : kKeys) {
            CParaSet tree("tree");
            maker.Fill(tree, key, -1, 0);
            for (const bool as_text : {false, true}) {
                int len = static_cast<int>(octets.size());
                const unsigned char* const end =
                    as_text ? codec.buildAsString(tree, octets.data(), len, key)
                            : codec.build(tree, octets.data(), len, key);
                if (end == nullptr) {
                    std::cerr << "codec_wire: not built: " << Outline(tree) << '\n';
                    return 1;
                }
                std::cout << (as_text ? "text " : "build ") << key << ' '
                          << support::OutlineOfOctets(
                                 {reinterpret_cast<char*>(octets.data()),
                                  static_cast<std::size_t>(end - octets.data())})
                          << ' ' << Outline(tree) << '\n';
            }
        }
    }
    return 0;
}

int ParseLines(const CEndeCode& codec) {
    std::string line;
    while (std::getline(std::cin, line)) {
        const std::size_t blank = line.find(' ');
        if (blank == std::string::npos) {
            std::cerr << "codec_wire: not a key and its octets: " << line << '\n';
            return 2;
        }
        std::string octets = support::Octets(std::string_view(line).substr(blank + 1));
        CParaSet tree("tree");
        FrameUtil::CodecFault fault;
        int len = static_cast<int>(octets.size());
        auto* const buf = reinterpret_cast<unsigned char*>(octets.data());
        const unsigned char* const end =
            codec.parse(tree, buf, len, std::stoi(line), -1, -1, &fault);
        if (end == nullptr || end == buf || len != 0) {
            std::cout << "no " << (end == nullptr ? fault.reason : "another element") << '\n';
        } else {
            std::cout << "yes " << Outline(tree) << '\n';
        }
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    kelp::log::SetLevel(kelp::log::Level::kOff);
    const std::string_view mode = argc == 3 ? argv[2] : "";
    if (mode == "build") {
        return PrintBuilt(CEndeCode(argv[1]));
    }
    if (mode == "parse") {
        return ParseLines(CEndeCode(argv[1]));
    }
    std::cerr << "usage: codec_wire TABLE build|parse\n";
    return 2;
}
