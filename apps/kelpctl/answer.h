// kelpctl/answer.h - an answer as it is shown: what stood in the common response, in the
// order and with the octets it had there.
//
// Thread rule: thread-compatible.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "frameutil/records.h"

namespace kelpctl {

/// One cell; monostate: the cell carried no value.
using Cell = std::variant<std::monostate, bool, std::int64_t, double, std::string>;

struct Table {
    std::optional<std::string> name;
    std::vector<std::string> columns;     ///< may be fewer than a row has cells
    std::vector<std::vector<Cell>> rows;  ///< each of any length
};

struct Answer {
    std::int64_t ret_code = 0;
    std::optional<std::int64_t> ret_code_ex;
    std::optional<std::string> ver;
    std::vector<Table> tables;
};

/// Takes `response` apart; its texts are moved out of it.
Answer TakeAnswer(FrameUtil::AsnCommonResponse& response);

/// What a failed command says about itself: an answer whose "##retCode" is not 0 may carry
/// one row with the text columns "errorText" (what the code means), "errorItem" (the thing
/// at fault) and "errorAdvice" (what to do).
struct ErrorRow {
    std::string text;
    std::string item;
    std::string advice;
};

/// Takes the error row out of `answer`, whose tables are empty afterwards; nothing when
/// its code is 0 or it carries something else.
std::optional<ErrorRow> TakeErrorRow(Answer& answer);

}  // namespace kelpctl
