// From octets to a parameter set.
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "codec/desc_table.h"
#include "codec/fault.h"
#include "frameutil/paraset.h"

namespace FrameUtil {

class Parser {
  public:
    Parser(const DescTable& table, const unsigned char* begin, CodecFault* fault)
        : m_table(table), m_fault(fault, begin) {}

    /// Reads the element at `at`, within [at, end), into `para`. The position behind it;
    /// `at` when another element is there; null when it is malformed.
    const unsigned char* Element(CParaSet& para, const unsigned char* at, const unsigned char* end,
                                 int type, int desc, int tag);

  private:
    // An element's header, read and checked against what is there.
    struct Header {
        int tag;
        std::span<const unsigned char> contents;
        const unsigned char* end() const { return contents.data() + contents.size(); }
    };

    bool ReadHeader(const unsigned char* at, const unsigned char* end, Header& header);

    const unsigned char* Integer(CParaSet& para, const Header& header);
    const unsigned char* String(CParaSet& para, const Header& header);
    const unsigned char* Null(const Header& header);
    const unsigned char* Real(CParaSet& para, const Header& header);

    const unsigned char* Explicit(CParaSet& para, const unsigned char* at, const Header& header,
                                  int type, int desc);
    const unsigned char* Structure(CParaSet& para, const Header& header, int desc);
    const unsigned char* List(CParaSet& para, const Header& header, int desc);
    const unsigned char* NamedValue(CParaSet& para, const Header& header);

    const DescTable& m_table;
    FaultRecorder m_fault;
    unsigned m_depth = 0;
};

}  // namespace FrameUtil
