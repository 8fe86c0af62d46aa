// What holds for every description and every tree: made at random, the same in every run.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <random>
#include <vector>

#include "support/codec.h"
#include "support/quiet_log.h"

namespace {

using FrameUtil::CParaSet;
using support::As;
using support::Build;
using support::Form;

constexpr int kFirstKey = 2000;

struct Item {
    std::string name;
    int type;
    int desc;
    int tag;
};

/// A description table, and trees that fit it, as far as the format is symmetric: what was
/// built reads back the same.
class World {
  public:
    explicit World(unsigned seed) : m_random(seed) {
        const int keys = Between(1, 6);
        m_keys.resize(static_cast<std::size_t>(keys));
        // A key refers to later ones only, so that trees end.
        for (int key = keys - 1; key >= 0; --key) {
            MakeKey(key);
        }
        for (int key = 0; key < keys; ++key) {
            for (const Item& item : m_keys[static_cast<std::size_t>(key)]) {
                m_text += std::to_string(kFirstKey + key) + " 0 " + item.name + ' ' +
                          std::to_string(item.type) + ' ' + std::to_string(item.desc) + ' ' +
                          std::to_string(item.tag) + '\n';
            }
        }
    }

    const std::string& Text() const { return m_text; }

    void Fill(CParaSet& para) { FillKey(para, 0); }

  private:
    int Between(int least, int most) {
        return std::uniform_int_distribution<int>(least, most)(m_random);
    }
    bool Chance(int percent) { return Between(1, 100) <= percent; }

    void MakeKey(int key) {
        std::vector<Item>& items = m_keys[static_cast<std::size_t>(key)];
        const int later = static_cast<int>(m_keys.size()) - 1 - key;
        // At least two: a list alone is read without the structure around it.
        const int count = Between(2, 8);
        for (int i = 0; i < count; ++i) {
            Item item{
                "n" + std::to_string(Between(0, 9)) + std::string(1, static_cast<char>('a' + i)), 0,
                -1, -1};
            const int context = i + 1;  // of its own, so that no item takes another's element
            constexpr int kScalars[] = {2, 4, 9};
            switch (Between(0, later > 0 ? 8 : 6)) {
                case 0:
                case 1:
                case 2:
                    item.type = kScalars[Between(0, 2)];
                    item.tag = Chance(50) ? -1 : 128 + context;
                    break;
                case 3:
                    item.type = 257;
                    item.desc = kScalars[Between(0, 2)];
                    item.tag = 160 + context;
                    break;
                case 4:
                    item.type = 257;
                    item.desc = 258;
                    item.tag = 160 + context;
                    break;
                case 5:
                    item.type = 256;
                    item.tag = 160 + context;
                    break;
                case 6:
                    item.type = 258;
                    item.tag = 160 + context;
                    break;
                case 7:
                    item.type = kFirstKey + key + Between(1, later);
                    item.tag = 160 + context;
                    break;
                default:
                    item.type = 257;
                    item.desc = kFirstKey + key + Between(1, later);
                    item.tag = 160 + context;
            }
            items.push_back(item);
        }
    }

    void FillScalar(CParaSet& para, int type) {
        const int bits = Between(0, 31);
        const auto number = static_cast<std::int32_t>(m_random() >> (31 - bits));
        switch (type) {
            case 2:
                para = number;
                break;
            case 4: {
                constexpr int kSizes[] = {0, 1, 5, 120, 127, 128, 300};
                std::string text(static_cast<std::size_t>(kSizes[Between(0, 6)]), '\0');
                std::generate(text.begin(), text.end(),
                              [&] { return static_cast<char>(m_random()); });
                para = text;
                break;
            }
            default:
                para =
                    Chance(20) ? static_cast<double>(number) : std::bit_cast<double>(FiniteBits());
        }
    }

    std::uint64_t FiniteBits() {
        const std::uint64_t bits = static_cast<std::uint64_t>(m_random()) << 32 | m_random();
        return (bits >> 52 & 0x7ff) == 0x7ff ? bits & 0xffff : bits;
    }

