// From a parameter set to octets.
#pragma once

#include <cstddef>

#include "codec/desc_table.h"
#include "codec/fault.h"
#include "frameutil/paraset.h"

namespace FrameUtil {

/// What sets the two builds apart.
struct BuildForm {
    bool integers_as_text;  // of named values
    int real_copy_line;     // the number that a failing copy is traced with
};

class Builder {
  public:
    /// Writes no further than `end`.
    Builder(const DescTable& table, const BuildForm& form, unsigned char* begin, unsigned char* end,
            CodecFault* fault)
        : m_table(table), m_form(form), m_end(end), m_fault(fault, begin) {}

    /// Writes `para` at `at`; the position behind it, or null.
    unsigned char* Element(CParaSet& para, unsigned char* at, int type, int desc, int tag);

  private:
    std::size_t Room(const unsigned char* at) const { return static_cast<std::size_t>(m_end - at); }
    unsigned char* Reserve(unsigned char* at, int octets);
    unsigned char* FillReserved(unsigned char* header, unsigned char* at, int tag);

    unsigned char* Primitive(unsigned char* at, int tag, std::size_t length);
    unsigned char* Integer(const CParaSet& para, unsigned char* at, int tag);
    unsigned char* String(const CParaSet& para, unsigned char* at, int tag);
    unsigned char* Real(const CParaSet& para, unsigned char* at, int tag);
    unsigned char* Null(unsigned char* at);
    unsigned char* EmptyStructure(unsigned char* at);

    // What `write` returns, one level further down; null where there is none left.
    template <class Write>
    unsigned char* Deeper(unsigned char* at, Write write);

    unsigned char* Structure(CParaSet& para, unsigned char* at, int desc, int tag);
    unsigned char* Wrapper(CParaSet& para, unsigned char* at, int tag);
    unsigned char* List(CParaSet& para, unsigned char* at, int desc, int tag);
    unsigned char* NamedValue(CParaSet& para, unsigned char* at, int tag);

    const DescTable& m_table;
    const BuildForm m_form;
    unsigned char* const m_end;
    FaultRecorder m_fault;
    unsigned m_depth = 0;
};

}  // namespace FrameUtil
