#include "kelpctl/paraset/command.h"

#include <unistd.h>

#include <cerrno>
#include <iostream>
#include <memory>
#include <sstream>
#include <system_error>

#include "kelpctl/paraset/description.h"
#include "kelpctl/paraset/elements.h"
#include "kelpctl/paraset/octets_text.h"
#include "kelpctl/paraset/tree_json.h"
#include "kelpctl/paraset/undescribed.h"
#include "kelpctl/quiet_log.h"
#include "kelpctl/status.h"
#include "support/file.h"
#include "support/utf8.h"
#include "support/write_file.h"

namespace kelpctl {
namespace {

using FrameUtil::CEndeCode;
using FrameUtil::CParaSet;

constexpr std::size_t kMostHexText = std::size_t{4} * kMostOctets;  // and white space

int Fail(int status, const std::string& text) {
    std::cout.flush();
    std::cerr << "kelpctl: " << text << '\n';
    return status;
}

std::string NameOfInput(const ParaSetOptions& options) {
    return options.input == "-" ? "standard input" : app::ShowText(options.input);
}

std::unique_ptr<CEndeCode> CodecFor(const ParaSetOptions& options, std::string& why) {
    std::string file = options.description;
    if (file.empty() && options.described) {
        file = InstalledDescription();
        if (file.empty()) {
            why = "a description is needed: give --desc FILE, or set OSS_ROOT";
            return nullptr;
        }
    }
    auto codec = LoadDescription(file, why);
    const bool key = options.form.kind == Form::Kind::kCodec && options.form.type > 1023;
    if (codec != nullptr && key && codec->findDesc(options.form.type).empty()) {
        why = app::ShowText(file) + ": describes no key " + std::to_string(options.form.type);
        return nullptr;
    }
    return codec;
}

int WriteOutput(const ParaSetOptions& options, const std::string& octets) {
    std::string why;
    if (!options.output.empty() && options.output != "-") {
        return app::WriteFile(options.output, octets, why) ? kOk : Fail(kNotWritten, why);
    }
    if (!app::WriteAll(STDOUT_FILENO, octets)) {
        const int error = errno;
        return Fail(kNotWritten, "standard output: " + std::generic_category().message(error));
    }
    return kOk;
}

int Encode(const ParaSetOptions& options, const CEndeCode& codec) {
    const bool binary = !options.hex;
    if (binary && options.output.empty() && isatty(STDOUT_FILENO) != 0) {
        return Fail(kUsage, "octets are not written to a terminal: use -o FILE, a pipe or --hex");
    }
    std::string text;
    std::string why;
    if (!app::ReadFile(options.input, kTreeJsonBytes, text, why)) {
        return Fail(kUsage, why);
    }
    CParaSet tree(kRootName);
    Complaint complaint;
    if (!ParseTree(text, tree, complaint)) {
        const std::string where = complaint.path.empty() ? "" : complaint.path + ": ";
        return Fail(kUsage, NameOfInput(options) + ": " + where + complaint.text);
    }
    std::string octets;
    if (!EncodeTree(codec, options.form, options.encode, tree, octets, why)) {
        return Fail(kUsage, NameOfInput(options) + ": " + why);
    }
    return WriteOutput(options, binary ? octets : TextOfOctets(octets));
}

// The octets to decode or show; false with the exit status when there are none.
bool ReadOctets(const ParaSetOptions& options, std::string& octets, int& status) {
    std::string why;
    const std::size_t limit = options.hex ? kMostHexText : std::size_t{kMostOctets};
    if (!app::ReadFile(options.input, limit, octets, why)) {
        status = Fail(kUsage, why);
        return false;
    }
    if (options.hex) {
        auto read = OctetsOfText(octets, why);
        if (!read) {
            status = Fail(kUnreadable, NameOfInput(options) + ": " + why);
            return false;
        }
        octets = *std::move(read);
    }
    if (octets.empty()) {
        status = Fail(kUnreadable, NameOfInput(options) + ": no octets are there");
        return false;
    }
    return true;
}

void Warn(const ParaSetOptions& options, const std::string& note) {
    if (!note.empty()) {
        std::cerr << "kelpctl: warning: " << NameOfInput(options) << ": " << note << '\n';
    }
}

int Decode(const ParaSetOptions& options, const CEndeCode& codec) {
    std::string octets;
    int status = kOk;
    if (!ReadOctets(options, octets, status)) {
        return status;
    }
    CParaSet tree(kRootName);
    std::string why;
    std::string note;
    if (!DecodeTree(codec, options.form, octets, tree, why, note)) {
        return Fail(kUnreadable, NameOfInput(options) + ": " + why);
    }
    std::ostringstream text;
    PrintTree(tree, text);
    status = WriteOutput(options, text.str());
    Warn(options, note);
    return status;
}

// What display() would log, with nothing in it that a terminal acts on.
void PrintDump(CParaSet& tree, std::ostream& out) {
    std::ostringstream dump;
    dump.imbue(std::locale::classic());
    int count = 0;
    tree.subDisplay(nullptr, dump, count);
    std::istringstream lines(dump.str());
    for (std::string line; std::getline(lines, line);) {
        out << app::ShowText(line) << '\n';
    }
}

int Flushed() {
    std::cout.flush();
    return std::cout ? kOk : Fail(kNotWritten, "standard output cannot be written");
}

int Show(const ParaSetOptions& options, const CEndeCode& codec) {
    std::string octets;
    int status = kOk;
    if (!ReadOctets(options, octets, status)) {
        return status;
    }
    const auto refuse = [&](const std::string& why) {
        return Fail(kUnreadable, NameOfInput(options) + ": " + why);
    };
    Form form = options.form;
    std::string no_tree;
    if (form.kind == Form::Kind::kUndescribed) {
        // Octets of any origin are worth showing, also those that only a description turns
        // into a tree.
        form = FormOfOctets(octets, no_tree).value_or(form);
    }
    std::cout << "  offset depth  header+contents  element\n";
    const WalkResult walk = WalkElements(codec, form, octets, [](const WalkedElement& element) {
        PrintElement(element, std::cout);
    });
    if (walk.reason != nullptr) {
        return refuse(std::string(walk.reason) + " at offset " + std::to_string(walk.offset));
    }
    if (walk.end != octets.size()) {
        return refuse("octets behind the element at offset " + std::to_string(walk.end));
    }
    CParaSet tree(kRootName);
    std::string why = no_tree;
    std::string note;
    if (!why.empty() || !DecodeTree(codec, form, octets, tree, why, note)) {
        if (options.form.kind != Form::Kind::kUndescribed) {
            return refuse(why);
        }
        std::cout << "\nno tree: " << why << '\n';
        return Flushed();
    }
    PrintDump(tree, std::cout);
    Warn(options, note);
    return Flushed();
}

}  // namespace

int RunParaSet(const ParaSetOptions& options) {
    QuietLog();
    std::string why;
    const auto codec = CodecFor(options, why);
    if (codec == nullptr) {
        return Fail(kUsage, why);
    }
    switch (options.action) {
        case ParaSetOptions::Action::kEncode:
            return Encode(options, *codec);
        case ParaSetOptions::Action::kDecode:
            return Decode(options, *codec);
        default:
            return Show(options, *codec);
    }
}

}  // namespace kelpctl
