#include "plugin/PluginConfig.h"

#include <android/log.h>
#include <device/DevicePath.h>

#include <sys/stat.h>
#include <tinyxml2.h>

#include <utility>

namespace hal {

namespace {

// Opening a FIFO would wait for a writer for ever, and the size of a directory is no number to allocate by.
bool isRegularFile(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// The item's attribute, or null where it has none.
// Deliberate: both lines have no tag, and an end of line of their own. Readers of the log know them so.
const char* readAttribute(const tinyxml2::XMLElement& item, const char* attribute, const char* label) {
    const char* value = item.Attribute(attribute);
    if (value == nullptr) return nullptr;
    __android_log_print(ANDROID_LOG_INFO, nullptr, "Get item %s =%s !\n", attribute, value);
    __android_log_print(ANDROID_LOG_INFO, nullptr, "%s =%s !\n", label, value);
    return value;
}

}  // namespace

PluginConfig::PluginConfig(std::string configPath) : mConfigPath(std::move(configPath)) {}

const std::vector<PluginPathInfo>& PluginConfig::loadConfig() {
    const std::string file = device::path(DEFAULT_PATH);
    tinyxml2::XMLDocument document;
    if (!isRegularFile(file) || document.LoadFile(file.c_str()) != tinyxml2::XML_SUCCESS) return mPluginPathInfos;
    __android_log_print(ANDROID_LOG_INFO, nullptr, "The file of plugin_config.xml is loaded.");

    const tinyxml2::XMLElement* root = document.FirstChildElement("plugin_config");
    if (root == nullptr) return mPluginPathInfos;

    // Deliberate: nothing is reset between items. An item takes an attribute that it lacks from the latest item that
    // had it, and lists on devices rely on that.
    const char* name = nullptr;
    const char* path = nullptr;
    for (const auto* item = root->FirstChildElement("item"); item != nullptr; item = item->NextSiblingElement("item")) {
        if (const char* value = readAttribute(*item, "name", "configName")) name = value;
        if (const char* value = readAttribute(*item, "path", "configPath")) path = value;
        if (name != nullptr && path != nullptr) mPluginPathInfos.push_back({name, path});
    }
    return mPluginPathInfos;
}

}  // namespace hal
