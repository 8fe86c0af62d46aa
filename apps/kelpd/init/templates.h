// kelpd/init/templates.h - the files of a new installation root, as they stand in the folder
// root/ of this program's sources; the build puts them into the program.
//
// immutable
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kelpd {

struct Template {
    std::string_view path;  ///< below the installation's folder, with slashes
    std::string_view text;
};

const std::vector<Template>& Templates();

/// `text` with every "{{name}}" replaced by that name's value. A name without a value is a
/// fault of this program: throws std::out_of_range.
std::string Fill(std::string_view text, const std::map<std::string, std::string>& values);

}  // namespace kelpd
