// frameutil/platform.h - what the library offers a process as a whole: the REST groups it
// serves.
//
// Thread rule: thread-safe.
#pragma once

#include "frameutil/restgroup.h"
