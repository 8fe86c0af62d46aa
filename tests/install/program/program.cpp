// A user's first program against the installed library.
#include <cstdio>

#include "frameutil/frameutil.h"

int main() {
    FrameUtil::CParaSet table("table"), row("row");
    row["name"] = "eth0";
    row["mtu"] = 1500;
    table.AddRow(0, row);
    table["##TableCount"] = 1;
    table["##retCode"] = 0;
    FrameUtil::AsnCommonResponse response;
    table.Para2CommonRspAsn(response);
    AsnBuffer octets;
    FrameUtil::AsnCommonResponse back;
    if (!AsnEncode(response, octets) || !AsnDecode(octets.data(), octets.size(), back)) {
        return 1;
    }
    FrameUtil::CParaSet answer("answer");
    answer.CommonRspAsn2Para(back);
    std::printf("%s %d %s\n", answer["name"].asString(), answer["mtu"].asInt(), FRAMEUTIL_VERSION);
    return answer["mtu"].asInt() == 1500 ? 0 : 1;
}
