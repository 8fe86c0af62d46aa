// [identifiers]
#include <cstdio>
#include <string>

#include "frameutil/strutil.h"

using namespace FrameUtil;

int main() {
    StrUIDFactory factory;
    factory.Append("net", 7).Append("ne", "Oslo,east").Append("port", 3);
    const std::string name = factory.GetStr();
    std::printf("%s\n", name.c_str());

    StrUIDParser parser;
    UIDFault fault;
    if (!parser.Parse(name.c_str(), &fault)) {
        std::printf("no identifier: character %lu: %s\n", fault.offset + 1, fault.reason);
        return 1;
    }
    std::string ne;
    long port = 0;
    if (parser.GetValue(ne, "ne", 0) && parser.GetValue(port, "port", 0)) {
        std::printf("port %ld of %s\n", port, ne.c_str());
    }
    while (parser.Next()) {
        std::printf("  %s: %s\n", parser.Type().c_str(), parser.StrValue().c_str());
    }
    std::printf("a %s below %s\n", StrUIDParser::GetMOC(name.c_str()).c_str(),
                StrUIDParser::GetParentFDN(name.c_str()).c_str());
}
// [/identifiers]
