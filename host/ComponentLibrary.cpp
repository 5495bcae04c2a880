#include "host/ComponentLibrary.h"

#include <dlfcn.h>

#include <cstdio>
#include <filesystem>

#include "plugin/LibraryFile.h"

bool loadComponentLibrary(const std::string& name) {
    // An absolute path, so that dlopen takes no bare name to its search path.
    const std::string library = std::filesystem::absolute(name);
    const char* unloadable = hal::findUnloadable(library);
    if (unloadable == nullptr && dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL) != nullptr) return true;
    const std::string reason = unloadable != nullptr ? library + ": " + unloadable : dlerror();
    fprintf(stderr, "subsysd: can't load a component library: %s\n", reason.c_str());
    return false;
}
