// The run directory and who may have which socket in it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "message/identity.h"
#include "message/run_dir.h"
#include "support/raw_peer.h"
#include "support/temp_folder.h"

namespace {

using kelp::message::ChooseRunDir;
using kelp::message::HandlesOf;
using kelp::message::ListeningSocket;
using kelp::message::PrepareRunDir;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

// An environment variable for one test.
class Variable {
  public:
    Variable(const char* name, const char* value) : m_name(name) {
        if (value == nullptr) {
            ::unsetenv(name);
        } else {
            ::setenv(name, value, 1);
        }
    }
    ~Variable() { ::unsetenv(m_name); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

  private:
    const char* m_name;
};

TEST(RunDir, IsChosenInThisOrder) {
    const Variable no_dir("KELP_RUN_DIR", nullptr);
    const Variable no_root("OSS_ROOT", nullptr);
    EXPECT_EQ(ChooseRunDir(""), "/tmp/kelp-" + std::to_string(::geteuid()));
    const Variable root("OSS_ROOT", "/opt/oss");
    EXPECT_EQ(ChooseRunDir(""), "/opt/oss/var/run");
    const Variable dir("KELP_RUN_DIR", "/run/here");
    EXPECT_EQ(ChooseRunDir(""), "/run/here");
    EXPECT_EQ(ChooseRunDir("/wanted"), "/wanted");
}

TEST(RunDir, IsMadeForThisUserOnly) {
    const TempFolder folder;
    const std::string dir = folder.Path("var") + "/run";
    std::string why;
    ASSERT_TRUE(PrepareRunDir(dir, why)) << why;
    struct stat found;
    ASSERT_EQ(::stat(dir.c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 0777, 0700u);
    EXPECT_TRUE(PrepareRunDir(dir, why)) << "it may be there already";
}

TEST(RunDir, UnsafeOnesAreRefused) {
    const TempFolder folder;
    std::string why;
    const std::string open = folder.Path("open");
    ASSERT_EQ(::mkdir(open.c_str(), 0700), 0);
    ASSERT_EQ(::chmod(open.c_str(), 0777), 0);
    EXPECT_FALSE(PrepareRunDir(open, why));
    EXPECT_THAT(why, HasSubstr(open + " must belong to this user and be writable by no other"));

    const std::string file = folder.Path("file");
    std::ofstream(file) << "x";
    EXPECT_FALSE(PrepareRunDir(file, why));
    EXPECT_THAT(why, HasSubstr("is not a directory"));

    const std::string link = folder.Path("link");
    ASSERT_EQ(::symlink(folder.Path().c_str(), link.c_str()), 0);
    EXPECT_FALSE(PrepareRunDir(link, why)) << "a link may point anywhere tomorrow";
    EXPECT_FALSE(PrepareRunDir(file + "/below", why));
    EXPECT_THAT(why, HasSubstr("cannot be made"));
}

TEST(RunDir, HandlesAreListedInOrder) {
    const TempFolder folder;
    for (const char* name : {"56.10.sock", "56.2.sock", "56.2.lock", "560.1.sock", "56..sock",
                             "56.x.sock", "56.70000.sock", "56.3.sock.old", "56.1.sock"}) {
        std::ofstream(folder.Path(name)) << "";
    }
    EXPECT_THAT(HandlesOf(folder.Path(), 56), ElementsAre(1, 2, 10));
    EXPECT_THAT(HandlesOf(folder.Path(), 57), ElementsAre());
    EXPECT_THAT(HandlesOf(folder.Path("missing"), 56), ElementsAre());
}

TEST(ListeningSocket, BelongsToOneProcessAtATime) {
    const TempFolder folder;
    std::string why;
    {
        ListeningSocket first;
        ASSERT_TRUE(first.Open(folder.Path(), 56, 1, why)) << why;
        struct stat found;
        ASSERT_EQ(::stat(folder.Path("56.1.sock").c_str(), &found), 0);
        EXPECT_EQ(found.st_mode & 0777, 0600u);
        ListeningSocket second;
        EXPECT_FALSE(second.Open(folder.Path(), 56, 1, why));
        EXPECT_EQ(why, "process 56.1 is already running in " + folder.Path());
        EXPECT_TRUE(second.Open(folder.Path(), 56, 2, why)) << why;
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path())) << "nothing is left behind";
}

// What a process that crashed left is in nobody's way.
TEST(ListeningSocket, TakesOverWhatACrashLeft) {
    const TempFolder folder;
    std::ofstream(folder.Path("56.1.sock")) << "";
    std::ofstream(folder.Path("56.1.lock")) << "";
    ListeningSocket socket;
    std::string why;
    ASSERT_TRUE(socket.Open(folder.Path(), 56, 1, why)) << why;
    EXPECT_TRUE(RawPeer::Connect(folder.Path(), 56, 1).Connected());
}

TEST(ListeningSocket, PathTooLongIsSaid) {
    const TempFolder folder;
    const std::string dir = folder.Path(std::string(120, 'x'));
    ListeningSocket socket;
    std::string why;
    EXPECT_FALSE(socket.Open(dir, 56, 1, why));
    EXPECT_THAT(why, HasSubstr("has a path too long for a socket in it"));
}

TEST(Identity, ComesFromTheEnvironment) {
    const struct {
        const char* text;
        unsigned value;
    } cases[] = {{"3001", 3001}, {"0", 0},  {"65535", 65535}, {"65536", 0}, {"-1", 0},
                 {"", 0},        {"7x", 0}, {" 7", 0},        {nullptr, 0}};
    for (const auto& test : cases) {
        const Variable proc("KELP_PROC_ID", test.text);
        const Variable handle("KELP_PROC_HANDLE", test.text);
        const Variable desk("KELP_DESK_ID", test.text);
        const kelp::message::Identity found = kelp::message::IdentityFromEnvironment();
        const char* name = test.text == nullptr ? "(unset)" : test.text;
        EXPECT_EQ(found.proc_id, test.value) << name;
        EXPECT_EQ(found.proc_handle, test.value) << name;
        EXPECT_EQ(found.desk_id, test.value) << name;
    }
}

}  // namespace
