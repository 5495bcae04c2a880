#include "plugin/Plugin.h"

#include "plugin/LibraryFile.h"

#include <android/log.h>
#include <device/DevicePath.h>

#include <unistd.h>

namespace hal {

Plugin::Plugin(const PluginPathInfo& info) : mPath(info.path), mName(info.name) {}

bool Plugin::fileAccessible(const std::string& path) {
    return access(path.c_str(), R_OK) == 0;
}

bool Plugin::load() {
    if (mPluginHandle != nullptr) {
        __android_log_print(ANDROID_LOG_DEBUG, nullptr, "mPluginHandle is loaded.");
        return true;
    }
    const std::string path = device::path(mPath);
    if (!fileAccessible(path)) {
        __android_log_print(ANDROID_LOG_ERROR, nullptr, "file can't access.");
        return false;
    }
    if (const char* reason = findUnloadable(path)) {
        reportFailure(path + ": " + reason);
        return false;
    }
    mPluginHandle = dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL);
    if (mPluginHandle == nullptr) reportFailure(dlerror());
    return mPluginHandle != nullptr;
}

bool Plugin::unload() {
    if (mPluginHandle == nullptr) return true;
    dlclose(mPluginHandle);
    return mPluginHandle == nullptr;
}

void Plugin::reportFailure(std::string reason) {
    // Loading is tried again with every request, and mostly fails for the same reason.
    if (reason == mReportedFailure) return;
    mReportedFailure = std::move(reason);
    __android_log_print(ANDROID_LOG_ERROR, nullptr, "can't load plugin %s: %s", mName.c_str(),
                        mReportedFailure.c_str());
}

}  // namespace hal
