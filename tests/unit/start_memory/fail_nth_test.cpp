// Resources, error texts and the white list where memory has run out.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/value.h>

#include <fstream>
#include <string>
#include <vector>

#include "frameutil/error_manage.h"
#include "frameutil/white_list.h"
#include "kelp/resource.h"
#include "message/identity.h"
#include "support/captured_log.h"
#include "support/environment.h"
#include "support/failing_new.h"
#include "support/temp_folder.h"

namespace FrameUtil {
namespace {

// Longer than what texts hold without an allocation.
const std::string kLong(40, 'x');

class StartMemory : public testing::Test {
  protected:
    StartMemory() { kelp::message::SetIdentity({3001, 1, 0}); }
    ~StartMemory() override {
        ErrorManage::Destroy();
        QWhiteList::Destroy();
    }

    std::string WriteErrors(const std::string& id) const {
        std::ofstream(m_errors) << id << ".desc=" << kLong << "D\n"
                                << id << ".reason=" << kLong << "R\n"
                                << id << ".detail=" << kLong << "T\n"
                                << id << ".advice=" << kLong << "A\n";
        return m_errors;
    }
    std::string WriteWhiteList() const {
        std::ofstream(m_folder.Path("3001_QWhiteList.properties")) << "1000\n2000\n";
        return m_folder.Path() + "/";
    }

    const TempFolder m_folder;
    const std::string m_errors = m_folder.Path("errors.res");
    const EnvironmentVariable m_no_language{"KELP_LANGUAGE", nullptr};
};

template <class T>
void ExpectNextInstance() {
    T::Destroy();
    {
        const FailNthAllocation failing(1);
        EXPECT_THROW(T::Instance(), std::bad_alloc);
    }
    EXPECT_NE(T::Instance(), nullptr);
}

TEST_F(StartMemory, NextCallMakesTheObject) {
    ExpectNextInstance<ErrorManage>();
    ExpectNextInstance<QWhiteList>();
}

// An object that got no memory for what is behind it does nothing, and returns false, 0 or
// nothing, until it is made anew.
TEST_F(StartMemory, HandleWithoutImplementation) {
    const std::string file = WriteErrors("m1");
    const std::string dir = WriteWhiteList();
    ErrorManage* errors = nullptr;
    QWhiteList* list = nullptr;
    {
        const FailNthAllocation failing(2);
        errors = ErrorManage::Instance();
    }
    {
        const FailNthAllocation failing(2);
        list = QWhiteList::Instance();
    }
    ASSERT_NE(errors, nullptr);
    ASSERT_NE(list, nullptr);
    const CapturedLog log;
    EXPECT_FALSE(errors->InitRes(file));
    Json::Value error("untouched");
    EXPECT_EQ(errors->AppendError("m1", error), 0u);
    EXPECT_EQ(errors->AppendError("", error), 0u);
    EXPECT_EQ(error, Json::Value("untouched"));
    EXPECT_EQ(errors->FormatAttr("m1", ERROR_ATTR_DESC), 0u);
    EXPECT_EQ(list->Init(dir), 0);
    std::vector<std::string> entries{"before"};
    list->GetWhiteList(entries);
    EXPECT_THAT(entries, testing::IsEmpty());
    EXPECT_THAT(log.Texts(), testing::IsEmpty());

    ErrorManage::Destroy();
    QWhiteList::Destroy();
    EXPECT_TRUE(ErrorManage::Instance()->InitRes(file));
    EXPECT_EQ(QWhiteList::Instance()->Init(dir), 0);
    QWhiteList::Instance()->GetWhiteList(entries);
    EXPECT_EQ(entries.size(), 2u);
}

// Whichever allocation fails, none of the file's texts is registered.
TEST_F(StartMemory, RegistrationIsWholeOrNot) {
    const std::string file = WriteErrors("m2");
    const std::vector<std::string> keys = {"m2.desc", "m2.reason", "m2.detail", "m2.advice"};
    long n = 1;
    for (; support::FailNth(n, [&] { KelpAddResFileWithAbsolute(file); }); ++n) {
        for (const std::string& key : keys) {
            EXPECT_EQ(KelpGetResString(key), nullptr) << n;
        }
    }
    EXPECT_GT(n, 4);
    for (const std::string& key : keys) {
        EXPECT_NE(KelpGetResString(key), nullptr);
    }
}

// An identifier whose texts found no room is looked up again, and the lock is free.
TEST_F(StartMemory, TextsAreKeptWholeOrNot) {
    ErrorManage* const errors = ErrorManage::Instance();
    ASSERT_TRUE(errors->InitRes(WriteErrors("m3")));
    Json::Value error;
    long n = 1;
    for (; support::FailNth(n,
                            [&] {
                                error = Json::Value();
                                EXPECT_EQ(errors->AppendError("m3", error), 0u);
                            });
         ++n) {
    }
    EXPECT_GT(n, 4);
    EXPECT_EQ(error["descArgs"][0].asString(), kLong + "D");
    EXPECT_EQ(error["adviceArgs"][0].asString(), kLong + "A");
    n = 1;
    for (; support::FailNth(n, [&] { errors->FormatAttr("m3", ERROR_ATTR_DESC, 1); }); ++n) {
    }
    EXPECT_GT(n, 1);
    EXPECT_EQ(errors->FormatAttr("m3", ERROR_ATTR_DESC), ERROR_NO_TEXT);
}

// The list has a file's entries or not.
TEST_F(StartMemory, WhiteListIsLoadedWholeOrNot) {
    const std::string dir = WriteWhiteList();
    QWhiteList* const list = QWhiteList::Instance();
    std::vector<std::string> entries;
    long n = 1;
    for (; support::FailNth(n, [&] { list->Init(dir); }); ++n) {
        list->GetWhiteList(entries);
        EXPECT_THAT(entries, testing::IsEmpty()) << n;
    }
    EXPECT_GT(n, 3);
    entries.assign(1, "before");
    for (n = 1; support::FailNth(n, [&] { list->GetWhiteList(entries); }); ++n) {
        EXPECT_THAT(entries, testing::ElementsAre("before"));
    }
    EXPECT_THAT(entries, testing::ElementsAre("1000", "2000"));
}

}  // namespace
}  // namespace FrameUtil
