// Where a package of the installation stands.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "kelp/settings.h"
#include "support/captured_log.h"

namespace {

using ns_kelpsdk_wrap::GetPackageRelativePath;

class PackagePath : public testing::Test {
  protected:
    PackagePath() {
        if (const char* root = std::getenv("OSS_ROOT")) {
            m_former = root;
            m_set = true;
        }
    }
    ~PackagePath() override {
        if (m_set) {
            setenv("OSS_ROOT", m_former.c_str(), 1);
        } else {
            unsetenv("OSS_ROOT");
        }
    }

  private:
    std::string m_former;
    bool m_set = false;
};

TEST_F(PackagePath, IsBelowTheRootWithOneSlashBetween) {
    const struct {
        const char* installation;  // OSS_ROOT
        const char* root;
        const char* relative;
        const char* path;
    } rows[] = {
        {"/opt/oss", "", "rtsp/DRKFrame", "/opt/oss/rtsp/DRKFrame"},
        {"/opt/oss/", "", "rtsp/DRKFrame", "/opt/oss/rtsp/DRKFrame"},
        {"/opt/oss///", "", "rtsp/DRKFrame", "/opt/oss/rtsp/DRKFrame"},
        {"/opt/oss", "", "/rtsp/DRKFrame", "/opt/oss/rtsp/DRKFrame"},
        {"/opt/oss", "", "//rtsp/DRKFrame//", "/opt/oss/rtsp/DRKFrame"},
        {"/opt/oss", "", "rtsp//DRKFrame", "/opt/oss/rtsp//DRKFrame"},
        {"/opt/oss", "", "", "/opt/oss"},
        {"/opt/oss/", "", "/", "/opt/oss"},
        {"/", "", "rtsp", "/rtsp"},
        {"oss", "", "rtsp", "oss/rtsp"},
        {"/opt/an oss", "", "rtsp", "/opt/an oss/rtsp"},
        {"/opt/oss", "/srv", "rtsp", "/srv/rtsp"},
        {"/opt/oss", "/srv/", "/rtsp/", "/srv/rtsp"},
        {nullptr, "/srv", "rtsp", "/srv/rtsp"},
        {"", "/srv", "rtsp", "/srv/rtsp"},
    };
    for (const auto& row : rows) {
        if (row.installation == nullptr) {
            unsetenv("OSS_ROOT");
        } else {
            setenv("OSS_ROOT", row.installation, 1);
        }
        CapturedLog log;
        EXPECT_EQ(GetPackageRelativePath(row.root, row.relative), row.path);
        EXPECT_THAT(log.Texts(), testing::IsEmpty());
    }
}

TEST_F(PackagePath, TheRootIsAskedForAtEveryCall) {
    setenv("OSS_ROOT", "/a", 1);
    EXPECT_EQ(GetPackageRelativePath("", "x"), "/a/x");
    setenv("OSS_ROOT", "/b", 1);
    EXPECT_EQ(GetPackageRelativePath("", "x"), "/b/x");
}

TEST_F(PackagePath, WithoutARootItIsEmptyAndAWarningSaysWhy) {
    for (const char* installation : {static_cast<const char*>(nullptr), ""}) {
        if (installation == nullptr) {
            unsetenv("OSS_ROOT");
        } else {
            setenv("OSS_ROOT", installation, 1);
        }
        CapturedLog log;
        EXPECT_EQ(GetPackageRelativePath("", "rtsp/DRKFrame"), "");
        EXPECT_THAT(
            log.Texts(kelp::log::Level::kWarn),
            testing::ElementsAre("[settings] there is no package rtsp/DRKFrame: OSS_ROOT is not "
                                 "set: run 'kelpd init DIR' and export what it prints"));
        EXPECT_EQ(log.Texts().size(), 1u);
    }
}

}  // namespace
