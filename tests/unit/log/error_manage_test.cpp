// The four texts of an error: where they come from, where they go, what is logged.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/json.h>

#include <atomic>
#include <cerrno>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "frameutil/log.h"
#include "kelp/secure.h"
#include "seams.h"
#include "secure/fault.h"
#include "support/captured_log.h"
#include "support/environment.h"
#include "support/failing_new.h"
#include "support/temp_folder.h"

namespace FrameUtil {

// Into the failure reports of gtest.
void PrintTo(enAttrType attr, std::ostream* out) {
    *out << static_cast<int>(attr);
}

namespace {

using kelp::log::Level;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kMembers[] = {"descArgs", "detailArgs", "reasonArgs", "adviceArgs"};

void ExpectEntry(const CapturedLog::Entry& entry, Level level, unsigned code,
                 const std::string& text, const char* function, int line) {
    EXPECT_EQ(entry.level, level);
    EXPECT_EQ(entry.code, code);
    EXPECT_EQ(entry.text, text);
    EXPECT_EQ(entry.unit, "error_manage");
    EXPECT_EQ(entry.function, function);
    EXPECT_EQ(entry.line, line);
}

class ErrorManageTest : public testing::Test {
  protected:
    ~ErrorManageTest() override { ErrorManage::Destroy(); }

    // Registers `lines`; resources live as long as the process, so each test has
    // identifiers of its own.
    void Register(const std::string& lines) {
        const std::string path = m_folder.Path("errors.res");
        std::ofstream(path, std::ios::binary) << lines;
        ASSERT_TRUE(Errors().InitRes(path));
    }
    void RegisterWhole(const std::string& id) {
        Register(id + ".desc=D\n" + id + ".reason=R\n" + id + ".detail=T\n" + id + ".advice=A\n");
    }
    static ErrorManage& Errors() { return *ErrorManage::Instance(); }

