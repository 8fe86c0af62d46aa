// The steps of FrameUtil::Init() and FrameUtil::DestroyKelp() as they are taken. The linker
// puts these notes in front of the operations themselves, which then run (see
// CMakeLists.txt); only the REST process groups, which need a gateway, are noted instead
// of loaded.
//
//     steps::Forget();
//     FrameUtil::Init();
//     EXPECT_THAT(steps::Taken(), ElementsAre("CFrameTaskMgr::Instance", ...));
//
// thread-safe.
#pragma once

#include <string>
#include <vector>

namespace steps {

std::vector<std::string> Taken();
void Forget();

/// Also writes every step to standard error, for a process whose end is looked at from
/// outside.
void ShowOnStandardError();

/// What the loading of the REST process groups returns; set while nobody loads them.
inline int rest_group_result = 0;

}  // namespace steps
