#include "nemgr/results.h"

namespace nemgr {
namespace {

struct Text {
    Result result;
    const char* id;
    const char* text;
};

constexpr Text kTexts[] = {
    {Result::kSuccess, "nemgr.success", "success"},
    {Result::kBadArgument, "nemgr.badArgument", "bad argument"},
    {Result::kNoAnswer, "nemgr.noAnswer", "the element does not answer"},
    {Result::kElementRefuses, "nemgr.elementRefuses", "the element refuses"},
    {Result::kElementNonsense, "nemgr.elementNonsense", "the element answers nonsense"},
    {Result::kUnknownVendor, "nemgr.unknownVendor", "no such vendor"},
    {Result::kNoRegistry, "nemgr.noRegistry", "the vendor registry is not available"},
    {Result::kInternalFault, "nemgr.internalFault", "the command failed inside the server"},
    {Result::kNoDatabase, "nemgr.noDatabase", "the database fails"},
    {Result::kUnknownElement, "nemgr.unknownElement", "the inventory has no such element"},
    {Result::kNoGateway, "nemgr.noGateway", "the platform's gateway cannot be asked"},
};

constexpr Text kUnknown = {Result::kSuccess, "nemgr.unknown", "unknown result"};

const Text& Find(Result result) {
    for (const Text& entry : kTexts) {
        if (entry.result == result) {
            return entry;
        }
    }
    return kUnknown;
}

}  // namespace

const char* ResultText(Result result) {
    return Find(result).text;
}

const char* ResultId(Result result) {
    return Find(result).id;
}

}  // namespace nemgr