    const TempFolder m_folder;
    const EnvironmentVariable m_no_language{"KELP_LANGUAGE", nullptr};
    const CapturedLog m_log;
};

Json::Value Texts(const char* desc, const char* detail, const char* reason, const char* advice) {
    Json::Value error;
    error["descArgs"].append(desc);
    error["detailArgs"].append(detail);
    error["reasonArgs"].append(reason);
    error["adviceArgs"].append(advice);
    return error;
}

TEST_F(ErrorManageTest, EachTextGoesIntoItsArray) {
    RegisterWhole("e1");
    Json::Value error;
    EXPECT_EQ(Errors().AppendError("e1", error), 0u);
    EXPECT_EQ(error, Texts("D", "T", "R", "A"));
    EXPECT_THAT(m_log.Texts(), IsEmpty());
}

// Appending twice gives each array two elements; what was there stays in front.
TEST_F(ErrorManageTest, ArraysGrow) {
    RegisterWhole("e2");
    Json::Value error;
    error["descArgs"].append(17);
    error["other"] = "kept";
    EXPECT_EQ(Errors().AppendError("e2", error), 0u);
    EXPECT_EQ(Errors().AppendError("e2", error), 0u);
    ASSERT_EQ(error["descArgs"].size(), 3u);
    EXPECT_EQ(error["descArgs"][0], 17);
    EXPECT_EQ(error["descArgs"][2], "D");
    for (const char* member : {"detailArgs", "reasonArgs", "adviceArgs"}) {
        EXPECT_EQ(error[member].size(), 2u) << member;
    }
    EXPECT_EQ(error["other"], "kept");
}

TEST_F(ErrorManageTest, EmptyIdentifierIsRefusedAtOnce) {
    for (const Json::Value& before : {Json::Value(), Json::Value("text"), Json::Value(3)}) {
        Json::Value error = before;
        EXPECT_EQ(Errors().AppendError("", error), 0x4101F000u);
        EXPECT_EQ(error, before);
    }
    EXPECT_THAT(m_log.Texts(), IsEmpty());
}

// Texts are asked for in the order desc, reason, detail, advice; the first one that is
// missing is named. The arrays get an empty text each, and the next call looks again.
TEST_F(ErrorManageTest, UnknownIdentifiers) {
    Register("e3a.reason=R\ne3a.detail=T\ne3a.advice=A\n");
    Register("e3b.desc=D\ne3b.detail=T\ne3b.advice=A\n");
    Register("e3c.desc=D\ne3c.reason=R\ne3c.advice=A\n");
    Register("e3d.desc=D\ne3d.reason=R\ne3d.detail=T\n");
    const struct {
        std::string id;
        std::string missing;
    } cases[] = {
        {"e3a", "e3a.desc"},   {"e3b", "e3b.reason"},         {"e3c", "e3c.detail"},
        {"e3d", "e3d.advice"}, {"none", "none.desc"},         {"%s%n", "%s%n.desc"},
        {".", "..desc"},       {"e3d.desc", "e3d.desc.desc"},
    };
    for (const auto& c : cases) {
        Json::Value error;
        for (int time = 1; time <= 2; ++time) {
            const CapturedLog log;
            EXPECT_EQ(Errors().AppendError(c.id, error), 0x4101F000u) << c.id;
            const auto entries = log.Entries();
            ASSERT_EQ(entries.size(), 2u) << c.id;
            ExpectEntry(entries[0], Level::kWarn, 0, "not find attr=" + c.missing + ".",
                        "LoadExeceptionRes", 257);
            ExpectEntry(entries[1], Level::kError, 0x4101F000u,
                        "Resource(" + c.id + ") is not exist", "AppendError", 235);
        }
        Json::Value expected = Texts("", "", "", "");
        for (const char* member : kMembers) {
            expected[member].append("");
        }
        EXPECT_EQ(error, expected) << c.id;
    }
}

// An identifier without all its texts is looked up each time; one that was whole keeps its
// texts until the end, whatever is registered.
TEST_F(ErrorManageTest, WhatIsKept) {
    Register("e4.desc=D\ne4.reason=R\ne4.detail=T\n");
    Json::Value error;
    EXPECT_EQ(Errors().AppendError("e4", error), 0x4101F000u);
    Register("e4.advice=A\n");
    error = Json::Value();
    EXPECT_EQ(Errors().AppendError("e4", error), 0u);
    EXPECT_EQ(error, Texts("D", "T", "R", "A"));
    Register("e4.desc=new\n");
    error = Json::Value();
    EXPECT_EQ(Errors().AppendError("e4", error), 0u);
    EXPECT_EQ(error, Texts("D", "T", "R", "A"));
    ErrorManage::Destroy();
    error = Json::Value();
    EXPECT_EQ(Errors().AppendError("e4", error), 0u);
    EXPECT_EQ(error, Texts("new", "T", "R", "A"));
}

// Values that cannot hold the arrays give way, and nothing throws.
TEST_F(ErrorManageTest, ValuesOfOtherKinds) {
    RegisterWhole("e5");
    const auto with_member = [](const char* name, const Json::Value& value) {
        Json::Value error;
        error[name] = value;
        return error;
    };
    const std::string object = "[Frame][AppendError] the error is no object and becomes one";
    const struct {
        Json::Value error;
        std::vector<std::string> traces;
    } cases[] = {
        {Json::Value(), {}},
        {Json::Value(Json::objectValue), {}},
        {with_member("descArgs", Json::Value()), {}},
        {with_member("descArgs", Json::Value(Json::arrayValue)), {}},
        {Json::Value("text"), {object}},
        {Json::Value(1), {object}},
        {Json::Value(true), {object}},
        {Json::Value(Json::arrayValue), {object}},
        {with_member("reasonArgs", "text"),
         {"[Frame][AppendError] the member reasonArgs is no array and becomes one"}},
        {with_member("adviceArgs", Json::Value(Json::objectValue)),
         {"[Frame][AppendError] the member adviceArgs is no array and becomes one"}},
    };
    for (const auto& c : cases) {
        const CapturedLog log;
        Json::Value error = c.error;
        EXPECT_EQ(Errors().AppendError("e5", error), 0u);
        EXPECT_EQ(error, Texts("D", "T", "R", "A")) << c.error;
        EXPECT_EQ(log.Texts(), c.traces) << c.error;
    }
}

// The formatting comes before the choice of its format: there never is a text.
TEST_F(ErrorManageTest, FormatAttrNeverMakesAText) {
    Register("e6.desc=%s%n\ne6.reason=R %d\ne6.detail=\ne6.advice=A\n");
    for (const auto attr :
         {ERROR_ATTR_DESC, ERROR_ATTR_DETAIL, ERROR_ATTR_REASON, ERROR_ATTR_ADVICE}) {
        EXPECT_EQ(Errors().FormatAttr("e6", attr), 0x4200003Eu) << attr;
        EXPECT_EQ(Errors().FormatAttr("e6", attr, "an argument", 17), 0x4200003Eu) << attr;
        const kelp::secure::FailNth fault(kelp::secure::Routine::kSnprintf, 1);
        EXPECT_EQ(Errors().FormatAttr("e6", attr), 0x4200003Eu) << attr;
        EXPECT_TRUE(fault.Fired());
    }
    EXPECT_THAT(m_log.Texts(), IsEmpty());
    Json::Value error;
    EXPECT_EQ(Errors().AppendError("e6", error), 0u);
    EXPECT_EQ(error, Texts("%s%n", "", "R %d", "A")) << "the texts that are kept are untouched";
}

TEST_F(ErrorManageTest, FormatAttrOfNoAttribute) {
    RegisterWhole("e7");
    for (const int attr : {4, -1, 5, 2147483647, -2147483647 - 1}) {
        const CapturedLog log;
        EXPECT_EQ(Errors().FormatAttr("e7", static_cast<enAttrType>(attr)), 0x4101F000u) << attr;
        ASSERT_EQ(log.Entries().size(), 1u) << attr;
        ExpectEntry(log.Entries()[0], Level::kWarn, 0,
                    "attrIndex=" + std::to_string(attr) + " is not in range.", "FormatAttr", 156);
    }
    // The identifier was loaded all the same: it keeps its texts.
    Register("e7.desc=new\n");
    Json::Value error;
    EXPECT_EQ(Errors().AppendError("e7", error), 0u);
    EXPECT_EQ(error, Texts("D", "T", "R", "A"));
}

// Unlike AppendError, an empty identifier is one that is not found.
TEST_F(ErrorManageTest, FormatAttrOfUnknownIdentifier) {
    for (const std::string id : {"missing", ""}) {
        const CapturedLog log;
        EXPECT_EQ(Errors().FormatAttr(id, ERROR_ATTR_DESC), 0x4101F000u) << id;
        const auto entries = log.Entries();
        ASSERT_EQ(entries.size(), 2u) << id;
        ExpectEntry(entries[0], Level::kWarn, 0, "not find attr=" + id + ".desc.",
                    "LoadExeceptionRes", 257);
        ExpectEntry(entries[1], Level::kWarn, 0, "not find exception ID=" + id, "FormatAttr", 135);
    }
}

TEST_F(ErrorManageTest, RefusedFileIsTraced) {
    const std::string path = m_folder.Path("missing.res");
    EXPECT_FALSE(Errors().InitRes(path));
    const auto entries = m_log.Entries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].text,
              "[resource] " + path + ": cannot be read: No such file or directory");
    EXPECT_EQ(entries[1].text, "[Frame]failed to init res file=" + path + ".");
    EXPECT_EQ(entries[1].level, Level::kError);
    EXPECT_EQ(entries[1].code, 0u);
}

