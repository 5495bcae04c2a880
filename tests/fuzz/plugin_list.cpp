// Any plugin list: the daemon checks it and the files that it names, and the service reads it.

#include "host/PluginList.h"
#include "plugin/PluginConfig.h"
#include "tests/fuzz/support/Require.h"
#include "tests/support/DeviceFolder.h"

#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const test::DeviceFolder DEVICE;
    static const bool IS_LINKED = [] {
        std::filesystem::create_symlink("/proc/self/exe", DEVICE.place("/program"));
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
    const size_t count = config.loadConfig().size();
    fuzz::require(config.loadConfig().size() == 2 * count);
    return 0;
}