    void FillItem(CParaSet& para, const Item& item) {
        constexpr int kScalars[] = {2, 4, 9};
        if (item.type > 1023) {
            FillKey(para, item.type - kFirstKey);
        } else if (item.type == 256) {
            // Room for 127 octets only.
            if (Chance(50)) {
                para = std::to_string(Between(-99, 99));
            } else {
                FillScalar(para, Chance(50) ? 2 : 9);
            }
        } else if (item.type == 258) {
            FillScalar(para, kScalars[Between(0, 2)]);
        } else if (item.type == 257 && item.desc == 258) {
            para.SetType(CParaSet::PARA_STRUCT);
            for (int i = Between(0, 4); i > 0; --i) {
                FillScalar(para["v" + std::to_string(i)], kScalars[Between(0, 2)]);
            }
        } else if (item.type == 257) {
            para.SetType(CParaSet::PARA_ARRAY);
            for (int i = 0, count = Between(0, 4); i < count; ++i) {
                FillItem(para[i], {"", item.desc, -1, -1});
            }
        } else {
            FillScalar(para, item.type);
        }
    }

    void FillKey(CParaSet& para, int key) {
        para.SetType(CParaSet::PARA_STRUCT);
        for (const Item& item : m_keys[static_cast<std::size_t>(key)]) {
            // What has a tag from 64 on may be missing, anywhere.
            if (item.tag < 64 || Chance(70)) {
                FillItem(para[item.name], item);
            }
        }
    }

    std::mt19937 m_random;
    std::vector<std::vector<Item>> m_keys;
    std::string m_text;
};

constexpr As kRoot{kFirstKey};
constexpr int kWorlds = 150;

// Every world, with a tree and what build makes of it.
template <class Visit>
void EachWorld(int worlds, Visit visit) {
    for (int seed = 0; seed < worlds; ++seed) {
        World world(static_cast<unsigned>(seed));
        const auto codec = support::CodecOf(world.Text());
        for (int tree = 0; tree < 3; ++tree) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", tree " + std::to_string(tree) + '\n' +
                         world.Text());
            CParaSet para("para");
            world.Fill(para);
            CParaSet original(para);
            std::string why;
            const std::string octets = Build(*codec, para, kRoot, support::kAmple, why);
            ASSERT_EQ(why, "");
            ASSERT_NE(octets, "");
            visit(*codec, original, octets);
            if (testing::Test::HasFailure()) {
                return;
            }
        }
    }
}

TEST(Properties, WhatIsBuiltReadsBackAsTheSameValues) {
    EachWorld(kWorlds,
              [](const FrameUtil::CEndeCode& codec, CParaSet& tree, const std::string& octets) {
                  CParaSet back("back");
                  ASSERT_EQ(support::Parse(codec, octets, back, kRoot), "");
                  EXPECT_EQ(Shape(back), Shape(tree));
                  std::string why;
                  EXPECT_EQ(Build(codec, back, kRoot, support::kAmple, why), octets) << why;
                  // Exactly: Shape() shows doubles by six digits, the octets by all.
                  CParaSet behind("behind");
                  EXPECT_EQ(support::Parse(codec, octets + "more", behind, kRoot), " +4");
                  EXPECT_EQ(Shape(behind), Shape(tree));
              });
}

TEST(Properties, TheStringBuildReadsBackWithNamedIntegersAsText) {
    EachWorld(kWorlds / 3, [](const FrameUtil::CEndeCode& codec, CParaSet& tree,
                              const std::string&) {
        CParaSet changed(tree);
        std::string why;
        const std::string octets = Build(codec, changed, kRoot, support::kAmple, why, Form::kText);
        ASSERT_EQ(why, "");
        // What was written is what the tree holds now, so build writes it again.
        EXPECT_EQ(Build(codec, changed, kRoot, support::kAmple, why), octets);
        CParaSet back("back");
        ASSERT_EQ(support::Parse(codec, octets, back, kRoot), "");
        CParaSet without_entries(changed);  // those that build entered
        EXPECT_EQ(Shape(back), Shape(without_entries));
    });
}

// No beginning of a stream is read: the outermost length says more than is there.
TEST(Properties, NoPrefixIsRead) {
    EachWorld(kWorlds / 3,
              [](const FrameUtil::CEndeCode& codec, CParaSet&, const std::string& octets) {
                  support::EachTruncation(octets, [&](std::string_view cut) {
                      CParaSet para("para");
                      EXPECT_EQ(support::ParseInPlace(codec, cut, para, kRoot).substr(0, 4), "null")
                          << cut.size();
                  });
              });
}

// Nor does the end of an outer element that was cut hide it: the contents cut, the header
// saying so.
TEST(Properties, NoCutContentsAreReadBeyondTheirEnd) {
    EachWorld(kWorlds / 3,
              [](const FrameUtil::CEndeCode& codec, CParaSet&, const std::string& octets) {
                  support::GuardedMemory memory(octets.size());
                  for (std::size_t size = 5; size < octets.size(); ++size) {
                      std::string cut = octets.substr(0, size);
                      const std::size_t contents = size - 5;
                      cut[2] = static_cast<char>(contents >> 16);
                      cut[3] = static_cast<char>(contents >> 8);
                      cut[4] = static_cast<char>(contents);
                      CParaSet para("para");
                      const std::string outcome =
                          support::ParseInPlace(codec, memory.Place(cut), para, kRoot);
                      EXPECT_TRUE(outcome.empty() || outcome.starts_with("null")) << size;
                  }
              });
}