TEST_F(ErrorManageTest, OneObjectUntilDestroy) {
    ErrorManage* const errors = ErrorManage::Instance();
    EXPECT_NE(errors, nullptr);
    EXPECT_EQ(ErrorManage::Instance(), errors);
    ErrorManage::Destroy();
    ErrorManage::Destroy();
    EXPECT_NE(ErrorManage::Instance(), nullptr);
}

// Without the lock of all singletons none is made or ended.
TEST_F(ErrorManageTest, CreationLockThatCannotBeTaken) {
    ErrorManage::Destroy();
    {
        const seams::FailingLock failing(seams::mutex_error, EAGAIN);
        errno = 0;
        EXPECT_EQ(ErrorManage::Instance(), nullptr);
        EXPECT_EQ(errno, EAGAIN);
    }
    ErrorManage* const errors = ErrorManage::Instance();
    ASSERT_NE(errors, nullptr);
    const seams::FailingLock failing(seams::mutex_error, EAGAIN);
    ErrorManage::Destroy();
    EXPECT_EQ(ErrorManage::Instance(), errors) << "not ended, and had without the lock";
}

// Without the lock of the texts the operations run all the same, and errno says why.
TEST_F(ErrorManageTest, TextsLockThatCannotBeTaken) {
    RegisterWhole("e8");
    Json::Value error;
    {
        const seams::FailingLock failing(seams::rwlock_error, EAGAIN);
        errno = 0;
        EXPECT_EQ(Errors().AppendError("e8", error), 0u);
        EXPECT_EQ(errno, EAGAIN);
        errno = 0;
        EXPECT_EQ(Errors().FormatAttr("e8", ERROR_ATTR_DESC), 0x4200003Eu);
        EXPECT_EQ(errno, EAGAIN);
    }
    EXPECT_EQ(error, Texts("D", "T", "R", "A"));
    errno = 0;
    EXPECT_EQ(Errors().AppendError("e8", error), 0u) << "nothing was unlocked that was not locked";
    EXPECT_EQ(errno, 0);
}

