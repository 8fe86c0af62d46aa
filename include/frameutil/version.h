// frameutil/version.h - which release of the library a program is compiled against.
#pragma once

#define FRAMEUTIL_VERSION "0.1.0"
