// Many threads and one codec: racing for its making, coding with it at once, and looking up
// what it has not.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <latch>
#include <set>
#include <thread>
#include <vector>

#include "support/captured_log.h"
#include "support/codec.h"

namespace {

using FrameUtil::CEndeCode;
using FrameUtil::CParaSet;

constexpr int kThreads = 8;

// Runs `act(number)` on every thread, all started before any goes.
void AllAtOnce(const std::function<void(int)>& act) {
    std::latch ready(kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            ready.arrive_and_wait();
            act(i);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

// Whoever comes first makes it; everybody gets the same one, and the file that OSS_ROOT
// leads to is read once.
TEST(Instance, IsOneForAllWhoRaceForIt) {
    const TempFolder folder;
    const std::string conf = folder.Path("rtsp/DRKFrame/drk/frame/conf");
    std::filesystem::create_directories(conf);
    const std::string file = conf + "/MCDB..bms_desc_Asn1ParaDesc.bcp";
    std::ofstream(file) << "1100 0 userName 4 -1 -1\n1100 0 short 4\n";
    setenv("OSS_ROOT", folder.Path().c_str(), 1);
    CapturedLog log;
    std::vector<CEndeCode*> seen(kThreads);
    std::vector<std::size_t> items(kThreads);
    AllAtOnce([&](int i) {
        const auto at = static_cast<std::size_t>(i);
        seen[at] = CEndeCode::Instance();
        items[at] = seen[at]->findDesc(1100).size();
    });
    EXPECT_THAT(std::set<CEndeCode*>(seen.begin(), seen.end()), testing::SizeIs(1));
    EXPECT_NE(seen[0], nullptr);
    EXPECT_THAT(items, testing::Each(1u));
    EXPECT_THAT(
        log.Texts(),
        testing::ElementsAre("[Frame]init bms_desc_Asn1ParaDesc in line 1 found error, size is 4",
                             "[Frame]init bms_desc_Asn1ParaDesc end, total size is 1."));
    // It is not read again, whatever becomes of the file.
    std::ofstream(file) << "1100 0 other 2 -1 -1\n1200 0 other 2 -1 -1\n";
    EXPECT_EQ(CEndeCode::Instance(), seen[0]);
    ASSERT_EQ(CEndeCode::Instance()->findDesc(1100).size(), 1u);
    EXPECT_EQ(CEndeCode::Instance()->findDesc(1100)[0].name, "userName");
    EXPECT_TRUE(CEndeCode::Instance()->findDesc(1200).empty());
}

TEST(Threads, CodeAtOnceWithOneCodec) {
    const CEndeCode codec(CODEC_EXAMPLE);
    std::vector<std::string> wrong(kThreads);
    AllAtOnce([&](int number) {
        for (int round = 0; round < 200 && wrong[static_cast<std::size_t>(number)].empty();
             ++round) {
            CParaSet para("para");
            para["neId"] = number * 1000 + round;
            para["neName"] = std::string(static_cast<std::size_t>(round), 'x');
            para["load"] = round / 8.0;
            for (int i = 0; i < 3; ++i) {
                CParaSet& port = para["interfaces"][i];
                port["index"] = i;
                port["name"] = "eth" + std::to_string(i);
                port["addresses"][0] = "10.0.0." + std::to_string(number);
            }
            para["attributes"]["rack"] = number;
            unsigned char octets[2000];
            int len = sizeof octets;
            const bool as_text = round % 2 == 0;
            unsigned char* const end = as_text ? codec.buildAsString(para, octets, len, 2000)
                                               : codec.build(para, octets, len, 2000);
            int read = static_cast<int>(end - octets);
            CParaSet back("back");
            if (end == nullptr || codec.parse(back, octets, read, 2000) != end) {
                wrong[static_cast<std::size_t>(number)] = "not read";
            } else if (CParaSet written(para); Shape(back) != Shape(written)) {
                wrong[static_cast<std::size_t>(number)] = Shape(back);
            }
        }
    });
    EXPECT_THAT(wrong, testing::Each(""));
}

// A look-up that finds nothing inserts nothing: the table has no lock.
TEST(Threads, LookUnknownKeysUpAtOnce) {
    const auto codec = support::CodecOf("1100 0 in 5000 -1 -1\n");
    std::vector<std::size_t> found(kThreads);
    AllAtOnce([&](int number) {
        for (int key = 2000; key < 3000; ++key) {
            found[static_cast<std::size_t>(number)] += codec->findDesc(key).size();
            CParaSet para("para");
            para["in"]["x"] = 1;
            unsigned char octets[64];
            int len = sizeof octets;
            codec->build(para, octets, len, key);
            len = sizeof octets - len;
            CParaSet back("back");
            codec->parse(back, octets, len, key);
            found[static_cast<std::size_t>(number)] += back.GetMapValue().size();
        }
    });
    EXPECT_THAT(found, testing::Each(0u));
}

// A file that is replaced while it is read is read as it was or as it is.
TEST(Threads, LoadAFileThatIsReplaced) {
    const TempFolder folder;
    const auto write = [&](const char* name, const char* item) {
        std::ofstream out(folder.Path(name));
        for (int i = 0; i < 2000; ++i) {
            out << "1100 0 " << item << " 4 -1 -1\n";
        }
    };
    write("table", "old");
    std::atomic<bool> done{false};
    std::thread writer([&] {
        for (int i = 0; !done; ++i) {
            write("next", i % 2 == 0 ? "new" : "old");
            std::rename(folder.Path("next").c_str(), folder.Path("table").c_str());
        }
    });
    for (int i = 0; i < 50; ++i) {
        const CEndeCode codec(folder.Path("table"));
        const auto items = codec.findDesc(1100);
        EXPECT_EQ(items.size(), 2000u);
        for (const auto& item : items) {
            EXPECT_EQ(item.name, items.front().name);
        }
    }
    done = true;
    writer.join();
}

}  // namespace