// The first allocation is the handle, the second what is behind it.
TEST_F(ErrorManageTest, HandleWithoutAnythingBehindIt) {
    RegisterWhole("e10");
    ErrorManage::Destroy();
    {
        const FailNthAllocation failing(1);
        EXPECT_THROW(ErrorManage::Instance(), std::bad_alloc);
    }
    {
        const FailNthAllocation failing(2);
        EXPECT_NE(ErrorManage::Instance(), nullptr);
        EXPECT_TRUE(failing.Fired());
    }
    Json::Value error("as it was");
    EXPECT_FALSE(Errors().InitRes(m_folder.Path("errors.res")));
    EXPECT_EQ(Errors().AppendError("e10", error), 0u);
    EXPECT_EQ(Errors().AppendError("", error), 0u);
    EXPECT_EQ(Errors().FormatAttr("e10", ERROR_ATTR_DESC), 0u);
    EXPECT_EQ(error, Json::Value("as it was"));
    EXPECT_THAT(m_log.Texts(), IsEmpty());
    ErrorManage::Destroy();
    EXPECT_EQ(Errors().AppendError("e10", error), 0u);
    EXPECT_EQ(error, Texts("D", "T", "R", "A"));
}

// Eight threads find, miss, format and register at once.
TEST_F(ErrorManageTest, ManyThreads) {
    constexpr int kRounds = 50;
    RegisterWhole("e9");
    Register("e9half.desc=D\n");
    const std::string path = m_folder.Path("errors.res");
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kRounds; ++i) {
                Json::Value error;
                wrong += Errors().AppendError("e9", error) != 0;
                wrong += error != Texts("D", "T", "R", "A");
                wrong += Errors().AppendError("e9half", error) != ERROR_NO_RESOURCE;
                wrong += Errors().FormatAttr("e9", ERROR_ATTR_ADVICE, t) != ERROR_NO_TEXT;
                wrong += t == 0 && !Errors().InitRes(path);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

// All threads that come first get the one object.
TEST_F(ErrorManageTest, ManyThreadsMakeOneObject) {
    for (int round = 0; round < 20; ++round) {
        ErrorManage::Destroy();
        std::vector<ErrorManage*> seen(8);
        std::atomic<int> ready{0};
        std::vector<std::thread> threads;
        for (ErrorManage*& mine : seen) {
            threads.emplace_back([&ready, &mine] {
                ++ready;
                while (ready < 8) {
                    std::this_thread::yield();
                }
                mine = ErrorManage::Instance();
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_THAT(seen, testing::Each(ErrorManage::Instance()));
    }
}

}  // namespace
}  // namespace FrameUtil
