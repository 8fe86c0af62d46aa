// Lets the system's malloc fail for whoever is linked into this program, and looks at what
// is given back to it.
#pragma once

#include <string_view>

/// While true, no memory comes from malloc.
extern bool g_malloc_fails;

/// What to look for in blocks that are freed; empty: nothing.
extern std::string_view g_freed_secret;
/// How many freed blocks had it.
extern int g_freed_secrets;
