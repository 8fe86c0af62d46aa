// Marks what libkelp exports; everything else in the library is hidden.
#pragma once

#define KELP_API __attribute__((visibility("default")))
