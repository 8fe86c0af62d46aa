# What `cmake --install` lays out; the package files live in packaging/.
