// Marks what libframeutil exports; everything else in the library is hidden.
#pragma once

#define FRAMEUTIL_API __attribute__((visibility("default")))
