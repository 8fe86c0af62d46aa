// Lets the system's malloc fail for whoever is linked into this program.
#pragma once

/// While true, no memory comes from malloc.
extern bool g_malloc_fails;
