#include "host/ComponentLibrary.h"

#include <device/DeviceLibrary.h>
#include <dlfcn.h>

#include <cstdio>
#include <filesystem>

bool loadComponentLibrary(const std::string& name) {
    // An absolute path, so that dlopen takes no bare name to its search path.
    const std::string library = std::filesystem::absolute(name);
    std::string reason;
    if (device::openLibraryFile(library, RTLD_NOW | RTLD_LOCAL, reason) != nullptr) return true;
    fprintf(stderr, "subsysd: can't load a component library: %s: %s\n", library.c_str(), reason.c_str());
    return false;
}
