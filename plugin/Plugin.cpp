#include "plugin/Plugin.h"

#include <android/log.h>
#include <device/DeviceLibrary.h>
#include <device/DevicePath.h>

#include <unistd.h>

namespace hal {

Plugin::Plugin(const PluginPathInfo& info) : mPath(info.path), mName(info.name) {}

bool Plugin::fileAccessible(const std::string& path) {
    return access(device::path(path).c_str(), R_OK) == 0;
}

bool Plugin::load() {
    if (mPluginHandle != nullptr) {
        __android_log_print(ANDROID_LOG_DEBUG, nullptr, "mPluginHandle is loaded.");
        return true;
    }
    if (!fileAccessible(mPath)) {
        __android_log_print(ANDROID_LOG_ERROR, nullptr, "file can't access.");
        return false;
    }
    mPluginHandle = device::openLibrary(mPath);
    return mPluginHandle != nullptr;
}

bool Plugin::unload() {
    if (mPluginHandle == nullptr) return true;
    dlclose(mPluginHandle);
    return mPluginHandle == nullptr;
}

}  // namespace hal
