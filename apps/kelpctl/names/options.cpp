#include "kelpctl/names/options.h"

namespace kelpctl {

NamesCommandLine::NamesCommandLine(CLI::App& app) {
    uid_ = app.add_subcommand("uid", "resource identifiers: net=7,ne=Oslo\\ceast");
    uid_->require_subcommand(1);
    CLI::App* parse = uid_->add_subcommand("parse", "print the pairs of an identifier");
    parse->add_option("text", options_.text, "identifier; -: standard input")->required();
    parse->add_flag("--json", options_.json, "print class, parent and pairs as JSON");
    build_ = uid_->add_subcommand("build", "print the identifier of pairs");
    build_->add_option("--parent", options_.parent, "identifier that it begins with")
        ->type_name("TEXT");
    build_->add_option("pair", options_.pairs, "key=value")->required();
    guid_ = app.add_subcommand("guid", "spell an identifier of 16 bytes");
    guid_->add_option("text", options_.text, "hexadecimal digits; -: standard input")->required();
}

NameOptions NamesCommandLine::Options() const {
    NameOptions options = options_;
    options.action = guid_->parsed()    ? NameOptions::Action::kGuid
                     : build_->parsed() ? NameOptions::Action::kUidBuild
                                        : NameOptions::Action::kUidParse;
    return options;
}

}  // namespace kelpctl
