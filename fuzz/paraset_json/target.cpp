// Any text as the JSON of a parameter set: what is taken prints, and what was printed
// reads back as the same tree and prints the same again.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string_view>

#include "kelpctl/paraset/compare.h"
#include "kelpctl/paraset/tree_json.h"

namespace {

using FrameUtil::CParaSet;

// Not assert(): the claims hold in every build.
void Require(bool claim, const char* what, const kelpctl::Complaint& why) {
    if (!claim) {
        std::fprintf(stderr, "paraset_json: %s: %s\n", what, why.Line().c_str());
        std::abort();
    }
}

std::string Printed(CParaSet& tree) {
    std::ostringstream out;
    kelpctl::PrintTree(tree, out);
    return out.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    CParaSet tree("root");
    kelpctl::Complaint why;
    if (!kelpctl::ParseTree(text, tree, why)) {
        Require(!why.text.empty(), "a refusal without a reason", why);
        return 0;
    }
    const std::string printed = Printed(tree);
    CParaSet again("root");
    Require(kelpctl::ParseTree(printed, again, why), "what was printed is refused", why);
    const auto loss = kelpctl::FirstLoss(tree, again, kelpctl::Nulls::kStay);
    Require(!loss, "what was printed reads back as another tree", loss.value_or(why));
    Require(Printed(again) == printed, "a tree prints differently when it is read", why);
    return 0;
}
