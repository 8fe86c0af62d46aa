// Prints the group names of the process and handle of its arguments, one a line, as a server
// process of the installation gets them: from the gateway, over HTTPS.

#include <cstdlib>
#include <iostream>
#include <map>
#include <string>

#include "frameutil/restgroup.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        return 2;
    }
    std::map<int, std::map<int, std::string>> groups;
    const int result =
        FrameUtil::GetRestGroupByMRBProcHandle(std::atoi(argv[1]), std::atoi(argv[2]), groups);
    for (const auto& [process, handles] : groups) {
        for (const auto& [handle, name] : handles) {
            std::cout << process << '.' << handle << ' ' << name << '\n';
        }
    }
    return result == 0 ? 0 : 1;
}
