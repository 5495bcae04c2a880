#include "plugin/PluginManager.h"

#include <algorithm>

namespace hal {

PluginManager::PluginManager() {
    PluginConfig config(PluginConfig::DEFAULT_PATH);
    for (const PluginPathInfo& info : config.loadConfig()) mPlugins.push_back(new Plugin(info));
}

bool PluginManager::isPluginLoaded(const std::string& name) const {
    const Plugin* plugin = getPlugin(name);
    return plugin != nullptr && plugin->isLoaded();
}

Plugin* PluginManager::getPlugin(const std::string& name) const {
    const auto found =
        std::find_if(mPlugins.begin(), mPlugins.end(), [&](const Plugin* plugin) { return plugin->getName() == name; });
    return found == mPlugins.end() ? nullptr : *found;
}

bool PluginManager::loadPlugin(const std::string& name) {
    Plugin* plugin = getPlugin(name);
    return plugin != nullptr && plugin->load();
}

}  // namespace hal
