#pragma once

#include "plugin/Plugin.h"

#include <string>
#include <vector>

namespace hal {

// One Plugin for each configured library, found by name: exact, and the first one where names repeat. The list is
// written by the constructor alone, so lookups may come from any thread; loading is for one thread at a time.
class PluginManager {
public:
    // Reads the configuration. Opens no library.
    PluginManager();
    PluginManager(const PluginManager&) = delete;
    PluginManager& operator=(const PluginManager&) = delete;

    // False for an unknown name, and always for the others, see Plugin::isLoaded.
    [[nodiscard]] bool isPluginLoaded(const std::string& name) const;
    // Null for an unknown name. Lives as long as the process.
    [[nodiscard]] Plugin* getPlugin(const std::string& name) const;
    // In the order of the configuration. They live as long as the process.
    [[nodiscard]] const std::vector<Plugin*>& plugins() const { return mPlugins; }
    // False for an unknown name, and when the library can't be opened.
    bool loadPlugin(const std::string& name);

private:
    // Kept, empty, for the layout.
    std::string mReserved;
    // In the order of the configuration. Never deleted: a plugin may call back until the process ends.
    std::vector<Plugin*> mPlugins;
};

}  // namespace hal
