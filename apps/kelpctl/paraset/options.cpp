#include "kelpctl/paraset/options.h"

#include <limits>

#include "kelpctl/paraset/types.h"

namespace kelpctl {
namespace {

constexpr const char* kFooter = R"(
The form of the octets: --key N, a structure of the description file (--desc, or the one of
the installation that OSS_ROOT names); --type T, with --desc-arg and --tag, any element of
the codec; --request or --response, a common record; none of them, a value without a
description: a scalar, a list of scalars, named scalars.

JSON: {"$bytes": "ff00"} octets that are no UTF-8; {"$double": "NaN"}; {"$resource": {...}};
{"$absent": true}; {"$name": "...", "$desc": "...", "$value": ...}; a name that begins with $
is written with $$. See docs/kelpctl.md and docs/codec.md.

Exit status:
  0  done
  2  wrong usage: command line, a file that cannot be read, a description file with
     malformed lines, JSON that is malformed or does not fit; nothing was written
  6  the octets are malformed, truncated, or not of the form that was asked for
  7  the output could not be written
)";

bool NeedsDescription(const Form& form) {
    return form.kind == Form::Kind::kCodec &&
           (form.type == codec_type::kStructure || form.type > codec_type::kLastCode ||
            (form.type == codec_type::kList && form.desc > codec_type::kLastCode));
}

}  // namespace

ParaSetCommandLine::ParaSetCommandLine(CLI::App& app) {
    paraset_ = app.add_subcommand("paraset", "parameter sets: JSON to BER octets, and back");
    paraset_->require_subcommand(1);
    encode_ = paraset_->add_subcommand("encode", "JSON in, octets out");
    decode_ = paraset_->add_subcommand("decode", "octets in, JSON out");
    show_ = paraset_->add_subcommand("show", "print octets as elements and as a tree");
    paraset_->footer(kFooter);
    for (CLI::App* command : {encode_, decode_, show_}) {
        command->footer(kFooter);
        AddForm(*command);
        command->add_option("input", options_.input, "file; -: standard input")
            ->type_name("FILE")
            ->capture_default_str();
    }
    for (CLI::App* command : {encode_, decode_}) {
        command
            ->add_option("-o,--output", options_.output,
                         "file, written whole or not at all; -: standard output")
            ->type_name("FILE");
    }
    encode_->add_flag("--as-string", options_.encode.as_string,
                      "integers of named values as text, for peers that expect it");
    encode_->add_flag("--one-way", options_.encode.one_way,
                      "write it even if it would read back as something else");
    encode_->add_flag("--hex", options_.hex, "write octets as hexadecimal text");
    decode_->add_flag("--hex", options_.hex, "octets are hexadecimal text");
    show_->add_flag("--hex", options_.hex, "octets are hexadecimal text");
}

void ParaSetCommandLine::AddForm(CLI::App& command) {
    command.add_option("--desc", options_.description, "description file")->type_name("FILE");
    CLI::Option* key =
        command.add_option("--key", key_, "key of the description file")
            ->type_name("N")
            ->check(CLI::Range(codec_type::kLastCode + 1, std::numeric_limits<int>::max()));
    CLI::Option* type = command.add_option("--type", type_, "type code")->type_name("T");
    command.add_option("--desc-arg", desc_, "what goes with the type")->needs(type);
    command.add_option("--tag", tag_, "tag octet; -1: the type's own")->needs(type);
    CLI::Option* request = command.add_flag("--request", request_, "a common request");
    CLI::Option* response = command.add_flag("--response", response_, "a common response");
    key->excludes(type);
    key->excludes(request);
    key->excludes(response);
    type->excludes(request);
    type->excludes(response);
    request->excludes(response);
}

std::optional<ParaSetOptions> ParaSetCommandLine::Options(std::string& why) const {
    ParaSetOptions options = options_;
    options.action = encode_->parsed()   ? ParaSetOptions::Action::kEncode
                     : decode_->parsed() ? ParaSetOptions::Action::kDecode
                                         : ParaSetOptions::Action::kShow;
    if (request_ || response_) {
        options.form.kind = request_ ? Form::Kind::kRequest : Form::Kind::kResponse;
        if (options.encode.as_string || !options.description.empty()) {
            why = "common records have no description and no --as-string";
            return std::nullopt;
        }
    } else if (key_ || type_) {
        options.form = {Form::Kind::kCodec, key_ ? *key_ : *type_, desc_.value_or(-1),
                        tag_.value_or(-1)};
    } else if (!options.description.empty()) {
        why = "--desc needs --key or --type";
        return std::nullopt;
    }
    options.described = NeedsDescription(options.form);
    return options;
}

}  // namespace kelpctl
