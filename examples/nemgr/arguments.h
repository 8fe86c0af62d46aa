// nemgr/arguments.h - reading a command's arguments.
//
// Thread rule: one thread.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>

#include "frameutil/paraset.h"

namespace nemgr {

class Arguments {
  public:
    /// Throws CommandFailure (kBadArgument) unless `request`, which must outlive this
    /// object, holds one row whose names are all among `known`.
    Arguments(FrameUtil::CParaSet& request, std::initializer_list<const char*> known);

    /// The text `name`, which may have been sent as an integer; nothing when it is not
    /// there. Throws CommandFailure when it is anything else.
    std::optional<std::string> Text(const char* name) const;

    /// The integer `name` from `least` to `most`; nothing when it is not there. Throws
    /// CommandFailure when it is anything else.
    std::optional<int> Integer(const char* name, int least, int most) const;

  private:
    FrameUtil::CParaSet& request_;
};

}  // namespace nemgr
