#include <unistd.h>

// [error-texts]
#include <json/json.h>

#include <iostream>

#include "frameutil/error_manage.h"

static void ShowErrors() {
    FrameUtil::ErrorManage* errors = FrameUtil::ErrorManage::Instance();
    if (!errors->InitRes("errors.res"))
        return;
    Json::Value answer;
    errors->AppendError("port.busy", answer);
    errors->AppendError("ne.lost", answer);
    std::cout << answer << std::endl;
}
// [/error-texts]

int main() {
    if (chdir(SNIPPETS_FOLDER) != 0) {
        return 1;
    }
    ShowErrors();
    FrameUtil::ErrorManage::Destroy();
}
