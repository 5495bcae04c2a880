#include "plugin/Plugin.h"

#include "plugin/PluginManager.h"
#include "plugin/PluginManagerComponent.h"
#include "tests/support/DeviceFolder.h"
#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <any>
#include <filesystem>
#include <string>

namespace {

constexpr const char* LIBRARY = "/vendor/lib64/libplugin.so";

class PluginTest : public ::testing::Test {
protected:
    void install(const char* library) { mDevice.copy(LIBRARY, library); }
    void loadCounting() {
        install(COUNTING_PLUGIN);
        EXPECT_TRUE(mPlugin.load());
    }
    [[nodiscard]] bool logged(int priority, const std::string& text) const {
        const auto lines = mLog.lines();
        return std::any_of(lines.begin(), lines.end(),
                           [&](const auto& line) { return line.priority == priority && line.text == text; });
    }

    const test::DeviceFolder mDevice;
    const test::LogCapture mLog;
    hal::Plugin mPlugin{{.name = "P", .path = LIBRARY}};
};

TEST_F(PluginTest, LoadAndUnload_WhenFileComes_ThenOpenForGood) {
    EXPECT_FALSE(mPlugin.load());
    EXPECT_TRUE(logged(ANDROID_LOG_ERROR, "file can't access."));
    EXPECT_TRUE(mPlugin.unload());
    install(COUNTING_PLUGIN);
    EXPECT_TRUE(mPlugin.load());
    EXPECT_FALSE(mPlugin.unload());
    EXPECT_EQ(dlopen(mDevice.place(LIBRARY).c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr);
    EXPECT_TRUE(mPlugin.load());
    EXPECT_TRUE(logged(ANDROID_LOG_DEBUG, "mPluginHandle is loaded."));
}

TEST_F(PluginTest, Load_WhenLibraryIsUnusable_ThenFalseAndNoLineOfItsOwn) {
    install(UNRESOLVED_PLUGIN);
    EXPECT_FALSE(mPlugin.load());
    for (const auto& line : mLog.lines()) EXPECT_EQ(line.tag, "DeviceLibrary") << line;
}

TEST_F(PluginTest, Call_WhenNotLoadedOrMissing_ThenZeroResult) {
    EXPECT_EQ((mPlugin.call<int, int, int>("add", 1, 2)), 0);
    EXPECT_EQ(mPlugin.getSym<int(int, int)>("add"), nullptr);
    loadCounting();
    EXPECT_EQ((mPlugin.call<int, int, int>("subtract", 1, 2)), 0);
    mPlugin.call<void>("nothing");
}

TEST_F(PluginTest, Call_WhenRepeated_ThenLooksUpEachTimeUnlessHeldAndWantsOneSignature) {
    loadCounting();
    for (int call = 1; call <= 3; ++call) {
        EXPECT_EQ((mPlugin.call<int, int, int>("add", 40, call)), 40 + call);
        EXPECT_EQ(mPlugin.call<int>("lookups"), call);
    }
    const auto held = mPlugin.getSym<int(int, int)>("add");
    EXPECT_EQ(mPlugin.getSym<int(int, int)>("add"), held);
    EXPECT_EQ((mPlugin.call<int, int, int>("add", 1, 1)), 2);
    EXPECT_EQ(mPlugin.call<int>("lookups"), 4);
    EXPECT_EQ(held->name, "add");
    EXPECT_EQ((mPlugin.call<int, bool>("negate", false)), 1);
    EXPECT_THROW(mPlugin.call<int>("negate"), std::bad_any_cast);
}

TEST_F(PluginTest, Call_WhenPluginCallsBack_ThenItsSymbolIsLive) {
    using Question = long (*)(void*);
    loadCounting();
    // The call under way and the question are the two that hold it.
    const Question holders = [](void* plugin) {
        return static_cast<hal::Plugin*>(plugin)->getSym<long(Question, void*)>("askBack").use_count();
    };
    EXPECT_EQ((mPlugin.call<long, Question, void*>("askBack", holders, &mPlugin)), 2);
    EXPECT_EQ((mPlugin.getSym<long(Question, void*)>("askBack").use_count()), 1);
}

TEST(PluginManager, GetPlugin_WhenNamesRepeat_ThenFirst) {
    const test::DeviceFolder device;
    device.write("/odm/etc/plugin_config.xml", R"(<plugin_config><item name="A" path="/vendor/lib64/libplugin.so"/>
        <item name="B" path="/missing.so"/><item name="A" path="/other.so"/></plugin_config>)");
    device.copy(LIBRARY, COUNTING_PLUGIN);
    static hal::PluginManager& sManager = *new hal::PluginManager();
    ASSERT_NE(sManager.getPlugin("A"), nullptr);
    EXPECT_EQ(sManager.getPlugin("A")->getPath(), LIBRARY);
    EXPECT_EQ(sManager.getPlugin("a"), nullptr);
    EXPECT_TRUE(sManager.loadPlugin("A"));
    EXPECT_FALSE(sManager.loadPlugin("B"));
    EXPECT_FALSE(sManager.loadPlugin("C"));
    EXPECT_FALSE(sManager.isPluginLoaded("A"));
    EXPECT_FALSE(sManager.isPluginLoaded("C"));
}

TEST(PluginManagerComponent, WhenLibraryIsLoaded_ThenRegisteredOnce) {
    const auto component = hal::getComponent<hal::PluginManagerComponent>(-1);
    ASSERT_TRUE(component);
    EXPECT_EQ(component, hal::loadComponent<hal::PluginManagerComponent>::getComponent());
    EXPECT_EQ(component->getPluginManager(), hal::getPluginManager());
}

}  // namespace
