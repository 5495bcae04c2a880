// The library opened by a process that runs already, on a thread without a looper.

#include "tests/support/DeviceFolder.h"
#include "tests/support/LogCapture.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

TEST(Dlopen, WhenProcessRunsAlready_ThenPluginManagerExists) {
    const test::DeviceFolder device;
    device.write("/odm/etc/plugin_config.xml", R"(<plugin_config><item name="A" path="/p"/></plugin_config>)");
    const test::LogCapture log;
    void* library = nullptr;
    std::thread([&] { library = dlopen(SUBSYS_LIBRARY, RTLD_NOW); }).join();
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_TRUE(log.has("PluginManagerComponent-Subsys", "create PluginManagerComponent", ANDROID_LOG_DEBUG));
    const auto lines = log.lines();
    EXPECT_TRUE(
        std::any_of(lines.begin(), lines.end(), [](const auto& line) { return line.text == "configName =A !\n"; }));

    using GetPluginManager = void* (*)();
    const auto getPluginManager = reinterpret_cast<GetPluginManager>(dlsym(library, "_ZN3hal16getPluginManagerEv"));
    ASSERT_NE(getPluginManager, nullptr);
    EXPECT_NE(getPluginManager(), nullptr);
    EXPECT_EQ(getPluginManager(), getPluginManager());
}
