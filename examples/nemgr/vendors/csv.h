// nemgr/vendors/csv.h - comma-separated values as RFC 4180 describes them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace nemgr::vendors {

/// Reads records one after the other out of a text, which must outlive the reader. Fields
/// may stand in double quotes and then hold commas, line ends and, doubled, quotes. What
/// is malformed is read as it stands: a reader of records checks how many fields it got.
class CsvReader {
  public:
    explicit CsvReader(std::string_view text) : rest_(text) {}

    /// The next record's fields; false at the end.
    bool Next(std::vector<std::string>& fields);

  private:
    bool TakeField(std::string& field);

    std::string_view rest_;
};

}  // namespace nemgr::vendors
