#include "host/ComponentLibrary.h"

#include "component/ComponentManager.h"

#include <device/DeviceLibrary.h>
#include <mindroid/Log.h>

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <vector>

namespace fs = std::filesystem;
using mindroid::Log;

namespace {

constexpr const char* TAG = "subsysd";

size_t countComponents() {
    return hal::ComponentManager::getInstance()->components().size();
}

std::vector<std::string> librariesIn(const std::string& folder, std::error_code& error) {
    std::vector<std::string> libraries;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        if (entry.path().extension() == ".so") libraries.push_back(entry.path());
    }
    std::sort(libraries.begin(), libraries.end());
    return libraries;
}

}  // namespace

bool loadComponentLibrary(const std::string& name) {
    // An absolute path, so that dlopen takes no bare name to its search path.
    const std::string library = fs::absolute(name);
    const size_t before = countComponents();
    std::string reason;
    if (device::openLibraryFile(library, RTLD_NOW | RTLD_LOCAL, reason) == nullptr) {
        Log::e(TAG, "can't load component library %s: %s", library.c_str(), reason.c_str());
        return false;
    }
    if (countComponents() == before) Log::w(TAG, "component library %s adds no component", library.c_str());
    return true;
}

void loadComponentFolder(const std::string& folder) {
    std::error_code error;
    const auto libraries = librariesIn(folder, error);
    if (libraries.empty()) {
        Log::w(TAG, "no component library in %s: %s", folder.c_str(),
               error ? error.message().c_str() : "it has no *.so");
    }
    for (const auto& library : libraries) (void)loadComponentLibrary(library);
}
