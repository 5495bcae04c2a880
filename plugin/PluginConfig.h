#pragma once

#include <string>
#include <vector>

namespace hal {

// One configured plugin library.
struct PluginPathInfo {
    // What lookups ask for.
    std::string name;
    // The absolute path of the library on the device.
    std::string path;
};

// The list of the plugin libraries that the system may open. Thread: one at a time.
class PluginConfig {
public:
    static constexpr const char* DEFAULT_PATH = "/odm/etc/plugin_config.xml";

    explicit PluginConfig(std::string configPath);

    // Appends what the configuration file lists to what earlier calls found, and answers the whole list. A file that is
    // missing or malformed adds nothing.
    const std::vector<PluginPathInfo>& loadConfig();

private:
    // Deliberate: not read, loadConfig always reads DEFAULT_PATH. Kept for the layout.
    std::string mConfigPath;
    std::vector<PluginPathInfo> mPluginPathInfos;
};

}  // namespace hal
