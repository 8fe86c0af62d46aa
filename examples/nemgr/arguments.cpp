#include "nemgr/arguments.h"

#include <algorithm>

#include "nemgr/results.h"

namespace nemgr {
namespace {

using FrameUtil::CParaSet;

[[noreturn]] void Refuse(const std::string& name, const char* why) {
    throw CommandFailure(Result::kBadArgument, name + ": " + why);
}

}  // namespace

Arguments::Arguments(CParaSet& request, std::initializer_list<const char*> known)
    : request_(request) {
    if (request.GetRowCount() > 1) {
        throw CommandFailure(Result::kBadArgument, "more than one row of arguments");
    }
    for (const auto& [name, child] : request.GetMapValue()) {
        const bool header = !name.empty() && name[0] == '#';
        if (!header && std::find(known.begin(), known.end(), name) == known.end()) {
            Refuse(name, "no such argument");
        }
    }
}

std::optional<std::string> Arguments::Text(const char* name) const {
    CParaSet* argument = request_.find(name);
    if (argument == nullptr || argument->isNull()) {
        return std::nullopt;
    }
    if (argument->type() != CParaSet::PARA_STRING && argument->type() != CParaSet::PARA_INT) {
        Refuse(name, "not a text");
    }
    return argument->asString();
}

std::optional<int> Arguments::Integer(const char* name, int least, int most) const {
    const CParaSet* argument = request_.find(name);
    if (argument == nullptr || argument->isNull()) {
        return std::nullopt;
    }
    if (argument->type() != CParaSet::PARA_INT) {
        Refuse(name, "not an integer");
    }
    if (argument->asInt() < least || argument->asInt() > most) {
        Refuse(name, "out of range");
    }
    return argument->asInt();
}

}  // namespace nemgr