// A buffer of every size up to the one that is needed: it fits, or build says that it does
// not; never an octet behind the end (Build() looks after that).
TEST(Properties, EveryBufferSizeFitsOrIsRefused) {
    EachWorld(kWorlds / 5,
              [](const FrameUtil::CEndeCode& codec, CParaSet& tree, const std::string& octets) {
                  const int needed = static_cast<int>(octets.size());
                  for (int room = 0; room < needed; ++room) {
                      std::string why;
                      EXPECT_EQ(Build(codec, tree, kRoot, room, why), "");
                      EXPECT_TRUE(why.starts_with("the buffer is too small")) << why;
                  }
                  for (const int more : {0, 1, 2, 5, 100}) {
                      std::string why;
                      EXPECT_EQ(Build(codec, tree, kRoot, needed + more, why), octets) << why;
                  }
              });
}

// A short header may become one of five octets.
constexpr int kRoomForChanged = 8000;

// What a changed stream is read as is read again from what build makes of it.
void ReadOrRefused(const FrameUtil::CEndeCode& codec, std::string_view octets) {
    CParaSet para("para");
    const std::string outcome = support::ParseInPlace(codec, octets, para, kRoot);
    CParaSet copy(para);
    EXPECT_EQ(copy.isNull(), para.isNull());
    if (outcome.starts_with("null") || outcome == "absent") {
        EXPECT_TRUE(para.isNull());
        return;
    }
    EXPECT_EQ(para.type(), CParaSet::PARA_STRUCT);
    std::string why;
    // A wrapper that a flipped bit made longer than build writes may be refused there.
    const std::string again = Build(codec, para, kRoot, kRoomForChanged, why);
    EXPECT_TRUE(!again.empty() || why.starts_with("the contents do not fit")) << why;
}

TEST(Properties, EveryBitFlippedIsReadOrRefused) {
    const QuietLog quiet;  // names that became the same are traced
    std::size_t flips = 0;
    EachWorld(
        kWorlds / 10, [&](const FrameUtil::CEndeCode& codec, CParaSet&, const std::string& octets) {
            if (octets.size() < 500) {  // the time grows with the square
                flips += octets.size() * 8;
                support::EachBitFlipped(
                    octets, [&](std::string_view flipped, auto) { ReadOrRefused(codec, flipped); });
            }
        });
    EXPECT_GT(flips, 10'000u);
}

TEST(Properties, EveryOctetReplacedIsReadOrRefused) {
    const QuietLog quiet;
    EachWorld(4, [](const FrameUtil::CEndeCode& codec, CParaSet&, const std::string& octets) {
        if (octets.size() < 400) {
            support::EachOctetReplaced(
                octets, [&](std::string_view changed) { ReadOrRefused(codec, changed); });
        }
    });
}

// Octets without any order, against every key of the example and without one.
TEST(Properties, RandomOctetsAreReadOrRefused) {
    const QuietLog quiet;
    const FrameUtil::CEndeCode codec(CODEC_EXAMPLE);
    std::mt19937 random(7);
    constexpr unsigned char kLikely[] = {0x02, 0x04, 0x05, 0x09, 0x30, 0xa0, 0xa1, 0xa2,
                                         0xa5, 0x00, 0x01, 0x02, 0x03, 0x05, 0x81, 0x83};
    for (int round = 0; round < 20'000; ++round) {
        std::string octets(random() % 40, '\0');
        std::generate(octets.begin(), octets.end(), [&] {
            return static_cast<char>(random() % 3 == 0 ? random() : kLikely[random() % 16]);
        });
        constexpr int kTypes[] = {-1,   2,    4,    5,    9,    48,   256,  257,  258,
                                  2000, 2010, 2020, 2030, 2040, 2041, 2050, 2060, 2070};
        const As as{kTypes[random() % 18],
                    random() % 2 == 0 ? -1 : static_cast<int>(random() % 300),
                    random() % 2 == 0 ? -1 : static_cast<int>(random() % 256)};
        CParaSet para("para");
        support::Parse(codec, octets, para, as);
        CParaSet copy(para);
        EXPECT_EQ(copy.type(), para.type());
    }
}

}  // namespace
