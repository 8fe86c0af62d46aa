#include "nemgr/results.h"

namespace nemgr {
namespace {

struct Text {
    Result result;
    const char* text;
};

constexpr Text kTexts[] = {
    {Result::kSuccess, "success"},
    {Result::kBadArgument, "bad argument"},
    {Result::kNoAnswer, "the element does not answer"},
    {Result::kElementRefuses, "the element refuses"},
    {Result::kElementNonsense, "the element answers nonsense"},
    {Result::kUnknownVendor, "no such vendor"},
    {Result::kNoRegistry, "the vendor registry is not available"},
    {Result::kInternalFault, "the command failed inside the server"},
    {Result::kNoDatabase, "the database fails"},
    {Result::kUnknownElement, "the inventory has no such element"},
};

}  // namespace

const char* ResultText(Result result) {
    for (const Text& entry : kTexts) {
        if (entry.result == result) {
            return entry.text;
        }
    }
    return "unknown result";
}

}  // namespace nemgr
