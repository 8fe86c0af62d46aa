// frameutil/error_manage.h - ErrorManage, the four texts that tell a user of a failure.
//
//     FrameUtil::ErrorManage* errors = FrameUtil::ErrorManage::Instance();
//     errors->InitRes("/opt/nms/oss/res/errors.res");
//
//     Json::Value error;                          // <json/value.h> of jsoncpp
//     errors->AppendError("port.busy", error);
//     // {"descArgs": ["The port is in use."], "detailArgs": [""],
//     //  "reasonArgs": ["Another service holds it."], "adviceArgs": ["Look for it."]}
//
// A failure is known by an identifier, here "port.busy", and has a description, a reason,
// a detail and an advice: the texts "port.busy.desc", "port.busy.reason",
// "port.busy.detail" and "port.busy.advice" of the registered resource files
// (docs/formats/resources.md). An identifier that lacks one of them is unknown.
//
// The four texts are looked up once and kept until Destroy(). A file that is registered
// later does not change the texts of an identifier that was used before.
//
// Status codes: 0 success, ERROR_NO_RESOURCE, ERROR_NO_TEXT.
//
// Should memory have run out while the object was made, it is a handle without anything
// behind it: its operations do nothing and return false or 0, until Destroy().
//
// thread-safe, but Destroy(). Each operation but InitRes() has the lock of all texts for
// itself while it runs; should that lock not be had, errno says why and the operation runs
// without it. Nothing throws but std::bad_alloc.
#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "frameutil/export.h"

namespace Json {
class Value;
}

namespace FrameUtil {

template <class T>
class Singleton;

/// No such identifier, or no such text: it is empty, one of its four texts is missing, or
/// the attribute is none.
inline constexpr unsigned int ERROR_NO_RESOURCE = 0x4101F000;
/// FormatAttr() made no text.
inline constexpr unsigned int ERROR_NO_TEXT = 0x4200003E;

/// One of the four texts.
enum enAttrType : int {
    ERROR_ATTR_DESC = 0,
    ERROR_ATTR_DETAIL = 1,
    ERROR_ATTR_REASON = 2,
    ERROR_ATTR_ADVICE = 3,
};

class FRAMEUTIL_API ErrorManage {
  public:
    /// The process's object, made by the first call. Null only when the lock under which
    /// it is made cannot be had. Throws std::bad_alloc, and the next call tries again.
    static ErrorManage* Instance();

    /// Ends the object and forgets the texts that were kept (not the files: those stay
    /// registered). Nobody may be using it. It is not an error if there is none.
    static void Destroy();

    /// Registers the resource file at `path` with KelpAddResFileWithAbsolute() (see
    /// kelp/resource.h). True on success; false when the file is refused: the platform's
    /// log line says why, and a trace "failed to init res file=PATH." follows it.
    bool InitRes(const std::string& path);

    /// Checks that `id` has the text `attr`, and never makes one: the result is never 0.
    ///
    /// The arguments are formatted before the text that is their format has been looked
    /// up, so the formatted text is always empty and ERROR_NO_TEXT the result. That is
    /// kept: were the resource's text to become a format, whoever can write a resource
    /// file could read and write the process's memory. Arguments are not looked at. Use
    /// AppendError(), or KelpGetResString() for a single text.
    ///
    /// | result | when |
    /// |---|---|
    /// | ERROR_NO_RESOURCE | `id` is unknown: a warning "not find exception ID=ID" |
    /// | ERROR_NO_RESOURCE | `attr` is not 0 to 3: "attrIndex=N is not in range." |
    /// | ERROR_NO_TEXT | otherwise |
    ///
    /// An unknown identifier has a second warning, "not find attr=KEY.", before the first.
    unsigned int FormatAttr(const std::string& id, enAttrType attr, ...);

    /// Appends the four texts of `id` to the arrays "descArgs", "detailArgs", "reasonArgs"
    /// and "adviceArgs" of `error`. The members' names end in "Args" although they hold
    /// the texts themselves: clients expect them so.
    ///
    /// Result 0 on success. ERROR_NO_RESOURCE with `error` untouched and no log line when
    /// `id` is empty. ERROR_NO_RESOURCE when it is unknown: an empty text is appended to
    /// each array, so that the four stay of equal length; a warning names the key that is
    /// missing ("not find attr=KEY."), an error the identifier ("Resource(ID) is not
    /// exist"), and the next call looks again.
    ///
    /// Members that are not there are made. An `error` that is neither null nor an object
    /// becomes an object, and one of the four members that is no array an array, with a
    /// trace that says so: what it was is lost.
    unsigned int AppendError(const std::string& id, Json::Value& error);

    ErrorManage(const ErrorManage&) = delete;
    ErrorManage& operator=(const ErrorManage&) = delete;

  private:
    friend class Singleton<ErrorManage>;
    class ErrorManageImpl;

    ErrorManage();
    ~ErrorManage();

    static std::atomic<ErrorManage*> m_pInstance;
    std::unique_ptr<ErrorManageImpl> m_pImpl;
};

}  // namespace FrameUtil
