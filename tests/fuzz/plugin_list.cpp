// Any plugin list: the daemon checks it and the files that it names, and the service reads it and opens the plugins.

#include "host/PluginList.h"
#include "plugin/Plugin.h"
#include "tests/fuzz/support/Require.h"
#include "tests/support/DeviceFolder.h"

#include <string_view>
#include <vector>

namespace {

// Its name is looked up as a function, too.
void open(const hal::PluginPathInfo& info) {
    hal::Plugin plugin(info);
    const bool isOpen = plugin.load();
    fuzz::require(plugin.load() == isOpen && plugin.isOpen() == isOpen);
    const auto function = plugin.getSym<void()>(info.name);
    fuzz::require(isOpen || function == nullptr);
    fuzz::require(plugin.unload() == !isOpen);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const test::DeviceFolder DEVICE;
    static const bool IS_LINKED = [] {
        std::filesystem::create_symlink("/proc/self/exe", DEVICE.place("/program"));
        std::filesystem::create_symlink(LIBRARY, DEVICE.place("/library"));
        DEVICE.write("/short",
                     "\x7f"
                     "ELF");
        DEVICE.makeFifo("/fifo");
        return true;
    }();
    fuzz::require(IS_LINKED);
    DEVICE.write(hal::PluginConfig::DEFAULT_PATH, std::string_view(reinterpret_cast<const char*>(data), size));
    fuzz::require(pluginListFaults().size() <= size + 1);
    hal::PluginConfig config("");
    const std::vector<hal::PluginPathInfo> plugins = config.loadConfig();
    for (const hal::PluginPathInfo& each : plugins) open(each);
    fuzz::require(config.loadConfig().size() == 2 * plugins.size());
    return 0;
}
