// frameutil/white_list.h - QWhiteList, the commands of a process that carry no token.
//
//     // /opt/nms/oss/etc/3001_QWhiteList.properties holds "2167" in a line
//     FrameUtil::QWhiteList::Instance()->Init("/opt/nms/oss/etc/");
//     std::vector<std::string> commands;
//     FrameUtil::QWhiteList::Instance()->GetWhiteList(commands);   // {"2167"}
//
// The commands of a process's queue interface must arrive without a security token; one
// of them that carries a token is dropped. The list is loaded from a file named after the
// process and compared with a command's code in decimal.
//
// The file has an entry in a line. Blanks, tabs and carriage returns around an entry do
// not count, except that an entry of a single character keeps what stands behind it: "7 "
// is an entry of two characters, which no command code equals. That is how such files are
// read; write no blank behind a one-digit code, and no carriage return. Lines that are
// empty and lines that begin with '#' mean nothing, nor does a byte-order mark.
//
// Should memory have run out while the object was made, it is a handle without anything
// behind it: Init() then does nothing and returns 0, and the list is empty, until Destroy().
//
// thread-safe, but Destroy(). Nothing throws but std::bad_alloc, and the list is as it was
// then.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "frameutil/export.h"

namespace FrameUtil {

template <class T>
class Singleton;

class FRAMEUTIL_API QWhiteList {
  public:
    /// The process's list, made empty by the first call. Null only when the lock under
    /// which it is made cannot be had. Throws std::bad_alloc, and the next call tries
    /// again.
    static QWhiteList* Instance();

    /// Ends the list. Nobody may be using it. It is not an error if there is none.
    static void Destroy();

    /// Appends the entries of the file `dir` + process identifier in decimal +
    /// "_QWhiteList.properties". No separator is put between, so `dir` ends with its own.
    /// A second call with the same file lists its entries twice.
    ///
    /// Result: 0; -1 when the process has no identifier (the low 16 bits of
    /// KelpGetProcId() are 0), with an error "Get procId error!" and the list untouched.
    ///
    /// A file that is not there is no failure: a warning "WhiteList is not exist!" and the
    /// list as it was. The same for a file that is not regular, cannot be read or is
    /// larger than 64 MiB, with a second warning that names it and the reason.
    ///
    /// A file that everybody may write to is loaded with a warning. An entry that is no
    /// command code is kept, since the list is what the file says, with a warning that
    /// names file and line; after 20 of them one line says how many more there are.
    int Init(const std::string& dir);

    /// Replaces `out` with a copy of the entries, in the order of the file.
    void GetWhiteList(std::vector<std::string>& out) const;

    QWhiteList(const QWhiteList&) = delete;
    QWhiteList& operator=(const QWhiteList&) = delete;

  private:
    friend class Singleton<QWhiteList>;
    class QWhiteListImpl;

    QWhiteList();
    ~QWhiteList();

    static std::atomic<QWhiteList*> m_pInstance;
    std::unique_ptr<QWhiteListImpl> m_pImpl;
};

}  // namespace FrameUtil
