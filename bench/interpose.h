// Defining a function that the libraries import: the program's own goes before theirs.
#pragma once

#include <dlfcn.h>

#define EXPORTED extern "C" __attribute__((visibility("default")))

namespace bench {

/// The definition that the program's own stands before.
template <typename Function>
Function *next(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

} // namespace bench
